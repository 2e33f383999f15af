#include "reading/Area.h"

#include <algorithm>
#include <cmath>

namespace catalogue {
namespace {

constexpr double degreeRad = 0.017453292519943295;

double band(double south, double north) { return std::sin(north * degreeRad) - std::sin(south * degreeRad); }

} // namespace

double Area::size() const
{
    return std::max(unwrappedEast() - west, 0.0) * std::max(band(south, north), 0.0);
}

double Area::shareCoveredBy(const Area &other) const
{
    const double low = std::max(south, other.south);
    const double high = std::min(north, other.north);
    if (!(low < high) || !(size() > 0.0))
        return 0.0;
    double common = 0.0;
    for (const double turn : {-360.0, 0.0, 360.0}) {
        const double left = std::max(west, other.west + turn);
        const double right = std::min(unwrappedEast(), other.unwrappedEast() + turn);
        common += std::max(right - left, 0.0) * band(low, high);
    }
    return std::min(common / size(), 1.0);
}

double wrapped(double degrees, double around) { return around + std::remainder(degrees - around, 360.0); }

} // namespace catalogue
