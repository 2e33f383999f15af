#include "Soak.h"

#include <coordsys/BulkTransform.h>
#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/GeographicBounds.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoSearch.h>
#include <coordsys/Measures.h>
#include <coordsys/Mgrs.h>
#include <coordsys/ShiftQuality.h>
#include <coordsys/SystemInfo.h>
#include <coordsys/UserCoordSystem.h>
#include <coordsys/UserInput.h>

#include <QTemporaryDir>

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace nivora::cs;

namespace {

using Random = std::mt19937;
using Clock = std::chrono::steady_clock;

const QPointF moscow(37.6, 55.7); // longitude, latitude

/// What all threads share: systems that others convert with, name and search at the same time.
struct Stage
{
    std::shared_ptr<CoordSysFactory> factory;
    std::vector<CoordSystemPtr> systems;
    std::unique_ptr<MapinfoSearch> search;
};

QString oneOf(Random &random, const QStringList &texts)
{
    return texts.at(static_cast<int>(random() % static_cast<std::size_t>(texts.size())));
}

const CoordSystemPtr &oneOf(Random &random, const Stage &stage)
{
    return stage.systems[random() % stage.systems.size()];
}

/// Tagged texts in each notation, with a number that makes new ones all the time.
QString newText(Random &random)
{
    const QStringList patterns = {
        QStringLiteral("prj:CoordSys Earth Projection 8, 1001, \"m\", %1, 0, 1, 500000, 0"),
        QStringLiteral("proj:+proj=tmerc +lat_0=0 +lon_0=%1 +k=1 +x_0=0 +y_0=0 +ellps=krass +units=m"),
        QStringLiteral("proj:+proj=aea +lat_1=29.5 +lat_2=45.5 +lon_0=%1 +ellps=GRS80"),
        QStringLiteral("epsg:32637"),
        QStringLiteral("epsg:3857"),
        QStringLiteral("epsg:4284")};
    const QString pattern = oneOf(random, patterns);
    return pattern.contains(QLatin1String("%1")) ? pattern.arg(random() % 170) : pattern;
}

bool create(const Stage &stage, Random &random)
{
    return stage.factory->createFromTaggedString(newText(random)) != nullptr;
}

bool thereAndBack(const Stage &stage, Random &random)
{
    const CoordTransform transform(stage.factory->latLongWgs84CoordSystem(), oneOf(random, stage));
    const QPointF place(30.0 + static_cast<double>(random() % 20), 45.0 + static_cast<double>(random() % 20));
    QPointF planar;
    QPointF back;
    constexpr double tolerance = 1e-6; // degrees: a decimetre, whatever datum lies between
    return transform.forward(place, planar) && transform.inverse(planar, back) &&
           std::hypot(back.x() - place.x(), back.y() - place.y()) < tolerance;
}

bool meshes(const Stage &stage, Random &random)
{
    const CoordTransform transform(stage.factory->latLongWgs84CoordSystem(), oneOf(random, stage));
    QRectF out;
    return transform.forwardMesh(QRectF(36, 50, 6, 6), out, 20);
}

/// On the pool that all threads share, and by this thread alone.
bool bulk(const Stage &stage, Random &random)
{
    const BulkTransform transform(
        CoordTransform(stage.factory->latLongWgs84CoordSystem(), oneOf(random, stage)));
    const QVector<QPointF> places(5000, moscow);
    QVector<QPointF> planar;
    QPointF alone;
    return transform.forward(places, planar).isComplete() && transform.forward(places.front(), alone) &&
           alone == planar.back();
}

bool bounds(const Stage &stage, Random &random)
{
    const CoordTransform toWgs84(oneOf(random, stage), stage.factory->latLongWgs84CoordSystem());
    QPointF centre;
    GeographicBounds found;
    constexpr double half = 5.0; // degrees or metres
    return toWgs84.inverse(moscow, centre) &&
           toWgs84.geographicBounds(QRectF(centre.x() - half, centre.y() - half, 2 * half, 2 * half),
                                    found) &&
           found.contains(moscow.x(), moscow.y());
}

bool tells(const Stage &stage, Random &random)
{
    const CoordSystemPtr &cs = oneOf(random, stage);
    shiftQuality(*cs);
    const CoordTransform toWgs84(cs, stage.factory->latLongWgs84CoordSystem());
    return !systemInfo(*cs).name.isEmpty() && !exportSystem(*cs, SystemFormat::Wkt2).isEmpty() &&
           (toWgs84.isEqualsCS() || !toWgs84.operations().isEmpty());
}

bool measures(const Stage &stage, Random &random)
{
    const CoordSystemPtr &cs = oneOf(random, stage);
    QVector<QPointF> line{moscow, QPointF(37.7, 55.8)};
    return CoordTransform(stage.factory->latLongWgs84CoordSystem(), cs).forward(line, line) &&
           Measures(cs).lengthM(line).has_value();
}

bool reads(const Stage &stage, Random &random)
{
    const QStringList texts = {QStringLiteral("urn:ogc:def:crs:EPSG::32637"), QStringLiteral("ESRI:102100"),
                               QStringLiteral("+proj=utm +zone=%1").arg(1 + random() % 60),
                               QStringLiteral("WGS 84 / UTM zone 37N"), QStringLiteral("EPSG:4326+5773")};
    return stage.factory->readUserInput(oneOf(random, texts)).system != nullptr;
}

bool names(const Stage &stage, Random &random)
{
    const CoordSystemPtr &cs = oneOf(random, stage);
    cs->epsg();
    cs->unit();
    cs->rectNumericCoordSys();
    return !cs->description().isEmpty() && !cs->taggedString().isEmpty();
}

bool compares(const Stage &stage, Random &random)
{
    const CoordSystemPtr &cs = oneOf(random, stage);
    return cs->isEqual(*cs, false) && stage.factory->mapinfoCoordSystem()->seekByEPSG(4326).size() > 1;
}

bool finds(const Stage &stage, Random &random)
{
    const QStringList words = {QStringLiteral("utm 37"), QStringLiteral("pulkovo"), QStringLiteral("4326")};
    return !stage.search->find(oneOf(random, words), 5).isEmpty() && !stage.search->at(moscow, 5).isEmpty();
}

bool gridReference(const Stage &stage, Random &random)
{
    Mgrs grid(stage.factory->latLongWgs84CoordSystem());
    grid.setPrecision(static_cast<int>(random() % 6));
    return grid.getMGRSString(moscow).startsWith(QLatin1String("37U"));
}

bool ownStore(const Stage &, Random &random)
{
    const QTemporaryDir dir;
    UserCoordSystem store{QDir(dir.path())};
    store.setCoordSystem(QStringLiteral("B"), {CoordSystemTypes::Epsg, QStringLiteral("32637")},
                         newText(random));
    store.saveToFile(true);
    UserCoordSystem again{QDir(dir.path())};
    again.loadFromFile(false);
    return again.data().size() == 1;
}

bool changesDefault(const Stage &stage, Random &)
{
    CoordSysFactory::setDefaultCoordSysFactory(stage.factory);
    stage.factory->setCurrentCoordSystem(stage.systems.front());
    return stage.factory->currentCoordSystem() && CoordSysFactory::defaultCoordSysFactory();
}

/// Another factory starts, is the default for a while, and its catalogues go; its systems outlive it.
bool swapsFactories(const Stage &stage, Random &random)
{
    constexpr unsigned seldom = 16; // a start costs as much as all the rest
    if (random() % seldom != 0)
        return true;
    std::shared_ptr<CoordSysFactory> own = startFactory(nullptr);
    if (!own)
        return false;
    const CoordSystemPtr cs = own->createFromTaggedString(newText(random));
    const bool isNamed = !cs->description().isEmpty();
    CoordSysFactory::setDefaultCoordSysFactory(stage.factory);
    own->clearEnvironment();
    own.reset();
    QPointF planar;
    return isNamed && cs->forward(moscow, planar) && !cs->taggedString().isEmpty();
}

struct Act
{
    const char *name;
    bool (*run)(const Stage &stage, Random &random);
};

constexpr Act acts[] = {
    {"create", create},
    {"there and back", thereAndBack},
    {"mesh", meshes},
    {"list", bulk},
    {"bounds", bounds},
    {"information", tells},
    {"measures", measures},
    {"user input", reads},
    {"names", names},
    {"comparison", compares},
    {"search", finds},
    {"grid reference", gridReference},
    {"user store", ownStore},
    {"default factory", changesDefault},
    {"swapped factories", swapsFactories},
};

void runOne(const Act &act, const Stage &stage, Random &random, std::atomic<int> &faults)
{
    std::string why = "wrong answer";
    try {
        if (act.run(stage, random))
            return;
    } catch (const std::exception &e) {
        why = e.what();
    }
    ++faults;
    std::fprintf(stderr, "%s: %s\n", act.name, why.c_str());
}

Stage stage()
{
    Stage result{startFactory(nullptr), {}, nullptr};
    for (const int code : {4326, 32637, 3857, 4284, 28407, 3575})
        result.systems.push_back(result.factory->createFromEpsg(code));
    result.systems.push_back(result.factory->createFromPrj(
        QStringLiteral("CoordSys Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0")));
    result.search = std::make_unique<MapinfoSearch>(*result.factory->mapinfoCoordSystem());
    result.factory->mapinfoCoordSystem()->initInternalCache();
    return result;
}

} // namespace

int soakThreads(int seconds)
{
    const Stage shared = stage();
    const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
    std::atomic<int> faults{0};
    std::atomic<long> done{0};
    std::vector<std::thread> threads;
    for (unsigned seed = 0; seed < 8; ++seed) {
        threads.emplace_back([&, seed] {
            Random random(seed);
            for (; Clock::now() < end; ++done)
                runOne(acts[random() % std::size(acts)], shared, random, faults);
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    std::printf("%ld acts, %d faults\n", done.load(), faults.load());
    return faults == 0 ? Right : Wrong;
}
