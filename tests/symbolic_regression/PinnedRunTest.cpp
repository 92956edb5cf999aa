// Whole regressions, known by what they come to. The functions of the C library take no part: a program that
// is evaluated over blocks of rows is computed by this library's own, and the data are rational.

#include <gtest/gtest.h>

#include <cstdint>
#include <support/Fingerprint.h>
#include <support/SmallRegression.h>

namespace {

using namespace qx;

double Rational(double X) { return (X * X * X - X) / (2 + X * X) + 0.25 * X; }

std::uint64_t FingerprintOf(bool Single, TErrorMeasure Measure) {
  TQXSymbolicRegression Regression;
  for (const TStandardGroup Group : {sgArithmetic, sgPowers, sgExponential, sgTrigonometric, sgExtremes}) {
    AddStandardInstructions(Regression.Instructions(), Group);
  }
  SeedRandom(3);
  Regression.SetSinglePrecision(Single);
  Regression.SetErrorMeasure(Measure);
  Regression.SetInitialPopulation(60);
  std::vector<double> X;
  std::vector<double> Y;
  for (int Row = 0; Row < 300; ++Row) {
    X.push_back(Row / 64.0 - 2);
    Y.push_back(Rational(X.back()));
  }
  TQXDataSet Data;
  Data.AddColumn("x", X);
  Data.AddColumn("y", Y);
  Regression.SetData(Data, "y");
  Regression.Evolve(12);
  tests::TFingerprint Taken;
  Taken.Take(tests::Outcome(Regression));
  return Taken.Hash();
}

TEST(PinnedRegression, IsTheSameEverywhere) {
  EXPECT_EQ(FingerprintOf(false, emNMSE), 16141338461343267301U);
}
TEST(PinnedRegression, InSinglePrecisionIsTheSameEverywhere) {
  EXPECT_EQ(FingerprintOf(true, emNMSE), 11514215775539325371U);
}
TEST(PinnedRegression, ByAnotherMeasureIsTheSameEverywhere) {
  EXPECT_EQ(FingerprintOf(false, emMAE), 11166536279211103469U);
}

} // namespace
