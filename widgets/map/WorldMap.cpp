#include <widgets/map/WorldMap_p.h>

#include <widgets/map/Coastline_p.h>
#include <widgets/texts/WidgetTexts_p.h>

#include <QLocale>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace nivora::cs {
namespace {

// A map is paper: its colours do not follow the theme of the desktop.
struct MapColours
{
    QColor sea;
    QColor land;
    QColor coast;
    QColor grid;
};
const MapColours byDay{{0xdc, 0xe8, 0xf0}, {0xf7, 0xf4, 0xea}, {0xa3, 0x9d, 0x8a}, {0x90, 0xa8, 0xbc, 0x70}};
const MapColours byNight{
    {0x1b, 0x26, 0x30}, {0x3a, 0x3d, 0x3a}, {0x7d, 0x7a, 0x6c}, {0x70, 0x88, 0x9c, 0x60}};
const QColor areaColour(0xc0, 0x39, 0x2b);
const QColor neighbourColour(0x5d, 0x6d, 0x7e);
const QColor hoverColour(0x1f, 0x77, 0xb4);
const QColor viewColour(0x1e, 0x84, 0x49);

constexpr QRectF wholeWorld{-180.0, -90.0, 360.0, 180.0};
/// Degrees; areas and the shown part may both reach beyond the 180th meridian.
constexpr double turns[] = {-720.0, -360.0, 0.0, 360.0, 720.0};
/// Degrees; the coastlines are thinned for no greater scale.
constexpr double leastShown = 36.0;
/// Pixels; a smaller area gets a ring around it.
constexpr double leastVisible = 9.0;

QPointF placeOf(const QMouseEvent &event)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    return event.position();
#else
    return event.localPos();
#endif
}

QTransform toScreenTransform(const QRectF &shown, const QSizeF &size)
{
    QTransform transform;
    transform.scale(size.width() / shown.width(), -size.height() / shown.height());
    transform.translate(-shown.left(), -shown.bottom()); // bottom() is the greatest y, north
    return transform;
}

/// A rectangle as often as the shown part of the world repeats it.
QVector<QRectF> onScreen(const QRectF &lonLat, const QRectF &shown, const QSizeF &size)
{
    QVector<QRectF> rects;
    for (const double turn : turns) {
        const QRectF turned = lonLat.translated(turn, 0.0);
        if (turned.left() <= shown.right() && turned.right() >= shown.left())
            rects << toScreenTransform(shown, size).mapRect(turned);
    }
    return rects;
}

/// Those that go with the window's.
const MapColours &coloursFor(const QPalette &palette)
{
    constexpr int middleLightness = 128;
    return palette.color(QPalette::Window).lightness() < middleLightness ? byNight : byDay;
}

void paintGrid(QPainter &painter, const QRectF &shown, const QSizeF &size)
{
    const double step = shown.width() > 180.0 ? 30.0 : shown.width() > 60.0 ? 10.0 : 5.0;
    const QTransform transform = toScreenTransform(shown, size);
    const auto firstLine = [step](double from) { return static_cast<int>(std::ceil(from / step)); };
    for (int i = firstLine(shown.left()); i * step <= shown.right(); ++i)
        painter.drawLine(transform.map(QLineF(i * step, shown.top(), i * step, shown.bottom())));
    for (int i = firstLine(shown.top()); i * step <= shown.bottom(); ++i)
        painter.drawLine(transform.map(QLineF(shown.left(), i * step, shown.right(), i * step)));
}

QPixmap coastPixmap(const QRectF &shown, const QSize &size, double pixelRatio, const MapColours &colours)
{
    QPixmap pixmap(size * pixelRatio);
    pixmap.setDevicePixelRatio(pixelRatio);
    pixmap.fill(colours.sea);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colours.coast, 0.6));
    painter.setBrush(colours.land);
    painter.drawPath(landPath(shown, toScreenTransform(shown, size)));
    painter.setPen(QPen(colours.grid, 0.0));
    paintGrid(painter, shown, size);
    return pixmap;
}

void paintRect(QPainter &painter, const QRectF &rect, const QPen &pen, const QBrush &brush)
{
    painter.setPen(pen);
    painter.setBrush(brush);
    painter.drawRect(rect);
    if (std::max(rect.width(), rect.height()) < leastVisible) {
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(rect.center(), leastVisible, leastVisible);
    }
}

QColor faint(QColor colour, int alpha)
{
    colour.setAlpha(alpha);
    return colour;
}

