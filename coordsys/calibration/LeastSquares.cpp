#include "LeastSquares_p.h"

#include <Eigen/Dense>

#include <cmath>

namespace nivora::cs {
namespace {

using Matrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
using Vector = Eigen::VectorXd;

constexpr double dependence = 1e-6;

/// The rows of the points that take part.
void gather(const LinearRows &rows, const PointMask &used, Matrix &design, Vector &observed)
{
    Eigen::Index count = 0;
    design.resize(static_cast<Eigen::Index>(rows.count()), rows.unknowns);
    observed.resize(static_cast<Eigen::Index>(rows.count()));
    for (std::size_t i = 0; i < rows.count(); ++i) {
        if (!used[i / static_cast<std::size_t>(rows.perPoint)])
            continue;
        design.row(count) = Eigen::Map<const Eigen::RowVectorXd>(rows.row(i), rows.unknowns);
        observed(count++) = rows.observed[i];
    }
    design.conservativeResize(count, rows.unknowns);
    observed.conservativeResize(count);
}

/// The lengths of the columns, which become 1; one without length stays.
Vector normalize(Matrix &design)
{
    Vector lengths = design.colwise().norm();
    for (Eigen::Index i = 0; i < lengths.size(); ++i) {
        if (!(lengths(i) > 0.0))
            lengths(i) = 1.0;
        design.col(i) /= lengths(i);
    }
    return lengths;
}

std::vector<double> listOf(const Vector &values) { return {values.data(), values.data() + values.size()}; }

std::vector<double> cofactorsOf(const Eigen::ColPivHouseholderQR<Matrix> &qr, const Vector &lengths)
{
    const Eigen::Index n = lengths.size();
    const Matrix inverse = qr.matrixR().topLeftCorner(n, n).template triangularView<Eigen::Upper>().solve(
        Matrix::Identity(n, n));
    const Matrix product =
        qr.colsPermutation() * (inverse * inverse.transpose()) * qr.colsPermutation().transpose();
    std::vector<double> result;
    for (Eigen::Index i = 0; i < n; ++i)
        for (Eigen::Index j = 0; j < n; ++j)
            result.push_back(product(i, j) / (lengths(i) * lengths(j)));
    return result;
}

} // namespace

std::vector<double> residualsOf(const LinearRows &rows, const std::vector<double> &unknowns)
{
    std::vector<double> result = rows.observed;
    for (std::size_t i = 0; i < result.size(); ++i)
        for (std::size_t j = 0; j < unknowns.size(); ++j)
            result[i] -= rows.row(i)[j] * unknowns[j];
    return result;
}

double jointCofactor(const LinearSolution &solution, const double *a, const double *b)
{
    const std::size_t n = solution.unknowns.size();
    double sum = 0.0;
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j < n; ++j)
            sum += a[i] * solution.cofactors[i * n + j] * b[j];
    return sum;
}

LinearSolution solve(const LinearRows &rows, const PointMask &used)
{
    Matrix design;
    Vector observed;
    gather(rows, used, design, observed);
    LinearSolution solution;
    if (design.rows() < design.cols() || !design.allFinite() || !observed.allFinite())
        return solution;
    const Vector lengths = normalize(design);
    const Eigen::ColPivHouseholderQR<Matrix> qr(design);
    const double last = std::fabs(qr.matrixR()(rows.unknowns - 1, rows.unknowns - 1));
    if (!(last > dependence))
        return solution;
    solution.isDefinite = true;
    solution.unknowns = listOf(qr.solve(observed).cwiseQuotient(lengths));
    solution.cofactors = cofactorsOf(qr, lengths);
    solution.residuals = residualsOf(rows, solution.unknowns);
    return solution;
}

std::vector<double> solveRoughly(const LinearRows &rows, const std::vector<double> &weights)
{
    Matrix normal = Matrix::Zero(rows.unknowns, rows.unknowns);
    Vector right = Vector::Zero(rows.unknowns);
    for (std::size_t i = 0; i < rows.count(); ++i) {
        const double weight = weights[i / static_cast<std::size_t>(rows.perPoint)];
        const Eigen::Map<const Vector> row(rows.row(i), rows.unknowns);
        normal.noalias() += weight * row * row.transpose();
        right += weight * rows.observed[i] * row;
    }
    return listOf(normal.ldlt().solve(right));
}

} // namespace nivora::cs
