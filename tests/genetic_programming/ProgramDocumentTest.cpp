#include <qx/genetic_programming/QXGeneticProgramming.h>
#include <qx/genetic_programming/QXGeneticProgrammingXML.h>
#include <qx/platform/Files.h>

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <support/SmallGeneticProgram.h>
#include <support/Streams.h>
#include <support/TemporaryFolder.h>

namespace qx {
namespace {

using tests::Load;
using tests::Program;
using tests::Replaced;
using tests::Saved;
using tests::TArithmeticProgramming;

using TProgramming = TArithmeticProgramming<>;

// --- Settings ----------------------------------------------------------------------------------------------

TEST(ProgramSettingsDocumentTest, HasItsElementsInTheirOrder) {
  TProgramming Component;
  Component.Instructions().Clear();
  Component.SetInitializationDepth(6);
  Component.SetMutationWeights({1, 2, 3, 4, 5, 6});
  const TXMLGeneticProgram Document = NewGeneticProgram();
  Component.SaveToXML(Document);
  const std::string Text = Document.Document().Text();
  const auto From = Text.find("<Reproduction>");
  EXPECT_EQ(Text.substr(From, Text.find("</Reproduction>") - From),
            "<Reproduction>\n"
            "    <CrossoverProbability>0.9</CrossoverProbability>\n"
            "    <InversionProbability>0.1</InversionProbability>\n"
            "    <MutationProbability>0.01</MutationProbability>\n"
            "    <SelectionMethod>\n"
            "      <Method>smStochasticTournament</Method>\n"
            "      <ElitistPercent>0.1</ElitistPercent>\n"
            "      <TournamentField>7</TournamentField>\n"
            "    </SelectionMethod>\n"
            "    <CrossoverMethod>cmSubtree</CrossoverMethod>\n"
            "    <InitializationMethod>imFull</InitializationMethod>\n"
            "    <InitializationDepth>6</InitializationDepth>\n"
            "    <MutationWeights>\n"
            "      <mmSubtree>1</mmSubtree>\n"
            "      <mmReplacement>2</mmReplacement>\n"
            "      <mmConstant>3</mmConstant>\n"
            "      <mmShrink>4</mmShrink>\n"
            "      <mmHoist>5</mmHoist>\n"
            "      <mmPoint>6</mmPoint>\n"
            "    </MutationWeights>\n"
            "    <SelectionNonterminalsProbability>0.9</SelectionNonterminalsProbability>\n"
            "    <PointMutationMethod>pmmPerNode</PointMutationMethod>\n"
            "    <PointMutationProbability>0.1</PointMutationProbability>\n"
            "  ");
  EXPECT_EQ(Text.find("loat"), std::string::npos) << "bloat control is in no document";
}

TEST(ProgramSettingsDocumentTest, ComesBack) {
  TProgramming Source;
  Source.SetInitializationMethod(imRampedGrow);
  Source.SetInitializationDepth(9);
  Source.SetSelectionNonTerminalsProbability(0.5);
  Source.SetPointMutationMethod(pmmPerTree);
  Source.SetPointMutationProbability(0.25);
  Source.SetCrossoverProbability(0.75);
  Source.SetSelectionMethod(smElitist);
  Source.SetTournamentField(5);
  Source.SetGeneration(17);
  TQXGeneticProgramming Copy;
  Load(Copy, Saved(Source));
  EXPECT_EQ(Copy.InitializationMethod(), imRampedGrow);
  EXPECT_EQ(Copy.InitializationDepth(), 9);
  EXPECT_EQ(Copy.SelectionNonTerminalsProbability(), 0.5);
  EXPECT_EQ(Copy.PointMutationMethod(), pmmPerTree);
  EXPECT_EQ(Copy.PointMutationProbability(), 0.25);
  EXPECT_EQ(Copy.CrossoverProbability(), 0.75);
  EXPECT_EQ(Copy.SelectionMethod(), smElitist);
  EXPECT_EQ(Copy.TournamentField(), 5);
  EXPECT_EQ(Copy.Generation(), 17);
  EXPECT_EQ(std::ssize(Copy.LoadWarnings()), Copy.FunctionsCount()); // none has a handler
}

TEST(ProgramSettingsDocumentTest, WeightsAreStoredPastTheirSum) {
  TProgramming Source;
  Source.SetMutationWeights({10, 0, 0, 10, 10, 0});
  TQXGeneticProgramming Copy;
  Load(Copy, Saved(Source));
  EXPECT_EQ(Copy.MutationWeights(), (TGPMutationMethodWeights{10, 0, 0, 10, 10, 0}));
  EXPECT_EQ(Copy.MutationWeightSum(), 75);
}

TEST(ProgramSettingsDocumentTest, BloatControlIsNotInIt) {
  TProgramming Source;
  Source.SetBloatStrategy(bsHoistSize);
  Source.SetBloatLimit(20);
  TQXGeneticProgramming Copy;
  Load(Copy, Saved(Source));
  EXPECT_EQ(Copy.BloatStrategy(), bsNone);
  EXPECT_EQ(Copy.BloatLimit(), 10);
}

TEST(ProgramSettingsDocumentTest, TheOtherSpellingIsNotRead) {
  TProgramming Component;
  Component.SetSelectionNonTerminalsProbability(0.5);
  std::string Document = Saved(Component);
  Document = Replaced(Document, "<SelectionNonterminalsProbability>", "<SelectionNonTerminalsProbability>");
  Document = Replaced(Document, "</SelectionNonterminalsProbability>", "</SelectionNonTerminalsProbability>");
  Load(Component, Document);
  EXPECT_EQ(Component.SelectionNonTerminalsProbability(), 0);
}

TEST(ProgramSettingsDocumentTest, WhatIsMissingReadsAsTold) {
  TQXGeneticProgramming Component;
  Component.SetInitializationMethod(imGrow);
  Component.SetInitializationDepth(4);
  Component.SetPointMutationMethod(pmmPerTree);
  Load(Component, "<GeneticProgram/>");
  EXPECT_EQ(Component.CrossoverMethod(), cmSubtree);
  EXPECT_EQ(Component.InitializationMethod(), imFull);
  EXPECT_EQ(Component.InitializationDepth(), 0);
  EXPECT_EQ(Component.MutationWeights(), TGPMutationMethodWeights{});
  EXPECT_EQ(Component.PointMutationProbability(), 0);
  EXPECT_EQ(Component.PointMutationMethod(), pmmPerTree); // "imFull" is none
  bool Warned = false;
  for (const std::string& Warning : Component.LoadWarnings()) {
    Warned = Warned || Warning.find("PointMutationMethod") != std::string::npos;
  }
  EXPECT_TRUE(Warned);
}

TEST(ProgramSettingsDocumentTest, IdentifiersThatAreNoneKeepTheValue) {
  TProgramming Component;
  Component.SetInitializationMethod(imGrow);
  Load(Component, Replaced(Saved(Component), ">imGrow<", ">imSome<"));
  EXPECT_EQ(Component.InitializationMethod(), imGrow);
  ASSERT_EQ(Component.LoadWarnings().size(), 1U);
  EXPECT_NE(Component.LoadWarnings()[0].find("imSome"), std::string::npos);
}

// --- Domain ------------------------------------------------------------------------------------------------

TEST(ProgramDomainTest, InstructionsFittestAndPopulationAreInIt) {
  TProgramming Component;
  Component.Add("(Add x 2.5)").SetName("first");
  Component.Add("y");
  Component.EvaluateFitness();
  const TXMLGPDomain Domain = NewGPDomain();
  Component.SaveToXML(Domain);
  EXPECT_EQ(Domain.Instructions().Function().Count(), 3);
  EXPECT_EQ(Domain.Instructions().Variable().Count(), 2);
  EXPECT_EQ(Domain.Instructions().Constant().Count(), 1);
  EXPECT_EQ(Domain.FittestIndividual().DNA().Instruction(), "y");
  ASSERT_EQ(Domain.Population().Individual().Count(), 2);
  EXPECT_EQ(Domain.Population().Individual()[0].Name(), "first");
  EXPECT_EQ(Domain.Population().Individual()[0].Fitness(), 3);
  EXPECT_EQ(Domain.Population().Individual()[0].DNA().Child()[1].Value(), "2.5");
}

TEST(ProgramDomainTest, FitnessIsWrittenAndNotRead) {
  TProgramming Component;
  Component.Add("(Add x y)");
  const std::string Document = Replaced(Saved(Component), "<Fitness>3</Fitness>", "<Fitness>99</Fitness>");
  TProgramming Copy;
  Load(Copy, Document);
  EXPECT_EQ(Copy.Population()[0].Fitness(), 3);
  TQXGeneticProgramming WithoutHandler;
  Load(WithoutHandler, Document);
  EXPECT_EQ(WithoutHandler.Population()[0].Fitness(), 0);
}

TEST(ProgramDomainTest, ARunComesBackAndGoesOn) {
  TProgramming Source;
  Source.SetInitialPopulation(20);
  Source.Evolve(3);
  TProgramming Copy;
  const void* const Add = &Copy.Instructions()[0];
  Load(Copy, Saved(Source));
  EXPECT_EQ(&Copy.Instructions()[0], Add); // with its handler
  EXPECT_EQ(Copy.Instructions().Count(), 6);
  EXPECT_EQ(Copy.InitialPopulation(), 100);
  ASSERT_EQ(Copy.Population().Count(), 20);
  for (int I = 0; I < 20; ++I) {
    EXPECT_EQ(Program(Copy.Population()[I]), Program(Source.Population()[I]));
    EXPECT_EQ(Program((*Copy.PreviousGeneration())[I]), Program(Source.Population()[I]));
  }
  EXPECT_TRUE(Copy.Initialized());
  Copy.EvaluateFitness();
  EXPECT_EQ(Saved(Copy), Saved(Source));
  EXPECT_EQ(Copy.Evolve(2), 2);
  EXPECT_EQ(Copy.Generation(), 5);
}

TEST(ProgramDomainTest, AFreshComponentGetsTheInstructionsToo) {
  TProgramming Source;
  Source.Add("(Neg (Mul x y))");
  for (const bool Binary : {false, true}) {
    const auto Check = [&](auto&& Copy) {
      Load(Copy, Saved(Source));
      EXPECT_EQ(Copy.FunctionsCount(), 3);
      EXPECT_EQ(Copy.TerminalsCount(), 3);
      EXPECT_EQ(Program(Copy.Population()[0]), "(Neg (Mul x y))");
    };
    Binary ? Check(TQXBinaryGeneticProgramming()) : Check(TQXGeneticProgramming());
  }
}

TEST(ProgramDomainTest, EmptyListsChangeNoInstructionAndEmptyThePopulation) {
  TProgramming Component;
  Component.Add("x");
  Component.LoadFromXML(
      GetGPDomain(TXMLDocument::Parse("<GPDomain><Instructions/><Population/></GPDomain>")));
  EXPECT_EQ(Component.Instructions().Count(), 6);
  EXPECT_EQ(Component.Population().Count(), 0);
}

TEST(ProgramDomainTest, AFunctionMayHaveNoArguments) {
  TQXGeneticProgramming Component;
  Component.LoadFromXML(GetGPDomain(TXMLDocument::Parse(
      "<GPDomain><Instructions><Function Name='Now' Comment='' Arity='0'/></Instructions>"
      "<Population><Individual><DNA Instruction='Now'/></Individual></Population></GPDomain>")));
  EXPECT_EQ(Component.Instructions()[0].Operation(), gpFunction);
  EXPECT_EQ(Component.TerminalsCount(), 1);
  EXPECT_EQ(Component.Population()[0].DNA()->Size(), 1);
}

TEST(ProgramDomainTest, VariantConstantsComeBackAsTexts) {
  TQXGeneticProgrammingVariant Source;
  auto& Constant = Source.Instructions().Add();
  Constant.SetName("c");
  Constant.SetOperation(gpConstant);
  Constant.SetValue(2.5);
  Source.Population().Add().AssignDNA(Source.CreateNode(&Constant));
  TQXGeneticProgrammingVariant Copy;
  Load(Copy, Saved(Source));
  EXPECT_EQ(Copy.Population()[0].DNA()->Value().Kind(), vkText);
  EXPECT_EQ(Copy.Instructions()[0].Value().Kind(), vkText);
}

TEST(ProgramDomainTest, AnArityThatNoDocumentHoldsIsRefusedByTheSave) {
  TProgramming Component;
  Component.Function("many", 256);
  tests::TTemporaryFolder Folder;
  const std::string File = Folder.File("run.xml");
  ReplaceFile(File, "before");
  EXPECT_THROW(Component.SaveToFile(File), std::out_of_range);
  EXPECT_EQ(tests::ReadFile(File), "before");
}

TEST(ProgramDomainTest, FilesAreWrittenAndRead) {
  tests::TTemporaryFolder Folder;
  TProgramming Source;
  Source.Add("(Add x y)");
  Source.SaveToFile(Folder.File("run.xml"));
  TQXGeneticProgramming Copy;
  Copy.LoadFromFile(Folder.File("run.xml"));
  EXPECT_EQ(Program(Copy.Population()[0]), "(Add x y)");
}

// --- Loads that fail ---------------------------------------------------------------------------------------

class FailedProgramLoadTest : public testing::Test {
protected:
  FailedProgramLoadTest() {
    Component.SetInitialPopulation(5);
    Component.Evolve(2);
    Before = Saved(Component);
    First = &Component.Population()[0];
    Add = &Component.Instructions()[0];
  }
  void ExpectUnchanged() {
    EXPECT_EQ(Saved(Component), Before);
    EXPECT_EQ(&Component.Population()[0], First);
    EXPECT_EQ(&Component.Instructions()[0], Add);
    EXPECT_TRUE(Component.Initialized());
    EXPECT_EQ(Component.FunctionsCount(), 3);
    EXPECT_EQ(Component.Functions(0).Name(), "Add");
    EXPECT_EQ(Component.TerminalsCount(), 3);
    EXPECT_EQ(Component.PreviousGeneration()->Count(), 5);
    for (auto& Individual : Component.Population()) {
      tests::ExpectWhole(Individual);
    }
    Component.Evolve(1);
    EXPECT_EQ(Component.Generation(), 3);
  }

