#include "CoordTransformCache_p.h"

#include "ChosenOperation_p.h"
#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include "CoordSystem_p.h"
#include "FusedUnits_p.h"
#include "TransformOperations_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <platform/Logger.h>

#include <proj.h>

#include <QMutexLocker>

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace nivora::cs {
namespace {

/// System \p system with the ellipsoid and datum of \p model; itself, logged, when that cannot be made.
CoordSystemPtr withDatumOf(const CoordSystemPtr &model, const CoordSystemPtr &system)
{
    try {
        const MapHeaderCoordsysConverter converter;
        const TABProjInfo_t from = converter.prjStrToTABProjInfo(model->prjStr());
        TABProjInfo_t record = converter.prjStrToTABProjInfo(system->prjStr());
        record.nEllipsoidId = from.nEllipsoidId;
        record.nDatumId = from.nDatumId;
        record.dDatumShiftX = from.dDatumShiftX;
        record.dDatumShiftY = from.dDatumShiftY;
        record.dDatumShiftZ = from.dDatumShiftZ;
        std::copy(std::begin(from.adDatumParams), std::end(from.adDatumParams),
                  std::begin(record.adDatumParams));
        const QString prj = converter.tabProjInfoToString(record);
        LOG_DEBUG(CoordSysTexts::tr("Исправленная КС: %1").arg(prj));
        return activeCatalogues()->createFromPrj(prj);
    } catch (const std::exception &e) {
        LOG_ERROR(QString::fromUtf8(e.what()));
        return system;
    }
}

/// A CoordSys text without a datum means "the other one's": no datum shift takes place.
std::pair<CoordSystemPtr, CoordSystemPtr> withCommonDatum(const CoordSystemPtr &from,
                                                          const CoordSystemPtr &to)
{
    if (from->sourceType() == CoordSystem::Prj && to->sourceType() == CoordSystem::Prj) {
        const bool special = from->isSpecialDatum();
        if (special != to->isSpecialDatum())
            return special ? std::make_pair(withDatumOf(to, from), to)
                           : std::make_pair(from, withDatumOf(from, to));
    }
    return {from, to};
}

/// Two codes of the database may have one PROJ text and still lie metres apart: PROJ decides.
bool haveDifferentCodes(const CoordSystem &from, const CoordSystem &to)
{
    return from.sourceType() == CoordSystem::Epsg && to.sourceType() == CoordSystem::Epsg &&
           from.epsg() != to.epsg();
}

/// PROJ text as PROJ is given it for a transformation, where it takes no blanks before a text.
QString transformationText(const CoordSystem &cs) { return fixedProjString(cs.projStr().trimmed(), true); }

/// A zero shift ties longitude/latitude to the earth. Two systems on another body meet without it.
QString withoutZeroShift(const QString &text)
{
    const bool isProj = text.startsWith(QLatin1Char('+'));
    return isProj ? QString(text).remove(QStringLiteral("+towgs84=0,0,0,0,0,0,0")) : text;
}

/// Null when PROJ knows no way.
std::shared_ptr<PJ> normalizedTransformation(const std::pair<QString, QString> &texts)
{
    const QMutexLocker lock(globalProj4Mutex());
    LOG_TRACE(QStringLiteral("From:%1. To:%2").arg(texts.first, texts.second));
    PjHandle pj = ownPj(proj_create_crs_to_crs(globalProjContext(), texts.first.toUtf8().constData(),
                                               texts.second.toUtf8().constData(), nullptr));
    PJ *normalized = pj ? proj_normalize_for_visualization(globalProjContext(), pj.get()) : nullptr;
    return normalized ? ownPj(normalized) : std::move(pj);
}

[[noreturn]] void throwWithoutWay()
{
    throwCoded<std::logic_error>(
        Error::Code::NoOperation,
        CoordSysTexts::tr("Не могу создать объект трансформации. %1").arg(projLastError()));
}

/// The system without its affine transformation.
CoordSystemPtr bare(const CoordSystemPtr &cs)
{
    if (!cs->affineTransform())
        return cs;
    const CoordSystemPtr copy = cs->clone();
    copy->setAffineTransform(nullptr);
    return copy;
}

/// The affine transformations are all that tells the systems apart, so nothing else may move a point: a
/// system that was moved within the plane of a code stays on that code's datum.
bool differInAffineAlone(const CoordSystemPtr &from, const CoordSystemPtr &to)
{
    const bool hasAny = from->affineTransform() || to->affineTransform();
    return hasAny && bare(from)->isEqual(*bare(to), true);
}

/// Leaves points where they are.
ProjOperation standStill()
{
    const QMutexLocker lock(globalProj4Mutex());
    ProjOperation step;
    step.pj = ownPj(proj_create(globalProjContext(), "+proj=noop"));
    return step;
}

/// The ends speak what their systems count in; PROJ alone tells where that is radians.
ProjOperation stepOf(const std::shared_ptr<PJ> &pj)
{
    const QMutexLocker lock(globalProj4Mutex());
    ProjOperation step(pj);
    step.single = singleOperation(globalProjContext(), pj.get());
    const PjHandle source = ownPj(proj_get_source_crs(globalProjContext(), pj.get()));
    const PjHandle target = ownPj(proj_get_target_crs(globalProjContext(), pj.get()));
    if (step.in[0].isPlain() && step.out[0].isPlain())
        step.setEnds(source ? endOf(source.get()) : CoordinateUnits(),
                     target ? endOf(target.get()) : CoordinateUnits());
    return withFusedUnits(step);
}

} // namespace

CoordTransformCache::Route CoordTransformCache::routeFor(const CoordSystemPtr &from, const CoordSystemPtr &to,
                                                         const OperationChoice &choice)
{
    const States states(privateOf(*from).state(), privateOf(*to).state());
    const std::optional<Known> known = m_known.find(states);
    if (known && known->isEqual)
        return {true, nullptr};
    if (known && choice.isDefault())
        if (TransformQueuePtr queue = known->queue.lock())
            return {false, std::move(queue)};
    const unsigned since = catalogueRevision();
    if (!known && !haveDifferentCodes(*from, *to) && from->isEqual(to, false)) {
        m_known.replace(states, {true, {}}, since);
        return {true, nullptr};
    }
    if (!choice.isDefault())
        return {false, chosenQueue(from, to, choice)};
    const TransformQueuePtr queue = queueFor(from, to);
    m_known.replace(states, {false, queue}, since);
    return {false, queue};
}

TransformQueuePtr CoordTransformCache::queueFor(const CoordSystemPtr &from, const CoordSystemPtr &to)
{
    const AskedCatalogues asked(privateOf(*from).m_catalogues);
    const unsigned since = catalogueRevision();
    const bool standsStill = differInAffineAlone(from, to);
    const Steps steps = standsStill ? Steps() : stepsBetween(from, to);
    QStringList definitions;
    for (const auto &[first, second] : steps) {
        const Texts texts = textsOf(0, first, second);
        definitions << texts.first << texts.second;
    }
    if (const std::optional<TransformQueuePtr> known = m_queues.find(definitions))
        return *known;
    auto queue = std::make_shared<TransformQueue>();
    queue->first = standsStill ? standStill() : stepFor(steps.front().first, steps.front().second);
    if (steps.size() > 1)
        queue->second = stepFor(steps.back().first, steps.back().second);
    return m_queues.keep(definitions, queue, since);
}

ProjOperation CoordTransformCache::stepFor(const CoordSystemPtr &from, const CoordSystemPtr &to)
{
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const std::shared_ptr<PJ> pj = normalizedTransformation(textsOf(attempt, from, to));
        if (const ProjOperation step = pj ? stepOf(pj) : ProjOperation())
            return step;
    }
    throwWithoutWay();
}

