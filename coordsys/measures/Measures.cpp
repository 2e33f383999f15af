#include <coordsys/Measures.h>

#include "CrsDefinition_p.h"
#include "CrsParts_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemConversions.h>

#include <geodesic.h>
#include <proj.h>

#include <QMutexLocker>
#include <QRegularExpression>
#include <QStringList>

#include <cmath>
#include <stdexcept>

namespace nivora::cs {
namespace {

/// The one step of a conversion that projects, without its prime meridian; empty when there is none or more.
/// Units and axes are left aside: proj_factors() of the whole gets feet, grads and northings wrong.
QString projectionStep(const QString &conversion)
{
    // "+proj=pipeline +step +proj=axisswap +order=2,1 +step +proj=unitconvert … +step +proj=utm +zone=37 …"
    static const QRegularExpression frame(
        QStringLiteral("\\+proj=(pipeline|axisswap|unitconvert|longlat|affine)\\b"));
    static const QRegularExpression aside(
        QStringLiteral("\\+(pm|units|to_meter|axis|towgs84|nadgrids|type)=\\S+|\\+inv\\b"));
    QStringList projecting;
    for (const QString &step : conversion.split(QStringLiteral("+step")))
        if (step.contains(QLatin1String("+proj=")) && !step.contains(frame))
            projecting << QString(step).remove(aside).simplified();
    return projecting.size() == 1 ? projecting.first() : QString();
}

/// The projection of a system, null for systems without one.
PjHandle projectionOf(const PJ *crs)
{
    PJ_CONTEXT *context = globalProjContext();
    const PjHandle plain = sourceOfBoundCrs(context, crs);
    const PjHandle conversion = ownPj(proj_crs_get_coordoperation(context, plain.get()));
    if (!conversion)
        return nullptr;
    const QString step =
        projectionStep(QString::fromUtf8(proj_as_proj_string(context, conversion.get(), PJ_PROJ_5, nullptr)));
    return step.isEmpty() ? nullptr : ownPj(proj_create(context, step.toUtf8().constData()));
}

/// Mercator's ordinate on the ellipsoid by its equatorial radius: J. P. Snyder, "Map Projections - A Working
/// Manual", USGS 1395, formula 7-7.
double isometricLatitude(double latitudeDeg, double eccentricity)
{
    const double s = std::sin(proj_torad(latitudeDeg));
    return std::atanh(s) - eccentricity * std::atanh(eccentricity * s);
}

double meridianLengthM(const geod_geodesic &ellipsoid, double fromDeg, double toDeg)
{
    double lengthM = 0.0;
    geod_inverse(&ellipsoid, fromDeg, 0.0, toDeg, 0.0, &lengthM, nullptr, nullptr);
    return std::copysign(lengthM, toDeg - fromDeg);
}

/// A straight line of Mercator's plane. Along a parallel the quotient of the two differences becomes the
/// radius of the parallel, which is the limit.
GeodesicLine rhumbBetween(const QPointF &a, const QPointF &b, const geod_geodesic &ellipsoid)
{
    constexpr double nearlyParallelDeg = 1e-7;
    const double eccentricity = std::sqrt(ellipsoid.f * (2.0 - ellipsoid.f));
    const double eastRad = proj_torad(std::remainder(b.x() - a.x(), 360.0));
    const double north = isometricLatitude(b.y(), eccentricity) - isometricLatitude(a.y(), eccentricity);
    GeodesicLine line;
    line.startAzimuthDeg = line.endAzimuthDeg = proj_todeg(std::atan2(eastRad, north));
    const double s = std::sin(proj_torad((a.y() + b.y()) / 2.0));
    const double parallelRadiusM =
        ellipsoid.a * std::sqrt(1.0 - s * s) / std::sqrt(1.0 - eccentricity * eccentricity * s * s);
    const double metresPerUnit = std::fabs(b.y() - a.y()) < nearlyParallelDeg
                                     ? parallelRadiusM
                                     : meridianLengthM(ellipsoid, a.y(), b.y()) / north;
    line.lengthM = metresPerUnit * std::hypot(eastRad, north);
    return line;
}

bool isOnEarth(const QPointF &lonLat) { return isFinite(lonLat) && std::fabs(lonLat.y()) <= 90.0; }

} // namespace

struct NIVORA_CS_NO_EXPORT Measures::Data
{
    explicit Data(const CoordSystemPtr &cs);
    std::optional<QPointF> lonLatOf(const QPointF &point) const;

