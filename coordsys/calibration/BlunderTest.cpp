#include "BlunderTest_p.h"

#include "FisherTest_p.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace nivora::cs {
namespace {

using Block = std::array<std::array<double, 3>, 3>;

double squaresAt(const LinearRows &rows, const std::vector<double> &residuals, std::size_t point)
{
    double sum = 0.0;
    for (int i = 0; i < rows.tested; ++i) {
        const double v =
            residuals[point * static_cast<std::size_t>(rows.perPoint) + static_cast<std::size_t>(i)];
        sum += v * v;
    }
    return sum;
}

std::size_t countOf(const PointMask &mask)
{
    return static_cast<std::size_t>(std::count_if(mask.begin(), mask.end(), [](char c) { return c != 0; }));
}

/// The spread of one coordinate, by the median of the points' distances: of two normal coordinates the median
/// is 1.1774 of it (the root of 2 ln 2), of three 1.5382.
double robustSpread(const LinearRows &rows, const PointMask &used, const std::vector<double> &residuals)
{
    std::vector<double> lengths;
    for (std::size_t i = 0; i < rows.points(); ++i)
        if (used[i])
            lengths.push_back(std::sqrt(squaresAt(rows, residuals, i)));
    // What the unknowns take of few points makes the distances small.
    const double free = std::max(1.0, static_cast<double>(lengths.size()) * rows.tested - rows.unknowns) /
                        (static_cast<double>(lengths.size()) * rows.tested);
    const auto middle = lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2);
    std::nth_element(lengths.begin(), middle, lengths.end());
    return *middle / (rows.tested == 3 ? 1.5382 : 1.1774) / std::sqrt(free);
}

/// Least sums of distances first, since these do not follow a far point; then the weights of Tukey's
/// biweight, which leave far points out (constant 4.685).
std::vector<double> robustUnknowns(const LinearRows &rows, const PointMask &used, double floor)
{
    constexpr int roundsOfDistances = 12;
    constexpr int rounds = 24;
    std::vector<double> weights(used.begin(), used.end());
    std::vector<double> unknowns;
    for (int round = 0; round < rounds; ++round) {
        unknowns = solveRoughly(rows, weights);
        const std::vector<double> residuals = residualsOf(rows, unknowns);
        const double spread = std::max(robustSpread(rows, used, residuals), floor);
        for (std::size_t i = 0; i < weights.size(); ++i) {
            if (!used[i])
                continue;
            const double length = std::sqrt(squaresAt(rows, residuals, i)) / spread;
            const double part = std::min(1.0, length / 4.685);
            weights[i] = round < roundsOfDistances
                             ? 1.0 / std::max(length, 0.05)
                             : std::max((1.0 - part * part) * (1.0 - part * part), 1e-6);
        }
    }
    return unknowns;
}

PointMask robustlyAgreeing(const LinearRows &rows, const PointMask &used, double floor)
{
    constexpr double far = 3.5; // spreads
    const std::vector<double> residuals = residualsOf(rows, robustUnknowns(rows, used, floor));
    const double spread = std::max(robustSpread(rows, used, residuals), floor);
    PointMask agreeing = used;
    for (std::size_t i = 0; i < agreeing.size(); ++i)
        if (!(squaresAt(rows, residuals, i) < far * far * spread * spread))
            agreeing[i] = 0;
    return agreeing;
}

/// Solves block x = v by elimination; false when the block is singular, that is when the point alone holds an
/// unknown.
bool solveBlock(Block block, std::array<double, 3> v, std::size_t size, std::array<double, 3> &x)
{
    constexpr double singular = 1e-6;
    for (std::size_t i = 0; i < size; ++i) {
        if (!(block[i][i] > singular))
            return false;
        for (std::size_t j = i + 1; j < size; ++j) {
            const double factor = block[j][i] / block[i][i];
            for (std::size_t k = i; k < size; ++k)
                block[j][k] -= factor * block[i][k];
            v[j] -= factor * v[i];
        }
    }
    for (std::size_t i = size; i-- > 0;) {
        x[i] = v[i];
        for (std::size_t k = i + 1; k < size; ++k)
            x[i] -= block[i][k] * x[k];
        x[i] /= block[i][i];
    }
    return true;
}

