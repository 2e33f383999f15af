#include "tranmerc.h"

#include "arithmetic/grids_p.h"

namespace mgrs {
namespace {

// The reach of the series in units of the rectifying radius, 4100 km on the earth. The first term left out is
// below two nanometres there.
constexpr double REACH = 0.65;
constexpr double SINH_REACH = 0.697; // sinh(REACH)

constexpr double HALF_PI = PI / 2.0;
constexpr double POLE_SLACK = 1e-12; // a pole that went through the plane is still a pole

// Sum of c_j sin(2 j z) for z = xi + i eta by Clenshaw's method, from the functions of 2 xi and 2 eta.
Plane sineSeries(const Ellipsoid::Series &c, double sin2, double cos2, double sinh2, double cosh2)
{
    const double re = 2.0 * cos2 * cosh2;
    const double im = -2.0 * sin2 * sinh2;
    Plane b1, b2; // y real, x imaginary, as xi runs north and eta east
    for (std::size_t j = c.size(); j-- > 0;) {
        const Plane b0{re * b1.x + im * b1.y - b2.x, re * b1.y - im * b1.x - b2.y + c[j]};
        b2 = b1;
        b1 = b0;
    }
    const double sinRe = sin2 * cosh2;
    const double sinIm = cos2 * sinh2;
    return {sinRe * b1.x + sinIm * b1.y, sinRe * b1.y - sinIm * b1.x};
}

double normalizedLongitude(double lonRad)
{
    if (lonRad > PI)
        return lonRad - 2.0 * PI;
    return lonRad < -PI ? lonRad + 2.0 * PI : lonRad;
}

double originNorthing(const Ellipsoid &ellipsoid, const TransverseMercatorParameters &grid)
{
    Plane origin;
    if (grid.originLatitude != 0.0)
        transverseMercator(ellipsoid, grid.originLatitude, 0.0, origin);
    return origin.y * grid.scaleFactor;
}

} // namespace

// Karney, equations 7 to 11. The functions of the doubled angles follow from those of the conformal sphere
// without another call of the library.
bool transverseMercator(const Ellipsoid &ellipsoid, double latRad, double lonFromMeridianRad, Plane &out)
{
    if (!(std::fabs(lonFromMeridianRad) <= HALF_PI))
        return false;
    const double tau = ellipsoid.conformalTangent(std::tan(latRad));
    const double sinLon = std::sin(lonFromMeridianRad);
    const double cosLon = std::cos(lonFromMeridianRad);
    const double r = std::sqrt(tau * tau + cosLon * cosLon);
    const double sinhEta = sinLon / r;
    if (!(std::fabs(sinhEta) <= SINH_REACH))
        return false;
    const double coshEta = std::sqrt(1.0 + sinhEta * sinhEta);
    const double sinXi = tau / r;
    const double cosXi = cosLon / r;
    const Plane add = sineSeries(ellipsoid.alpha, 2.0 * sinXi * cosXi, (cosXi - sinXi) * (cosXi + sinXi),
                                 2.0 * sinhEta * coshEta, 1.0 + 2.0 * sinhEta * sinhEta);
    out = {ellipsoid.rectifyingRadius * (std::asinh(sinhEta) + add.x),
           ellipsoid.rectifyingRadius * (std::atan2(tau, cosLon) + add.y)};
    return true;
}

// Karney, equations 15 to 18.
bool inverseTransverseMercator(const Ellipsoid &ellipsoid, const Plane &plane, Geodetic &out)
{
    const double eta = plane.x / ellipsoid.rectifyingRadius;
    const double xi = plane.y / ellipsoid.rectifyingRadius;
    if (!(std::fabs(eta) <= REACH && std::fabs(xi) <= HALF_PI + POLE_SLACK))
        return false;
    const double sinhEta = std::sinh(2.0 * eta);
    const Plane sub = sineSeries(ellipsoid.beta, std::sin(2.0 * xi), std::cos(2.0 * xi), sinhEta,
                                 std::sqrt(1.0 + sinhEta * sinhEta));
    const double sinhSphere = std::sinh(eta - sub.x);
    const double xiSphere = xi - sub.y;
    const double cosXi = std::cos(xiSphere);
    const double tau = std::sin(xiSphere) / std::sqrt(sinhSphere * sinhSphere + cosXi * cosXi);
    out = {std::atan(ellipsoid.geodeticTangent(tau)), std::atan2(sinhSphere, cosXi)};
    return true;
}

int Convert_Geodetic_To_Transverse_Mercator(const TransverseMercatorParameters &grid, double latitude,
                                            double longitude, double *easting, double *northing)
{
    const CheckedPoint point = checkPoint(latitude, longitude);
    if (point.error != 0)
        return point.error;
    const Ellipsoid &ellipsoid = currentEllipsoid();
    Plane plane;
    if (!transverseMercator(ellipsoid, point.at.latRad,
                            normalizedLongitude(point.at.lonRad - grid.centralMeridian), plane))
        return LongitudeError;
    *easting = grid.falseEasting + grid.scaleFactor * plane.x;
    *northing = grid.falseNorthing + grid.scaleFactor * plane.y - originNorthing(ellipsoid, grid);
    return 0;
}

int Convert_Transverse_Mercator_To_Geodetic(const TransverseMercatorParameters &grid, double easting,
                                            double northing, double *latitude, double *longitude)
{
    const Ellipsoid &ellipsoid = currentEllipsoid();
    const Plane plane{(easting - grid.falseEasting) / grid.scaleFactor,
                      (northing - grid.falseNorthing + originNorthing(ellipsoid, grid)) / grid.scaleFactor};
    Geodetic at;
    if (!inverseTransverseMercator(ellipsoid, plane, at)) {
        const bool tooFarEast = !(std::fabs(plane.x) <= REACH * ellipsoid.rectifyingRadius);
        const bool beyondPole = !(std::fabs(plane.y) <= (HALF_PI + POLE_SLACK) * ellipsoid.rectifyingRadius);
        return (tooFarEast ? EastingError : 0) | (beyondPole ? NorthingError : 0);
    }
    *latitude = at.latRad;
    *longitude = normalizedLongitude(at.lonRad + grid.centralMeridian);
    return 0;
}

} // namespace mgrs
