#pragma once

#include <coordsys/ProjEngine.h>

#include <QPointF>
#include <QString>

#include <array>
#include <optional>

namespace nivora::cs {

/// Shift to WGS 84 as TOWGS84 has it: dx, dy, dz (m), rx, ry, rz (arc-seconds, position vector), scale (ppm).
using Shift = std::array<double, 7>;

/// True when the database has an operation from the datum of an EPSG system to WGS 84 with these figures
/// (0.01 m, 0.001 arc-second, 0.001 ppm). Works in the search's context; thread-safe.
bool hasRegisteredShift(int epsg, const Shift &shift);

/// True when the numbers of a system (WKT with its own shift) mean a place within 100 m of the one that they
/// mean in an EPSG system by PROJ's best operation, in the middle of that one's area of use. Systems that
/// merely share figures lie further apart. Works in the search's context; thread-safe.
bool isWithin100m(int epsg, const QString &wkt);

/// The middle of a system's area of use, longitude and latitude in degrees; false when it has none. Needs the
/// lock of the context.
bool middleOfArea(PJ_CONTEXT *context, const PJ *crs, QPointF &place);

/// How far apart, in metres, the places lie on WGS 84 that the numbers of a place (longitude and latitude on
/// WGS 84, degrees) in the first system mean in the first and in the second, each by PROJ's best operation
/// there. Needs the lock of the context.
std::optional<double> distanceBetweenShifts(PJ_CONTEXT *context, const PJ *first, const PJ *second,
                                            const QPointF &lonLat);

} // namespace nivora::cs
