#pragma once

#include "DirectedOperation_p.h"

#include <QList>
#include <QRectF>

#include <memory>

namespace nivora::cs {

/// How a mesh goes through the engine. Made on the stack for one call.
struct Mesh
{
    const CoordSystem &source; ///< of this direction: where the points come from
    const TransformQueue &queue;
    int direction;
    double time;   ///< the coordinates' epoch in decimal years, HUGE_VAL for none
    int intervals; ///< along the width
};

/// The four corners of a rectangle in the source's projection plane become those of the bounding rectangle
/// of the images of a mesh of points. Points that fail are left out. The PROJ lock is held for the whole
/// mesh. False when nothing could be transformed or the result has no extent.
bool meshBounds(const Mesh &mesh, QVector<QPointF> &corners);

/// The mesh over \p rect with \p addPoints intervals along its width, and lines where the bounds of the
/// system (\p csRect, empty for none) cross it; \p count receives the number of points. Where extra columns
/// and extra rows would cross, the array holds (0, 0) instead: such points take part in the result, and
/// callers have measured against that. Throws std::bad_array_new_length for more than 2^26 points.
NIVORA_CS_EXPORT std::unique_ptr<PJ_COORD[]> fillPointsMesh(int addPoints, int &count, const QRectF &rect,
                                                            const QRectF &csRect);
/// The bounds c and d that lie strictly between a and b, d first.
NIVORA_CS_EXPORT QList<double> extraPoints(double a, double b, double c, double d);
/// The same for the y range of a rectangle.
NIVORA_CS_EXPORT QList<double> extraPointsY(const QRectF &rect, double c, double d);

} // namespace nivora::cs
