#pragma once

#include <coordsys/mgrs/ellipsoid.h>

namespace mgrs {

/// Universal polar stereographic (DMA TM 8358.2): radians and metres, hemisphere 'N' or 'S', both coordinates
/// 2000 km at the pole. Latitudes are 83.5 degrees and more, or -79.5 and less, half a degree of overlap with
/// UTM included.

/// Codes: LatitudeError, LongitudeError.
NIVORA_CS_EXPORT int Convert_Geodetic_To_UPS(double latitude, double longitude, char *hemisphere,
                                             double *easting, double *northing);
/// Coordinates are 0 to 4000 km. The longitude comes back in -pi to pi; at the pole it is any.
/// Codes: EastingError, NorthingError (both together: a latitude outside UPS), HemisphereError.
NIVORA_CS_EXPORT int Convert_UPS_To_Geodetic(char hemisphere, double easting, double northing,
                                             double *latitude, double *longitude);

} // namespace mgrs
