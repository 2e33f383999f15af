#pragma once

#include <QPointF>
#include <QRectF>

#include <cstddef>

namespace nivora::cs {

class CoordSystem;

/// A system's affine transformation with MapInfo's letters: x' = A x + B y + C, y' = D x + E y + F.
/// QTransform takes coefficients below 1e-12 for zero, when it maps and when it inverts, so a scale of 1e-13
/// would be lost; here every coefficient counts. A value without memory of its own; made for one call.
class AffineMap
{
public:
    /// That of the system; nothing to do without one.
    explicit AffineMap(const CoordSystem &cs);

    bool isActive() const { return m_active; }
    /// No point can be found back (isSingularAffine); the conversions of such a system fail.
    bool isSingular() const { return m_singular; }

    /// Into the user's plane.
    QPointF map(const QPointF &p) const
    {
        return {m_a * p.x() + m_b * p.y() + m_c, m_d * p.x() + m_e * p.y() + m_f};
    }
    /// Back into the projection's plane. Not for a singular transformation.
    QPointF undo(const QPointF &p) const
    {
        const double u = (p.x() - m_c) * m_powerX;
        const double v = (p.y() - m_f) * m_powerY;
        if (m_diagonal) // no product of a zero with an overflow
            return {u / m_scaled[0], v / m_scaled[3]};
        return {(m_scaled[3] * u - m_scaled[1] * v) / m_determinant,
                (m_scaled[0] * v - m_scaled[2] * u) / m_determinant};
    }
    void map(QPointF *points, std::size_t count) const;
    void undo(QPointF *points, std::size_t count) const;
    /// Bounding rectangle of the image.
    QRectF map(const QRectF &rect) const;
    QRectF undo(const QRectF &rect) const;

private:
    void prepareInverse();

    bool m_active = false;
    bool m_singular = false;
    bool m_diagonal = true;
    double m_a = 1.0, m_b = 0.0, m_c = 0.0, m_d = 0.0, m_e = 1.0, m_f = 0.0;
    /// A, B, D, E with each row brought near 1 by a power of two, which costs no digit.
    double m_scaled[4] = {1.0, 0.0, 0.0, 1.0};
    double m_powerX = 1.0, m_powerY = 1.0;
    double m_determinant = 1.0; ///< of the scaled rows
};

} // namespace nivora::cs
