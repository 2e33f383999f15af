#include <coordsys/CoordSystemConversions.h>

#include <coordsys/CatalogueSource.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/ProjPoint_p.h>
#include <coordsys/ProjectionParamsManager.h>

#include <proj.h>

#include <QMutexLocker>
#include <QObject>
#include <QVarLengthArray>

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

using PointBuffer = QVarLengthArray<PJ_COORD, 256>; // small lists on the stack, a million points on the heap

/// NaN and infinities have none: normalizing turns an infinite negative extent into a positive one.
bool hasFiniteExtent(const QRectF &r)
{
    return std::isfinite(r.x()) && std::isfinite(r.y()) && std::isfinite(r.width()) &&
           std::isfinite(r.height()) && r.width() > 0.0 && r.height() > 0.0;
}

QRectF scaled(const QRectF &r, double factor)
{
    return {r.x() * factor, r.y() * factor, r.width() * factor, r.height() * factor};
}

/// Corners and edge midpoints of a rectangle, each coordinate mapped first.
std::array<PJ_COORD, 8> rectPjCoord(const QRectF &rect, const std::function<double(double)> &mapped)
{
    const double left = mapped(rect.x());
    const double top = mapped(rect.y());
    const double right = mapped(rect.x() + rect.width());
    const double bottom = mapped(rect.y() + rect.height());
    const double midX = 0.5 * (left + right);
    const double midY = 0.5 * (top + bottom);
    return {projPoint(left, top), projPoint(right, top),  projPoint(right, bottom), projPoint(left, bottom),
            projPoint(midX, top), projPoint(right, midY), projPoint(midX, bottom),  projPoint(left, midY)};
}

QRectF boundsOf(const std::array<PJ_COORD, 8> &points, const std::function<double(double)> &mapped)
{
    double minX = HUGE_VAL, minY = HUGE_VAL, maxX = -HUGE_VAL, maxY = -HUGE_VAL;
    for (const PJ_COORD &p : points) {
        const double x = mapped(p.xy.x);
        const double y = mapped(p.xy.y);
        minX = std::min(minX, x);
        maxX = std::max(maxX, x);
        minY = std::min(minY, y);
        maxY = std::max(maxY, y);
    }
    return {minX, minY, maxX - minX, maxY - minY};
}

double identity(double value) { return value; }

/// The engine's part of a rectangle's conversion; false, message built, when any of its points fails.
bool convertRect(PJ *pj, PJ_DIRECTION direction, const QRectF &in, QRectF &out)
{
    if (!pj)
        return false; // PROJ would give the input back
    const bool forward = direction == PJ_FWD;
    const std::function<double(double)> before = forward ? proj_torad : identity;
    const std::function<double(double)> after = forward ? identity : proj_todeg;
    std::array<PJ_COORD, 8> points = rectPjCoord(in, before);
    const QMutexLocker lock(globalProj4Mutex());
    const int error = proj_trans_array(pj, direction, points.size(), points.data());
    if (error != 0) {
        const QString message = forward ? QObject::tr("Ошибка прямого преобразования: %3")
                                        : QObject::tr("Ошибка обратного преобразования: %3");
        logTransformError(message.arg(QString::fromUtf8(proj_errno_string(error))));
        return false;
    }
    out = boundsOf(points, after);
    return true;
}

bool transArray(PJ *pj, PJ_DIRECTION direction, PointBuffer &points, const QString &message)
{
    if (!pj)
        return false; // PROJ would give the input back
    const QMutexLocker lock(globalProj4Mutex());
    const int error = proj_trans_array(pj, direction, static_cast<std::size_t>(points.size()), points.data());
    if (error != 0)
        logTransformError(message.arg(QString::fromUtf8(proj_errno_string(error))));
    return error == 0;
}

/// One point through the engine; false, message built from \p message and \p asked, when it fails.
bool transPoint(PJ *pj, PJ_DIRECTION direction, PJ_COORD &point, const char *message, const QPointF &asked)
{
    if (!pj)
        return false; // PROJ would give the input back
    const QMutexLocker lock(globalProj4Mutex());
    point = proj_trans(pj, direction, point);
    if (!isIncorrect(point))
        return true;
    logTransformError(QObject::tr(message).arg(QString::number(asked.x(), 'f', 6),
                                               QString::number(asked.y(), 'f', 6), projLastError()));
    return false;
}

} // namespace

bool CoordSystem::forward(const QPointF &lonLat, QPointF &out) const
{
    if (isLatLong()) {
        out = tryConvertForward(this, lonLat * DEGREES_TO_METERS);
        return true;
    }
    PJ_COORD point = projPoint(proj_torad(lonLat.x()), proj_torad(lonLat.y()));
    if (!transPoint(PJ_Proj4_Internal(), PJ_FWD, point,
                    QT_TRANSLATE_NOOP("QObject", "Ошибка прямого преобразования (%1, %2): %3"), lonLat))
        return false;
    out = tryConvertForward(this, QPointF(point.xy.x, point.xy.y));
    return true;
}

