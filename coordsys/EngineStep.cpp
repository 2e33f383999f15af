#include <coordsys/EngineStep_p.h>

#include <coordsys/CrsParts_p.h>
#include <coordsys/PatchedProj_p.h>

#include <QMutexLocker>

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

constexpr double radiansPerDegree = 0.017453292519943295;
/// Points between two looks at the results; few enough to stay in the processor's cache.
constexpr std::size_t blockSize = 1024;

template <typename Move> void forEach(const PointSpan &points, Move &&move)
{
    const std::size_t end = points.count * points.strideInDoubles;
    for (std::size_t i = 0; i < end; i += points.strideInDoubles)
        move(points.x[i], points.y[i]);
}

/// One by one costs a third less than the engine's way for arrays, of which this is the smallest.
void transformOne(const EngineStep &step, PJ_DIRECTION direction, const PointSpan &point, double time)
{
    const PJ_COORD c = proj_trans(step.pj.get(), direction, proj_coord(*point.x, *point.y, 0.0, time));
    *point.x = c.xy.x;
    *point.y = c.xy.y;
}

void transformMany(const EngineStep &step, PJ_DIRECTION direction, const PointSpan &points, double time)
{
    double height = 0.0;
    const std::size_t strideBytes = points.strideInDoubles * sizeof(double);
    proj_trans_generic(step.pj.get(), direction, points.x, strideBytes, points.count, points.y, strideBytes,
                       points.count, &height, 0, 1, &time, 0, 1);
}

} // namespace

EngineEnd EngineEnd::radians() { return {proj_torad(1.0), proj_todeg(1.0), 0.0}; }

EngineEnd EngineEnd::ofUnit(double radiansPerUnit)
{
    if (std::fabs(radiansPerUnit - radiansPerDegree) <= 1e-12 * radiansPerDegree)
        return {};
    return {radiansPerDegree / radiansPerUnit, radiansPerUnit / radiansPerDegree, 0.0};
}

void EngineEnd::leave(double &x, double &y) const
{
    x *= fromEngine;
    y *= fromEngine;
    if (meridianDeg == 0.0)
        return;
    x += meridianDeg;
    if (std::fabs(x) > 180.0)
        x = std::remainder(x, 360.0);
}

EngineStep::EngineStep(std::shared_ptr<PJ> object)
    : pj(std::move(object))
{
    if (!pj)
        return;
    const QMutexLocker lock(globalProj4Mutex());
    for (const int direction : {PJ_FWD, PJ_INV}) {
        const int side = sideOf(direction);
        if (takesRadians(pj.get(), direction))
            in[side] = EngineEnd::radians();
        if (givesRadians(pj.get(), direction))
            out[side] = EngineEnd::radians();
    }
}

EngineStep EngineStep::withObject(std::shared_ptr<PJ> object) const
{
    EngineStep other = *this;
    other.pj = std::move(object);
    return other;
}

void EngineStep::setEnds(const EngineEnd &source, const EngineEnd &target)
{
    in[0] = out[1] = source;
    out[0] = in[1] = target;
}

PointSpan spanOf(QPointF *points, std::size_t count) { return {&points->rx(), &points->ry(), count, 2}; }

PointSpan spanOf(PJ_COORD *points, std::size_t count) { return {points->v, points->v + 1, count, 4}; }

void transformSpan(const EngineStep &step, int direction, const PointSpan &points, double time)
{
    const EngineEnd &in = step.in[sideOf(direction)];
    const EngineEnd &out = step.out[sideOf(direction)];
    if (!in.isPlain())
        forEach(points, [&in](double &x, double &y) { in.enter(x, y); });
    const auto run = points.count == 1 ? transformOne : transformMany;
    run(step, static_cast<PJ_DIRECTION>(direction), points, time);
    if (!out.isPlain())
        forEach(points, [&out](double &x, double &y) { out.leave(x, y); });
}

bool transformPoints(const EngineStep &step, int direction, QPointF *points, std::size_t count)
{
    for (std::size_t done = 0; done < count; done += blockSize) {
        const std::size_t size = std::min(blockSize, count - done);
        transformSpan(step, direction, spanOf(points + done, size), HUGE_VAL);
        if (!std::all_of(points + done, points + done + size, isFinite))
            return false;
    }
    return true;
}

EngineEnd endOf(const PJ *crs)
{
    const CrsKind kind = kindOf(globalProjContext(), crs);
    if (kind != CrsKind::Geographic && kind != CrsKind::RotatedGeographic)
        return {};
    return EngineEnd::ofUnit(axisFactor(globalProjContext(), crs));
}

} // namespace nivora::cs
