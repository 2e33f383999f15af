#include "TransformOperations_p.h"

#include "CoordTransformCache_p.h"
#include "ProjLists_p.h"
#include "SearchContext_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>

#include <QObject>

#include <stdexcept>

namespace nivora::cs {
namespace {

/// As proj_create_crs_to_crs() asks, but with the operations that lack a grid.
PjList operationList(PJ_CONTEXT *context, const PJ *from, const PJ *to)
{
    const PjFactory factory(proj_create_operation_factory_context(context, nullptr));
    if (!factory)
        return nullptr;
    proj_operation_factory_context_set_spatial_criterion(context, factory.get(),
                                                         PROJ_SPATIAL_CRITERION_PARTIAL_INTERSECTION);
    proj_operation_factory_context_set_grid_availability_use(context, factory.get(),
                                                             PROJ_GRID_AVAILABILITY_USED_FOR_SORTING);
    return PjList(proj_create_operations(context, from, to, factory.get()));
}

QVector<TransformGrid> gridsOf(PJ_CONTEXT *context, const PJ *operation)
{
    QVector<TransformGrid> grids;
    for (int i = 0; i < proj_coordoperation_get_grid_used_count(context, operation); ++i) {
        const char *name = nullptr;
        const char *path = nullptr;
        const char *url = nullptr;
        int isAvailable = 0;
        if (proj_coordoperation_get_grid_used(context, operation, i, &name, &path, nullptr, &url, nullptr,
                                              nullptr, &isAvailable))
            grids << TransformGrid{QString::fromUtf8(name), QString::fromUtf8(path), QString::fromUtf8(url),
                                   isAvailable != 0};
    }
    return grids;
}

void readArea(PJ_CONTEXT *context, const PJ *operation, TransformOperation &result)
{
    constexpr double unknown = -1000.0;
    double west = unknown, south = unknown, east = unknown, north = unknown;
    const char *name = nullptr;
    if (!proj_get_area_of_use(context, operation, &west, &south, &east, &north, &name))
        return;
    result.areaName = QString::fromUtf8(name);
    if (west != unknown)
        result.area = QRectF(west, south, east - west, north - south);
}

TransformOperation described(PJ_CONTEXT *context, const PJ *operation)
{
    TransformOperation result;
    result.name = QString::fromUtf8(proj_get_name(operation));
    const bool isExact = proj_get_type(operation) == PJ_TYPE_CONVERSION; // PROJ says that it does not know
    result.accuracyM = isExact ? 0.0 : proj_coordoperation_get_accuracy(context, operation);
    readArea(context, operation, result);
    result.grids = gridsOf(context, operation);
    result.isBallpark = proj_coordoperation_has_ballpark_transformation(context, operation) != 0;
    const PjHandle xFirst = ownPj(proj_normalize_for_visualization(context, operation));
    const PJ *shown = xFirst ? xFirst.get() : operation;
    result.hasInverse = proj_pj_info(const_cast<PJ *>(shown)).has_inverse != 0;
    result.definition = QString::fromUtf8(proj_as_proj_string(context, shown, PJ_PROJ_5, nullptr));
    return result;
}

QVector<TransformOperation> operationsOfStep(const CoordSystemPtr &from, const CoordSystemPtr &to)
{
    for (int attempt = 0; attempt < CoordTransformCache::attempts; ++attempt) {
        const auto [source, target] = CoordTransformCache::textsOf(attempt, from, to);
        const SearchContext context;
        const PjHandle sourceCrs = crsOf(context.get(), source);
        const PjHandle targetCrs = crsOf(context.get(), target);
        if (!sourceCrs || !targetCrs)
            continue;
        const QVector<TransformOperation> operations =
            operationsBetween(context.get(), sourceCrs.get(), targetCrs.get());
        if (!operations.isEmpty())
            return operations;
    }
    throw std::logic_error(QObject::tr("Не могу создать объект трансформации. %1")
                               .arg(from->description() + QStringLiteral(" → ") + to->description())
                               .toStdString());
}

} // namespace

PjHandle crsOf(PJ_CONTEXT *context, const QString &definition)
{
    const bool isProj = definition.trimmed().startsWith(QLatin1Char('+'));
    const QString text = isProj && !definition.contains(QLatin1String("+type=crs"))
                             ? definition + QStringLiteral(" +type=crs")
                             : definition;
    PjHandle crs = ownPj(proj_create(context, text.toUtf8().constData()));
    return crs && proj_is_crs(crs.get()) ? std::move(crs) : nullptr;
}

QVector<TransformOperation> operationsBetween(PJ_CONTEXT *context, const PJ *from, const PJ *to)
{
    const PjList list = operationList(context, from, to);
    QVector<TransformOperation> operations;
    for (int i = 0; list && i < proj_list_get_count(list.get()); ++i)
        if (const PjHandle operation = ownPj(proj_list_get(context, list.get(), i)))
            operations << described(context, operation.get());
    return operations;
}

QVector<TransformOperation> CoordTransform::operations() const
{
    QVector<TransformOperation> operations;
    if (isEqualsCS())
        return operations;
    const auto steps = CoordTransformCache::stepsBetween(sourceCoordSystem(), destinationCoordSystem());
    for (std::size_t i = 0; i < steps.size(); ++i)
        for (TransformOperation &operation : operationsOfStep(steps[i].first, steps[i].second)) {
            operation.step = static_cast<int>(i);
            operations << operation;
        }
    return operations;
}

} // namespace nivora::cs
