#include "CrsJudge_p.h"

#include "CrsComparison_p.h"

#include <QMutexLocker>
#include <QTransform>
#include <QVector>

#include <cmath>

namespace nivora::cs {
namespace {

constexpr double planeToleranceM = 0.05;
constexpr double meridianToleranceDeg = 1e-8;

bool isEquivalent(const PJ *a, const PJ *b)
{
    return proj_is_equivalent_to_with_ctx(globalProjContext(), a, b,
                                          PJ_COMP_EQUIVALENT_EXCEPT_AXIS_ORDER_GEOGCRS) != 0;
}

/// Nine places of the area of use, the edges left out; degrees from Greenwich. Empty without an area.
QVector<QPointF> placesOf(const CrsDefinition &registered)
{
    const std::optional<QRectF> area = registered.areaOfUse();
    QVector<QPointF> places;
    if (!area)
        return places;
    for (const double across : {0.1, 0.5, 0.9})
        for (const double up : {0.1, 0.5, 0.9})
            places << QPointF(std::remainder(area->x() + across * area->width(), 360.0),
                              area->y() + up * area->height());
    return places;
}

/// Places without a value in either plane tell nothing; one at least must have both.
bool sendsAlike(const ProjOperation &own, const QTransform *affine, const ProjOperation &registered,
                const QVector<QPointF> &places, double tolerance)
{
    int compared = 0;
    for (const QPointF &place : places) {
        QPointF mine = place;
        QPointF theirs = place;
        const bool hasMine = transformPoint(own, PJ_FWD, mine);
        if (!transformPoint(registered, PJ_FWD, theirs) || !hasMine)
            continue;
        if (affine)
            mine = affine->map(mine);
        if (!isFinite(mine) || std::hypot(mine.x() - theirs.x(), mine.y() - theirs.y()) > tolerance)
            return false;
        ++compared;
    }
    return compared > 0;
}

bool isSameGeographic(const CrsDefinition &a, const CrsDefinition &b)
{
    PJ_CONTEXT *context = globalProjContext();
    return isSameEllipsoid(context, a.mapOriented(), b.mapOriented(), planeToleranceM) &&
           std::fabs(meridianDeg(context, a.mapOriented()) - meridianDeg(context, b.mapOriented())) <=
               meridianToleranceDeg;
}

} // namespace

bool sameHorizontalCrs(const CrsDefinitionPtr &a, const CrsDefinitionPtr &b)
{
    if (a == b || !a || !b)
        return true;
    const QMutexLocker lock(globalProj4Mutex());
    return !a->namesDatum() || !b->namesDatum() || isEquivalent(a->mapOriented(), b->mapOriented()) ||
           isEquivalent(b->mapOriented(), a->mapOriented());
}

bool hasPlaneOf(const CrsDefinition &system, const QTransform *affine, const CrsDefinition &registered)
{
    const QMutexLocker lock(globalProj4Mutex());
    if (!system.crs() || !registered.crs() || system.kind() != registered.kind())
        return false;
    if (!affine && isSamePlane(globalProjContext(), system.crs(), registered.crs()))
        return true;
    if (system.kind() == CrsKind::Geographic) // degrees at every border, whatever unit the definition has
        return !affine && isSameGeographic(system, registered);
    const auto own = system.plane();
    const auto theirs = registered.plane();
    const double unit = axisFactor(globalProjContext(), registered.crs());
    return own && theirs && unit > 0.0 &&
           sendsAlike(*own, affine, *theirs, placesOf(registered), planeToleranceM / unit);
}

} // namespace nivora::cs
