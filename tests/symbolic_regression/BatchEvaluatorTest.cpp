#include <qx/genetic_programming/QXGeneticProgramming.h>
#include <qx/symbolic_regression/BatchEvaluator.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <support/NonFinite.h>
#include <vector>

namespace {

using namespace qx;
using generics::MakeNode;
using TNode = generics::TQXGPNode<TGAFloat>;
using TNodePointer = TNode::TPointer;
using TInstruction = generics::TQXGPInstruction<TGAFloat>;

using tests::Infinity;
using tests::NaN;

// All standard instructions, two variables and a constant.
class BatchEvaluator : public testing::Test {
protected:
  BatchEvaluator() {
    for (const TStandardGroup Group :
         {sgArithmetic, sgPowers, sgExponential, sgTrigonometric, sgExtremes, sgComparisons, sgBoolean}) {
      AddStandardInstructions(Instructions, Group);
    }
    Functions = Instructions.Count();
    Instructions.Add().SetName("x");
    Instructions.Add().SetName("y");
    Instructions.Add().SetName("c");
    Named("c").SetOperation(gpConstant);
  }

  TInstruction& Named(std::string_view Name) { return Instructions[Instructions.IndexOf(Name)]; }
  TNodePointer Make(std::string_view Name, double Value = 0) {
    auto Node = MakeNode<TQXGPFloatNode>(&Named(Name));
    Node->SetValue(Value);
    return Node;
  }
  template <class... TArguments>
  TNodePointer Apply(std::string_view Name, TArguments... Arguments) {
    TNodePointer Node = Make(Name);
    (Node->AddChild(std::move(Arguments)), ...);
    return Node;
  }
  // A function of the host's that adds its two arguments and a half.
  void AddHostSum() {
    auto& Function = Instructions.Add();
    Function.SetName("HostSum");
    Function.SetArity(2);
    Function.OnExecute = [this](auto&, TNode& Node, TQXGPFloatContext* Row, double& Result) {
      ++Executions;
      const double Left = Node.ExecuteChild(0, Row);
      Result = Left + Node.ExecuteChild(1, Row) + 0.5;
    };
  }
  TNodePointer RandomTree(int Depth) {
    const int Count = Instructions.Count();
    const int Index = Depth == 0 ? Functions + static_cast<int>(Engine() % 3)
                                 : static_cast<int>(Engine() % static_cast<unsigned>(Count));
    TNodePointer Node = MakeNode<TQXGPFloatNode>(&Instructions[Index]);
    if (Index == Functions + 2) {
      Node->SetValue(RandomValue());
    }
    for (int I = 0; I < Instructions[Index].Arity(); ++I) {
      Node->AddChild(RandomTree(Depth - 1));
    }
    return Node;
  }
  double RandomValue() {
    constexpr double Awkward[] = {0,      -0.0, 1,   -1,  5e-324,   1e-310,    1e300,
                                  -1e300, 1e6,  2e9, 0.5, Infinity, -Infinity, NaN};
    return Engine() % 3 == 0 ? Awkward[Engine() % std::size(Awkward)]
                             : std::uniform_real_distribution<double>(-4, 4)(Engine);
  }
  TQXDataSet RandomData(int Rows) {
    TQXDataSet Result;
    for (const char* const Name : {"x", "y"}) {
      std::vector<double> Values(static_cast<std::size_t>(Rows));
      std::ranges::generate(Values, [&] { return RandomValue(); });
      Result.AddColumn(Name, Values);
    }
    return Result;
  }
  double Execute(TNode& Program, const TQXDataSet& Data, std::size_t Row) {
    for (int I = 0; I < Data.ColumnCount(); ++I) {
      Context.Values().AddOrSetValue(Data.ColumnName(I), Data.Column(I)[Row]);
    }
    return Program.Execute(&Context);
  }

