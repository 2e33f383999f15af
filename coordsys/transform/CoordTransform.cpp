#include <coordsys/CoordTransform.h>

#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include "DirectedOperation_p.h"
#include "GeographicBounds_p.h"
#include "TransformAccess_p.h"
#include "TransformMesh_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemConversions.h>
#include <coordsys/ProjEngine.h>
#include <platform/Logger.h>

#include <QMutexLocker>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace nivora::cs {

namespace {

bool areFinite(const QVector<QPointF> &points) { return std::all_of(points.begin(), points.end(), isFinite); }

/// Under the PROJ lock, which guards PROJ's text. \p points are what a failed conversion left.
void reportFailure(int direction, const QPointF *points, std::size_t count)
{
    const QString way = direction == PJ_FWD ? CoordSysTexts::tr("прямого") : CoordSysTexts::tr("обратного");
    logTransformError(CoordSysTexts::tr("Ошибка %1 преобразования: %2").arg(way, projLastError()));
    const QPointF *bad = std::find_if_not(points, points + count, isFinite);
    if (bad != points + count)
        logTransformError(CoordSysTexts::tr("Преобразование координат не произведено. %2 (%3 %4)")
                              .arg(QString::number(bad - points), QString::number(bad->x(), 'g', -1),
                                   QString::number(bad->y(), 'g', -1)));
}

/// A list of the right length is written over as it is: resize() would fill a new one twice. \p out is spoilt
/// when a point fails, and not \p in.
bool convertList(const DirectedOperation &way, const TransformQueue &queue, const QVector<QPointF> &in,
                 QVector<QPointF> &out)
{
    const bool mustCopy = out.size() == in.size();
    if (!mustCopy)
        out = in;
    QPointF *const points = out.data(); // detaches
    const auto count = static_cast<std::size_t>(in.size());
    const QMutexLocker lock(globalProj4Mutex());
    if (way.convert(queue, mustCopy ? in.constData() : points, points, count, AtFailure::Stop))
        return true;
    reportFailure(way.direction, points, count);
    return false;
}

} // namespace

struct NIVORA_CS_NO_EXPORT CoordTransform::Impl
{
    Impl(const CoordSystemPtr &from, const CoordSystemPtr &to, const OperationChoice &wanted = {})
        : source(from)
        , destination(to)
        , choice(wanted)
    {
        if (!from)
            throw std::invalid_argument("cs_from");
        if (!to)
            throw std::invalid_argument("cs_to");
        CoordTransformCache::Route route = coordTransformCache().routeFor(from, to, choice);
        isEqualsCS = route.isEqual;
        queue = std::move(route.queue);
    }

    bool transformList(bool forward, const QVector<QPointF> &in, QVector<QPointF> &out) const;
    bool transformPoint(bool forward, const QPointF &in, QPointF &out) const;
    bool transformRect(bool forward, const QRectF &in, QRectF &out) const;
    bool transformMesh(bool forward, const QRectF &in, QRectF &out, int addPoints) const;

    bool isEqualsCS = false;
    CoordSystemPtr source;
    CoordSystemPtr destination;
    OperationChoice choice;
    TransformQueuePtr queue; ///< null for equal systems
    double time = HUGE_VAL;  ///< the epoch as PROJ is given it

private:
    const CoordSystem &from(bool forward) const { return forward ? *source : *destination; }
    DirectedOperation way(bool forward) const
    {
        return {AffineMap(from(forward)), AffineMap(from(!forward)), forward ? PJ_FWD : PJ_INV, time};
    }
};

bool CoordTransform::Impl::transformList(bool forward, const QVector<QPointF> &in,
                                         QVector<QPointF> &out) const
{
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): in may be out
    const QVector<QPointF> original = in;
    if (isEqualsCS) {
        if (!areFinite(original))
            return false;
        out = original;
        return true;
    }
    const DirectedOperation way = this->way(forward);
    if (way.isSingular())
        return false;
    if (convertList(way, *queue, original, out))
        return true;
    out = original;
    if (way.source.isActive())
        way.source.undo(out.data(), static_cast<std::size_t>(out.size()));
    return false;
}

bool CoordTransform::Impl::transformPoint(bool forward, const QPointF &in, QPointF &out) const
{
    QPointF point = in;
    if (isEqualsCS) {
        if (!isFinite(point))
            return false;
    } else {
        const DirectedOperation way = this->way(forward);
        if (way.isSingular())
            return false;
        const QMutexLocker lock(globalProj4Mutex());
        if (!way.convert(*queue, point)) {
            reportFailure(way.direction, &point, 1);
            return false;
        }
    }
    out = point;
    return true;
}

namespace {

QRectF rectOf(const QVector<QPointF> &corners)
{
    return coordsArrayToRect({corners[0].x(), corners[1].x(), corners[2].x(), corners[3].x()},
                             {corners[0].y(), corners[1].y(), corners[2].y(), corners[3].y()});
}

} // namespace

bool CoordTransform::Impl::transformRect(bool forward, const QRectF &in, QRectF &out) const
{
    QVector<QPointF> corners;
    if (!transformList(forward, rectToVector(in), corners))
        return false;
    out = rectOf(corners);
    return out.width() > 0.0 && out.height() > 0.0;
}

