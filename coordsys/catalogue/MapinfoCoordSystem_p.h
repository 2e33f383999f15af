#pragma once

#include "CatalogueSource_p.h"
#include <coordsys/MapinfoCoordSystem.h>

#include <QFuture>
#include <QHash>
#include <QReadWriteLock>

#include <atomic>
#include <map>
#include <set>

namespace nivora::cs {

class MapinfoIndex;

/// What a MapinfoCoordSystem consists of.
class MapinfoCoordSystemPrivate
{
public:
    using Position = MapinfoCoordSystem::Position;
    static constexpr Position PairNone = MapinfoCoordSystem::PairNone;

    MapinfoCoordSystemPrivate(MapinfoCoordSystem &catalogue, MapinfoCoordSystem::Creator creator)
        : q(&catalogue)
        , m_creator(std::move(creator))
    {}

    /// The owner of the catalogues that look-ups compare with; null for the active one. The owner sets it,
    /// and takes itself away before it goes. Start-up and shut-down only.
    static void setOwner(MapinfoCoordSystem &catalogue, const CatalogueSource *owner)
    {
        catalogue.d->m_owner = owner;
    }

    std::pair<QString, int> nameAndCode(const Position &position) const;
    const CoordSystemParams *entry(int category, int index) const;
    bool hasRecord(const Position &position, const TABProjInfo_t &record) const;
    const CoordSystemParams *firstWithParams(const QStringList &params) const;
    CoordSystemPtr buildForLookUp(int category, int index) const;
    Position walkEntries(const CoordSystem &cs, bool ignoreRect) const;
    void noteCodes(int firstCategory);
    void fillCache(const std::function<bool()> &stopped);
    std::shared_ptr<const MapinfoIndex> indexForLookUps() const;

    MapinfoCoordSystem *const q;
    MapinfoCoordSystem::Creator m_creator;
    std::atomic<const CatalogueSource *> m_owner{nullptr};
    QList<CoordSystemParamsList> m_categories;
    QHash<int, Position> m_byCode; ///< first entry of each code; kept with m_categories
    mutable QReadWriteLock m_lock; ///< guards m_cache, m_broken and m_index
    mutable std::map<Position, CoordSystemPtr> m_cache;
    mutable std::set<Position> m_broken; ///< entries that look-ups could not build, already logged
    mutable std::shared_ptr<const MapinfoIndex> m_index; ///< null until the first look-up, under m_lock
    std::atomic<bool> m_cancelled{false};
    std::atomic<bool> m_fillStopped{false};
    QList<QFuture<void>> m_fills;
};

} // namespace nivora::cs
