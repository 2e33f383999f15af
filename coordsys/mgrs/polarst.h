#pragma once

#include <coordsys/mgrs/ellipsoid.h>

namespace mgrs {

/// A polar stereographic grid (EPSG method 9810, variant A): radians and metres. The false origin is the
/// pole.
struct PolarStereographicParameters
{
    char hemisphere = 'N';        ///< 'N' or 'S', the pole in the middle
    double centralMeridian = 0.0; ///< runs straight down from the north pole, straight up from the south pole
    double falseEasting = 0.0;    ///< metres
    double falseNorthing = 0.0;   ///< metres
    double scaleFactor = 1.0;     ///< at the pole; positive
};

/// Any point but the opposite pole. Longitudes are -pi to 2 pi.
/// Codes: LatitudeError, LongitudeError, HemisphereError.
NIVORA_CS_EXPORT int Convert_Geodetic_To_Polar_Stereographic(const PolarStereographicParameters &grid,
                                                             double latitude, double longitude,
                                                             double *easting, double *northing);
/// The longitude comes back in -pi to pi; at the pole it is any.
/// Codes: EastingError, NorthingError (not finite), HemisphereError.
NIVORA_CS_EXPORT int Convert_Polar_Stereographic_To_Geodetic(const PolarStereographicParameters &grid,
                                                             double easting, double northing,
                                                             double *latitude, double *longitude);

} // namespace mgrs
