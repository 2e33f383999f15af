#include "CoordTransformCache_p.h"

#include "CatalogueRevision_p.h"
#include "CrsDefinition_p.h"
#include "FusedUnits_p.h"
#include "TransformOperations_p.h"
#include <coordsys/CatalogueSource.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <platform/Logger.h>

#include <proj.h>

#include <QMutexLocker>
#include <QObject>

#include <algorithm>
#include <functional>
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
        LOG_DEBUG(QObject::tr("Исправленная КС: %1").arg(prj));
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
    throw std::logic_error(
        QObject::tr("Не могу создать объект трансформации. %1").arg(projLastError()).toStdString());
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

bool CoordTransformCache::ByAddress::operator()(const Key &a, const Key &b) const
{
    const std::less<const CoordSystem *> before;
    return a.first != b.first ? before(a.first.get(), b.first.get()) : before(a.second.get(), b.second.get());
}

TransformQueuePtr CoordTransformCache::find(const CoordSystemPtr &from, const CoordSystemPtr &to) const
{
    const QMutexLocker lock(&m_mutex);
    const auto found = m_queues.find({from, to});
    return found == m_queues.end() ? nullptr : found->second;
}

void CoordTransformCache::insert(const CoordSystemPtr &from, const CoordSystemPtr &to,
                                 TransformQueuePtr queue)
{
    const QMutexLocker lock(&m_mutex);
    m_queues[{from, to}].swap(queue); // another thread's queue goes after the lock: it takes the PROJ lock
}

std::size_t CoordTransformCache::size() const
{
    const QMutexLocker lock(&m_mutex);
    return m_queues.size();
}

bool CoordTransformCache::areEqual(const CoordSystem &from, const CoordSystem &to)
{
    const States states(from.state(), to.state());
    const unsigned since = catalogueRevision();
    {
        const QMutexLocker lock(&m_mutex);
        const auto known = m_equal.constFind(states);
        if (known != m_equal.constEnd() && m_equalSince == since)
            return *known;
    }
    const bool equal = from.isEqual(to, false);
    const QMutexLocker lock(&m_mutex);
    if (m_equalSince != since || m_equal.size() >= mostAnswers)
        m_equal.clear();
    m_equalSince = since;
    m_equal.insert(states, equal);
    return equal;
}

TransformQueuePtr CoordTransformCache::queueFor(const CoordSystemPtr &from, const CoordSystemPtr &to)
{
    if (TransformQueuePtr known = find(from, to))
        return known;
    auto queue = std::make_shared<TransformQueue>();
    if (differInAffineAlone(from, to)) {
        queue->first = standStill();
        insert(from, to, queue);
        return queue;
    }
    const auto steps = stepsBetween(from, to);
    queue->first = stepFor(steps.front().first, steps.front().second);
    if (steps.size() > 1)
        queue->second = stepFor(steps.back().first, steps.back().second);
    insert(from, to, queue);
    return queue;
}

ProjOperation CoordTransformCache::stepFor(const CoordSystemPtr &from, const CoordSystemPtr &to)
{
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const Texts texts = textsOf(attempt, from, to);
        const ProjOperation known = sharedByTexts(texts);
        if (const ProjOperation step = known ? known : madeByTexts(texts))
            return step;
    }
    throwWithoutWay();
}

ProjOperation CoordTransformCache::sharedByTexts(const Texts &texts) const
{
    const QMutexLocker lock(&m_mutex);
    const auto found = m_byTexts.find(texts);
    return found == m_byTexts.end() ? ProjOperation()
                                    : found->second.step.withObject(found->second.pj.lock());
}

ProjOperation CoordTransformCache::madeByTexts(const Texts &texts)
{
    const std::shared_ptr<PJ> pj = normalizedTransformation(texts);
    const ProjOperation step = pj ? stepOf(pj) : ProjOperation();
    if (step) {
        const QMutexLocker lock(&m_mutex);
        m_byTexts[texts] = {step.withObject(nullptr), step.pj};
    }
    return step;
}

QString CoordTransformCache::definitionOf(const CoordSystem &cs)
{
    switch (cs.sourceType()) {
    case CoordSystem::Epsg:
    case CoordSystem::Wkt: {
        const CrsDefinitionPtr identity = cs.identity();
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

std::vector<std::pair<CoordSystemPtr, CoordSystemPtr>>
CoordTransformCache::stepsBetween(const CoordSystemPtr &from, const CoordSystemPtr &to)
{
    if (from->isNonEarth() == to->isNonEarth())
        return {{from, to}};
    // A plan and the earth meet on WGS 84 longitude/latitude: PROJ knows no direct way.
    const CoordSystemPtr wgs84 = activeCatalogues()->latLongWgs84CoordSystem();
    if (!wgs84)
        throw std::logic_error(QObject::tr("Не проинициализированы КС").toStdString());
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
