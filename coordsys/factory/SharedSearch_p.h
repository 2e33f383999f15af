#pragma once

#include <coordsys/UserCoordSystem.h>

#include <QDir>
#include <QString>
#include <QStringList>

#include <memory>
#include <mutex>
#include <vector>

namespace nivora::cs {

class MapinfoCoordSystem;
class MapinfoSearch;

using CataloguePtr = std::shared_ptr<const MapinfoCoordSystem>;

/// Things that are made of a catalogue, and of what else a mark tells, once and shared while the catalogue
/// lives and until they are asked for with another mark. Thread-safe: whoever asks meanwhile waits.
template <typename Thing> class PerCatalogue
{
public:
    template <typename Make>
    std::shared_ptr<const Thing> get(const CataloguePtr &catalogue, Make &&make, const QStringList &mark = {})
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (std::size_t i = m_made.size(); i-- > 0;)
            if (const CataloguePtr owner = m_made[i].owner.lock();
                owner == catalogue && m_made[i].mark == mark)
                return m_made[i].thing;
            else if (!owner || owner == catalogue)
                m_made.erase(m_made.begin() + static_cast<std::ptrdiff_t>(i));
        const std::shared_ptr<const Thing> thing = make();
        m_made.push_back({catalogue, mark, thing});
        return thing;
    }

private:
    struct Made
    {
        std::weak_ptr<const MapinfoCoordSystem> owner;
        QStringList mark;
        std::shared_ptr<const Thing> thing;
    };

    std::mutex m_mutex;
    std::vector<Made> m_made;
};

/// As systemSearch(), of a catalogue in one of the languages of a resource directory, and of the branches of
/// a user's store.
std::shared_ptr<const MapinfoSearch> sharedSearch(const CataloguePtr &catalogue, const QDir &resources,
                                                  const QString &language,
                                                  const QList<UserCoordSystem::CsDataType> &branches);

} // namespace nivora::cs
