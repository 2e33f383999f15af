#include "ellipsoid.h"

#include "arithmetic/grids_p.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <mutex>

namespace mgrs {
namespace {

constexpr double WGS84_SEMI_MAJOR = 6378137.0;
constexpr double WGS84_INVERSE_FLATTENING = 298.257223563; // NGA.STND.0036, table 3.1

using Coefficients = std::array<std::array<double, Ellipsoid::SeriesOrder>, Ellipsoid::SeriesOrder>;

// C. F. F. Karney, Transverse Mercator with an accuracy of a few nanometers, J. Geodesy 85 (2011), equations
// 35 and 36. Row j holds the factors of n^j, n^(j+1) ... n^6 of the j-th coefficient, n the third flattening.
// clang-format off
constexpr Coefficients alphaTable = {{
    {1.0 / 2, -2.0 / 3, 5.0 / 16, 41.0 / 180, -127.0 / 288, 7891.0 / 37800},
    {13.0 / 48, -3.0 / 5, 557.0 / 1440, 281.0 / 630, -1983433.0 / 1935360, 0.0},
    {61.0 / 240, -103.0 / 140, 15061.0 / 26880, 167603.0 / 181440, 0.0, 0.0},
    {49561.0 / 161280, -179.0 / 168, 6601661.0 / 7257600, 0.0, 0.0, 0.0},
    {34729.0 / 80640, -3418889.0 / 1995840, 0.0, 0.0, 0.0, 0.0},
    {212378941.0 / 319334400, 0.0, 0.0, 0.0, 0.0, 0.0},
}};
constexpr Coefficients betaTable = {{
    {1.0 / 2, -2.0 / 3, 37.0 / 96, -1.0 / 360, -81.0 / 512, 96199.0 / 604800},
    {1.0 / 48, 1.0 / 15, -437.0 / 1440, 46.0 / 105, -1118711.0 / 3870720, 0.0},
    {17.0 / 480, -37.0 / 840, -209.0 / 4480, 5569.0 / 90720, 0.0, 0.0},
    {4397.0 / 161280, -11.0 / 504, -830251.0 / 7257600, 0.0, 0.0, 0.0},
    {4583.0 / 161280, -108847.0 / 3991680, 0.0, 0.0, 0.0, 0.0},
    {20648693.0 / 638668800, 0.0, 0.0, 0.0, 0.0, 0.0},
}};
// clang-format on

Ellipsoid::Series seriesFor(const Coefficients &table, double n)
{
    Ellipsoid::Series series{};
    double power = 1.0;
    for (std::size_t j = 0; j < table.size(); ++j) {
        double value = 0.0;
        for (std::size_t k = table.size(); k-- > 0;)
            value = value * n + table[j][k];
        power *= n;
        series[j] = value * power;
    }
    return series;
}

// sinh(e atanh(e s)) for |s| <= 1. Both arguments are below 0.09 for every ellipsoid that is let in, where a
// few terms of Taylor's series are exact to the last bit and take a fifth of the time of the two library
// calls.
double sinhOfIsometricPart(double e, double s)
{
    const double x2 = e * s * e * s;
    const double y =
        e * e * s *
        (1.0 + x2 * (1.0 / 3 + x2 * (1.0 / 5 + x2 * (1.0 / 7 + x2 * (1.0 / 9 + x2 * (1.0 / 11 + x2 / 13))))));
    const double y2 = y * y;
    return y * (1.0 + y2 / 6 * (1.0 + y2 / 20));
}

// Sets are never freed or moved, so that the pointer can be read without a lock. Neither is the registry:
// a thread may still convert while the process ends.
struct Registry
{
    Registry() { current = &kept.emplace_back(WGS84_SEMI_MAJOR, WGS84_INVERSE_FLATTENING); }

