#pragma once

#include <widgets/CoordSystemPicker.h>

#include <QDialog>

class QPushButton;

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

    /// The widget inside.
    CoordSystemPicker *picker() const { return m_picker; }
    /// The system that was accepted, null before and after a cancel.
    CoordSystemPtr coordSystem() const { return m_accepted; }

    /// Shows the dialog and waits. \p current is selected at first, \p view as CoordSystemPicker::setView().
    /// Null when it was cancelled.
    static CoordSystemPtr choose(QWidget *parent, const CoordSystemPtr &current = nullptr,
                                 const QRectF &view = QRectF());

    void accept() override;

private:
    CoordSystemPicker *m_picker;
    QPushButton *m_ok;
    CoordSystemPtr m_accepted;
};

} // namespace nivora::cs
