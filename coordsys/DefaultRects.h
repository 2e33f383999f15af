#pragma once

#include <coordsys/coordsys_export.h>

#include <QRectF>

namespace nivora::cs {

/// x, y, width, height. Longitude -360 to 360, latitude -90 to 90, degrees.
constexpr QRectF DefaultRectLatLon{-360.0, -90.0, 720.0, 180.0};
/// MapInfo's bounds of longitude/latitude: -1000 to 1000 on both axes, degrees.
constexpr QRectF DefaultRectLatLonMapinfo{-1000.0, -1000.0, 2000.0, 2000.0};
/// Bounds of a plan without a place on the earth, in its unit.
constexpr QRectF DefaultRectNonEarth{-1e7, -1e7, 2e7, 2e7};

/// Either of the two longitude/latitude rectangles, within nivora::utils::fuzzyCompareRects.
NIVORA_CS_EXPORT bool isDefaultRectLatLong(const QRectF &rect);
/// The bounds of a plan, within the same.
NIVORA_CS_EXPORT bool isDefaultRectNonEarth(const QRectF &rect);

} // namespace nivora::cs
