#include "CatalogueBenchmarks.h"

#include "Comparison.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoSearch.h>

#include <QFileInfo>

#include <cstdio>
#include <cstdlib>

using namespace nivora::cs;
using benchmark::State;

namespace comparison {
namespace {

std::unique_ptr<CoordSysFactory> freshFactory(const QString &userDir)
{
    auto factory =
        std::make_unique<CoordSysFactory>(QStringLiteral(NIVORA_RESOURCES), userDir, QStringLiteral("ru"));
    return factory->initCoordSystemEnvironment() ? std::move(factory) : nullptr;
}

/// Anew on a factory that has answered nothing yet.
void addFirstLookUp(const CoordSystemPtr &unlisted, const QString &userDir)
{
    const auto library = [unlisted, userDir](State &state) {
        for (auto _ : state) {
            state.PauseTiming();
            auto factory = freshFactory(userDir);
            if (!factory) {
                state.SkipWithError("cannot load the catalogues");
                break;
            }
            state.ResumeTiming();
            benchmark::DoNotOptimize(factory->mapinfoCoordSystem()->seekProj(*unlisted, false));
            state.PauseTiming();
            factory.reset();
            state.ResumeTiming();
        }
    };
    add({"first look-up that finds nothing", 10000.0, Row::Microseconds, 1}, library, nullptr);
}

} // namespace

void addCatalogue(const std::shared_ptr<CoordSysFactory> &factory, const QString &userDir)
{
    const QString known = QStringLiteral("CoordSys Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0");
    const QString unknown =
        QStringLiteral("CoordSys Earth Projection 8, 1001, \"m\", 38.4836, 0, 1, 250000, -5700000");
    const CoordSystemPtr unlisted = factory->createWithoutDescription(unknown);
    const auto catalogue = factory->mapinfoCoordSystem();
    if (catalogue->seekProj(*unlisted, true) != MapinfoCoordSystem::PairNone ||
        catalogue->seekProj(*factory->createWithoutDescription(known), true) ==
            MapinfoCoordSystem::PairNone) {
        std::fputs("the catalogue is not the one that the figures are meant for\n", stderr);
        std::exit(1);
    }

    const auto startUp = [userDir](State &state) {
        for (auto _ : state)
            if (!freshFactory(userDir))
                state.SkipWithError("cannot load the catalogues");
    };
    add({"start-up with the full catalogue", 25000.0, Row::Microseconds, 3, "QGIS 37 ms"}, startUp, nullptr);
    addFirstLookUp(unlisted, userDir);
    const auto lookUp = [catalogue, unlisted](State &state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(catalogue->seekProj(*unlisted, false));
    };
    add({"later look-ups that find nothing", 100.0, Row::Microseconds}, lookUp, nullptr);

    const auto search = std::make_shared<MapinfoSearch>(*catalogue);
    search->loadPlaces(QFileInfo(QStringLiteral(NIVORA_RESOURCES), QStringLiteral("places.tsv")));
    for (const char *text : {"utm 37", "state plane california", "псков"}) {
        const QString query = QString::fromUtf8(text);
        const auto find = [search, query](State &state) {
            for (auto _ : state)
                benchmark::DoNotOptimize(search->find(query, 50));
        };
        add({std::string("find ") + text, 2000.0, Row::Microseconds}, find, nullptr);
    }
}

} // namespace comparison
