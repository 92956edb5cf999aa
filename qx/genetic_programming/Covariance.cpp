#include <qx/genetic_programming/Covariance.h>

#include <cmath>
#include <cstddef>
#include <numeric>

namespace qx::generics {

namespace {

double Mean(std::span<const double> X) {
  return std::accumulate(X.begin(), X.end(), 0.0) / static_cast<double>(X.size());
}

} // namespace

double CoVariance(std::span<const double> X, std::span<const double> Y) {
  if (X.size() != Y.size() || X.size() < 2) {
    return 0;
  }
  const double MeanX = Mean(X);
  const double MeanY = Mean(Y);
  double Sum = 0;
  for (std::size_t I = 0; I < X.size(); ++I) {
    Sum += (X[I] - MeanX) * (Y[I] - MeanY);
  }
  return Sum / static_cast<double>(X.size() - 1);
}

double Correlation(std::span<const double> X, std::span<const double> Y) {
  const double Deviations = std::sqrt(CoVariance(X, X)) * std::sqrt(CoVariance(Y, Y));
  return Deviations != 0 ? CoVariance(X, Y) / Deviations : 0;
}

} // namespace qx::generics
