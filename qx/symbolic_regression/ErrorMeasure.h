#pragma once

#include <qx/foundation/QXGAConsts.h>
#include <qx/symbolic_regression/AlignedVector.h>
#include <qx/symbolic_regression/BlockKernels.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace qx {

/// How far predictions are from their targets. Each is 0 for perfect ones and grows the worse they are; rows
/// count with their weights. SSE is the sum of squared errors, SST that of the targets about their mean.
enum TErrorMeasure : std::uint8_t {
  /// SSE over the sum of weights, in squares of the target's unit.
  emMSE,
  /// Its root, in the target's unit.
  emRMSE,
  /// SSE / SST.
  emNMSE,
  /// The mean magnitude of the errors, in the target's unit.
  emMAE,
  /// 1 - R2, which is SSE / SST: the share of the variance that is not explained.
  emR2,
  /// 1 - r2, of the coefficient of correlation between predictions and targets: 0 as well where only scale
  /// and
  /// offset are wrong.
  emCorrelation
};

template <>
std::span<const std::string_view> EnumNames<TErrorMeasure>();

/// Target = `Offset` + `Scale` prediction.
struct TLinearScaling {
  double Offset = 0;
  double Scale = 1;

  bool operator==(const TLinearScaling&) const = default;
};

/// The targets of a data set's rows, with their weights.
class TRegressionTarget {
public:
  TRegressionTarget() = default;
  /// Without weights, each row counts once. Raises std::invalid_argument for a target that is not finite, and
  /// for weights of another number, negative ones, and those of which none is positive; for targets whose
  /// squared deviations overflow or, when they differ, vanish.
  explicit TRegressionTarget(std::span<const double> Targets, std::span<const double> Weights = {});

  std::size_t RowCount() const { return FRowCount; }
  std::span<const double> Targets() const { return std::span(FTargets).first(FRowCount); }
  std::span<const double> Weights() const { return std::span(FWeights).first(FRowCount); }
  double Mean() const { return FMean; }

  /// The scaling that makes the sum of squared errors least (Keijzer 2003). Predictions that are all equal
  /// are scaled by 0. Predictions are aligned to 64 bytes and padded to whole units of rows.
  template <class T>
  TLinearScaling ScalingFor(const T* Predictions) const;
  /// The error of scaled predictions; NaN or infinite where they are.
  template <class T>
  double Error(TErrorMeasure Measure, const T* Predictions, const TLinearScaling& Scaling = {}) const;
  /// The sum of squared errors.
  template <class T>
  double SquaredError(const T* Predictions, const TLinearScaling& Scaling = {}) const;
  /// The sum of products of the values in two columns.
  double Product(const double* First, const double* Second) const;

private:
  template <class T>
  TErrorRows<T> RowsOf(const T* Predictions) const;
  template <class T>
  double CorrelationError(const T* Predictions) const;
  double Normalized(double SquaredError) const;
  void RequireSquares() const;

  std::size_t FRowCount = 0;
  TAlignedVector<double> FTargets; // padded
  TAlignedVector<double> FWeights; // padded with 0
  double FWeightSum = 0;
  double FMean = 0;
  double FSquares = 0;  // SST
  double FRounding = 0; // what it is at most when all targets are equal
};

extern template TLinearScaling TRegressionTarget::ScalingFor(const double* Predictions) const;
extern template TLinearScaling TRegressionTarget::ScalingFor(const float* Predictions) const;
extern template double TRegressionTarget::Error(TErrorMeasure Measure, const double* Predictions,
                                                const TLinearScaling& Scaling) const;
extern template double TRegressionTarget::Error(TErrorMeasure Measure, const float* Predictions,
                                                const TLinearScaling& Scaling) const;
extern template double TRegressionTarget::SquaredError(const double* Predictions,
                                                       const TLinearScaling& Scaling) const;
extern template double TRegressionTarget::SquaredError(const float* Predictions,
                                                       const TLinearScaling& Scaling) const;

} // namespace qx