QString CoordTransformCache::definitionOf(const CoordSystem &cs)
{
    switch (cs.sourceType()) {
    case CoordSystem::Epsg:
    case CoordSystem::Wkt: {
        const CrsDefinitionPtr identity = privateOf(cs).identity();
        return identity ? identity->definition() : cs.sourceParameters().string;
    }
    default:
        return transformationText(cs);
    }
}

/// What PROJ is given when it refused the first pair.
QString CoordTransformCache::fallbackOf(const CoordSystem &cs, const QString &first)
{
    if (cs.sourceType() == CoordSystem::Epsg)
        return fixedProjString(cs.projStr(), false);
    if (cs.sourceType() == CoordSystem::Wkt && cs.isNonEarth())
        return cs.projStr();
    return first;
}

CoordTransformCache::Steps CoordTransformCache::stepsBetween(const CoordSystemPtr &from,
                                                             const CoordSystemPtr &to)
{
    if (from->isNonEarth() == to->isNonEarth())
        return {{from, to}};
    // A plan and the earth meet on WGS 84 longitude/latitude: PROJ knows no direct way.
    const CoordSystemPtr wgs84 = activeCatalogues()->latLongWgs84CoordSystem();
    if (!wgs84)
        throwCoded<std::logic_error>(Error::Code::NotReady, CoordSysTexts::tr("Не проинициализированы КС"));
    return {{from, wgs84}, {wgs84, to}};
}

CoordTransformCache::Texts CoordTransformCache::textsOf(int attempt, const CoordSystemPtr &from,
                                                        const CoordSystemPtr &to)
{
    const auto [source, destination] = withCommonDatum(from, to);
    const Texts first(definitionOf(*source), definitionOf(*destination));
    switch (attempt) {
    case 0:
        return first;
    case 1:
        return {fallbackOf(*from, first.first), fallbackOf(*to, first.second)};
    default:
        return {withoutZeroShift(first.first), withoutZeroShift(first.second)};
    }
}

std::shared_ptr<PJ> CoordTransformCache::createNormalizedTransformation(const CoordSystemPtr &from,
                                                                        const CoordSystemPtr &to)
{
    for (int attempt = 0; attempt < attempts; ++attempt)
        if (std::shared_ptr<PJ> pj = normalizedTransformation(textsOf(attempt, from, to)))
            return pj;
    throwWithoutWay();
}

CoordTransformCache &coordTransformCache()
{
    static CoordTransformCache &cache =
        *new CoordTransformCache; // never destroyed: statics may still convert
    return cache;
}

} // namespace nivora::cs
