#pragma once

#include <coordsys/coordsys_export.h>

/// Military grid references and the grids under them, on one ellipsoid that the whole process shares.
/// Angles are radians and lengths metres throughout, x is east and y north. A function returns 0 or the error
/// codes of all bad arguments OR-ed together; outputs are written only on success, and pointers must not be
/// null. Nothing here shifts datums: coordinates belong to the datum of the ellipsoid. Threads: every
/// function is thread-safe. A conversion uses one ellipsoid from beginning to end, also when another thread
/// sets a new one meanwhile. Conversions allocate nothing and take no lock.
namespace mgrs {

/// What was wrong, as bits: several may be OR-ed together. 0 is success.
enum ErrorCode : int {
    LatitudeError = 1,
    LongitudeError = 2,
    StringError = 4,
    PrecisionError = 8,
    SemiMajorError = 16,
    InverseFlatteningError = 32,
    EastingError = 64,
    NorthingError = 128,
    ZoneError = 256,
    HemisphereError = 512
};

/// Replaces the ellipsoid of the process, WGS 84 at start. The semi-major axis must be positive, the inverse
/// flattening between 250 and 350. A set is kept for the life of the process (under 200 bytes for each
/// different one), because a conversion may be using it. Codes: SemiMajorError, InverseFlatteningError.
NIVORA_CS_EXPORT int Set_Ellipsoid_Parameters(double semi_major, double inverse_flattening);
/// The ellipsoid in force: metres, 1 / flattening.
NIVORA_CS_EXPORT void Get_Ellipsoid_Parameters(double *semi_major, double *inverse_flattening);

} // namespace mgrs
