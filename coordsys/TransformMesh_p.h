#pragma once

#include <coordsys/TransformStrategies_p.h>

#include <QList>
#include <QRectF>

#include <memory>

namespace nivora::cs {

/// A rectangle, given by its corners, as the bounding rectangle of the images of a mesh of points; gives four
/// corners. Points that fail are left out. The PROJ lock is held for the whole mesh.
class TransformInternalMesh : public TransformInternalBase
{
public:
    explicit TransformInternalMesh(int intervals)
        : m_intervals(intervals)
    {}
    bool transform(const QVector<QPointF> &in, QVector<QPointF> &out) override;

private:
    int m_intervals;
};

/// The mesh over \p rect with \p addPoints intervals along its width, and lines where the bounds of the
/// system
/// (\p csRect, empty for none) cross it; \p count receives the number of points. Where extra columns and
/// extra rows would cross, the array holds (0, 0) instead: such points take part in the result, and callers
/// have measured against that. Throws std::bad_array_new_length for more than 2^26 points.
NIVORA_CS_EXPORT std::unique_ptr<PJ_COORD[]> fillPointsMesh(int addPoints, int &count, const QRectF &rect,
                                                            const QRectF &csRect);
/// The bounds c and d that lie strictly between a and b, d first.
NIVORA_CS_EXPORT QList<double> extraPoints(double a, double b, double c, double d);
/// The same for the y range of a rectangle.
NIVORA_CS_EXPORT QList<double> extraPointsY(const QRectF &rect, double c, double d);

} // namespace nivora::cs
