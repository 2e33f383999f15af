#pragma once

#include <coordsys/coordsys_export.h>

#include <QRectF>
#include <QVector>

namespace nivora::cs {

/// A part of the earth between two meridians and two parallels, in degrees, that says when it crosses the
/// 180th meridian. A plain value. Longitudes lie in -180 to 180.
struct NIVORA_CS_EXPORT GeographicBounds
{
    double west = 0.0;  ///< western edge
    double south = 0.0; ///< southern edge
    double east = 0.0;  ///< eastern edge
    double north = 0.0; ///< northern edge
    /// The pole lies inside or on the edge. A pole inside makes the bounds reach around the whole earth.
    bool hasNorthPole = false;
    bool hasSouthPole = false; ///< the same of the south pole

    /// West is greater than east then: the bounds run from west over 180 to east.
    bool crossesAntimeridian() const { return west > east; }
    /// All longitudes: -180 to 180.
    bool isAllAround() const { return west == -180.0 && east == 180.0; }
    /// Degrees of longitude, 0 to 360.
    double width() const { return crossesAntimeridian() ? east - west + 360.0 : east - west; }
    /// x = longitude first: one rectangle, or two (west of the 180th meridian first) when it is crossed.
    QVector<QRectF> rects() const;
    /// Degrees; edges and poles inside count. False for NaN.
    bool contains(double longitude, double latitude) const;
};

} // namespace nivora::cs
