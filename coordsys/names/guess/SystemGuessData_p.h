#pragma once

#include "MapinfoSearchData_p.h"
#include "PlaceNames_p.h"
#include "PlaneTable_p.h"
#include <coordsys/SystemGuess.h>

#include <QFileInfo>

#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace nivora::cs {

struct NIVORA_CS_NO_EXPORT SystemGuess::Data
{
    /// With the areas of systems that have no code.
    struct Tables
    {
        SystemIndex index;
        PlaneTable planes;
    };

    Data(MapinfoSearch::Data &searchData, const QFileInfo &planesFile)
        : search(searchData)
        , file(planesFile)
    {}
    Answer answer(const std::optional<NamedPlace> &place, const Question &question, int limit);
    const Tables &tables()
    {
        std::call_once(once, [this] { made = std::make_unique<Tables>(base ? withOwn() : withCatalogue()); });
        return *made;
    }

    MapinfoSearch::Data &search;
    QFileInfo file;
    CoordSystemPtr wgs84;                    ///< null: systems without a code are left out
    std::vector<CodelessSystem> codeless;    ///< the catalogue's
    std::shared_ptr<const SystemGuess> base; ///< over the same search without the user's own systems; or null

private:
    Tables withCatalogue() const
    {
        Tables tables{search.index(), PlaneTable(file, search.index())};
        addTo(tables, codeless);
        return tables;
    }
    /// Numbers of systems are those of the search: its own ones stand behind all others.
    Tables withOwn() const
    {
        Tables tables = base->m_data->tables();
        for (const CodelessSystem &own : search.own)
            tables.index.addOwn(own);
        addTo(tables, search.own);
        return tables;
    }
    void addTo(Tables &tables, const std::vector<CodelessSystem> &systems) const
    {
        std::map<std::pair<int, int>, const CodelessSystem *> byPosition;
        for (const CodelessSystem &system : systems)
            byPosition.emplace(system.position, &system);
        for (const auto &[number, located] : tables.index.locate(systems, CodelessAreas(file))) {
            const IndexedSystem &indexed = tables.index.systems()[static_cast<std::size_t>(number)];
            tables.planes.add(number, located, byPosition.at(indexed.hit.position)->make);
        }
    }

    std::once_flag once;
    std::unique_ptr<Tables> made;
};

} // namespace nivora::cs
