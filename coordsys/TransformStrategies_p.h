#pragma once

#include <coordsys/CoordTransformCache_p.h>

#include <QPointF>
#include <QVector>

#include <cmath>
#include <memory>

namespace nivora::cs {

/// How a list of points goes through the engine. Made on the stack for one call, filled by
/// CoordTransform::Impl, used once.
class TransformInternalBase
{
public:
    virtual ~TransformInternalBase() = default;
    /// From the source's projection plane to the destination's. \p out is written on success.
    virtual bool transform(const QVector<QPointF> &in, QVector<QPointF> &out) = 0;

    CoordSystemPtr source;      ///< of this direction: where the points come from
    CoordSystemPtr destination; ///< where they go
    const TransformQueue *queue = nullptr;
    int direction = 1;      ///< PROJ's: 1 forward, -1 inverse
    double time = HUGE_VAL; ///< the coordinates' epoch in decimal years, HUGE_VAL for none
};

/// Every point through the steps; one bad point fails the list.
class TransformInternalCommon : public TransformInternalBase
{
public:
    bool transform(const QVector<QPointF> &in, QVector<QPointF> &out) override;
};

/// The steps of a queue in the order of a direction.
struct OrderedSteps
{
    OrderedSteps(const TransformQueue &queue, int direction);
    const EngineStep *first;
    const EngineStep *second; ///< null for one step
    int direction;
};

/// One point through the steps, a failed one as PROJ marks it. Needs the PROJ lock.
PJ_COORD transformed(const OrderedSteps &steps, PJ_COORD point);

/// Points through the steps in place, as EngineStep's transformPoints(). A null \p queue changes nothing.
/// Takes the PROJ lock once.
bool transformPoints(const TransformQueue *queue, int direction, QPointF *points, std::size_t count,
                     double time = HUGE_VAL);

} // namespace nivora::cs
