#include "DirectedOperation_p.h"

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

/// Points between two passes of the arithmetic around the engine; they stay in the processor's cache.
constexpr std::size_t pieceSize = 512;

/// The engine gives such a point back as it is.
void markFailures(const PointSpan &points)
{
    const std::size_t end = points.count * points.strideInDoubles;
    for (std::size_t i = 0; i < end; i += points.strideInDoubles)
        if (!std::isfinite(points.x[i]) || !std::isfinite(points.y[i]))
            points.x[i] = points.y[i] = HUGE_VAL;
}

} // namespace

void convertSpan(const TransformQueue &queue, int direction, const PointSpan &points, double time)
{
    const OrderedSteps steps(queue, direction);
    transformSpan(*steps.first, direction, points, time);
    if (!steps.second)
        return;
    markFailures(points);
    transformSpan(*steps.second, direction, points, time);
}

bool DirectedOperation::convert(const TransformQueue &queue, const QPointF *in, QPointF *out,
                                std::size_t count, AtFailure atFailure) const
{
    bool allDone = true;
    for (std::size_t done = 0; done < count; done += pieceSize) {
        const std::size_t size = std::min(pieceSize, count - done);
        QPointF *const piece = out + done;
        if (in != out)
            std::copy_n(in + done, size, piece);
        source.undo(piece, size);
        convertSpan(queue, direction, spanOf(piece, size), time);
        target.map(piece, size);
        allDone = std::all_of(piece, piece + size, isFinite) && allDone;
        if (!allDone && atFailure == AtFailure::Stop)
            return false;
    }
    return allDone;
}

} // namespace nivora::cs
