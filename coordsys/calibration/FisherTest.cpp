#include "FisherTest_p.h"

#include <cmath>
#include <initializer_list>
#include <limits>

namespace nivora::cs {
namespace {

double awayFromZero(double value)
{
    constexpr double tiny = std::numeric_limits<double>::min() * 1e10;
    return std::fabs(value) < tiny ? tiny : value;
}

/// The continued fraction of the incomplete beta function (NIST Digital Library of Mathematical Functions,
/// 8.17.22), from its first term on by the modified method of Lentz.
double betaFraction(double a, double b, double x)
{
    constexpr int mostTerms = 500;
    double c = 1.0;
    double d = 1.0 / awayFromZero(1.0 - (a + b) * x / (a + 1.0));
    double value = d;
    for (int m = 1; m < mostTerms; ++m) {
        const double even = m * (b - m) * x / ((a + 2 * m - 1) * (a + 2 * m));
        const double odd = -(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 2 * m + 1));
        double factor = 1.0;
        for (const double term : {even, odd}) {
            d = 1.0 / awayFromZero(1.0 + term * d);
            c = awayFromZero(1.0 + term / c);
            factor = c * d;
            value *= factor;
        }
        if (std::fabs(factor - 1.0) < std::numeric_limits<double>::epsilon())
            break;
    }
    return value;
}

/// Regularized, for 0 < x < 1.
double incompleteBeta(double a, double b, double x)
{
    const double front =
        std::exp(std::lgamma(a + b) - std::lgamma(a) - std::lgamma(b) + a * std::log(x) + b * std::log1p(-x));
    if (x < (a + 1.0) / (a + b + 2.0))
        return front * betaFraction(a, b, x) / a;
    return 1.0 - front * betaFraction(b, a, 1.0 - x) / b;
}

} // namespace

double fisherProbability(double value, double first, double second)
{
    if (!(value > 0.0) || !(first > 0.0) || !(second > 0.0))
        return 1.0;
    const double x = second / (second + first * value);
    return x > 0.0 && x < 1.0 ? incompleteBeta(second / 2.0, first / 2.0, x) : x;
}

} // namespace nivora::cs
