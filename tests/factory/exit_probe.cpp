// Ends the process with a default factory installed and objects of every kind alive in the library's caches.

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>

#include <QCoreApplication>
#include <QTemporaryDir>

using namespace nivora::cs;

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    const QTemporaryDir userDir;
    const auto factory = std::make_shared<CoordSysFactory>(QStringLiteral(NIVORA_TEST_RESOURCES),
                                                           userDir.path(), QStringLiteral("en"));
    if (!factory->initCoordSystemEnvironment())
        return 2;
    CoordSysFactory::setDefaultCoordSysFactory(factory);
    const CoordSystemPtr plan = factory->createNonEarth(7, QRectF());
    const CoordSystemPtr grid =
        factory->createWithoutDescription(QStringLiteral("Earth Projection 8, 28, 7, 3, 0, 1, 0, 0"));
    const CoordTransform mixed(plan, grid);
    QPointF out;
    return mixed.forward(QPointF(3e5, 5e6), out) && grid->needCropCoords() == false ? 0 : 3;
}