bool CoordTransform::Impl::transformMesh(bool forward, const QRectF &in, QRectF &out, int addPoints) const
{
    if (!(in.width() > 0.0 && in.height() > 0.0)) {
        LOG_DEBUG(CoordSysTexts::tr("Пустой прямоугольник на входе %1").arg(nivora::utils::toString(in)));
        return false;
    }
    if (isEqualsCS) {
        if (!areFinite(rectToVector(in)))
            return false;
        out = in;
        return true;
    }
    const DirectedOperation way = this->way(forward);
    QVector<QPointF> corners = rectToVector(in);
    if (way.isSingular())
        return false;
    way.source.undo(corners.data(), 4);
    if (!meshBounds({from(forward), *queue, way.direction, time, addPoints}, corners))
        return false;
    way.target.map(corners.data(), 4);
    if (!areFinite(corners))
        return false;
    out = rectOf(corners);
    return true;
}

CoordTransform::CoordTransform(const CoordSystemPtr &from, const CoordSystemPtr &to)
    : m_impl(std::make_unique<Impl>(from, to))
{}

CoordTransform::CoordTransform(const CoordSystemPtr &from, const CoordSystemPtr &to,
                               std::optional<double> epoch)
    : CoordTransform(from, to)
{
    setEpoch(epoch);
}

CoordTransform::CoordTransform(const CoordSystemPtr &from, const CoordSystemPtr &to,
                               const OperationChoice &choice, std::optional<double> epoch)
    : m_impl(std::make_unique<Impl>(from, to, choice))
{
    setEpoch(epoch);
}

CoordTransform::CoordTransform(const CoordTransform &other)
    : m_impl(std::make_unique<Impl>(*other.m_impl))
{}

CoordTransform &CoordTransform::operator=(const CoordTransform &other)
{
    if (this != &other)
        m_impl = std::move(CoordTransform(other).m_impl);
    return *this;
}

CoordTransform::~CoordTransform() = default;

bool CoordTransform::isEqualsCS() const { return m_impl->isEqualsCS; }

CoordSystemPtr CoordTransform::sourceCoordSystem() const { return m_impl->source; }

CoordSystemPtr CoordTransform::destinationCoordSystem() const { return m_impl->destination; }

void CoordTransform::setEpoch(std::optional<double> epoch)
{
    if (epoch && !std::isfinite(*epoch))
        throw std::invalid_argument("epoch");
    m_impl->time = epoch.value_or(HUGE_VAL);
}

OperationChoice CoordTransform::operationChoice() const { return m_impl->choice; }

std::optional<double> CoordTransform::epoch() const
{
    return std::isfinite(m_impl->time) ? std::make_optional(m_impl->time) : std::nullopt;
}

bool CoordTransform::forward(const QPointF &in, QPointF &out) const
{
    return m_impl->transformPoint(true, in, out);
}

bool CoordTransform::inverse(const QPointF &in, QPointF &out) const
{
    return m_impl->transformPoint(false, in, out);
}

bool CoordTransform::forward(const QVector<QPointF> &in, QVector<QPointF> &out) const
{
    return m_impl->transformList(true, in, out);
}

bool CoordTransform::inverse(const QVector<QPointF> &in, QVector<QPointF> &out) const
{
    return m_impl->transformList(false, in, out);
}

bool CoordTransform::forward(const QRectF &in, QRectF &out) const
{
    return m_impl->transformRect(true, in, out);
}

bool CoordTransform::inverse(const QRectF &in, QRectF &out) const
{
    return m_impl->transformRect(false, in, out);
}

bool CoordTransform::forwardMesh(const QRectF &in, QRectF &out, int addPoints) const
{
    return m_impl->transformMesh(true, in, out, addPoints);
}

bool CoordTransform::inverseMesh(const QRectF &in, QRectF &out, int addPoints) const
{
    return m_impl->transformMesh(false, in, out, addPoints);
}

bool CoordTransform::geographicBounds(const QRectF &planar, GeographicBounds &out) const
{
    const bool toDestination = m_impl->destination->isLatLong();
    if (!toDestination && !m_impl->source->isLatLong())
        throw std::logic_error(CoordSysTexts::tr("Ни одна из КС не является географической").toStdString());
    if (!(planar.width() > 0.0 && planar.height() > 0.0))
        return false;
    const auto way = [this](bool forward) {
        return [this, forward](const QPointF &in, QPointF &result) {
            return m_impl->transformPoint(forward, in, result);
        };
    };
    const CoordSystemPtr &plane = toDestination ? m_impl->source : m_impl->destination;
    const bool longitudes = plane->isLatLong() && !hasAffine(plane);
    return geographicBoundsOf({planar, way(toDestination), way(!toDestination), longitudes ? 360.0 : 0.0},
                              out);
}

void CoordTransform::throwTransformFailed()
{
    throwCoded<std::runtime_error>(Error::Code::PointFailed,
                                   CoordSysTexts::tr("Ошибка преобразования координат"));
}

TransformQueuePtr TransformAccess::queue(const CoordTransform &transform) { return transform.m_impl->queue; }

QVector<QPointF> rectToVector(const QRectF &rect)
{
    const double x = rect.x();
    const double y = rect.y();
    const double w = rect.width();
    const double h = rect.height();
    return {{x, y}, {x + w, y}, {x + w, y + h}, {x, y + h}};
}

} // namespace nivora::cs
