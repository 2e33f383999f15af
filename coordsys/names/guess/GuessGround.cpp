#include "GuessGround_p.h"

#include "CrsParts_p.h"
#include "GeographicExtent_p.h"
#include "ProjLists_p.h"
#include "ProjPoint_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace nivora::cs {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double surroundings = 2.0; ///< degrees
constexpr char wgs84[] = "EPSG:4326";

/// Whether an operation is made for a place; so is one that does not tell its area.
bool isFor(PJ_CONTEXT *context, const PJ *operation, const QPointF &place)
{
    double west = 0.0;
    double south = 0.0;
    double east = 0.0;
    double north = 0.0;
    if (!proj_get_area_of_use(context, operation, &west, &south, &east, &north, nullptr))
        return true;
    const QRectF area(west, south, east < west ? east - west + 360.0 : east - west, north - south);
    return areaHolds(area, QRectF(place, QSizeF(0.0, 0.0)));
}

PjFactory factoryAround(PJ_CONTEXT *context, const QPointF &place)
{
    PjFactory factory(proj_create_operation_factory_context(context, nullptr));
    proj_operation_factory_context_set_area_of_interest(context, factory.get(), place.x() - surroundings,
                                                        place.y() - surroundings, place.x() + surroundings,
                                                        place.y() + surroundings);
    proj_operation_factory_context_set_spatial_criterion(context, factory.get(),
                                                         PROJ_SPATIAL_CRITERION_PARTIAL_INTERSECTION);
    proj_operation_factory_context_set_grid_availability_use(
        context, factory.get(), PROJ_GRID_AVAILABILITY_DISCARD_OPERATION_IF_MISSING_GRID);
    return factory;
}

/// The first operation that PROJ has for a place, null for none.
SearchedPj operationAt(PJ_CONTEXT *context, const PJ *from, const PJ *to, const QPointF &place,
                       PROJ_INTERMEDIATE_CRS_USE pivots)
{
    const PjFactory factory = factoryAround(context, place);
    proj_operation_factory_context_set_allow_use_intermediate_crs(context, factory.get(), pivots);
    const PjList list(proj_create_operations(context, from, to, factory.get()));
    const int count = list ? proj_list_get_count(list.get()) : 0;
    SearchedPj first;
    for (int i = 0; i < count; ++i) {
        SearchedPj operation(proj_list_get(context, list.get(), i));
        if (operation && isFor(context, operation.get(), place))
            return operation;
        if (!first)
            first = std::move(operation);
    }
    return first;
}

bool leavesDatumOut(PJ_CONTEXT *context, const PJ *operation)
{
    return !operation || proj_coordoperation_has_ballpark_transformation(context, operation);
}

/// Datums of the earth's own centre have its modern ellipsoids, and are metres from WGS 84 at most.
bool isGeocentric(PJ_CONTEXT *context, const PJ *crs)
{
    constexpr double majorM = 6378137.0;
    constexpr double mostM = 2.0;
    constexpr double inverseFlattening = 298.257;
    constexpr double mostInverse = 0.01;
    const SearchedPj ellipsoid(proj_get_ellipsoid(context, crs));
    double a = 0.0;
    double b = 0.0;
    double inverse = 0.0;
    int isComputed = 0;
    return ellipsoid &&
           proj_ellipsoid_get_parameters(context, ellipsoid.get(), &a, &b, &isComputed, &inverse) &&
           std::fabs(a - majorM) <= mostM && std::fabs(inverse - inverseFlattening) <= mostInverse;
}

} // namespace

std::vector<QPointF> GuessGround::inverse(const PlaneOfSystem &system, std::vector<QPointF> points)
{
    const Plane &plane = m_table.planes()[static_cast<std::size_t>(system.plane)];
    if (plane.object)
        return inverseByObject(plane, std::move(points));
    const QByteArray &pipeline = plane.pipeline;
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

std::vector<QPointF> GuessGround::inverseByObject(const Plane &plane, std::vector<QPointF> points) const
{
    const std::vector<QPointF> nowhere(points.size(), QPointF(nan, nan));
    try {
        const CoordSystemPtr system = m_wgs84 ? plane.object() : nullptr;
        if (!system)
            return nowhere;
        const CoordTransform way(system, m_wgs84);
        for (QPointF &point : points)
            if (QPointF there; way.forward(point, there))
                point = there;
            else
                point = {nan, nan};
        return points;
    } catch (const std::exception &) { // a text of the user's that makes no system
        return nowhere;
    }
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
    if (!from || !to) {
        shift.isKnown = false;
        return shift;
    }
    // Looking for ways by other systems takes a hundred times as long, and finds one for few datums.
    SearchedPj operation =
        operationAt(context, from.get(), to.get(), centre, PROJ_INTERMEDIATE_CRS_USE_NEVER);
    shift.isGeocentric = isGeocentric(context, from.get());
    shift.isKnown = shift.isGeocentric || !leavesDatumOut(context, operation.get());
    if (!shift.isKnown) {
        operation = operationAt(context, from.get(), to.get(), centre,
                                PROJ_INTERMEDIATE_CRS_USE_IF_NO_DIRECT_TRANSFORMATION);
        shift.isKnown = !leavesDatumOut(context, operation.get());
    }
    shift.pj.reset(operation ? proj_normalize_for_visualization(context, operation.get()) : nullptr);
    shift.in = CoordinateUnits::ofUnit(axisFactor(context, from.get()));
    shift.in.meridianDeg = meridianDeg(context, from.get());
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
    Ground ground{lonLat, shift.isKnown, shift.isGeocentric};
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
