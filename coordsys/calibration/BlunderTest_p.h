#pragma once

#include "LeastSquares_p.h"

#include <vector>

namespace nivora::cs {

/// The level at which a set without blunders has a point accused; each point is tested at its share of it.
constexpr double blunderLevel = 0.01;

struct BlunderTest
{
    std::vector<double> probability; ///< a point: that chance moves it so far from the others' fit
    PointMask isSuspect;
};

/// Looks for points that do not belong to the others. \p floor: differences below it are rounding, in the
/// unit of the rows. A robust fit tells which points agree; from them on each point is judged by the fit of
/// the agreeing others alone, until the same points agree again.
BlunderTest findBlunders(const LinearRows &rows, const PointMask &used, double floor);

/// Redundancy of the tested rows: their number less what the unknowns take of them.
double redundancyOf(const LinearRows &rows, const PointMask &used, const LinearSolution &solution);
/// Sum of the squares of the tested residuals.
double squaresOf(const LinearRows &rows, const PointMask &used, const std::vector<double> &residuals);

} // namespace nivora::cs
