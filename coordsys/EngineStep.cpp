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

bool transformBlock(const EngineStep &step, int direction, QPointF *points, std::size_t count, double time)
{
    const int side = sideOf(direction);
    if (!step.in[side].isPlain())
        std::for_each(points, points + count,
                      [&end = step.in[side]](QPointF &p) { end.enter(p.rx(), p.ry()); });
    double height = 0.0;
    constexpr std::size_t stride = sizeof(QPointF);
    proj_trans_generic(step.pj.get(), static_cast<PJ_DIRECTION>(direction), &points->rx(), stride, count,
                       &points->ry(), stride, count, &height, 0, 1, &time, 0, 1);
    if (!step.out[side].isPlain())
        std::for_each(points, points + count,
                      [&end = step.out[side]](QPointF &p) { end.leave(p.rx(), p.ry()); });
    return std::all_of(points, points + count, isFinite);
}

} // namespace

bool isFinite(const QPointF &point) { return std::isfinite(point.x()) && std::isfinite(point.y()); }

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

void EngineStep::setEnds(const EngineEnd &source, const EngineEnd &target)
{
    in[0] = out[1] = source;
    out[0] = in[1] = target;
}

PJ_COORD transformed(const EngineStep &step, int direction, PJ_COORD point)
{
    const int side = sideOf(direction);
    if (!step.in[side].isPlain())
        step.in[side].enter(point.xy.x, point.xy.y);
    point = proj_trans(step.pj.get(), static_cast<PJ_DIRECTION>(direction), point);
    if (!step.out[side].isPlain())
        step.out[side].leave(point.xy.x, point.xy.y);
    return point;
}

bool transformPoints(const EngineStep &step, int direction, QPointF *points, std::size_t count, double time)
{
    for (std::size_t done = 0; done < count; done += blockSize)
        if (!transformBlock(step, direction, points + done, std::min(blockSize, count - done), time))
            return false;
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
