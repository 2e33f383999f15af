#include "ProcessBenchmarks.h"

#include "Comparison.h"

#include <coordsys/CoordSysEnvironment.h>
#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjEngine.h>
#include <coordsys/UserCoordSystem.h>

#include <ogr_srs_api.h>

#include <QTemporaryDir>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <stdexcept>

using namespace nivora::cs;

namespace comparison {
namespace {

constexpr int children = 7;

/// What \p work answers in a process of its own, NaN when it fails.
template <typename Work> double inChild(Work &&work)
{
    double answer = NAN;
    int channel[2] = {};
    if (pipe(channel) != 0)
        return answer;
    const pid_t child = fork();
    if (child == 0) {
        try {
            answer = work();
        } catch (const std::exception &e) {
            std::fprintf(stderr, "%s\n", e.what());
        }
        _exit(write(channel[1], &answer, sizeof answer) == sizeof answer ? 0 : 1);
    }
    close(channel[1]);
    if (child < 0 || read(channel[0], &answer, sizeof answer) != sizeof answer)
        answer = NAN;
    close(channel[0]);
    waitpid(child, nullptr, 0);
    return answer;
}

template <typename Work> double bestOfChildren(Work &&work)
{
    double best = inChild(work);
    for (int i = 1; i < children; ++i)
        best = std::min(best, inChild(work));
    return best;
}

std::shared_ptr<CoordSysFactory> started(const QString &userDir)
{
    const auto factory =
        std::make_shared<CoordSysFactory>(QStringLiteral(NIVORA_RESOURCES), userDir, QStringLiteral("ru"));
    if (!factory->initCoordSystemEnvironment())
        throw std::runtime_error("cannot load the catalogues");
    CoordSysFactory::setDefaultCoordSysFactory(factory);
    return factory;
}

double startUpSeconds(const QString &userDir)
{
    return processorSeconds([&] { started(userDir); });
}

/// What this process holds.
double residentMb()
{
    long pages = 0;
    long resident = 0;
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen("/proc/self/statm", "r"), fclose);
    if (!file || std::fscanf(file.get(), "%ld %ld", &pages, &resident) != 2)
        throw std::runtime_error("/proc/self/statm cannot be read");
    return static_cast<double>(resident * sysconf(_SC_PAGESIZE)) / 1048576.0;
}

void warmUpEngines()
{
    initProjLibEnvironment();
    const OGRSpatialReferenceH srs = OSRNewSpatialReference(nullptr);
    if (OSRImportFromEPSG(srs, 32637) != OGRERR_NONE ||
        !proj4FromString(QStringLiteral("+proj=utm +zone=37 +datum=WGS84")))
        throw std::runtime_error("the engines do not work");
    OSRDestroySpatialReference(srs);
}

// First calls

using FirstCall = void (*)(CoordSysFactory &);
struct First
{
    const char *name;
    double aimUs;
    FirstCall call;
};
const First firstCalls[] = {
    {"first system after start-up, by its code", 9000.0,
     [](CoordSysFactory &factory) { factory.createFromEpsg(32637); }},
    {"first system after start-up, CoordSys text", 9000.0,
     [](CoordSysFactory &factory) {
         factory.createFromPrj(
             QStringLiteral("CoordSys Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0"));
     }},
    {"first system after start-up, PROJ text and its name", 9000.0,
     [](CoordSysFactory &factory) {
         factory.createFromProj(QStringLiteral("+proj=utm +zone=37 +datum=WGS84 +units=m +no_defs"))
             ->description();
     }},
};

void addFirstCalls(const QString &userDir)
{
    for (const First &first : firstCalls)
        addGiven({first.name, first.aimUs, Row::Microseconds}, bestOfChildren([&] {
                     const auto factory = started(userDir);
                     return processorSeconds([&] { first.call(*factory); });
                 }));
}

/// Methods whose plane the engines name otherwise than the catalogue.
const char *const obliqueTexts[][2] = {
    {"oblique Mercator", "+proj=omerc +lat_0=4 +lonc=115 +alpha=53.31582047222222 +k=0.99984 +x_0=590476.87 "
                         "+y_0=442857.65 +gamma=53.13010236111111 +ellps=evrstSS +units=m"},
    {"Krovak", "+proj=krovak +lat_0=49.5 +lon_0=24.83333333333333 +alpha=30.28813972222222 +k=0.9999 +x_0=0 "
               "+y_0=0 +ellps=bessel +units=m"},
};

void addObliqueLookUps(const QString &userDir)
{
    for (const auto &[kind, text] : obliqueTexts)
        addGiven({std::string("first look-up of a system: ") + kind, 5000.0, Row::Microseconds},
                 bestOfChildren([&, text = text] {
                     const auto factory = started(userDir);
                     // The engines' own first time, 6 ms of names, is that of any system.
                     factory->createWithoutDescription(QStringLiteral("CoordSys Earth Projection 1, 1001"));
                     const CoordSystemPtr cs = factory->createFromProj(QString::fromLatin1(text));
                     return processorSeconds([&] { factory->mapinfoCoordSystem()->seekProj(*cs, true); });
                 }));
}

// The user store

const char *const ownTexts[] = {"prj:CoordSys Earth Projection 8, 1001, \"m\", %1, 0, 1, 7500000, 0",
                                "proj4:+proj=tmerc +lon_0=%1 +k=1 +x_0=500000 +ellps=krass +units=m",
                                "prj:CoordSys Earth Projection 3, 104, \"m\", %1, 50, 40, 60, 0, 0",
                                "proj4:+proj=lcc +lat_1=40 +lat_2=60 +lat_0=50 +lon_0=%1 +datum=WGS84"};

/// 100 systems of the user's in a store.
void writeStore(const QString &dir)
{
    const auto factory = started(dir);
    for (int i = 0; i < 100; ++i) {
        const QString text = QString::fromLatin1(ownTexts[i % 4]).arg(20.0 + 0.37 * i);
        const CoordSystemPtr cs = factory->createFromTaggedString(text);
        factory->userCoordSystem()->setCoordSystem(QStringLiteral("Мои"), cs->sourceParameters(),
                                                   QStringLiteral("Система %1").arg(i));
    }
    factory->userCoordSystem()->saveToFile(true);
}

void addUserStore(const QString &userDir)
{
    const QTemporaryDir dir;
    const double written = inChild([&] {
        writeStore(dir.path());
        return 0.0;
    });
    const double without = bestOfChildren([&] { return startUpSeconds(userDir); });
    const double with = bestOfChildren([&] { return startUpSeconds(dir.path()); });
    addGiven(
        {"start-up with the full catalogue, in a new process", 25000.0, Row::Microseconds, 0, "QGIS 37 ms"},
        without);
    addGiven({"what 100 own systems in the user store add to it", 2000.0, Row::Microseconds},
             written + std::max(with - without, 0.0));
}

// Memory

void addCatalogueMemory(const QString &userDir)
{
    const double engines = inChild([] {
        warmUpEngines();
        return residentMb();
    });
    const double loaded = inChild([&] {
        warmUpEngines();
        const auto factory = started(userDir);
        return residentMb();
    });
    addGiven({"resident memory: the catalogues, beyond the engines", 30.0, Row::Megabytes}, loaded - engines);
}

void makeAndDrop(CoordSysFactory &factory, int count)
{
    static int made = 0;
    for (int end = made + count; made < end; ++made) {
        const CoordSystemPtr cs = factory.createFromTaggedString(
            QString::fromLatin1(ownTexts[made % 4]).arg(20.0 + 1e-4 * made, 0, 'f', 4));
        QPointF out;
        if (!cs->forward(QPointF(20, 50), out))
            throw std::runtime_error("a system does not convert");
    }
}

void addSystemMemory(const QString &userDir)
{
    addGiven({"resident memory: 10,000 different systems made and dropped", 16.0, Row::Megabytes},
             inChild([&] {
                 const auto factory = started(userDir);
                 makeAndDrop(*factory, 4); // what the engines keep of each kind
                 const double before = residentMb();
                 makeAndDrop(*factory, 10000);
                 return residentMb() - before;
             }));
}

} // namespace

void addProcesses(const QString &userDir)
{
    addUserStore(userDir);
    addFirstCalls(userDir);
    addObliqueLookUps(userDir);
    addCatalogueMemory(userDir);
    addSystemMemory(userDir);
}

} // namespace comparison
