#include <widgets/map/Coastline_p.h>

#include <QDataStream>
#include <QFile>
#include <QPolygonF>
#include <QVector>

/// Of a static library; in no namespace, as Q_INIT_RESOURCE wants it.
static void initResources()
{
#ifdef NIVORA_CS_WIDGETS_STATIC_DEFINE
    Q_INIT_RESOURCE(nivora_cs_world);
#endif
}

namespace nivora::cs {
namespace {

constexpr quint32 magic = 0x4e574d31; // "NWM1"; tools/make-world-map writes the file and describes it
constexpr double unitsPerDegree = 100.0;

struct Ring
{
    QPolygonF points;
    QRectF bounds;
};

/// Zigzag, seven bits a byte, the low ones first.
int readStep(QDataStream &in)
{
    quint32 value = 0;
    quint8 byte = 0x80;
    for (int shift = 0; (byte & 0x80) && shift < 32; shift += 7) {
        in >> byte;
        value |= static_cast<quint32>(byte & 0x7f) << shift;
    }
    return static_cast<int>(value >> 1) ^ -static_cast<int>(value & 1);
}

Ring readRing(QDataStream &in)
{
    Ring ring;
    int x = 0;
    int y = 0;
    for (int rest = readStep(in); rest > 0 && in.status() == QDataStream::Ok; --rest) {
        x += readStep(in);
        y += readStep(in);
        ring.points << QPointF(x / unitsPerDegree, y / unitsPerDegree);
    }
    ring.bounds = ring.points.boundingRect();
    return ring;
}

QVector<Ring> readCoast()
{
    initResources();
    QVector<Ring> rings;
    QFile file(QStringLiteral(":/nivora-cs/world.map"));
    file.open(QIODevice::ReadOnly); // part of this library
    QDataStream in(&file);
    quint32 head = 0;
    quint32 count = 0;
    in >> head >> count;
    for (; head == magic && count > 0 && in.status() == QDataStream::Ok; --count)
        rings << readRing(in);
    return rings;
}

} // namespace

QPainterPath landPath(const QRectF &lonLat, const QTransform &toScreen)
{
    static const QVector<Ring> coast = readCoast();
    QPainterPath path;
    path.setFillRule(Qt::OddEvenFill);
    for (const double turn : {-360.0, 0.0, 360.0})
        for (const Ring &ring : coast) {
            if (!ring.bounds.translated(turn, 0.0).intersects(lonLat))
                continue;
            path.addPolygon(toScreen.map(ring.points.translated(turn, 0.0)));
            path.closeSubpath();
        }
    return path;
}

} // namespace nivora::cs
