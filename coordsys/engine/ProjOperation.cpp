#include "ProjOperation_p.h"

#include "CrsParts_p.h"
#include "PatchedProj_p.h"

#include <QMutexLocker>

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

/// Points between two looks at the results; few enough to stay in the processor's cache.
constexpr std::size_t blockSize = 1024;

/// As PROJ's own adjlon(); it leaves a longitude alone that oversteps the date line by a hair.
double insideCircle(double lonRad)
{
    constexpr double turn = 2.0 * M_PI;
    if (std::fabs(lonRad) < M_PI + 1e-12)
        return lonRad;
    const double fromDateLine = lonRad + M_PI;
    return fromDateLine - turn * std::floor(fromDateLine / turn) - M_PI;
}

template <typename Move> void forEach(const PointSpan &points, Move &&move)
{
    const std::size_t end = points.count * points.strideInDoubles;
    for (std::size_t i = 0; i < end; i += points.strideInDoubles)
        move(points.x[i], points.y[i]);
}

void transformMany(const ProjOperation &step, int direction, const PointSpan &points, double time)
{
    double height = 0.0;
    const std::size_t strideBytes = points.strideInDoubles * sizeof(double);
    proj_trans_generic(step.pj.get(), step.objectDirection(direction), points.x, strideBytes, points.count,
                       points.y, strideBytes, points.count, &height, 0, 1, &time, 0, 1);
}

} // namespace

CoordinateUnits CoordinateUnits::radians()
{
    CoordinateUnits end;
    end.toEngine = proj_torad(1.0);
    end.fromEngine = proj_todeg(1.0);
    return end;
}

CoordinateUnits CoordinateUnits::ofUnit(double radiansPerUnit)
{
    constexpr double degree = engineRadiansPerDegree;
    CoordinateUnits end;
    if (std::fabs(radiansPerUnit - degree) <= 1e-12 * degree)
        return end;
    end.toEngine = degree / radiansPerUnit;
    end.fromEngine = radiansPerUnit / degree;
    return end;
}

/// PROJ multiplies on the way forward and divides by the same factor on the way back, where its last step
/// turns longitudes into the circle, too.
void CoordinateUnits::enterLastStep(double &x, double &y) const
{
    x = insideCircle(x / fromEngine);
    y /= fromEngine;
}

double CoordinateUnits::fromOwnMeridian(double x) const
{
    const double lon = x + meridianDeg;
    return std::fabs(lon) > 180.0 ? std::remainder(lon, 360.0) : lon;
}

ProjOperation::ProjOperation(std::shared_ptr<PJ> object)
    : pj(std::move(object))
{
    if (!pj)
        return;
    const QMutexLocker lock(globalProj4Mutex());
    for (const int direction : {PJ_FWD, PJ_INV}) {
        const int side = sideOf(direction);
        if (takesRadians(pj.get(), direction))
            in[side] = CoordinateUnits::radians();
        if (givesRadians(pj.get(), direction))
            out[side] = CoordinateUnits::radians();
    }
}

ProjOperation ProjOperation::withObject(std::shared_ptr<PJ> object) const
{
    ProjOperation other = *this;
    other.pj = std::move(object);
    return other;
}

void ProjOperation::setEnds(const CoordinateUnits &source, const CoordinateUnits &target)
{
    in[0] = out[1] = source;
    out[0] = in[1] = target;
}

PointSpan spanOf(QPointF *points, std::size_t count) { return {&points->rx(), &points->ry(), count, 2}; }

PointSpan spanOf(PJ_COORD *points, std::size_t count) { return {points->v, points->v + 1, count, 4}; }

void transformSpan(const ProjOperation &step, int direction, const PointSpan &points, double time)
{
    if (points.count == 1)
        return transformOne(step, direction, *points.x, *points.y, time);
    const CoordinateUnits &in = step.in[sideOf(direction)];
    const CoordinateUnits &out = step.out[sideOf(direction)];
    if (!in.isPlain())
        forEach(points, [&in](double &x, double &y) { in.enter(x, y); });
    transformMany(step, direction, points, time);
    if (!out.isPlain())
        forEach(points, [&out](double &x, double &y) { out.leave(x, y); });
}

bool transformPoints(const ProjOperation &step, int direction, QPointF *points, std::size_t count,
                     double time)
{
    for (std::size_t done = 0; done < count; done += blockSize) {
        const std::size_t size = std::min(blockSize, count - done);
        transformSpan(step, direction, spanOf(points + done, size), time);
        if (!std::all_of(points + done, points + done + size, isFinite))
            return false;
    }
    return true;
}

CoordinateUnits endOf(const PJ *crs)
{
    const CrsKind kind = kindOf(globalProjContext(), crs);
    if (kind != CrsKind::Geographic && kind != CrsKind::RotatedGeographic)
        return {};
    const bool isCompound = proj_get_type(crs) == PJ_TYPE_COMPOUND_CRS; // whose own axes PROJ does not tell
    const PjHandle plane = isCompound ? horizontalPart(globalProjContext(), crs) : nullptr;
    return CoordinateUnits::ofUnit(axisFactor(globalProjContext(), plane ? plane.get() : crs));
}

} // namespace nivora::cs
