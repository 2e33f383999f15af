#pragma once

#include <coordsys/CoordTransformCache_p.h>

#include <QPointF>
#include <QVector>

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
    int direction = 1; ///< PROJ's: 1 forward, -1 inverse
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

/// Points through the steps in place, as EngineStep's transformPoints(). A null \p queue changes nothing.
/// Takes the PROJ lock once.
bool transformPoints(const TransformQueue *queue, int direction, QPointF *points, std::size_t count);

} // namespace nivora::cs
