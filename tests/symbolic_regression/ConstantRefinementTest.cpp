#include <qx/genetic_programming/QXGeneticProgramming.h>
#include <qx/symbolic_regression/BatchEvaluator.h>
#include <qx/symbolic_regression/ConstantRefinement.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace qx;
using generics::MakeNode;
using TNode = generics::TQXGPNode<TGAFloat>;
using TNodePointer = TNode::TPointer;

// Every derivative against the difference of two values, over ordinary arguments away from kinks.
TEST(DerivativeKernels, AreTheSlopesOfTheOperations) {
  std::mt19937_64 Engine(1);
  constexpr double Step = 1e-6;
  struct alignas(64) TUnits {
    std::array<double, 8> X, Y, Z, Results, One, ByX, ByY, ByZ;
  } U{};
  U.One.fill(1);
  for (const auto* const Kernels : AllBlockKernels<double>()) {
    for (int Operation = 0; Operation <= boXor; ++Operation) {
      for (int Round = 0; Round < 50; ++Round) {
        for (auto* const Values : {&U.X, &U.Y, &U.Z}) {
          std::ranges::generate(*Values, [&] {
            return std::uniform_real_distribution<double>(0.2, 1.4)(Engine) * (Engine() % 2 == 0 ? 1 : -1);
          });
        }
        TBlockArguments<double> Arguments{
            U.Results.data(), {U.X.data(), 8}, {U.Y.data(), 8}, {U.Z.data(), 8}, 1};
        const auto Values = [&](std::array<double, 8>& Argument, double Shift) {
          const auto Former = Argument;
          std::ranges::for_each(Argument, [&](double& Value) { Value += Shift; });
          Kernels->Operations[Operation](Arguments);
          Argument = Former;
          return U.Results;
        };
        const int Arity = ArityOf(static_cast<TBlockOperation>(Operation));
        Values(U.X, 0);
        Kernels->Derivatives[Operation]({Arguments.X, Arguments.Y, Arguments.Z, U.Results.data(),
                                         U.One.data(), U.ByX.data(), U.ByY.data(), U.ByZ.data(), 1});
        std::array<double, 8>* const Varied[] = {&U.X, &U.Y, &U.Z};
        const std::array<double, 8>* const By[] = {&U.ByX, &U.ByY, &U.ByZ};
        for (int Argument = 0; Argument < Arity; ++Argument) {
          const auto Above = Values(*Varied[Argument], Step);
          const auto Below = Values(*Varied[Argument], -Step);
          for (std::size_t I = 0; I < 8; ++I) {
            const double Slope = (Above[I] - Below[I]) / (2 * Step);
            const bool AtStep = std::fabs(U.X[I] - U.Y[I]) < 2 * Step; // of a comparison
            EXPECT_TRUE(AtStep ||
                        std::fabs((*By[Argument])[I] - Slope) <= 1e-6 * std::max(1.0, std::fabs(Slope)) * 10)
                << NameOf(static_cast<TBlockOperation>(Operation)) << " by argument " << Argument << " at "
                << U.X[I] << ", " << U.Y[I] << ": " << (*By[Argument])[I] << " for " << Slope;
          }
        }
      }
    }
  }
}

TEST(DerivativeKernels, AreZeroWhereAProtectedOperationLeavesItsFunction) {
  struct alignas(64) TUnits {
    std::array<double, 8> X, Y, Results, One, ByX, ByY, ByZ;
  } U{};
  U.One.fill(1);
  U.Y.fill(0);
  for (const TBlockOperation Operation : {boDiv, boInv, boLog, boSqrt, boCbrt, boPow, boAbs}) {
    U.X.fill(Operation == boDiv ? 3 : 0);
    BlockKernels<double>().Derivatives[Operation]({{U.X.data(), 8},
                                                   {U.Y.data(), 8},
                                                   {U.X.data(), 8},
                                                   U.Results.data(),
                                                   U.One.data(),
                                                   U.ByX.data(),
                                                   U.ByY.data(),
                                                   U.ByZ.data(),
                                                   1});
    EXPECT_EQ(U.ByX[0], 0) << NameOf(Operation);
    EXPECT_EQ(U.ByY[0], 0) << NameOf(Operation);
  }
}

class ConstantRefinement : public testing::Test {
protected:
  ConstantRefinement() {
    for (const TStandardGroup Group :
         {sgArithmetic, sgPowers, sgExponential, sgTrigonometric, sgComparisons}) {
      AddStandardInstructions(Instructions, Group);
    }
    Instructions.Add().SetName("x");
    Instructions.Add().SetName("c");
    Instructions[Instructions.IndexOf("c")].SetOperation(gpConstant);
    auto& Host = Instructions.Add();
    Host.SetName("Host");
    Host.SetArity(1);
  }

