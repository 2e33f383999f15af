#include <coordsys/TransformStrategies_p.h>

#include <coordsys/ProjEngine.h>

#include <QMutexLocker>
#include <QObject>

#include <algorithm>
#include <utility>

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

OrderedSteps::OrderedSteps(const TransformQueue &queue, int way)
    : first(&queue.first)
    , second(queue.second ? &queue.second : nullptr)
    , direction(way)
{
    if (second && direction != PJ_FWD)
        std::swap(first, second);
}

PJ_COORD transformed(const OrderedSteps &steps, PJ_COORD point)
{
    point = transformed(*steps.first, steps.direction, point);
    return steps.second ? transformed(*steps.second, steps.direction, point) : point;
}

bool transformPoints(const TransformQueue *queue, int direction, QPointF *points, std::size_t count,
                     double time)
{
    if (!queue)
        return std::all_of(points, points + count, isFinite);
    const OrderedSteps steps(*queue, direction);
    const QMutexLocker lock(globalProj4Mutex());
    if (transformPoints(*steps.first, direction, points, count, time) &&
        (!steps.second || transformPoints(*steps.second, direction, points, count, time)))
        return true;
    reportFailure(direction); // PROJ's text stands in memory that the lock guards
    reportIncorrect(points, count);
    return false;
}

bool TransformInternalCommon::transform(const QVector<QPointF> &in, QVector<QPointF> &out)
{
    QVector<QPointF> result = in;
    if (!transformPoints(queue, direction, result.data(), static_cast<std::size_t>(result.size()), time))
        return false;
    out = result;
    return true;
}

} // namespace nivora::cs
