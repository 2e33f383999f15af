#pragma once

#include <QPointF>
#include <QVector>

#include <array>
#include <optional>

namespace nivora::cs {

/// A to F of the affine transformation that maps points onto others: x' = A x + B y + C, y' = D x + E y + F,
/// with the shortest decimal figures that do so within \p tolerance at every point. Points that are not
/// finite in either list are left aside. None when there is no such, or fewer than three points.
std::optional<std::array<double, 6>> fittedAffine(const QVector<QPointF> &from, const QVector<QPointF> &to,
                                                  double tolerance);

/// Greatest distance of two points of the same place; not finite when one of \p from is not where its partner
/// is. None when no place counts.
std::optional<double> greatestDistance(const QVector<QPointF> &from, const QVector<QPointF> &to);

} // namespace nivora::cs
