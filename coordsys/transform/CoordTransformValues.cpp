#include <coordsys/CoordTransform.h>

#include "OptionalResult_p.h"

// Conversions whose result is a value.

namespace nivora::cs {

std::optional<QPointF> CoordTransform::forward(const QPointF &in) const { return forwardOf(*this, in); }
std::optional<QVector<QPointF>> CoordTransform::forward(const QVector<QPointF> &in) const
{
    return forwardOf(*this, in);
}
std::optional<QRectF> CoordTransform::forward(const QRectF &in) const { return forwardOf(*this, in); }

std::optional<QPointF> CoordTransform::inverse(const QPointF &in) const { return inverseOf(*this, in); }
std::optional<QVector<QPointF>> CoordTransform::inverse(const QVector<QPointF> &in) const
{
    return inverseOf(*this, in);
}
std::optional<QRectF> CoordTransform::inverse(const QRectF &in) const { return inverseOf(*this, in); }

} // namespace nivora::cs
