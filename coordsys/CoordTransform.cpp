#include <coordsys/CoordTransform.h>

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemConversions.h>
#include <coordsys/GeographicBounds_p.h>
#include <coordsys/TransformMesh_p.h>
#include <platform/Logger.h>

#include <QObject>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace nivora::cs {

namespace {

/// Two codes of the database may have one PROJ text and still lie metres apart: PROJ decides.
bool haveDifferentCodes(const CoordSystem &from, const CoordSystem &to)
{
    return from.sourceType() == CoordSystem::Epsg && to.sourceType() == CoordSystem::Epsg &&
           from.epsg() != to.epsg();
}

bool areFinite(const QVector<QPointF> &points) { return std::all_of(points.begin(), points.end(), isFinite); }

} // namespace

struct CoordTransform::Impl
{
    Impl(const CoordSystemPtr &from, const CoordSystemPtr &to)
        : source(from)
        , destination(to)
    {
        if (!from)
            throw std::invalid_argument("cs_from");
        if (!to)
            throw std::invalid_argument("cs_to");
        isEqualsCS = !haveDifferentCodes(*from, *to) && from->isEqual(to, false);
        if (!isEqualsCS)
            queue = coordTransformCache().queueFor(from, to);
    }

    bool transform(bool forward, const QVector<QPointF> &in, QVector<QPointF> &out,
                   TransformInternalBase &strategy) const;
    bool transformPoint(bool forward, const QPointF &in, QPointF &out) const;
    bool transformRect(bool forward, const QRectF &in, QRectF &out) const;
    bool transformMesh(bool forward, const QRectF &in, QRectF &out, int addPoints) const;

    bool isEqualsCS = false;
    CoordSystemPtr source;
    CoordSystemPtr destination;
    TransformQueuePtr queue; ///< null for equal systems
    double time = HUGE_VAL;  ///< the epoch as PROJ is given it

private:
    void fill(TransformInternalBase &strategy, bool forward) const
    {
        strategy.source = forward ? source : destination;
        strategy.destination = forward ? destination : source;
        strategy.queue = queue.get();
        strategy.direction = forward ? 1 : -1;
        strategy.time = time;
    }
};

bool CoordTransform::Impl::transform(bool forward, const QVector<QPointF> &in, QVector<QPointF> &out,
                                     TransformInternalBase &strategy) const
{
    if (isEqualsCS) {
        if (!areFinite(in))
            return false;
        out = in;
        return true;
    }
    if (hasSingularAffine(source.get()) || hasSingularAffine(destination.get()))
        return false;
    fill(strategy, forward);
    out = tryConvertInverse(strategy.source, QPolygonF(in));
    QVector<QPointF> result;
    if (!strategy.transform(out, result))
        return false;
    result = tryConvertForward(strategy.destination, QPolygonF(result));
    if (!areFinite(result))
        return false;
    out = result;
    return true;
}

bool CoordTransform::Impl::transformPoint(bool forward, const QPointF &in, QPointF &out) const
{
    // The steps of transform() on the stack: a list of one point costs more than the engine.
    QPointF point = in;
    if (!isEqualsCS) {
        if (hasSingularAffine(source.get()) || hasSingularAffine(destination.get()))
            return false;
        point = tryConvertInverse(forward ? source.get() : destination.get(), in);
        if (!transformPoints(queue.get(), forward ? 1 : -1, &point, 1, time))
            return false;
        point = tryConvertForward(forward ? destination.get() : source.get(), point);
    }
    if (!isFinite(point))
        return false;
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
    TransformInternalCommon strategy;
    QVector<QPointF> corners;
    if (!transform(forward, rectToVector(in), corners, strategy))
        return false;
    out = rectOf(corners);
    return out.width() > 0.0 && out.height() > 0.0;
}

bool CoordTransform::Impl::transformMesh(bool forward, const QRectF &in, QRectF &out, int addPoints) const
{
    if (!(in.width() > 0.0 && in.height() > 0.0)) {
        LOG_DEBUG(QObject::tr("Пустой прямоугольник на входе %1").arg(nivora::utils::toString(in)));
        return false;
    }
    if (isEqualsCS) {
        if (!areFinite(rectToVector(in)))
            return false;
        out = in;
        return true;
    }
    TransformInternalMesh strategy(addPoints);
    QVector<QPointF> corners;
    if (!transform(forward, rectToVector(in), corners, strategy) || corners.size() < 4)
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

CoordTransform::CoordTransform(const CoordTransform &other)
    : CoordTransform(other.sourceCoordSystem(), other.destinationCoordSystem(), other.epoch())
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
    TransformInternalCommon strategy;
    return m_impl->transform(true, in, out, strategy);
}

bool CoordTransform::inverse(const QVector<QPointF> &in, QVector<QPointF> &out) const
{
    TransformInternalCommon strategy;
    return m_impl->transform(false, in, out, strategy);
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
        throw std::logic_error(QObject::tr("Ни одна из КС не является географической").toStdString());
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
    throw std::runtime_error(QObject::tr("Ошибка преобразования координат").toStdString());
}

QVector<QPointF> rectToVector(const QRectF &rect)
{
    const double x = rect.x();
    const double y = rect.y();
    const double w = rect.width();
    const double h = rect.height();
    return {{x, y}, {x + w, y}, {x + w, y + h}, {x, y + h}};
}

} // namespace nivora::cs
