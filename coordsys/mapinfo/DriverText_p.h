#pragma once

#include <coordsys/TABProjInfo.h>

#include <QString>

namespace nivora::cs {

/// The CoordSys text of a record as GDAL's MapInfo driver must be given it to build the right system; users
/// and catalogues keep the text of the record itself. Differences:
/// - a Lambert conic in another unit than the metre names the parallel of larger absolute value first (the
/// driver
///   swaps known pairs and then takes the false origin for metres);
/// - the extended transverse Mercator is called by the number of the plain one, and a plane on datum 1031
/// carries
///   the figures of that datum (the driver would read longitude/latitude in both cases);
/// - affine clause and bounds are left out (the driver has no use for them).
/// Throws std::logic_error as MapHeaderCoordsysConverter::tabProjInfoToString does. Thread-safe.
QString mitabCoordSys(const TABProjInfo_t &info);

} // namespace nivora::cs
