#pragma once

#include <QDir>
#include <QString>

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace nivora::cs {

class MapinfoCoordSystem;
class MapinfoSearch;

using CataloguePtr = std::shared_ptr<const MapinfoCoordSystem>;

/// Things that are made of a catalogue once and shared while it lives. Thread-safe: whoever asks meanwhile
/// waits.
template <typename Thing> class PerCatalogue
{
public:
    template <typename Make> std::shared_ptr<const Thing> get(const CataloguePtr &catalogue, Make &&make)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (std::size_t i = m_made.size(); i-- > 0;)
            if (m_made[i].first.expired())
                m_made.erase(m_made.begin() + static_cast<std::ptrdiff_t>(i));
        for (const auto &[owner, thing] : m_made)
            if (owner.lock() == catalogue)
                return thing;
        const std::shared_ptr<const Thing> thing = make();
        m_made.emplace_back(catalogue, thing);
        return thing;
    }

private:
    std::mutex m_mutex;
    std::vector<std::pair<std::weak_ptr<const MapinfoCoordSystem>, std::shared_ptr<const Thing>>> m_made;
};

/// As systemSearch(), of a catalogue in one of the languages of a resource directory.
std::shared_ptr<const MapinfoSearch> sharedSearch(const CataloguePtr &catalogue, const QDir &resources,
                                                  const QString &language);

} // namespace nivora::cs
