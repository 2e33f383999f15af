// Uses the installed library the way a stranger would: catalogues from the installed directory, a
// transformation, and an exception of the library's own class caught on this side.

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/ProjEngine.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cmath>
#include <cstdio>

using namespace nivora::cs;

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QTemporaryDir userDir;
    const auto factory =
        std::make_shared<CoordSysFactory>(QStringLiteral(RESOURCES), userDir.path(), QStringLiteral("en"));
    if (!factory->initCoordSystemEnvironment())
        return 1;
    CoordSysFactory::setDefaultCoordSysFactory(factory);

    // On the central meridian of zone 37 the easting is 500 km by definition, on the equator the northing is
    // 0.
    const CoordTransform transform(factory->createFromEpsg(4326), factory->createFromEpsg(32637));
    QPointF out(-1.0, -1.0);
    if (!transform.forward(QPointF(39.0, 0.0), out) || std::fabs(out.x() - 500000.0) > 1e-3 ||
        std::fabs(out.y()) > 1e-3) {
        std::fprintf(stderr, "zone 37 gives %.4f %.4f\n", out.x(), out.y());
        return 2;
    }
    try {
        factory->createFromEpsg(1);
        std::fprintf(stderr, "EPSG 1 is accepted\n");
        return 3;
    } catch (const ProjException &) {
        std::puts("ok");
    }
    return 0;
}
