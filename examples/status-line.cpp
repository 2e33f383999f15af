// The text of a status line: the pointer's place in the map's own plane, as longitude and latitude, and as a
// military grid reference, all on WGS 84.

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/Mgrs.h>

#include <QCoreApplication>
#include <QTextStream>

using namespace nivora::cs;

namespace {

class StatusLine
{
public:
    StatusLine(const CoordSystemPtr &map, const CoordSystemPtr &wgs84)
        : m_toWgs84(map, wgs84)
        , m_grid(wgs84) // a geographic system: its points are taken as they are
    {
        m_grid.setPrecision(5); // metres
    }

    /// Empty where the map shows nothing of the earth.
    QString at(const QPointF &planar) const
    {
        QPointF lonLat;
        if (!m_toWgs84.forward(planar, lonLat))
            return {};
        return QStringLiteral("%1 %2   %3 %4   %5")
            .arg(QString::number(planar.x(), 'f', 0), QString::number(planar.y(), 'f', 0),
                 QString::number(lonLat.x(), 'f', 5), QString::number(lonLat.y(), 'f', 5),
                 m_grid.getMGRSString(lonLat));
    }

private:
    CoordTransform m_toWgs84;
    Mgrs m_grid;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    const auto factory =
        std::make_shared<CoordSysFactory>(app.arguments().value(1), QString(), QStringLiteral("en"));
    if (!factory->initCoordSystemEnvironment())
        return 1;
    CoordSysFactory::setDefaultCoordSysFactory(factory);

    const CoordSystemPtr zone7 = factory->createFromPrj(
        QStringLiteral("CoordSys Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0"));
    const StatusLine status(zone7, factory->latLongWgs84CoordSystem());
    QTextStream out(stdout);
    for (const QPointF pointer : {QPointF(7413000, 6182000), QPointF(7500000, 6000000)})
        out << status.at(pointer) << '\n';
}
