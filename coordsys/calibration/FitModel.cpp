#include "FitModel_p.h"

#include "CoordSysTexts_p.h"
#include <coordsys/CoordTransform.h>

#include <algorithm>
#include <cmath>
#include <set>

namespace nivora::cs {
namespace {

/// Across by along: of the axes of the points' ellipse of inertia.
double slendernessOf(const CalibrationGround &ground, const QPointF &centre)
{
    double xx = 0.0, xy = 0.0, yy = 0.0;
    for (const CalibrationPair &pair : ground.pairs) {
        if (!pair.isUsed)
            continue;
        const QPointF d = pair.local - centre;
        xx += d.x() * d.x();
        xy += d.x() * d.y();
        yy += d.y() * d.y();
    }
    const double half = (xx + yy) / 2.0;
    const double root = std::hypot((xx - yy) / 2.0, xy);
    return half > 0.0 ? std::sqrt(std::max(0.0, half - root) / (half + root)) : 0.0;
}

int countOfPlaces(const CalibrationGround &ground)
{
    std::set<std::pair<double, double>> places;
    for (const CalibrationPair &pair : ground.pairs)
        if (pair.isUsed)
            places.emplace(pair.local.x(), pair.local.y());
    return static_cast<int>(places.size());
}

} // namespace

FitModel::~FitModel() = default;

int CalibrationGround::countUsed() const
{
    return static_cast<int>(
        std::count_if(pairs.begin(), pairs.end(), [](const CalibrationPair &pair) { return pair.isUsed; }));
}

QPointF centreOf(const CalibrationGround &ground, const std::vector<QPointF> &points)
{
    // From the first point on, so that the sum of many large numbers loses nothing.
    QPointF sum;
    const QPointF first = points.empty() ? QPointF() : points.front();
    for (std::size_t i = 0; i < points.size(); ++i)
        if (ground.pairs.at(static_cast<int>(i)).isUsed)
            sum += points[i] - first;
    return first + sum / std::max(1, ground.countUsed());
}

QString refusalOfPoints(const CalibrationGround &ground, int fewest, bool needsPlane)
{
    constexpr double line = 1e-3; // narrower by its length
    const int places = countOfPlaces(ground);
    if (places < fewest)
        return CoordSysTexts::tr("Нужно не меньше точек: %1, а разных точек: %2")
            .arg(QString::number(fewest), QString::number(places));
    std::vector<QPointF> local;
    for (const CalibrationPair &pair : ground.pairs)
        local.push_back(pair.local);
    if (needsPlane && slendernessOf(ground, centreOf(ground, local)) < line)
        return CoordSysTexts::tr("Точки лежат на одной прямой");
    return {};
}

bool converted(const CoordSystemPtr &from, const CoordSystemPtr &to, const QPointF &in, QPointF &out)
{
    try {
        return CoordTransform(from, to).forward(in, out);
    } catch (const std::logic_error &) {
        return false; // the engine knows no way
    }
}

} // namespace nivora::cs
