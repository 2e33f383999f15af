#pragma once

#include <widgets/CoordSystemPicker.h>

#include <QPushButton>

namespace nivora::cs {

/// A button for forms: it shows the name of a coordinate system and opens a CoordSystemDialog for another
/// one. Threads: the widgets' own. Ownership: it keeps a share of its factory.
class NIVORA_CS_WIDGETS_EXPORT CoordSystemButton : public QPushButton
{
    Q_OBJECT
public:
    /// Throws as CoordSystemPicker when it is clicked.
    explicit CoordSystemButton(QWidget *parent = nullptr);
    explicit CoordSystemButton(std::shared_ptr<CoordSysFactory> factory, QWidget *parent = nullptr);
    ~CoordSystemButton() override;

    /// The system, null for none.
    CoordSystemPtr coordSystem() const;
    /// Replaces it; sends nothing.
    void setCoordSystem(const CoordSystemPtr &cs);
    /// As CoordSystemPicker::setKinds().
    void setKinds(CoordSystemPicker::Kinds kinds);
    /// As CoordSystemDialog::setNoSystemAllowed().
    void setNoSystemAllowed(bool isAllowed);
    /// As CoordSystemPicker::setView().
    void setView(const QRectF &lonLat);

Q_SIGNALS:
    /// The user has chosen another system, null for none.
    void coordSystemChanged(const nivora::cs::CoordSystemPtr &system);

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace nivora::cs
