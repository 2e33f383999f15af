#include "polarst.h"

#include "arithmetic/grids_p.h"

namespace mgrs {

// J. P. Snyder, Map projections: a working manual, USGS Professional Paper 1395 (1987), equations 21-30 to
// 21-33, with his t written as tan(half the conformal colatitude), which loses nothing near the pole.
Plane polarStereographic(const Ellipsoid &ellipsoid, const Geodetic &at, bool north)
{
    const double tau = ellipsoid.conformalTangent(std::tan(north ? at.latRad : -at.latRad));
    const double secant = std::sqrt(1.0 + tau * tau);
    const double rho = ellipsoid.polarFactor * (tau > 0.0 ? 1.0 / (secant + tau) : secant - tau);
    const double up = rho * std::cos(at.lonRad);
    return {rho * std::sin(at.lonRad), north ? -up : up};
}

Geodetic inversePolarStereographic(const Ellipsoid &ellipsoid, const Plane &plane, bool north)
{
    const double t = std::hypot(plane.x, plane.y) / ellipsoid.polarFactor;
    const double latRad = std::atan(ellipsoid.geodeticTangent((1.0 / t - t) / 2.0));
    return {north ? latRad : -latRad, std::atan2(plane.x, north ? 0.0 - plane.y : plane.y)};
}

int Convert_Geodetic_To_Polar_Stereographic(const PolarStereographicParameters &grid, double latitude,
                                            double longitude, double *easting, double *northing)
{
    const CheckedPoint point = checkPoint(latitude, longitude);
    const bool north = grid.hemisphere == 'N';
    int error = point.error;
    if (!north && grid.hemisphere != 'S')
        error |= HemisphereError;
    else if (point.latDeg == (north ? -90.0 : 90.0))
        error |= LatitudeError;
    if (error != 0)
        return error;
    const Plane plane = polarStereographic(currentEllipsoid(),
                                           {point.at.latRad, point.at.lonRad - grid.centralMeridian}, north);
    *easting = grid.falseEasting + grid.scaleFactor * plane.x;
    *northing = grid.falseNorthing + grid.scaleFactor * plane.y;
    return 0;
}

int Convert_Polar_Stereographic_To_Geodetic(const PolarStereographicParameters &grid, double easting,
                                            double northing, double *latitude, double *longitude)
{
    const bool north = grid.hemisphere == 'N';
    const int error = (std::isfinite(easting) ? 0 : EastingError) |
                      (std::isfinite(northing) ? 0 : NorthingError) |
                      (north || grid.hemisphere == 'S' ? 0 : HemisphereError);
    if (error != 0)
        return error;
    const Plane plane{(easting - grid.falseEasting) / grid.scaleFactor,
                      (northing - grid.falseNorthing) / grid.scaleFactor};
    const Geodetic at = inversePolarStereographic(currentEllipsoid(), plane, north);
    *latitude = at.latRad;
    *longitude = std::remainder(at.lonRad + grid.centralMeridian, 2.0 * PI);
    return 0;
}

} // namespace mgrs
