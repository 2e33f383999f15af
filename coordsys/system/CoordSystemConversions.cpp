#include <coordsys/CoordSystemConversions.h>

#include "AffineMap_p.h"
#include "CoordSysTexts_p.h"
#include "CoordSystem_p.h"
#include "ProjOperation_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/ProjectionParamsManager.h>

#include <proj.h>

#include <QMutexLocker>

#include <algorithm>
#include <cmath>

namespace nivora::cs {

bool hasAffine(const CoordSystem *cs) { return cs->affineTransform() != nullptr; }
bool hasAffine(const CoordSystemPtr &cs) { return hasAffine(cs.get()); }

bool isSingularAffine(const QTransform &affine)
{
    const double rowX = std::fabs(affine.m11()) + std::fabs(affine.m21());
    const double rowY = std::fabs(affine.m12()) + std::fabs(affine.m22());
    if (!std::isfinite(rowX) || !std::isfinite(rowY) || !std::isfinite(affine.dx()) ||
        !std::isfinite(affine.dy()))
        return true;
    // Row by row, so that neither 1e-200 nor 1e200 leaves the range of a double; a zero row gives NaN.
    const double determinant =
        affine.m11() / rowX * (affine.m22() / rowY) - affine.m21() / rowX * (affine.m12() / rowY);
    return !(std::fabs(determinant) > 1e-12);
}

bool hasSingularAffine(const CoordSystem *cs)
{
    return hasAffine(cs) && isSingularAffine(*cs->affineTransform());
}

QPointF tryConvertForward(const CoordSystem *cs, const QPointF &point)
{
    return hasAffine(cs) ? cs->affineTransform()->map(point) : point;
}
QRectF tryConvertForward(const CoordSystem *cs, const QRectF &rect)
{
    return hasAffine(cs) ? cs->affineTransform()->mapRect(rect) : rect;
}
QPolygonF tryConvertForward(const CoordSystem *cs, const QPolygonF &polygon)
{
    return hasAffine(cs) ? cs->affineTransform()->map(polygon) : polygon;
}
QPointF tryConvertForward(const CoordSystemPtr &cs, const QPointF &point)
{
    return tryConvertForward(cs.get(), point);
}
QRectF tryConvertForward(const CoordSystemPtr &cs, const QRectF &rect)
{
    return tryConvertForward(cs.get(), rect);
}
QPolygonF tryConvertForward(const CoordSystemPtr &cs, const QPolygonF &polygon)
{
    return tryConvertForward(cs.get(), polygon);
}

QPointF tryConvertInverse(const CoordSystem *cs, const QPointF &point)
{
    return hasAffine(cs) ? cs->affineTransform()->inverted().map(point) : point;
}
QRectF tryConvertInverse(const CoordSystem *cs, const QRectF &rect)
{
    return hasAffine(cs) ? cs->affineTransform()->inverted().mapRect(rect) : rect;
}
QPolygonF tryConvertInverse(const CoordSystem *cs, const QPolygonF &polygon)
{
    return hasAffine(cs) ? cs->affineTransform()->inverted().map(polygon) : polygon;
}
QPointF tryConvertInverse(const CoordSystemPtr &cs, const QPointF &point)
{
    return tryConvertInverse(cs.get(), point);
}
QRectF tryConvertInverse(const CoordSystemPtr &cs, const QRectF &rect)
{
    return tryConvertInverse(cs.get(), rect);
}
QPolygonF tryConvertInverse(const CoordSystemPtr &cs, const QPolygonF &polygon)
{
    return tryConvertInverse(cs.get(), polygon);
}

QList<LinearUnit> getUnits(CoordSystem *cs)
{
    if (!cs)
        return {};
    const auto manager = activeCatalogues()->projectionParamsManager();
    if (!cs->isLatLong())
        return manager->distanceUnits();
    const MIUnitConvParam *degree = manager->unitByID(LinearUnit::Degree, std::nothrow);
    return degree ? QList<LinearUnit>{*degree} : QList<LinearUnit>();
}

QStringList getUnitsDescriptions(CoordSystem *cs)
{
    QStringList descriptions;
    const QList<LinearUnit> units = getUnits(cs);
    for (const LinearUnit &unit : units)
        descriptions << unit.description();
    return descriptions;
}

LinearUnit findUnitByName(CoordSystem &, const QString &name)
{
    const MIUnitConvParam *unit =
        activeCatalogues()->projectionParamsManager()->unitByName(name, std::nothrow);
    return unit ? LinearUnit(*unit) : LinearUnit();
}

namespace {

bool hasFiniteExtent(const QRectF &r)
{
    return std::isfinite(r.x()) && std::isfinite(r.y()) && std::isfinite(r.width()) &&
           std::isfinite(r.height()) && r.width() > 0.0 && r.height() > 0.0;
}

QRectF scaled(const QRectF &r, double factor)
{
    return {r.x() * factor, r.y() * factor, r.width() * factor, r.height() * factor};
}

/// Corners and edge midpoints of a rectangle.
std::array<QPointF, 8> samplesOf(const QRectF &r)
{
    const double midX = 0.5 * (r.left() + r.right());
    const double midY = 0.5 * (r.top() + r.bottom());
    return {r.topLeft(),
            r.topRight(),
            r.bottomRight(),
            r.bottomLeft(),
            QPointF(midX, r.top()),
            QPointF(r.right(), midY),
            QPointF(midX, r.bottom()),
            QPointF(r.left(), midY)};
}

QRectF boundsOf(const std::array<QPointF, 8> &points)
{
    double minX = HUGE_VAL, minY = HUGE_VAL, maxX = -HUGE_VAL, maxY = -HUGE_VAL;
    for (const QPointF &p : points) {
        minX = std::min(minX, p.x());
        maxX = std::max(maxX, p.x());
        minY = std::min(minY, p.y());
        maxY = std::max(maxY, p.y());
    }
    return {minX, minY, maxX - minX, maxY - minY};
}

void reportFailure(int direction, const QPointF &asked)
{
    const QString message = direction == PJ_FWD
                                ? CoordSysTexts::tr("Ошибка прямого преобразования (%1, %2): %3")
                                : CoordSysTexts::tr("Ошибка обратного преобразования (%1, %2): %3");
    logTransformError(
        message.arg(QString::number(asked.x(), 'f', 6), QString::number(asked.y(), 'f', 6), projLastError()));
}

} // namespace

/// Between longitude/latitude and the projection's plane, the affine transformation left aside.
bool CoordSystemPrivate::convertPoints(int direction, QPointF *points, std::size_t count) const
{
    if (isLatLong()) {
        const double factor = direction == PJ_FWD ? DEGREES_TO_METERS : METERS_TO_DEGREES;
        std::for_each(points, points + count, [factor](QPointF &p) { p *= factor; });
        return std::all_of(points, points + count, isFinite);
    }
    const ProjOperation *const converting = plane().get();
    if (!converting)
        return false;
    const QPointF asked = count > 0 ? points[0] : QPointF();
    const QMutexLocker lock(globalProj4Mutex());
    if (count == 1 ? transformPoint(*converting, direction, *points)
                   : transformPoints(*converting, direction, points, count))
        return true;
    reportFailure(direction, asked);
    return false;
}

bool CoordSystem::forward(const QPointF &lonLat, QPointF &out) const
{
    const AffineMap affine(*this);
    QPointF point = lonLat;
    if (affine.isSingular() || !d->convertPoints(PJ_FWD, &point, 1))
        return false;
    affine.map(&point, 1);
    if (!isFinite(point))
        return false;
    out = point;
    return true;
}

bool CoordSystem::inverse(const QPointF &planar, QPointF &out) const
{
    const AffineMap affine(*this);
    QPointF point = planar;
    affine.undo(&point, 1);
    if (affine.isSingular() || !d->convertPoints(PJ_INV, &point, 1))
        return false;
    out = point;
    return true;
}

bool CoordSystemPrivate::convertRect(int direction, const QRectF &in, QRectF &out) const
{
    if (isLatLong()) {
        out = scaled(in, direction == PJ_FWD ? DEGREES_TO_METERS : METERS_TO_DEGREES).normalized();
        return hasFiniteExtent(out);
    }
    std::array<QPointF, 8> points = samplesOf(in);
    if (!convertPoints(direction, points.data(), points.size()))
        return false;
    out = boundsOf(points).normalized();
    return hasFiniteExtent(out);
}

bool CoordSystem::forward(const QRectF &lonLat, QRectF &out) const
{
    const AffineMap affine(*this);
    if (affine.isSingular() || !d->convertRect(PJ_FWD, lonLat, out))
        return false;
    out = affine.map(out);
    return hasFiniteExtent(out);
}

bool CoordSystem::inverse(const QRectF &planar, QRectF &out) const
{
    const AffineMap affine(*this);
    return !affine.isSingular() && d->convertRect(PJ_INV, affine.undo(planar), out);
}

bool CoordSystem::forward(const QVector<QPointF> &lonLat, QVector<QPointF> &out) const
{
    const AffineMap affine(*this);
    QVector<QPointF> points = lonLat;
    const auto count = static_cast<std::size_t>(points.size());
    if (affine.isSingular() || !d->convertPoints(PJ_FWD, points.data(), count))
        return false;
    affine.map(points.data(), count);
    if (!std::all_of(points.cbegin(), points.cend(), isFinite))
        return false;
    out = points;
    return true;
}

bool CoordSystem::inverse(const QVector<QPointF> &planar, QVector<QPointF> &out) const
{
    const AffineMap affine(*this);
    QVector<QPointF> points = planar;
    const auto count = static_cast<std::size_t>(points.size());
    affine.undo(points.data(), count);
    if (affine.isSingular() || !d->convertPoints(PJ_INV, points.data(), count))
        return false;
    out = points;
    return true;
}

double CoordSystem::cartesianDistance(const QPointF &a, const QPointF &b) const
{
    const double scale = d->isLatLong() ? DEGREES_TO_METERS : 1.0;
    return std::hypot((b.x() - a.x()) * scale, (b.y() - a.y()) * scale);
}

double CoordSystem::sphericalDistance(const QPointF &a, const QPointF &b, bool *ok) const
{
    if (ok)
        *ok = false;
    QPointF first = a;
    QPointF second = b;
    if (!d->isLatLong()) {
        const auto failed = [](const char *message, const QPointF &p) {
            logTransformError(CoordSysTexts::tr(message).arg(QString::number(p.x()), QString::number(p.y())));
            return 0.0;
        };
        if (!inverse(a, first))
            return failed(QT_TRANSLATE_NOOP("CoordSysTexts", "Ошибка преобразования первой точки (%1, %2)"),
                          a);
        if (!inverse(b, second))
            return failed(QT_TRANSLATE_NOOP("CoordSysTexts", "Ошибка преобразования второй точки (%1, %2)"),
                          b);
    }
    const QPointF p = pointToRad(first);
    const QPointF q = pointToRad(second);
    const double sinLat = std::sin((q.y() - p.y()) / 2.0);
    const double sinLon = std::sin((q.x() - p.x()) / 2.0);
    const double chord = sinLat * sinLat + std::cos(p.y()) * std::cos(q.y()) * sinLon * sinLon;
    const double distanceM = 2.0 * EARTH_SPHERE_RADIUS * std::asin(std::sqrt(std::min(chord, 1.0)));
    if (!std::isfinite(distanceM))
        return 0.0;
    if (ok)
        *ok = true;
    return distanceM;
}

} // namespace nivora::cs
