#include <qx/symbolic_regression/ErrorMeasure.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <support/NonFinite.h>
#include <vector>

namespace {

using namespace qx;

using tests::Infinity;

// Predictions, aligned and padded by some other value.
template <class T = double>
TAlignedVector<T> Padded(std::vector<double> Values) {
  TAlignedVector<T> Result(Values.begin(), Values.end());
  Result.resize(PaddedRows<float>(Values.size()), T(1e9));
  return Result;
}

TEST(ErrorMeasure, TargetsWhoseSquaresOverflowOrVanishAreRefused) {
  for (const double Unit : {1e300, 1e200, 1e-170, 1e-300}) {
    const std::vector<double> Targets = {Unit, 4 * Unit, 9 * Unit};
    EXPECT_THROW(TRegressionTarget{Targets}, std::invalid_argument) << Unit;
  }
  for (const double Unit : {1e150, 1e-140}) {
    const std::vector<double> Targets = {Unit, 4 * Unit, 9 * Unit};
    EXPECT_NO_THROW(TRegressionTarget{Targets}) << Unit;
  }
  EXPECT_NO_THROW(TRegressionTarget(std::vector<double>{3, 3, 3})) << "equal ones are equal, not too close";
}

TEST(ErrorMeasure, IsWhatItsNameSays) {
  const TRegressionTarget Target(std::vector<double>{1, 2, 3, 6});
  const auto Predictions = Padded({2, 2, 1, 6}); // errors -1, 0, 2, 0; the targets' squares about 3 are 14
  const double* const P = Predictions.data();
  EXPECT_DOUBLE_EQ(Target.Error(emMSE, P), 5.0 / 4);
  EXPECT_DOUBLE_EQ(Target.Error(emRMSE, P), std::sqrt(5.0 / 4));
  EXPECT_DOUBLE_EQ(Target.Error(emNMSE, P), 5.0 / 14);
  EXPECT_DOUBLE_EQ(Target.Error(emMAE, P), 3.0 / 4);
  EXPECT_DOUBLE_EQ(Target.Error(emR2, P), 5.0 / 14);
  // Deviations -0.75, -0.75, -1.75, 3.25 and -2, -1, 0, 3: products 12, squares 14.75 and 14.
  EXPECT_NEAR(Target.Error(emCorrelation, P), 1 - 12.0 * 12 / (14.75 * 14), 1e-15);
}

TEST(ErrorMeasure, RowsCountWithTheirWeights) {
  const TRegressionTarget Target(std::vector<double>{1, 2, 3}, std::vector<double>{1, 0, 3});
  const auto Predictions = Padded({2, 100, 5});
  EXPECT_DOUBLE_EQ(Target.Mean(), 10.0 / 4);
  EXPECT_DOUBLE_EQ(Target.Error(emMSE, Predictions.data()), 13.0 / 4);
  EXPECT_DOUBLE_EQ(Target.Error(emMAE, Predictions.data()), 7.0 / 4);
  EXPECT_DOUBLE_EQ(Target.Error(emNMSE, Predictions.data()), 13.0 / 3);
}

TEST(ErrorMeasure, ScalingMakesTheSquaredErrorLeast) {
  std::vector<double> Targets;
  std::vector<double> Values;
  for (int I = 0; I < 37; ++I) {
    Values.push_back(std::sin(I));
    Targets.push_back(5 - 3 * Values.back() + (I % 2 == 0 ? 0.1 : -0.1));
  }
  const TRegressionTarget Target(Targets);
  const auto Predictions = Padded(Values);
  const TLinearScaling Best = Target.ScalingFor(Predictions.data());
  EXPECT_NEAR(Best.Offset, 5, 0.02);
  EXPECT_NEAR(Best.Scale, -3, 0.02);
  const double Least = Target.SquaredError(Predictions.data(), Best);
  for (const double Step : {-1e-4, 1e-4}) {
    EXPECT_LT(Least, Target.SquaredError(Predictions.data(), {Best.Offset + Step, Best.Scale}));
    EXPECT_LT(Least, Target.SquaredError(Predictions.data(), {Best.Offset, Best.Scale + Step}));
  }
  const auto Singles = Padded<float>(Values);
  EXPECT_NEAR(Target.ScalingFor(Singles.data()).Scale, Best.Scale, 1e-6);
  EXPECT_NEAR(Target.Error(emMSE, Singles.data(), Best), Target.Error(emMSE, Predictions.data(), Best), 1e-6);
}

TEST(ErrorMeasure, PredictionsThatAreAllEqualBecomeTheMean) {
  const TRegressionTarget Target(std::vector<double>{1, 2, 3, 6});
  for (const double Value : {0.0, 0.1, 1e15}) {
    const auto Predictions = Padded({Value, Value, Value, Value});
    EXPECT_EQ(Target.ScalingFor(Predictions.data()), (TLinearScaling{3, 0}));
    EXPECT_EQ(Target.Error(emNMSE, Predictions.data(), {3, 0}), 1);
    EXPECT_EQ(Target.Error(emCorrelation, Predictions.data()), 1);
  }
}

TEST(ErrorMeasure, TargetsThatAreAllEqualLeaveNothingToExplain) {
  const TRegressionTarget Target(std::vector<double>{2, 2, 2});
  EXPECT_EQ(Target.Error(emNMSE, Padded({2, 2, 2}).data()), 0);
  EXPECT_EQ(Target.Error(emNMSE, Padded({2, 2, 3}).data()), Infinity);
  EXPECT_DOUBLE_EQ(Target.Error(emMSE, Padded({2, 2, 3}).data()), 1.0 / 3);
}

TEST(ErrorMeasure, EqualTargetsAreKnownWhateverTheirMeanRoundsTo) {
  for (int Count = 1; Count < 200; ++Count) {
    const double Value = 0.1 + 0.37 * Count;
    const std::vector<double> Targets(static_cast<std::size_t>(Count), Value);
    const TRegressionTarget Target(Targets);
    const auto Predictions = Padded(Targets);
    EXPECT_EQ(Target.Error(emNMSE, Predictions.data(), Target.ScalingFor(Predictions.data())), 0) << Count;
  }
}

TEST(ErrorMeasure, PredictionsThatAreNotFiniteGiveNoFiniteError) {
  const TRegressionTarget Target(std::vector<double>{1, 2, 3});
  for (const double Value : {Infinity, -Infinity, std::numeric_limits<double>::quiet_NaN(), 1e200}) {
    const auto Predictions = Padded({1, Value, 3});
    for (const TErrorMeasure Measure : {emMSE, emRMSE, emNMSE, emR2}) {
      EXPECT_FALSE(std::isfinite(Target.Error(Measure, Predictions.data()))) << Measure << " of " << Value;
    }
  }
  EXPECT_FALSE(std::isfinite(Target.Error(emMAE, Padded({1, Infinity, 3}).data())));
}

TEST(ErrorMeasure, RefusesTargetsAndWeightsThatAreNone) {
  const std::vector<double> Targets = {1, 2, 3};
  EXPECT_THROW(TRegressionTarget(std::vector<double>{1, Infinity}), std::invalid_argument);
  EXPECT_THROW(TRegressionTarget(std::vector<double>{NAN, 1}), std::invalid_argument);
  EXPECT_THROW(TRegressionTarget(Targets, std::vector<double>{1, 2}), std::invalid_argument);
  EXPECT_THROW(TRegressionTarget(Targets, std::vector<double>{1, -2, 1}), std::invalid_argument);
  EXPECT_THROW(TRegressionTarget(Targets, std::vector<double>{0, 0, 0}), std::invalid_argument);
  try {
    TRegressionTarget(std::vector<double>{1, 2, NAN});
    ADD_FAILURE();
  } catch (const std::invalid_argument& Error) {
    EXPECT_EQ(std::string(Error.what()), "The target of row 3 is nan");
  }
}

} // namespace
