#include "CalibrationFit_p.h"

#include "CatalogueSource_p.h"
#include "CoordSysTexts_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/MapHeaderCoordsysConverter.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace nivora::cs {
namespace {

constexpr double notKnown = std::numeric_limits<double>::quiet_NaN();

std::unique_ptr<FitModel> modelOf(CalibrationModel model, const GroundPtr &ground)
{
    if (model == CalibrationModel::DatumShift)
        return makeDatumShiftModel(ground);
    if (model != CalibrationModel::TransverseMercator)
        return makePlaneModel(model, ground);
    return ground->isPlan() ? nullptr : makeTransverseMercatorModel(ground);
}

/// The length of a step as it moves the points, which tells when nothing changes any more.
double reachOf(const LinearRows &rows, const std::vector<double> &step)
{
    double greatest = 0.0;
    for (std::size_t i = 0; i < rows.count(); ++i) {
        double sum = 0.0;
        for (std::size_t j = 0; j < step.size(); ++j)
            sum += rows.row(i)[j] * step[j];
        greatest = std::max(greatest, std::fabs(sum));
    }
    return greatest;
}

/// Newton's steps after Gauss until they move nothing. Of a linear model the second one takes away what
/// rounding left of the first.
QString approach(FittedModel &data)
{
    constexpr int mostSteps = 30;
    for (int step = 0; step < mostSteps; ++step) {
        data.rows = weighted(*data.ground, data.fit->rows());
        data.solution = solve(data.rows, data.used());
        if (!data.solution.isDefinite)
            return CoordSysTexts::tr("Точки не определяют параметры модели");
        data.fit->improve(data.solution.unknowns);
        if (reachOf(data.rows, data.solution.unknowns) <= data.ground->floorM / 16.0 || step == mostSteps - 1)
            break;
    }
    return {};
}

double cross(const QPointF &o, const QPointF &a, const QPointF &b)
{
    return (a.x() - o.x()) * (b.y() - o.y()) - (a.y() - o.y()) * (b.x() - o.x());
}

/// Half of the hull, from left to right or back.
template <typename Iterator> void appendChain(Iterator first, Iterator last, QPolygonF &hull)
{
    const int start = hull.size();
    for (; first != last; ++first) {
        while (hull.size() >= start + 2 && cross(hull.at(hull.size() - 2), hull.last(), *first) <= 0.0)
            hull.removeLast();
        hull << *first;
    }
    hull.removeLast(); // the other half begins with it
}

} // namespace

double FittedModel::sigmaM() const { return redundancy > 0.5 ? std::sqrt(squares / redundancy) : notKnown; }

PointMask FittedModel::used() const
{
    PointMask mask;
    for (const CalibrationPair &pair : ground->pairs)
        mask.push_back(pair.isUsed ? 1 : 0);
    return mask;
}

LinearRows weighted(const CalibrationGround &ground, LinearRows rows)
{
    for (std::size_t i = 0; i < rows.count(); ++i) {
        const int point = static_cast<int>(i) / rows.perPoint;
        const double root = std::sqrt(ground.pairs.at(point).weight);
        rows.observed[i] *= root;
        for (int j = 0; j < rows.unknowns; ++j)
            rows.design[i * static_cast<std::size_t>(rows.unknowns) + static_cast<std::size_t>(j)] *= root;
    }
    return rows;
}

std::shared_ptr<const FittedModel> fitted(CalibrationModel model, const GroundPtr &ground)
{
    auto data = std::make_shared<FittedModel>();
    data->model = model;
    data->ground = ground;
    data->fit = modelOf(model, ground);
    data->refusal =
        data->fit ? data->fit->refusal()
                  : CoordSysTexts::tr("План без места на Земле не имеет ни датума, ни осевого меридиана");
    if (data->refusal.isEmpty())
        data->refusal = approach(*data);
    if (!data->refusal.isEmpty())
        return data;
    data->rows = weighted(*ground, data->fit->rows());
    data->solution.residuals = data->rows.observed;
    data->squares = squaresOf(data->rows, data->used(), data->rows.observed);
    data->redundancy = redundancyOf(data->rows, data->used(), data->solution);
    data->blunders = findBlunders(data->rows, data->used(), ground->floorM);
    return data;
}

CalibrationFit::CalibrationFit(std::shared_ptr<const FittedModel> data)
    : m_data(std::move(data))
{}

CalibrationModel CalibrationFit::model() const { return m_data->model; }

QString CalibrationFit::refusal() const { return m_data->refusal; }

QVector<CalibrationParameter> CalibrationFit::parameters() const
{
    if (!isUsable())
        return {};
    std::vector<double> derivatives;
    QVector<CalibrationParameter> result = m_data->fit->parameters(derivatives);
    for (int i = 0; i < result.size(); ++i) {
        const double *row =
            &derivatives[static_cast<std::size_t>(i) * static_cast<std::size_t>(m_data->rows.unknowns)];
        result[i].deviation = m_data->sigmaM() * std::sqrt(jointCofactor(m_data->solution, row, row));
    }
    return result;
}

