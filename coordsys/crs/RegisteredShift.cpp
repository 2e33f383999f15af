#include "RegisteredShift_p.h"

#include "CrsParts_p.h"
#include "ProjLists_p.h"
#include "ProjPoint_p.h"
#include "SearchContext_p.h"

#include <cmath>

namespace nivora::cs {
namespace {

constexpr double farM = 100.0;

PjHandle registered(PJ_CONTEXT *context, int epsg)
{
    const QByteArray name = QStringLiteral("EPSG:%1").arg(epsg).toLatin1();
    const PjHandle crs = ownPj(proj_create(context, name.constData()));
    return crs ? horizontalPart(context, crs.get()) : nullptr;
}

PjList operationsToWgs84(PJ_CONTEXT *context, const PJ *crs)
{
    const PjHandle base = baseOf(context, crs);
    const PjHandle wgs84 = registered(context, 4326);
    const PjFactory factory(proj_create_operation_factory_context(context, "EPSG"));
    if (!base || !wgs84 || !factory)
        return nullptr;
    proj_operation_factory_context_set_spatial_criterion(context, factory.get(),
                                                         PROJ_SPATIAL_CRITERION_PARTIAL_INTERSECTION);
    proj_operation_factory_context_set_allow_use_intermediate_crs(context, factory.get(),
                                                                  PROJ_INTERMEDIATE_CRS_USE_NEVER);
    proj_operation_factory_context_set_discard_superseded(context, factory.get(), 0);
    return PjList(proj_create_operations(context, base.get(), wgs84.get(), factory.get()));
}

bool isSameShift(const Shift &a, const Shift &b)
{
    for (std::size_t i = 0; i < a.size(); ++i)
        if (!(std::fabs(a[i] - b[i]) <= (i < 3 ? 0.01 : 0.001)))
            return false;
    return true;
}

/// West, south, east, north.
using Box = std::array<double, 4>;

PjHandle toWgs84(PJ_CONTEXT *context, const PJ *crs, const Box &box)
{
    const PjHandle wgs84 = registered(context, 4326);
    const PjArea area(proj_area_create());
    proj_area_set_bbox(area.get(), box[0], box[1], box[2], box[3]);
    const PjHandle way =
        ownPj(proj_create_crs_to_crs_from_pj(context, crs, wgs84.get(), area.get(), nullptr));
    return way ? ownPj(proj_normalize_for_visualization(context, way.get())) : nullptr;
}

/// A tenth of a degree around a place: operations for elsewhere need no look.
Box boxAround(const QPointF &place)
{
    return {place.x() - 0.05, place.y() - 0.05, place.x() + 0.05, place.y() + 0.05};
}

double distanceM(const PJ_COORD &a, const PJ_COORD &b)
{
    constexpr double metresPerDegree = 111195.0;
    const double eastward = std::remainder(a.xy.x - b.xy.x, 360.0) * std::cos(proj_torad(a.xy.y));
    return metresPerDegree * std::hypot(eastward, a.xy.y - b.xy.y);
}

} // namespace

bool hasRegisteredShift(int epsg, const Shift &shift)
{
    const SearchContext context;
    const PjHandle crs = registered(context.get(), epsg);
    const auto operations = crs ? operationsToWgs84(context.get(), crs.get()) : nullptr;
    for (int i = 0; operations && i < proj_list_get_count(operations.get()); ++i) {
        const PjHandle operation = ownPj(proj_list_get(context.get(), operations.get(), i));
        Shift figures{};
        if (proj_coordoperation_get_towgs84_values(context.get(), operation.get(), figures.data(), 7, 0) &&
            isSameShift(figures, shift))
            return true;
    }
    return false;
}

bool middleOfArea(PJ_CONTEXT *context, const PJ *crs, QPointF &place)
{
    double west = 0.0, south = 0.0, east = 0.0, north = 0.0;
    if (!proj_get_area_of_use(context, crs, &west, &south, &east, &north, nullptr))
        return false;
    if (east < west)
        east += 360.0; // across the 180th meridian
    place = QPointF(std::remainder(0.5 * (west + east), 360.0), 0.5 * (south + north));
    return true;
}

std::optional<double> distanceBetweenShifts(PJ_CONTEXT *context, const PJ *first, const PJ *second,
                                            const QPointF &lonLat)
{
    const PjHandle firstWay = toWgs84(context, first, boxAround(lonLat));
    const PjHandle secondWay = toWgs84(context, second, boxAround(lonLat));
    if (!firstWay || !secondWay)
        return std::nullopt;
    const PJ_COORD place = projPoint(lonLat.x(), lonLat.y());
    const PJ_COORD numbers = proj_trans(firstWay.get(), PJ_INV, place);
    const double apartM = distanceM(proj_trans(secondWay.get(), PJ_FWD, numbers), place);
    return std::isfinite(apartM) ? std::make_optional(apartM) : std::nullopt;
}

bool isWithin100m(int epsg, const QString &wkt)
{
    const SearchContext context;
    const PjHandle theirs = registered(context.get(), epsg);
    const PjHandle mine = ownPj(proj_create(context.get(), wkt.toUtf8().constData()));
    QPointF place;
    if (!theirs || !mine || !middleOfArea(context.get(), theirs.get(), place))
        return false;
    return distanceBetweenShifts(context.get(), theirs.get(), mine.get(), place).value_or(HUGE_VAL) <= farM;
}

} // namespace nivora::cs
