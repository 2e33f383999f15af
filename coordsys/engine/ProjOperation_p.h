#pragma once

#include <coordsys/ProjEngine.h>

#include <QPointF>

#include <proj.h>

#include <cmath>
#include <cstddef>
#include <memory>

namespace nivora::cs {

struct TransformOperation;

inline bool isFinite(const QPointF &point) { return std::isfinite(point.x()) && std::isfinite(point.y()); }

/// A degree as PROJ's conversion of units has it.
constexpr double engineRadiansPerDegree = 0.017453292519943296;

/// One end of an engine's object, seen from this library, whose angles are degrees. Longitudes count from
/// Greenwich here and from meridianDeg there.
struct CoordinateUnits
{
    /// Whether the end does what a step between degrees and radians does in PROJ, to the bit.
    enum class Stands { ForNothing, ForFirstStep, ForLastStep };

    double toEngine = 1.0; ///< factor on both coordinates on the way into the engine
    double fromEngine = 1.0;
    double meridianDeg = 0.0;
    Stands stands = Stands::ForNothing;

    static CoordinateUnits radians();
    /// An axis whose unit is so many radians long; a length counts as a degree's.
    static CoordinateUnits ofUnit(double radiansPerUnit);

    bool isPlain() const { return toEngine == 1.0 && fromEngine == 1.0 && meridianDeg == 0.0; }
    void enter(double &x, double &y) const
    {
        x -= meridianDeg;
        if (stands == Stands::ForLastStep)
            return enterLastStep(x, y);
        x *= toEngine;
        y *= toEngine;
    }
    void leave(double &x, double &y) const
    {
        const bool divides = stands == Stands::ForFirstStep;
        x = divides ? x / toEngine : x * fromEngine;
        y = divides ? y / toEngine : y * fromEngine;
        if (meridianDeg != 0.0)
            x = fromOwnMeridian(x);
    }

private:
    void enterLastStep(double &x, double &y) const;
    double fromOwnMeridian(double x) const;
};

/// A PROJ object and what its ends speak: index 0 for forward, 1 for inverse.
struct ProjOperation
{
    std::shared_ptr<PJ> pj; ///< null for no step
    CoordinateUnits in[2];
    CoordinateUnits out[2];
    bool isInverse = false;                           ///< the object goes from target to source
    std::shared_ptr<const TransformOperation> single; ///< what it is; null where PROJ chooses by place

    ProjOperation() = default;
    /// Radians as the object itself says. Takes the PROJ lock.
    explicit ProjOperation(std::shared_ptr<PJ> object);
    explicit operator bool() const { return pj != nullptr; }

    /// The same step by another object that was cloned from this one's.
    ProjOperation withObject(std::shared_ptr<PJ> object) const;
    /// What the object calls a direction of the step.
    PJ_DIRECTION objectDirection(int direction) const
    {
        return static_cast<PJ_DIRECTION>(isInverse ? -direction : direction);
    }
    /// Both directions of one end: \p source is where forward comes from.
    void setEnds(const CoordinateUnits &source, const CoordinateUnits &target);
};

/// A PROJ object's index into ProjOperation::in and out.
inline int sideOf(int direction) { return direction == PJ_FWD ? 0 : 1; }

/// x and y of points that lie strideInDoubles apart in memory.
struct PointSpan
{
    double *x;
    double *y;
    std::size_t count;
    std::size_t strideInDoubles;
};
PointSpan spanOf(QPointF *points, std::size_t count);
PointSpan spanOf(PJ_COORD *points, std::size_t count);

/// A point through a step, a failed one as PROJ marks it. Alone it costs a third less than as the smallest of
/// arrays. Inline, since a call counts here. Else as transformSpan().
inline void transformOne(const ProjOperation &step, int direction, double &x, double &y, double time)
{
    const int side = sideOf(direction);
    step.in[side].enter(x, y);
    const PJ_COORD c =
        proj_trans(step.pj.get(), step.objectDirection(direction), proj_coord(x, y, 0.0, time));
    x = c.xy.x;
    y = c.xy.y;
    step.out[side].leave(x, y);
}

/// Points through a step in place, failed ones as PROJ marks them. \p time is the coordinates' epoch in
/// decimal years, HUGE_VAL for none. Needs the lock of the step's context.
void transformSpan(const ProjOperation &step, int direction, const PointSpan &points, double time);

/// Points through a step in place; false, \p points spoilt, when a result is not finite: a list fails exactly
/// when one of its points alone would. The engine's error number decides nothing, since an operation that
/// was tried first may have left it. \p time is the coordinates' epoch in decimal years, HUGE_VAL for none.
/// Needs the lock of the step's context.
bool transformPoints(const ProjOperation &step, int direction, QPointF *points, std::size_t count,
                     double time = HUGE_VAL);

/// The same for one point.
inline bool transformPoint(const ProjOperation &step, int direction, QPointF &point, double time = HUGE_VAL)
{
    transformOne(step, direction, point.rx(), point.ry(), time);
    return isFinite(point);
}

/// What a transformation made for a CRS speaks at that end: its degrees, grads, radians or lengths. Needs the
/// PROJ lock.
CoordinateUnits endOf(const PJ *crs);

} // namespace nivora::cs