QVector<CalibrationResidual> CalibrationFit::residuals() const
{
    QVector<CalibrationResidual> result;
    const LinearRows &rows = m_data->rows;
    for (int i = 0; isUsable() && i < m_data->ground->pairs.size(); ++i) {
        const CalibrationPair &pair = m_data->ground->pairs.at(i);
        const auto point = static_cast<std::size_t>(i);
        const double *left = &m_data->solution.residuals[point * static_cast<std::size_t>(rows.perPoint)];
        const double root = std::sqrt(pair.weight);
        CalibrationResidual residual;
        residual.offsetM = QPointF(left[0], left[1]) / root;
        residual.heightM = rows.tested == 3 ? left[2] / root : notKnown;
        residual.lengthM = std::hypot(residual.offsetM.x(), residual.offsetM.y());
        residual.probability = m_data->blunders.probability[point];
        residual.isUsed = pair.isUsed;
        residual.isSuspect = m_data->blunders.isSuspect[point] != 0;
        result << residual;
    }
    return result;
}

QVector<int> CalibrationFit::suspects() const
{
    QVector<int> result;
    const PointMask &mask = m_data->blunders.isSuspect;
    for (std::size_t i = 0; i < mask.size(); ++i)
        if (mask[i])
            result << static_cast<int>(i);
    return result;
}

double CalibrationFit::rmsM() const
{
    double sum = 0.0;
    for (const CalibrationResidual &residual : residuals())
        sum += residual.isUsed ? residual.lengthM * residual.lengthM : 0.0;
    return isUsable() ? std::sqrt(sum / std::max(1, m_data->ground->countUsed())) : notKnown;
}

double CalibrationFit::greatestM() const
{
    double greatest = 0.0;
    for (const CalibrationResidual &residual : residuals())
        greatest = residual.isUsed ? std::max(greatest, residual.lengthM) : greatest;
    return isUsable() ? greatest : notKnown;
}

double CalibrationFit::sigmaM() const { return isUsable() ? m_data->sigmaM() : notKnown; }

int CalibrationFit::redundancy() const { return static_cast<int>(std::lround(m_data->redundancy)); }

bool CalibrationFit::image(const QPointF &local, QPointF &known) const
{
    const bool isNumber = std::isfinite(local.x()) && std::isfinite(local.y());
    return isUsable() && isNumber && m_data->fit->image(local, known);
}

double CalibrationFit::expectedErrorM(const QPointF &local) const
{
    const std::vector<double> rows = isUsable() ? m_data->fit->imageRows(local) : std::vector<double>();
    if (rows.empty())
        return notKnown;
    const double *y = &rows[static_cast<std::size_t>(m_data->rows.unknowns)];
    return m_data->sigmaM() * std::sqrt(jointCofactor(m_data->solution, rows.data(), rows.data()) +
                                        jointCofactor(m_data->solution, y, y));
}

QPolygonF CalibrationFit::hull() const
{
    std::vector<QPointF> points;
    for (const CalibrationPair &pair : m_data->ground->pairs)
        if (pair.isUsed)
            points.push_back(pair.local);
    std::sort(points.begin(), points.end(), [](const QPointF &a, const QPointF &b) {
        return a.x() != b.x() ? a.x() < b.x() : a.y() < b.y();
    });
    points.erase(
        std::unique(points.begin(), points.end(),
                    [](const QPointF &a, const QPointF &b) { return a.x() == b.x() && a.y() == b.y(); }),
        points.end());
    QPolygonF hull;
    if (!isUsable() || points.size() < 3)
        return isUsable() ? QPolygonF(QVector<QPointF>(points.begin(), points.end())) : hull;
    appendChain(points.begin(), points.end(), hull);
    appendChain(points.rbegin(), points.rend(), hull);
    return hull;
}

bool CalibrationFit::isInside(const QPointF &local) const
{
    const QPolygonF border = hull();
    bool inside = border.size() > 2;
    for (int i = 0; i < border.size(); ++i) {
        const QPointF &a = border.at(i), &b = border.at((i + 1) % border.size());
        // Rounding must not put the points themselves outside.
        const double tolerance =
            1e-9 * std::hypot(b.x() - a.x(), b.y() - a.y()) * std::hypot(b.x() - a.x(), b.y() - a.y());
        inside = inside && cross(a, b, local) >= -tolerance;
    }
    return inside;
}

QString CalibrationFit::coordSysText() const
{
    if (!isUsable())
        throw std::logic_error(refusal().toStdString());
    return MapHeaderCoordsysConverter().tabProjInfoToString(m_data->fit->record());
}

CoordSystemPtr CalibrationFit::system() const { return activeCatalogues()->createFromPrj(coordSysText()); }

} // namespace nivora::cs
