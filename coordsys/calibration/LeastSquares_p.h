#pragma once

#include <cstddef>
#include <vector>

namespace nivora::cs {

/// The rows of a linear problem, each already multiplied by the root of its weight. A point has as many rows
/// as another, one behind the other.
struct LinearRows
{
    int unknowns = 0;
    int perPoint = 2; ///< rows of a point
    int tested = 2;   ///< of these the first ones that are observations; the others only hold the solution
    std::vector<double> design;   ///< row by row
    std::vector<double> observed; ///< less what is computed at the approximation

    std::size_t count() const { return observed.size(); }
    std::size_t points() const { return observed.size() / static_cast<std::size_t>(perPoint); }
    const double *row(std::size_t i) const { return &design[i * static_cast<std::size_t>(unknowns)]; }
};

/// Which points take part; as long as there are points.
using PointMask = std::vector<char>;

struct LinearSolution
{
    bool isDefinite = false; ///< false: the rows do not determine the unknowns, nothing else is set then
    std::vector<double> unknowns;
    std::vector<double> residuals; ///< observed less computed, of all rows, those of other points too
    std::vector<double> cofactors; ///< the inverse of the normal matrix, row by row
};

/// Least squares by an orthogonal decomposition with pivots, every column brought to length 1 before. Columns
/// count as dependent when what one adds to the others is below 1e-6 of its length.
LinearSolution solve(const LinearRows &rows, const PointMask &used);

/// The same with a weight for each point, by normal equations: fast and good to half the digits.
std::vector<double> solveRoughly(const LinearRows &rows, const std::vector<double> &weights);

/// row a, cofactors, row b: how the fitted values of two rows vary together.
double jointCofactor(const LinearSolution &solution, const double *a, const double *b);

/// Observed less computed of all rows.
std::vector<double> residualsOf(const LinearRows &rows, const std::vector<double> &unknowns);

} // namespace nivora::cs
