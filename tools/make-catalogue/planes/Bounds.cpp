#include "planes/Bounds.h"

#include "ProjectionTable_p.h"
#include "engines/Engine.h"

#include <algorithm>
#include <cmath>

namespace catalogue {

using nivora::cs::Cone;
using nivora::cs::EquidistantCylinder;
using nivora::cs::LongitudeLatitude;
using nivora::cs::Mercator;
using nivora::cs::Projection;
using nivora::cs::projectionByNumber;
using nivora::cs::RegionalMercator;

namespace {

constexpr double widest = 60.0;      // degrees of longitude: beyond it the edges no longer bound the plane
constexpr double widestCone = 180.0; // a cone bends its parallels evenly
constexpr double zoneMargin = 1.0;   // degrees of overlap that maps of a zone usually carry
constexpr double farAway = 1.0e8;    // lengths beyond it are the neighbourhood of a singular point
constexpr int edgeSteps = 20;

/// Cylinders, the world projections and the azimuthals: finite nearly everywhere, and the rule that the
/// library has for systems without bounds does not fit them (whole turns of longitude fold to nothing).
bool showsWorld(int projection)
{
    const Projection *const row = projectionByNumber(projection);
    return projection == EquidistantCylinder || (row && row->count() > 0 && !row->hasFalseOrigin());
}
bool isConic(int projection)
{
    const Projection *const row = projectionByNumber(projection);
    return row && row->cone != Cone::None;
}

struct ZoneRow
{
    int first, last; ///< codes of EPSG's conversions
    double half;     ///< width in degrees
};
/// A grid of zones has a range of codes. The plane alone does not tell: that of SWEREF99 TM is UTM's zone 33,
/// but is meant for all of Sweden.
constexpr ZoneRow zones[] = {
    {16001, 16060, 3.0}, {16101, 16160, 3.0}, // UTM, north and south
    {4648, 4648, 3.0},   {5647, 5648, 3.0},   // UTM with the zone's number in front
    {16201, 16260, 3.0}, {16301, 16360, 3.0}, // Gauss-Kruger, with and without the number
    {16261, 16299, 1.5}, {16361, 16399, 1.5}, // its zones of three degrees, likewise
    {16070, 16099, 1.5}, {16170, 16199, 1.5}, // those of Asia
    {16901, 16999, 1.5}, {17101, 17199, 1.5}, // those of GSK-2011
};

/// Half the width of a zone in degrees, 0 for a conversion that is no zone's.
double halfZone(int conversion)
{
    for (const ZoneRow &row : zones) {
        if (conversion >= row.first && conversion <= row.last)
            return row.half;
    }
    return 0.0;
}

/// An entry without a unit fits metres, and other units only by the figures of a false origin.
bool unitShows(const PlaneText &text)
{
    const QString zero = QStringLiteral("0");
    const int size = text.params.size();
    const bool falseOrigin = size >= 4 && (text.params[size - 2] != zero || text.params[size - 1] != zero);
    return text.unit == QLatin1String("7") || falseOrigin;
}

/// Outward to a tenth of the decade of the longer side.
QRectF rounded(const QRectF &r)
{
    const double span = std::max(r.width(), r.height());
    const double step = std::max(1.0, std::pow(10.0, std::floor(std::log10(span)) - 1.0));
    const QPointF low(std::floor(r.left() / step) * step, std::floor(r.top() / step) * step);
    const QPointF high(std::ceil(r.right() / step) * step, std::ceil(r.bottom() / step) * step);
    return QRectF(low, high);
}

} // namespace

PlaneText planeOf(const Entry &entry)
{
    QStringList tokens = entry.params.split(QStringLiteral(", "));
    PlaneText text;
    text.projection = tokens.takeFirst().toInt();
    const int datum = tokens.takeFirst().toInt();
    const int figures = datum == 999    ? 4
                        : datum == 9999 ? 9
                                        : 0; // ellipsoid, shifts, rotations, scale, meridian
    tokens = tokens.mid(figures);
    if (!tokens.isEmpty())
        text.unit = tokens.takeFirst();
    text.params = tokens;
    return text;
}

void BoundsTable::addArea(const Entry &entry, const EpsgSystem &system)
{
    const Area &area = system.area;
    double west = area.west;
    double east = area.unwrappedEast();
    const PlaneText text = planeOf(entry);
    if (const double half = halfZone(system.conversion); half > 0.0) {
        const double meridian = wrapped(text.params.value(0).toDouble(), (west + east) / 2.0);
        west = std::max(west, meridian - half - zoneMargin);
        east = std::min(east, meridian + half + zoneMargin);
    }
    const double width = east - west;
    if (width > widest && showsWorld(text.projection))
        return addWorld(entry);
    if (width > (isConic(text.projection) ? widestCone : widest))
        return;
    const double south = std::max(area.south, -89.5);
    const double north = std::min(area.north, 89.5);
    const auto srs = Srs::fromCoordSys(entry.coordSys());
    if (text.projection <= LongitudeLatitude || !(west < east) || !srs)
        return;
    const double offset = srs->primeMeridian();
    std::vector<QPointF> points;
    for (int i = 0; i <= edgeSteps; ++i) {
        const double lon = west + (east - west) * i / edgeSteps;
        const double lat = south + (north - south) * i / edgeSteps;
        for (const QPointF &p : {QPointF(lon, south), QPointF(lon, north),
                                 QPointF(lon, (south + north) / 2.0), QPointF(west, lat), QPointF(east, lat)})
            points.emplace_back(wrapped(p.x() - offset), p.y());
    }
    unite(entry, points);
}

void BoundsTable::addWorld(const Entry &entry)
{
    const PlaneText text = planeOf(entry);
    const double top =
        text.projection == Mercator || text.projection == RegionalMercator ? 85.05112878 : 89.999;
    const double meridian = text.params.value(0).toDouble();
    std::vector<QPointF> points;
    for (int column = -18; column <= 18; ++column)
        for (int row = -18; row <= 18; ++row)
            points.emplace_back(wrapped(meridian + column * 179.999 / 18.0), row * top / 18.0);
    unite(entry, points);
}

void BoundsTable::unite(const Entry &entry, const std::vector<QPointF> &degrees)
{
    const PlaneText text = planeOf(entry);
    const auto srs = Srs::fromCoordSys(entry.coordSys());
    if (!srs || !unitShows(text))
        return;
    double west = farAway, south = farAway, east = -farAway, north = -farAway;
    for (const QPointF &p : srs->plane(degrees)) {
        if (!(std::fabs(p.x()) < farAway && std::fabs(p.y()) < farAway))
            continue;
        west = std::min(west, p.x());
        east = std::max(east, p.x());
        south = std::min(south, p.y());
        north = std::max(north, p.y());
    }
    if (!(west < east && south < north))
        return;
    const QRectF rect(QPointF(west, south), QPointF(east, north));
    const QString key =
        QString::number(text.projection) + QLatin1Char(':') + text.params.join(QLatin1Char(','));
    const auto [place, isNew] = m_index.emplace(key, m_records.size());
    if (isNew)
        m_records.push_back({text.projection, text.params, rect});
    else
        m_records[place->second].rect |= rect;
}

std::vector<BoundsTable::Record> BoundsTable::records() const
{
    std::vector<Record> result = m_records;
    for (Record &record : result)
        record.rect = rounded(record.rect);
    return result;
}

} // namespace catalogue
