#include <coordsys/CoordSystem.h>

#include "CatalogueName_p.h"
#include "CoordSystem_p.h"
#include "CrsJudge_p.h"
#include "EpsgSearch_p.h"
#include "OsrHandle_p.h"
#include "PlaneText_p.h"
#include "ProjText_p.h"
#include <coordsys/ProjLibMetadata.h>
#include <coordsys/SpatialReferenceText.h>
#include <platform/Logger.h>

#include <QReadLocker>
#include <QWriteLocker>

// Who a system is: its identity, its code and its name.

namespace nivora::cs {
namespace {

using nivora::concurrent::ProgressHandler;

const std::shared_ptr<ProgressHandler> &neverCancelled()
{
    static const auto handler = std::make_shared<ProgressHandler>();
    return handler;
}

/// The name that goes with a code: the catalogue's, else the database's.
QString nameOfCode(int code)
{
    try {
        return activeCatalogues()->nameOfCode(code);
    } catch (const std::exception &e) {
        LOG_DEBUG(QString::fromUtf8(e.what()));
        return {};
    }
}

/// Remembers what a search found, also nothing; not what a cancelled one, or one without catalogues, did not
/// find.
template <typename Search>
int remembered(std::atomic<int> &memory, int notAsked, const ProgressHandler *progress, Search &&search)
{
    const int known = memory;
    if (known != notAsked)
        return known;
    const bool canAsk = activeCatalogues(std::nothrow) != nullptr;
    const int found = search();
    if (found != CoordSystemTypes::EPSG_UNDEFINDED || (canAsk && !(progress && progress->isCanceled())))
        memory = found;
    return found;
}

} // namespace

CrsDefinitionPtr CoordSystemPrivate::identity() const
{
    {
        const QReadLocker lock(&m_lock);
        if (m_hasIdentity)
            return m_identity;
    }
    setIdentity(CrsDefinition::of(m_source, srs()));
    const QReadLocker lock(&m_lock);
    return m_identity;
}

// Code

int CoordSystem::epsg() const { return epsg(neverCancelled()); }

int CoordSystem::epsg(const std::shared_ptr<ProgressHandler> &progress) const
{
    if (d->m_source.type == Epsg)
        return d->m_source.string.toInt();
    const AskedCatalogues asked(d->m_catalogues);
    return d->isMoved() ? int(EPSG_UNDEFINDED) : d->unmovedEpsg(progress);
}

int CoordSystem::baseCode() const { return baseCode(neverCancelled()); }

int CoordSystem::baseCode(const std::shared_ptr<ProgressHandler> &progress) const
{
    if (!d->m_affine)
        return EPSG_UNDEFINDED;
    if (d->m_source.type == Epsg)
        return d->m_source.string.toInt();
    const AskedCatalogues asked(d->m_catalogues);
    return d->isMoved() ? d->unmovedEpsg(progress) : d->searchedEpsg(progress);
}

/// The affine transformation makes another plane of the one that the codes speak of.
bool CoordSystemPrivate::isMoved() const
{
    return m_affine && !(m_isEpsgOfMoved && !hasForeignCataloguedCode());
}

/// The code as if there were no affine transformation.
int CoordSystemPrivate::unmovedEpsg(const std::shared_ptr<ProgressHandler> &progress) const
{
    const int set = m_epsg;
    return set != EPSG_UNDEFINDED && !hasForeignCataloguedCode() ? set : searchedEpsg(progress);
}

/// The catalogue has the system under the code of another.
bool CoordSystemPrivate::hasForeignCataloguedCode() const
{
    if (!m_isEpsgCatalogued || !hasSrs() || codedIdentity())
        return false;
    const CrsDefinitionPtr registered = CrsDefinition::ofCode(m_epsg);
    return registered != nullptr;
}

/// The plane of the code that was set is this one's.
bool CoordSystemPrivate::isPlaneOf(const CrsDefinition &registered) const
{
    const QTransform *affine = m_isEpsgOfMoved ? m_affine.get() : nullptr;
    if (!affine && m_source.type == Prj &&
        saySamePlane(projText([] { return LinearUnit(); }), registered.projText()))
        return true;
    const CrsDefinitionPtr mine = identity();
    return mine && hasPlaneOf(*mine, affine, registered);
}

CrsDefinitionPtr CoordSystemPrivate::codedIdentity() const
{
    const int code = m_epsg;
    {
        const QReadLocker lock(&m_lock);
        if (code <= 0 || m_codedFor == code)
            return code <= 0 ? nullptr : m_coded;
    }
    CrsDefinitionPtr registered = hasSrs() ? CrsDefinition::ofCode(code) : nullptr;
    if (registered && !isPlaneOf(*registered))
        registered.reset();
    const QWriteLocker lock(&m_lock);
    m_coded.swap(registered); // the old one takes the PROJ lock as it goes, after this one
    m_codedFor = code;
    return m_coded;
}

/// The code that a WKT states and keeps.
int CoordSystemPrivate::statedEpsg() const
{
    if (m_source.type != Wkt)
        return EPSG_UNDEFINDED;
    return remembered(m_statedEpsg, NotAsked, nullptr, [this] {
        const CrsDefinitionPtr known = identity();
        return known ? known->verifiedCode() : int(EPSG_UNDEFINDED);
    });
}

int CoordSystemPrivate::searchedEpsg(const std::shared_ptr<ProgressHandler> &progress) const
{
    const int stated = statedEpsg();
    if (stated != EPSG_UNDEFINDED)
        return stated;
    if (!hasSrs())
        (void)q->projStr(); // throws: there is nothing to search for
    return remembered(m_searchedEpsg, NotAsked, progress.get(), [&] {
        const CrsDefinitionPtr known = m_source.type == Wkt ? identity() : nullptr;
        const int found = known ? epsgOfDefinition(progress, known->definition(), known.get())
                                : getEpsgFromCrs(progress, srs());
        return found == EPSG_UNDEFINDED && m_source.type == Prj ? nearEntryCode() : found;
    });
}

/// A clause whose figures are rounded has the code of the catalogue's entry with the full ones, as long as
/// its plane is that code's.
int CoordSystemPrivate::nearEntryCode() const
{
    const auto catalogues = activeCatalogues(std::nothrow);
    const auto mine = catalogues ? record() : nullptr;
    if (!mine || isNonEarth())
        return EPSG_UNDEFINDED;
    for (const int code : catalogues->codesNearRecord(*mine)) {
        const CrsDefinitionPtr registered = CrsDefinition::ofCode(code);
        if (registered && isPlaneOf(*registered))
            return code;
    }
    return EPSG_UNDEFINDED;
}

int CoordSystem::matchedEpsg() const { return matchedEpsg(neverCancelled()); }

int CoordSystem::matchedEpsg(const std::shared_ptr<ProgressHandler> &progress) const
{
    const AskedCatalogues asked(d->m_catalogues);
    return remembered(d->m_matchedEpsg, CoordSystemPrivate::NotAsked, progress.get(), [&] {
        if (d->m_source.type != Wkt)
            return getEpsgFromCrs(progress, d->srs());
        // Of equal systems one may come from WKT and one from PROJ text: the text that they share is asked.
        const std::shared_ptr<void> shared = srsFromProj(projStr());
        return getEpsgFromCrs(progress, shared.get());
    });
}

// Name

void CoordSystemPrivate::setNameless(std::shared_ptr<const CatalogueName> catalogued)
{
    const QWriteLocker lock(&m_lock);
    m_catalogueName = std::move(catalogued);
    m_isNameless = true;
}

QString CoordSystem::description() const
{
    {
        const QReadLocker lock(&d->m_lock);
        if (!d->m_isNameless)
            return d->m_description;
    }
    const AskedCatalogues asked(d->m_catalogues);
    const QString found = d->foundDescription(); // leaves the class: never under the lock
    if (!activeCatalogues(std::nothrow))
        return found; // not remembered: a factory may be installed later
    const QWriteLocker lock(&d->m_lock);
    if (d->m_isNameless)
        d->m_description = found;
    d->m_isNameless = false;
    return d->m_description;
}

QString CoordSystemPrivate::foundDescription() const
{
    const QString catalogued = m_catalogueName ? m_catalogueName->name() : QString();
    if (!catalogued.isEmpty())
        return catalogued;
    const int code = q->epsg();
    const QString registered = code != EPSG_UNDEFINDED ? nameOfCode(code) : QString();
    if (!registered.isEmpty())
        return registered;
    const QString title = m_source.type == Proj4 ? titleIn(m_source.string) : QString();
    if (m_source.type != Wkt)
        return title.isEmpty() ? m_source.string : title;
    const CrsDefinitionPtr known = identity();
    return known && !known->name().isEmpty() ? known->name() : q->projStr();
}

} // namespace nivora::cs
