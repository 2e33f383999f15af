#include "utm.h"

#include "arithmetic/grids_p.h"

namespace mgrs {
namespace {

constexpr double SOUTH_FALSE_NORTHING = 10000000.0;
constexpr double MIN_EASTING = 100000.0;
constexpr double MAX_EASTING = 900000.0;
constexpr double MAX_NORTHING = 10000000.0;

bool withinUtmLatitudes(double latDeg)
{
    return latDeg >= UTM_SOUTH_DEG - POLAR_OVERLAP_DEG && latDeg <= UTM_NORTH_DEG + POLAR_OVERLAP_DEG;
}

bool isZone(int zone) { return zone >= 1 && zone <= 60; }

double fromMeridian(double lonRad, int zone)
{
    const double difference = lonRad - toRadians(centralMeridianDeg(zone));
    if (difference > PI)
        return difference - 2.0 * PI;
    return difference < -PI ? difference + 2.0 * PI : difference;
}

int convertInZone(const CheckedPoint &point, int zone, char *hemisphere, double *easting, double *northing)
{
    Plane utm;
    const bool reached =
        utmFromGeodetic(currentEllipsoid(), point.at.latRad, fromMeridian(point.at.lonRad, zone), utm);
    if (!reached || !(utm.x >= MIN_EASTING && utm.x <= MAX_EASTING))
        return LongitudeError;
    const bool south = point.latDeg < 0.0;
    *hemisphere = south ? 'S' : 'N';
    *easting = utm.x;
    *northing = south ? utm.y + SOUTH_FALSE_NORTHING : utm.y;
    return 0;
}

} // namespace

double centralMeridianDeg(int zone) { return 6.0 * zone - 183.0; }

// Zones are six degrees wide but for four rows of Norway and Svalbard (NGA.STND.0037, Universal grids and
// grid reference systems, 2014; DMA TM 8358.1). West and south edges belong to a zone.
int standardZone(double latDeg, double lonDeg)
{
    if (latDeg >= 56.0 && latDeg < 64.0 && lonDeg >= 3.0 && lonDeg < 12.0)
        return 32;
    if (latDeg >= 72.0 && lonDeg >= 0.0 && lonDeg < 42.0)
        return lonDeg < 9.0 ? 31 : lonDeg < 21.0 ? 33 : lonDeg < 33.0 ? 35 : 37;
    return static_cast<int>(std::floor((lonDeg + 180.0) / 6.0)) + 1;
}

bool utmFromGeodetic(const Ellipsoid &ellipsoid, double latRad, double lonFromMeridianRad, Plane &out)
{
    Plane plane;
    if (!transverseMercator(ellipsoid, latRad, lonFromMeridianRad, plane))
        return false;
    out = {UTM_FALSE_EASTING + UTM_SCALE * plane.x, UTM_SCALE * plane.y};
    return true;
}

bool geodeticFromUtm(const Ellipsoid &ellipsoid, const Plane &utm, Geodetic &out)
{
    return inverseTransverseMercator(ellipsoid, {(utm.x - UTM_FALSE_EASTING) / UTM_SCALE, utm.y / UTM_SCALE},
                                     out);
}

int Convert_Geodetic_To_UTM(double latitude, double longitude, int *zone, char *hemisphere, double *easting,
                            double *northing)
{
    const CheckedPoint point = checkPoint(latitude, longitude);
    int error = point.error;
    if (!withinUtmLatitudes(point.latDeg))
        error |= LatitudeError;
    if (error != 0)
        return error;
    const int found = standardZone(point.latDeg, point.lonDeg);
    error = convertInZone(point, found, hemisphere, easting, northing);
    if (error == 0)
        *zone = found;
    return error;
}

int Convert_Geodetic_To_UTM_Zone(double latitude, double longitude, int zone, char *hemisphere,
                                 double *easting, double *northing)
{
    const CheckedPoint point = checkPoint(latitude, longitude);
    int error = point.error;
    if (!withinUtmLatitudes(point.latDeg))
        error |= LatitudeError;
    if (!isZone(zone))
        error |= ZoneError;
    return error != 0 ? error : convertInZone(point, zone, hemisphere, easting, northing);
}

int Convert_UTM_To_Geodetic(int zone, char hemisphere, double easting, double northing, double *latitude,
                            double *longitude)
{
    int error = 0;
    if (!(easting >= MIN_EASTING && easting <= MAX_EASTING))
        error |= EastingError;
    if (!(northing >= 0.0 && northing <= MAX_NORTHING))
        error |= NorthingError;
    if (!isZone(zone))
        error |= ZoneError;
    if (hemisphere != 'N' && hemisphere != 'S')
        error |= HemisphereError;
    if (error != 0)
        return error;

    const Plane utm{easting, hemisphere == 'S' ? northing - SOUTH_FALSE_NORTHING : northing};
    Geodetic at;
    if (!geodeticFromUtm(currentEllipsoid(), utm, at) || !withinUtmLatitudes(toDegrees(at.latRad)))
        return NorthingError;
    *latitude = at.latRad;
    *longitude = std::remainder(at.lonRad + toRadians(centralMeridianDeg(zone)), 2.0 * PI);
    return 0;
}

} // namespace mgrs
