#pragma once

#include "AffineMap_p.h"
#include "CoordTransformCache_p.h"

#include <QPointF>

#include <cstddef>
#include <utility>

namespace nivora::cs {

/// The steps of a queue in the order of a direction.
struct OrderedSteps
{
    OrderedSteps(const TransformQueue &queue, int way)
        : first(&queue.first)
        , second(queue.second ? &queue.second : nullptr)
    {
        if (second && way != PJ_FWD)
            std::swap(first, second);
    }
    const ProjOperation *first;
    const ProjOperation *second; ///< null for one step
};

/// Points through the steps in place; those that fail are not finite. \p time as for transformSpan(). Needs
/// the lock of the steps' context.
void convertSpan(const TransformQueue &queue, int direction, const PointSpan &points, double time);

/// What a failed point does to a list.
enum class AtFailure { Stop, GoOn };

/// One direction of a transformation between unequal systems, affine transformations included, as it stands
/// at the time of a call. Every conversion of points goes this way, whoever owns the steps it is given; it
/// needs the lock of their context.
struct DirectedOperation
{
    AffineMap source;
    AffineMap target;
    int direction;
    double time; ///< the coordinates' epoch in decimal years, HUGE_VAL for none

    bool isSingular() const { return source.isSingular() || target.isSingular(); }
    /// False when the point fails; it is not finite then.
    bool convert(const TransformQueue &queue, QPointF &point) const
    {
        const OrderedSteps steps(queue, direction);
        source.undo(&point, 1);
        if (!transformPoint(*steps.first, direction, point, time) ||
            (steps.second && !transformPoint(*steps.second, direction, point, time)))
            return false;
        target.map(&point, 1);
        return !target.isActive() || isFinite(point);
    }
    /// A list, piece by piece. \p in and \p out are the same place or do not overlap. False when a point
    /// failed: those that did are not finite; behind the piece of the first \p out is not written if a list
    /// stops there.
    bool convert(const TransformQueue &queue, const QPointF *in, QPointF *out, std::size_t count,
                 AtFailure atFailure) const;
};

} // namespace nivora::cs
