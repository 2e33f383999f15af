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

/// Every point through one array call per step; one bad point fails the list.
class TransformInternalCommon : public TransformInternalBase
{
public:
    bool transform(const QVector<QPointF> &in, QVector<QPointF> &out) override;
};

/// The steps of TransformInternalCommon for one point, without a list; \p queue may be null, which changes
/// nothing. \p point is written on success.
bool transformSinglePoint(const TransformQueue *queue, int direction, QPointF &point);

/// The steps of a queue in the order of a direction.
struct OrderedSteps
{
    OrderedSteps(const TransformQueue &queue, int direction);
    const TransformStep *first;
    const TransformStep *second; ///< null for one step
    int side;                    ///< index into TransformStep::radiansIn and radiansOut
};

/// One point through the steps, a failed one as PROJ marks it. Needs the PROJ lock.
PJ_COORD transformed(const OrderedSteps &steps, int direction, PJ_COORD point);

} // namespace nivora::cs
