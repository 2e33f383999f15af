#pragma once

// Areas between two meridians and two parallels, degrees; width may run on across the 180th meridian.

#include <coordsys/CoordSystemTypes.h>

#include <QRectF>

#include <cmath>

namespace nivora::cs {

/// The same area without a negative width, which PROJ's sides have across the 180th meridian, and so do the
/// areas of the public structures.
inline QRectF eastward(QRectF area)
{
    if (area.width() < 0.0)
        area.setWidth(area.width() + 360.0);
    return area;
}

/// As a share of the sphere.
inline double shareOfEarth(const QRectF &area)
{
    const auto sine = [](double degrees) { return std::sin(degrees * CoordSystemTypes::DEGREES_TO_RADIANS); };
    return area.width() / 360.0 * (sine(area.bottom()) - sine(area.top())) / 2.0;
}

/// Whether an area holds all of another, which may be a point; a null area holds nothing.
inline bool areaHolds(const QRectF &area, const QRectF &part)
{
    constexpr double aboutADecimetre = 1e-6;
    if (area.isNull() || !std::isfinite(part.left()) || !(part.top() >= area.top() - aboutADecimetre) ||
        !(part.bottom() <= area.bottom() + aboutADecimetre))
        return false;
    const double turned = std::fmod(part.left() - area.left(), 360.0);
    const double east = turned < -aboutADecimetre ? turned + 360.0 : turned;
    return area.width() >= 360.0 || east + part.width() <= area.width() + aboutADecimetre;
}

} // namespace nivora::cs
