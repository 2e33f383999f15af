// Writes resources/world.map, the coastlines of the picker's map, from Natural Earth's countries. README.md
// beside this file tells where those come from.

#include <QDataStream>
#include <QFile>
#include <QSaveFile>
#include <QString>
#include <QVector>

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <cmath>
#include <cstdio>
#include <exception>
#include <stdexcept>

namespace {

/// Degrees. On a map 400 pixels wide a pixel is 0.9 degree, ten times magnified 0.09.
constexpr double tolerance = 0.075;
/// Square degrees; some 130 square kilometres at the equator, a pixel of the magnified map.
constexpr double leastArea = 0.012;
/// The file counts in hundredths of a degree.
constexpr double unitsPerDegree = 100.0;
constexpr quint32 magic = 0x4e574d31; // "NWM1"

struct Point
{
    int x, y;
    bool operator==(const Point &other) const { return x == other.x && y == other.y; }
};
using Ring = QVector<Point>;

/// All countries as one geometry, so that only coasts are left.
OGRGeometryUniquePtr dissolvedLand(const char *file)
{
    const GDALDatasetUniquePtr source(GDALDataset::Open(file, GDAL_OF_VECTOR | GDAL_OF_READONLY));
    OGRLayer *layer = source ? source->GetLayerByName("countries") : nullptr;
    if (!layer)
        throw std::runtime_error("no layer \"countries\" in the file");
    OGRMultiPolygon all;
    for (const auto &feature : layer) {
        const OGRGeometryUniquePtr polygons(
            OGRGeometryFactory::forceToMultiPolygon(feature->GetGeometryRef()->clone()));
        for (const OGRPolygon *polygon : *polygons->toMultiPolygon())
            all.addGeometry(polygon);
    }
    OGRGeometryUniquePtr land(all.UnionCascaded());
    land.reset(land ? land->SimplifyPreserveTopology(tolerance) : nullptr);
    if (!land)
        throw std::runtime_error("GDAL cannot dissolve the countries (built without GEOS?)");
    return land;
}

Ring ringOf(const OGRLinearRing &line)
{
    Ring ring;
    for (const OGRPoint &vertex : line) {
        const Point point{static_cast<int>(std::lround(vertex.getX() * unitsPerDegree)),
                          static_cast<int>(std::lround(vertex.getY() * unitsPerDegree))};
        if (ring.isEmpty() || !(ring.last() == point))
            ring << point;
    }
    if (ring.size() > 1 && ring.first() == ring.last())
        ring.removeLast(); // readers close it
    return ring;
}

QVector<Ring> ringsOf(OGRGeometry &land)
{
    QVector<Ring> rings;
    const OGRGeometryUniquePtr polygons(OGRGeometryFactory::forceToMultiPolygon(land.clone()));
    for (const OGRPolygon *polygon : *polygons->toMultiPolygon())
        for (const OGRLinearRing *line : *polygon) {
            const Ring ring = std::fabs(line->get_Area()) < leastArea ? Ring() : ringOf(*line);
            if (ring.size() > 2)
                rings << ring;
        }
    return rings;
}

/// Small numbers of either sign in one byte: zigzag, seven bits a byte, the low ones first.
void writeStep(QDataStream &out, int step)
{
    quint32 rest = step < 0 ? static_cast<quint32>(-step) * 2 - 1 : static_cast<quint32>(step) * 2;
    for (; rest > 0x7f; rest >>= 7)
        out << static_cast<quint8>(rest | 0x80);
    out << static_cast<quint8>(rest);
}

void write(const QVector<Ring> &rings, const QString &path)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw std::runtime_error("cannot write " + path.toStdString());
    QDataStream out(&file);
    out << magic << static_cast<quint32>(rings.size());
    for (const Ring &ring : rings) {
        Point last{0, 0};
        writeStep(out, ring.size());
        for (const Point &point : ring) {
            writeStep(out, point.x - last.x);
            writeStep(out, point.y - last.y);
            last = point;
        }
    }
    if (!file.commit())
        throw std::runtime_error("cannot write " + path.toStdString());
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2 || argc > 3) {
        std::fputs("usage: make-world-map world_map.gpkg [OUTPUT]\n", stderr);
        return 2;
    }
    GDALAllRegister();
    try {
        const QVector<Ring> rings = ringsOf(*dissolvedLand(argv[1]));
        write(rings, argc > 2 ? QFile::decodeName(argv[2]) : QStringLiteral(NIVORA_WORLD_MAP_OUTPUT));
        std::fprintf(stderr, "%d rings\n", static_cast<int>(rings.size()));
        return 0;
    } catch (const std::exception &e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
}