    CoordSystemPtr system;
    bool hasEllipsoid = false;
    geod_geodesic ellipsoid = {};
    PjHandle projection; ///< under the PROJ lock; null when there are no factors
    double meridianDeg = 0.0;
};

Measures::Data::Data(const CoordSystemPtr &cs)
    : system(cs)
    , hasEllipsoid(!cs->isNonEarth())
{
    if (!hasEllipsoid)
        return;
    const double inverse = cs->getInvFlattening();
    geod_init(&ellipsoid, cs->getSemiMajor(), inverse == 0.0 ? 0.0 : 1.0 / inverse);
    const auto identity = CrsDefinition::of(cs->sourceParameters(), cs->copyOgrSpatialReference().get());
    if (!identity || identity->kind() != CrsKind::Projected)
        return;
    const QMutexLocker lock(globalProj4Mutex());
    projection = projectionOf(identity->crs());
    meridianDeg = cs::meridianDeg(globalProjContext(), identity->crs());
}

std::optional<QPointF> Measures::Data::lonLatOf(const QPointF &point) const
{
    if (!hasEllipsoid || hasSingularAffine(system.get()))
        return std::nullopt;
    QPointF lonLat = tryConvertInverse(system.get(), point);
    if (!system->isLatLong() && !system->inverse(point, lonLat))
        return std::nullopt;
    return isOnEarth(lonLat) ? std::make_optional(lonLat) : std::nullopt;
}

Measures::Measures(const CoordSystemPtr &system)
{
    if (!system)
        throw std::invalid_argument("system");
    m_data = std::make_shared<Data>(system);
}

std::optional<QPointF> Measures::lonLat(const QPointF &point) const { return m_data->lonLatOf(point); }

std::optional<PlaneFactors> Measures::factorsAt(const QPointF &point) const
{
    const std::optional<QPointF> lonLat = m_data->lonLatOf(point);
    if (!lonLat || !m_data->projection)
        return std::nullopt;
    const QMutexLocker lock(globalProj4Mutex());
    PJ *projection = m_data->projection.get();
    proj_errno_reset(projection);
    const PJ_FACTORS f = proj_factors(projection, proj_coord(proj_torad(lonLat->x() - m_data->meridianDeg),
                                                             proj_torad(lonLat->y()), 0.0, HUGE_VAL));
    if (proj_errno(projection) != 0 || !(f.areal_scale > 0.0) || !std::isfinite(f.areal_scale))
        return std::nullopt;
    return PlaneFactors{f.meridional_scale, f.parallel_scale, f.areal_scale,
                        proj_todeg(f.meridian_convergence), proj_todeg(f.angular_distortion)};
}

std::optional<GeodesicLine> Measures::line(const QPointF &from, const QPointF &to) const
{
    const std::optional<QPointF> a = m_data->lonLatOf(from);
    const std::optional<QPointF> b = m_data->lonLatOf(to);
    if (!a || !b)
        return std::nullopt;
    GeodesicLine line;
    geod_inverse(&m_data->ellipsoid, a->y(), a->x(), b->y(), b->x(), &line.lengthM, &line.startAzimuthDeg,
                 &line.endAzimuthDeg);
    return line;
}

std::optional<GeodesicLine> Measures::rhumbLine(const QPointF &from, const QPointF &to) const
{
    const std::optional<QPointF> a = m_data->lonLatOf(from);
    const std::optional<QPointF> b = m_data->lonLatOf(to);
    if (!a || !b || std::fabs(a->y()) == 90.0 || std::fabs(b->y()) == 90.0)
        return std::nullopt;
    return rhumbBetween(*a, *b, m_data->ellipsoid);
}

std::optional<double> Measures::lengthM(const QVector<QPointF> &points) const
{
    double sumM = 0.0;
    for (int i = 1; i < points.size(); ++i) {
        const std::optional<GeodesicLine> part = line(points.at(i - 1), points.at(i));
        if (!part)
            return std::nullopt;
        sumM += part->lengthM;
    }
    return sumM;
}

std::optional<GeodesicPolygon> Measures::polygon(const QVector<QPointF> &points) const
{
    if (points.size() < 3)
        return std::nullopt;
    geod_polygon ring;
    geod_polygon_init(&ring, 0);
    for (const QPointF &point : points) {
        const std::optional<QPointF> lonLat = m_data->lonLatOf(point);
        if (!lonLat)
            return std::nullopt;
        geod_polygon_addpoint(&m_data->ellipsoid, &ring, lonLat->y(), lonLat->x());
    }
    GeodesicPolygon result;
    double signedM2 = 0.0; // counter-clockwise is positive
    geod_polygon_compute(&m_data->ellipsoid, &ring, 0, 1, &signedM2, &result.perimeterM);
    result.areaM2 = std::fabs(signedM2);
    result.isClockwise = signedM2 < 0.0;
    return result;
}

} // namespace nivora::cs
