#pragma once

#include "CodelessSystems_p.h"
#include "SearchLexicon_p.h"
#include "SystemIndex_p.h"
#include "SystemsByWord_p.h"

#include <QFileInfo>

#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace nivora::cs {

struct NIVORA_CS_NO_EXPORT MapinfoSearch::Data
{
    explicit Data(const MapinfoCoordSystem &catalogue)
        : systems(catalogue)
    {}
    /// The same with a user's own systems.
    Data(Data &base, std::vector<CodelessSystem> ownSystems)
        : systems(base.index())
        , lexicon(base.lexicon)
        , own(std::move(ownSystems))
        , isRead(true)
    {
        for (const CodelessSystem &system : own)
            systems.addOwn(system);
    }

    /// With the database, which is read when something is looked for first.
    const SystemIndex &index()
    {
        std::call_once(databaseOnce, [this] {
            if (!isRead)
                systems.addDatabase();
        });
        return systems;
    }
    const SystemsByWord &systemsByWord()
    {
        std::call_once(wordsOnce, [this] { byWord.emplace(index()); });
        return *byWord;
    }
    /// The same, where the user's own are told by place: each has to be made for that. A copy, since other
    /// threads read the first one meanwhile.
    const SystemIndex &indexWithPlaces()
    {
        if (own.empty())
            return index();
        std::call_once(placesOnce, [this] {
            placed.emplace(index());
            placed->locate(own, CodelessAreas({}));
        });
        return *placed;
    }

    SystemIndex systems;
    SearchLexicon lexicon;
    std::vector<CodelessSystem> own;
    bool isRead = false;
    std::optional<SystemsByWord> byWord;
    std::optional<SystemIndex> placed;
    std::once_flag databaseOnce;
    std::once_flag wordsOnce;
    std::once_flag placesOnce;
};

} // namespace nivora::cs
