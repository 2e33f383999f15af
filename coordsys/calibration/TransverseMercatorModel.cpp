#include "CatalogueSource_p.h"
#include "CoordSysTexts_p.h"
#include "EllipsoidOperation_p.h"
#include "FitModel_p.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/MapHeaderCoordsysConverter.h>

#include <array>
#include <cmath>

namespace nivora::cs {
namespace {

constexpr double degree = 57.29577951308232; ///< of a radian
constexpr int transverseMercator = 8;        ///< MapInfo's number

/// The projection on an ellipsoid with a central meridian at 0, scale 1, no false origin. Radians and metres.
class UnitProjection
{
public:
    explicit UnitProjection(const CoordSystem &base)
        : m_operation(QStringLiteral("+proj=tmerc +lat_0=0 +lon_0=0 +k=1"), base.getSemiMajor(),
                      base.getInvFlattening())
    {}
    QPointF forward(double longitude, double latitude) const
    {
        const auto plane = m_operation.forward({longitude, latitude, 0.0});
        return {plane[0], plane[1]};
    }
    QPointF inverse(const QPointF &plane) const
    {
        const auto lonLat = m_operation.inverse({plane.x(), plane.y(), 0.0});
        return {lonLat[0], lonLat[1]};
    }

private:
    EllipsoidOperation m_operation;
};

QString outside() { return CoordSysTexts::tr("Точки лежат вне области проекции"); }

/// Unknowns: the meridian in radians, the scale (both divided by what makes their columns lengths), and the
/// local place of the points' centre in metres. The false origin follows from them.
class TransverseMercatorModel : public FitModel
{
public:
    explicit TransverseMercatorModel(GroundPtr ground);

    QString refusal() const override;
    LinearRows rows() const override;
    void improve(const std::vector<double> &step) override;
    QVector<CalibrationParameter> parameters(std::vector<double> &derivatives) const override;
    bool image(const QPointF &local, QPointF &known) const override;
    std::vector<double> imageRows(const QPointF &local) const override;
    TABProjInfo_t record() const override;

private:
    void guess();
    QPointF at(const QPointF &lonLatRad) const
    {
        return m_projection.forward(lonLatRad.x() - m_meridian, lonLatRad.y());
    }
    QPointF slopeAt(const QPointF &lonLatRad) const;
    /// The centre's slope and place, which all rows are counted from.
    struct Origin
    {
        QPointF slope;
        QPointF place;
    };
    Origin originOf() const { return {slopeAt(m_centre), at(m_centre)}; }
    std::array<double, 8> rowsAt(const QPointF &lonLatRad, const Origin &origin) const;
    QPointF falseOriginM() const { return m_place - at(m_centre) * m_scale; }

