#include "SwapWatch.h"

#include <coordsys/CoordSystem.h>

#include <QRectF>

#include <algorithm>

namespace {

constexpr int enough = 1000;

} // namespace

void SwapWatch::look(const QVector<QPointF> &points)
{
    if (m_isFull)
        return;
    const std::lock_guard lock(m_mutex);
    m_points += points.mid(0, std::max(0, enough - static_cast<int>(m_points.size())));
    m_isFull = m_points.size() >= enough;
}

bool SwapWatch::areSwapped(const nivora::cs::CoordSystem &source) const
{
    const QRectF bounds = source.isLatLong() ? QRectF() : source.rectNumericCoordSys();
    return !bounds.isEmpty() && !m_points.isEmpty() &&
           std::all_of(m_points.begin(), m_points.end(), [&bounds](const QPointF &point) {
               return !bounds.contains(point) && bounds.contains({point.y(), point.x()});
           });
}
