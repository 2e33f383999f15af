#include <coordsys/CoordSystem.h>

#include "OptionalResult_p.h"

// Conversions whose result is a value.

namespace nivora::cs {

std::optional<QPointF> CoordSystem::toPlane(const QPointF &lonLat) const { return forwardOf(*this, lonLat); }
std::optional<QRectF> CoordSystem::toPlane(const QRectF &lonLat) const { return forwardOf(*this, lonLat); }
std::optional<QVector<QPointF>> CoordSystem::toPlane(const QVector<QPointF> &lonLat) const
{
    return forwardOf(*this, lonLat);
}

std::optional<QPointF> CoordSystem::toGeographic(const QPointF &planar) const
{
    return inverseOf(*this, planar);
}
std::optional<QRectF> CoordSystem::toGeographic(const QRectF &planar) const
{
    return inverseOf(*this, planar);
}
std::optional<QVector<QPointF>> CoordSystem::toGeographic(const QVector<QPointF> &planar) const
{
    return inverseOf(*this, planar);
}

} // namespace nivora::cs