    GroundPtr m_ground;
    CoordSystemPtr m_zone; ///< null when the points have no place in one
    UnitProjection m_projection;
    QVector<QPointF> m_lonLat; ///< radians on the base's datum
    QPointF m_centre;          ///< radians
    QPointF m_place;           ///< of the centre in local coordinates, metres
    double m_meridian = 0.0;   ///< radians
    double m_scale = 1.0;
    QString m_refusal;
};

/// A system of the kind that the fit will make, so that known places come by the way that its points will go.
CoordSystemPtr zoneAbout(const CalibrationGround &ground)
{
    TABProjInfo_t record = ground.baseRecord;
    QPointF lonLat;
    if (!ground.plane.isEmpty() && !ground.base->inverse(ground.plane.first(), lonLat))
        return nullptr;
    const double figures[] = {std::round(lonLat.x() - record.adDatumParams[4]), 0.0, 1.0, 0.0, 0.0, 0.0};
    std::copy(std::begin(figures), std::end(figures), record.adProjParams);
    record.nProjId = transverseMercator;
    record.nUnitsId = LinearUnit::Meter;
    return activeCatalogues()->createWithoutDescription(
        MapHeaderCoordsysConverter().tabProjInfoToString(record));
}

TransverseMercatorModel::TransverseMercatorModel(GroundPtr ground)
    : m_ground(std::move(ground))
    , m_zone(zoneAbout(*m_ground))
    , m_projection(m_zone ? *m_zone : *m_ground->base)
{
    m_refusal = m_zone ? refusalOfPoints(*m_ground, 2, false) : outside();
    for (const CalibrationPair &pair : m_ground->pairs) {
        QPointF plane, lonLat;
        if (m_zone &&
            (!converted(m_ground->known, m_zone, pair.known, plane) || !m_zone->inverse(plane, lonLat)))
            m_refusal = outside();
        m_lonLat << lonLat / degree;
    }
    if (m_refusal.isEmpty())
        guess();
}

/// How the projection's coordinates change with the longitude of the place.
QPointF TransverseMercatorModel::slopeAt(const QPointF &lonLatRad) const
{
    constexpr double step = 1e-4;
    const double longitude = lonLatRad.x() - m_meridian;
    return (m_projection.forward(longitude + step, lonLatRad.y()) -
            m_projection.forward(longitude - step, lonLatRad.y())) /
           (2.0 * step);
}

/// A turn by the angle t is a meridian that lies t / sin(latitude) from the middle of the points.
void TransverseMercatorModel::guess()
{
    constexpr double leastSine = 0.05; // 3 degrees from the equator
    constexpr double farthestDeg = 30.0;
    std::vector<QPointF> local;
    for (const CalibrationPair &pair : m_ground->pairs)
        local.push_back(pair.local * m_ground->localUnitM);
    m_centre = centreOf(*m_ground, {m_lonLat.begin(), m_lonLat.end()});
    m_place = centreOf(*m_ground, local);
    m_meridian = m_centre.x();
    const QPointF origin = at(m_centre);
    double along = 0.0, across = 0.0, square = 0.0;
    for (int i = 0; i < m_lonLat.size(); ++i) {
        if (!m_ground->pairs.at(i).isUsed)
            continue;
        const QPointF from = at(m_lonLat.at(i)) - origin;
        const QPointF to = local[static_cast<std::size_t>(i)] - m_place;
        along += QPointF::dotProduct(from, to);
        across += from.x() * to.y() - from.y() * to.x();
        square += QPointF::dotProduct(from, from);
    }
    const double turn = std::atan2(across, along);
    const double sine = std::sin(m_centre.y());
    if (std::fabs(sine) < leastSine)
        m_refusal = CoordSysTexts::tr("У экватора осевой меридиан по точкам не находится");
    else if (!(std::fabs(turn / sine) * degree < farthestDeg))
        m_refusal =
            CoordSysTexts::tr("Система повёрнута на %1°: осевого меридиана с таким сближением рядом нет")
                .arg(QString::number(turn * degree, 'f', 3));
    else if (!(square > 0.0))
        m_refusal = CoordSysTexts::tr("Точки лежат в одном месте");
    m_meridian -= m_refusal.isEmpty() ? turn / sine : 0.0;
    m_scale = square > 0.0 ? std::hypot(along, across) / square : 1.0;
}

QString TransverseMercatorModel::refusal() const { return m_refusal; }

/// Of x then y.
std::array<double, 8> TransverseMercatorModel::rowsAt(const QPointF &lonLatRad, const Origin &origin) const
{
    const QPointF meridian = (slopeAt(lonLatRad) - origin.slope) * -m_scale;
    const QPointF scale = at(lonLatRad) - origin.place;
    return {meridian.x(), scale.x(), 1, 0, meridian.y(), scale.y(), 0, 1};
}

/// The signs are turned round, since what is left is told on the known side: known place less image.
LinearRows TransverseMercatorModel::rows() const
{
    LinearRows result;
    result.unknowns = 4;
    const Origin origin = originOf();
    for (int i = 0; i < m_lonLat.size(); ++i) {
        for (const double factor : rowsAt(m_lonLat.at(i), origin))
            result.design.push_back(-factor);
        const QPointF computed = (at(m_lonLat.at(i)) - origin.place) * m_scale + m_place;
        const QPointF left = computed - m_ground->pairs.at(i).local * m_ground->localUnitM;
        result.observed.push_back(left.x());
        result.observed.push_back(left.y());
    }
    return result;
}

void TransverseMercatorModel::improve(const std::vector<double> &step)
{
    m_meridian += step[0];
    m_scale += step[1];
    m_place += QPointF(step[2], step[3]);
}

QVector<CalibrationParameter> TransverseMercatorModel::parameters(std::vector<double> &derivatives) const
{
    const QPointF slope = slopeAt(m_centre) * m_scale;
    const QPointF plane = at(m_centre);
    derivatives = {degree, 0, 0, 0, 0, 1, 0, 0, slope.x(), -plane.x(), 1, 0, slope.y(), -plane.y(), 0, 1};
    const QPointF origin = falseOriginM();
    return {{QStringLiteral("meridian"), QStringLiteral("°"), m_meridian * degree},
            {QStringLiteral("scale"), {}, m_scale},
            {QStringLiteral("false easting"), QStringLiteral("m"), origin.x()},
            {QStringLiteral("false northing"), QStringLiteral("m"), origin.y()}};
}

bool TransverseMercatorModel::image(const QPointF &local, QPointF &known) const
{
    const QPointF unit = (local * m_ground->localUnitM - falseOriginM()) / m_scale;
    const QPointF lonLat = m_projection.inverse(unit) + QPointF(m_meridian, 0.0);
    QPointF plane;
    return m_zone->forward(lonLat * degree, plane) && converted(m_zone, m_ground->known, plane, known);
}

std::vector<double> TransverseMercatorModel::imageRows(const QPointF &local) const
{
    const QPointF unit = (local * m_ground->localUnitM - falseOriginM()) / m_scale;
    const QPointF lonLat = m_projection.inverse(unit) + QPointF(m_meridian, 0.0);
    const auto rows = rowsAt(lonLat, originOf());
    return {rows.begin(), rows.end()};
}

TABProjInfo_t TransverseMercatorModel::record() const
{
    TABProjInfo_t record = m_ground->baseRecord;
    const QPointF origin = falseOriginM() / m_ground->localUnitM;
    const double primeMeridian = record.adDatumParams[4];
    const double figures[] = {m_meridian * degree - primeMeridian, 0.0, m_scale, origin.x(), origin.y(), 0.0};
    std::copy(std::begin(figures), std::end(figures), record.adProjParams);
    record.nProjId = transverseMercator;
    record.nUnitsId = static_cast<std::uint8_t>(m_ground->localUnitCode);
    record.nAffineFlag = record.nBoundsFlag = 0;
    return record;
}

} // namespace

std::unique_ptr<FitModel> makeTransverseMercatorModel(const GroundPtr &ground)
{
    return std::make_unique<TransverseMercatorModel>(ground);
}

} // namespace nivora::cs
