#pragma once

namespace nivora::cs {

/// The probability that a quantity of Fisher's distribution with so many degrees of freedom exceeds a value.
/// 1 for a value that is not positive, or NaN, and where there is no degree of freedom.
double fisherProbability(double value, double first, double second);

} // namespace nivora::cs
