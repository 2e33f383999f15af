#include <widgets/calibration/ResidualMap_p.h>
#include <widgets/texts/WidgetTexts_p.h>

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

constexpr double marginPx = 40.0;
constexpr double longestPx = 50.0; ///< of an arrow

/// 1, 2 or 5 by a power of ten, not above the value.
double roundLength(double value)
{
    const double power = std::pow(10.0, std::floor(std::log10(value)));
    return power * (value / power >= 5.0 ? 5.0 : value / power >= 2.0 ? 2.0 : 1.0);
}

} // namespace

ResidualMap::ResidualMap(QWidget *parent)
    : QWidget(parent)
{
    setMinimumSize(240, 180);
    setAccessibleName(WidgetTexts::tr("Невязки точек на карте"));
}

void ResidualMap::show(const QVector<CalibrationPair> &pairs, const QVector<CalibrationResidual> &residuals,
                       double aspect)
{
    m_pairs = pairs;
    m_residuals = residuals;
    m_aspect = aspect;
    m_extent = QRectF();
    if (!pairs.isEmpty())
        m_extent = QRectF(pairs.first().known, QSizeF());
    for (const CalibrationPair &pair : pairs) {
        m_extent.setLeft(std::min(m_extent.left(), pair.known.x()));
        m_extent.setRight(std::max(m_extent.right(), pair.known.x()));
        m_extent.setTop(std::min(m_extent.top(), pair.known.y()));
        m_extent.setBottom(std::max(m_extent.bottom(), pair.known.y()));
    }
    update();
}

QPointF ResidualMap::placeOf(const QPointF &known) const
{
    const QSizeF room(width() - 2 * marginPx, height() - 2 * marginPx);
    const double scale = std::min(room.width() / std::max(m_extent.width() * m_aspect, 1e-12),
                                  room.height() / std::max(m_extent.height(), 1e-12));
    const QPointF d = known - m_extent.center();
    return {width() / 2.0 + d.x() * m_aspect * scale, height() / 2.0 - d.y() * scale};
}

void ResidualMap::drawArrow(QPainter &painter, const QPointF &from, const QPointF &to) const
{
    painter.drawLine(from, to);
    const QPointF d = from - to;
    const double length = std::hypot(d.x(), d.y());
    if (length < 4.0)
        return;
    const QPointF along = d * (7.0 / length), across(-along.y() * 0.4, along.x() * 0.4);
    painter.drawLine(to, to + along + across);
    painter.drawLine(to, to + along - across);
}

void ResidualMap::drawScale(QPainter &painter, double pixelsPerM) const
{
    const double metres = roundLength(longestPx / pixelsPerM);
    const QPointF from(12.0, height() - 12.0);
    painter.setPen(palette().color(QPalette::Text));
    drawArrow(painter, from, from + QPointF(metres * pixelsPerM, 0.0));
    painter.drawText(from + QPointF(metres * pixelsPerM + 8.0, 4.0),
                     WidgetTexts::tr("%1 м невязки").arg(QString::number(metres)));
}

void ResidualMap::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), palette().base());
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    double longestM = 1e-9;
    for (const CalibrationResidual &residual : m_residuals)
        longestM = std::max(longestM, residual.lengthM);
    for (int i = 0; i < m_pairs.size(); ++i) {
        const CalibrationPair &pair = m_pairs.at(i);
        const bool hasResidual = i < m_residuals.size();
        const bool isSuspect = hasResidual && m_residuals.at(i).isSuspect;
        const QColor colour = !pair.isUsed ? palette().color(QPalette::Disabled, QPalette::Text)
                              : isSuspect  ? QColor(0xc0, 0, 0)
                                           : QColor(0x1f, 0x5f, 0xa8);
        const QPointF at = placeOf(pair.known);
        painter.setPen(QPen(colour, 2.0));
        painter.setBrush(colour);
        painter.drawEllipse(at, 2.5, 2.5);
        if (hasResidual) {
            const QPointF offset = m_residuals.at(i).offsetM * (longestPx / longestM);
            drawArrow(painter, at, at + QPointF(offset.x(), -offset.y()));
        }
        painter.drawText(at + QPointF(6.0, -6.0), pair.name);
    }
    if (!m_residuals.isEmpty())
        drawScale(painter, longestPx / longestM);
}

} // namespace nivora::cs
