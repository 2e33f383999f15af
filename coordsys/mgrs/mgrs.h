#pragma once

#include <coordsys/mgrs/ellipsoid.h>

/// Military grid references by NGA.STND.0037 (2014) and DMA TM 8358.1 (1990), with the lettering of WGS 84
/// (called AA there) whatever the ellipsoid is; maps on Bessel's and Clarke's ellipsoids may use the other
/// one.
namespace mgrs {

/// The longest reference, "33XVG7459443593", and its terminating zero.
constexpr int MGRS_BUFFER_SIZE = 16;

/// The reference of the cell that holds a point. Precision is the number of digits of each coordinate: 0
/// names a square of 100 km, 5 one of 1 m. Zone and row have always two and five-precision digits, no blanks
/// are written. Latitudes are -90 to 90, longitudes -180 to 360 degrees (in radians). Both poles have a
/// reference.
///
/// Digits are cut off, never rounded: a reference of lower precision names the larger cell around the smaller
/// one. South and west edges belong to a zone, a band and a cell: latitude 84 is UPS, -80 is UTM.
/// \p buffer has room for MGRS_BUFFER_SIZE characters.
/// Codes: LatitudeError, LongitudeError, PrecisionError; on an ellipsoid much larger than the earth
/// EastingError and NorthingError.
NIVORA_CS_EXPORT int Convert_Geodetic_To_MGRS(double latitude, double longitude, int precision, char *buffer);

/// The south-west corner of the cell that a reference names. Where the edge of the zone or band cuts that
/// corner off, the nearest point to it of what is left of the cell, so that converting back gives the same
/// reference. A cell that lies quite outside (or leaves less than a micrometre inside) gives its corner all
/// the same when its square of 100 km comes within 40 km of the zone, the overlap of UTM, and touches the
/// band.
///
/// Lower case and blanks are accepted, also between the letters of a square. Two groups of digits must be
/// equally long, so that "12 3456" is not taken for something else. The longitude comes back in -pi to pi.
/// Codes: StringError for everything that is not the reference of such a cell, null included.
NIVORA_CS_EXPORT int Convert_MGRS_To_Geodetic(const char *reference, double *latitude, double *longitude);

} // namespace mgrs