bool CoordSystem::inverse(const QPointF &planar, QPointF &out) const
{
    const QPointF p = tryConvertInverse(this, planar);
    if (isLatLong()) {
        out = p * METERS_TO_DEGREES;
        return true;
    }
    PJ_COORD point = projPoint(p.x(), p.y());
    if (!transPoint(PJ_Proj4_Internal(), PJ_INV, point,
                    QT_TRANSLATE_NOOP("QObject", "Ошибка обратного преобразования (%1, %2): %3"), planar))
        return false;
    out = QPointF(proj_todeg(point.lp.lam), proj_todeg(point.lp.phi));
    return true;
}

bool CoordSystem::forward(const QRectF &lonLat, QRectF &out) const
{
    if (isLatLong())
        out = scaled(lonLat, DEGREES_TO_METERS);
    else if (!convertRect(PJ_Proj4_Internal(), PJ_FWD, lonLat, out))
        return false;
    out = out.normalized();
    if (!hasFiniteExtent(out))
        return false;
    out = tryConvertForward(this, out);
    return true;
}

bool CoordSystem::inverse(const QRectF &planar, QRectF &out) const
{
    const QRectF rect = tryConvertInverse(this, planar);
    if (isLatLong())
        out = scaled(rect, METERS_TO_DEGREES);
    else if (!convertRect(PJ_Proj4_Internal(), PJ_INV, rect, out))
        return false;
    out = out.normalized();
    return hasFiniteExtent(out);
}

bool CoordSystem::forward(const QVector<QPointF> &lonLat, QVector<QPointF> &out) const
{
    QPolygonF result(lonLat.size());
    if (isLatLong()) {
        std::transform(lonLat.begin(), lonLat.end(), result.begin(),
                       [](const QPointF &p) { return p * DEGREES_TO_METERS; });
    } else {
        PointBuffer points(lonLat.size());
        std::transform(lonLat.begin(), lonLat.end(), points.begin(),
                       [](const QPointF &p) { return projPoint(proj_torad(p.x()), proj_torad(p.y())); });
        if (!transArray(PJ_Proj4_Internal(), PJ_FWD, points,
                        QObject::tr("Ошибка прямого преобразования: %1")))
            return false;
        std::transform(points.begin(), points.end(), result.begin(),
                       [](const PJ_COORD &c) { return QPointF(c.xy.x, c.xy.y); });
    }
    out = tryConvertForward(this, result);
    return true;
}

bool CoordSystem::inverse(const QVector<QPointF> &planar, QVector<QPointF> &out) const
{
    const QPolygonF in = tryConvertInverse(this, QPolygonF(planar));
    QVector<QPointF> result(in.size());
    if (isLatLong()) {
        std::transform(in.begin(), in.end(), result.begin(),
                       [](const QPointF &p) { return p * METERS_TO_DEGREES; });
    } else {
        PointBuffer points(in.size());
        std::transform(in.begin(), in.end(), points.begin(),
                       [](const QPointF &p) { return projPoint(p.x(), p.y()); });
        if (!transArray(PJ_Proj4_Internal(), PJ_INV, points,
                        QObject::tr("Ошибка обратного преобразования: %3")))
            return false;
        std::transform(points.begin(), points.end(), result.begin(),
                       [](const PJ_COORD &c) { return QPointF(proj_todeg(c.lp.lam), proj_todeg(c.lp.phi)); });
    }
    out = result;
    return true;
}

double CoordSystem::cartesianDistance(const QPointF &a, const QPointF &b) const
{
    const double scale = isLatLong() ? DEGREES_TO_METERS : 1.0;
    return std::hypot((b.x() - a.x()) * scale, (b.y() - a.y()) * scale);
}

double CoordSystem::sphericalDistance(const QPointF &a, const QPointF &b, bool *ok) const
{
    if (ok)
        *ok = false;
    QPointF first = a;
    QPointF second = b;
    if (!isLatLong()) {
        const auto failed = [](const char *message, const QPointF &p) {
            logTransformError(QObject::tr(message).arg(QString::number(p.x()), QString::number(p.y())));
            return 0.0;
        };
        if (!inverse(a, first))
            return failed(QT_TRANSLATE_NOOP("QObject", "Ошибка преобразования первой точки (%1, %2)"), a);
        if (!inverse(b, second))
            return failed(QT_TRANSLATE_NOOP("QObject", "Ошибка преобразования второй точки (%1, %2)"), b);
    }
    const QPointF p = pointToRad(first);
    const QPointF q = pointToRad(second);
    const double sinLat = std::sin((q.y() - p.y()) / 2.0);
    const double sinLon = std::sin((q.x() - p.x()) / 2.0);
    const double chord = sinLat * sinLat + std::cos(p.y()) * std::cos(q.y()) * sinLon * sinLon;
    if (ok)
        *ok = true;
    return 2.0 * EARTH_SPHERE_RADIUS * std::asin(std::sqrt(std::min(1.0, chord)));
}

} // namespace nivora::cs
