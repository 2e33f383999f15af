#include <coordsys/CoordSystem.h>

// Conversions whose result is a value.

namespace nivora::cs {
namespace {

template <typename T> std::optional<T> forwardOf(const CoordSystem &cs, const T &lonLat)
{
    T out;
    return cs.forward(lonLat, out) ? std::make_optional(out) : std::nullopt;
}

template <typename T> std::optional<T> inverseOf(const CoordSystem &cs, const T &planar)
{
    T out;
    return cs.inverse(planar, out) ? std::make_optional(out) : std::nullopt;
}

} // namespace

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
