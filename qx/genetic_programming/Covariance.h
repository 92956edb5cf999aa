#pragma once

#include <span>

namespace qx::generics {

/// The sample covariance of pairs, with the divisor n - 1; of an array with itself it is the variance. 0 when
/// the lengths differ and for fewer than two pairs.
double CoVariance(std::span<const double> X, std::span<const double> Y);

/// The correlation coefficient (Pearson) of pairs. 0 when the lengths differ, for fewer than two pairs, and
/// when a standard deviation is 0.
double Correlation(std::span<const double> X, std::span<const double> Y);

} // namespace qx::generics
