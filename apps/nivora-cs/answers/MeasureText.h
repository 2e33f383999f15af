#pragma once

#include <coordsys/Measures.h>

#include <QPointF>
#include <QString>

/// "X,Y" of an option. Throws Failure.
QPointF pointOf(const QString &text);

/// How a system shows the surroundings of a point.
struct PlaneAt
{
    QPointF lonLat;                                  ///< degrees, on the system's own datum, from Greenwich
    std::optional<nivora::cs::PlaneFactors> factors; ///< none for geographic systems

    /// From true north to the plane's y axis, clockwise, 0 to 360.
    double gridNorthDeg() const;
};

/// Throws Failure for a point without a place on the earth.
PlaneAt planeAt(const nivora::cs::CoordSystemPtr &system, const QPointF &point);

/// The same for people.
QString placeAndFactorsText(const nivora::cs::CoordSystemPtr &system, const QPointF &point);
