#pragma once

#include <QPointF>
#include <QString>

namespace catalogue {

/// A rectangle of longitudes and latitudes in degrees; east < west where it crosses the antimeridian.
struct Area
{
    double west = 0.0;
    double south = 0.0;
    double east = 0.0;
    double north = 0.0;
    QString name;

    /// East made larger than west.
    double unwrappedEast() const { return east < west ? east + 360.0 : east; }
    QPointF centre() const { return QPointF((west + unwrappedEast()) / 2.0, (south + north) / 2.0); }
    /// On the sphere, in degrees of longitude times the sine of latitude.
    double size() const;
    /// The share of this area that \p other covers, 0 to 1.
    double shareCoveredBy(const Area &other) const;
};

/// The longitude that differs from \p degrees by whole turns and lies within half a turn of \p around.
double wrapped(double degrees, double around = 0.0);

} // namespace catalogue
