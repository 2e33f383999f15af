#pragma once

#include "CoordTransformCache_p.h"

#include <QPointF>

#include <utility>

namespace nivora::cs {

/// The steps of a queue in the order of a direction.
struct OrderedSteps
{
    OrderedSteps(const TransformQueue &queue, int way)
        : first(&queue.first)
        , second(queue.second ? &queue.second : nullptr)
        , direction(way)
    {
        if (second && direction != PJ_FWD)
            std::swap(first, second);
    }
    const ProjOperation *first;
    const ProjOperation *second; ///< null for one step
    int direction;
};

/// Points through the steps in place, as ProjOperation's transformPoints(). Takes the PROJ lock once.
bool transformPoints(const TransformQueue &queue, int direction, QPointF *points, std::size_t count,
                     double time);
/// The same for one point.
bool transformPoint(const TransformQueue &queue, int direction, QPointF &point, double time);

} // namespace nivora::cs
