#include <coordsys/TransformStrategies_p.h>

#include <coordsys/ProjEngine.h>
#include <coordsys/ProjPoint_p.h>

#include <proj.h>

#include <QMutexLocker>
#include <QObject>
#include <QVarLengthArray>

#include <algorithm>

namespace nivora::cs {
namespace {

using PointBuffer = QVarLengthArray<PJ_COORD, 256>; // small lists on the stack, a million points on the heap

using Conversion = double (*)(double);

void convert(PJ_COORD &point, Conversion conversion)
{
    point.v[0] = conversion(point.v[0]);
    point.v[1] = conversion(point.v[1]);
}

void convertIf(bool condition, PointBuffer &points, Conversion conversion)
{
    if (condition)
        for (PJ_COORD &point : points)
            convert(point, conversion);
}

int transArray(const TransformStep &step, int direction, PointBuffer &points)
{
    return proj_trans_array(step.pj.get(), static_cast<PJ_DIRECTION>(direction),
                            static_cast<std::size_t>(points.size()), points.data());
}

/// All points through all steps; PROJ's error number, 0 for success.
int transAll(const OrderedSteps &steps, int direction, PointBuffer &points)
{
    const QMutexLocker lock(globalProj4Mutex());
    convertIf(steps.first->radiansIn[steps.side], points, proj_torad);
    int error = transArray(*steps.first, direction, points);
    const TransformStep *last = steps.first;
    if (steps.second) {
        convertIf(steps.second->radiansIn[steps.side], points, proj_torad);
        convertIf(steps.first->radiansOut[steps.side], points, proj_todeg);
        if (error == 0)
            error = transArray(*steps.second, direction, points);
        last = steps.second;
    }
    convertIf(last->radiansOut[steps.side], points, proj_todeg);
    return error;
}

void reportFailure(int direction, int error)
{
    const QString way = direction == PJ_FWD ? QObject::tr("прямого") : QObject::tr("обратного");
    logTransformError(
        QObject::tr("Ошибка %1 преобразования: %2").arg(way, QString::fromUtf8(proj_errno_string(error))));
}

void reportIncorrect(int index, const PJ_COORD &point)
{
    logTransformError(QObject::tr("Преобразование координат не произведено. %2 (%3 %4)")
                          .arg(QString::number(index), QString::number(point.v[0], 'g', -1),
                               QString::number(point.v[1], 'g', -1)));
}

} // namespace

OrderedSteps::OrderedSteps(const TransformQueue &queue, int direction)
    : first(&queue.first)
    , second(queue.second ? &queue.second : nullptr)
    , side(direction == PJ_FWD ? 0 : 1)
{
    if (second && direction != PJ_FWD)
        std::swap(first, second);
}

PJ_COORD transformed(const OrderedSteps &steps, int direction, PJ_COORD point)
{
    const auto way = static_cast<PJ_DIRECTION>(direction);
    if (steps.first->radiansIn[steps.side])
        convert(point, proj_torad);
    point = proj_trans(steps.first->pj.get(), way, point);
    bool radiansOut = steps.first->radiansOut[steps.side];
    if (steps.second) {
        if (steps.second->radiansIn[steps.side])
            convert(point, proj_torad);
        if (radiansOut)
            convert(point, proj_todeg);
        point = proj_trans(steps.second->pj.get(), way, point);
        radiansOut = steps.second->radiansOut[steps.side];
    }
    if (radiansOut)
        convert(point, proj_todeg);
    return point;
}

bool TransformInternalCommon::transform(const QVector<QPointF> &in, QVector<QPointF> &out)
{
    if (!queue) {
        out = in;
        return true;
    }
    PointBuffer points(in.size());
    std::transform(in.begin(), in.end(), points.begin(),
                   [](const QPointF &p) { return projPoint(p.x(), p.y()); });
    const int error = transAll(OrderedSteps(*queue, direction), direction, points);
    if (error != 0) {
        reportFailure(direction, error);
        return false;
    }
    const auto bad = std::find_if(points.begin(), points.end(), isIncorrect);
    if (bad != points.end()) {
        reportIncorrect(static_cast<int>(bad - points.begin()), *bad);
        return false;
    }
    QVector<QPointF> result(in.size());
    std::transform(points.begin(), points.end(), result.begin(),
                   [](const PJ_COORD &c) { return QPointF(c.xy.x, c.xy.y); });
    out = result;
    return true;
}

bool transformSinglePoint(const TransformQueue *queue, int direction, QPointF &point)
{
    if (!queue)
        return true;
    PJ_COORD c = projPoint(point.x(), point.y());
    {
        const QMutexLocker lock(globalProj4Mutex());
        c = transformed(OrderedSteps(*queue, direction), direction, c);
    }
    if (isIncorrect(c)) {
        reportIncorrect(0, c);
        return false;
    }
    point = QPointF(c.xy.x, c.xy.y);
    return true;
}

} // namespace nivora::cs
