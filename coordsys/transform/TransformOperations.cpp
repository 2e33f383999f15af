#include "CoordSysTexts_p.h"
#include "TransformAccess_p.h"
#include "TransformOperations_p.h"

#include "CodedError_p.h"
#include "CoordTransformCache_p.h"
#include "GeographicExtent_p.h"
#include "SearchContext_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/GridOffer.h>

#include <QMutexLocker>
#include <QSharedData>

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace nivora::cs {
namespace {

const QLatin1String axisChange("axis order change (2D)");
const QLatin1String plus(" + ");

QVector<TransformGrid> gridsOf(PJ_CONTEXT *context, const PJ *operation)
{
    QVector<TransformGrid> grids;
    for (int i = 0; i < proj_coordoperation_get_grid_used_count(context, operation); ++i) {
        const char *name = nullptr;
        const char *path = nullptr;
        const char *package = nullptr;
        const char *url = nullptr;
        int isAvailable = 0;
        if (proj_coordoperation_get_grid_used(context, operation, i, &name, &path, &package, &url, nullptr,
                                              nullptr, &isAvailable))
            grids << TransformGrid{QString::fromUtf8(name), QString::fromUtf8(path), QString::fromUtf8(url),
                                   QString::fromUtf8(package), isAvailable != 0};
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

/// "a + b" without \p part at its beginning or end.
QString withoutEnd(const QString &name, const QString &part)
{
    if (name.startsWith(part + plus))
        return name.mid(part.size() + plus.size());
    return name.endsWith(plus + part) ? name.left(name.size() - part.size() - plus.size()) : name;
}

std::vector<PjHandle> partsOf(PJ_CONTEXT *context, const PJ *operation)
{
    std::vector<PjHandle> parts;
    if (proj_get_type(operation) != PJ_TYPE_CONCATENATED_OPERATION)
        parts.push_back(ownPj(proj_clone(context, operation)));
    else
        for (int i = 0; i < proj_concatoperation_get_step_count(context, operation); ++i)
            parts.push_back(ownPj(proj_concatoperation_get_step(context, operation, i)));
    return parts;
}

/// "EPSG:1314" for "INVERSE(EPSG)" and "1314", too; empty without a code.
QString codeOf(const PJ *part)
{
    QString authority = QString::fromUtf8(proj_get_id_auth_name(part, 0));
    const QString code = QString::fromUtf8(proj_get_id_code(part, 0));
    if (authority.startsWith(QLatin1String("INVERSE(")))
        authority = authority.mid(8).chopped(1);
    return code.isEmpty() ? QString() : authority + QLatin1Char(':') + code;
}

/// Name, codes and whether a datum changes.
void readParts(PJ_CONTEXT *context, const PJ *operation, TransformOperation &result, bool &changesDatum)
{
    result.name = QString::fromUtf8(proj_get_name(operation));
    result.name = withoutEnd(withoutEnd(result.name, axisChange), axisChange); // it may stand at both
    result.shortName = result.name;
    for (const PjHandle &part : partsOf(context, operation)) {
        const QString name = QString::fromUtf8(proj_get_name(part.get()));
        if (name != axisChange && !codeOf(part.get()).isEmpty())
            result.codes << codeOf(part.get());
        if (proj_get_type(part.get()) == PJ_TYPE_CONVERSION)
            result.shortName = withoutEnd(result.shortName, name);
        else
            changesDatum = true;
    }
}

PjHandle geodeticBase(PJ_CONTEXT *context, const PJ *crs)
{
    return crs ? ownPj(proj_crs_get_geodetic_crs(context, crs)) : nullptr;
}

void readEnsemble(PJ_CONTEXT *context, const PJ *base, TransformOperation &result)
{
    const PjHandle ensemble = base ? ownPj(proj_crs_get_datum_ensemble(context, base)) : nullptr;
    const double metres = ensemble ? proj_datum_ensemble_get_accuracy(context, ensemble.get()) : 0.0;
    if (metres <= result.ensembleAccuracyM)
        return;
    result.ensembleAccuracyM = metres;
    result.ensemble = QString::fromUtf8(proj_get_name(ensemble.get())).remove(QLatin1String(" ensemble"));
}

QString datumName(PJ_CONTEXT *context, const PJ *base)
{
    const PjHandle datum = base ? ownPj(proj_crs_get_datum_forced(context, base)) : nullptr;
    return datum ? QString::fromUtf8(proj_get_name(datum.get())) : QString();
}

void readDatums(PJ_CONTEXT *context, const PJ *operation, TransformOperation &result)
{
    const PjHandle source = ownPj(proj_get_source_crs(context, operation));
    const PjHandle target = ownPj(proj_get_target_crs(context, operation));
    const PjHandle sourceBase = geodeticBase(context, source.get());
    const PjHandle targetBase = geodeticBase(context, target.get());
    readEnsemble(context, sourceBase.get(), result);
    readEnsemble(context, targetBase.get(), result);
    if (result.isBallpark)
        result.leavesOut = QStringLiteral("%1 → %2").arg(datumName(context, sourceBase.get()),
                                                         datumName(context, targetBase.get()));
}

double accuracyOf(PJ_CONTEXT *context, const PJ *operation)
{
    constexpr double unknown = 999.0; // of the register; sums of steps have more
    const double metres = proj_coordoperation_get_accuracy(context, operation);
    return metres < unknown ? metres : -1.0;
}

void readText(PJ_CONTEXT *context, const PJ *operation, TransformOperation &result)
{
    const PjHandle xFirst = ownPj(proj_normalize_for_visualization(context, operation));
    const PJ *shown = xFirst ? xFirst.get() : operation;
    result.hasInverse = proj_pj_info(const_cast<PJ *>(shown)).has_inverse != 0;
    result.definition = QString::fromUtf8(proj_as_proj_string(context, shown, PJ_PROJ_5, nullptr));
    for (const char *mark : {"+t_epoch=", "+proj=deformation", "+proj=defmodel"})
        result.isTimeDependent = result.isTimeDependent || result.definition.contains(QLatin1String(mark));
}

QVector<TransformOperation> operationsOfStep(const CoordSystemPtr &from, const CoordSystemPtr &to,
                                             OperationSet set)
{
    const SearchContext context;
    QVector<TransformOperation> operations;
    if (askWithEnds(context.get(), from, to, [&](const PJ *source, const PJ *target) {
            operations = operationsBetween(context.get(), source, target, set);
            return !operations.isEmpty();
        }))
        return operations;
    throwCoded<std::logic_error>(Error::Code::NoOperation,
                                 CoordSysTexts::tr("Не могу создать объект трансформации. %1")
                                     .arg(from->description() + QStringLiteral(" → ") + to->description()));
}

QVector<TransformOperation> operationsOf(const CoordTransform &transform, OperationSet set)
{
    QVector<TransformOperation> operations;
    if (transform.isEqualsCS())
        return operations;
    const auto steps =
        CoordTransformCache::stepsBetween(transform.sourceCoordSystem(), transform.destinationCoordSystem());
    for (std::size_t i = 0; i < steps.size(); ++i)
        for (TransformOperation &operation : operationsOfStep(steps[i].first, steps[i].second, set)) {
            operation.step = static_cast<int>(i);
            operations << operation;
        }
    return operations;
}

TransformOperation usedOperation(const ProjOperation &step)
{
    return step.single ? *step.single : lastUsedOperation(globalProjContext(), step.pj.get());
}

/// The best that works in the middle of an operation's area.
std::optional<double> bestAccuracy(const QVector<TransformOperation> &working,
                                   const TransformOperation &offered)
{
    std::optional<double> best;
    const QPointF middle = eastward(offered.area).center();
    for (const TransformOperation &operation : working) {
        const double metres = operation.isBallpark ? -1.0 : operation.accuracyM;
        const QRectF area = eastward(operation.area);
        const bool fits = area.isNull() || area.contains(middle) || area.contains(middle - QPointF(360, 0)) ||
                          area.contains(middle + QPointF(360, 0));
        if (operation.step == offered.step && fits && metres >= 0.0 && (!best || metres < *best))
            best = metres;
    }
    return best;
}

} // namespace

struct NIVORA_CS_NO_EXPORT GridOffer::Data : QSharedData
{
    TransformOperation operation;
    std::optional<double> withoutM;
};

GridOffer::GridOffer(const TransformOperation &operation, std::optional<double> withoutM)
    : m_data(new Data)
{
    m_data->operation = operation;
    m_data->withoutM = withoutM;
}
GridOffer::GridOffer(const GridOffer &other) = default;
GridOffer &GridOffer::operator=(const GridOffer &other) = default;
GridOffer::~GridOffer() = default;

const TransformOperation &GridOffer::operation() const { return m_data->operation; }

std::optional<double> GridOffer::withM() const
{
    const double metres = m_data->operation.accuracyM;
    return metres < 0.0 ? std::nullopt : std::make_optional(metres);
}

std::optional<double> GridOffer::withoutM() const { return m_data->withoutM; }

QVector<TransformGrid> GridOffer::missing() const
{
    QVector<TransformGrid> missing;
    for (const TransformGrid &grid : m_data->operation.grids)
        if (!grid.isAvailable)
            missing << grid;
    return missing;
}

std::optional<double> TransformOperation::worthM() const
{
    if (isBallpark || accuracyM < 0.0)
        return std::nullopt;
    return std::max(accuracyM, ensembleAccuracyM);
}

PjHandle crsOf(PJ_CONTEXT *context, const QString &definition)
{
    const bool isProj = definition.trimmed().startsWith(QLatin1Char('+'));
    const QString text = isProj && !definition.contains(QLatin1String("+type=crs"))
                             ? definition + QStringLiteral(" +type=crs")
                             : definition;
    PjHandle crs = ownPj(proj_create(context, text.toUtf8().constData()));
    return crs && proj_is_crs(crs.get()) ? std::move(crs) : nullptr;
}

PjList operationList(PJ_CONTEXT *context, const PJ *from, const PJ *to, OperationSet set)
{
    const PjFactory factory(proj_create_operation_factory_context(context, nullptr));
    if (!factory)
        return nullptr;
    const auto working = proj_context_is_network_enabled(context)
                             ? PROJ_GRID_AVAILABILITY_KNOWN_AVAILABLE
                             : PROJ_GRID_AVAILABILITY_DISCARD_OPERATION_IF_MISSING_GRID;
    const bool works = set == OperationSet::Working;
    proj_operation_factory_context_set_spatial_criterion(context, factory.get(),
                                                         PROJ_SPATIAL_CRITERION_PARTIAL_INTERSECTION);
    proj_operation_factory_context_set_grid_availability_use(
        context, factory.get(), works ? working : PROJ_GRID_AVAILABILITY_USED_FOR_SORTING);
    return PjList(proj_create_operations(context, from, to, factory.get()));
}

QVector<TransformOperation> operationsBetween(PJ_CONTEXT *context, const PJ *from, const PJ *to,
                                              OperationSet set)
{
    const PjList list = operationList(context, from, to, set);
    QVector<TransformOperation> operations;
    for (int i = 0; list && i < proj_list_get_count(list.get()); ++i)
        if (const PjHandle operation = ownPj(proj_list_get(context, list.get(), i)))
            operations << describedOperation(context, operation.get());
    return operations;
}

TransformOperation describedOperation(PJ_CONTEXT *context, const PJ *operation)
{
    TransformOperation result;
    bool changesDatum = false;
    readParts(context, operation, result, changesDatum);
    result.accuracyM = changesDatum ? accuracyOf(context, operation) : 0.0; // of conversions PROJ says none
    readArea(context, operation, result);
    result.grids = gridsOf(context, operation);
    result.isBallpark = proj_coordoperation_has_ballpark_transformation(context, operation) != 0;
    if (changesDatum)
        readDatums(context, operation, result);
    readText(context, operation, result);
    return result;
}

std::shared_ptr<const TransformOperation> singleOperation(PJ_CONTEXT *context, const PJ *operation)
{
    if (proj_get_type(operation) == PJ_TYPE_UNKNOWN) // a set of operations
        return nullptr;
    return std::make_shared<const TransformOperation>(describedOperation(context, operation));
}

TransformOperation lastUsedOperation(PJ_CONTEXT *context, PJ *object)
{
    const PjHandle used = ownPj(proj_trans_get_last_used_operation(object));
    return used ? describedOperation(context, used.get()) : TransformOperation();
}

TransformOperation joined(const TransformOperation &first, const TransformOperation &second)
{
    TransformOperation both = first;
    both.name += plus + second.name;
    both.shortName += plus + second.shortName;
    both.codes += second.codes;
    both.grids += second.grids;
    both.accuracyM =
        first.accuracyM < 0.0 || second.accuracyM < 0.0 ? -1.0 : first.accuracyM + second.accuracyM;
    if (second.ensembleAccuracyM > first.ensembleAccuracyM) {
        both.ensemble = second.ensemble;
        both.ensembleAccuracyM = second.ensembleAccuracyM;
    }
    both.isTimeDependent = first.isTimeDependent || second.isTimeDependent;
    both.isBallpark = first.isBallpark || second.isBallpark;
    both.hasInverse = first.hasInverse && second.hasInverse;
    both.leavesOut = first.isBallpark ? first.leavesOut : second.leavesOut;
    both.definition.clear();
    return both;
}

bool askWithEnds(PJ_CONTEXT *context, const CoordSystemPtr &from, const CoordSystemPtr &to,
                 const AskEnds &ask)
{
    for (int attempt = 0; attempt < CoordTransformCache::attempts; ++attempt) {
        const auto [source, target] = CoordTransformCache::textsOf(attempt, from, to);
        const PjHandle sourceCrs = crsOf(context, source);
        const PjHandle targetCrs = crsOf(context, target);
        if (sourceCrs && targetCrs && ask(sourceCrs.get(), targetCrs.get()))
            return true;
    }
    return false;
}

std::optional<TransformOperation> CoordTransform::operationAt(const QPointF &point) const
{
    const TransformQueuePtr steps = TransformAccess::queue(*this);
    QPointF out;
    const QMutexLocker lock(globalProj4Mutex()); // so that the last used is that of this point
    if (!steps || !forward(point, out))
        return std::nullopt;
    const TransformOperation first = usedOperation(steps->first);
    return steps->second ? joined(first, usedOperation(steps->second)) : first;
}

QVector<TransformOperation> CoordTransform::operations() const
{
    return operationsOf(*this, OperationSet::Working);
}

QVector<GridOffer> CoordTransform::gridOffers() const
{
    return offersBetween(operations(), operationsOf(*this, OperationSet::Known));
}

QVector<GridOffer> offersBetween(const QVector<TransformOperation> &working,
                                 const QVector<TransformOperation> &all)
{
    QVector<GridOffer> offers;
    for (const TransformOperation &known : all) {
        if (known.isUsable())
            continue;
        const GridOffer offer(known, bestAccuracy(working, known));
        if (offer.withM() && (!offer.withoutM() || *offer.withM() < *offer.withoutM()))
            offers << offer;
    }
    return offers;
}

} // namespace nivora::cs
