#include "TransformStrategies_p.h"

#include <coordsys/ProjEngine.h>

#include <QMutexLocker>
#include <QObject>

#include <algorithm>

namespace nivora::cs {
namespace {

void reportFailure(int direction)
{
    const QString way = direction == PJ_FWD ? QObject::tr("прямого") : QObject::tr("обратного");
    logTransformError(QObject::tr("Ошибка %1 преобразования: %2").arg(way, projLastError()));
}

void reportIncorrect(const QPointF *points, std::size_t count)
{
    const QPointF *bad = std::find_if_not(points, points + count, isFinite);
    if (bad == points + count)
        return;
    logTransformError(QObject::tr("Преобразование координат не произведено. %2 (%3 %4)")
                          .arg(QString::number(bad - points), QString::number(bad->x(), 'g', -1),
                               QString::number(bad->y(), 'g', -1)));
}

} // namespace

bool transformPoints(const TransformQueue &queue, int direction, QPointF *points, std::size_t count,
                     double time)
{
    const OrderedSteps steps(queue, direction);
    const QMutexLocker lock(globalProj4Mutex());
    if (transformPoints(*steps.first, direction, points, count, time) &&
        (!steps.second || transformPoints(*steps.second, direction, points, count, time)))
        return true;
    reportFailure(direction); // PROJ's text stands in memory that the lock guards
    reportIncorrect(points, count);
    return false;
}

bool transformPoint(const TransformQueue &queue, int direction, QPointF &point, double time)
{
    const OrderedSteps steps(queue, direction);
    const QMutexLocker lock(globalProj4Mutex());
    if (transformPoint(*steps.first, direction, point, time) &&
        (!steps.second || transformPoint(*steps.second, direction, point, time)))
        return true;
    reportFailure(direction);
    reportIncorrect(&point, 1);
    return false;
}

} // namespace nivora::cs
