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