    std::mutex mutex; ///< guards `kept`
    std::deque<Ellipsoid> kept;
    std::atomic<const Ellipsoid *> current{nullptr};
};

Registry &registry()
{
    static Registry *const instance = new Registry;
    return *instance;
}

} // namespace

Ellipsoid::Ellipsoid(double semiMajor_, double inverseFlattening_)
    : semiMajor(semiMajor_)
    , inverseFlattening(inverseFlattening_)
{
    const double f = 1.0 / inverseFlattening;
    const double n = f / (2.0 - f);
    const double n2 = n * n;
    m_oneMinusE2 = (1.0 - f) * (1.0 - f);
    m_eccentricity = std::sqrt(f * (2.0 - f));
    rectifyingRadius = semiMajor / (1.0 + n) * (1.0 + n2 * (1.0 / 4 + n2 * (1.0 / 64 + n2 / 256))); // eq. 14
    alpha = seriesFor(alphaTable, n);
    beta = seriesFor(betaTable, n);
    // J. P. Snyder, Map projections: a working manual, USGS Professional Paper 1395 (1987), equation 21-33.
    const double e = m_eccentricity;
    polarFactor = 2.0 * semiMajor / std::sqrt(std::pow(1.0 + e, 1.0 + e) * std::pow(1.0 - e, 1.0 - e));
}

// Karney, equations 7 to 9.
double Ellipsoid::conformalTangent(double tau) const
{
    const double secant = std::sqrt(1.0 + tau * tau);
    if (!std::isfinite(secant))
        return tau;
    const double sigma = sinhOfIsometricPart(m_eccentricity, tau / secant);
    return tau * std::sqrt(1.0 + sigma * sigma) - sigma * secant;
}

// Newton's method, Karney, equations 19 to 21. It converges quadratically: when a step is below the root of
// the precision, the next one would be lost in rounding. Two steps are the rule.
double Ellipsoid::geodeticTangent(double conformalTau) const
{
    constexpr int maxSteps = 5;
    constexpr double lastStep = 1e-9;
    double tau = conformalTau / m_oneMinusE2;
    if (!std::isfinite(tau * tau))
        return tau;
    for (int step = 0; step < maxSteps; ++step) {
        const double reached = conformalTangent(tau);
        const double delta = (conformalTau - reached) * (1.0 + m_oneMinusE2 * tau * tau) /
                             (m_oneMinusE2 * std::sqrt((1.0 + reached * reached) * (1.0 + tau * tau)));
        tau += delta;
        if (!(std::fabs(delta) > lastStep * std::max(1.0, std::fabs(tau))))
            break;
    }
    return tau;
}

const Ellipsoid &currentEllipsoid() { return *registry().current.load(std::memory_order_acquire); }

int Set_Ellipsoid_Parameters(double semi_major, double inverse_flattening)
{
    int error = 0;
    if (!(semi_major > 0.0) || !std::isfinite(semi_major))
        error |= SemiMajorError;
    if (!(inverse_flattening >= 250.0 && inverse_flattening <= 350.0))
        error |= InverseFlatteningError;
    if (error != 0)
        return error;

    Registry &all = registry();
    const std::lock_guard<std::mutex> lock(all.mutex);
    const auto same = [&](const Ellipsoid &kept) {
        return kept.semiMajor == semi_major && kept.inverseFlattening == inverse_flattening;
    };
    const auto found = std::find_if(all.kept.begin(), all.kept.end(), same);
    const Ellipsoid *next =
        found != all.kept.end() ? &*found : &all.kept.emplace_back(semi_major, inverse_flattening);
    all.current.store(next, std::memory_order_release);
    return 0;
}

void Get_Ellipsoid_Parameters(double *semi_major, double *inverse_flattening)
{
    const Ellipsoid &ellipsoid = currentEllipsoid();
    *semi_major = ellipsoid.semiMajor;
    *inverse_flattening = ellipsoid.inverseFlattening;
}

namespace {

// 0.17 micrometres on the ground. It covers the rounding of a degree that became radians and came back, and
// is more than the tolerance of the metre (see mgrs.cpp), so that a point kept off an edge is not carried
// over it.
constexpr double WHOLE_DEGREE_TOLERANCE = 1.5e-12;

// Degrees of an angle; the angle itself is corrected when it stands for a whole degree.
double degreesOf(double &rad)
{
    const double degrees = toDegrees(rad);
    const double whole = std::nearbyint(degrees);
    if (!(std::fabs(degrees - whole) <= WHOLE_DEGREE_TOLERANCE))
        return degrees;
    rad = toRadians(whole);
    return whole;
}

} // namespace

CheckedPoint checkPoint(double latitude, double longitude)
{
    CheckedPoint point;
    point.at = {latitude, longitude};
    point.latDeg = degreesOf(point.at.latRad);
    point.lonDeg = degreesOf(point.at.lonRad);
    if (!(point.latDeg >= -90.0 && point.latDeg <= 90.0))
        point.error |= LatitudeError;
    if (!(point.lonDeg >= -180.0 && point.lonDeg <= 360.0))
        point.error |= LongitudeError;
    if (point.lonDeg >= 180.0) {
        point.lonDeg -= 360.0;
        point.at.lonRad -= 2.0 * PI;
    }
    return point;
}

} // namespace mgrs
