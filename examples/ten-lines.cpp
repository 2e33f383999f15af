#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordTransform.h>

#include <QCoreApplication>
#include <QStandardPaths>
#include <QTextStream>

using namespace nivora::cs;

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv); // first: it sets the locale that the next lines correct
    const QString resources = app.arguments().value(1, QStringLiteral("/usr/local/share/nivora-cs"));
    const QString ownSystems = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    const auto factory = std::make_shared<CoordSysFactory>(resources, ownSystems, QStringLiteral("en"));
    if (!factory->initCoordSystemEnvironment())
        return 1;
    CoordSysFactory::setDefaultCoordSysFactory(factory);

    const CoordSystemPtr pulkovo =
        factory->createFromPrj(QStringLiteral("CoordSys Earth Projection 1, 1001"));
    const CoordTransform toZone37(pulkovo, factory->createFromEpsg(32637));
    QPointF moscow;
    if (!toZone37.forward(QPointF(37.6173, 55.7558), moscow)) // longitude first
        return 1;
    QTextStream(stdout) << QString::number(moscow.x(), 'f', 2) << ' ' << QString::number(moscow.y(), 'f', 2)
                        << '\n';
}