  TNodePointer Of(std::string_view Name, double Value = 0) {
    TNodePointer Result = MakeNode<TQXGPFloatNode>(&Instructions[Instructions.IndexOf(Name)]);
    Result->SetValue(Value);
    return Result;
  }
  template <class... TArguments>
  TNodePointer Of(std::string_view Name, TNodePointer First, TArguments... Arguments) {
    TNodePointer Result = Of(Name);
    Result->AddChild(std::move(First));
    (Result->AddChild(std::move(Arguments)), ...);
    return Result;
  }
  template <class TFunction>
  void SetTarget(int Rows, TFunction Function) {
    std::vector<double> X;
    std::vector<double> Y;
    for (int I = 0; I < Rows; ++I) {
      X.push_back(4.0 * I / Rows - 1.5);
      Y.push_back(Function(X.back()));
    }
    Data.AddColumn("x", X);
    Target = TRegressionTarget(Y);
    Evaluator.Prepare(Data, Instructions);
    Refinement.Prepare(Evaluator.Plan(), Data, Target);
  }
  void Apply(std::span<const TConstantRefinement::TConstant> Constants) {
    for (const auto& Constant : Constants) {
      Constant.Node->SetValue(Constant.Value);
    }
  }

  TQXGPFloatInstructions Instructions{nullptr};
  TQXDataSet Data;
  TRegressionTarget Target;
  TQXBatchEvaluator<double> Evaluator;
  TConstantRefinement Refinement;
};

TEST_F(ConstantRefinement, FindsTheConstantsOfAFormula) {
  SetTarget(333, [](double X) { return 1.5 * std::sin(2.5 * X) + 0.5 * std::exp(-0.75 * X); });
  const auto Program = Of("Add", Of("Mul", Of("c", 1), Of("Sin", Of("Mul", Of("c", 2.2), Of("x")))),
                          Of("Mul", Of("c", 1), Of("Exp", Of("Mul", Of("c", -0.5), Of("x")))));
  Apply(Refinement.Refine(*Program, false, 40));
  EXPECT_LT(Target.Error(emNMSE, Evaluator.Evaluate(*Program).data()), 1e-25);
  EXPECT_NEAR(std::fabs(Program->Children(0)->Children(0)->Value()), 1.5, 1e-9);
  EXPECT_NEAR(Program->Children(1)->Children(0)->Value(), 0.5, 1e-9);
}

TEST_F(ConstantRefinement, LeavesScaleAndOffsetToTheScaling) {
  SetTarget(100, [](double X) { return 7 - 3 * std::exp(-0.75 * X); });
  const auto Program = Of("Exp", Of("Mul", Of("c", -0.2), Of("x")));
  Apply(Refinement.Refine(*Program, true, 40));
  EXPECT_NEAR(Program->Children(0)->Children(0)->Value(), -0.75, 1e-9);
}

TEST_F(ConstantRefinement, NeverMakesAnErrorLarger) {
  SetTarget(50, [](double X) { return X > 0 ? std::log(1 + X) : X * X; });
  std::mt19937_64 Engine(3);
  const auto Value = [&] { return std::uniform_real_distribution<double>(-5, 5)(Engine); };
  int Better = 0;
  for (int Round = 0; Round < 300; ++Round) {
    const bool Scaled = Round % 2 == 0;
    const auto Program = Of(Round % 3 == 0 ? "Div" : "Pow", Of("Add", Of("x"), Of("c", Value())),
                            Of("Mul", Of("c", Value()), Of("Tanh", Of("Sub", Of("c", Value()), Of("x")))));
    const auto Error = [&] {
      const double* const Values = Evaluator.Evaluate(*Program).data();
      return Target.SquaredError(Values, Scaled ? Target.ScalingFor(Values) : TLinearScaling());
    };
    const double Before = Error();
    Apply(Refinement.Refine(*Program, Scaled, 10));
    const double After = Error();
    EXPECT_TRUE(After <= Before || !std::isfinite(Before)) << Before << " to " << After;
    Better += After < Before ? 1 : 0;
  }
  EXPECT_GT(Better, 200);
}

TEST_F(ConstantRefinement, LeavesProgramsAloneThatItCannotRefine) {
  SetTarget(20, [](double X) { return X; });
  EXPECT_TRUE(Refinement.Refine(*Of("x"), false, 5).empty());
  EXPECT_TRUE(Refinement.Refine(*Of("Add", Of("c", 1), Of("Host", Of("x"))), false, 5).empty());
  EXPECT_TRUE(Refinement.Refine(*Of("c", std::numeric_limits<double>::quiet_NaN()), false, 5).empty());
  TNodePointer Many = Of("c", 0);
  for (std::size_t I = 0; I < TConstantRefinement::MostConstants; ++I) {
    Many = Of("Add", std::move(Many), Of("c", 1));
  }
  EXPECT_TRUE(Refinement.Refine(*Many, false, 5).empty());
  EXPECT_TRUE(Refinement.Refine(*Of("Add", Of("c", 1), Of("x")), false, 0).empty());
}

TEST_F(ConstantRefinement, AConstantThatNothingDependsOnDoesNotHinderTheOthers) {
  SetTarget(64, [](double X) { return X + 3; });
  const auto Program = Of("Add", Of("Less", Of("c", -100), Of("x")), Of("Add", Of("x"), Of("c", 0)));
  Apply(Refinement.Refine(*Program, false, 10));
  EXPECT_NEAR(Program->Children(1)->Children(1)->Value(), 2, 1e-9);
  EXPECT_EQ(Program->Children(0)->Children(0)->Value(), -100);
}

} // namespace
