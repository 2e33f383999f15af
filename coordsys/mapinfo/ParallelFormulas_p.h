#pragma once

#include <cmath>

// Parallels of cones and cylinders (Snyder, Map Projections - A Working Manual, USGS 1987). Latitudes are
// radians, \p e2 is the squared eccentricity.

namespace nivora::cs {

inline constexpr double radPerDeg = 0.017453292519943295;
inline constexpr double quarterRad = 90.0 * radPerDeg;

/// Radius of a parallel over the semi-major axis (14-15).
inline double radius(double lat, double e2)
{
    return std::cos(lat) / std::sqrt(1.0 - e2 * std::sin(lat) * std::sin(lat));
}

/// Tangent of half the conformal colatitude (15-9).
inline double isometric(double lat, double e2)
{
    const double e = std::sqrt(e2);
    const double s = e * std::sin(lat);
    return std::tan(quarterRad / 2.0 - lat / 2.0) / std::pow((1.0 - s) / (1.0 + s), e / 2.0);
}

/// The parallel, between the origin and \p far, where a cone of one parallel has the scale 1; degrees.
inline double trueParallel(double origin, double scale, double far, double e2)
{
    const double n = std::sin(origin);
    const auto tooLarge = [&](double lat) {
        return scale * radius(origin, e2) / radius(lat, e2) *
                   std::pow(isometric(lat, e2) / isometric(origin, e2), n) >
               1.0;
    };
    double inner = origin;
    for (int i = 0; i < 200; ++i) {
        const double middle = (inner + far) / 2.0;
        (tooLarge(middle) ? far : inner) = middle;
    }
    return (inner + far) / 2.0 / radPerDeg;
}

/// The parallel where a Mercator map of a scale below 1 at the equator has the scale 1; degrees.
inline double mercatorParallel(double scale, double e2)
{
    return std::acos(std::sqrt(scale * scale * (1.0 - e2) / (1.0 - scale * scale * e2))) / radPerDeg;
}

/// Scale at the pole of a polar stereographic map that is true along the parallel (21-33 and 21-34).
inline double polarScale(double parallel, double e2)
{
    const double lat = std::fabs(parallel);
    const double e = std::sqrt(e2);
    if (quarterRad - lat < 1.0e-12)
        return 1.0;
    return radius(lat, e2) * std::sqrt(std::pow(1.0 + e, 1.0 + e) * std::pow(1.0 - e, 1.0 - e)) /
           (2.0 * isometric(lat, e2));
}

} // namespace nivora::cs