double areaOf(const QRectF &rect) { return rect.width() * rect.height(); }

/// A coordinate does not break across lines.
QString unbroken(QString text) { return text.replace(QLatin1Char(' '), QChar::Nbsp); }

QString degrees(double value) { return QLocale().toString(std::fabs(value), 'g', 5); }

QString longitudeText(double value)
{
    const double turned = std::remainder(value, 360.0);
    const double longitude = turned == -180.0 ? 180.0 : turned;
    const QString text = longitude < 0.0 ? WidgetTexts::tr("%1° з. д.") : WidgetTexts::tr("%1° в. д.");
    return unbroken(text.arg(degrees(longitude)));
}

QString latitudeText(double value)
{
    const QString text = value < 0.0 ? WidgetTexts::tr("%1° ю. ш.") : WidgetTexts::tr("%1° с. ш.");
    return unbroken(text.arg(degrees(value)));
}

} // namespace

QString areaText(const QRectF &area)
{
    const QString latitudes =
        WidgetTexts::tr("%1 – %2", "range").arg(latitudeText(area.top()), latitudeText(area.bottom()));
    if (area.width() >= 360.0)
        return WidgetTexts::tr("все долготы, %1").arg(latitudes);
    const QString longitudes =
        WidgetTexts::tr("%1 – %2", "range").arg(longitudeText(area.left()), longitudeText(area.right()));
    return WidgetTexts::tr("%1, %2", "longitudes, latitudes").arg(longitudes, latitudes);
}

WorldMap::WorldMap(QWidget *parent)
    : QWidget(parent)
    , m_shown(wholeWorld)
{
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(WidgetTexts::tr("Карта мира"));
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setArea({});
}

void WorldMap::setArea(const QRectF &area)
{
    m_area = area;
    m_shown = surroundings();
    setAccessibleDescription(area.isNull() ? WidgetTexts::tr("Область применения неизвестна")
                                           : WidgetTexts::tr("Область применения: %1").arg(areaText(area)));
    update();
}

void WorldMap::setNeighbours(const QVector<Neighbour> &neighbours)
{
    m_neighbours = neighbours;
    update();
}

void WorldMap::setView(const QRectF &view)
{
    m_view = view;
    update();
}

void WorldMap::setPlace(const std::optional<QRectF> &place)
{
    m_place = place;
    update();
}

bool WorldMap::touches(const QRectF &a, const QRectF &b)
{
    return std::any_of(std::begin(turns), std::end(turns),
                       [&](double turn) { return a.translated(turn, 0.0).intersects(b); });
}

/// A third of the width for the area, but no more of the world than there is.
QRectF WorldMap::surroundings() const
{
    const double wanted = std::max({m_area.width() * 3.0, m_area.height() * 4.0, leastShown});
    if (m_area.isNull() || wanted > 200.0)
        return wholeWorld;
    const double height = wanted / 2.0;
    const QPointF centre = m_area.center();
    const double south = std::clamp(centre.y() - height / 2.0, -90.0, 90.0 - height);
    return {centre.x() - wanted / 2.0, south, wanted, height};
}

QPointF WorldMap::toScreen(const QPointF &lonLat) const
{
    return toScreenTransform(m_shown, size()).map(lonLat);
}

QPointF WorldMap::toLonLat(const QPointF &position) const
{
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    if (!QRectF(rect()).contains(position))
        return {none, none};
    const QPointF place = toScreenTransform(m_shown, size()).inverted().map(position);
    return {std::remainder(place.x(), 360.0), place.y()};
}

/// Of several the smallest.
const WorldMap::Neighbour *WorldMap::neighbourAt(const QPointF &position) const
{
    const Neighbour *smallest = nullptr;
    for (const Neighbour &neighbour : m_neighbours) {
        const QVector<QRectF> rects = onScreen(neighbour.area, m_shown, size());
        const bool hit = std::any_of(rects.begin(), rects.end(),
                                     [&](const QRectF &rect) { return rect.contains(position); });
        if (hit && (!smallest || areaOf(neighbour.area) < areaOf(smallest->area)))
            smallest = &neighbour;
    }
    return smallest;
}

