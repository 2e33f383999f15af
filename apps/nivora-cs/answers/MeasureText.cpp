#include "MeasureText.h"

#include "Output.h"

#include <coordsys/Measures.h>

#include <QObject>
#include <QStringList>

#include <cmath>

using namespace nivora::cs;

QPointF pointOf(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    bool isX = false;
    bool isY = false;
    const QPointF point(parts.value(0).toDouble(&isX), parts.value(1).toDouble(&isY));
    if (parts.size() != 2 || !isX || !isY || !std::isfinite(point.x()) || !std::isfinite(point.y()))
        throw Failure(QObject::tr("\"%1\" is no X,Y").arg(text));
    return point;
}

double PlaneAt::gridNorthDeg() const
{
    const double turn = factors ? std::fmod(factors->convergenceDeg, 360.0) : 0.0;
    return turn < 0.0 ? turn + 360.0 : turn;
}

PlaneAt planeAt(const CoordSystemPtr &system, const QPointF &point)
{
    const Measures measures(system);
    const auto lonLat = measures.lonLat(point);
    if (!lonLat)
        throw Failure(QObject::tr("the point has no place on the earth"));
    return {*lonLat, measures.factorsAt(point)};
}

QString placeAndFactorsText(const CoordSystemPtr &system, const QPointF &point)
{
    const PlaneAt plane = planeAt(system, point);
    const auto number = [](double value) { return QString::number(value, 'f', 9); };
    const auto perMillion = [](double scale) { return QString::number((scale - 1.0) * 1e6, 'f', 2); };
    QString text = QObject::tr("Longitude: %1°\nLatitude: %2°\n")
                       .arg(number(plane.lonLat.x()), number(plane.lonLat.y()));
    if (!plane.factors)
        return text + QObject::tr("No scale factors: not a projection, or none that is known there\n");
    const PlaneFactors &f = *plane.factors;
    return text +
           QObject::tr("Scale along the meridian: %1\nScale along the parallel: %2\nAreal scale: %3\n"
                       "Meridian convergence: %4°\nAngular distortion: %5°\n")
               .arg(number(f.meridianScale), number(f.parallelScale), number(f.arealScale),
                    number(f.convergenceDeg), number(f.angularDistortionDeg)) +
           QObject::tr("Off the true length: %1 ppm along the meridian, %2 ppm along the parallel\n"
                       "Azimuth of grid north: %3°\n")
               .arg(perMillion(f.meridianScale), perMillion(f.parallelScale), number(plane.gridNorthDeg()));
}
