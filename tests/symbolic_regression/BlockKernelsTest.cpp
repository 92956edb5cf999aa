#include <qx/genetic_programming/GPFloat.h>
#include <qx/genetic_programming/StandardInstructions.h>
#include <qx/symbolic_regression/BlockKernels.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <support/NonFinite.h>
#include <vector>

namespace {

using namespace qx;

using tests::Infinity;
using tests::NaN;
constexpr double Huge = std::numeric_limits<double>::max();
constexpr double LeastDenormal = std::numeric_limits<double>::denorm_min();
constexpr double LeastNormal = std::numeric_limits<double>::min();

// One unit of values; a kernel is run on one unit after another.
template <class T>
using TUnit = std::array<T, BlockUnit<T>>;

template <class T>
TUnit<T> RunUnit(TBlockKernel<T> Kernel, const TUnit<T>& X, const TUnit<T>& Y, const TUnit<T>& Z) {
  struct alignas(64) TAligned {
    TUnit<T> X, Y, Z, Results;
  } Values{X, Y, Z, {}};
  TBlockArguments<T> Arguments;
  Arguments.Results = Values.Results.data();
  Arguments.X = {Values.X.data(), BlockUnit<T>};
  Arguments.Y = {Values.Y.data(), BlockUnit<T>};
  Arguments.Z = {Values.Z.data(), BlockUnit<T>};
  Arguments.Units = 1;
  Kernel(Arguments);
  return Values.Results;
}

template <class T>
T RunOnce(TBlockOperation Operation, T X, T Y = 0, T Z = 0) {
  TUnit<T> First, Second, Third;
  First.fill(X);
  Second.fill(Y);
  Third.fill(Z);
  return RunUnit(BlockKernels<T>().Operations[Operation], First, Second, Third)[1];
}

template <class T>
std::vector<T> AwkwardValues() {
  using TLimits = std::numeric_limits<T>;
  std::vector<T> Values;
  for (const T Value : {T(0),
                        TLimits::denorm_min(),
                        T(TLimits::min() / 3),
                        TLimits::min(),
                        T(1e-20),
                        T(0.1),
                        T(0.5),
                        T(0.70710678118654752),
                        T(1) - TLimits::epsilon(),
                        T(1),
                        T(1) + TLimits::epsilon(),
                        T(1.4142135623730951),
                        T(1.5707963267948966),
                        T(2),
                        T(3.1415926535897931),
                        T(22.5),
                        T(100.25),
                        T(709.7),
                        T(745.2),
                        T(1e5),
                        T(3.3e6),
                        T(1e15),
                        T(1e30),
                        TLimits::max(),
                        TLimits::infinity()}) {
    Values.push_back(Value);
    Values.push_back(-Value);
  }
  Values.push_back(TLimits::quiet_NaN());
  return Values;
}

// Numbers of every magnitude.
template <class T>
T RandomBits(std::mt19937_64& Engine) {
  if constexpr (sizeof(T) == 8) {
    return std::bit_cast<T>(Engine());
  } else {
    return std::bit_cast<T>(static_cast<std::uint32_t>(Engine()));
  }
}

template <class T>
bool SameBits(T X, T Y) {
  return (std::isnan(X) && std::isnan(Y)) || (X == Y && std::signbit(X) == std::signbit(Y));
}

template <class T>
void ExpectSameBitsOnAllSets() {
  const auto Sets = AllBlockKernels<T>();
  std::mt19937_64 Engine(7);
  const auto Awkward = AwkwardValues<T>();
  const auto AnyValue = [&] {
    switch (Engine() % 3) {
    case 0:
      return Awkward[Engine() % Awkward.size()];
    case 1:
      return RandomBits<T>(Engine);
    default:
      return static_cast<T>(static_cast<double>(Engine() % 2000001) / 1e5 - 10);
    }
  };
  for (int Operation = 0; Operation < BlockOperationCount; ++Operation) {
    for (int Round = 0; Round < 3000; ++Round) {
      TUnit<T> X, Y, Z;
      std::ranges::generate(X, AnyValue);
      std::ranges::generate(Y, AnyValue);
      std::ranges::generate(Z, AnyValue);
      const auto Expected = RunUnit(Sets.front()->Operations[Operation], X, Y, Z);
      for (const auto* const Set : Sets) {
        const auto Results = RunUnit(Set->Operations[Operation], X, Y, Z);
        for (std::size_t I = 0; I < Results.size(); ++I) {
          ASSERT_TRUE(SameBits(Expected[I], Results[I]))
              << Set->Name << " operation " << Operation << " of " << X[I] << ", " << Y[I] << ", " << Z[I]
              << ": " << Expected[I] << " and " << Results[I];
        }
      }
    }
  }
}

TEST(BlockKernels, GiveTheSameBitsOnEveryInstructionSet) {
  ExpectSameBitsOnAllSets<double>();
  ExpectSameBitsOnAllSets<float>();
}

// Distance from the exact value in units of its last place.
template <class T>
double UlpError(T Result, long double Exact) {
  const T Rounded = static_cast<T>(Exact);
  if (std::isnan(Rounded) || std::isinf(Rounded) || std::isinf(Result) || std::isnan(Result)) {
    const bool Same = (std::isnan(Rounded) && std::isnan(Result)) || Rounded == Result;
    return Same ? 0 : Infinity;
  }
  const int Digits = std::numeric_limits<T>::digits;
  const int LeastExponent = std::numeric_limits<T>::min_exponent - Digits;
  const int Exponent =
      Rounded == 0 ? LeastExponent : std::max(std::ilogb(Rounded) - Digits + 1, LeastExponent);
  return static_cast<double>(
      std::fabs((static_cast<long double>(Result) - Exact) / std::ldexp(1.0L, Exponent)));
}

using TExactFunction = long double (*)(long double X, long double Y);

// The range of the first argument is symmetric where it matters; `Logarithmic` spreads magnitudes evenly.
struct TAccuracyCase {
  TBlockOperation Operation;
  TExactFunction Exact;
  double Low;
  double High;
  bool Logarithmic = false;
};

std::vector<TAccuracyCase> AccuracyCases() {
  const TExactFunction Exp = [](long double X, long double) { return std::exp(X); };
  const TExactFunction Log = [](long double X, long double) { return X == 0 ? 0 : std::log(std::fabs(X)); };
  const TExactFunction Sin = [](long double X, long double) { return std::sin(X); };
  const TExactFunction Cos = [](long double X, long double) { return std::cos(X); };
  const TExactFunction Tan = [](long double X, long double) { return std::tan(X); };
  const TExactFunction Tanh = [](long double X, long double) { return std::tanh(X); };
  const TExactFunction Cbrt = [](long double X, long double) { return std::cbrt(X); };
  const TExactFunction Pow = [](long double X, long double Y) {
    return X == 0 ? 0 : std::pow(std::fabs(X), Y);
  };
  const TExactFunction AQ = [](long double X, long double Y) { return X / std::sqrt(1 + Y * Y); };
  return {{boExp, Exp, -750, 712},
          {boExp, Exp, -1, 1},
          {boExp, Exp, -1e-8, 1e-8},
          {boLog, Log, -1e308, 1e308, true},
          {boLog, Log, 0.5, 2},
          {boLog, Log, 0.9999, 1.0001},
          {boSin, Sin, -10, 10},
          {boSin, Sin, -3.3e6, 3.3e6},
          {boSin, Sin, -1e308, 1e308, true},
          {boCos, Cos, -10, 10},
          {boCos, Cos, -3.3e6, 3.3e6},
          {boCos, Cos, -1e308, 1e308, true},
          {boTan, Tan, -10, 10},
          {boTan, Tan, -3.3e6, 3.3e6},
          {boTan, Tan, -1e308, 1e308, true},
          {boTanh, Tanh, -25, 25},
          {boTanh, Tanh, -1, 1},
          {boTanh, Tanh, -1e300, 1e300, true},
          {boCbrt, Cbrt, -10, 10},
          {boCbrt, Cbrt, -1e308, 1e308, true},
          {boPow, Pow, 0, 10},
          {boPow, Pow, 0.9, 1.1},
          {boPow, Pow, -1e308, 1e308, true},
          {boAQ, AQ, -1e10, 1e10, true}};
}

template <class T>
void ExpectAccurate() {
  std::mt19937_64 Engine(11);
  for (const TAccuracyCase& Case : AccuracyCases()) {
    const auto Value = [&] {
      const double Share = std::uniform_real_distribution<double>(0, 1)(Engine);
      const double Even = Case.Low + Share * (Case.High - Case.Low);
      const double Spread =
          std::pow(10, (2 * Share - 1) * std::log10(Case.High)) * (Engine() % 2 == 0 ? 1 : -1);
      return static_cast<T>(Case.Logarithmic ? Spread : Even);
    };
    const auto Power = [&] {
      constexpr double Ranges[] = {3, 50, 1000};
      return static_cast<T>(std::uniform_real_distribution<double>(-1, 1)(Engine) * Ranges[Engine() % 3]);
    };
    double Worst = 0;
    T At = 0;
    T AtPower = 0;
    for (int Round = 0; Round < 8000; ++Round) {
      TUnit<T> X, Y;
      std::ranges::generate(X, Value);
      std::ranges::generate(Y, Power);
      const auto Results = RunUnit(BlockKernels<T>().Operations[Case.Operation], X, Y, Y);
      for (std::size_t I = 0; I < X.size(); ++I) {
        const double Error = UlpError(Results[I], Case.Exact(X[I], Y[I]));
        if (Error > Worst) {
          Worst = Error;
          At = X[I];
          AtPower = Y[I];
        }
      }
    }
    EXPECT_LE(Worst, 4) << "operation " << int(Case.Operation) << " from " << Case.Low << " to " << Case.High
                        << " at " << At << ", " << AtPower;
    testing::Test::RecordProperty("ulp_" + std::to_string(Case.Operation) + "_" + std::to_string(Case.High),
                                  std::to_string(Worst));
  }
}

TEST(BlockKernels, AreWithinFourUnitsInTheLastPlaceInDoublePrecision) { ExpectAccurate<double>(); }

TEST(BlockKernels, AreWithinFourUnitsInTheLastPlaceInSinglePrecision) { ExpectAccurate<float>(); }

// Every operation that is a standard instruction, against the instruction itself.
template <class T>
void ExpectAsTheInstructions() {
  TQXGPFloatInstructions Set(nullptr);
  for (const TStandardGroup Group :
       {sgArithmetic, sgPowers, sgExponential, sgTrigonometric, sgExtremes, sgComparisons, sgBoolean}) {
    AddStandardInstructions(Set, Group);
  }
  auto& Argument = Set.Add();
  Argument.SetOperation(gpConstant);
  const auto Values = AwkwardValues<T>();
  for (auto& Instruction : Set) {
    if (&Instruction == &Argument) {
      continue;
    }
    const TBlockOperation Operation = BlockOperationOf(StandardInstructionName(Instruction));
    ASSERT_EQ(ArityOf(Operation), Instruction.Arity()) << Instruction.Name();
    const auto Node = MakeNode<TQXGPFloatNode>(&Instruction);
    for (int I = 0; I < Instruction.Arity(); ++I) {
      Node->AddChild(MakeNode<TQXGPFloatNode>(&Argument));
    }
    for (const T X : Values) {
      for (const T Y : Values) {
        const T Operands[] = {X, Y, T(7)};
        for (int I = 0; I < Instruction.Arity(); ++I) {
          Node->Children(I)->SetValue(Operands[I]);
        }
        const T Expected = static_cast<T>(Node->Execute(nullptr));
        const T Result = RunOnce<T>(Operation, X, Y, T(7));
        EXPECT_LE(UlpError<T>(Result, Expected), 4.5)
            << Instruction.Name() << " of " << X << " and " << Y << ": " << Result << " for " << Expected;
        if (Expected == 0) {
          EXPECT_EQ(std::signbit(Result), std::signbit(Expected))
              << Instruction.Name() << " of " << X << ", " << Y;
        }
      }
    }
  }
}

TEST(BlockKernels, DoWhatTheStandardInstructionsDoAtTheEdges) { ExpectAsTheInstructions<double>(); }

TEST(BlockKernels, DoWhatTheStandardInstructionsDoAtTheEdgesOfSinglePrecision) {
  ExpectAsTheInstructions<float>();
}

TEST(BlockKernels, KeepTheEdgesOfTheExponential) {
  EXPECT_EQ(RunOnce(boExp, -200.0), std::exp(-200.0));
  EXPECT_EQ(RunOnce(boExp, -745.0), LeastDenormal);
  EXPECT_EQ(RunOnce(boExp, -746.0), 0);
  EXPECT_EQ(RunOnce(boExp, 710.0), Infinity);
  EXPECT_EQ(RunOnce(boExp, -Infinity), 0);
  EXPECT_EQ(RunOnce(boExp, Infinity), Infinity);
  EXPECT_EQ(RunOnce(boExp, 0.0), 1);
  EXPECT_TRUE(std::isnan(RunOnce(boExp, NaN)));
}

TEST(BlockKernels, KeepTheEdgesOfTheLogarithm) {
  EXPECT_EQ(RunOnce(boLog, 0.0), 0);
  EXPECT_EQ(RunOnce(boLog, 1.0), 0);
  EXPECT_EQ(RunOnce(boLog, -1.0), 0);
  EXPECT_EQ(RunOnce(boLog, LeastDenormal), std::log(LeastDenormal));
  EXPECT_EQ(RunOnce(boLog, LeastNormal), std::log(LeastNormal));
  EXPECT_EQ(RunOnce(boLog, -Infinity), Infinity);
  EXPECT_TRUE(std::isnan(RunOnce(boLog, NaN)));
}

TEST(BlockKernels, ReduceTheHardestAngles) {
  // The double that comes nearest to a multiple of a quarter turn.
  const double Hardest = 0x1.6ac5b262ca1ffp+849;
  EXPECT_LE(UlpError(RunOnce(boCos, Hardest), -4.687165924254627611122582801963884e-19L), 4);
  EXPECT_EQ(RunOnce(boSin, Hardest), 1.0);
  EXPECT_LE(UlpError(RunOnce(boSin, 0x1.921fb54442d18p+1), 1.2246467991473531772e-16L), 4);
  EXPECT_LE(UlpError(RunOnce(boSin, Huge), 0.0049619547891840573L), 1e4); // as many digits as are given here
  EXPECT_TRUE(std::isnan(RunOnce(boSin, Infinity)));
  EXPECT_TRUE(std::isnan(RunOnce(boCos, -Infinity)));
}

TEST(BlockKernels, TakeConstantsForAllRows) {
  struct alignas(64) TValues {
    std::array<double, 24> Rows;
    std::array<double, 8> Constant;
    std::array<double, 24> Results;
  } Values{};
  for (std::size_t I = 0; I < Values.Rows.size(); ++I) {
    Values.Rows[I] = static_cast<double>(I);
  }
  Values.Constant.fill(100);
  TBlockArguments<double> Arguments;
  Arguments.Results = Values.Results.data();
  Arguments.X = {Values.Constant.data(), 0};
  Arguments.Y = {Values.Rows.data(), BlockUnit<double>};
  Arguments.Units = 3;
  for (const auto* const Set : AllBlockKernels<double>()) {
    Set->Operations[boSub](Arguments);
    for (std::size_t I = 0; I < Values.Rows.size(); ++I) {
      EXPECT_EQ(Values.Results[I], 100 - static_cast<double>(I));
    }
  }
}

template <class T>
void ExpectFusedAsTheirParts() {
  struct TFused {
    TBlockOperation Fused, Outer, Inner;
    bool First; // whether the inner result comes first
  };
  constexpr TFused All[] = {
      {boAddAdd, boAdd, boAdd, false}, {boAddSub, boAdd, boSub, false}, {boAddMul, boAdd, boMul, false},
      {boSubAdd, boSub, boAdd, false}, {boSubSub, boSub, boSub, false}, {boSubMul, boSub, boMul, false},
      {boMulAdd, boMul, boAdd, false}, {boMulSub, boMul, boSub, false}, {boMulMul, boMul, boMul, false},
      {boAddLess, boSub, boAdd, true}, {boSubLess, boSub, boSub, true}, {boMulLess, boSub, boMul, true}};
  std::mt19937_64 Engine(3);
  for (const TFused& Fused : All) {
    for (int Round = 0; Round < 2000; ++Round) {
      const T X = RandomBits<T>(Engine), Y = RandomBits<T>(Engine), Z = RandomBits<T>(Engine);
      const T Inner = RunOnce<T>(Fused.Inner, X, Y);
      const T Expected = Fused.First ? RunOnce<T>(Fused.Outer, Inner, Z) : RunOnce<T>(Fused.Outer, Z, Inner);
      ASSERT_TRUE(SameBits(RunOnce<T>(Fused.Fused, X, Y, Z), Expected)) << X << " " << Y << " " << Z;
    }
  }
}

TEST(BlockKernels, FusedOperationsRoundAsTheirPartsDo) {
  ExpectFusedAsTheirParts<double>();
  ExpectFusedAsTheirParts<float>();
}

TEST(BlockKernels, SumsCountRowsByTheirWeights) {
  struct alignas(64) TRows {
    std::array<double, 16> Predictions, Targets, Weights;
  } Values{};
  for (std::size_t I = 0; I < 11; ++I) {
    Values.Predictions[I] = static_cast<double>(I * I);
    Values.Targets[I] = 2.0 * static_cast<double>(I);
    Values.Weights[I] = I % 2 == 0 ? 1 : 3;
  }
  for (std::size_t I = 11; I < 16; ++I) {
    Values.Predictions[I] = Values.Targets[I] = 1e6; // rows that pad the unit, of weight 0
  }
  const TErrorRows<double> Rows{Values.Predictions.data(), Values.Targets.data(), Values.Weights.data(), 16};
  double Sum = 0, Squares = 0, Products = 0, Residuals = 0, Magnitudes = 0;
  for (std::size_t I = 0; I < 11; ++I) {
    const double W = Values.Weights[I], P = Values.Predictions[I], T = Values.Targets[I];
    Sum += W * P;
    Squares += W * (P - 30) * (P - 30);
    Products += W * (P - 30) * (T - 10);
    Residuals += W * (T - (3 + 0.5 * P)) * (T - (3 + 0.5 * P));
    Magnitudes += W * std::abs(T - (3 + 0.5 * P));
  }
  for (const auto* const Set : AllBlockKernels<double>()) {
    EXPECT_DOUBLE_EQ(Set->Sum(Rows), Sum);
    EXPECT_DOUBLE_EQ(Set->Centred(Rows, 30, 10).Squares, Squares);
    EXPECT_DOUBLE_EQ(Set->Centred(Rows, 30, 10).Products, Products);
    EXPECT_DOUBLE_EQ(Set->Residuals(Rows, 3, 0.5).Squares, Residuals);
    EXPECT_DOUBLE_EQ(Set->Residuals(Rows, 3, 0.5).Magnitudes, Magnitudes);
  }
}

TEST(BlockKernels, RefuseNamesThatAreNoStandardInstruction) {
  EXPECT_THROW(BlockOperationOf("Foo"), std::invalid_argument);
  EXPECT_THROW(BlockOperationOf(""), std::invalid_argument);
}

} // namespace