  std::mt19937_64 Engine{99};
  TQXGPFloatInstructions Instructions{nullptr};
  int Functions = 0;
  int Executions = 0;
  TQXGPFloatContext Context;
};

bool IsNear(double Value, double Expected, double Tolerance) {
  if (std::isnan(Expected) || std::isinf(Expected)) {
    return (std::isnan(Expected) && std::isnan(Value)) || Value == Expected;
  }
  return std::fabs(Value - Expected) <= Tolerance * std::max(std::fabs(Expected), 1e-300);
}

TEST_F(BatchEvaluator, OneFunctionOfColumnsIsWithinFourUnitsOfWhatExecuteGives) {
  const auto Data = RandomData(1000);
  TQXBatchEvaluator<double> Evaluator(Data, Instructions);
  for (int I = 0; I < Functions; ++I) {
    TNodePointer Node = MakeNode<TQXGPFloatNode>(&Instructions[I]);
    for (int Argument = 0; Argument < Instructions[I].Arity(); ++Argument) {
      Node->AddChild(Make(Argument == 1 ? "y" : "x"));
    }
    const auto Values = Evaluator.Evaluate(*Node);
    ASSERT_EQ(Values.size(), 1000U);
    for (std::size_t Row = 0; Row < Values.size(); ++Row) {
      const double Expected = Execute(*Node, Data, Row);
      EXPECT_TRUE(IsNear(Values[Row], Expected, 4.5 * 0x1p-52))
          << Node->ToString() << " of " << Data.Column(0)[Row] << ", " << Data.Column(1)[Row] << ": "
          << Values[Row] << " for " << Expected;
    }
  }
}

// Errors of a function grow in those above it, and comparisons of what should be equal fall either way; so
// only programs that carry small errors on as small ones are compared.
bool CarriesErrors(const TInstruction& Instruction) {
  constexpr std::string_view Steady[] = {"Add",  "Mul",  "Div",  "AQ",      "Neg", "Inv", "Square",
                                         "Cube", "Sqrt", "Cbrt", "Abs",     "Min", "Max", "Tanh",
                                         "x",    "y",    "c",    "HostSum", "Sub"};
  return std::ranges::find(Steady, Instruction.Name()) != std::end(Steady);
}

TEST_F(BatchEvaluator, ThousandsOfRandomProgramsOverExactOperationsGiveTheBitsOfExecute) {
  // Without the functions that have an approximation of their own.
  for (int I = Functions; I-- > 0;) {
    constexpr std::string_view Approximate[] = {"Cbrt", "Pow", "Exp", "Log", "Sin", "Cos", "Tan", "Tanh"};
    if (std::ranges::find(Approximate, Instructions[I].Name()) != std::end(Approximate)) {
      Instructions.Delete(I);
      --Functions;
    }
  }
  for (int Round = 0; Round < 60; ++Round) {
    const auto Data = RandomData(1 + static_cast<int>(Engine() % 1200));
    TQXBatchEvaluator<double> Evaluator(Data, Instructions);
    for (int Tree = 0; Tree < 60; ++Tree) {
      const TNodePointer Program = RandomTree(static_cast<int>(Engine() % 7));
      const auto Values = Evaluator.Evaluate(*Program);
      for (std::size_t Row = 0; Row < Values.size(); Row += 1 + Values.size() / 40) {
        const double Expected = Execute(*Program, Data, Row);
        ASSERT_TRUE(Values[Row] == Expected || (std::isnan(Values[Row]) && std::isnan(Expected)))
            << Program->ToString() << " in row " << Row << ": " << Values[Row] << " for " << Expected;
      }
    }
  }
}

TEST_F(BatchEvaluator, RandomProgramsOverAllFunctionsGiveWhatExecuteGives) {
  int Compared = 0;
  for (int Round = 0; Round < 40; ++Round) {
    const auto Data = RandomData(200);
    TQXBatchEvaluator<double> Evaluator(Data, Instructions);
    for (int Tree = 0; Tree < 60; ++Tree) {
      const TNodePointer Program = RandomTree(3);
      bool Steady = true;
      Program->ForEach([&](const TNode& Node) {
        Steady = Steady && (&Node == Program.get() || CarriesErrors(*Node.Instruction()));
      });
      if (!Steady) {
        continue;
      }
      const auto Values = Evaluator.Evaluate(*Program);
      for (std::size_t Row = 0; Row < Values.size(); Row += 7) {
        const double Expected = Execute(*Program, Data, Row);
        ++Compared;
        EXPECT_TRUE(IsNear(Values[Row], Expected, 1e-9) || std::fabs(Expected) < 1e-300)
            << Program->ToString() << " in row " << Row << ": " << Values[Row] << " for " << Expected;
      }
    }
  }
  EXPECT_GT(Compared, 10'000);
}

TEST_F(BatchEvaluator, GivesTheSameBitsOnEveryInstructionSet) {
  const auto Data = RandomData(1500);
  TQXBatchEvaluator<double> Evaluator(Data, Instructions);
  for (int Tree = 0; Tree < 200; ++Tree) {
    const TNodePointer Program = RandomTree(6);
    std::vector<double> Expected;
    for (const auto* const Kernels : AllBlockKernels<double>()) {
      Evaluator.SetKernels(*Kernels);
      const auto Values = Evaluator.Evaluate(*Program);
      if (Expected.empty()) {
        Expected.assign(Values.begin(), Values.end());
      }
      for (std::size_t Row = 0; Row < Values.size(); ++Row) {
        ASSERT_TRUE(Values[Row] == Expected[Row] || (std::isnan(Values[Row]) && std::isnan(Expected[Row])))
            << Kernels->Name << ": " << Program->ToString();
      }
    }
  }
}

TEST_F(BatchEvaluator, SinglePrecisionIsNearDoublePrecision) {
  TQXDataSet Data;
  std::vector<double> Values(700);
  std::ranges::generate(Values, [&] { return std::uniform_real_distribution<double>(0.5, 2)(Engine); });
  Data.AddColumn("x", Values);
  TQXBatchEvaluator<float> Evaluator(Data, Instructions);
  const auto Program =
      Apply("Sin", Apply("Mul", Apply("Exp", Make("x")), Apply("Add", Make("x"), Make("c", 0.1))));
  const auto Singles = Evaluator.Evaluate(*Program);
  ASSERT_EQ(Singles.size(), 700U);
  for (std::size_t Row = 0; Row < Singles.size(); ++Row) {
    EXPECT_NEAR(double(Singles[Row]), Execute(*Program, Data, Row), 1e-5);
  }
}

TEST_F(BatchEvaluator, AProgramMayBeATerminal) {
  const auto Data = RandomData(20);
  TQXBatchEvaluator<double> Evaluator(Data, Instructions);
  EXPECT_TRUE(std::ranges::equal(Evaluator.Evaluate(*Make("c", 2.5)), std::vector<double>(20, 2.5)));
  TQXDataSet Ordered;
  Ordered.AddColumn("x", {3, 1, 2});
  TQXBatchEvaluator<double> Other(Ordered, Instructions);
  EXPECT_TRUE(std::ranges::equal(Other.Evaluate(*Make("x")), Ordered.Column("x")));
}

TEST_F(BatchEvaluator, VariablesWithoutColumnAreZeroAsInAContextWithoutThem) {
  TQXDataSet Data;
  Data.AddColumn("x", {3, 1, 2});
  TQXBatchEvaluator<double> Evaluator(Data, Instructions);
  const auto Program = Apply("Add", Make("x"), Make("y"));
  EXPECT_TRUE(std::ranges::equal(Evaluator.Evaluate(*Program), Data.Column("x")));
}

TEST_F(BatchEvaluator, DataWithoutRowsGiveNoValues) {
  TQXDataSet Data;
  Data.AddColumn("x", {});
  TQXBatchEvaluator<double> Evaluator(Data, Instructions);
  EXPECT_TRUE(Evaluator.Evaluate(*Apply("Add", Make("x"), Make("c", 1))).empty());
}

TEST_F(BatchEvaluator, ManyValuesAreHeldAtOnceInDeepProgramsOnEitherSide) {
  const auto Data = RandomData(1100);
  TQXBatchEvaluator<double> Evaluator(Data, Instructions);
  for (const bool Left : {true, false}) {
    TNodePointer Program = Apply("Sub", Make("x"), Make("y"));
    for (int Level = 0; Level < 60; ++Level) {
      TNodePointer Other = Apply("Min", Make(Level % 2 == 0 ? "x" : "y"), Make("c", Level));
      Program = Left ? Apply("Sub", std::move(Program), std::move(Other))
                     : Apply("Sub", std::move(Other), std::move(Program));
    }
    const auto Values = Evaluator.Evaluate(*Program);
    for (std::size_t Row = 0; Row < Values.size(); Row += 13) {
      const double Expected = Execute(*Program, Data, Row);
      EXPECT_TRUE(Values[Row] == Expected || (std::isnan(Values[Row]) && std::isnan(Expected)));
    }
  }
}

TEST_F(BatchEvaluator, AMillionLevelsAreNoMatterForTheStack) {
  TNodePointer Program = Make("Neg");
  TNode* Deepest = Program.get();
  for (int Level = 1; Level < 1'000'000; ++Level) {
    Deepest = &Deepest->AddChild(Make("Neg"));
  }
  Deepest->AddChild(Make("x"));
  TQXDataSet Data;
  Data.AddColumn("x", {3, 1, 2});
  TQXBatchEvaluator<double> Evaluator(Data, Instructions);
  EXPECT_TRUE(std::ranges::equal(Evaluator.Evaluate(*Program), Data.Column("x")));
}

TEST_F(BatchEvaluator, InstructionsWithoutKernelAreExecutedRowByRow) {
  AddHostSum();
  const auto Data = RandomData(600);
  TQXBatchEvaluator<double> Evaluator(Data, Instructions);
  const auto Program = Apply("Mul", Make("x"), Apply("HostSum", Apply("Sin", Make("y")), Make("c", 2)));
  const auto Values = Evaluator.Evaluate(*Program);
  EXPECT_EQ(Executions, 600);
  EXPECT_TRUE(Evaluator.CallsHost(*Program));
  EXPECT_FALSE(Evaluator.CallsHost(*Apply("Sin", Make("y"))));
  for (std::size_t Row = 0; Row < Values.size(); ++Row) {
    const double Expected = Execute(*Program, Data, Row);
    EXPECT_TRUE(Values[Row] == Expected || (std::isnan(Values[Row]) && std::isnan(Expected)));
  }
}

TEST_F(BatchEvaluator, WhatExecuteLeavesOutIsNotExecuted) {
  AddHostSum();
  TQXDataSet Data;
  Data.AddColumn("x", {1, 0, 1, 0, 0});
  Data.AddColumn("y", {1, 2, 3, 4, 5});
  TQXBatchEvaluator<double> Evaluator(Data, Instructions);
  const auto Program =
      Apply("Neg", Apply("If", Make("x"), Apply("HostSum", Make("y"), Make("y")), Make("y")));
  EXPECT_TRUE(std::ranges::equal(Evaluator.Evaluate(*Program), std::vector<double>{-2.5, -2, -6.5, -4, -5}));
  EXPECT_EQ(Executions, 2);
  Evaluator.Evaluate(*Apply("And", Make("x"), Apply("HostSum", Make("y"), Make("y"))));
  EXPECT_EQ(Executions, 4);
  // A first argument is never left out.
  Evaluator.Evaluate(*Apply("And", Apply("HostSum", Make("y"), Make("y")), Make("x")));
  EXPECT_EQ(Executions, 9);
}

TEST_F(BatchEvaluator, AHostFunctionOverBlocksTakesTheInstructionsPlace) {
  AddHostSum();
  const auto Data = RandomData(1300);
  TQXBatchFunctions Own;
  std::vector<std::size_t> Lengths;
  Own.SetBlockFunction("hostsum", [&](auto Arguments, auto Results) {
    Lengths.push_back(Results.size());
    for (std::size_t I = 0; I < Results.size(); ++I) {
      Results[I] = Arguments[0][I] + Arguments[1][I] + 0.5;
    }
  });
  TQXBatchEvaluator<double> Evaluator(Data, Instructions, &Own);
  const auto Program = Apply("Mul", Apply("HostSum", Apply("Neg", Make("y")), Make("c", 2)), Make("x"));
  const auto Values = Evaluator.Evaluate(*Program);
  EXPECT_EQ(Executions, 0);
  EXPECT_TRUE(Evaluator.CallsHost(*Program));
  EXPECT_EQ(std::accumulate(Lengths.begin(), Lengths.end(), std::size_t(0)), 1300U);
  for (std::size_t Row = 0; Row < Values.size(); ++Row) {
    const double Expected = Execute(*Program, Data, Row);
    EXPECT_TRUE(Values[Row] == Expected || (std::isnan(Values[Row]) && std::isnan(Expected)));
  }
}

TEST_F(BatchEvaluator, AHostFunctionOverBlocksMayHaveNoArguments) {
  Instructions.Add().SetName("Seven");
  TQXBatchFunctions Own;
  Own.SetBlockFunction("Seven", [](auto, auto Results) { std::ranges::fill(Results, 7); });
  const auto Data = RandomData(20);
  TQXBatchEvaluator<double> Evaluator(Data, Instructions, &Own);
  EXPECT_TRUE(std::ranges::equal(Evaluator.Evaluate(*Apply("Add", Make("Seven"), Make("Seven"))),
                                 std::vector<double>(20, 14)));
}

// Two functions that look at other rows: the value of the row before, and the mean of all.
TQXBatchFunctions ColumnFunctions() {
  TQXBatchFunctions Own;
  Own.SetColumnFunction("Lag", [](auto Arguments, auto Results) {
    std::copy(Arguments[0].begin(), Arguments[0].end() - 1, Results.begin() + 1);
    Results[0] = 0;
  });
  Own.SetColumnFunction("Mean", [](auto Arguments, auto Results) {
    const double Sum = std::accumulate(Arguments[0].begin(), Arguments[0].end(), 0.0);
    std::ranges::fill(Results, Sum / static_cast<double>(Results.size()));
  });
  return Own;
}

TEST_F(BatchEvaluator, AHostFunctionMayWantWholeColumns) {
  const TQXBatchFunctions Own = ColumnFunctions();
  for (const char* const Name : {"Lag", "Mean"}) {
    auto& Function = Instructions.Add();
    Function.SetName(Name);
    Function.SetArity(1);
  }
  std::vector<double> Values(1025);
  std::iota(Values.begin(), Values.end(), 1);
  TQXDataSet Data;
  Data.AddColumn("x", Values);
  TQXBatchEvaluator<double> Evaluator(Data, Instructions, &Own);
  TQXBatchEvaluator<float> Single(Data, Instructions, &Own);

  const auto Lag = Apply("Lag", Make("x"));
  EXPECT_EQ(Evaluator.Evaluate(*Lag)[0], 0);
  EXPECT_EQ(Evaluator.Evaluate(*Lag)[1024], 1024);
  // 2 x, its lag less its mean, and a lag of a lag beside it: calls within and next to each other.
  const auto Twice = [&] { return Apply("Mul", Make("c", 2), Make("x")); };
  const auto Program = Apply("Sub", Apply("Lag", Apply("Sub", Twice(), Apply("Mean", Twice()))),
                             Apply("Lag", Apply("Lag", Make("x"))));
  const auto Results = Evaluator.Evaluate(*Program);
  const auto Singles = Single.Evaluate(*Program);
  for (std::size_t Row = 2; Row < Results.size(); ++Row) {
    const auto X = static_cast<double>(Row + 1);
    EXPECT_EQ(Results[Row], (2 * (X - 1) - 1026) - (X - 2));
    EXPECT_EQ(Singles[Row], static_cast<float>(Results[Row]));
  }
  EXPECT_EQ(Results[0], 0);
}

TEST_F(BatchEvaluator, ErrorsOfHostFunctionsReachTheCaller) {
  AddHostSum();
  Named("HostSum").OnExecute = [](auto&, TNode&, TQXGPFloatContext*, double&) {
    throw std::runtime_error("no");
  };
  const auto Data = RandomData(20);
  TQXBatchEvaluator<double> Evaluator(Data, Instructions);
  const auto Program = Apply("HostSum", Make("x"), Make("y"));
  EXPECT_THROW(Evaluator.Evaluate(*Program), std::runtime_error);
  EXPECT_TRUE(std::ranges::equal(Evaluator.Evaluate(*Make("c", 1)), std::vector<double>(20, 1)));
}

TEST_F(BatchEvaluator, ProgramsThatAreNotWholeRaiseWhatExecuteRaises) {
  const auto Data = RandomData(20);
  TQXBatchEvaluator<double> Evaluator(Data, Instructions);
  EXPECT_THROW(Evaluator.Evaluate(*Apply("Add", Make("x"))), EGPException);
  EXPECT_THROW(Evaluator.Evaluate(*Apply("Neg", MakeNode<TQXGPFloatNode>(nullptr))), EGPException);
  const auto Binary = MakeNode<TQXGPBinaryFloatNode>(&Named("Add"));
  EXPECT_THROW(Evaluator.Evaluate(*Binary), EGPException);
}

TEST_F(BatchEvaluator, MoreChildrenThanArgumentsAreNoError) {
  const auto Data = RandomData(20);
  TQXBatchEvaluator<double> Evaluator(Data, Instructions);
  const auto Program = Apply("Abs", Make("c", -3), Make("x"));
  EXPECT_TRUE(std::ranges::equal(Evaluator.Evaluate(*Program), std::vector<double>(20, 3)));
}

TEST_F(BatchEvaluator, InstructionsThatCameLaterAreAnError) {
  const auto Data = RandomData(20);
  TQXBatchEvaluator<double> Evaluator(Data, Instructions);
  AddHostSum();
  const auto Program = Apply("HostSum", Make("x"), Make("y"));
  EXPECT_THROW(Evaluator.Evaluate(*Program), std::logic_error);
  Evaluator.Prepare(Data, Instructions);
  EXPECT_EQ(Evaluator.Evaluate(*Program).size(), 20U);
  Instructions.Add().SetName("later");
  EXPECT_THROW(Evaluator.Evaluate(*Apply("If", Make("x"), Make("later"), Make("x"))), std::logic_error);
}

TEST_F(BatchEvaluator, AnInstructionWithAnotherHandlerIsNoStandardOneWhateverItsName) {
  Named("Add").OnExecute = [](auto&, TNode&, TQXGPFloatContext*, double& Result) { Result = 77; };
  const auto Data = RandomData(20);
  TQXBatchEvaluator<double> Evaluator(Data, Instructions);
  EXPECT_TRUE(std::ranges::equal(Evaluator.Evaluate(*Apply("Add", Make("x"), Make("y"))),
                                 std::vector<double>(20, 77)));
}

TEST_F(BatchEvaluator, AnInstructionOfAnotherNameIsAStandardOneStill) {
  Named("Add").SetName("Plus");
  EXPECT_EQ(StandardInstructionName(Named("Plus")), "Add");
  EXPECT_EQ(StandardInstructionName(Named("x")), "");
  Named("Plus").SetArity(3);
  EXPECT_EQ(StandardInstructionName(Named("Plus")), "");
}

class TDoubling final : public TQXGPFloatInstruction {
public:
  double Execute(TNode& Node, TQXGPFloatContext* Context) override {
    return 2 * TQXGPFloatInstruction::Execute(Node, Context);
  }
};

TEST_F(BatchEvaluator, AnInstructionClassOfTheHostsIsExecuted) {
  TQXGPTypedInstructions<TDoubling, TGAFloat> Set(nullptr);
  Set.Add().SetName("x");
  TQXDataSet Data;
  Data.AddColumn("x", {1, 2});
  TQXBatchEvaluator<double> Evaluator(Data, Set);
  const auto Node = MakeNode<TQXGPFloatNode>(&Set[0]);
  EXPECT_TRUE(std::ranges::equal(Evaluator.Evaluate(*Node), std::vector<double>{2, 4}));
}

} // namespace