  TProgramming Component;
  std::string Before;
  const void* First;
  const void* Add;
};

constexpr const char* Domain = "<GeneticProgram><Domain><Instructions><Function Name='Add' Arity='3'/>"
                               "<Variable Name='Mul'/><Variable Name='new'/></Instructions><Population>"
                               "<Individual><DNA Instruction='new'/></Individual><Individual>%</Individual>"
                               "</Population></Domain></GeneticProgram>";

TEST_F(FailedProgramLoadTest, AnUnknownInstructionLeavesAllAsItWas) {
  EXPECT_THROW(Load(Component, Replaced(Domain, "%", "<DNA Instruction='none'/>")), EGPException);
  ExpectUnchanged();
}

TEST_F(FailedProgramLoadTest, AValueThatIsNoNumberLeavesAllAsItWas) {
  EXPECT_THROW(Load(Component, Replaced(Domain, "%", "<DNA Instruction='c'><Value>much</Value></DNA>")),
               std::invalid_argument);
  ExpectUnchanged();
}

TEST_F(FailedProgramLoadTest, AVariableWithAnArityIsAsItWas) {
  const TXMLGPInstructions Document = NewGPInstructions();
  Document.AddVariable().SetName("Mul");
  Component.LoadFromXML(Document);
  EXPECT_THROW(Load(Component, Replaced(Domain, "%", "<DNA Instruction='none'/>")), EGPException);
  EXPECT_EQ(Component.Instructions()[1].Operation(), gpVariable);
  EXPECT_EQ(Component.Instructions()[1].Arity(), 2);
}

TEST_F(FailedProgramLoadTest, AMalformedDocumentLeavesAllAsItWas) {
  EXPECT_THROW(Load(Component, Before.substr(0, Before.size() / 2)), EXMLError);
  ExpectUnchanged();
}

TEST_F(FailedProgramLoadTest, AFitnessHandlerThatRaisesLeavesAllAsItWas) {
  Component.OnEvaluateFitness = [&](auto&, auto& Item, double& Fitness) {
    if (Item.DNA()->ToString() == "new") {
      throw std::runtime_error("no");
    }
    Fitness = Item.DNA()->Size();
  };
  EXPECT_THROW(Load(Component, Replaced(Domain, "%", "<DNA Instruction='x'/>")), std::runtime_error);
  ExpectUnchanged();
}

TEST_F(FailedProgramLoadTest, AProgramDeeperThanTheLimitIsRefusedUnlessThatIsRaised) {
  std::string Deep;
  constexpr int Levels = 100'000;
  for (int I = 0; I < Levels; ++I) {
    Deep += I == 0 ? "<DNA Instruction='Neg'>" : "<Child Instruction='Neg'>";
  }
  Deep += "<Child Instruction='x'/>";
  for (int I = 0; I < Levels; ++I) {
    Deep += I < Levels - 1 ? "</Child>" : "</DNA>";
  }
  const std::string Document = "<GeneticProgram><Domain><Population><Individual>" + Deep +
                               "</Individual></Population></Domain></GeneticProgram>";
  EXPECT_THROW(Load(Component, Document), EXMLError);
  ExpectUnchanged();
  TXMLLimits Limits = DefaultXMLLimits;
  Limits.Depth = Levels + 10;
  Component.OnEvaluateFitness = [](auto&, auto&, double&) {};
  Component.LoadFromXML(GetGeneticProgram(TXMLDocument::Parse(Document, Limits)));
  EXPECT_EQ(Component.Population()[0].DNA()->Depth(), Levels);
}

// --- Executor ----------------------------------------------------------------------------------------------

TEST(ExecutorDocumentTest, AProgramIsSavedLoadedAndRun) {
  tests::TTemporaryFolder Folder;
  TProgramming Component;
  TQXGeneticProgrammingExecutor Source;
  Source.Instructions().AssignAll(Component.Instructions());
  Source.SetGPProgram(*Component.Add("(Add (Mul x x) 2.5)").DNA());
  Source.SaveToFile(Folder.File("program.xml"));
  TQXGeneticProgrammingExecutor Copy;
  Copy.LoadFromFile(Folder.File("program.xml"));
  EXPECT_EQ(Copy.GPProgram()->ToString(), "(Add (Mul x x) 2.5)");
  EXPECT_EQ(Copy.Instructions().Count(), 6);
  TQXGeneticProgrammingExecutor WithHandlers; // they are the host's to give
  AddStandardInstructions(WithHandlers.Instructions(), sgArithmetic);
  WithHandlers.LoadFromFile(Folder.File("program.xml"));
  TQXGPFloatContext Context;
  Context.Values().AddOrSetValue("x", 3);
  EXPECT_EQ(WithHandlers.Execute(&Context), 11.5);
}

TEST(ExecutorDocumentTest, ReadsTheFirstProgramOfARun) {
  TProgramming Component;
  Component.Add("(Neg x)");
  Component.Add("y");
  TQXGeneticProgrammingExecutor Executor;
  std::istringstream Stream(Saved(Component));
  Executor.LoadFromStream(Stream);
  EXPECT_EQ(Executor.GPProgram()->ToString(), "(Neg x)");
}

TEST(ExecutorDocumentTest, WithoutAProgramNoneComesBack) {
  TQXGeneticProgrammingExecutor Source;
  AddStandardInstruction(Source.Instructions(), "Neg");
  std::stringstream Stream;
  Source.SaveToStream(Stream);
  TQXGeneticProgrammingExecutor Copy;
  Copy.LoadFromStream(Stream);
  EXPECT_EQ(Copy.GPProgram(), nullptr);
  EXPECT_EQ(Copy.Instructions().Count(), 1);
}

TEST(ExecutorDocumentTest, WithoutInstructionsTheProgramStays) {
  TQXGeneticProgrammingExecutor Executor;
  Executor.LoadFromXML(GetGPDomain(TXMLDocument::Parse(
      "<GPDomain><Population><Individual><DNA Instruction='x'/></Individual></Population></GPDomain>")));
  EXPECT_EQ(Executor.GPProgram(), nullptr);
}

TEST(ExecutorDocumentTest, ALoadThatFailsLeavesAllAsItWas) {
  TQXGeneticProgrammingExecutor Executor;
  AddStandardInstruction(Executor.Instructions(), "Neg");
  Executor.Instructions().Add().SetName("x");
  Executor.SetGPProgram(*tests::ReadTree<TGAFloat>(Executor, "(Neg x)"));
  std::istringstream Stream(Replaced(Domain, "<Individual><DNA Instruction='new'/></Individual>",
                                     "<Individual><DNA Instruction='none'/></Individual>"));
  EXPECT_THROW(Executor.LoadFromStream(Stream), EGPException);
  EXPECT_EQ(Executor.Instructions().Count(), 2);
  EXPECT_EQ(Executor.GPProgram()->ToString(), "(Neg x)");
  TQXGPFloatContext Context;
  Context.Values().AddOrSetValue("x", 3);
  EXPECT_EQ(Executor.Execute(&Context), -3);
}

TEST(ProgramInstructionsDocumentTest, ALoadThatFailsLeavesTheProgramsToo) {
  TQXGeneticProgramming gp;
  AddStandardInstruction(gp.Instructions(), "Add");
  gp.Instructions().Add().SetName("x");
  gp.SetInitialPopulation(3);
  gp.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = 1; };
  gp.SetInitialDuplicatesRetries(0);
  gp.Initialize();
  const std::string Before = gp.Population()[2].ToString();
  const TXMLDocument Document =
      TXMLDocument::Parse("<Instructions><Function Name=\"Add\" Arity=\"3\"/><Function Name=\"Neg\" "
                          "Arity=\"1C\"/></Instructions>");
  EXPECT_THROW(gp.LoadFromXML(GetGPInstructions(Document)), EXMLError);
  ASSERT_EQ(gp.Population().Count(), 3);
  EXPECT_EQ(gp.Population()[2].ToString(), Before);
  EXPECT_EQ(gp.Instructions()[0].Arity(), 2);
  EXPECT_EQ(gp.Instructions().Count(), 2);
}

TEST(ExecutorDocumentTest, LinesAreMadeKeptAndParsed) {
  TQXGeneticProgrammingExecutor Executor;
  EXPECT_EQ(Executor.GPProgramLines().Count(), 0);
  AddStandardInstruction(Executor.Instructions(), "Neg");
  Executor.Instructions().Add().SetName("x");
  Executor.SetGPProgram(*tests::ReadTree<TGAFloat>(Executor, "(Neg x)"));
  const std::string Lines = Executor.GPProgramLines().Text();
  EXPECT_NE(Lines.find("<DNA Instruction=\"Neg\">"), std::string::npos) << Lines;
  Executor.SetGPProgram(*tests::ReadTree<TGAFloat>(Executor, "x")); // discards them
  EXPECT_EQ(Executor.GPProgramLines().Text().find("\"Neg\">"), std::string::npos);
  TStrings Given;
  std::istringstream Text(Lines);
  for (std::string Line; std::getline(Text, Line);) {
    Given.Add(Line);
  }
  Executor.SetGPProgramLines(Given);
  EXPECT_EQ(Executor.GPProgram()->ToString(), "x"); // not yet
  Executor.Parse();
  EXPECT_EQ(Executor.GPProgram()->ToString(), "(Neg x)");
  EXPECT_EQ(Executor.GPProgramLines().Text(), Lines);
}

} // namespace
} // namespace qx
