#pragma once

#include <coordsys/ProjEngine.h>

#include <QPointF>

#include <proj.h>

#include <cmath>
#include <cstddef>
#include <memory>

namespace nivora::cs {

/// One end of an engine's object, seen from this library, whose angles are degrees. Longitudes count from
/// Greenwich here and from meridianDeg there.
struct EngineEnd
{
    double toEngine = 1.0; ///< factor on both coordinates on the way into the engine
    double fromEngine = 1.0;
    double meridianDeg = 0.0;

    static EngineEnd radians();
    /// An axis whose unit is so many radians long; a length counts as a degree's.
    static EngineEnd ofUnit(double radiansPerUnit);

    bool isPlain() const { return toEngine == 1.0 && meridianDeg == 0.0; }
    void enter(double &x, double &y) const
    {
        x = (x - meridianDeg) * toEngine;
        y *= toEngine;
    }
    void leave(double &x, double &y) const;
};

/// A PROJ object and what its ends speak: index 0 for forward, 1 for inverse.
struct EngineStep
{
    std::shared_ptr<PJ> pj; ///< null for no step
    EngineEnd in[2];
    EngineEnd out[2];

    EngineStep() = default;
    /// Radians as the object itself says. Takes the PROJ lock.
    explicit EngineStep(std::shared_ptr<PJ> object);
    explicit operator bool() const { return pj != nullptr; }

    /// Both directions of one end: \p source is where forward comes from.
    void setEnds(const EngineEnd &source, const EngineEnd &target);
};

/// A PROJ object's index into EngineStep::in and out.
inline int sideOf(int direction) { return direction == PJ_FWD ? 0 : 1; }

/// One point through a step, a failed one as PROJ marks it. Needs the lock of the step's context.
PJ_COORD transformed(const EngineStep &step, int direction, PJ_COORD point);

/// Points through a step in place; false, \p points spoilt, when a result is not finite: a list fails exactly
/// when one of its points alone would. The engine's error number decides nothing, since an operation that
/// was tried first may have left it. \p time is the coordinates' epoch in decimal years, HUGE_VAL for none.
/// Needs the lock of the step's context.
bool transformPoints(const EngineStep &step, int direction, QPointF *points, std::size_t count,
                     double time = HUGE_VAL);

bool isFinite(const QPointF &point);

/// What a transformation made for a CRS speaks at that end: its degrees, grads, radians or lengths. Needs the
/// PROJ lock.
EngineEnd endOf(const PJ *crs);

} // namespace nivora::cs
