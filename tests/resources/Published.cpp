#include "Published.h"

#include <support/Support.h>

#include <coordsys/CoordTransform.h>

#include <QHash>
#include <QtMath>

#include <algorithm>
#include <cmath>

using namespace nivora::cs;

namespace catalogue {
namespace {

constexpr double never = std::numeric_limits<double>::infinity();

double metresBetween(const QPointF &a, const QPointF &b)
{
    constexpr double metresPerDegree = 111320.0; // good for telling millimetres and a hundred metres
    return metresPerDegree *
           std::hypot(std::remainder(a.x() - b.x(), 360.0) * std::cos(qDegreesToRadians(a.y())),
                      a.y() - b.y());
}

/// False for an operation that is no Helmert transformation.
bool figures(const PJ *operation, Seven &seven)
{
    return proj_coordoperation_get_towgs84_values(nullptr, operation, seven.data(), 7, 0) != 0;
}

QByteArray datumOf(PJ *crs)
{
    const Pj datum(proj_crs_get_datum_forced(nullptr, crs), proj_destroy);
    return datum ? QByteArray(proj_get_id_code(datum.get(), 0)) : QByteArray();
}

} // namespace

bool Operation::holds(const QPointF &lonLat) const
{
    const double fromWest = std::remainder(lonLat.x() - west - 180.0, 360.0) + 180.0;
    return fromWest <= east - west && lonLat.y() >= south && lonLat.y() <= north;
}

QPointF Operation::wgs84(const PJ_COORD &onBase) const
{
    const PJ_COORD c = proj_trans(pj.get(), PJ_FWD, onBase);
    return {c.xy.x, c.xy.y};
}

Seven figuresOf(const TABProjInfo_t &info)
{
    return {info.dDatumShiftX,      info.dDatumShiftY,      info.dDatumShiftZ,    -info.adDatumParams[0],
            -info.adDatumParams[1], -info.adDatumParams[2], info.adDatumParams[3]};
}

Published::Published()
    : m_wgs84(registered("4326"))
    , m_context(proj_create_operation_factory_context(nullptr, nullptr),
                proj_operation_factory_context_destroy)
{
    PJ_OPERATION_FACTORY_CONTEXT *const c = m_context.get();
    proj_operation_factory_context_set_spatial_criterion(nullptr, c,
                                                         PROJ_SPATIAL_CRITERION_PARTIAL_INTERSECTION);
    proj_operation_factory_context_set_grid_availability_use(nullptr, c, PROJ_GRID_AVAILABILITY_IGNORED);
    proj_operation_factory_context_set_allow_ballpark_transformations(nullptr, c, 0);
    proj_operation_factory_context_set_discard_superseded(nullptr, c, 0);
    proj_operation_factory_context_set_allow_use_intermediate_crs(nullptr, c,
                                                                  PROJ_INTERMEDIATE_CRS_USE_ALWAYS);
}

const std::vector<Operation> &Published::of(PJ *base)
{
    const auto [found, isNew] = m_operations.try_emplace(proj_get_id_code(base, 0));
    if (isNew)
        found->second = withoutGrids(base);
    return found->second;
}

bool Published::hasFigures(PJ *base, const Seven &seven)
{
    if (m_transformations.empty())
        listTransformations();
    const auto [first, last] = m_transformations.equal_range(datumOf(base));
    return std::any_of(first, last, [&](const auto &one) {
        return std::equal(seven.begin(), seven.end(), one.second.begin(), [](double a, double b) {
            return std::fabs(a - b) <= 1e-9; // the text has the published digits
        });
    });
}

Published::List Published::operationsFrom(PJ *crs) const
{
    return List(proj_create_operations(nullptr, crs, m_wgs84.get(), m_context.get()), proj_list_destroy);
}

std::vector<Operation> Published::withoutGrids(PJ *base) const
{
    std::vector<Operation> operations;
    const List all = operationsFrom(base);
    for (int i = 0; all && i < proj_list_get_count(all.get()); ++i) {
        const Pj one(proj_list_get(nullptr, all.get(), i), proj_destroy);
        if (proj_coordoperation_get_grid_used_count(nullptr, one.get()) > 0)
            continue;
        Operation operation;
        operation.pj.reset(proj_normalize_for_visualization(nullptr, one.get()));
        operation.accuracy = proj_coordoperation_get_accuracy(nullptr, one.get());
        if (operation.accuracy < 0.0)
            operation.accuracy = never; // unknown
        proj_get_area_of_use(nullptr, one.get(), &operation.west, &operation.south, &operation.east,
                             &operation.north, nullptr);
        if (operation.east < operation.west)
            operation.east += 360.0;
        operations.push_back(std::move(operation));
    }
    return operations;
}

bool Published::isTakenForWgs84(PJ *crs) const
{
    if (datumOf(crs) == datumOf(m_wgs84.get()))
        return true;
    const List all = operationsFrom(crs);
    for (int i = 0; all && i < proj_list_get_count(all.get()); ++i) {
        const Pj one(proj_list_get(nullptr, all.get(), i), proj_destroy);
        Seven seven{};
        if (figures(one.get(), seven) && seven == Seven{})
            return true;
    }
    return false;
}

void Published::listTransformations()
{
    QHash<QByteArray, bool> wgs84; // by code of the target
    PROJ_STRING_LIST codes = proj_get_codes_from_database(nullptr, "EPSG", PJ_TYPE_TRANSFORMATION, 0);
    for (PROJ_STRING_LIST code = codes; code && *code; ++code) {
        const Pj one = registered(*code, PJ_CATEGORY_COORDINATE_OPERATION);
        Seven seven{};
        if (!one || !figures(one.get(), seven))
            continue;
        const Pj source(proj_get_source_crs(nullptr, one.get()), proj_destroy);
        const Pj target(proj_get_target_crs(nullptr, one.get()), proj_destroy);
        const QByteArray key(proj_get_id_code(target.get(), 0));
        if (!wgs84.contains(key))
            wgs84.insert(key, isTakenForWgs84(target.get()));
        if (wgs84.value(key))
            m_transformations.emplace(datumOf(source.get()), seven);
    }
    proj_string_list_destroy(codes);
}

Distances distances(const CoordSystemPtr &cs, const Definition &definition,
                    const std::vector<Operation> &operations)
{
    const CoordTransform toWgs84(cs, support::shippedFactory()->createFromEpsg(4326));
    const QVector<QPointF> grid = definition.grid();
    std::vector<double> atCentre(operations.size(), never);
    std::vector<double> worst(operations.size(), 0.0);
    for (int place : {0, 8, 4}) {
        const QPointF lonLat = grid.at(place);
        QPointF plane(std::remainder(lonLat.x() - definition.figure.primeMeridian, 360.0), lonLat.y());
        QPointF got;
        if ((!cs->isLatLong() && !cs->forward(lonLat, plane)) || !toWgs84.forward(plane, got))
            return {};
        for (std::size_t i = 0; i < operations.size(); ++i) {
            atCentre[i] = metresBetween(got, operations[i].wgs84(definition.onBase(lonLat)));
            worst[i] = std::max(worst[i], atCentre[i]);
        }
    }
    Distances result;
    double accuracy = never;
    std::ptrdiff_t covered = 0;
    for (std::size_t i = 0; i < operations.size(); ++i) {
        result.nearest = std::min(result.nearest, worst[i]);
        const auto covers = std::count_if(grid.begin(), grid.end(),
                                          [&](const QPointF &lonLat) { return operations[i].holds(lonLat); });
        if (covers > covered || (covers == covered && operations[i].accuracy <= accuracy)) {
            covered = covers;
            accuracy = operations[i].accuracy;
            result.best = atCentre[i];
        }
    }
    if (covered == 0) // nothing is published for the place itself
        result.best = result.nearest;
    return result;
}

} // namespace catalogue