void WorldMap::paintEvent(QPaintEvent *)
{
    const bool isStale = m_coast.isNull() || m_coastShown != m_shown ||
                         m_coast.size() != size() * devicePixelRatioF() ||
                         m_coast.devicePixelRatioF() != devicePixelRatioF();
    if (isStale) {
        m_coast = coastPixmap(m_shown, size(), devicePixelRatioF(), coloursFor(palette()));
        m_coastShown = m_shown;
    }
    QPainter painter(this);
    painter.drawPixmap(0, 0, m_coast);
    painter.setRenderHint(QPainter::Antialiasing);
    paintAreas(painter, m_pointer ? &*m_pointer : nullptr);
    if (m_shown != wholeWorld)
        paintOverview(painter);
    if (m_pointer)
        paintCaption(painter, caption(neighbourAt(*m_pointer)));
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(palette().color(QPalette::Mid));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void WorldMap::paintAreas(QPainter &painter, const QPointF *pointer) const
{
    const auto paint = [&](const QRectF &lonLat, const QPen &pen, const QBrush &brush) {
        for (const QRectF &rect : onScreen(lonLat, m_shown, size()))
            paintRect(painter, rect, pen, brush);
    };
    const Neighbour *hovered = pointer ? neighbourAt(*pointer) : nullptr;
    if (pointer)
        for (const Neighbour &neighbour : m_neighbours)
            paint(neighbour.area, QPen(faint(neighbourColour, 0xa0), 1.0, Qt::DotLine), Qt::NoBrush);
    if (!m_area.isNull())
        paint(m_area, QPen(areaColour, 1.5), faint(areaColour, 0x48));
    if (hovered)
        paint(hovered->area, QPen(hoverColour, 1.5), faint(hoverColour, 0x40));
    if (!m_view.isNull())
        paint(m_view, QPen(viewColour, 1.5, Qt::DashLine), Qt::NoBrush);
    if (m_place)
        paint(*m_place, QPen(viewColour, 2.0), faint(viewColour, 0x60));
}

/// The whole world in a corner away from the caption, with a frame for what is shown.
void WorldMap::paintOverview(QPainter &painter)
{
    const QSize small(std::max(72, width() / 5), std::max(36, width() / 10));
    const QRect place(QPoint(width() - small.width() - 5, 5), small);
    if (m_world.size() != small * devicePixelRatioF())
        m_world = coastPixmap(wholeWorld, small, devicePixelRatioF(), coloursFor(palette()));
    painter.drawPixmap(place.topLeft(), m_world);
    painter.save();
    painter.setClipRect(place);
    painter.translate(place.topLeft());
    painter.setBrush(faint(areaColour, 0x40));
    painter.setPen(QPen(areaColour, 1.0));
    for (const QRectF &rect : onScreen(m_shown, wholeWorld, small))
        painter.drawRect(rect);
    painter.restore();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(neighbourColour);
    painter.drawRect(place);
}

QString WorldMap::caption(const Neighbour *neighbour) const
{
    const QPointF place = toLonLat(*m_pointer);
    if (std::isnan(place.x()))
        return {};
    const QString where = WidgetTexts::tr("%1, %2", "longitude, latitude")
                              .arg(longitudeText(place.x()), latitudeText(place.y()));
    return neighbour ? WidgetTexts::tr("%1 (%2)", "system, place").arg(neighbour->name, where) : where;
}

void WorldMap::paintCaption(QPainter &painter, const QString &text) const
{
    if (text.isEmpty())
        return;
    const QFontMetrics metrics = painter.fontMetrics();
    const int height = metrics.height() + 4;
    const QRect strip(0, this->height() - height, width(), height);
    painter.fillRect(strip, faint(palette().color(QPalette::Base), 0xdc));
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(strip.adjusted(6, 0, -6, 0), Qt::AlignVCenter | Qt::AlignLeft,
                     metrics.elidedText(text, Qt::ElideMiddle, strip.width() - 12));
}

/// The coast has the colours of the palette.
void WorldMap::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange) {
        m_coast = {};
        m_world = {};
    }
    QWidget::changeEvent(event);
}

void WorldMap::mouseMoveEvent(QMouseEvent *event)
{
    m_pointer = placeOf(*event);
    setCursor(neighbourAt(*m_pointer) ? Qt::PointingHandCursor : Qt::ArrowCursor);
    update();
}

void WorldMap::leaveEvent(QEvent *)
{
    m_pointer.reset();
    update();
}

void WorldMap::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::RightButton)
        Q_EMIT placeClicked(toLonLat(placeOf(*event)));
    const Neighbour *neighbour = neighbourAt(placeOf(*event));
    if (event->button() == Qt::LeftButton && neighbour)
        Q_EMIT neighbourClicked(neighbour->id);
}

} // namespace nivora::cs
