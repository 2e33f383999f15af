#include "SharedSearch_p.h"

#include "SearchMaker_p.h"
#include <coordsys/CoordSysFactory.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoSearch.h>
#include <coordsys/SystemGuess.h>
#include <coordsys/SystemSearch.h>

namespace nivora::cs {
namespace {

/// Gives the search the catalogue's names in the languages that the user did not choose.
void addOtherLanguages(MapinfoSearch &search, const QDir &resources, const QString &language)
{
    const QString own = QStringLiteral("projections_%1.prj").arg(language);
    const QFileInfoList files =
        resources.entryInfoList({QStringLiteral("projections_*.prj")}, QDir::Files, QDir::Name);
    for (const QFileInfo &file : files) {
        MapinfoCoordSystem other([](const QString &) { return CoordSystemPtr(); });
        if (file.fileName() != own && other.loadFromPRJ(file))
            search.addNames(other);
    }
}

/// Never destroyed: a thread may still search while the process ends.
template <typename Thing> PerCatalogue<Thing> &shared()
{
    static auto *const things = new PerCatalogue<Thing>;
    return *things;
}

/// A guess with the search that it stands on.
struct KeptGuess
{
    std::shared_ptr<const MapinfoSearch> search;
    SystemGuess guess;
};
using GuessPtr = std::shared_ptr<const SystemGuess>;

template <typename Fill>
std::shared_ptr<const KeptGuess> newGuess(const std::shared_ptr<const MapinfoSearch> &search,
                                          const QDir &resources, Fill &&fill)
{
    const std::shared_ptr<KeptGuess> kept(new KeptGuess{search, {*search, resources}});
    fill(kept->guess);
    return kept;
}

using Branches = QList<UserCoordSystem::CsDataType>;

/// What the search and the guess make of a user's systems changes when this does.
QStringList markOf(const Branches &branches)
{
    QStringList mark;
    for (const UserCoordSystem::CsDataType &branch : branches) {
        mark << branch.name;
        for (const UserCoordSystem::CoordSystemParam &entry : branch.entries)
            mark << entry.description() << QString::number(entry.source().type) << entry.source().string;
    }
    return mark;
}

std::vector<CodelessSystem> ownSystems(const Branches &branches)
{
    std::vector<CodelessSystem> systems;
    for (int branch = 0; branch < branches.size(); ++branch)
        for (int row = 0; row < branches.at(branch).entries.size(); ++row) {
            const UserCoordSystem::CoordSystemParam entry = branches.at(branch).entries.at(row);
            if (!entry.description().isEmpty())
                systems.push_back(
                    {{-2 - branch, row}, branches.at(branch).name, entry.description(), {}, [entry] {
                         return entry.storedSystem();
                     }});
        }
    return systems;
}

/// Entries that have no code.
std::vector<CodelessSystem> codelessIn(const CataloguePtr &catalogue)
{
    std::vector<CodelessSystem> systems;
    const QList<CoordSystemParamsList> categories = catalogue->projectionList();
    for (int category = 0; category < categories.size(); ++category)
        for (int row = 0; row < categories.at(category).entries.size(); ++row) {
            const CoordSystemParams &entry = categories.at(category).entries.at(row);
            if (entry.epsg() > 0)
                continue;
            const std::weak_ptr<const MapinfoCoordSystem> owner = catalogue; // which this would keep alive
            const auto make = [owner, category, row] {
                const CataloguePtr alive = owner.lock();
                return alive ? alive->getProj(category, row) : nullptr;
            };
            systems.push_back(
                {{category, row}, categories.at(category).name, entry.name(), entry.asPrjString(), make});
        }
    return systems;
}

std::shared_ptr<const MapinfoSearch> searchOf(const CataloguePtr &catalogue, const QDir &resources,
                                              const QString &language)
{
    return shared<MapinfoSearch>().get(catalogue, [&] {
        auto search = std::make_shared<MapinfoSearch>(*catalogue);
        addOtherLanguages(*search, resources, language);
        search->loadTables(resources);
        return search;
    });
}

GuessPtr guessOf(const CoordSysFactory &factory)
{
    const CataloguePtr catalogue = factory.mapinfoCoordSystem();
    const auto kept = shared<KeptGuess>().get(catalogue, [&] {
        const auto search = searchOf(catalogue, factory.resourceDir(), factory.language());
        return newGuess(search, factory.resourceDir(), [&](SystemGuess &guess) {
            SearchMaker::setCodeless(guess, factory.latLongWgs84CoordSystem(), codelessIn(catalogue));
        });
    });
    return {kept, &kept->guess};
}

} // namespace

std::shared_ptr<const MapinfoSearch> sharedSearch(const CataloguePtr &catalogue, const QDir &resources,
                                                  const QString &language, const Branches &branches)
{
    if (!catalogue)
        return nullptr;
    const auto base = searchOf(catalogue, resources, language);
    std::vector<CodelessSystem> own = ownSystems(branches);
    if (own.empty())
        return base;
    static auto *const withOwn = new PerCatalogue<MapinfoSearch>; // never destroyed, as the others
    return withOwn->get(
        catalogue, [&] { return SearchMaker::withOwn(*base, std::move(own)); }, markOf(branches));
}

std::shared_ptr<const MapinfoSearch> systemSearch(const CoordSysFactory &factory)
{
    return sharedSearch(factory.mapinfoCoordSystem(), factory.resourceDir(), factory.language(),
                        factory.userCoordSystem()->data());
}

std::shared_ptr<const SystemGuess> systemGuess(const CoordSysFactory &factory)
{
    const Branches branches = factory.userCoordSystem()->data();
    const std::shared_ptr<const MapinfoSearch> search = systemSearch(factory);
    if (!search)
        return nullptr;
    const GuessPtr base = guessOf(factory);
    if (ownSystems(branches).empty())
        return base;
    static auto *const withOwn = new PerCatalogue<KeptGuess>;
    const auto kept = withOwn->get(
        factory.mapinfoCoordSystem(),
        [&] {
            return newGuess(search, factory.resourceDir(),
                            [&](SystemGuess &guess) { SearchMaker::setBase(guess, base); });
        },
        markOf(branches));
    return {kept, &kept->guess};
}

} // namespace nivora::cs
