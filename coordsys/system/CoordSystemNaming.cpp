#include <coordsys/CoordSystem.h>

#include "CatalogueName_p.h"
#include "CrsDefinition_p.h"
#include "EpsgSearch_p.h"
#include "OsrHandle_p.h"
#include <coordsys/CatalogueSource.h>
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

/// Remembers what a search found, also nothing; not what a cancelled one did not find.
template <typename Search>
int remembered(std::atomic<int> &memory, int notAsked, const ProgressHandler *progress, Search &&search)
{
    const int known = memory;
    if (known != notAsked)
        return known;
    const int found = search();
    if (found != CoordSystemTypes::EPSG_UNDEFINDED || !progress || !progress->isCanceled())
        memory = found;
    return found;
}

} // namespace

CoordSystem::IdentityPtr CoordSystem::identity() const
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
    if (m_source.type == Epsg)
        return m_source.string.toInt();
    const int set = m_epsg;
    return set != EPSG_UNDEFINDED ? set : searchedEpsg(progress);
}

/// The code that a WKT states and keeps.
int CoordSystem::statedEpsg() const
{
    if (m_source.type != Wkt)
        return EPSG_UNDEFINDED;
    return remembered(m_statedEpsg, NotAsked, nullptr, [this] {
        const IdentityPtr known = identity();
        return known ? known->verifiedCode() : int(EPSG_UNDEFINDED);
    });
}

int CoordSystem::searchedEpsg(const std::shared_ptr<ProgressHandler> &progress) const
{
    const int stated = statedEpsg();
    if (stated != EPSG_UNDEFINDED)
        return stated;
    if (!m_srs)
        (void)projStr(); // throws: there is nothing to search for
    return remembered(m_searchedEpsg, NotAsked, progress.get(), [&] {
        const IdentityPtr known = m_source.type == Wkt ? identity() : nullptr;
        const int identified = known ? identifiedEpsg(progress, known->definition()) : int(EPSG_UNDEFINDED);
        if (identified != EPSG_UNDEFINDED)
            return identified;
        const int matched = getEpsgFromCrs(progress, srs());
        const bool isStranger = known && matched > 0 && !known->isSystemOf(matched); // of another known datum
        return isStranger ? int(EPSG_UNDEFINDED) : matched;
    });
}

int CoordSystem::matchedEpsg() const { return matchedEpsg(neverCancelled()); }

int CoordSystem::matchedEpsg(const std::shared_ptr<ProgressHandler> &progress) const
{
    return remembered(m_matchedEpsg, NotAsked, progress.get(), [&] {
        if (m_source.type != Wkt)
            return getEpsgFromCrs(progress, srs());
        // Of equal systems one may come from WKT and one from PROJ text: the text that they share is asked.
        const std::shared_ptr<void> shared = srsFromProj(projStr());
        return getEpsgFromCrs(progress, shared.get());
    });
}

// Name

void CoordSystem::setNameless(std::shared_ptr<const CatalogueName> catalogued)
{
    const QWriteLocker lock(&m_lock);
    m_catalogueName = std::move(catalogued);
    m_isNameless = true;
}

QString CoordSystem::description() const
{
    {
        const QReadLocker lock(&m_lock);
        if (!m_isNameless)
            return m_description;
    }
    const QString found = foundDescription(); // leaves the class: never under the lock
    const QWriteLocker lock(&m_lock);
    if (m_isNameless)
        m_description = found;
    m_isNameless = false;
    return m_description;
}

QString CoordSystem::foundDescription() const
{
    const QString catalogued = m_catalogueName ? m_catalogueName->name() : QString();
    if (!catalogued.isEmpty())
        return catalogued;
    const int code = epsg();
    const QString registered = code != EPSG_UNDEFINDED ? nameOfCode(code) : QString();
    if (!registered.isEmpty())
        return registered;
    if (m_source.type != Wkt)
        return m_source.string;
    const IdentityPtr known = identity();
    return known && !known->name().isEmpty() ? known->name() : projStr();
}

} // namespace nivora::cs
