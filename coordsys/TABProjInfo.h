#pragma once

#include <coordsys/coordsys_export.h>

#include <QRectF>

#include <cstdint>

namespace nivora::cs {

/// The projection block of a MapInfo map header. 255 and -1 mean "not set". Lengths are in the record's unit,
/// angles in degrees, datum shifts in metres; rotations carry MapInfo's sign, the opposite of TOWGS84.
struct TABProjInfo_t
{
    std::uint8_t nProjId = 255;      ///< 0 (non-earth) to 35
    std::uint8_t nEllipsoidId = 255; ///< MapInfo ellipsoid number
    std::uint8_t nUnitsId = 255;     ///< MapInfo unit code of the coordinates
    double adProjParams[6] = {};     ///< in the order of the CoordSys clause
    std::int16_t nDatumId = -1;      ///< MapInfo datum number; 999 and 9999 carry their own figures
    double dDatumShiftX = 0.0;       ///< to WGS 84
    double dDatumShiftY = 0.0;       ///< to WGS 84
    double dDatumShiftZ = 0.0;       ///< to WGS 84
    double adDatumParams[5] = {}; ///< rotations x, y, z (arc-seconds), scale (ppm), prime meridian (degrees)
    std::uint8_t nAffineFlag = 0; ///< 1 when an affine clause is present
    std::uint8_t nAffineUnits = 255; ///< MapInfo unit code of C and F
    double dAffineParams[6] = {};    ///< A to F: x' = A x + B y + C, y' = D x + E y + F
    std::uint8_t nBoundsFlag = 0;    ///< 1 when bounds with a positive extent are present
    double dXMin = 0.0;              ///< bounds, in the unit
    double dYMin = 0.0;              ///< bounds
    double dXMax = 0.0;              ///< bounds
    double dYMax = 0.0;              ///< bounds
};

/// 999 and 9999: the datum's figures stand in the CoordSys string itself.
NIVORA_CS_EXPORT bool isUserDatum(int datum);

/// How many parameters a projection takes in a CoordSys clause, 0 for an unknown number. Projection 35 has
/// seven although the record holds six.
NIVORA_CS_EXPORT int paramForPrj(int projection);

} // namespace nivora::cs
