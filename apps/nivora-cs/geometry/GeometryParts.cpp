#include "GeometryParts.h"

#include "LonLat.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double mostPieces = 4096.0; ///< of an edge, which is longer than the earth then

/// Adds vertices to a line so that none are farther apart; heights of new ones are in between.
void refineLine(OGRGeometryH line, double step)
{
    const Geometry copy(OGR_G_Clone(line));
    const bool hasHeights = OGR_G_Is3D(line) != 0;
    OGR_G_Empty(line);
    for (int i = 0; i < OGR_G_GetPointCount(copy.get()); ++i) {
        const QPointF a = pointAt(copy.get(), std::max(i - 1, 0));
        const QPointF d = pointAt(copy.get(), i) - a;
        const double heightA = OGR_G_GetZ(copy.get(), std::max(i - 1, 0));
        const double height = OGR_G_GetZ(copy.get(), i) - heightA;
        const double wanted = std::ceil(std::hypot(d.x(), d.y()) / step);
        const int pieces = static_cast<int>(std::clamp(wanted, 1.0, mostPieces));
        for (int j = i == 0 ? pieces : 1; j <= pieces; ++j) {
            const double share = static_cast<double>(j) / pieces;
            const QPointF place = j == pieces ? pointAt(copy.get(), i) : a + d * share;
            if (hasHeights)
                OGR_G_AddPoint(line, place.x(), place.y(), heightA + height * share);
            else
                OGR_G_AddPoint_2D(line, place.x(), place.y());
        }
    }
}

} // namespace

QPointF pointAt(OGRGeometryH line, int i) { return {OGR_G_GetX(line, i), OGR_G_GetY(line, i)}; }

void setPlace(OGRGeometryH line, int i, const QPointF &place)
{
    if (OGR_G_Is3D(line))
        OGR_G_SetPoint(line, i, place.x(), place.y(), OGR_G_GetZ(line, i));
    else
        OGR_G_SetPoint_2D(line, i, place.x(), place.y());
}

void shift(OGRGeometryH geometry, double degrees)
{
    for (int i = 0; i < OGR_G_GetGeometryCount(geometry); ++i)
        shift(OGR_G_GetGeometryRef(geometry, i), degrees);
    for (int i = 0; OGR_G_GetGeometryCount(geometry) == 0 && i < OGR_G_GetPointCount(geometry); ++i)
        setPlace(geometry, i, pointAt(geometry, i) + QPointF(degrees, 0.0));
}

void refine(OGRGeometryH geometry, double step)
{
    const int parts = OGR_G_GetGeometryCount(geometry);
    for (int i = 0; i < parts; ++i)
        refine(OGR_G_GetGeometryRef(geometry, i), step);
    if (parts == 0)
        refineLine(geometry, step);
}

/// The parts of a collection, or itself.
std::vector<OGRGeometryH> partsOf(OGRGeometryH geometry)
{
    std::vector<OGRGeometryH> parts;
    if (isLine(geometry) || isPolygon(geometry))
        return {geometry};
    const int count = OGR_G_GetGeometryCount(geometry);
    parts.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        parts.push_back(OGR_G_GetGeometryRef(geometry, i));
    return parts;
}

/// Lines or polygons together; null parts are none.
void addParts(OGRGeometryH geometry, OGRGeometryH all)
{
    const bool isArea = OGR_GT_Flatten(OGR_G_GetGeometryType(all)) == wkbMultiPolygon;
    for (OGRGeometryH part : partsOf(geometry))
        if (isLine(part) || isPolygon(part)) {
            if (isPolygon(part) == isArea)
                OGR_G_AddGeometry(all, part);
        } else {
            addParts(part, all);
        }
}

Geometry collectionFor(OGRGeometryH geometry)
{
    return Geometry(
        OGR_G_CreateGeometry(OGR_G_GetDimension(geometry) == 2 ? wkbMultiPolygon : wkbMultiLineString));
}

/// What crosses itself means what lies inside an odd number of times.
Geometry valid(Geometry geometry)
{
    if (OGR_G_GetDimension(geometry.get()) < 2 || OGR_G_IsValid(geometry.get()))
        return geometry;
    const Geometry made(OGR_G_MakeValid(geometry.get()));
    Geometry areas(OGR_G_CreateGeometry(wkbMultiPolygon));
    if (made)
        addParts(made.get(), areas.get());
    return areas;
}

/// Rounding leaves some where two edges run along each other.
void dropSlivers(OGRGeometryH geometry, double narrowest)
{
    for (int i = OGR_G_GetGeometryCount(geometry) - 1; i >= 0; --i) {
        OGRGeometryH part = OGR_G_GetGeometryRef(geometry, i);
        const bool isRing = isPolygon(geometry);
        OGRGeometryH outline = isPolygon(part) ? OGR_G_GetGeometryRef(part, 0) : part;
        const bool isNarrow =
            (isRing || isPolygon(part)) && OGR_G_Area(outline) < narrowest * OGR_G_Length(outline);
        if (isNarrow && !(isRing && i == 0)) // a shell goes with its polygon
            OGR_G_RemoveGeometry(geometry, i, TRUE);
        else
            dropSlivers(part, narrowest);
    }
}
