#include <qx/genetic_programming/QXGeneticProgramming.h>
#include <qx/symbolic_regression/BatchEvaluator.h>

#include <gtest/gtest.h>

#include <random>
#include <support/Allocations.h>
#include <vector>

namespace {

using namespace qx;
using TNodePointer = generics::TQXGPNode<TGAFloat>::TPointer;

// A program as deep as wanted, of functions drawn from all of the set.
TNodePointer Grown(TQXGPFloatInstructions& Instructions, std::mt19937& Draw, int Depth) {
  const auto Place = Draw() % static_cast<unsigned>(Instructions.Count());
  auto& Instruction = Depth == 0 ? *Instructions.FindItemName("x") : Instructions[static_cast<int>(Place)];
  TNodePointer Node = generics::MakeNode<TQXGPFloatNode>(&Instruction);
  for (int I = 0; I < Instruction.Arity(); ++I) {
    Node->AddChild(Grown(Instructions, Draw, Depth - 1));
  }
  return Node;
}

TEST(BatchEvaluatorMemory, EvaluationAllocatesNothingOnceWarm) {
  TQXGPFloatInstructions Instructions{nullptr};
  for (const TStandardGroup Group :
       {sgArithmetic, sgPowers, sgExponential, sgTrigonometric, sgExtremes, sgComparisons, sgBoolean}) {
    AddStandardInstructions(Instructions, Group);
  }
  Instructions.Add().SetName("x");
  TQXDataSet Data;
  Data.AddColumn("x", std::vector<double>(700, 0.5));
  TQXBatchEvaluator<double> Evaluator(Data, Instructions);
  std::mt19937 Draw{99};
  std::vector<TNodePointer> Programs;
  for (int I = 0; I < 50; ++I) {
    Programs.push_back(Grown(Instructions, Draw, 6));
    Evaluator.Evaluate(*Programs.back());
  }
  const long Before = tests::Allocations();
  for (const TNodePointer& Program : Programs) {
    Evaluator.Evaluate(*Program);
  }
  EXPECT_EQ(tests::Allocations(), Before);
  EXPECT_GT(Before, 50);
}

} // namespace
