#include <coordsys/ShiftQuality.h>

#include <coordsys/CatalogueSource.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CrsParts_p.h>
#include <coordsys/ProjPoint_p.h>
#include <coordsys/RegisteredShift_p.h>
#include <coordsys/SearchContext_p.h>
#include <coordsys/TransformOperations_p.h>
#include <platform/Logger.h>

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

/// What PROJ knows the system's datum by; empty when there is nothing.
QString definitionOf(const CoordSystem &cs)
{
    const int epsg = cs.epsg();
    if (epsg > 0)
        return QStringLiteral("EPSG:%1").arg(epsg);
    return cs.sourceType() == CoordSystem::Wkt ? cs.sourceParameters().string : QString();
}

/// What stands for the system when its CoordSys string is all there is; empty when it has none.
QString definitionOfText(const CoordSystem &cs)
{
    try {
        return fixedProjString(activeCatalogues()->createWithoutDescription(cs.prjStr())->projStr(), true);
    } catch (const std::exception &e) {
        LOG_DEBUG(QString::fromUtf8(e.what()));
        return QString();
    }
}

bool holds(const QRectF &area, const QPointF &place)
{
    if (area.isNull())
        return true;
    const double west = area.x();
    const double east = area.x() + area.width();
    const bool within =
        area.width() < 0.0 ? place.x() >= west || place.x() <= east : place.x() >= west && place.x() <= east;
    return within && place.y() >= area.y() && place.y() <= area.y() + area.height();
}

/// The most accurate of the operations that fit at the place, the first of equal ones; null when none has an
/// accuracy.
template <typename Fits>
const TransformOperation *mostAccurate(const QVector<TransformOperation> &operations, const QPointF &place,
                                       Fits &&fits)
{
    const TransformOperation *best = nullptr;
    for (const TransformOperation &operation : operations)
        if (operation.accuracyM >= 0.0 && !operation.isBallpark && holds(operation.area, place) &&
            fits(operation) && (!best || operation.accuracyM < best->accuracyM))
            best = &operation;
    return best;
}

void readOperations(const QVector<TransformOperation> &operations, ShiftQuality &quality)
{
    const auto best = [&](auto &&fits) { return mostAccurate(operations, quality.place, fits); };
    if (const TransformOperation *used = best([](const TransformOperation &o) { return o.isUsable(); }))
        quality.operation = used->name;
    if (const TransformOperation *bare = best([](const TransformOperation &o) { return o.grids.isEmpty(); }))
        quality.accuracyM = bare->accuracyM;
    const TransformOperation *whole = best([](const TransformOperation &) { return true; });
    if (!whole)
        return;
    quality.accuracyWithGridsM = whole->accuracyM;
    for (const TransformGrid &grid : whole->grids)
        if (!grid.isAvailable)
            quality.missingGrids << grid.name;
}

} // namespace

std::optional<ShiftQuality> shiftQuality(const CoordSystem &cs)
{
    const QString definition = definitionOf(cs);
    const QString text = definition.isEmpty() ? QString() : definitionOfText(cs);
    const SearchContext context;
    const PjHandle whole = definition.isEmpty() ? nullptr : crsOf(context.get(), definition);
    const PjHandle crs = whole ? horizontalPart(context.get(), whole.get()) : nullptr;
    const PjHandle wgs84 = crsOf(context.get(), QStringLiteral("EPSG:4326"));
    ShiftQuality quality;
    if (!crs || !wgs84 || !middleOfArea(context.get(), crs.get(), quality.place))
        return std::nullopt;
    quality.definition = cs.epsg() > 0 ? definition : QString::fromUtf8(proj_get_name(crs.get()));
    const PjHandle base = baseOf(context.get(), crs.get());
    if (base)
        readOperations(operationsBetween(context.get(), base.get(), wgs84.get()), quality);
    const PjHandle textCrs = text.isEmpty() ? nullptr : crsOf(context.get(), text);
    if (textCrs)
        quality.textDistanceM = distanceBetweenShifts(context.get(), crs.get(), textCrs.get(), quality.place);
    return quality;
}

} // namespace nivora::cs
