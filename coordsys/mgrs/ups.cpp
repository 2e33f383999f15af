#include "ups.h"

#include "arithmetic/grids_p.h"

namespace mgrs {
namespace {

constexpr double UPS_SCALE = 0.994;
constexpr double MAX_COORDINATE = 4000000.0;

bool withinUpsLatitudes(double latDeg)
{
    return latDeg >= UTM_NORTH_DEG - POLAR_OVERLAP_DEG || latDeg <= UTM_SOUTH_DEG + POLAR_OVERLAP_DEG;
}

} // namespace

Plane upsFromGeodetic(const Ellipsoid &ellipsoid, const Geodetic &at, bool north)
{
    const Plane plane = polarStereographic(ellipsoid, at, north);
    return {UPS_FALSE_ORIGIN + UPS_SCALE * plane.x, UPS_FALSE_ORIGIN + UPS_SCALE * plane.y};
}

Geodetic geodeticFromUps(const Ellipsoid &ellipsoid, const Plane &ups, bool north)
{
    return inversePolarStereographic(
        ellipsoid, {(ups.x - UPS_FALSE_ORIGIN) / UPS_SCALE, (ups.y - UPS_FALSE_ORIGIN) / UPS_SCALE}, north);
}

double upsRadius(const Ellipsoid &ellipsoid, double absLatDeg)
{
    return -UPS_SCALE * polarStereographic(ellipsoid, {toRadians(absLatDeg), 0.0}, true).y;
}

int Convert_Geodetic_To_UPS(double latitude, double longitude, char *hemisphere, double *easting,
                            double *northing)
{
    const CheckedPoint point = checkPoint(latitude, longitude);
    int error = point.error;
    if (!withinUpsLatitudes(point.latDeg))
        error |= LatitudeError;
    if (error != 0)
        return error;
    const bool north = point.latDeg > 0.0;
    const Plane ups = upsFromGeodetic(currentEllipsoid(), point.at, north);
    *hemisphere = north ? 'N' : 'S';
    *easting = ups.x;
    *northing = ups.y;
    return 0;
}

int Convert_UPS_To_Geodetic(char hemisphere, double easting, double northing, double *latitude,
                            double *longitude)
{
    int error = 0;
    if (!(easting >= 0.0 && easting <= MAX_COORDINATE))
        error |= EastingError;
    if (!(northing >= 0.0 && northing <= MAX_COORDINATE))
        error |= NorthingError;
    if (hemisphere != 'N' && hemisphere != 'S')
        error |= HemisphereError;
    if (error != 0)
        return error;

    const Geodetic at = geodeticFromUps(currentEllipsoid(), {easting, northing}, hemisphere == 'N');
    if (!withinUpsLatitudes(toDegrees(at.latRad)))
        return EastingError | NorthingError;
    *latitude = at.latRad;
    *longitude = at.lonRad;
    return 0;
}

} // namespace mgrs
