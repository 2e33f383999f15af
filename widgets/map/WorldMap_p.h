#pragma once

#include <QPixmap>
#include <QPointF>
#include <QRectF>
#include <QVector>
#include <QWidget>

#include <optional>

namespace nivora::cs {

/// A small map of the world, longitude and latitude straight, on which an area is drawn. It shows the whole
/// world, or the surroundings of a small area with the world in a corner. The coast is painted once into a
/// pixmap of the screen's resolution; what moves is painted over it.
///
/// Rectangles are degrees, longitude first, width positive, across the 180th meridian running on beyond 180.
class WorldMap : public QWidget
{
    Q_OBJECT
public:
    struct Neighbour
    {
        QString name;
        QRectF area;
        int id;
    };

    explicit WorldMap(QWidget *parent = nullptr);

    /// The area of use to show, null for none.
    void setArea(const QRectF &area);
    /// What is outlined while the pointer is over the map.
    void setNeighbours(const QVector<Neighbour> &neighbours);
    /// The host's view, and the place that is searched for; null for none.
    void setView(const QRectF &view);
    const QRectF &view() const { return m_view; }
    void setPlace(const std::optional<QRectF> &place);
    /// The part of the world on the map.
    const QRectF &shownArea() const { return m_shown; }
    /// Whether two areas have something in common, turns around the earth aside.
    static bool touches(const QRectF &a, const QRectF &b);

    QSize sizeHint() const override { return {400, 200}; }
    QSize minimumSizeHint() const override { return {240, 120}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return width / 2; }

    /// Where a place is painted, and the other way round; NaN outside the map.
    QPointF toScreen(const QPointF &lonLat) const;
    QPointF toLonLat(const QPointF &position) const;

Q_SIGNALS:
    void neighbourClicked(int id);
    /// Clicked with the secondary button.
    void placeClicked(const QPointF &lonLat);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    const Neighbour *neighbourAt(const QPointF &position) const;
    QRectF surroundings() const;
    void paintAreas(QPainter &painter, const QPointF *pointer) const;
    void paintCaption(QPainter &painter, const QString &text) const;
    void paintOverview(QPainter &painter);
    QString caption(const Neighbour *neighbour) const;

    QRectF m_area;
    QRectF m_view;
    std::optional<QRectF> m_place;
    QVector<Neighbour> m_neighbours;
    QRectF m_shown;                   ///< degrees; twice as wide as high
    std::optional<QPointF> m_pointer; ///< while it is over the map
    QPixmap m_coast;                  ///< of m_coastShown
    QRectF m_coastShown;
    QPixmap m_world; ///< for the corner
};

/// "36° в. д. – 42° в. д., 41° с. ш. – 82° с. ш."
QString areaText(const QRectF &area);

} // namespace nivora::cs
