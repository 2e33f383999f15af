#include "SharedSearch_p.h"

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

} // namespace

std::shared_ptr<const MapinfoSearch> sharedSearch(const CataloguePtr &catalogue, const QDir &resources,
                                                  const QString &language)
{
    if (!catalogue)
        return nullptr;
    return shared<MapinfoSearch>().get(catalogue, [&] {
        auto search = std::make_shared<MapinfoSearch>(*catalogue);
        addOtherLanguages(*search, resources, language);
        search->loadTables(resources);
        return search;
    });
}

std::shared_ptr<const MapinfoSearch> systemSearch(const CoordSysFactory &factory)
{
    return sharedSearch(factory.mapinfoCoordSystem(), factory.resourceDir(), factory.language());
}

std::shared_ptr<const SystemGuess> systemGuess(const CoordSysFactory &factory)
{
    const std::shared_ptr<const MapinfoSearch> search = systemSearch(factory);
    if (!search)
        return nullptr;
    const auto kept = shared<KeptGuess>().get(factory.mapinfoCoordSystem(), [&] {
        return std::shared_ptr<KeptGuess>(new KeptGuess{search, {*search, factory.resourceDir()}});
    });
    return {kept, &kept->guess};
}

} // namespace nivora::cs
