#include "TableBounds.h"

#include "TableSource.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/LinearUnit.h>

#include <algorithm>
#include <cmath>

using nivora::cs::CoordSystem;
using nivora::cs::CoordTransform;

namespace {

constexpr double steps = 2e9; ///< of a table, across and up
constexpr double coarsestM = 1e-3;

bool extentOf(OGRLayerH source, const GeometryChange &change, OGREnvelope &extent)
{
    if (!change.points && !change.extent)
        return OGR_L_GetExtent(source, &extent, TRUE) == OGRERR_NONE;
    const QRectF rect = change.extent ? *change.extent : extentOfPoints(source, *change.points);
    extent.MinX = rect.left();
    extent.MaxX = rect.right();
    extent.MinY = rect.top();
    extent.MaxY = rect.bottom();
    return std::isfinite(rect.left());
}

/// A table has two billion steps: bounds of a country and more are narrowed around the data, with room for
/// ten times as much, so that a step is a tenth of a millimetre for a district and at most a millimetre.
QRectF fineBounds(const QRectF &bounds, const QRectF &image, double unitM)
{
    constexpr double finestM = 1e-4;
    constexpr double room = 10.0;
    const double unit = unitM > 0.0 ? unitM : 1.0;
    const double wanted = room * std::max(image.width(), image.height());
    const double widest = std::clamp(wanted, steps * finestM / unit, steps * coarsestM / unit);
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

double roundingM(const OutputLayer &layer, const QVector<QPointF> &places)
{
    const QRectF &bounds = layer.bounds;
    const QPointF step(bounds.width() / steps, bounds.height() / steps);
    const double unitM =
        layer.system->isLatLong() ? CoordSystem::DEGREES_TO_METERS : layer.system->unit().conversion();
    const double allowed = coarsestM / (unitM > 0.0 ? unitM : 1.0);
    if (bounds.isEmpty() || !layer.system->isRectSet() || std::max(step.x(), step.y()) / 2.0 <= allowed)
        return 0.0;
    const auto off = [](double value, double from, double length) {
        return std::fabs(std::remainder(value - from, length));
    };
    double farthest = 0.0;
    for (const QPointF &place : places)
        if (std::isfinite(place.x()) && std::isfinite(place.y()))
            farthest = std::max(
                {farthest, off(place.x(), bounds.left(), step.x()), off(place.y(), bounds.top(), step.y())});
    const double most = std::max(step.x(), step.y()) / 2.0;
    return farthest > allowed ? most * (unitM > 0.0 ? unitM : 1.0) : 0.0;
}
