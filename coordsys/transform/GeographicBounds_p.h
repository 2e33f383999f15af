#pragma once

#include <coordsys/GeographicBounds.h>

#include <QPointF>

#include <functional>

namespace nivora::cs {

/// One point into longitude/latitude or back; false when it has no image.
using PointConversion = std::function<bool(const QPointF &in, QPointF &out)>;

/// A rectangle of a plane and the ways between the plane and the earth.
struct PlanarArea
{
    QRectF rect;
    PointConversion toLonLat;
    PointConversion toPlane;
    /// The plane repeats itself along x after so much: 360 where its x is a longitude in degrees, else 0.
    double period = 0.0;
};

/// The meridians and parallels that enclose every point of the earth whose image lies in the rectangle. Such
/// points are found from both sides: a mesh over the rectangle is mapped to the earth (and back, since an
/// inverse also answers where the plane shows no earth), and a grid over the earth is mapped into the plane,
/// for rectangles far larger than the world and planes that show a place twice. Neighbours in either net
/// cover the longitudes between them; what remains between the outermost point found and the true extreme is
/// searched for in ever smaller steps. False when no point is found.
bool geographicBoundsOf(const PlanarArea &planar, GeographicBounds &out);

} // namespace nivora::cs
