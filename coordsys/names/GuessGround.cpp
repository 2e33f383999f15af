#include "GuessGround_p.h"

#include "CrsParts_p.h"
#include "ProjLists_p.h"
#include "ProjPoint_p.h"
#include <coordsys/CoordSystemTypes.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace nivora::cs {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double surroundings = 2.0; ///< degrees
constexpr char wgs84[] = "EPSG:4326";

bool leavesDatumOut(PJ_CONTEXT *context, PJ *pj)
{
    const SearchedPj used(proj_trans_get_last_used_operation(pj));
    return used && proj_coordoperation_has_ballpark_transformation(context, used.get());
}

} // namespace

std::vector<QPointF> GuessGround::inverse(const PlaneOfSystem &system, std::vector<QPointF> points)
{
    const QByteArray &pipeline = m_table.planes()[static_cast<std::size_t>(system.plane)].pipeline;
    if (pipeline.isEmpty()) {
        for (QPointF &point : points)
            point.rx() += system.meridianDeg;
        return points;
    }
    auto made = m_planes.find(system.plane);
    if (made == m_planes.end())
        made = m_planes.emplace(system.plane, SearchedPj(proj_create(m_context.get(), pipeline.constData())))
                   .first;
    if (!made->second)
        return std::vector<QPointF>(points.size(), QPointF(nan, nan));
    for (QPointF &point : points) {
        const PJ_COORD at = proj_trans(made->second.get(), PJ_INV, projPoint(point.x(), point.y()));
        const bool isPlace = std::isfinite(at.xy.x) && std::isfinite(at.xy.y);
        point = isPlace ? QPointF(at.xy.x + system.meridianDeg, at.xy.y) : QPointF(nan, nan);
    }
    return points;
}

GuessGround::Key GuessGround::keyOf(const PlaneOfSystem &system, const QPointF &centre)
{
    return {system.base, static_cast<int>(std::floor(centre.x() / surroundings)),
            static_cast<int>(std::floor(centre.y() / surroundings))};
}

GuessGround::Shift GuessGround::shiftBetween(const QByteArray &base, const QPointF &centre)
{
    Shift shift;
    if (base == wgs84)
        return shift;
    PJ_CONTEXT *context = m_context.get();
    const SearchedPj from(base.isEmpty() ? nullptr : proj_create(context, base.constData()));
    const SearchedPj to(proj_create(context, wgs84));
    const PjArea area(proj_area_create());
    proj_area_set_bbox(area.get(), centre.x() - surroundings, centre.y() - surroundings,
                       centre.x() + surroundings, centre.y() + surroundings);
    const SearchedPj pj(
        from ? proj_create_crs_to_crs_from_pj(context, from.get(), to.get(), area.get(), nullptr) : nullptr);
    shift.pj.reset(pj ? proj_normalize_for_visualization(context, pj.get()) : nullptr);
    shift.isKnown = shift.pj != nullptr;
    if (!shift.pj)
        return shift;
    shift.in = CoordinateUnits::ofUnit(axisFactor(context, from.get()));
    shift.in.meridianDeg = meridianDeg(context, from.get());
    double x = centre.x();
    double y = centre.y();
    shift.in.enter(x, y);
    proj_trans(shift.pj.get(), PJ_FWD, projPoint(x, y));
    shift.isKnown = !leavesDatumOut(context, shift.pj.get());
    return shift;
}

const GuessGround::Shift &GuessGround::shiftOf(const PlaneOfSystem &system, const QPointF &centre)
{
    const Key key = keyOf(system, centre);
    auto made = m_shifts.find(key);
    if (made == m_shifts.end())
        made = m_shifts
                   .emplace(key, shiftBetween(m_table.bases()[static_cast<std::size_t>(system.base)], centre))
                   .first;
    return made->second;
}

Ground GuessGround::onWgs84(const PlaneOfSystem &system, const std::vector<QPointF> &lonLat,
                            const QPointF &centre)
{
    const Shift &shift = shiftOf(system, centre);
    Ground ground{lonLat, shift.isKnown};
    if (!shift.pj)
        return ground;
    for (QPointF &point : ground.lonLat) {
        double x = point.x();
        double y = point.y();
        shift.in.enter(x, y);
        const PJ_COORD at = proj_trans(shift.pj.get(), PJ_FWD, projPoint(x, y));
        x = at.xy.x;
        y = at.xy.y;
        if (std::isfinite(x) && std::isfinite(y))
            point = {x, y};
    }
    return ground;
}

double metresBetween(const QPointF &a, const QPointF &b)
{
    constexpr double earthRadiusM = 6371000.0;
    const double rad = CoordSystemTypes::DEGREES_TO_RADIANS;
    const double north = std::sin((b.y() - a.y()) * rad / 2.0);
    const double east = std::sin((b.x() - a.x()) * rad / 2.0);
    const double square = north * north + std::cos(a.y() * rad) * std::cos(b.y() * rad) * east * east;
    return 2.0 * earthRadiusM * std::asin(std::sqrt(std::min(1.0, square)));
}

} // namespace nivora::cs
