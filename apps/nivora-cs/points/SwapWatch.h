#pragma once

#include <QPointF>
#include <QVector>

#include <atomic>
#include <mutex>

namespace nivora::cs {
class CoordSystem;
} // namespace nivora::cs

/// Notices coordinates whose x and y stand in each other's place, by the first thousand of them. Threads may
/// look at once.
class SwapWatch
{
public:
    void look(const QVector<QPointF> &points);
    /// Whether every point lies outside the bounds of its plane, and would lie inside with x and y exchanged.
    bool areSwapped(const nivora::cs::CoordSystem &source) const;

private:
    std::mutex m_mutex;
    std::atomic<bool> m_isFull{false};
    QVector<QPointF> m_points;
};
