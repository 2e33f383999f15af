#pragma once

#include <coordsys/Calibration.h>

#include <QWidget>

namespace nivora::cs {

/// Control points where they lie, north up, with what is left at each as an arrow, all to one scale.
class ResidualMap : public QWidget
{
    Q_OBJECT
public:
    explicit ResidualMap(QWidget *parent = nullptr);

    /// \p aspect: the length of a unit of x by that of a unit of y on the ground. Without residuals only
    /// points.
    void show(const QVector<CalibrationPair> &pairs, const QVector<CalibrationResidual> &residuals,
              double aspect);
    QSize sizeHint() const override { return {420, 300}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QPointF placeOf(const QPointF &known) const;
    void drawArrow(QPainter &painter, const QPointF &from, const QPointF &to) const;
    void drawScale(QPainter &painter, double pixelsPerM) const;

    QVector<CalibrationPair> m_pairs;
    QVector<CalibrationResidual> m_residuals;
    double m_aspect = 1.0;
    QRectF m_extent;
};

} // namespace nivora::cs
