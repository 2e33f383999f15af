#pragma once

#include <widgets/CoordSystemPicker.h>

#include <QDialog>

#include <memory>

namespace nivora::cs {

/// A CoordSystemPicker with OK and Cancel. OK is enabled while a system can be chosen; the choice becomes the
/// first of the recent ones.
class NIVORA_CS_WIDGETS_EXPORT CoordSystemDialog : public QDialog
{
    Q_OBJECT
public:
    /// Throws as CoordSystemPicker.
    explicit CoordSystemDialog(QWidget *parent = nullptr);
    explicit CoordSystemDialog(std::shared_ptr<CoordSysFactory> factory, QWidget *parent = nullptr);
    ~CoordSystemDialog() override;

    /// The widget inside.
    CoordSystemPicker *picker() const;
    /// The system that was accepted, null before and after a cancel.
    CoordSystemPtr coordSystem() const;

    /// Shows the dialog and waits. \p current is selected at first, \p view as CoordSystemPicker::setView().
    /// Null when it was cancelled.
    static CoordSystemPtr choose(QWidget *parent, const CoordSystemPtr &current = nullptr,
                                 const QRectF &view = QRectF());

    /// Shows a dialog over \p parent and returns at once; it tells by chosen() and deletes itself. Arguments
    /// as choose().
    static CoordSystemDialog *open(QWidget *parent, const CoordSystemPtr &current,
                                   const QRectF &view = QRectF());
    using QDialog::open;

    /// Whether there is a button for no system at all; there is none unless set.
    void setNoSystemAllowed(bool isAllowed);
    /// No system was accepted: coordSystem() is null then, too.
    bool isNoSystem() const;

    void accept() override;

Q_SIGNALS:
    /// The user has chosen: a system, or null for none at all.
    void chosen(const nivora::cs::CoordSystemPtr &system);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace nivora::cs
