#include "Explanation.h"

#include "NumbersText.h"

#include <coordsys/CoordSysFactory.h>
#include <coordsys/SystemInfo.h>

#include <QObject>

#include <algorithm>

using nivora::cs::CoordSysFactory;
using nivora::cs::CoordSystemPtr;
using nivora::cs::CoordTransform;
using nivora::cs::OperationTally;
using nivora::cs::TransformOperation;

namespace {

/// Null when one has no area or they have none in common.
QRectF commonArea(const CoordTransform &transform)
{
    const QRectF a = systemInfo(*transform.sourceCoordSystem()).area;
    const QRectF b = systemInfo(*transform.destinationCoordSystem()).area;
    if (a.isNull() || b.isNull())
        return a.isNull() ? b : a;
    for (const double turn : {0.0, 360.0, -360.0})
        if (const QRectF common = a & b.translated(turn, 0.0); !common.isEmpty())
            return common;
    return a;
}

/// A place of the earth as a point of the source.
std::optional<QPointF> pointAt(const CoordTransform &transform, const QPointF &lonLat)
{
    const CoordSystemPtr wgs84 = CoordSysFactory::defaultCoordSysFactory()->latLongWgs84CoordSystem();
    QPointF point;
    const bool ok = CoordTransform(wgs84, transform.sourceCoordSystem()).forward(lonLat, point);
    return ok ? std::make_optional(point) : std::nullopt;
}

bool isSame(const TransformOperation &a, const TransformOperation &b)
{
    return a.name == b.name && a.definition == b.definition;
}

void findHere(Explanation &result, const std::optional<QPointF> &at)
{
    std::optional<QPointF> place = at;
    if (at) {
        result.here = QObject::tr("at %1").arg(placeText(*at));
    } else if (const QRectF area = commonArea(result.transform); !area.isNull()) {
        QPointF middle = area.center();
        middle.setX(middle.x() > 180.0 ? middle.x() - 360.0 : middle.x());
        place = pointAt(result.transform, middle);
        result.here = QObject::tr("in the middle of the common area (%1)").arg(placeText(middle));
    }
    const auto used = place ? result.transform.operationAt(*place) : std::nullopt;
    if (used)
        result.used << OperationTally::Use{*used, 0};
    else
        result.here.clear();
}

} // namespace

Explanation explained(const CoordTransform &transform, const std::optional<QPointF> &at,
                      const OperationTally *tally)
{
    Explanation result{transform, {}, {}, {}, {}};
    if (transform.isEqualsCS())
        return result;
    if (tally && !tally->uses().isEmpty()) {
        result.used = tally->uses();
        result.here = QObject::tr("for the points of the input");
    } else {
        findHere(result, at);
    }
    for (const TransformOperation &operation : transform.operations())
        if (std::none_of(result.used.begin(), result.used.end(),
                         [&](const OperationTally::Use &use) { return isSame(use.operation, operation); }))
            result.elsewhere << operation;
    result.offers = transform.gridOffers();
    return result;
}
