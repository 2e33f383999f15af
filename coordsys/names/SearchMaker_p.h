#pragma once

// Searches and guesses with systems that have no code.

#include "SystemGuessData_p.h"

namespace nivora::cs {

class SearchMaker
{
public:
    /// \p base with a user's own systems.
    static std::shared_ptr<const MapinfoSearch> withOwn(const MapinfoSearch &base,
                                                        std::vector<CodelessSystem> own)
    {
        return std::shared_ptr<const MapinfoSearch>(
            new MapinfoSearch(std::make_unique<MapinfoSearch::Data>(*base.m_data, std::move(own))));
    }
    /// Where a user's own system is in use, degrees, by its position as MapinfoSearch::Hit has it; null: not
    /// known. Makes them all when it is asked first.
    static QRectF ownArea(const MapinfoSearch &search, const std::pair<int, int> &position)
    {
        for (const IndexedSystem &system : search.m_data->indexWithPlaces().systems())
            if (system.hit.isOwn() && system.hit.position == position)
                return system.extent;
        return {};
    }
    /// What systems without a code are taken to, and those of the catalogue.
    static void setCodeless(SystemGuess &guess, CoordSystemPtr wgs84, std::vector<CodelessSystem> codeless)
    {
        guess.m_data->wgs84 = std::move(wgs84);
        guess.m_data->codeless = std::move(codeless);
    }
    /// The guess without the user's own systems, which it shares what it has read with.
    static void setBase(SystemGuess &guess, std::shared_ptr<const SystemGuess> base)
    {
        guess.m_data->wgs84 = base->m_data->wgs84;
        guess.m_data->base = std::move(base);
    }
};

} // namespace nivora::cs
