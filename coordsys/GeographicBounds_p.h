#pragma once

#include <coordsys/GeographicBounds.h>

#include <QPointF>

#include <functional>

namespace nivora::cs {

/// One point into longitude/latitude or back; false when it has no image.
using PointConversion = std::function<bool(const QPointF &in, QPointF &out)>;

/// The geographic bounds of a planar rectangle. A mesh of points is followed from neighbour to neighbour, so
/// that longitudes run on across the 180th meridian; points that do not come back to where they started (they
/// lie outside the projection's image of the earth) are left out. A pole is inside where longitudes turn by a
/// full circle around a cell. False when no point of the rectangle lies on the earth.
bool geographicBoundsOf(const QRectF &rect, const PointConversion &toLonLat, const PointConversion &toPlane,
                        GeographicBounds &out);

} // namespace nivora::cs
