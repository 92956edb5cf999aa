#include <qx/platform/Filer.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>
#include <support/SmallGeneticProgram.h>

namespace qx {
namespace {

using tests::Program;
using tests::TArithmeticProgramming;
using tests::TOpenProgramming;

using TOpenFloat = TOpenProgramming<TQXGeneticProgramming>;
using TInstruction = generics::TQXGPInstruction<TGAFloat>;

std::string FunctionsOf(const TQXGeneticProgramming& Component) {
  std::string Names;
  for (int I = 0; I < Component.FunctionsCount(); ++I) {
    Names += Component.Functions(I).Name() + ' ';
  }
  return Names;
}
std::string TerminalsOf(const TQXGeneticProgramming& Component) {
  std::string Names;
  for (int I = 0; I < Component.TerminalsCount(); ++I) {
    Names += Component.Terminals(I).Name() + ' ';
  }
  return Names;
}

// --- Settings ----------------------------------------------------------------------------------------------

TEST(ProgramSettingsTest, StartAtTheirDefaults) {
  const TQXGeneticProgramming Component;
  EXPECT_EQ(Component.CrossoverMethod(), cmSubtree);
  EXPECT_EQ(Component.SelectionNonTerminalsProbability(), 0.9);
  EXPECT_EQ(Component.InitializationDepth(), 0);
  EXPECT_EQ(Component.InitializationMethod(), imFull);
  EXPECT_EQ(Component.BuildSizeLimit(), 1'000'000);
  EXPECT_EQ(Component.MutationWeights(), (TGPMutationMethodWeights{25, 0, 0, 25, 25, 0}));
  EXPECT_EQ(Component.MutationWeightSum(), 75);
  EXPECT_EQ(Component.PointMutationMethod(), pmmPerNode);
  EXPECT_EQ(Component.PointMutationProbability(), 0.1);
  EXPECT_EQ(Component.BloatStrategy(), bsNone);
  EXPECT_EQ(Component.BloatLimit(), 10);
  EXPECT_EQ(Component.ParsimonyCoefficient(), 1.0);
  EXPECT_EQ(Component.TarpeianProbability(), 0.3);
  EXPECT_EQ(Component.CrossoverProbability(), 0.9);
  EXPECT_EQ(Component.TournamentField(), 7);
  EXPECT_EQ(Component.MutationProbability(), 0.01);
  EXPECT_EQ(Component.InversionProbability(), 0.1);
  EXPECT_EQ(Component.MaxNodeArity(), 2147483647);
}

TEST(ProgramSettingsTest, LimitsAreKept) {
  TQXGeneticProgramming Component;
  Component.SetInitializationDepth(-4);
  EXPECT_EQ(Component.InitializationDepth(), 0);
  Component.SetInitializationDepth(17);
  EXPECT_EQ(Component.InitializationDepth(), 17);
  Component.SetBloatLimit(3);
  EXPECT_EQ(Component.BloatLimit(), 5);
  Component.SetBloatLimit(7);
  EXPECT_EQ(Component.BloatLimit(), 7);
  Component.SetBuildSizeLimit(0);
  EXPECT_EQ(Component.BuildSizeLimit(), 1);
}

TEST(ProgramSettingsTest, PlainValuesAreNotChecked) {
  TQXGeneticProgramming Component;
  Component.SetSelectionNonTerminalsProbability(1.5);
  Component.SetPointMutationProbability(-2);
  Component.SetParsimonyCoefficient(-0.5);
  Component.SetTarpeianProbability(7);
  EXPECT_EQ(Component.SelectionNonTerminalsProbability(), 1.5);
  EXPECT_EQ(Component.PointMutationProbability(), -2);
  EXPECT_EQ(Component.ParsimonyCoefficient(), -0.5);
  EXPECT_EQ(Component.TarpeianProbability(), 7);
}

TEST(ProgramSettingsTest, AWeightKeepsTheSumCurrent) {
  TQXGeneticProgramming Component;
  Component.SetMutateSubtreeWeight(-1);
  EXPECT_EQ(Component.MutateSubtreeWeight(), 0);
  EXPECT_EQ(Component.MutationWeightSum(), 50);
  Component.SetMutateReplacementWeight(1);
  Component.SetMutateConstantWeight(2);
  Component.SetMutateShrinkWeight(3);
  Component.SetMutateHoistWeight(4);
  Component.SetMutatePointWeight(5);
  EXPECT_EQ(Component.MutationWeights(), (TGPMutationMethodWeights{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(Component.MutationWeightSum(), 15);
  Component.SetMutatePointWeight(0x1FE); // only the low byte fits
  EXPECT_EQ(Component.MutatePointWeight(), 0xFE);
  EXPECT_EQ(Component.MutationWeightSum(), 10 + 0xFE);
  Component.SetMutationWeights({255, 255, 255, 255, 255, 255});
  EXPECT_EQ(Component.MutateHoistWeight(), 255);
  EXPECT_EQ(Component.MutationWeightSum(), 6 * 255);
}

TEST(ProgramSettingsTest, AValueThatIsNoneIsRefused) {
  TQXGeneticProgramming Component;
  constexpr auto None = static_cast<std::uint8_t>(99);
  EXPECT_THROW(Component.SetCrossoverMethod(static_cast<TGPCrossoverMethod>(None)), std::out_of_range);
  EXPECT_THROW(Component.SetInitializationMethod(static_cast<TGPInitializationMethod>(None)),
               std::out_of_range);
  EXPECT_THROW(Component.SetPointMutationMethod(static_cast<TGPPointMutationMethod>(None)),
               std::out_of_range);
  EXPECT_THROW(Component.SetBloatStrategy(static_cast<TGPBloatStrategy>(None)), std::out_of_range);
  EXPECT_THROW(Component.SetMutateWeights(static_cast<TGPMutationMethod>(None), 1), std::out_of_range);
  EXPECT_EQ(Component.BloatStrategy(), bsNone);
  EXPECT_EQ(Component.InitializationMethod(), imFull);
}

// --- Functions and terminals -------------------------------------------------------------------------------

TEST(InstructionListsTest, AnInstructionIsInTheListOfItsArityHoweverItGotIt) {
  TOpenFloat Component;
  TInstruction& A = Component.Variable("a");
  TInstruction& B = Component.Variable("b");
  EXPECT_EQ(TerminalsOf(Component), "a b ");
  A.SetArity(2);
  EXPECT_EQ(FunctionsOf(Component), "a ");
  EXPECT_EQ(TerminalsOf(Component), "b ");
  B.SetOperation(gpFunction); // without arguments yet
  EXPECT_EQ(TerminalsOf(Component), "b ");
  B.SetArity(1);
  EXPECT_EQ(FunctionsOf(Component), "a b ");
  A.SetArity(0); // stays a function, and the kind does not change
  EXPECT_EQ(A.Operation(), gpFunction);
  EXPECT_EQ(FunctionsOf(Component), "b ");
  EXPECT_EQ(TerminalsOf(Component), "a ");
  B.SetOperation(gpConstant);
  EXPECT_EQ(FunctionsOf(Component), "");
  EXPECT_EQ(TerminalsOf(Component), "a b ");
}

TEST(InstructionListsTest, ANewKindMovesAnInstructionToTheEndOfItsList) {
  TOpenFloat Component;
  Component.Variable("a").SetOperation(gpVariable);
  Component.Variable("b");
  Component.Instructions()[0].SetOperation(gpConstant);
  EXPECT_EQ(TerminalsOf(Component), "b a ");
}

TEST(InstructionListsTest, AnAssignedInstructionIsInTheListOfItsArity) {
  TOpenFloat Component;
  TInstruction& F = Component.Function("f", 2);
  TInstruction Bare;
  Bare.SetName("bare");
  Bare.SetOperation(gpFunction);
  F.Assign(Bare); // a function of another arity: the kind stays
  EXPECT_EQ(FunctionsOf(Component), "");
  EXPECT_EQ(TerminalsOf(Component), "bare ");
}

TEST(InstructionListsTest, AReadInstructionIsInTheListOfItsArity) {
  TOpenFloat Component;
  TInstruction& F = Component.Function("f", 2);
  F.LoadFromXML(TXMLInstructionType(TXMLDocument::Parse("<Variable Name='f'/>").Root()));
  EXPECT_EQ(FunctionsOf(Component), "f "); // its arity is as it was
  F.LoadFromXML(TXMLInstructionType(TXMLDocument::Parse("<Function Name='f' Arity='0'/>").Root()));
  EXPECT_EQ(TerminalsOf(Component), "f ");
}

TEST(InstructionListsTest, ChangesInOneUpdateAreSortedAtItsEnd) {
  TOpenFloat Component;
  TInstruction& F = Component.Function("f", 2);
  TUpdateScope Update(Component.Instructions());
  F.SetArity(0);
  Component.Variable("x");
  Update.End();
  EXPECT_EQ(FunctionsOf(Component), "");
  EXPECT_EQ(TerminalsOf(Component), "x f ");
}

TEST(InstructionListsTest, AnInstructionThatGoesLeavesItsList) {
  TOpenFloat Component;
  Component.Function("f", 2);
  Component.Variable("x");
  Component.Function("g", 1);
  Component.Instructions().Delete(0);
  EXPECT_EQ(FunctionsOf(Component), "g ");
  const auto Extracted = Component.Instructions().Extract(Component.Instructions()[0]);
  EXPECT_EQ(TerminalsOf(Component), "");
  Component.Instructions().Clear();
  EXPECT_EQ(Component.FunctionsCount(), 0);
}

TEST(InstructionListsTest, AnInstructionThatComesWithAnArityIsAFunction) {
  TOpenFloat From;
  TOpenFloat To;
  From.Function("f", 2).SetCollection(To.Instructions());
  EXPECT_EQ(FunctionsOf(From), "");
  EXPECT_EQ(FunctionsOf(To), "f ");
  EXPECT_EQ(TerminalsOf(To), "");
}

TEST(InstructionListsTest, AnIndexBeyondAListIsRefused) {
  TOpenFloat Component;
  Component.Variable("x");
  EXPECT_THROW(Component.Functions(0), std::out_of_range);
  EXPECT_THROW(Component.Terminals(1), std::out_of_range);
  EXPECT_THROW(Component.Terminals(-1), std::out_of_range);
}

// --- What a change of the instructions does to a run -------------------------------------------------------

void ExpectEmptied(const std::string& What, void (*Change)(TArithmeticProgramming<>& Component)) {
  TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(4);
  Component.Evolve(2);
  ASSERT_EQ(Component.Population().Count(), 4);
  Change(Component);
  EXPECT_EQ(Component.Population().Count(), 0) << What;
  EXPECT_EQ(Component.PreviousGeneration()->Count(), 0) << What;
  EXPECT_EQ(Component.FittestIndividual(), nullptr) << What;
}

TEST(InstructionChangeTest, EmptiesBothGenerations) {
  ExpectEmptied("arity", [](auto& Component) { Component.Instructions()[0].SetArity(1); });
  ExpectEmptied("arity 0", [](auto& Component) { Component.Instructions()[0].SetArity(0); });
  ExpectEmptied("kind", [](auto& Component) { Component.Instructions()[3].SetOperation(gpConstant); });
  ExpectEmptied("name", [](auto& Component) { Component.Instructions()[3].SetName("z"); });
  ExpectEmptied("addition", [](auto& Component) { Component.Instructions().Add(); });
  ExpectEmptied("deletion", [](auto& Component) { Component.Instructions().Delete(0); });
  ExpectEmptied("order", [](auto& Component) { Component.Instructions()[0].SetIndex(2); });
  ExpectEmptied("assignment", [](auto& Component) {
    TInstruction Other;
    Component.Instructions()[4].Assign(Other);
  });
  ExpectEmptied("reading", [](auto& Component) {
    Component.Instructions()[4].LoadFromXML(
        TXMLInstructionType(TXMLDocument::Parse("<Constant Name='y'/>").Root()));
  });
}

TEST(InstructionChangeTest, TheWordOfANewKindAloneEmptiesNothing) {
  TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(4);
  Component.Initialize();
  Component.InstructionOperationUpdate(Component.Instructions()[0]);
  EXPECT_EQ(Component.Population().Count(), 4);
  EXPECT_EQ(FunctionsOf(Component), "Mul Neg Add ");
}

TEST(InstructionChangeTest, HandlersCommentsAndValuesLeaveTheGenerations) {
  TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(4);
  Component.Initialize();
  Component.Instructions()[0].OnExecute = nullptr;
  Component.Instructions()[0].SetComment("none");
  Component.Instructions()[5].SetValue(2);
  EXPECT_EQ(Component.Population().Count(), 4);
}

TEST(InstructionChangeTest, TheNextEvolutionStartsAnew) {
  TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(4);
  Component.Evolve(3);
  Component.Variable("z");
  EXPECT_FALSE(Component.Initialized());
  EXPECT_EQ(Component.MaxProgramSize(), 0);
  Component.Evolve(2);
  EXPECT_EQ(Component.Generation(), 2);
  EXPECT_EQ(Component.Population().Count(), 4);
  EXPECT_GT(Component.MaxProgramSize(), 0);
}

// --- Copies ------------------------------------------------------------------------------------------------

TEST(ProgramAssignTest, CopiesSettingsInstructionsAndProgramsButNoHandlers) {
  TArithmeticProgramming<> Copy;
  {
    TArithmeticProgramming<> Source;
    Source.SetBloatStrategy(bsHoistSize);
    Source.SetBloatLimit(20);
    Source.SetSelectionNonTerminalsProbability(0.5);
    Source.SetInitializationDepth(4);
    Source.SetInitializationMethod(imGrow);
    Source.SetPointMutationMethod(pmmPerTree);
    Source.SetPointMutationProbability(0.2);
    Source.SetMutationWeights({1, 2, 3, 4, 5, 6});
    Source.SetParsimonyCoefficient(0.25);
    Source.SetTarpeianProbability(0.75);
    Source.SetBuildSizeLimit(500);
    Source.Add("(Add x c)");
    Source.OnConstantMutation = [](auto&, auto&) {};
    Source.EvaluateFitness();
    Copy.Instructions().Clear();
    Copy.Assign(Source);
  }
  EXPECT_EQ(Copy.BloatStrategy(), bsHoistSize);
  EXPECT_EQ(Copy.BloatLimit(), 20);
  EXPECT_EQ(Copy.SelectionNonTerminalsProbability(), 0.5);
  EXPECT_EQ(Copy.InitializationDepth(), 4);
  EXPECT_EQ(Copy.InitializationMethod(), imGrow);
  EXPECT_EQ(Copy.PointMutationMethod(), pmmPerTree);
  EXPECT_EQ(Copy.PointMutationProbability(), 0.2);
  EXPECT_EQ(Copy.MutationWeights(), (TGPMutationMethodWeights{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(Copy.MutationWeightSum(), 21);
  EXPECT_EQ(Copy.ParsimonyCoefficient(), 0.25);
  EXPECT_EQ(Copy.TarpeianProbability(), 0.75);
  EXPECT_EQ(Copy.BuildSizeLimit(), 500);
  EXPECT_EQ(FunctionsOf(Copy), "Add Mul Neg ");
  EXPECT_FALSE(Copy.Instructions()[0].OnExecute);
  EXPECT_FALSE(Copy.OnConstantMutation);
  // The source is gone, and its instructions with it.
  ASSERT_EQ(Copy.Population().Count(), 1);
  EXPECT_EQ(Program(Copy.Population()[0]), "(Add x 1.5)");
  Copy.Population()[0].DNA()->ForEach(
      [&](auto& Node) { EXPECT_EQ(Node.Instruction()->Collection(), &Copy.Instructions()); });
}

TEST(ProgramAssignTest, TheFullCopyTakesTheInstructionsHandlersToo) {
  TQXGeneticProgramming Copy;
  {
    TArithmeticProgramming<> Source;
    Source.Add("(Add (Mul c c) c)");
    Copy.AssignAll(Source);
  }
  EXPECT_EQ(Copy.Population()[0].Execute(nullptr), 3.75);
}

TEST(ProgramAssignTest, ComponentsOfOtherNodesAreRefusedBeforeAnythingChanges) {
  TArithmeticProgramming<TQXBinaryGeneticProgramming> Source;
  Source.SetBloatLimit(30);
  Source.Add("(Add x y)");
  TArithmeticProgramming<> Target;
  Target.Add("y");
  EXPECT_THROW(Target.Assign(Source), std::invalid_argument);
  EXPECT_EQ(Target.BloatLimit(), 10);
  EXPECT_EQ(Program(Target.Population()[0]), "y");
}

TEST(ProgramAssignTest, ComponentsOfOtherNodesWithoutProgramsGiveTheirSettings) {
  TArithmeticProgramming<> Source;
  Source.SetBloatLimit(30);
  TQXBinaryGeneticProgramming Target;
  Target.AssignAll(Source);
  EXPECT_EQ(Target.BloatLimit(), 30);
  EXPECT_EQ(Target.Instructions().Count(), 6);
}

TEST(ProgramAssignTest, AnIndividualOfAnotherComponentBecomesAProgramOfThisOne) {
  TArithmeticProgramming<> Source;
  TArithmeticProgramming<> Target;
  Target.Instructions()[4].SetIndex(0); // y first: the positions differ, the names do not
  auto& Copy = Target.Add("c");
  Copy.Assign(Source.Add("(Add x y)"));
  EXPECT_EQ(Program(Copy), "(Add x y)");
  tests::ExpectWhole(Copy);
  Copy.DNA()->ForEach(
      [&](auto& Node) { EXPECT_EQ(Node.Instruction()->Collection(), &Target.Instructions()); });
}

TEST(ProgramAssignTest, AnIndividualWhoseInstructionIsMissingIsRefused) {
  TArithmeticProgramming<> Source;
  Source.Variable("z");
  TArithmeticProgramming<> Target;
  auto& Copy = Target.Add("(Neg c)");
  EXPECT_THROW(Copy.Assign(Source.Add("(Add x z)")), EGPException);
  EXPECT_EQ(Program(Copy), "(Neg 1.5)");
}

// --- Kinds and streams -------------------------------------------------------------------------------------

TEST(ProgramComponentTest, MakesTheInstructionsAndNodesOfItsKind) {
  TQXGeneticProgramming Float;
  TQXBinaryGeneticProgramming Binary;
  TQXGeneticProgrammingVariant OfVariants;
  TQXGeneticProgrammingExecutor Executor;
  TQXGeneticProgrammingVariantExecutor VariantExecutor;
  TQXGPFloatInstruction& Instruction = Float.Instructions().Add();
  TQXGPVariantInstruction& VariantInstruction = OfVariants.Instructions().Add();
  EXPECT_NE(dynamic_cast<TQXGPFloatNode*>(Float.CreateNode(&Instruction).get()), nullptr);
  EXPECT_NE(dynamic_cast<TQXGPBinaryFloatNode*>(Binary.CreateNode(&Binary.Instructions().Add()).get()),
            nullptr);
  EXPECT_NE(dynamic_cast<TQXGPVariantNode*>(OfVariants.CreateNode(&VariantInstruction).get()), nullptr);
  EXPECT_NE(dynamic_cast<TQXGPFloatNode*>(Executor.CreateNode(&Executor.Instructions().Add()).get()),
            nullptr);
  EXPECT_NE(dynamic_cast<TQXGPVariantNode*>(
                VariantExecutor.CreateNode(&VariantExecutor.Instructions().Add()).get()),
            nullptr);
  Instruction.SetArity(1000);
  EXPECT_EQ(Instruction.Arity(), 1000);
  const auto Parent = Float.CreateNode(&Instruction);
  TQXGPFloatNode::TQXGPNode& Child = Float.CreateNode(&Instruction, *Parent);
  EXPECT_EQ(Child.Parent(), Parent.get());
}

TEST(ProgramComponentTest, HandlersGetTheComponentThatTheyAreAssignedTo) {
  TArithmeticProgramming<> Component;
  TQXGeneticProgramming& AsConcrete = Component;
  const void* Sender = nullptr;
  AsConcrete.OnConstantMutation = [&](TQXGeneticProgramming& From, generics::TQXGPNode<TGAFloat>&) {
    Sender = &From;
  };
  auto& Individual = Component.Add("c");
  Component.Mutate(Individual, mmConstant);
  EXPECT_EQ(Sender, &AsConcrete);
}

TEST(ProgramComponentTest, ASettingThatIsNoDefaultIsInTheStream) {
  TQXGeneticProgramming Component;
  std::ostringstream Plain;
  WriteComponent(Plain, Component);
  for (const char* const Name : {"SelectionNonTerminalsProbability", "ParsimonyCoefficient",
                                 "PointMutationProbability", "TarpeianProbability", "BloatStrategy"}) {
    EXPECT_EQ(Plain.str().find(Name), std::string::npos) << Name;
  }
  Component.SetSelectionNonTerminalsProbability(0.25);
  Component.SetParsimonyCoefficient(0.1);
  Component.SetPointMutationProbability(0.3);
  Component.SetTarpeianProbability(0.4);
  Component.SetBloatStrategy(bsShrinkDepth);
  Component.SetBloatLimit(12);
  Component.SetInitializationDepth(6);
  Component.SetInitializationMethod(imRampedGrow);
  Component.SetPointMutationMethod(pmmPerTree);
  Component.SetMutationWeights({6, 5, 4, 3, 2, 1});
  std::stringstream Stream;
  WriteComponent(Stream, Component);
  TQXGeneticProgramming Read;
  ReadComponent(Stream, Read);
  EXPECT_EQ(Read.SelectionNonTerminalsProbability(), 0.25);
  EXPECT_EQ(Read.ParsimonyCoefficient(), 0.1);
  EXPECT_EQ(Read.PointMutationProbability(), 0.3);
  EXPECT_EQ(Read.TarpeianProbability(), 0.4);
  EXPECT_EQ(Read.BloatStrategy(), bsShrinkDepth);
  EXPECT_EQ(Read.BloatLimit(), 12);
  EXPECT_EQ(Read.InitializationDepth(), 6);
  EXPECT_EQ(Read.InitializationMethod(), imRampedGrow);
  EXPECT_EQ(Read.PointMutationMethod(), pmmPerTree);
  EXPECT_EQ(Read.MutationWeights(), (TGPMutationMethodWeights{6, 5, 4, 3, 2, 1}));
  EXPECT_EQ(Read.MutationWeightSum(), 21);
}

} // namespace
} // namespace qx
