#include "MeasureText.h"

#include "Output.h"

#include <coordsys/Measures.h>

#include <QObject>
#include <QStringList>

#include <cmath>

using nivora::cs::CoordSystemPtr;
using nivora::cs::Measures;
using nivora::cs::PlaneFactors;

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

QString factorsText(const CoordSystemPtr &system, const QPointF &point)
{
    const auto factors = Measures(system).factorsAt(point);
    if (!factors)
        throw Failure(
            QObject::tr("no scale factors there: not a projection, or a point without a place on the earth"));
    const auto number = [](double value) { return QString::number(value, 'f', 9); };
    return QObject::tr("Scale along the meridian: %1\nScale along the parallel: %2\nAreal scale: %3\n"
                       "Meridian convergence: %4°\nAngular distortion: %5°\n")
        .arg(number(factors->meridianScale), number(factors->parallelScale), number(factors->arealScale),
             number(factors->convergenceDeg), number(factors->angularDistortionDeg));
}
