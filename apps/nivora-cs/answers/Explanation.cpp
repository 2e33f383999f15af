#include "Explanation.h"

#include "NumbersText.h"

#include <coordsys/CoordSysFactory.h>
#include <coordsys/SystemInfo.h>

#include <QObject>

#include <algorithm>

using namespace nivora::cs;

namespace {

/// Null when one has no area or they have none in common.
QRectF commonArea(const QRectF &a, const QRectF &b)
{
    if (a.isNull() || b.isNull())
        return a.isNull() ? b : a;
    for (const double turn : {0.0, 360.0, -360.0})
        if (const QRectF common = a & b.translated(turn, 0.0); !common.isEmpty())
            return common;
    return a;
}

QPointF middleOf(const QRectF &area)
{
    const QPointF middle = area.center();
    return {middle.x() > 180.0 ? middle.x() - 360.0 : middle.x(), middle.y()};
}

QString hereText(const QPointF &middle)
{
    return QObject::tr("in the middle of the common area (%1)").arg(placeText(middle));
}

QRectF areaOf(const CoordSystemPtr &system) { return systemInfo(*system).area; }

/// Null where x, y and z are counted from the middle of the earth.
QRectF areaOf(const SpatialSystem &system)
{
    return system.horizontalWkt().isEmpty()
               ? QRectF()
               : areaOf(CoordSysFactory::defaultCoordSysFactory()->createFromWkt(system.horizontalWkt()));
}

/// A place of the earth as a point of the source, on the ellipsoid where that has heights.
std::optional<QPointF> pointAt(const CoordTransform &transform, const QPointF &lonLat)
{
    const CoordSystemPtr wgs84 = CoordSysFactory::defaultCoordSysFactory()->latLongWgs84CoordSystem();
    QPointF point;
    const bool ok = CoordTransform(wgs84, transform.sourceCoordSystem()).forward(lonLat, point);
    return ok ? std::make_optional(point) : std::nullopt;
}

std::optional<SpatialPoint> pointAt(const SpatialTransform &transform, const QPointF &lonLat)
{
    SpatialPoint point{lonLat.x(), lonLat.y(), 0.0, {}};
    const bool ok =
        SpatialTransform(SpatialSystem(QStringLiteral("EPSG:4326")), transform.source()).forward(point);
    return ok ? std::make_optional(point) : std::nullopt;
}

QPointF planeOf(const QPointF &point) { return point; }
QPointF planeOf(const SpatialPoint &point) { return {point.x, point.y}; }

bool isSame(const TransformOperation &a, const TransformOperation &b)
{
    return a.name == b.name && a.definition == b.definition;
}

/// Used at a place, which is given or the middle of an area.
template <typename Transform, typename Point>
void findHere(const Transform &transform, const QRectF &area, const std::optional<Point> &at,
              Explanation &result)
{
    std::optional<Point> place = at;
    if (at) {
        result.here = QObject::tr("at %1").arg(placeText(planeOf(*at)));
    } else if (!area.isNull()) {
        place = pointAt(transform, middleOf(area));
        result.here = hereText(middleOf(area));
    }
    const auto used = place ? transform.operationAt(*place) : std::nullopt;
    if (used)
        result.used << OperationTally::Use{*used, 0};
    else
        result.here.clear();
}

template <typename Transform, typename Point>
void explain(const Transform &transform, const QRectF &area, const std::optional<Point> &at,
             const OperationTally *tally, Explanation &result)
{
    if (tally && !tally->uses().isEmpty()) {
        result.used = tally->uses();
        result.here = QObject::tr("for the points of the input");
    } else {
        findHere(transform, area, at, result);
    }
    for (const TransformOperation &operation : transform.operations())
        if (std::none_of(result.used.begin(), result.used.end(),
                         [&](const OperationTally::Use &use) { return isSame(use.operation, operation); }))
            result.elsewhere << operation;
    result.offers = transform.gridOffers();
}

} // namespace

Explanation explained(const CoordTransform &transform, const std::optional<QPointF> &at,
                      const OperationTally *tally)
{
    Explanation result;
    result.systems = {transform.sourceCoordSystem(), transform.destinationCoordSystem()};
    result.isCopy = transform.isEqualsCS();
    result.hasEpoch = transform.epoch().has_value();
    if (!result.isCopy)
        explain(transform, commonArea(areaOf(result.systems.first()), areaOf(result.systems.last())), at,
                tally, result);
    return result;
}

Explanation explained(const SpatialTransform &transform, const std::optional<SpatialPoint> &at,
                      const OperationTally *tally, bool hasEpoch)
{
    Explanation result;
    result.hasEpoch = hasEpoch;
    result.heights = transform.transformsHeights()
                         ? transform.missingHeights()
                         : QObject::tr("heights are passed on: a system says nothing of them");
    explain(transform, commonArea(areaOf(transform.source()), areaOf(transform.destination())), at, tally,
            result);
    return result;
}
