#pragma once

#include <array>
#include <cmath>

/// What the grid files share. Names that end in Rad are radians, lengths are metres.
namespace mgrs {

constexpr double PI = 3.14159265358979323846;

constexpr double toRadians(double degrees) { return degrees * (PI / 180.0); }
constexpr double toDegrees(double radians) { return radians * (180.0 / PI); }

struct Geodetic
{
    double latRad = 0.0;
    double lonRad = 0.0;
};

struct Plane
{
    double x = 0.0;
    double y = 0.0;
};

/// Everything that depends on the ellipsoid alone, derived once.
class Ellipsoid
{
public:
    static constexpr int SeriesOrder = 6;
    using Series = std::array<double, SeriesOrder>;

    Ellipsoid(double semiMajor, double inverseFlattening);

    /// Tangent of the conformal latitude from that of the geodetic one, and back. Infinity stays infinity.
    double conformalTangent(double tau) const;
    double geodeticTangent(double conformalTau) const;

    double semiMajor;
    double inverseFlattening;
    double rectifyingRadius; ///< the meridian is as long as that of a sphere with this radius
    double polarFactor;      ///< distance from the pole over tan(half the conformal colatitude), at scale 1
    Series alpha;            ///< Krueger's series from the conformal sphere to the plane
    Series beta;             ///< and back

private:
    double m_eccentricity;
    double m_oneMinusE2;
};

/// The ellipsoid in force; it lives as long as the process. Take it once per conversion.
const Ellipsoid &currentEllipsoid();

/// Latitude and longitude as given, checked, with whole degrees restored: zones and bands end on whole
/// degrees, and a degree that went through radians must not fall on the wrong side of its edge.
struct CheckedPoint
{
    int error = 0;
    Geodetic at;         ///< longitude in [-pi, pi)
    double latDeg = 0.0; ///< in [-90, 90]
    double lonDeg = 0.0; ///< in [-180, 180)
};
CheckedPoint checkPoint(double latitude, double longitude);

/// \name Transverse Mercator at scale 1, counted from the equator and the central meridian
/// @{
/// False where the series is not exact to a nanometre or two: beyond about 4000 km from the meridian.
bool transverseMercator(const Ellipsoid &ellipsoid, double latRad, double lonFromMeridianRad, Plane &out);
bool inverseTransverseMercator(const Ellipsoid &ellipsoid, const Plane &plane, Geodetic &out);
/// @}

/// \name Polar stereographic at scale 1, counted from the pole
/// The y axis runs along the meridian 180 degrees at the north pole, along 0 at the south pole.
/// @{
Plane polarStereographic(const Ellipsoid &ellipsoid, const Geodetic &at, bool north);
Geodetic inversePolarStereographic(const Ellipsoid &ellipsoid, const Plane &plane, bool north);
/// @}

/// \name UTM with its false easting, but northings counted from the equator, negative south of it
/// @{
int standardZone(double latDeg, double lonDeg);
double centralMeridianDeg(int zone);
bool utmFromGeodetic(const Ellipsoid &ellipsoid, double latRad, double lonFromMeridianRad, Plane &out);
/// The longitude is from the central meridian.
bool geodeticFromUtm(const Ellipsoid &ellipsoid, const Plane &utm, Geodetic &out);
/// @}

/// \name UPS with its false origin
/// @{
Plane upsFromGeodetic(const Ellipsoid &ellipsoid, const Geodetic &at, bool north);
Geodetic geodeticFromUps(const Ellipsoid &ellipsoid, const Plane &ups, bool north);
/// Distance in the plane of a parallel from its pole.
double upsRadius(const Ellipsoid &ellipsoid, double absLatDeg);
/// @}

constexpr double UTM_FALSE_EASTING = 500000.0;
constexpr double UTM_SCALE = 0.9996;
constexpr double UPS_FALSE_ORIGIN = 2000000.0;

/// Where UTM gives way to UPS (84 degrees belong to UPS, -80 to UTM), and by how much both reach into the
/// other (DMA TM 8358.2). A tenth of a millimetre more keeps an edge inside that went through the plane.
constexpr double UTM_SOUTH_DEG = -80.0;
constexpr double UTM_NORTH_DEG = 84.0;
constexpr double POLAR_OVERLAP_DEG = 0.5 + 1e-9;

} // namespace mgrs
