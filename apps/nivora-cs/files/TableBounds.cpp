#include "TableBounds.h"

#include "TableSource.h"

#include <coordsys/CoordTransform.h>

#include <cmath>

using nivora::cs::CoordTransform;

namespace {

bool extentOf(OGRLayerH source, const GeometryChange &change, OGREnvelope &extent)
{
    if (!change.points)
        return OGR_L_GetExtent(source, &extent, TRUE) == OGRERR_NONE;
    const QRectF rect = extentOfPoints(source, *change.points);
    extent.MinX = rect.left();
    extent.MaxX = rect.right();
    extent.MinY = rect.top();
    extent.MaxY = rect.bottom();
    return std::isfinite(rect.left());
}

} // namespace

QRectF tableBounds(OGRLayerH source, const GeometryChange &change, const OutputLayer &layer)
{
    const QRectF world(-180.0, -90.0, 360.0, 180.0); // wider degrees would only make the steps longer
    OGREnvelope extent;
    const QRectF bounds =
        layer.system->isLatLong() && !layer.system->isRectSet() ? world : layer.mapInfo->bounds;
    if (layer.system->isRectSet() || !extentOf(source, change, extent))
        return bounds;
    const bool isPlan = layer.system->isNonEarth();
    const double size = std::hypot(extent.MaxX - extent.MinX, extent.MaxY - extent.MinY);
    const double margin = isPlan ? size + 1.0 : 1e-3 * size + 1e-6;
    const QRectF data = QRectF(QPointF(extent.MinX, extent.MinY), QPointF(extent.MaxX, extent.MaxY))
                            .adjusted(-margin, -margin, margin, margin);
    QRectF image = data;
    if (change.transform &&
        !change.transform->transform().forwardMesh(data, image, CoordTransform::DefaultAddPointsMesh))
        return bounds;
    return isPlan ? image : bounds.united(image); // of a plan they are a guess, far too wide for its steps
}
