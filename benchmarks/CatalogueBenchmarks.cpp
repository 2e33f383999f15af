#include "CatalogueBenchmarks.h"

#include "Comparison.h"

#include <coordsys/CoordSysEnvironment.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoSearch.h>
#include <coordsys/ProjEngine.h>

#include <ogr_srs_api.h>
#include <proj.h>

#include <sys/wait.h>
#include <unistd.h>

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
void addFirstLookUp(const CoordSystemPtr &stranger, const QString &userDir)
{
    const auto library = [stranger, userDir](State &state) {
        for (auto _ : state) {
            state.PauseTiming();
            auto factory = freshFactory(userDir);
            if (!factory) {
                state.SkipWithError("cannot load the catalogues");
                break;
            }
            state.ResumeTiming();
            benchmark::DoNotOptimize(factory->mapinfoCoordSystem()->seekProj(*stranger, false));
            state.PauseTiming();
            factory.reset();
            state.ResumeTiming();
        }
    };
    add({"first look-up that finds nothing", 10000.0, Row::Microseconds, 1}, library, nullptr);
}

/// What \p work leaves resident in a process of its own, in kilobytes.
template <typename Work> long residentKb(Work &&work)
{
    int channel[2] = {};
    if (pipe(channel) != 0)
        return -1;
    const pid_t child = fork();
    if (child == 0) {
        work();
        long pages = 0;
        long resident = 0;
        if (std::FILE *file = std::fopen("/proc/self/statm", "r")) {
            if (std::fscanf(file, "%ld %ld", &pages, &resident) != 2)
                resident = 0;
            std::fclose(file);
        }
        const long kb = resident * (sysconf(_SC_PAGESIZE) / 1024);
        _exit(write(channel[1], &kb, sizeof kb) == sizeof kb ? 0 : 1);
    }
    close(channel[1]);
    long kb = -1;
    if (child < 0 || read(channel[0], &kb, sizeof kb) != sizeof kb)
        kb = -1;
    close(channel[0]);
    waitpid(child, nullptr, 0);
    return kb;
}

void warmUpEngines()
{
    initProjLibEnvironment();
    const OGRSpatialReferenceH srs = OSRNewSpatialReference(nullptr);
    if (OSRImportFromEPSG(srs, 32637) != OGRERR_NONE ||
        !proj4FromString(QStringLiteral("+proj=utm +zone=37 +datum=WGS84")))
        _exit(1);
    OSRDestroySpatialReference(srs);
}

} // namespace

void addCatalogue(const std::shared_ptr<CoordSysFactory> &factory, const QString &userDir)
{
    const QString known = QStringLiteral("CoordSys Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0");
    const QString unknown =
        QStringLiteral("CoordSys Earth Projection 8, 1001, \"m\", 38.4836, 0, 1, 250000, -5700000");
    const CoordSystemPtr stranger = factory->createWithoutDescription(unknown);
    const auto catalogue = factory->mapinfoCoordSystem();
    if (catalogue->seekProj(*stranger, true) != MapinfoCoordSystem::PairNone ||
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
    addFirstLookUp(stranger, userDir);
    const auto lookUp = [catalogue, stranger](State &state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(catalogue->seekProj(*stranger, false));
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

void printResidentMemory(const QString &userDir)
{
    const long engines = residentKb(warmUpEngines);
    std::unique_ptr<CoordSysFactory> factory;
    const long loaded = residentKb([&] {
        warmUpEngines();
        factory = freshFactory(userDir);
        if (!factory)
            _exit(1);
    });
    if (engines < 0 || loaded < 0)
        std::puts("resident memory: not measured");
    else
        std::printf("resident memory, MB: engines %.1f, with the catalogues %.1f, difference %.1f (aim 30)\n",
                    static_cast<double>(engines) / 1024.0, static_cast<double>(loaded) / 1024.0,
                    static_cast<double>(loaded - engines) / 1024.0);
}

} // namespace comparison
