#include "CatalogueSource_p.h"
#include "CoordSysTexts_p.h"
#include "EllipsoidOperation_p.h"
#include "FitModel_p.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/MapHeaderCoordsysConverter.h>

#include <array>
#include <cmath>

namespace nivora::cs {
namespace {

constexpr double radian = 57.29577951308232; ///< degrees
constexpr double arcSeconds = 3600.0 * radian;
constexpr double millionths = 1e6;
constexpr int fullUserDatum = 9999;
/// What a point without heights counts as: height 0 above both ellipsoids, with a thousandth of the weight of
/// its place. The ellipsoids lie tens of metres apart where places are known to centimetres.
constexpr double weightOfNoHeight = 1e-3;

using Vector3 = std::array<double, 3>;
using Matrix3 = std::array<Vector3, 3>;

Vector3 operator-(const Vector3 &a, const Vector3 &b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
Vector3 operator+(const Vector3 &a, const Vector3 &b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
Vector3 operator*(const Matrix3 &m, const Vector3 &v)
{
    Vector3 r{};
    for (std::size_t i = 0; i < 3; ++i)
        r[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
    return r;
}

/// Longitude and latitude in degrees and height, and places counted from the centre of an ellipsoid.
class Geocentric
{
public:
    Geocentric(double semiMajorM, double inverseFlattening)
        : m_operation(QStringLiteral("+proj=cart"), semiMajorM, inverseFlattening)
    {}
    Vector3 place(const QPointF &lonLat, double heightM) const
    {
        return m_operation.forward({lonLat.x() / radian, lonLat.y() / radian, heightM});
    }
    /// Degrees, degrees, metres.
    Vector3 lonLatHeight(const Vector3 &place) const
    {
        const Vector3 v = m_operation.inverse(place);
        return {v[0] * radian, v[1] * radian, v[2]};
    }

private:
    EllipsoidOperation m_operation;
};

/// East, north and up at a place: rows of a rotation.
Matrix3 frameAt(const QPointF &lonLat)
{
    const double sinLon = std::sin(lonLat.x() / radian), cosLon = std::cos(lonLat.x() / radian);
    const double sinLat = std::sin(lonLat.y() / radian), cosLat = std::cos(lonLat.y() / radian);
    return {{{-sinLon, cosLon, 0.0},
             {-sinLat * cosLon, -sinLat * sinLon, cosLat},
             {cosLat * cosLon, cosLat * sinLon, sinLat}}};
}

/// The figures of EPSG's method 9606 (position vector), about the points' centre.
struct Figures
{
    Vector3 shift{};    ///< of the centre, metres
    Vector3 rotation{}; ///< radians
    double scale = 0.0; ///< less 1

    Matrix3 matrix() const
    {
        const double m = 1.0 + scale;
        return {{{m, -m * rotation[2], m * rotation[1]},
                 {m * rotation[2], m, -m * rotation[0]},
                 {-m * rotation[1], m * rotation[0], m}}};
    }
};

/// How the image of a place changes with the seven figures; \p d is counted from the centre.
std::array<Vector3, 7> slopesAt(const Figures &figures, const Vector3 &d)
{
    const double m = 1.0 + figures.scale;
    const Vector3 &r = figures.rotation;
    return {{{1, 0, 0},
             {0, 1, 0},
             {0, 0, 1},
             {0, -m * d[2], m * d[1]},
             {m * d[2], 0, -m * d[0]},
             {-m * d[1], m * d[0], 0},
             {d[0] - r[2] * d[1] + r[1] * d[2], r[2] * d[0] + d[1] - r[0] * d[2],
              -r[1] * d[0] + r[0] * d[1] + d[2]}}};
}

class DatumShiftModel : public FitModel
{
public:
    explicit DatumShiftModel(GroundPtr ground);

    QString refusal() const override { return m_refusal; }
    LinearRows rows() const override;
    void improve(const std::vector<double> &step) override;
    QVector<CalibrationParameter> parameters(std::vector<double> &derivatives) const override;
    bool image(const QPointF &local, QPointF &known) const override;
    std::vector<double> imageRows(const QPointF &local) const override;
    TABProjInfo_t record() const override;

private:
    bool prepare();
    bool localLonLat(const QPointF &local, QPointF &lonLat) const;
    double knownHeightM(const CalibrationPair &pair, const QPointF &plane) const;
    Vector3 moved(const Vector3 &place) const
    {
        return m_centre + m_figures.shift + m_figures.matrix() * (place - m_centre);
    }
    void appendRows(const Matrix3 &frame, const Vector3 &place, int count, double weight,
                    std::vector<double> &rows) const;
    Vector3 originShift() const { return m_centre + m_figures.shift - m_figures.matrix() * m_centre; }

    GroundPtr m_ground;
    QString m_refusal;
    CoordSystemPtr m_wgs84;
    std::unique_ptr<Geocentric> m_from, m_to;
    QVector<QPointF> m_lonLat; ///< of the known places on WGS 84
    std::vector<Vector3> m_places, m_targets;
    bool m_hasHeights = true;
    Vector3 m_centre{};
    Figures m_figures;
};

DatumShiftModel::DatumShiftModel(GroundPtr ground)
    : m_ground(std::move(ground))
{
    constexpr int fewestWithHeights = 3;
    constexpr int fewest = 4;
    if (m_ground->isPlan() || !m_ground->localSystem || m_ground->localSystem->isNonEarth()) {
        m_refusal = CoordSysTexts::tr("Для сдвига датума нужны эллипсоид и проекция местных координат");
        return;
    }
    for (const CalibrationPair &pair : m_ground->pairs)
        m_hasHeights =
            m_hasHeights &&
            (!pair.isUsed || (std::isfinite(pair.localHeightM) && std::isfinite(pair.knownHeightM)));
    m_refusal = refusalOfPoints(*m_ground, m_hasHeights ? fewestWithHeights : fewest, true);
    if (m_refusal.isEmpty() && !prepare())
        m_refusal = CoordSysTexts::tr("Точки лежат вне области проекции");
}

bool DatumShiftModel::localLonLat(const QPointF &local, QPointF &lonLat) const
{
    const CoordSystem &system = *m_ground->localSystem;
    lonLat = local;
    return system.isLatLong() || system.inverse(local, lonLat);
}

/// Above WGS 84; the shift of the known system's own text moves heights too.
double DatumShiftModel::knownHeightM(const CalibrationPair &pair, const QPointF &plane) const
{
    QPointF lonLat;
    const TABProjInfo_t &r = m_ground->baseRecord;
    if (!m_hasHeights || !std::isfinite(pair.knownHeightM) || !m_ground->base->inverse(plane, lonLat))
        return 0.0;
    Figures shift;
    shift.shift = {r.dDatumShiftX, r.dDatumShiftY, r.dDatumShiftZ};
    for (std::size_t i = 0; i < 3; ++i)
        shift.rotation[i] = -r.adDatumParams[i] / arcSeconds; // the record's sign is the other one
    shift.scale = r.adDatumParams[3] / millionths;
    const Geocentric own(m_ground->base->getSemiMajor(), m_ground->base->getInvFlattening());
    const Vector3 place = shift.shift + shift.matrix() * own.place(lonLat, pair.knownHeightM);
    return m_to->lonLatHeight(place)[2];
}

/// False when a point has no place on the earth.
bool DatumShiftModel::prepare()
{
    const auto catalogues = activeCatalogues();
    m_wgs84 = catalogues->latLongWgs84CoordSystem();
    m_from = std::make_unique<Geocentric>(m_ground->localSystem->getSemiMajor(),
                                          m_ground->localSystem->getInvFlattening());
    m_to = std::make_unique<Geocentric>(m_wgs84->getSemiMajor(), m_wgs84->getInvFlattening());
    const CoordTransform toWgs84(m_ground->known, m_wgs84);
    Vector3 sum{};
    for (int i = 0; i < m_ground->pairs.size(); ++i) {
        const CalibrationPair &pair = m_ground->pairs.at(i);
        QPointF local, known;
        if (!localLonLat(pair.local, local) || !toWgs84.forward(pair.known, known))
            return false;
        const double height = m_hasHeights && std::isfinite(pair.localHeightM) ? pair.localHeightM : 0.0;
        m_places.push_back(m_from->place(local, height));
        m_targets.push_back(m_to->place(known, knownHeightM(pair, m_ground->plane.at(i))));
        m_lonLat << known;
        if (pair.isUsed)
            sum = sum + m_places.back();
    }
    for (std::size_t i = 0; i < 3; ++i)
        m_centre[i] = sum[i] / m_ground->countUsed();
    return true;
}

void DatumShiftModel::appendRows(const Matrix3 &frame, const Vector3 &place, int count, double weight,
                                 std::vector<double> &rows) const
{
    const auto slopes = slopesAt(m_figures, place - m_centre);
    for (int i = 0; i < count; ++i)
        for (const Vector3 &slope : slopes)
            rows.push_back((frame * slope)[static_cast<std::size_t>(i)] * (i == 2 ? weight : 1.0));
}

LinearRows DatumShiftModel::rows() const
{
    LinearRows result;
    result.unknowns = 7;
    result.perPoint = 3;
    result.tested = m_hasHeights ? 3 : 2;
    const double weight = m_hasHeights ? 1.0 : weightOfNoHeight;
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        const Matrix3 frame = frameAt(m_lonLat.at(static_cast<int>(i)));
        appendRows(frame, m_places[i], 3, weight, result.design);
        const Vector3 left = frame * (m_targets[i] - moved(m_places[i]));
        result.observed.insert(result.observed.end(), {left[0], left[1], left[2] * weight});
    }
    return result;
}

void DatumShiftModel::improve(const std::vector<double> &step)
{
    for (std::size_t i = 0; i < 3; ++i) {
        m_figures.shift[i] += step[i];
        m_figures.rotation[i] += step[3 + i];
    }
    m_figures.scale += step[6];
}

QVector<CalibrationParameter> DatumShiftModel::parameters(std::vector<double> &derivatives) const
{
    const auto slopes = slopesAt(m_figures, m_centre);
    derivatives.assign(49, 0.0);
    for (std::size_t i = 0; i < 7; ++i)
        derivatives[i * 7 + i] = i < 3 ? 1.0 : i < 6 ? arcSeconds : millionths;
    for (std::size_t i = 0; i < 3; ++i) // the shift of the origin, not of the centre
        for (std::size_t j = 3; j < 7; ++j)
            derivatives[i * 7 + j] = -slopes[j][i];
    const Vector3 shift = originShift();
    const Vector3 &r = m_figures.rotation;
    const QString metre = QStringLiteral("m"), second = QStringLiteral("″");
    return {{QStringLiteral("dx"), metre, shift[0]},
            {QStringLiteral("dy"), metre, shift[1]},
            {QStringLiteral("dz"), metre, shift[2]},
            {QStringLiteral("rx"), second, r[0] * arcSeconds},
            {QStringLiteral("ry"), second, r[1] * arcSeconds},
            {QStringLiteral("rz"), second, r[2] * arcSeconds},
            {QStringLiteral("scale"), QStringLiteral("ppm"), m_figures.scale * millionths}};
}

bool DatumShiftModel::image(const QPointF &local, QPointF &known) const
{
    QPointF lonLat;
    if (!localLonLat(local, lonLat))
        return false;
    const Vector3 place = m_to->lonLatHeight(moved(m_from->place(lonLat, 0.0)));
    return converted(m_wgs84, m_ground->known, {place[0], place[1]}, known);
}

std::vector<double> DatumShiftModel::imageRows(const QPointF &local) const
{
    QPointF lonLat;
    std::vector<double> rows;
    if (localLonLat(local, lonLat))
        appendRows(frameAt(lonLat), m_from->place(lonLat, 0.0), 2, 1.0, rows);
    return rows;
}

TABProjInfo_t DatumShiftModel::record() const
{
    TABProjInfo_t record = MapHeaderCoordsysConverter().prjStrToTABProjInfo(m_ground->localSystem->prjStr());
    const Vector3 shift = originShift();
    record.nDatumId = fullUserDatum;
    record.dDatumShiftX = shift[0];
    record.dDatumShiftY = shift[1];
    record.dDatumShiftZ = shift[2];
    for (std::size_t i = 0; i < 3; ++i)
        record.adDatumParams[i] = -m_figures.rotation[i] * arcSeconds; // the record's sign is the other one
    record.adDatumParams[3] = m_figures.scale * millionths;
    return record;
}

} // namespace

std::unique_ptr<FitModel> makeDatumShiftModel(const GroundPtr &ground)
{
    return std::make_unique<DatumShiftModel>(ground);
}

} // namespace nivora::cs
