#include "AffineMap_p.h"

#include <coordsys/CoordSystemConversions.h>
#include <coordsys/ProjEngine.h>

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

/// The power of two that brings a row of the matrix near 1.
double powerFor(double first, double second)
{
    return std::ldexp(1.0, -std::ilogb(std::max(std::fabs(first), std::fabs(second))));
}

/// a e - b d without the loss of the digits that the products have in common.
double differenceOfProducts(double a, double e, double b, double d)
{
    const double product = b * d;
    return std::fma(a, e, -product) + std::fma(-b, d, product);
}

template <typename Move> QRectF boundsOfCorners(const QRectF &r, Move &&move)
{
    const QPointF a = move(r.topLeft()), b = move(r.topRight()), c = move(r.bottomRight()),
                  d = move(r.bottomLeft());
    return coordsArrayToRect({a.x(), b.x(), c.x(), d.x()}, {a.y(), b.y(), c.y(), d.y()});
}

} // namespace

void AffineMap::prepare(const QTransform &affine)
{
    m_active = true;
    m_singular = isSingularAffine(affine);
    m_a = affine.m11();
    m_b = affine.m21();
    m_c = affine.dx();
    m_d = affine.m12();
    m_e = affine.m22();
    m_f = affine.dy();
    if (!m_singular)
        prepareInverse();
}

void AffineMap::prepareInverse()
{
    m_diagonal = m_b == 0.0 && m_d == 0.0;
    m_powerX = powerFor(m_a, m_b);
    m_powerY = powerFor(m_d, m_e);
    const double scaled[] = {m_a * m_powerX, m_b * m_powerX, m_d * m_powerY, m_e * m_powerY};
    std::copy(std::begin(scaled), std::end(scaled), m_scaled);
    m_determinant = differenceOfProducts(scaled[0], scaled[3], scaled[1], scaled[2]);
}

QRectF AffineMap::map(const QRectF &rect) const
{
    return m_active ? boundsOfCorners(rect, [this](const QPointF &p) { return map(p); }) : rect;
}

QRectF AffineMap::undo(const QRectF &rect) const
{
    const bool isDone = m_active && !m_singular;
    return isDone ? boundsOfCorners(rect, [this](const QPointF &p) { return undo(p); }) : rect;
}

} // namespace nivora::cs
