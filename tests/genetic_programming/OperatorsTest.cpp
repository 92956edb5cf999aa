#include <qx/platform/StackGuard.h>

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>
#include <support/SmallGeneticProgram.h>
#include <vector>

namespace qx {
namespace {

using tests::ExpectWhole;
using tests::I;
using tests::Pick;
using tests::Program;
using tests::R;
using tests::TArithmeticProgramming;
using tests::TScriptedRandom;

using TProgramming = TArithmeticProgramming<>;
using TBinaryProgramming = TArithmeticProgramming<TQXBinaryGeneticProgramming>;
using TNode = generics::TQXGPNode<TGAFloat>;
using TIndividual = generics::TQXGPIndividual<TGAFloat>;

// --- Crossover ---------------------------------------------------------------------------------------------

TEST(ProgramCrossoverTest, SwapsTheSubtreesOfTheChildren) {
  TProgramming Component;
  auto& Parent1 = Component.Add("(Add x y)");
  auto& Parent2 = Component.Add("(Neg c)");
  auto& Child1 = Component.Add("(Add x (Neg y))"); // what the children hold counts
  auto& Child2 = Component.Add("(Mul (Neg x) c)");
  TScriptedRandom Draws({});
  Draws.Add(Pick(1, 4)); // x
  Draws.Add(Pick(1, 4)); // (Neg x)
  EXPECT_TRUE(Component.DoCrossover(Parent1, Parent2, Child1, &Child2));
  EXPECT_EQ(Program(Child1), "(Add (Neg y) (Neg x))"); // each comes in as the last argument
  EXPECT_EQ(Program(Child2), "(Mul 1.5 x)");
  EXPECT_EQ(Program(Parent1), "(Add x y)");
  EXPECT_EQ(Program(Parent2), "(Neg 1.5)");
  ExpectWhole(Child1);
  ExpectWhole(Child2);
  EXPECT_TRUE(Child1.NeedFitness());
  EXPECT_TRUE(Child2.NeedFitness());
}

TEST(ProgramCrossoverTest, OneChildGetsACopyOfASubtreeOfTheSecondParent) {
  TProgramming Component;
  auto& Parent1 = Component.Add("(Add x y)");
  auto& Parent2 = Component.Add("(Mul (Neg x) c)");
  auto& Child = Component.Add("(Add x y)");
  TScriptedRandom Draws({});
  Draws.Add(Pick(2, 3));
  Draws.Add(Pick(1, 4));
  EXPECT_TRUE(Component.DoCrossover(Parent1, Parent2, Child, nullptr));
  EXPECT_EQ(Program(Child), "(Add x (Neg x))");
  EXPECT_EQ(Program(Parent2), "(Mul (Neg x) 1.5)");
  ExpectWhole(Child);
}

// A whole reproduction: both children come of the first parent, and the second becomes the second parent's
// just before the crossover.
TEST(ProgramCrossoverTest, TheSecondChildTakesTheSecondParentsProgram) {
  TProgramming Component;
  Component.SetOperations({goCrossover});
  auto& Parent1 = Component.Add("(Add x y)");
  auto& Parent2 = Component.Add("(Mul c c)");
  auto& Child1 = Component.Add("x");
  auto& Child2 = Component.Add("x");
  std::string Log;
  Component.OnInitializeChild = [&](auto&, auto&, auto&, auto& Child) { Log += Program(Child) + "; "; };
  Component.OnCrossover = [&](auto&, auto&, auto&, auto& Child, bool&) { Log += "cross " + Program(Child); };
  TScriptedRandom Draws({R(0.5)});
  Draws.Add(Pick(1, 3));
  Draws.Add(Pick(2, 3));
  EXPECT_TRUE(Component.Reproduce(Parent1, Parent2, Child1, Child2));
  EXPECT_EQ(Log, "(Add x y); (Add x y); cross (Add x y)");
  EXPECT_EQ(Program(Child1), "(Add y 1.5)");
  EXPECT_EQ(Program(Child2), "(Mul 1.5 x)");
}

TEST(ProgramCrossoverTest, AVetoLeavesBothChildrenCopiesOfTheFirstParent) {
  TProgramming Component;
  Component.SetOperations({goCrossover});
  auto& Parent1 = Component.Add("(Add x y)");
  auto& Parent2 = Component.Add("(Mul c c)");
  auto& Child1 = Component.Add("x");
  auto& Child2 = Component.Add("x");
  Component.OnCrossover = [](auto&, auto&, auto&, auto&, bool& Allowed) { Allowed = false; };
  TScriptedRandom Draws({R(0.5)});
  EXPECT_FALSE(Component.Reproduce(Parent1, Parent2, Child1, Child2));
  EXPECT_EQ(Program(Child2), "(Add x y)");
}

TEST(ProgramCrossoverTest, RootsAreSwappedToo) {
  TBinaryProgramming Component;
  auto& Child1 = Component.Add("(Add x y)");
  auto& Child2 = Component.Add("(Mul (Neg x) c)");
  TScriptedRandom Draws({});
  Draws.Add(Pick(0, 3));
  Draws.Add(Pick(1, 4));
  EXPECT_TRUE(Component.DoCrossover(Child1, Child2, Child1, &Child2));
  EXPECT_EQ(Program(Child1), "(Neg x)");
  EXPECT_EQ(Program(Child2), "(Mul (Add x y) 1.5)"); // into the slot that is free
  ExpectWhole(Child1);
  ExpectWhole(Child2);
}

TEST(ProgramCrossoverTest, WithoutAProgramThereIsNone) {
  TProgramming Component;
  auto& Child1 = Component.Add("(Add x y)");
  auto& Child2 = Component.Population().Add();
  Child2.AssignDNA(nullptr);
  TScriptedRandom Draws({});
  Draws.Add(Pick(0, 3));
  EXPECT_FALSE(Component.DoCrossover(Child1, Child2, Child1, &Child2));
  EXPECT_EQ(Program(Child1), "(Add x y)");
}

// --- The choice of the mutation ----------------------------------------------------------------------------

TEST(ProgramMutationTest, WeightsOfZeroAreSteppedOver) {
  TProgramming Component;
  auto& Individual = Component.Add("(Add (Neg x) y)");
  TScriptedRandom Draws({I(30, 75)}); // not subtree; 5 of the 25 of shrink
  Draws.Add(Pick(1, 4));
  Draws.Add({I(2, 3)}); // a terminal
  EXPECT_TRUE(Component.DoMutate(Individual));
  EXPECT_EQ(Program(Individual), "(Add 1.5 y)");
}

TEST(ProgramMutationTest, EveryMethodHasItsShare) {
  const std::vector<std::pair<int, std::string>> Cases = {{0, "subtree"}, {1, "replacement"}, {2, "constant"},
                                                          {3, "shrink"},  {4, "hoist"},       {5, "point"}};
  class TNaming : public TProgramming {
  public:
    bool DoSubtreeMutation(TIndividual& /*Individual*/) override { return Say("subtree"); }
    bool DoReplacementMutation(TIndividual& /*Individual*/) override { return Say("replacement"); }
    bool DoConstantMutation(TIndividual& /*Individual*/) override { return Say("constant"); }
    bool DoShrinkMutation(TIndividual& /*Individual*/) override { return Say("shrink"); }
    bool DoHoistMutation(TIndividual& /*Individual*/) override { return Say("hoist"); }
    using TProgramming::DoPointMutation;
    bool DoPointMutation(TIndividual& /*Individual*/) override { return Say("point"); }
    std::string Said;

  private:
    bool Say(const std::string& Name) {
      Said = Name;
      return true;
    }
  } Component;
  Component.SetMutationWeights({1, 1, 1, 1, 1, 1});
  auto& Individual = Component.Add("x");
  for (const auto& [Draw, Name] : Cases) {
    TScriptedRandom Draws({I(Draw, 6)});
    EXPECT_TRUE(Component.DoMutate(Individual));
    EXPECT_EQ(Component.Said, Name);
  }
}

TEST(ProgramMutationTest, WithoutWeightsNothingIsMutated) {
  TProgramming Component;
  Component.SetMutationWeights({});
  auto& Individual = Component.Add("(Neg x)");
  TScriptedRandom Draws({I(0, 0)});
  EXPECT_FALSE(Component.DoMutate(Individual));
  EXPECT_EQ(Program(Individual), "(Neg x)");
}

TEST(ProgramMutationTest, IsAskedForAtTheGateAndAgainAtTheStep) {
  TProgramming Component;
  auto& Individual = Component.Add("(Neg x)");
  int Asked = 0;
  Component.OnMutation = [&](auto&, auto&, bool& Allowed) { Allowed = ++Asked < 2; };
  Component.SetMutationProbability(1);
  TScriptedRandom Draws({R(0.5)}); // the gate; the veto is at the step
  static_cast<void>(Individual.Fitness());
  EXPECT_FALSE(static_cast<TQXCustomGeneticComponent&>(Component).Mutate(Individual));
  EXPECT_EQ(Asked, 2);
  EXPECT_TRUE(Individual.NeedFitness()); // flattened all the same
}

TEST(ProgramMutationTest, AnErrorLeavesAWholeProgramAndAValidList) {
  TProgramming Component;
  for (int I = 0; I < 3; ++I) {
    Component.Instructions().Delete(3); // the terminals
  }
  for (const auto Method : {mmSubtree, mmReplacement, mmShrink}) {
    auto& Individual = Component.Add("(Neg (Neg nil))");
    const std::string Before = Program(Individual);
    Component.SetMutationWeights({});
    Component.SetMutateWeights(Method, 1);
    TScriptedRandom Draws({I(0, 1)});
    Draws.Add(Pick(1, 3));
    if (Method == mmReplacement) {
      Draws.Add({I(0, 1)}); // Neg again, whose argument cannot be grown
    }
    EXPECT_THROW(Component.DoMutate(Individual), EGPException);
    EXPECT_EQ(Program(Individual), Before);
    ExpectWhole(Individual);
    EXPECT_TRUE(Individual.NeedFitness());
  }
}

TEST(ProgramMutationTest, APlaceThatRefusesTheNewSubtreeKeepsTheOldOne) {
  TBinaryProgramming Component;
  AddStandardInstruction(Component.Instructions(), "If");
  auto& Individual = Component.Add("(Add (Neg (Neg x)) y)");
  TScriptedRandom Draws({});
  Draws.Add(Pick(1, 5));
  Draws.Add({I(6, 7), I(0, 3), I(0, 3), I(0, 3)}); // If has no place for its third argument
  EXPECT_THROW(Component.DoSubtreeMutation(Individual), EGPException);
  EXPECT_EQ(Program(Individual), "(Add (Neg (Neg x)) y)");
  ExpectWhole(Individual);
}

// --- The methods -------------------------------------------------------------------------------------------

TEST(SubtreeMutationTest, GrowsAsDeepAsTheSubtreeIsBelowItsRoot) {
  TProgramming Component;
  auto& Individual = Component.Add("(Add (Mul (Neg x) y) c)"); // the subtree of Mul is 2 deep
  TScriptedRandom Draws({});
  Draws.Add(Pick(1, 6));
  Draws.Add({I(0, 6), I(2, 3), I(1, 3)}); // Add of c and y, which fills 2 levels
  EXPECT_TRUE(Component.DoSubtreeMutation(Individual));
  EXPECT_EQ(Program(Individual), "(Add (Add 1.5 y) 1.5)"); // in the very same place
  ExpectWhole(Individual);
}

TEST(SubtreeMutationTest, ALeafBecomesATerminal) {
  TProgramming Component;
  auto& Individual = Component.Add("(Add x c)");
  TScriptedRandom Draws({});
  Draws.Add(Pick(1, 3));
  Draws.Add({I(1, 3)});
  EXPECT_TRUE(Component.DoSubtreeMutation(Individual));
  EXPECT_EQ(Program(Individual), "(Add y 1.5)");
}

TEST(SubtreeMutationTest, TheRootBecomesANewProgram) {
  TBinaryProgramming Component;
  auto& Individual = Component.Add("(Add (Neg x) c)");
  TScriptedRandom Draws({});
  Draws.Add(Pick(0, 4));
  Draws.Add({I(4, 6)});
  EXPECT_TRUE(Component.DoSubtreeMutation(Individual));
  EXPECT_EQ(Program(Individual), "y");
  ExpectWhole(Individual);
}

TEST(SubtreeMutationTest, ALimitOfDepthCapsWhatIsGrown) {
  TProgramming Component;
  Component.SetBloatStrategy(bsDepthLimit);
  Component.SetBloatLimit(6);
  std::string Tree = "x";
  for (int Level = 0; Level < 9; ++Level) {
    Tree = "(Neg " + Tree + ")";
  }
  auto& Individual = Component.Add(Tree);
  TScriptedRandom Draws({});
  Draws.Add(Pick(0, 10));
  for (int Level = 0; Level < 5; ++Level) {
    Draws.Add({I(2, 6)}); // Neg as long as there is room
  }
  Draws.Add({I(0, 3)});
  Component.DoSubtreeMutation(Individual);
  EXPECT_EQ(Individual.DNA()->Depth(), 5); // six levels
}

TEST(ReplacementMutationTest, GivesASimilarInstructionAndNewArguments) {
  for (const bool Binary : {false, true}) {
    const auto Check = [](auto&& Component) {
      auto& Individual = Component.Add("(Add (Mul (Neg x) y) c)"); // the subtree of Mul is 2 deep
      TScriptedRandom Draws({});
      Draws.Add(Pick(1, 6));
      Draws.Add({I(0, 2),            // Add, of Add and Mul
                 I(2, 3), I(0, 3)}); // its arguments, one level each
      EXPECT_TRUE(Component.DoReplacementMutation(Individual));
      EXPECT_EQ(Program(Individual), "(Add (Add 1.5 x) 1.5)");
      ExpectWhole(Individual);
    };
    Binary ? Check(TBinaryProgramming()) : Check(TProgramming());
  }
}

TEST(ReplacementMutationTest, ATerminalBecomesOneOfItsKind) {
  TProgramming Component;
  auto& Individual = Component.Add("(Add x c)");
  TScriptedRandom Draws({});
  Draws.Add(Pick(1, 3));
  Draws.Add({I(1, 2)}); // of the two variables
  EXPECT_TRUE(Component.DoReplacementMutation(Individual));
  EXPECT_EQ(Program(Individual), "(Add y 1.5)");
}

TEST(ReplacementMutationTest, TheDepthOfTheArgumentsIsCappedToo) {
  TProgramming Component;
  Component.SetBloatStrategy(bsDepthLimit);
  Component.SetBloatLimit(5);
  std::string Tree = "x";
  for (int Level = 0; Level < 9; ++Level) {
    Tree = "(Neg " + Tree + ")";
  }
  auto& Individual = Component.Add(Tree);
  TScriptedRandom Draws({});
  Draws.Add(Pick(0, 10));
  Draws.Add({I(0, 1)});
  for (int Level = 0; Level < 3; ++Level) {
    Draws.Add({I(2, 6)});
  }
  Draws.Add({I(0, 3)});
  Component.DoReplacementMutation(Individual);
  EXPECT_EQ(Individual.DNA()->Depth(), 4); // the function, and an argument of four levels
}

TEST(ConstantMutationTest, TheHandlerChangesOneOfTheConstants) {
  TProgramming Component;
  auto& Individual = Component.Add("(Add (Mul 2 x) 3)");
  static_cast<void>(Individual.Fitness());
  Component.OnConstantMutation = [](auto&, TNode& Node) { Node.SetValue(Node.Value() * 10); };
  TScriptedRandom Draws({});
  Draws.Add(Pick(1, 2)); // among the two constants
  EXPECT_TRUE(Component.DoConstantMutation(Individual));
  EXPECT_EQ(Program(Individual), "(Add (Mul 2 x) 30)");
  EXPECT_TRUE(Individual.NeedFitness());
}

TEST(ConstantMutationTest, WithoutHandlerOrConstantNothingChanges) {
  TProgramming Component;
  auto& WithConstant = Component.Add("(Neg 2)");
  TScriptedRandom Draws({});
  Draws.Add(Pick(0, 1)); // selected all the same
  EXPECT_FALSE(Component.DoConstantMutation(WithConstant));
  Component.OnConstantMutation = [](auto&, TNode&) { ADD_FAILURE(); };
  EXPECT_FALSE(Component.DoConstantMutation(Component.Add("(Neg x)")));
}

TEST(ConstantMutationTest, AGaussianStepTakesTwoDraws) {
  TProgramming Component;
  Component.OnConstantMutation = TGaussianConstantMutation(0.5);
  auto& Individual = Component.Add("2");
  TScriptedRandom Draws({});
  Draws.Add(Pick(0, 1));
  Draws.Add({R(1 - std::exp(-0.5)), R(0)}); // radius 1, angle 0
  Component.DoConstantMutation(Individual);
  EXPECT_NEAR(Individual.DNA()->Value(), 2.5, 1e-15);
  EXPECT_THROW(TGaussianConstantMutation(-1), std::invalid_argument);
  EXPECT_THROW(TGaussianConstantMutation(std::nan("")), std::invalid_argument);
}

TEST(ConstantMutationTest, GaussianStepsHaveTheirDeviation) {
  TProgramming Component;
  SeedRandom(7);
  TGaussianConstantMutation Mutation(3);
  const auto Node = Component.CreateNode(nullptr);
  constexpr int Steps = 100'000;
  double Sum = 0;
  double Squares = 0;
  for (int I = 0; I < Steps; ++I) {
    Node->SetValue(0);
    Mutation(Component, *Node);
    Sum += Node->Value();
    Squares += Node->Value() * Node->Value();
  }
  EXPECT_NEAR(Sum / Steps, 0, 5 * 3 / std::sqrt(Steps));
  EXPECT_NEAR(std::sqrt(Squares / Steps), 3, 5 * 3 / std::sqrt(2.0 * Steps));
}

TEST(ShrinkMutationTest, ASubtreeBecomesATerminalInItsPlace) {
  TProgramming Component;
  auto& Individual = Component.Add("(Add (Mul x y) c)");
  TScriptedRandom Draws({});
  Draws.Add(Pick(1, 5));
  Draws.Add({I(1, 3)});
  EXPECT_TRUE(Component.DoShrinkMutation(Individual));
  EXPECT_EQ(Program(Individual), "(Add y 1.5)");
  ExpectWhole(Individual);
}

TEST(ShrinkMutationTest, TheRootBecomesATerminal) {
  TBinaryProgramming Component;
  auto& Individual = Component.Add("(Add (Mul x y) c)");
  TScriptedRandom Draws({});
  Draws.Add(Pick(0, 5));
  Draws.Add({I(0, 3)});
  EXPECT_TRUE(Component.DoShrinkMutation(Individual));
  EXPECT_EQ(Program(Individual), "x");
  EXPECT_EQ(Individual.DNA()->Size(), 1);
}

TEST(HoistMutationTest, ASubtreeBecomesTheProgram) {
  TProgramming Component;
  auto& Individual = Component.Add("(Add (Mul x y) c)");
  TScriptedRandom Draws({});
  Draws.Add(Pick(1, 5));
  EXPECT_TRUE(Component.DoHoistMutation(Individual));
  EXPECT_EQ(Program(Individual), "(Mul x y)");
  EXPECT_EQ(Individual.DNA()->Parent(), nullptr);
  ExpectWhole(Individual);
}

TEST(HoistMutationTest, TheRootStays) {
  TProgramming Component;
  auto& Individual = Component.Add("x");
  TScriptedRandom Draws({});
  Draws.Add(Pick(0, 1));
  EXPECT_FALSE(Component.DoHoistMutation(Individual));
  EXPECT_EQ(Program(Individual), "x");
}

TEST(PointMutationTest, PerNodeEveryNodeHasItsOwnChance) {
  TProgramming Component;
  Component.SetPointMutationProbability(1);
  auto& Individual = Component.Add("(Add (Neg x) 7)");
  TScriptedRandom Draws({R(0.999), I(1, 2),   // Add becomes Mul
                         R(0.999), I(0, 1),   // Neg
                         R(0.999), I(1, 2),   // x becomes y
                         R(0.999), I(0, 1)}); // the constant keeps its value
  EXPECT_TRUE(Component.DoPointMutation(Individual));
  EXPECT_EQ(Program(Individual), "(Mul (Neg y) 7)");
  EXPECT_TRUE(Individual.NeedFitness());
}

TEST(PointMutationTest, PerTreeTheFirstSuccessEndsIt) {
  TProgramming Component;
  Component.SetPointMutationMethod(pmmPerTree);
  Component.SetPointMutationProbability(1);
  auto& Individual = Component.Add("(Add (Neg x) 7)");
  {
    TScriptedRandom Draws({R(0.999), I(1, 2)});
    EXPECT_TRUE(Component.DoPointMutation(Individual));
    EXPECT_EQ(Program(Individual), "(Mul (Neg x) 7)");
  }
  Component.SetPointMutationProbability(0.5);
  TScriptedRandom Draws({R(0.5), R(0.9), R(0.4), I(1, 2)}); // in pre-order: x
  EXPECT_TRUE(Component.DoPointMutation(Individual));
  EXPECT_EQ(Program(Individual), "(Mul (Neg y) 7)");
}

TEST(PointMutationTest, TheResultForANodeIsThatOfTheLastDecision) {
  TProgramming Component;
  Component.SetPointMutationProbability(0.5);
  auto& Individual = Component.Add("(Add x y)");
  TScriptedRandom Draws({R(0), I(1, 2), R(0.5), R(0.5)});
  EXPECT_FALSE(Component.DoPointMutation(Individual, *Individual.DNA()));
  EXPECT_EQ(Program(Individual), "(Mul x y)");
  Draws.Add({R(0), I(0, 2), R(0.5), R(0.5)});
  EXPECT_TRUE(Component.DoPointMutation(Individual)); // the program has changed
}

TEST(PointMutationTest, InversionIsOneAndTellsNothing) {
  TProgramming Component;
  Component.SetPointMutationProbability(1);
  auto& Individual = Component.Add("(Neg x)");
  static_cast<void>(Individual.Fitness());
  TScriptedRandom Draws({R(0), I(0, 1), R(0), I(1, 2)});
  EXPECT_FALSE(Component.DoInvert(Individual));
  EXPECT_EQ(Program(Individual), "(Neg y)");
  EXPECT_TRUE(Individual.NeedFitness());
}

TEST(PointMutationTest, EveryNodeGoesThroughTheOverride) {
  class TCounting : public TProgramming {
  public:
    using TProgramming::DoPointMutation;
    bool DoPointMutation(TIndividual& Individual, TNode& Node) override {
      ++Count;
      return TProgramming::DoPointMutation(Individual, Node);
    }
    int Count = 0;
  } Component;
  auto& Individual = Component.Add("(Add (Neg x) y)");
  Component.DoInvert(Individual);
  EXPECT_EQ(Component.Count, 4);
}

TEST(PointMutationTest, AProgramTooDeepForTheStackRaises) {
  TProgramming Component;
  Component.SetPointMutationProbability(0);
  generics::TQXGPInstruction<TGAFloat>& Neg = Component.Instructions()[2];
  auto Root = Component.CreateNode(&Neg);
  TNode* Last = Root.get();
  for (int Level = 0; Level < 1'000'000; ++Level) {
    Last = &Component.CreateNode(&Neg, *Last);
  }
  auto& Individual = Component.Population().Add();
  Individual.AssignDNA(std::move(Root));
  EXPECT_THROW(Component.DoPointMutation(Individual), EStackError);
}

TEST(ProgramMutationTest, WithoutAProgramNothingChanges) {
  TProgramming Component;
  auto& Individual = Component.Population().Add();
  Individual.AssignDNA(nullptr);
  TScriptedRandom Draws({});
  for (const auto Method : {mmSubtree, mmReplacement, mmConstant, mmShrink, mmHoist, mmPoint}) {
    EXPECT_FALSE(Component.Mutate(Individual, Method));
  }
  EXPECT_FALSE(Component.Mutate(Individual, static_cast<TGPMutationMethod>(6)));
  EXPECT_EQ(Program(Individual), "none");
}

} // namespace
} // namespace qx
