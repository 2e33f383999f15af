#pragma once

#include "SearchLexicon_p.h"
#include "SystemIndex_p.h"

#include <mutex>

namespace nivora::cs {

struct NIVORA_CS_NO_EXPORT MapinfoSearch::Data
{
    explicit Data(const MapinfoCoordSystem &catalogue)
        : systems(catalogue)
    {}

    /// With the database, which is read when something is looked for first.
    const SystemIndex &index()
    {
        std::call_once(databaseOnce, [this] { systems.addDatabase(); });
        return systems;
    }

    SystemIndex systems;
    SearchLexicon lexicon;
    std::once_flag databaseOnce;
};

} // namespace nivora::cs
