#include "FitModel_p.h"

#include "CoordSysTexts_p.h"

#include <cmath>
#include <stdexcept>

namespace nivora::cs {
namespace {

struct Kind
{
    CalibrationModel model;
    int unknowns;
    int fewestPoints;
    bool needsPlane; ///< points on one line do not determine it
};
constexpr Kind kinds[] = {
    {CalibrationModel::Shift, 2, 1, false},
    {CalibrationModel::Similarity, 4, 2, false},
    {CalibrationModel::Affine, 6, 3, true},
    {CalibrationModel::Polynomial, 12, 6, true},
};

const Kind &kindOf(CalibrationModel model)
{
    for (const Kind &kind : kinds)
        if (kind.model == model)
            return kind;
    throw std::logic_error("no plane model");
}

/// x' = a x + b y + c, y' = d x + e y + f.
struct Straight
{
    double a = 1.0, b = 0.0, c = 0.0, d = 0.0, e = 1.0, f = 0.0;

    /// The other way. The constant is made of \p from, a point whose image \p to is known to the last digit,
    /// since the origin may be far.
    Straight inverted(const QPointF &from, const QPointF &to) const
    {
        const double determinant = std::fma(a, e, -b * d);
        Straight back{e / determinant, -b / determinant, 0.0, -d / determinant, a / determinant, 0.0};
        back.c = from.x() - back.a * to.x() - back.b * to.y();
        back.f = from.y() - back.d * to.x() - back.e * to.y();
        return back;
    }
};

/// Local coordinates u, v are counted from the points' centre in units of their extent, so that all columns
/// are alike however large the coordinates are.
class PlaneModel : public FitModel
{
public:
    PlaneModel(CalibrationModel model, GroundPtr ground);

    QString refusal() const override
    {
        return refusalOfPoints(*m_ground, m_kind.fewestPoints, m_kind.needsPlane);
    }
    LinearRows rows() const override;
    void improve(const std::vector<double> &step) override;
    QVector<CalibrationParameter> parameters(std::vector<double> &derivatives) const override;
    bool image(const QPointF &local, QPointF &known) const override
    {
        return converted(m_ground->base, m_ground->known, m_to + planeOffset(local), known);
    }
    std::vector<double> imageRows(const QPointF &local) const override;
    TABProjInfo_t record() const override;

private:
    QPointF planeOffset(const QPointF &local) const;
    QPointF scaled(const QPointF &local) const { return (local - m_from) / m_extent; }
    Straight straight() const;
    QVector<CalibrationParameter> similarityParameters(std::vector<double> &derivatives) const;

