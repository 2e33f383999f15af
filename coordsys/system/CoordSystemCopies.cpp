#include <coordsys/CoordSystem.h>

#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include "CoordSystem_p.h"
#include "LazyParts_p.h"
#include "OsrHandle_p.h"
#include "ProjOperation_p.h"
#include <coordsys/CoordSystemConversions.h>
#include <platform/Logger.h>

#include <proj.h>

#include <QMutexLocker>
#include <QReadLocker>
#include <QWriteLocker>

#include <mutex>

// What systems share, and what each has of its own.

namespace nivora::cs {
namespace {

bool hasExtent(const QRectF &r) { return r.width() > 0.0 && r.height() > 0.0; } // NaN has none

} // namespace

void CoordSystemPrivate::noteChange()
{
    static std::atomic<std::uint64_t> last{0};
    m_state = ++last;
}

void CoordSystemPrivate::makeLater(std::shared_ptr<const LazyParts> parts)
{
    m_lazy = std::move(parts);
    m_isSrsShared = true;
    m_isPending = true;
}

void CoordSystemPrivate::ensureMade() const
{
    if (!m_isPending.load(std::memory_order_acquire))
        return;
    const LazyParts::Parts &parts = m_lazy->get();
    static QBasicMutex adopting; // a leaf: nothing else is locked under it
    const std::lock_guard<QBasicMutex> lock(adopting);
    if (!m_isPending.load(std::memory_order_relaxed))
        return;
    m_srs = parts.srs;
    m_pj = parts.pj;
    m_plane = parts.plane;
    m_isPending.store(false, std::memory_order_release);
}

PJ *CoordSystemPrivate::pj() const
{
    ensureMade();
    return m_pj.get();
}

const std::shared_ptr<const ProjOperation> &CoordSystemPrivate::plane() const
{
    ensureMade();
    return m_plane;
}

void *CoordSystemPrivate::srs() const
{
    ensureMade();
    void *given = m_given.load(std::memory_order_acquire);
    return given ? given : m_srs.get();
}

/// A host may alter what it is given, so a shared reference is copied on the way out (80 us where it has a
/// shift). From then on the system reads the host's.
void *CoordSystem::OGRSpatialReference() const
{
    if (!d->m_isSrsShared || d->m_given)
        return d->srs();
    std::shared_ptr<void> copy = copyOgrSpatialReference();
    const QWriteLocker lock(&d->m_lock);
    if (!d->m_given) {
        d->m_givenSrs = std::move(copy);
        d->m_given.store(d->m_givenSrs.get(), std::memory_order_release);
    }
    return d->m_givenSrs.get();
}

std::shared_ptr<void> CoordSystem::copyOgrSpatialReference() const
{
    void *const reference = d->srs();
    if (!reference)
        return nullptr;
    const QMutexLocker lock(globalProj4Mutex());
    const CplErrorScope quiet; // a grid that is not there is no matter for stderr
    return ownSrs(OSRClone(reference));
}

CoordSystemPtr CoordSystem::clone() const
{
    auto copy = std::make_shared<CoordSystem>();
    copy->d->m_catalogues = d->m_catalogues;
    copy->setOGRSpatialReference(copyOgrSpatialReference());
    copy->setSourceParameters(d->m_source);
    copy->d->m_record = d->m_record;
    copy->d->m_assumptions = d->m_assumptions;
    if (const PJ *const main = d->pj()) {
        const QMutexLocker lock(globalProj4Mutex());
        copy->d->m_pj = ownPj(proj_clone(globalProjContext(), main));
        copy->d->m_plane = d->m_plane && d->m_plane->pj == d->m_pj
                               ? std::make_shared<const ProjOperation>(copy->d->m_pj)
                               : d->m_plane;
    }
    copy->d->m_projectionBounds = d->m_projectionBounds;
    const QRectF bounds = rectNumericCoordSys();
    if (isRectSet() || !hasExtent(bounds))
        copy->setRectCoordSystem(bounds);
    else if (!d->m_affine)
        copy->d->m_computedRect = bounds;
    const QReadLocker lock(&d->m_lock);
    copy->d->m_description = d->m_description;
    copy->d->m_isNameless = d->m_isNameless;
    copy->d->m_catalogueName = d->m_catalogueName;
    copy->d->m_identity = d->m_identity;
    copy->d->m_hasIdentity = d->m_hasIdentity;
    return copy;
}

CoordSystemPtr CoordSystemPrivate::duplicate() const
{
    auto system = std::make_shared<CoordSystem>();
    CoordSystemPrivate *const copy = &get(*system);
    const QReadLocker lock(&m_lock);
    copy->m_isSrsShared = true;
    if (m_isPending) {
        copy->makeLater(m_lazy);
    } else {
        copy->m_srs = m_srs;
        copy->m_pj = m_pj;
        copy->m_plane = m_plane;
    }
    copy->m_identity = m_identity;
    copy->m_hasIdentity = m_hasIdentity;
    copy->m_description = m_description;
    copy->m_isNameless = m_isNameless;
    copy->m_catalogueName = m_catalogueName;
    copy->m_rect = m_rect;
    copy->m_projectionBounds = m_projectionBounds;
    copy->m_computedRect = m_computedRect;
    copy->m_detectedUnit = m_detectedUnit;
    copy->m_affineUnit = m_affineUnit;
    copy->m_epsg = m_epsg.load();
    copy->m_isEpsgCatalogued = m_isEpsgCatalogued;
    copy->m_isEpsgOfMoved = m_isEpsgOfMoved;
    copy->m_coded = m_coded;
    copy->m_codedFor = m_codedFor;
    copy->m_catalogues = m_catalogues;
    if (m_affine)
        copy->m_affine = std::make_unique<QTransform>(*m_affine);
    copy->m_source = m_source;
    copy->m_record = m_record;
    copy->m_assumptions = m_assumptions;
    copy->m_isLatLong = m_isLatLong.load();
    copy->m_isNonEarth = m_isNonEarth.load();
    copy->m_statedEpsg = m_statedEpsg.load();
    return system;
}

CoordSystemPtr CoordSystem::withDescription(const QString &description) const
{
    const CoordSystemPtr copy = d->duplicate();
    copy->d->m_isEntry = d->m_isEntry;
    copy->setDescription(description);
    return copy;
}

CoordSystemPtr CoordSystem::withBounds(const QRectF &rect) const
{
    const CoordSystemPtr copy = d->duplicate();
    copy->d->m_isEntry = d->m_isEntry;
    copy->setRectCoordSystem(rect);
    return copy;
}

CoordSystemPtr CoordSystem::withAffine(const QTransform &transform, const LinearUnit &unit) const
{
    if (isSingularAffine(transform))
        throwCoded<std::invalid_argument>(Error::Code::InvalidArgument,
                                          CoordSysTexts::tr("Вырожденное аффинное преобразование"));
    const CoordSystemPtr copy = withoutAffine();
    LinearUnit named = unit;
    if (!named.isValid()) {
        try {
            named = copy->unit();
        } catch (const std::exception &e) {
            LOG_DEBUG(QString::fromUtf8(e.what()));
        }
    }
    copy->setAffineTransform(std::make_unique<QTransform>(transform), named);
    return copy;
}

CoordSystemPtr CoordSystem::withoutAffine() const
{
    const CoordSystemPtr copy = d->duplicate();
    if (d->m_affine)
        copy->setAffineTransform(nullptr, LinearUnit());
    else
        copy->d->m_isEntry = d->m_isEntry;
    return copy;
}

} // namespace nivora::cs