/// How far a point lies from the fit of the others, squared, in the unit of the observations' variance;
/// negative when that cannot be told.
double squaredMisfit(const LinearRows &rows, const LinearSolution &solution, std::size_t point, bool isInside)
{
    Block block{};
    std::array<double, 3> v{}, x{};
    const std::size_t first = point * static_cast<std::size_t>(rows.perPoint);
    const auto tested = static_cast<std::size_t>(rows.tested);
    for (std::size_t i = 0; i < tested; ++i) {
        v[i] = solution.residuals[first + i];
        for (std::size_t j = 0; j < tested; ++j) {
            const double lever = jointCofactor(solution, rows.row(first + i), rows.row(first + j));
            block[i][j] = (i == j ? 1.0 : 0.0) + (isInside ? -lever : lever);
        }
    }
    if (!solveBlock(block, v, tested, x))
        return -1.0;
    return v[0] * x[0] + v[1] * x[1] + v[2] * x[2];
}

double probabilityOf(const LinearRows &rows, double misfit, double squares, double redundancy, double floor)
{
    if (misfit < 0.0 || !(redundancy > 0.0))
        return 1.0;
    const double variance = std::max(squares / redundancy, floor * floor);
    return fisherProbability(misfit / rows.tested / variance, rows.tested, redundancy);
}

/// The probabilities of all points when these agree; empty when they do not determine the unknowns.
std::vector<double> judge(const LinearRows &rows, const PointMask &used, const PointMask &agreeing,
                          double floor)
{
    const LinearSolution solution = solve(rows, agreeing);
    if (!solution.isDefinite)
        return {};
    const double squares = squaresOf(rows, agreeing, solution.residuals);
    const double redundancy = redundancyOf(rows, agreeing, solution);
    std::vector<double> result(rows.points(), 1.0);
    for (std::size_t i = 0; i < result.size(); ++i) {
        if (!used[i])
            continue;
        const bool inside = agreeing[i] != 0;
        const double misfit = squaredMisfit(rows, solution, i, inside);
        result[i] = inside ? probabilityOf(rows, misfit, std::max(squares - misfit, 0.0),
                                           redundancy - rows.tested, floor)
                           : probabilityOf(rows, misfit, squares, redundancy, floor);
    }
    return result;
}

} // namespace

double squaresOf(const LinearRows &rows, const PointMask &used, const std::vector<double> &residuals)
{
    double sum = 0.0;
    for (std::size_t i = 0; i < rows.points(); ++i)
        sum += used[i] ? squaresAt(rows, residuals, i) : 0.0;
    return sum;
}

double redundancyOf(const LinearRows &rows, const PointMask &used, const LinearSolution &solution)
{
    if (rows.tested == rows.perPoint)
        return static_cast<double>(countOf(used)) * rows.tested - rows.unknowns;
    double sum = 0.0;
    for (std::size_t i = 0; i < rows.points(); ++i)
        for (int j = 0; used[i] && j < rows.tested; ++j) {
            const double *row =
                rows.row(i * static_cast<std::size_t>(rows.perPoint) + static_cast<std::size_t>(j));
            sum += 1.0 - jointCofactor(solution, row, row);
        }
    return sum;
}

BlunderTest findBlunders(const LinearRows &rows, const PointMask &used, double floor)
{
    constexpr int mostRounds = 12;
    BlunderTest test{std::vector<double>(rows.points(), 1.0), PointMask(rows.points(), 0)};
    const double level = blunderLevel / static_cast<double>(std::max<std::size_t>(1, countOf(used)));
    PointMask agreeing = robustlyAgreeing(rows, used, floor);
    for (int round = 0; round < mostRounds; ++round) {
        const std::vector<double> probability = judge(rows, used, agreeing, floor);
        if (probability.empty())
            break;
        test.probability = probability;
        PointMask next = used;
        for (std::size_t i = 0; i < next.size(); ++i) {
            next[i] = used[i] && probability[i] >= level;
            test.isSuspect[i] = used[i] && !next[i];
        }
        if (next == agreeing)
            break;
        agreeing = next;
    }
    return test;
}

} // namespace nivora::cs
