// A million points on all cores, a few of them off the earth: those fail alone.

#include <coordsys/BulkTransform.h>
#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordTransform.h>

#include <QCoreApplication>
#include <QTextStream>
#include <QVector>

using namespace nivora::cs;

namespace {

/// Longitudes and latitudes of a grid over the zone; every hundred-thousandth latitude is no latitude.
QVector<QPointF> places()
{
    QVector<QPointF> points(1000000);
    for (int i = 0; i < points.size(); ++i)
        points[i] = QPointF(36.0 + i % 1000 * 0.006, i % 100000 == 0 ? 1e6 : 40.0 + i / 1000 * 0.03);
    return points;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    const auto factory =
        std::make_shared<CoordSysFactory>(app.arguments().value(1), QString(), QStringLiteral("en"));
    if (!factory->initCoordSystemEnvironment())
        return 1;
    CoordSysFactory::setDefaultCoordSysFactory(factory);

    const BulkTransform toUtm(CoordTransform(factory->createFromEpsg(4326), factory->createFromEpsg(32637)));
    QVector<QPointF> points = places();
    const BulkResult result = toUtm.forward(points, points); // in place; threads: as many as the pool has
    QTextStream out(stdout);
    out << points.size() << " points, " << result.failed.size() << " failed\n";
    out << "the last one: " << QString::number(points.last().x(), 'f', 3) << ' '
        << QString::number(points.last().y(), 'f', 3) << '\n';
}
