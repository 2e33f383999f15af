#include <coordsys/CoordTransform.h>

// Conversions whose result is a value.

namespace nivora::cs {
namespace {

template <typename T> std::optional<T> forwardOf(const CoordTransform &transform, const T &in)
{
    T out;
    return transform.forward(in, out) ? std::make_optional(out) : std::nullopt;
}

template <typename T> std::optional<T> inverseOf(const CoordTransform &transform, const T &in)
{
    T out;
    return transform.inverse(in, out) ? std::make_optional(out) : std::nullopt;
}

} // namespace

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
