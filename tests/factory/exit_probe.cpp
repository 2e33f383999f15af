// Ends the process in one of the ways in which hosts end: with objects of every kind alive in the library's
// caches and in the host's own statics, by return or exit(), with threads at work.

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/MapinfoCoordSystem.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <thread>

using namespace nivora::cs;

namespace {

CoordSystemPtr keptSystem; // made before anything of the library, so they die after all of it
std::unique_ptr<CoordTransform> keptTransform;
std::shared_ptr<CoordSysFactory> keptFactory;

/// Dies after the library's function-local statics and still works with its systems.
struct LastUser
{
    ~LastUser()
    {
        QPointF out;
        if (keptTransform && !(keptTransform->forward(QPointF(3e5, 5e6), out) && out.y() > 40))
            std::abort();
    }
} lastUser;

std::shared_ptr<CoordSysFactory> startedFactory()
{
    const QTemporaryDir userDir;
    auto factory = std::make_shared<CoordSysFactory>(QStringLiteral(NIVORA_TEST_RESOURCES), userDir.path(),
                                                     QStringLiteral("en"));
    if (!factory->initCoordSystemEnvironment())
        std::_Exit(2);
    CoordSysFactory::setDefaultCoordSysFactory(factory);
    return factory;
}

void convertForEver(const CoordTransform &transform, std::atomic<int> &started)
{
    for (int i = 0;; ++i) {
        QPointF out;
        transform.forward(QPointF(3e5 + i % 1000, 5e6), out);
        if (i == 0)
            ++started;
    }
}

void convertInThreads(const CoordSystemPtr &from, const CoordSystemPtr &to)
{
    const CoordTransform &transform = *new CoordTransform(from, to); // the threads never end
    static std::atomic<int> started{0};
    for (int i = 0; i < 4; ++i)
        std::thread(convertForEver, std::cref(transform), std::ref(started)).detach();
    while (started < 4)
        std::this_thread::yield();
}

} // namespace

int main(int argc, char **argv)
{
    const char *way = argc > 1 ? argv[1] : "caches";
    const auto is = [way](const char *name) { return std::strcmp(way, name) == 0; };
    const QCoreApplication app(argc, argv);
    const auto factory = startedFactory();
    const CoordSystemPtr plan = factory->createNonEarth(7, QRectF());
    const CoordSystemPtr grid =
        factory->createWithoutDescription(QStringLiteral("Earth Projection 8, 28, 7, 3, 0, 1, 0, 0"));
    const CoordTransform mixed(plan, grid);
    QPointF out;
    if (!mixed.forward(QPointF(3e5, 5e6), out) || grid->needCropCoords())
        return 3;
    if (is("statics") || is("threads")) {
        keptSystem = grid;
        keptTransform = std::make_unique<CoordTransform>(grid, factory->latLongWgs84CoordSystem());
        keptFactory = factory;
    }
    if (is("threads"))
        convertInThreads(grid, factory->latLongWgs84CoordSystem());
    if (is("fill") || is("fill-return") || is("threads")) {
        factory->mapinfoCoordSystem()->initInternalCache();
        std::this_thread::sleep_for(std::chrono::milliseconds(argc > 2 ? std::atoi(argv[2]) : 20));
    }
    if (is("fill") || is("threads"))
        std::exit(0);
    return 0;
}
