#pragma once

#include <coordsys/mgrs/ellipsoid.h>

namespace mgrs {

/// Universal transverse Mercator (DMA TM 8358.2): radians and metres, zones 1 to 60, hemisphere 'N' or 'S'
/// (the equator is north). Latitudes are -80.5 to 84.5 degrees, half a degree of overlap with UPS included.

/// In the zone that the standard gives, those of Norway and Svalbard included. A meridian between two zones
/// belongs to the eastern one, longitudes 180 and -180 degrees to zone 1.
/// Codes: LatitudeError, LongitudeError.
NIVORA_CS_EXPORT int Convert_Geodetic_To_UTM(double latitude, double longitude, int *zone, char *hemisphere,
                                             double *easting, double *northing);
/// In a zone of the caller's choice, as for a map that reaches into the next zone.
/// Codes: LatitudeError, LongitudeError (also: easting not within 100 to 900 km), ZoneError.
NIVORA_CS_EXPORT int Convert_Geodetic_To_UTM_Zone(double latitude, double longitude, int zone,
                                                  char *hemisphere, double *easting, double *northing);
/// Eastings are 100 to 900 km, northings 0 to 10000 km. The longitude comes back in -pi to pi.
/// Codes: EastingError, NorthingError (also: a latitude outside UTM), ZoneError, HemisphereError.
NIVORA_CS_EXPORT int Convert_UTM_To_Geodetic(int zone, char hemisphere, double easting, double northing,
                                             double *latitude, double *longitude);

} // namespace mgrs
