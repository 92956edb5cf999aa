#include <qx/symbolic_regression/ErrorMeasure.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

namespace qx {

namespace {

// What equal numbers may be off from their mean, as a share of it.
constexpr double Rounding = 8 * std::numeric_limits<double>::epsilon();

} // namespace

TRegressionTarget::TRegressionTarget(std::span<const double> Targets, std::span<const double> Weights)
    : FRowCount(Targets.size()) {
  const auto Refuse = [](const char* What, std::size_t Row, double Value) {
    throw std::invalid_argument(std::string(What) + " of row " + std::to_string(Row + 1) + " is " +
                                std::to_string(Value));
  };
  if (!Weights.empty() && Weights.size() != Targets.size()) {
    throw std::invalid_argument("There are " + std::to_string(Weights.size()) + " weights for " +
                                std::to_string(Targets.size()) + " targets");
  }
  for (std::size_t Row = 0; Row < FRowCount; ++Row) {
    if (!std::isfinite(Targets[Row])) {
      Refuse("The target", Row, Targets[Row]);
    }
    if (!Weights.empty() && !(Weights[Row] >= 0 && std::isfinite(Weights[Row]))) {
      Refuse("The weight", Row, Weights[Row]);
    }
  }
  const std::size_t Padded = PaddedRows<float>(FRowCount);
  FTargets.assign(Targets.begin(), Targets.end());
  FTargets.resize(Padded, 0);
  FWeights.assign(FRowCount, 1);
  if (!Weights.empty()) {
    FWeights.assign(Weights.begin(), Weights.end());
  }
  FWeights.resize(Padded, 0);
  if (FRowCount == 0) {
    return;
  }
  const TAlignedVector<double> Ones(Padded, 1);
  const TBlockKernels<double>& Kernels = BlockKernels<double>();
  FWeightSum = Kernels.Sum(RowsOf(Ones.data()));
  if (!(FWeightSum > 0)) {
    throw std::invalid_argument("No row has a positive weight");
  }
  FMean = Kernels.Sum(RowsOf(FTargets.data())) / FWeightSum;
  FSquares = Kernels.Centred(RowsOf(FTargets.data()), FMean, FMean).Squares;
  FRounding = FWeightSum * (Rounding * FMean) * (Rounding * FMean);
  RequireSquares();
}

// Squares that overflow or vanish would make any prediction a perfect one.
void TRegressionTarget::RequireSquares() const {
  const bool AreEqual = std::ranges::all_of(Targets(), [&](double Target) { return Target == FTargets[0]; });
  if (!std::isfinite(FSquares)) {
    throw std::invalid_argument("The targets are too large for squares of errors; scale them down");
  }
  if (FSquares < std::numeric_limits<double>::min() / std::numeric_limits<double>::epsilon() && !AreEqual) {
    throw std::invalid_argument(
        "The targets are too close to each other for squares of errors; scale them up");
  }
}

template <class T>
TErrorRows<T> TRegressionTarget::RowsOf(const T* Predictions) const {
  return {Predictions, FTargets.data(), FWeights.data(), PaddedRows<double>(FRowCount)};
}

template <class T>
TLinearScaling TRegressionTarget::ScalingFor(const T* Predictions) const {
  const TBlockKernels<T>& Kernels = BlockKernels<T>();
  const double Mean = Kernels.Sum(RowsOf(Predictions)) / FWeightSum;
  const TCentredSums Sums = Kernels.Centred(RowsOf(Predictions), Mean, FMean);

  if (Sums.Squares <= FWeightSum * (Rounding * Mean) * (Rounding * Mean)) {
    return {FMean, 0};
  }
  const double Scale = Sums.Products / Sums.Squares;
  return {FMean - Scale * Mean, Scale};
}

template <class T>
double TRegressionTarget::SquaredError(const T* Predictions, const TLinearScaling& Scaling) const {
  return BlockKernels<T>().Residuals(RowsOf(Predictions), Scaling.Offset, Scaling.Scale).Squares;
}

template <class T>
double TRegressionTarget::Error(TErrorMeasure Measure, const T* Predictions,
                                const TLinearScaling& Scaling) const {
  if (Measure == emCorrelation) {
    return CorrelationError(Predictions);
  }
  const TResidualSums Sums = BlockKernels<T>().Residuals(RowsOf(Predictions), Scaling.Offset, Scaling.Scale);
  switch (Measure) {
  case emMSE:
    return Sums.Squares / FWeightSum;
  case emRMSE:
    return std::sqrt(Sums.Squares / FWeightSum);
  case emMAE:
    return Sums.Magnitudes / FWeightSum;
  default:
    return Normalized(Sums.Squares);
  }
}

template <class T>
double TRegressionTarget::CorrelationError(const T* Predictions) const {
  return Normalized(SquaredError(Predictions, ScalingFor(Predictions)));
}

// Targets that are all equal leave nothing to be explained.
double TRegressionTarget::Normalized(double SquaredError) const {
  if (FSquares <= FRounding) {
    return SquaredError <= FRounding ? 0 : std::numeric_limits<double>::infinity();
  }
  return SquaredError / FSquares;
}

double TRegressionTarget::Product(const double* First, const double* Second) const {
  return BlockKernels<double>()
      .Centred({First, Second, FWeights.data(), PaddedRows<double>(FRowCount)}, 0, 0)
      .Products;
}

template TLinearScaling TRegressionTarget::ScalingFor(const double* Predictions) const;
template TLinearScaling TRegressionTarget::ScalingFor(const float* Predictions) const;
template double TRegressionTarget::Error(TErrorMeasure Measure, const double* Predictions,
                                         const TLinearScaling& Scaling) const;
template double TRegressionTarget::Error(TErrorMeasure Measure, const float* Predictions,
                                         const TLinearScaling& Scaling) const;
template double TRegressionTarget::SquaredError(const double* Predictions,
                                                const TLinearScaling& Scaling) const;
template double TRegressionTarget::SquaredError(const float* Predictions,
                                                const TLinearScaling& Scaling) const;

} // namespace qx
