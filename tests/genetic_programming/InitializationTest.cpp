#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>
#include <support/SmallGeneticProgram.h>
#include <support/Streams.h>
#include <vector>

namespace qx {
namespace {

using tests::I;
using tests::Program;
using tests::R;
using tests::TArithmeticProgramming;
using tests::TCountingRandom;
using tests::TOpenProgramming;
using tests::TScriptedRandom;

using TOpenFloat = TOpenProgramming<TQXGeneticProgramming>;

template <class TCall>
std::string ErrorOf(TCall Call) {
  try {
    Call();
  } catch (const EGPException& Error) {
    return Error.what();
  }
  return "none";
}

// --- Trees -------------------------------------------------------------------------------------------------

TEST(TreeBuildingTest, AFullTreeHasFunctionsWhereThereIsRoom) {
  TArithmeticProgramming<> Component;
  TScriptedRandom Draws({I(0, 3),                     // Add
                         I(2, 3), I(1, 3),            // its first argument: Neg of y
                         I(1, 3), I(0, 3), I(2, 3)}); // its second: Mul of x and c
  EXPECT_EQ(Component.DoInitializeFull(3)->ToString(), "(Add (Neg y) (Mul x 1.5))");
}

TEST(TreeBuildingTest, AGrownTreeHasAnyInstructionWhereThereIsRoom) {
  TArithmeticProgramming<> Component;
  TScriptedRandom Draws({I(0, 6),            // of all six: Add
                         I(4, 6),            // y
                         I(2, 6), I(0, 3)}); // Neg of a terminal
  EXPECT_EQ(Component.DoInitializeGrow(3)->ToString(), "(Add y (Neg x))");
}

TEST(TreeBuildingTest, BelowTwoLevelsThereIsATerminal) {
  TArithmeticProgramming<> Component;
  for (const int Depth : {1, 0, -7}) {
    TScriptedRandom Draws({I(2, 3), I(0, 3)});
    EXPECT_EQ(Component.DoInitializeFull(Depth)->ToString(), "1.5");
    EXPECT_EQ(Component.DoInitializeGrow(Depth)->ToString(), "x");
  }
}

TEST(TreeBuildingTest, EveryLeafOfAFullTreeIsAtTheLastLevel) {
  TArithmeticProgramming<> Component;
  const TCountingRandom Draws;
  for (int Depth = 1; Depth <= 8; ++Depth) {
    const auto Tree = Component.DoInitializeFull(Depth);
    EXPECT_EQ(Tree->Depth(), Depth - 1);
    Tree->ForEach([&](auto& Node) {
      int Level = 1;
      for (const auto* Above = Node.Parent(); Above != nullptr; Above = Above->Parent()) {
        ++Level;
      }
      EXPECT_EQ(Node.ChildCount() == 0, Level == Depth);
    });
  }
}

TEST(TreeBuildingTest, WhatIsMissingIsNamed) {
  TOpenFloat None;
  EXPECT_EQ(ErrorOf([&] { None.DoInitializeFull(1); }), "No terminals found");
  EXPECT_EQ(ErrorOf([&] { None.DoInitializeFull(2); }), "No operations found");
  EXPECT_EQ(ErrorOf([&] { None.DoInitializeGrow(2); }), "No nodes found");
  TOpenFloat OnlyFunctions;
  OnlyFunctions.Function("f", 1);
  EXPECT_EQ(ErrorOf([&] { OnlyFunctions.DoInitializeFull(2); }), "No terminals found");
  TOpenFloat OnlyTerminals;
  OnlyTerminals.Variable("x");
  EXPECT_EQ(ErrorOf([&] { OnlyTerminals.DoInitializeFull(2); }), "No operations found");
  EXPECT_EQ(OnlyTerminals.DoInitializeGrow(2)->ToString(), "x");
}

TEST(TreeBuildingTest, AnInstructionWithArgumentsThatIsNoFunctionIsRefused) {
  TArithmeticProgramming<> Component;
  Component.Instructions()[0].LoadFromXML(
      TXMLInstructionType(TXMLDocument::Parse("<Variable Name='Add'/>").Root())); // keeps its arity
  TScriptedRandom Draws({I(0, 3), I(0, 6)});
  EXPECT_EQ(ErrorOf([&] { Component.DoInitializeFull(2); }),
            "Invalid terminal node.  Node requires greater than 0 children");
  EXPECT_EQ(ErrorOf([&] { Component.DoInitializeGrow(2); }),
            "Invalid terminal node.  Node requires greater than 0 children");
}

TEST(TreeBuildingTest, ABinaryTreeHasNoPlaceForAThirdArgument) {
  TArithmeticProgramming<TQXBinaryGeneticProgramming> Component;
  AddStandardInstruction(Component.Instructions(), "If");
  const TScriptedRandom Draws({I(3, 4), I(0, 3), I(0, 3), I(0, 3)});
  EXPECT_EQ(ErrorOf([&] { Component.DoInitializeFull(2); }), "Node cannot accept anymore children");
}

TEST(TreeBuildingTest, ABinaryTreeIsBuiltAsAnyOther) {
  TArithmeticProgramming<TQXBinaryGeneticProgramming> Component;
  TScriptedRandom Draws({I(0, 3), I(2, 3), I(1, 3), I(1, 3), I(0, 3), I(2, 3)});
  EXPECT_EQ(Component.DoInitializeFull(3)->ToString(), "(Add (Neg y) (Mul x 1.5))");
}

TEST(TreeBuildingTest, ADepthBeyondAnyStackIsBuilt) {
  TOpenFloat Component;
  Component.Function("f", 1);
  Component.Variable("x");
  EXPECT_EQ(Component.DoInitializeFull(1'000'000)->Depth(), 999'999);
}

TEST(TreeBuildingTest, AProgramAboveTheLimitIsRefused) {
  TArithmeticProgramming<> Component;
  Component.SetBuildSizeLimit(7);
  EXPECT_NO_THROW({
    TScriptedRandom Draws({I(0, 3), I(0, 3), I(0, 3), I(0, 3), I(0, 3), I(0, 3), I(0, 3)});
    EXPECT_EQ(Component.DoInitializeFull(3)->Size(), 7);
  });
  const TCountingRandom Draws;
  try {
    Component.DoInitializeFull(2'000'000'000);
    ADD_FAILURE() << "nothing was raised";
  } catch (const std::length_error& Error) {
    EXPECT_NE(std::string(Error.what()).find("more than 7 nodes"), std::string::npos) << Error.what();
    EXPECT_NE(std::string(Error.what()).find("BuildSizeLimit"), std::string::npos) << Error.what();
  }
}

TEST(SimilarInstructionTest, OneOfTheSameKindAndArityIsDrawn) {
  TArithmeticProgramming<> Component;
  TScriptedRandom Draws({I(1, 2), I(0, 1), I(0, 2)});
  EXPECT_EQ(Component.GetSimilarInstruction(Component.Instructions()[0]).Name(), "Mul");
  EXPECT_EQ(Component.GetSimilarInstruction(Component.Instructions()[2]).Name(), "Neg"); // the only one
  EXPECT_EQ(Component.GetSimilarInstruction(Component.Instructions()[4]).Name(), "x");
}

TEST(SimilarInstructionTest, WithoutInstructionsThereIsNone) {
  TArithmeticProgramming<> Other;
  TOpenFloat Component;
  EXPECT_EQ(ErrorOf([&] { Component.GetSimilarInstruction(Other.Instructions()[0]); }), "No nodes found");
  EXPECT_EQ(ErrorOf([&] { Component.GetNode(nullptr, *Component.CreateNode(nullptr), 0); }),
            "No instruction assigned to node");
}

// --- Population --------------------------------------------------------------------------------------------

std::vector<int> LevelsOf(TQXGeneticProgramming& Component) {
  std::vector<int> Levels;
  for (auto& Individual : Component.Population()) {
    Levels.push_back(Individual.DNA()->Depth() + 1);
  }
  return Levels;
}

TEST(InitialProgramsTest, TheDepthIsTheNumberOfFunctionsUnlessSet) {
  TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(3);
  Component.Initialize();
  EXPECT_EQ(LevelsOf(Component), (std::vector{3, 3, 3}));
  Component.SetInitializationDepth(5);
  Component.Initialize();
  EXPECT_EQ(LevelsOf(Component), (std::vector{5, 5, 5}));
  Component.SetInitializationDepth(1);
  Component.Initialize();
  EXPECT_EQ(LevelsOf(Component), (std::vector{2, 2, 2})); // two levels at least
}

TEST(InitialProgramsTest, WithoutFunctionsAFullTreeCannotBe) {
  TOpenFloat Component;
  Component.Variable("x");
  Component.SetInitialPopulation(1);
  EXPECT_EQ(ErrorOf([&] { Component.Initialize(); }), "No operations found");
}

TEST(InitialProgramsTest, RampedDepthsRiseInEqualBands) {
  TOpenFloat Component;
  Component.Function("f", 1);
  Component.Variable("x");
  Component.SetInitialDuplicatesRetries(0);
  Component.OnEvaluateFitness = [](auto&, auto&, double&) {};
  Component.SetInitialPopulation(10);
  Component.SetInitializationDepth(6);
  Component.SetInitializationMethod(imRampedFull);
  Component.Initialize();
  EXPECT_EQ(LevelsOf(Component), (std::vector{2, 2, 3, 3, 4, 4, 5, 5, 6, 6}));
  Component.SetInitializationDepth(1);
  Component.Initialize();
  EXPECT_EQ(LevelsOf(Component), std::vector(10, 2));
}

// A tree that was grown stops where a terminal is drawn at the root; a full one never asks for one there.
TEST(InitialProgramsTest, HalvesAlternateBetweenFullAndGrown) {
  for (const auto Method : {imFull, imGrow, imRampedFull, imRampedGrow, imHalfAndHalf, imRampedHalfAndHalf}) {
    TArithmeticProgramming<> Component;
    Component.SetInitialDuplicatesRetries(0);
    Component.SetInitialPopulation(4);
    Component.SetInitializationDepth(2);
    Component.SetInitializationMethod(Method);
    const bool Half = Method == imHalfAndHalf || Method == imRampedHalfAndHalf;
    TScriptedRandom Draws({});
    for (int Index = 0; Index < 4; ++Index) {
      if (Method == imFull || Method == imRampedFull || (Half && Index % 2 == 0)) {
        Draws.Add({I(2, 3), I(0, 3)}); // Neg of x
      } else {
        Draws.Add({I(3, 6)}); // x, of all
      }
    }
    Component.Initialize();
  }
}

TEST(InitialProgramsTest, DuplicatesAreRejectedAndTheMinimumDepthRises) {
  TOpenFloat Component;
  Component.Function("f", 1);
  Component.Variable("x");
  Component.OnEvaluateFitness = [](auto&, auto&, double&) {};
  Component.SetInitialDuplicatesRetries(2);
  for (int I = 0; I < 4; ++I) {
    Component.Population().Add();
  }
  EXPECT_EQ(Component.DoInitialize(), 9); // for each after the first: two in vain, and one a level deeper
  EXPECT_EQ(LevelsOf(Component), (std::vector{2, 3, 4, 5}));
}

// In a ramped method the raised minimum is added to every depth, those of later individuals too.
TEST(InitialProgramsTest, ARaisedMinimumCountsForAllThatFollow) {
  TOpenFloat Component;
  Component.Function("f", 1);
  Component.Variable("x");
  Component.SetInitialDuplicatesRetries(1);
  Component.SetInitializationDepth(3);
  Component.SetInitializationMethod(imRampedFull);
  for (int I = 0; I < 4; ++I) {
    Component.Population().Add();
  }
  // Depths are I / 4 * 2 + M, and every retry raises M: 2; 2, 2, 3 (and M is 4); 5; 5, 5, 6.
  EXPECT_EQ(Component.DoInitialize(), 4);
  EXPECT_EQ(LevelsOf(Component), (std::vector{2, 3, 5, 6}));
}

TEST(InitialProgramsTest, WithoutRetriesDuplicatesStay) {
  TOpenFloat Component;
  Component.Function("f", 1);
  Component.Variable("x");
  Component.SetInitialDuplicatesRetries(0);
  Component.Population().Add();
  Component.Population().Add();
  EXPECT_EQ(Component.DoInitialize(), 0);
  EXPECT_EQ(LevelsOf(Component), (std::vector{2, 2}));
}

TEST(InitialProgramsTest, MoreDifferentProgramsThanTerminalsCannotBeWithoutFunctions) {
  TOpenFloat Component;
  Component.Variable("x");
  Component.Variable("y");
  Component.SetInitializationMethod(imGrow);
  Component.SetInitialPopulation(3);
  EXPECT_EQ(ErrorOf([&] { Component.Initialize(); }), "No operations found");
  EXPECT_EQ(Component.Population().Count(), 3); // those before it keep their programs
  EXPECT_NE(Program(Component.Population()[0]), Program(Component.Population()[1]));
}

TEST(InitialProgramsTest, ADuplicateStaysAfterSoManyNodesWereBuiltInPlaceOfDuplicates) {
  TOpenFloat Component; // constants that draw might come to differ
  Component.Constant("one", 1.0).OnInitializeNode = [](auto&, auto& Node) { Node.SetValue(1); };
  Component.SetInitializationMethod(imGrow);
  Component.SetInitialPopulation(2);
  Component.SetDuplicatesBuildLimit(50);
  EXPECT_EQ(Component.DuplicatesBuildLimit(), 50);
  Component.Population().Add();
  Component.Population().Add();
  EXPECT_EQ(Component.DoInitialize(), 50); // of one node each
  EXPECT_EQ(Component.InitialDuplicates(), 1);
  EXPECT_EQ(Program(Component.Population()[1]), Program(Component.Population()[0]));
  Component.SetInitialDuplicatesRetries(0); // nobody looks
  Component.Initialize();
  EXPECT_EQ(Component.InitialDuplicates(), 0);
}

TEST(InitialProgramsTest, TheLimitOfDuplicatesCountsFromZeroAndGoesIntoStreams) {
  TArithmeticProgramming<> Component;
  EXPECT_EQ(Component.DuplicatesBuildLimit(), 1'000'000);
  Component.SetDuplicatesBuildLimit(-1);
  EXPECT_EQ(Component.DuplicatesBuildLimit(), 0);
  EXPECT_NE(tests::Written(Component).find("DuplicatesBuildLimit = 0"), std::string::npos);
}

// One function and one terminal make one full tree of each depth: the depth grows with the duplicates.
TEST(InitialProgramsTest, OneFunctionAndOneTerminalMakeAPopulationWithDuplicates) {
  TOpenFloat Component;
  Component.Function("Add", 2);
  Component.Variable("x");
  Component.Initialize();
  EXPECT_EQ(Component.Population().Count(), 100);
  EXPECT_GT(Component.InitialDuplicates(), 0);
  std::set<std::string> Different;
  for (auto& Individual : Component.Population()) {
    Different.insert(Program(Individual));
  }
  EXPECT_EQ(std::ssize(Different), 100 - Component.InitialDuplicates());
}

TEST(InitialProgramsTest, ADuplicateStaysWhenAnotherWouldBeTooLarge) {
  TOpenFloat Component;
  Component.Function("List", 1000);
  Component.Variable("x");
  Component.SetInitialPopulation(3);
  Component.SetBuildSizeLimit(5000);
  Component.Initialize();
  EXPECT_EQ(Component.InitialDuplicates(), 2); // one million nodes would be the next
}

TEST(InitialProgramsTest, AMinimumDepthAboveTheLimitOfSizeIsNoneOfSmallPrograms) {
  TArithmeticProgramming<> Component;
  Component.SetInitializationMethod(imGrow);
  Component.SetInitialDuplicatesRetries(1); // raises the minimum with every retry
  Component.SetInitialPopulation(300);
  Component.SetBuildSizeLimit(2000);
  Component.Add("x");
  const TCountingRandom Draws;
  EXPECT_NO_THROW(Component.Initialize());
}

TEST(InitialProgramsTest, AnInstructionsHandlerMayChangeTheSetAndTheSettings) {
  TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(3);
  Component.SetInitialDuplicatesRetries(0);
  Component.Instructions()[0].OnInitialize = [&](auto&) {
    Component.Instructions()[3].SetName("time");
    Component.SetInitializationDepth(5);
  };
  Component.Evolve(1);
  EXPECT_EQ(Component.Generation(), 1);
  Component.Initialize();
  EXPECT_EQ(LevelsOf(Component), (std::vector{5, 5, 5}));
}

TEST(InitialProgramsTest, ASetThatTheComponentsHandlerChangesIsTheOneThatIsUsed) {
  TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(3);
  Component.OnInitialization = [](auto& Sender, bool&) { Sender.Instructions().Add().SetName("z"); };
  Component.Initialize();
  EXPECT_EQ(Component.Population().Count(), 3);
}

TEST(InitialProgramsTest, TheirStatisticsAreNotThoseOfTheRunBefore) {
  TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(2);
  Component.Initialize();
  const float Former = Component.AvgProgramSize();
  Component.OnInitialization = [](auto& Sender, bool& Filled) {
    for (auto& Individual : Sender.Population()) {
      Individual.AssignDNA(tests::ReadTree<TGAFloat>(Sender, "x"));
    }
    Filled = true;
  };
  Component.Initialize();
  EXPECT_EQ(Component.AvgProgramSize(), 1);
  EXPECT_NE(Former, 1);
}

// --- Changes of the set at the wrong time ------------------------------------------------------------------

template <class TCall>
void ExpectRefusedChange(TCall Call) {
  try {
    Call();
    ADD_FAILURE() << "nothing was raised";
  } catch (const std::logic_error& Error) {
    EXPECT_NE(std::string(Error.what()).find("is refused while"), std::string::npos) << Error.what();
  }
}

TEST(ChangeInUseTest, AHandlerThatChangesTheSetWhileProgramsAreMadeIsRefused) {
  TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(4);
  Component.Instructions()[5].OnInitializeNode = [](auto& Instruction, auto&) {
    Instruction.SetName(Instruction.Name() + "x");
  };
  ExpectRefusedChange([&] { Component.Initialize(); });
  Component.Instructions()[5].OnInitializeNode = nullptr;
  Component.Evolve(2); // starts anew
  EXPECT_EQ(Component.Generation(), 2);
}

TEST(ChangeInUseTest, SoIsOneThatDoesItDuringAGeneration) {
  TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(4);
  Component.SetMutationProbability(1);
  Component.SetMutationWeights({0, 0, 1, 0, 0, 0});
  Component.OnInitialization = [](auto& Sender, bool& Filled) { // constants everywhere
    for (auto& Individual : Sender.Population()) {
      Individual.AssignDNA(tests::ReadTree<TGAFloat>(Sender, "(Neg c)"));
    }
    Filled = true;
  };
  Component.Initialize();
  Component.OnConstantMutation = [](auto& Sender, auto&) { Sender.Instructions().Delete(0); };
  ExpectRefusedChange([&] { Component.Evolve(20); });
  EXPECT_EQ(Component.Instructions().Count(), 6);
  Component.OnConstantMutation = nullptr;
  Component.Evolve(1);
  EXPECT_EQ(Component.Generation(), 1); // the run goes on
  Component.OnConstantMutation = [](auto& Sender, auto&) { Sender.Instructions().Add(); };
  ExpectRefusedChange([&] { Component.Mutate(Component.Add("c"), mmConstant); });
  EXPECT_EQ(Component.TerminalsCount(), 3); // it has not come, and the run goes on
  Component.OnConstantMutation = nullptr;
  Component.Evolve(1);
  EXPECT_EQ(Component.Generation(), 2);
}

TEST(ChangeInUseTest, SoIsOneThatDoesItWhileAProgramIsEvaluated) {
  TArithmeticProgramming<> Component;
  auto& Individual = Component.Add("x");
  Component.OnEvaluateFitness = [](auto& Sender, auto&, double&) { Sender.Instructions().Clear(); };
  ExpectRefusedChange([&] { static_cast<void>(Individual.Fitness()); });
  EXPECT_EQ(Program(Individual), "x");
}

TEST(ChangeInUseTest, AnEngineThatMakesNoNodeIsNamed) {
  class TNone : public TArithmeticProgramming<> {
  public:
    TNodePointer CreateNode(TInstruction* /*Instruction*/) override { return nullptr; }
  } Component;
  EXPECT_THROW(Component.DoInitializeFull(2), std::logic_error);
}

// --- Nodes for a parent ------------------------------------------------------------------------------------

TEST(AttachedNodeTest, AFactoryThatGetsAParentAttachesWhatItMakes) {
  TArithmeticProgramming<> Component;
  const auto Root = Component.CreateNode(&Component.Instructions()[0]);
  TScriptedRandom Draws({I(0, 3), I(2, 3), I(1, 6), I(0, 2)});
  auto& Last = Component.GetTerminalNode(*Root, 0);
  EXPECT_EQ(Root->ToString(), "(Add x)");
  auto& First = Component.GetOperationNode(*Root, 0); // before the one that stands there
  EXPECT_EQ(Root->Children(0), &First);
  EXPECT_EQ(Root->Children(1), &Last);
  auto& Any = Component.GetNode(*Root, 2);
  EXPECT_EQ(Any.Parent(), Root.get());
  EXPECT_EQ(Root->IndexOf(Any), 2);
  auto& Similar = Component.GetNode(*Root, *Root, 3);
  EXPECT_EQ(Similar.Instruction()->Arity(), 2);
  EXPECT_EQ(Root->ChildCount(), 4);
}

TEST(AttachedNodeTest, ABinaryNodeAppends) {
  TArithmeticProgramming<TQXBinaryGeneticProgramming> Component;
  const auto Root = Component.CreateNode(&Component.Instructions()[0]);
  TScriptedRandom Draws({I(0, 3), I(1, 3), I(2, 3)});
  auto& First = Component.GetTerminalNode(*Root, 1);
  auto& Second = Component.GetTerminalNode(*Root, 0);
  EXPECT_EQ(Root->IndexOf(First), 0);
  EXPECT_EQ(Root->IndexOf(Second), 1);
  EXPECT_THROW(Component.GetTerminalNode(*Root, 0), EGPException); // it is full
}

TEST(AttachedNodeTest, APlaceThatThereIsNotIsRefused) {
  TArithmeticProgramming<> Component;
  const auto Root = Component.CreateNode(&Component.Instructions()[0]);
  const TCountingRandom Draws;
  EXPECT_THROW(Component.GetTerminalNode(*Root, 1), std::out_of_range);
  EXPECT_EQ(Root->ChildCount(), 0);
}

// --- Places ------------------------------------------------------------------------------------------------

TEST(NodePlaceTest, AnOverrideKnowsThePlaceThatTheNodeIsFor) {
  class TPlaces : public TArithmeticProgramming<> {
  public:
    TNodePointer GetTerminalNode(const TNode* Parent, int Index) override {
      Log += (Parent != nullptr ? Parent->Instruction()->Name() : "root") + std::to_string(Index) + ' ';
      return TArithmeticProgramming::GetTerminalNode(Parent, Index);
    }
    std::string Log;
  } Component;
  TScriptedRandom Draws({I(0, 3), I(0, 3), I(0, 3), I(0, 3)});
  Component.DoInitializeFull(2);
  Component.DoInitializeFull(1);
  EXPECT_EQ(Component.Log, "Add0 Add1 root0 ");
  auto& Individual = Component.Add("(Add x (Mul x y))");
  Draws.Add(tests::Pick(4, 5));
  Draws.Add({I(0, 3)});
  Component.DoShrinkMutation(Individual);
  EXPECT_EQ(Component.Log, "Add0 Add1 root0 Mul1 ");
}

TEST(InitialProgramsTest, InstructionsAreInitializedFirstAndInOrder) {
  TArithmeticProgramming<> Component;
  std::string Log;
  for (auto& Instruction : Component.Instructions()) {
    Instruction.OnInitialize = [&](auto& Sender) {
      Log += Sender.Name() + ' ';
      EXPECT_EQ(Component.Population()[0].DNA()->Instruction(), nullptr);
    };
  }
  Component.SetInitialPopulation(2);
  Component.Initialize();
  EXPECT_EQ(Log, "Add Mul Neg x y c ");
}

TEST(InitialProgramsTest, AnErrorLeavesTheProgramsBeforeIt) {
  TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(3);
  Component.Initialize();
  const std::string Second = Program(Component.Population()[1]);
  Component.SetBuildSizeLimit(2);
  Component.SetInitializationDepth(2);
  {
    TScriptedRandom Draws({I(2, 3), I(0, 3),   // Neg of x has two nodes
                           I(0, 3), I(0, 3)}); // Add would have three
    EXPECT_THROW(Component.DoInitialize(), std::length_error);
  }
  EXPECT_EQ(Program(Component.Population()[0]), "(Neg x)");
  EXPECT_EQ(Program(Component.Population()[1]), Second);
  tests::ExpectWhole(Component.Population()[1]);
}

// --- Ephemeral constants -----------------------------------------------------------------------------------

TEST(EphemeralConstantTest, EveryNewNodeDrawsItsValueAndCopiesDoNot) {
  TOpenFloat Component;
  auto& Constant = AddEphemeralConstant(Component.Instructions(), "r", -1, 3);
  EXPECT_EQ(Constant.Operation(), gpConstant);
  Component.Function("f", 2);
  TScriptedRandom Draws({I(0, 1), I(0, 1), R(0.5), I(0, 1), R(0.25)});
  const auto Tree = Component.DoInitializeFull(2);
  EXPECT_EQ(Tree->ToString(), "(f 1 0)");
  EXPECT_EQ(Tree->Clone()->ToString(), "(f 1 0)");
  EXPECT_EQ(Component.CreateNode(&Constant)->Value(), 0); // the plain factory draws nothing
}

TEST(EphemeralConstantTest, VariantsHaveThemToo) {
  TOpenProgramming<TQXGeneticProgrammingVariant> Component;
  AddEphemeralConstant(Component.Instructions(), "r", 0, 1);
  TScriptedRandom Draws({I(0, 1), R(0.5)});
  EXPECT_EQ(Component.DoInitializeGrow(1)->Value(), Variant(0.5));
}

TEST(EphemeralConstantTest, ABadOneIsNotAdded) {
  TArithmeticProgramming<> Component;
  EXPECT_THROW(AddEphemeralConstant(Component.Instructions(), "r", 1, 0), std::invalid_argument);
  EXPECT_THROW(AddEphemeralConstant(Component.Instructions(), "r", 0, HUGE_VAL), std::invalid_argument);
  EXPECT_THROW(AddEphemeralConstant(Component.Instructions(), "X", 0, 1), EGPException);
  EXPECT_EQ(Component.Instructions().Count(), 6);
}

TEST(EphemeralConstantTest, AFullCopyOfTheInstructionsDrawsToo) {
  TOpenFloat Source;
  AddEphemeralConstant(Source.Instructions(), "r", 0, 1);
  TOpenFloat Copy;
  Copy.Instructions().AssignAll(Source.Instructions());
  TScriptedRandom Draws({I(0, 1), R(0.75)});
  EXPECT_EQ(Copy.DoInitializeGrow(1)->Value(), 0.75);
}

} // namespace
} // namespace qx
