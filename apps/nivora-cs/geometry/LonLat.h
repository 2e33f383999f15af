#pragma once

#include <QPointF>

#include <ogr_api.h>

#include <cmath>

// Words of geometry on longitudes and latitudes, in degrees, x the longitude.

constexpr double halfTurn = 180.0;
constexpr double fullTurn = 360.0;
constexpr double poleLatitude = 90.0;
constexpr double degreeSlack = 1e-9; ///< a tenth of a millimetre

inline double wrapped(double degrees) { return degrees - fullTurn * std::round(degrees / fullTurn); }

inline bool isPole(const QPointF &place) { return std::fabs(place.y()) >= poleLatitude - degreeSlack; }

/// Whether an edge is longer than the other way around the earth. Along a pole all ways are the same.
inline bool isWideEdge(const QPointF &a, const QPointF &b)
{
    return std::fabs(b.x() - a.x()) > halfTurn + degreeSlack && !(isPole(a) && isPole(b));
}

inline bool isLine(OGRGeometryH geometry)
{
    return OGR_GT_Flatten(OGR_G_GetGeometryType(geometry)) == wkbLineString;
}
inline bool isPolygon(OGRGeometryH geometry)
{
    return OGR_GT_Flatten(OGR_G_GetGeometryType(geometry)) == wkbPolygon;
}
