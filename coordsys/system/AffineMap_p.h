#pragma once

#include "CoordSystem_p.h"

#include <QPointF>
#include <QRectF>
#include <QTransform>

#include <cstddef>

namespace nivora::cs {

/// A system's affine transformation with MapInfo's letters: x' = A x + B y + C, y' = D x + E y + F.
/// QTransform takes coefficients below 1e-12 for zero, when it maps and when it inverts, so a scale of 1e-13
/// would be lost; here every coefficient counts. A value without memory of its own; made for one call.
class AffineMap
{
public:
    /// That of the system; nothing to do without one.
    explicit AffineMap(const CoordSystem &cs)
    {
        // NOLINTNEXTLINE(clang-analyzer-optin.cplusplus.UninitializedObject): set only when active
        if (const QTransform *affine = privateOf(cs).m_affine.get())
            prepare(*affine);
    }

    bool isActive() const { return m_active; }
    /// No point can be found back (isSingularAffine); the conversions of such a system fail.
    bool isSingular() const { return m_singular; }

    /// Into the user's plane.
    QPointF map(const QPointF &p) const
    {
        return {m_a * p.x() + m_b * p.y() + m_c, m_d * p.x() + m_e * p.y() + m_f};
    }
    /// Back into the projection's plane. Not for a singular transformation, which the forms for many points
    /// and for rectangles leave undone.
    QPointF undo(const QPointF &p) const
    {
        const double u = (p.x() - m_c) * m_powerX;
        const double v = (p.y() - m_f) * m_powerY;
        if (m_diagonal) // no product of a zero with an overflow
            return {u / m_scaled[0], v / m_scaled[3]};
        return {(m_scaled[3] * u - m_scaled[1] * v) / m_determinant,
                (m_scaled[0] * v - m_scaled[2] * u) / m_determinant};
    }
    void map(QPointF *points, std::size_t count) const
    {
        for (std::size_t i = 0; m_active && i < count; ++i)
            points[i] = map(points[i]);
    }
    void undo(QPointF *points, std::size_t count) const
    {
        for (std::size_t i = 0; m_active && !m_singular && i < count; ++i)
            points[i] = undo(points[i]);
    }
    /// Bounding rectangle of the image.
    QRectF map(const QRectF &rect) const;
    QRectF undo(const QRectF &rect) const;

private:
    void prepare(const QTransform &affine);
    void prepareInverse();

    bool m_active = false;
    bool m_singular = false;
    bool m_diagonal = true;
    // Set only when active: a single point feels every store.
    double m_a, m_b, m_c, m_d, m_e, m_f;
    /// A, B, D, E with each row brought near 1 by a power of two, which costs no digit.
    double m_scaled[4];
    double m_powerX, m_powerY;
    double m_determinant; ///< of the scaled rows
};

} // namespace nivora::cs
