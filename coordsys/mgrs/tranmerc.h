#pragma once

#include <coordsys/mgrs/ellipsoid.h>

namespace mgrs {

/// A transverse Mercator grid: radians and metres.
struct TransverseMercatorParameters
{
    double originLatitude = 0.0;  ///< radians
    double centralMeridian = 0.0; ///< radians
    double falseEasting = 0.0;    ///< metres
    double falseNorthing = 0.0;   ///< metres
    double scaleFactor = 1.0;     ///< on the central meridian; positive
};

/// Krueger's series to the sixth order in the third flattening: errors are a few nanometres within 3900 km of
/// the central meridian. Points much beyond that are refused. Longitudes are -pi to 2 pi. Codes:
/// LatitudeError, LongitudeError (also: too far from the central meridian).
NIVORA_CS_EXPORT int Convert_Geodetic_To_Transverse_Mercator(const TransverseMercatorParameters &grid,
                                                             double latitude, double longitude,
                                                             double *easting, double *northing);
/// The longitude comes back in -pi to pi.
/// Codes: EastingError (too far from the central meridian), NorthingError (beyond a pole).
NIVORA_CS_EXPORT int Convert_Transverse_Mercator_To_Geodetic(const TransverseMercatorParameters &grid,
                                                             double easting, double northing,
                                                             double *latitude, double *longitude);

} // namespace mgrs
