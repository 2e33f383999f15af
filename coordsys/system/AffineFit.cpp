#include "AffineFit_p.h"

#include "ProjOperation_p.h"

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

struct Pair
{
    QPointF from, to;
};

QVector<Pair> finitePairs(const QVector<QPointF> &from, const QVector<QPointF> &to)
{
    QVector<Pair> pairs;
    for (int i = 0; i < from.size(); ++i)
        if (isFinite(from.at(i)) && isFinite(to.at(i)))
            pairs << Pair{from.at(i), to.at(i)};
    return pairs;
}

Pair middleOf(const QVector<Pair> &pairs)
{
    Pair sum;
    for (const Pair &pair : pairs) {
        sum.from += pair.from;
        sum.to += pair.to;
    }
    return {sum.from / pairs.size(), sum.to / pairs.size()};
}

/// A, B, D, E by least squares about the middle; none for points on a line.
std::optional<std::array<double, 4>> slopes(const QVector<Pair> &pairs, const Pair &middle)
{
    double xx = 0.0, xy = 0.0, yy = 0.0;
    QPointF byX, byY;
    for (const Pair &pair : pairs) {
        const QPointF p = pair.from - middle.from;
        const QPointF q = pair.to - middle.to;
        xx += p.x() * p.x();
        xy += p.x() * p.y();
        yy += p.y() * p.y();
        byX += q * p.x();
        byY += q * p.y();
    }
    const double determinant = xx * yy - xy * xy;
    if (!(determinant > 1e-9 * xx * yy))
        return std::nullopt;
    const QPointF forX = (byX * yy - byY * xy) / determinant; // what x adds to both coordinates
    const QPointF forY = (byY * xx - byX * xy) / determinant;
    return std::array<double, 4>{forX.x(), forY.x(), forX.y(), forY.y()};
}

double withDecimals(double value, int decimals)
{
    return QString::number(value, 'f', decimals).toDouble() + 0.0; // no negative zero
}

double farthest(const QVector<Pair> &pairs, const std::array<double, 6> &map)
{
    double worst = 0.0;
    for (const Pair &pair : pairs) {
        const QPointF p = pair.from;
        const QPointF q(map[0] * p.x() + map[1] * p.y() + map[2], map[3] * p.x() + map[4] * p.y() + map[5]);
        worst = std::max({worst, std::fabs(q.x() - pair.to.x()), std::fabs(q.y() - pair.to.y())});
    }
    return worst;
}

std::array<double, 6> rounded(const std::array<double, 4> &slope, const Pair &middle, int decimals,
                              int lengthDecimals)
{
    std::array<double, 4> s{};
    std::transform(slope.begin(), slope.end(), s.begin(),
                   [decimals](double value) { return withDecimals(value, decimals); });
    const QPointF m = middle.from;
    return {s[0], s[1], withDecimals(middle.to.x() - s[0] * m.x() - s[1] * m.y(), lengthDecimals),
            s[2], s[3], withDecimals(middle.to.y() - s[2] * m.x() - s[3] * m.y(), lengthDecimals)};
}

} // namespace

std::optional<std::array<double, 6>> fittedAffine(const QVector<QPointF> &from, const QVector<QPointF> &to,
                                                  double tolerance)
{
    constexpr int mostDecimals = 15;
    constexpr int mostLengthDecimals = 9;
    const QVector<Pair> pairs = finitePairs(from, to);
    if (pairs.size() < 3)
        return std::nullopt;
    const Pair middle = middleOf(pairs);
    const auto slope = slopes(pairs, middle);
    if (!slope)
        return std::nullopt;
    for (int decimals = 0; decimals <= mostDecimals; ++decimals) {
        if (farthest(pairs, rounded(*slope, middle, decimals, mostLengthDecimals)) > tolerance)
            continue;
        for (int lengthDecimals = 0; lengthDecimals <= mostLengthDecimals; ++lengthDecimals) {
            const auto map = rounded(*slope, middle, decimals, lengthDecimals);
            if (farthest(pairs, map) <= tolerance)
                return map;
        }
    }
    return std::nullopt;
}

std::optional<double> greatestDistance(const QVector<QPointF> &from, const QVector<QPointF> &to)
{
    std::optional<double> worst;
    for (int i = 0; i < to.size(); ++i) {
        if (!isFinite(to.at(i)))
            continue;
        const QPointF off = from.at(i) - to.at(i);
        const double apart = isFinite(from.at(i)) ? std::hypot(off.x(), off.y()) : HUGE_VAL;
        worst = std::max(worst.value_or(0.0), apart);
    }
    return worst;
}

} // namespace nivora::cs
