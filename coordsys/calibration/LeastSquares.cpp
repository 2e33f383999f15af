#include "LeastSquares_p.h"

#include <Eigen/QR>

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

// The steps below are written out: the matrices are small, and Eigen's kernels for large ones took as long to
// compile as the rest of the folder.

using Decomposition = Eigen::ColPivHouseholderQR<Matrix>;

/// Of the upper triangle.
Matrix inverseOf(const Matrix &upper)
{
    const Eigen::Index n = upper.cols();
    Matrix inverse = Matrix::Zero(n, n);
    for (Eigen::Index column = 0; column < n; ++column) {
        for (Eigen::Index i = column; i >= 0; --i) {
            double sum = i == column ? 1.0 : 0.0;
            for (Eigen::Index k = i + 1; k <= column; ++k)
                sum -= upper(i, k) * inverse(k, column);
            inverse(i, column) = sum / upper(i, i);
        }
    }
    return inverse;
}

/// The transposed orthogonal factor times a vector, reflection by reflection.
Vector rotated(const Decomposition &qr, Vector vector)
{
    const Matrix &factors = qr.matrixQR();
    for (Eigen::Index k = 0; k < qr.nonzeroPivots(); ++k) {
        double along = vector(k);
        for (Eigen::Index i = k + 1; i < vector.size(); ++i)
            along += factors(i, k) * vector(i);
        along *= qr.hCoeffs()(k);
        vector(k) -= along;
        for (Eigen::Index i = k + 1; i < vector.size(); ++i)
            vector(i) -= along * factors(i, k);
    }
    return vector;
}

/// Unknowns that nothing determines are 0.
Vector solutionOf(const Decomposition &qr, const Vector &observed)
{
    const Vector right = rotated(qr, observed);
    Vector unknowns = Vector::Zero(qr.cols());
    const auto &column = qr.colsPermutation().indices();
    for (Eigen::Index i = qr.nonzeroPivots() - 1; i >= 0; --i) {
        double sum = right(i);
        for (Eigen::Index k = i + 1; k < qr.nonzeroPivots(); ++k)
            sum -= qr.matrixQR()(i, k) * unknowns(column(k));
        unknowns(column(i)) = sum / qr.matrixQR()(i, i);
    }
    return unknowns;
}

std::vector<double> cofactorsOf(const Decomposition &qr, const Vector &lengths)
{
    const Eigen::Index n = lengths.size();
    const Matrix inverse = inverseOf(qr.matrixR().topLeftCorner(n, n));
    const auto &column = qr.colsPermutation().indices();
    std::vector<double> result(static_cast<std::size_t>(n * n));
    for (Eigen::Index i = 0; i < n; ++i) {
        for (Eigen::Index j = 0; j < n; ++j) {
            const Eigen::Index a = column(i), b = column(j);
            result[static_cast<std::size_t>(a * n + b)] =
                inverse.row(i).dot(inverse.row(j)) / (lengths(a) * lengths(b));
        }
    }
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
    const Decomposition qr(design);
    const double last = std::fabs(qr.matrixR()(rows.unknowns - 1, rows.unknowns - 1));
    if (!(last > dependence))
        return solution;
    solution.isDefinite = true;
    solution.unknowns = listOf(solutionOf(qr, observed).cwiseQuotient(lengths));
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
        for (Eigen::Index j = 0; j < rows.unknowns; ++j)
            normal.row(j) += (weight * row(j)) * row.transpose();
        right += (weight * rows.observed[i]) * row;
    }
    return listOf(solutionOf(Decomposition(normal), right));
}

} // namespace nivora::cs
