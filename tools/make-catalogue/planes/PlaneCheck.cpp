#include "planes/PlaneCheck.h"

#include <algorithm>
#include <cmath>

namespace catalogue {
namespace {

constexpr double sameMeridian = 1.0e-8; // degrees: the driver keeps Paris to 12 decimals, EPSG to 8
constexpr double samePlace = 0.001;     // metres
constexpr int steps = 5;
constexpr double inset = 0.002; // of the area's sides: the edge itself may be the projection's limit
constexpr double highestLatitude = 89.9;
constexpr int enough = 9; // points that say something about the plane

/// In degrees from the datum's meridian.
Points gridOver(const Area &area, double meridian)
{
    Points points;
    for (int i = 0; i < steps; ++i)
        for (int j = 0; j < steps; ++j) {
            const double u = inset + (1.0 - 2.0 * inset) * i / (steps - 1);
            const double v = inset + (1.0 - 2.0 * inset) * j / (steps - 1);
            const double lon = area.west + (area.unwrappedEast() - area.west) * u;
            const double lat = area.south + (area.north - area.south) * v;
            points.emplace_back(wrapped(lon - meridian), std::clamp(lat, -highestLatitude, highestLatitude));
        }
    return points;
}

} // namespace

PlaneCheck::PlaneCheck(const EpsgSystem &system, const EpsgDatum &datum, const Srs &definition)
    : m_system(system)
    , m_datum(datum)
{
    if (!system.projected)
        return;
    m_grid = gridOver(system.area, datum.meridian);
    m_expected = definition.plane(m_grid);
}

QString PlaneCheck::fault(const std::optional<Srs> &srs, double tolerance) const
{
    if (!srs)
        return QStringLiteral("the text is refused");
    if (srs->isLocal() || srs->isGeographic() == m_system.projected)
        return QStringLiteral("another kind of system");
    if (!Ellipsoid{srs->semiMajor(), srs->semiMinor()}.isNear(m_datum.ellipsoid, tolerance))
        return QStringLiteral("another ellipsoid");
    if (std::fabs(srs->primeMeridian() - m_datum.meridian) > sameMeridian)
        return QStringLiteral("another prime meridian");
    return planeFault(*srs, std::max(tolerance, samePlace));
}

QString PlaneCheck::planeFault(const Srs &srs, double tolerance) const
{
    if (!m_system.projected)
        return {};
    const Points got = srs.plane(m_grid);
    double worst = 0.0;
    int compared = 0;
    for (std::size_t i = 0; i < got.size(); ++i) {
        if (!std::isfinite(m_expected[i].x()))
            continue;
        if (!std::isfinite(got[i].x()))
            return QStringLiteral("a point of the area is outside the projection");
        const QPointF off = (got[i] - m_expected[i]) * m_system.unitFactor;
        worst = std::max({worst, std::fabs(off.x()), std::fabs(off.y())});
        ++compared;
    }
    if (compared < enough)
        return QStringLiteral("too few points of the area can be projected");
    return worst <= tolerance ? QString() : QStringLiteral("plane off by %1 m").arg(worst, 0, 'g', 3);
}

} // namespace catalogue
