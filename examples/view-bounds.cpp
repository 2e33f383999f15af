// What longitudes and latitudes a map window shows that lies across the 180th meridian.

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/GeographicBounds.h>

#include <QCoreApplication>
#include <QTextStream>

using namespace nivora::cs;

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    const auto factory =
        std::make_shared<CoordSysFactory>(app.arguments().value(1), QString(), QStringLiteral("en"));
    if (!factory->initCoordSystemEnvironment())
        return 1;
    CoordSysFactory::setDefaultCoordSysFactory(factory);

    // A thousand kilometres of the Bering Sea, in a plane around the north pole.
    const CoordTransform transform(factory->createFromEpsg(3571), factory->createFromEpsg(4326));
    const QRectF view(-500000.0, -3500000.0, 1000000.0, 1000000.0);
    GeographicBounds bounds;
    if (!transform.geographicBounds(view, bounds))
        return 1;

    QTextStream out(stdout);
    out.setRealNumberNotation(QTextStream::FixedNotation);
    out.setRealNumberPrecision(1);
    out << "from " << bounds.west << " to " << bounds.east << ", " << bounds.south << " to " << bounds.north
        << (bounds.crossesAntimeridian() ? ", across the 180th meridian\n" : "\n");
    for (const QRectF &part : bounds.rects()) // what a query of a database without that meridian takes
        out << "part: " << part.left() << " to " << part.right() << '\n';
}
