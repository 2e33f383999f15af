// Adds columns x and y in UTM zone 37 to a CSV file whose first two columns are longitude and latitude.

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordTransform.h>

#include <QCoreApplication>
#include <QFile>

#include <iostream>

using namespace nivora::cs;

namespace {

QString nextLine(QFile &file)
{
    QByteArray line = file.readLine();
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    return QString::fromUtf8(line);
}

/// The point of a line; false when its first two columns are no numbers.
bool readPoint(const QString &line, QPointF &point)
{
    const QStringList columns = line.split(QLatin1Char(','));
    bool isX = false;
    bool isY = false;
    point.setX(columns.value(0).toDouble(&isX));
    point.setY(columns.value(1).toDouble(&isY));
    return isX && isY;
}

/// "x,y" with centimetres; empty columns where there is no place in the plane.
QString converted(const CoordTransform &transform, const QString &line)
{
    QPointF lonLat;
    QPointF planar;
    if (!readPoint(line, lonLat) || !transform.forward(lonLat, planar))
        return QStringLiteral(",");
    return QString::number(planar.x(), 'f', 2) + QLatin1Char(',') + QString::number(planar.y(), 'f', 2);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    const auto factory =
        std::make_shared<CoordSysFactory>(arguments.value(1), QString(), QStringLiteral("en"));
    QFile file(arguments.value(2));
    if (!factory->initCoordSystemEnvironment() || !file.open(QIODevice::ReadOnly))
        return 1;
    CoordSysFactory::setDefaultCoordSysFactory(factory);
    const CoordTransform toUtm(factory->createFromEpsg(4326), factory->createFromEpsg(32637));

    std::cout << nextLine(file).toStdString() << ",x,y\n";
    while (!file.atEnd()) {
        const QString line = nextLine(file);
        std::cout << line.toStdString() << ',' << converted(toUtm, line).toStdString() << '\n';
    }
}
