#include "TableBounds.h"

#include "TableSource.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/LinearUnit.h>

#include <algorithm>
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

/// A table has two billion steps: bounds of a continent and more are narrowed around the data, so that a step
/// is a millimetre.
QRectF fineBounds(const QRectF &bounds, const QRectF &image, double unitM)
{
    constexpr double steps = 2e9;
    constexpr double finestM = 1e-3;
    const double widest = steps * finestM / (unitM > 0.0 ? unitM : 1.0);
    if (std::max(bounds.width(), bounds.height()) <= widest)
        return bounds.united(image);
    QRectF around(0.0, 0.0, widest, widest);
    around.moveCenter(image.center());
    return (around & bounds).united(image);
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
    if (isPlan) // theirs are a guess, far too wide for the steps
        return image;
    return layer.system->isLatLong() ? bounds.united(image)
                                     : fineBounds(bounds, image, layer.system->unit().conversion());
}
