#pragma once

#include "ProjectionTable_p.h"

#include <QHash>
#include <QPointF>
#include <QString>
#include <QVector>

#include <array>
#include <optional>

namespace nivora::cs {

class CrsDefinition;

/// What a system's definition says of its plane and its ellipsoid.
struct PlaneFigures
{
    QString method; ///< of the projection: EPSG's code, else its name; empty for longitude/latitude
    QHash<int, double> figures; ///< by EPSG's code of the parameter: degrees, metres or a plain number
    double semiMajorM = 0.0;
    double semiMinorM = 0.0;
    double meridianDeg = 0.0;   ///< from Greenwich
    double metresPerUnit = 1.0; ///< of the plane; 1 for longitude/latitude
    /// Nine of the area of use, else around the origin: longitude from Greenwich and latitude, degrees.
    QVector<QPointF> places;
    QVector<QPointF> widePlaces; ///< the same over two degrees at least, so that a slope shows

    double figure(int code, double absent = 0.0) const { return figures.value(code, absent); }
};

/// None for what has no ellipsoid. Takes the PROJ lock.
std::optional<PlaneFigures> planeFiguresOf(const CrsDefinition &definition);

/// A projection of CoordSys text with its parameters, lengths in the system's unit.
struct PlaneForm
{
    const Projection *projection = nullptr;
    std::array<double, 7> parameters{};
    int datum = 0; ///< MapInfo's number of the only one that says this plane, 0 for any
};

/// Those that may be this plane, the likelier first; which one is, only a comparison of points tells. A false
/// origin, a scale, a direction of axes that the projection has no parameter for is left out.
QVector<PlaneForm> planeFormsOf(const PlaneFigures &plane);

/// Without the dust behind the fifteenth digit that conversions of units leave.
double withoutDust(double figure);

} // namespace nivora::cs