    const Kind &m_kind;
    GroundPtr m_ground;
    QPointF m_from; ///< centre of the local points
    QPointF m_to;   ///< of the known ones in the base
    double m_extent = 1.0;
    double m_unit; ///< of the base's unit for a local unit
    std::vector<double> m_unknowns;
};

PlaneModel::PlaneModel(CalibrationModel model, GroundPtr ground)
    : m_kind(kindOf(model))
    , m_ground(std::move(ground))
    , m_unit(m_ground->localUnitM / m_ground->baseUnitM)
    , m_unknowns(static_cast<std::size_t>(m_kind.unknowns), 0.0)
{
    std::vector<QPointF> local;
    for (const CalibrationPair &pair : m_ground->pairs)
        local.push_back(pair.local);
    m_from = centreOf(*m_ground, local);
    m_to = centreOf(*m_ground, {m_ground->plane.begin(), m_ground->plane.end()});
    double square = 0.0;
    for (const CalibrationPair &pair : m_ground->pairs)
        square = std::max(square, QPointF::dotProduct(pair.local - m_from, pair.local - m_from));
    m_extent = square > 0.0 ? std::sqrt(square) : 1.0;
}

/// The rows of x and y for each model, in the order of its unknowns.
std::vector<double> basis(CalibrationModel model, double u, double v)
{
    switch (model) {
    case CalibrationModel::Shift:
        return {1, 0, 0, 1};
    case CalibrationModel::Similarity:
        return {1, 0, u, -v, 0, 1, v, u};
    case CalibrationModel::Affine:
        return {1, 0, u, v, 0, 0, 0, 1, 0, 0, u, v};
    default:
        return {1, 0, u, v, 0, 0, u * u, u * v, v * v, 0,     0,     0,
                0, 1, 0, 0, u, v, 0,     0,     0,     u * u, u * v, v * v};
    }
}

QPointF PlaneModel::planeOffset(const QPointF &local) const
{
    const QPointF uv = scaled(local);
    const std::vector<double> rows = basis(m_kind.model, uv.x(), uv.y());
    QPointF sum = m_kind.model == CalibrationModel::Shift ? (local - m_from) * m_unit : QPointF();
    const auto n = static_cast<std::size_t>(m_kind.unknowns);
    for (std::size_t i = 0; i < n; ++i)
        sum += QPointF(rows[i], rows[n + i]) * m_unknowns[i];
    return sum;
}

LinearRows PlaneModel::rows() const
{
    LinearRows result;
    result.unknowns = m_kind.unknowns;
    for (int i = 0; i < m_ground->pairs.size(); ++i) {
        const QPointF &local = m_ground->pairs.at(i).local;
        const QPointF uv = scaled(local);
        for (const double factor : basis(m_kind.model, uv.x(), uv.y()))
            result.design.push_back(factor * m_ground->baseUnitM);
        const QPointF left = (m_ground->plane.at(i) - m_to - planeOffset(local)) * m_ground->baseUnitM;
        result.observed.push_back(left.x());
        result.observed.push_back(left.y());
    }
    return result;
}

void PlaneModel::improve(const std::vector<double> &step)
{
    for (std::size_t i = 0; i < m_unknowns.size(); ++i)
        m_unknowns[i] += step[i];
}

std::vector<double> PlaneModel::imageRows(const QPointF &local) const
{
    const QPointF uv = scaled(local);
    std::vector<double> rows = basis(m_kind.model, uv.x(), uv.y());
    for (double &factor : rows)
        factor *= m_ground->baseUnitM;
    return rows;
}

Straight PlaneModel::straight() const
{
    Straight s;
    const std::vector<double> &p = m_unknowns;
    switch (m_kind.model) {
    case CalibrationModel::Shift:
        s.a = s.e = m_unit;
        break;
    case CalibrationModel::Similarity:
        s.a = s.e = p[2] / m_extent;
        s.b = -p[3] / m_extent;
        s.d = p[3] / m_extent;
        break;
    default:
        s.a = p[2] / m_extent;
        s.b = p[3] / m_extent;
        s.d = p[4] / m_extent;
        s.e = p[5] / m_extent;
    }
    s.c = m_to.x() + p[0] - s.a * m_from.x() - s.b * m_from.y();
    s.f = m_to.y() + p[1] - s.d * m_from.x() - s.e * m_from.y();
    return s;
}

/// Shift, scale and angle, of the angle's arc tangent the derivatives.
QVector<CalibrationParameter> PlaneModel::similarityParameters(std::vector<double> &derivatives) const
{
    const Straight s = straight();
    const double square = s.a * s.a + s.d * s.d;
    const double scale = std::sqrt(square);
    const double degree = 57.29577951308232;
    const double x = m_from.x() / m_extent, y = m_from.y() / m_extent;
    derivatives = {1,
                   0,
                   -x,
                   y,
                   0,
                   1,
                   -y,
                   -x,
                   0,
                   0,
                   s.a / scale / m_extent,
                   s.d / scale / m_extent,
                   0,
                   0,
                   -s.d / square / m_extent * degree,
                   s.a / square / m_extent * degree};
    const QString unit = m_ground->baseUnitM == 1.0 ? QStringLiteral("m") : QString();
    return {{QStringLiteral("dx"), unit, s.c},
            {QStringLiteral("dy"), unit, s.f},
            {QStringLiteral("scale"), {}, scale},
            {QStringLiteral("rotation"), QStringLiteral("°"), std::atan2(s.d, s.a) * degree}};
}

QVector<CalibrationParameter> PlaneModel::parameters(std::vector<double> &derivatives) const
{
    if (m_kind.model == CalibrationModel::Similarity)
        return similarityParameters(derivatives);
    const Straight s = straight();
    const QString unit = m_ground->baseUnitM == 1.0 ? QStringLiteral("m") : QString();
    const double x = m_from.x() / m_extent, y = m_from.y() / m_extent, k = 1.0 / m_extent;
    derivatives = {1, 0, 0, 1};
    if (m_kind.model == CalibrationModel::Shift)
        return {{QStringLiteral("dx"), unit, s.c}, {QStringLiteral("dy"), unit, s.f}};
    if (m_kind.model == CalibrationModel::Polynomial) {
        derivatives.clear();
        return {};
    }
    derivatives = {0, 0, k, 0, 0, 0, 0, 0, 0, k, 0, 0, 1, 0, -x, -y, 0,  0,
                   0, 0, 0, 0, k, 0, 0, 0, 0, 0, 0, k, 0, 1, 0,  0,  -x, -y};
    return {{QStringLiteral("A"), {}, s.a}, {QStringLiteral("B"), {}, s.b}, {QStringLiteral("C"), unit, s.c},
            {QStringLiteral("D"), {}, s.d}, {QStringLiteral("E"), {}, s.e}, {QStringLiteral("F"), unit, s.f}};
}

TABProjInfo_t PlaneModel::record() const
{
    if (m_kind.model == CalibrationModel::Polynomial)
        throw std::logic_error(
            CoordSysTexts::tr("Многочлен второй степени не записывается как система координат")
                .toStdString());
    const Straight s = straight().inverted(m_from, m_to + QPointF(m_unknowns[0], m_unknowns[1]));
    TABProjInfo_t record = m_ground->baseRecord;
    record.nBoundsFlag = 0;
    record.nAffineFlag = 1;
    record.nAffineUnits = static_cast<std::uint8_t>(m_ground->localUnitCode);
    const double figures[] = {s.a, s.b, s.c, s.d, s.e, s.f};
    std::copy(std::begin(figures), std::end(figures), record.dAffineParams);
    return record;
}

} // namespace

std::unique_ptr<FitModel> makePlaneModel(CalibrationModel model, const GroundPtr &ground)
{
    return std::make_unique<PlaneModel>(model, ground);
}

} // namespace nivora::cs
