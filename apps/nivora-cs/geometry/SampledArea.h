#pragma once

#include <QPointF>

#include <ogr_api.h>

#include <functional>

/// How much of an area and of what lies around it is on the other side of the boundary in its image: 0 for
/// none, 1 for all. Looks at a few hundred places.
/// \param unwrapped polygons of longitudes that run on, in degrees.
/// \param imageOf the image of a place; false where there is none.
double shareOff(OGRGeometryH unwrapped, OGRGeometryH image,
                const std::function<bool(const QPointF &place, QPointF &image)> &imageOf);
