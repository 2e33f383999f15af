#pragma once

#include <widgets/widgets_export.h>

#include <coordsys/CoordSystemTypes.h>
#include <coordsys/OperationChoice.h>

#include <QPointF>
#include <QRectF>
#include <QWidget>

#include <memory>

namespace nivora::cs {

class CoordSysFactory;

/// Lets a user choose a coordinate system: searches by name, code, town and place as one types, shows the
/// tree of own, recent, catalogue and EPSG systems, what is known of the current one and where on the earth
/// it is used, and takes a pasted definition in any notation.
///
/// A system that cannot be made is shown with the reason, and is no choice. Texts are in the language whose
/// translator is installed when the widget is made. Recent systems are kept in the application's default
/// QSettings under "nivora-cs/recentSystems".
///
/// Threads: the widgets' own. Ownership: it keeps a share of its factory.
class NIVORA_CS_WIDGETS_EXPORT CoordSystemPicker : public QWidget
{
    Q_OBJECT
public:
    /// What the coordinates of a system are.
    enum Kind {
        GeographicKind = 1, ///< longitude and latitude
        ProjectedKind = 2,  ///< a plane on the earth
        LocalKind = 4,      ///< a plan without a place on the earth
        AnyKind = 7         ///< all of them
    };
    Q_DECLARE_FLAGS(Kinds, Kind)

    /// With the default factory, which must be installed and initialised. Throws std::invalid_argument
    /// "factory" when there is none.
    explicit CoordSystemPicker(QWidget *parent = nullptr);
    explicit CoordSystemPicker(std::shared_ptr<CoordSysFactory> factory, QWidget *parent = nullptr);
    ~CoordSystemPicker() override;

    /// The system that is chosen now, null when none is or it cannot be made. A selection that the user has
    /// only just made is turned into a system first (milliseconds). Sends nothing.
    CoordSystemPtr coordSystem() const;
    /// Whether the authority has withdrawn the chosen system.
    bool isWithdrawn() const;
    /// The kinds that can be chosen, AnyKind unless set.
    void setKinds(Kinds kinds);
    /// What setKinds() was given.
    Kinds kinds() const;
    /// Shows a system, in its place in the tree when it has one there: coordSystem() is this very object,
    /// with its name, bounds and affine transformation, until the user chooses another. Null clears.
    void setCoordSystem(const CoordSystemPtr &cs);
    /// False when nothing is selected, or what is selected cannot be made. A selection not yet tried counts.
    bool canChoose() const;

    /// The system that the host will transform into, such as that of its map: below the details the user may
    /// choose the operation then. Null, which is the default, takes that away.
    void setTarget(const CoordSystemPtr &target);
    /// By which operation points go from coordSystem() into the target; PROJ's own choice when the user chose
    /// none, or what was chosen does not fit. For CoordTransform; a host keeps it as text.
    OperationChoice operationChoice() const;
    /// What was chosen before. Kept for the first system that it fits.
    void setOperationChoice(const OperationChoice &choice);

    /// What stands in the search line.
    QString searchText() const;
    /// As if typed or pasted.
    void setSearchText(const QString &text);

    /// What the host's map shows: longitude and latitude in degrees, x first. It is drawn on the map and
    /// offered as a filter; a null rectangle takes both away.
    void setView(const QRectF &lonLat);
    /// Only systems in use at a point (degrees, longitude first).
    void filterByPoint(const QPointF &lonLat);
    /// Only systems in use in the view that setView() has given.
    void filterByView();
    /// Systems in use anywhere again.
    void clearPlaceFilter();

    /// Puts the chosen system at the head of the recent ones. CoordSystemDialog does so itself.
    void rememberChoice();

Q_SIGNALS:
    /// Another system, or none, is chosen, or canChoose() has changed.
    void choiceChanged();
    /// The user has chosen another operation, or another system took the chosen one away.
    void operationChanged();
    /// The user has decided: Enter or a double click on a system that can be made.
    void activated();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(CoordSystemPicker::Kinds)

} // namespace nivora::cs
