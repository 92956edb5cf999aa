// The settings that every genetic component saves and loads.

#include "support/Locales.h"
#include "support/NonFinite.h"
#include "support/TemporaryFolder.h"
#include "support/TestComponent.h"
#include <qx/engine/QXGeneticDocumentXML.h>
#include <qx/platform/Filer.h>

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <system_error>

namespace qx {
namespace {

using tests::TTestComponent;

std::string SavedDocument(TQXCustomGeneticComponent& Component) {
  std::ostringstream Stream;
  Component.SaveToStream(Stream);
  return Stream.str();
}

void LoadDocument(TQXCustomGeneticComponent& Component, const std::string& Content) {
  std::istringstream Stream("<GeneticDocument>" + Content + "</GeneticDocument>");
  Component.LoadFromStream(Stream);
}

TEST(GeneticDocument, OfAStandardComponent) {
  TTestComponent Component;
  EXPECT_EQ(SavedDocument(Component), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                      "<GeneticDocument>\n"
                                      "  <DiversityLimit>0.02</DiversityLimit>\n"
                                      "  <FitnessCutoff>1</FitnessCutoff>\n"
                                      "  <FitnessMethod>fmMinimize</FitnessMethod>\n"
                                      "  <Generation>0</Generation>\n"
                                      "  <UseDiversityLimit>false</UseDiversityLimit>\n"
                                      "  <UseFitnessCutoff>false</UseFitnessCutoff>\n"
                                      "  <GenerationLimit>0</GenerationLimit>\n"
                                      "  <UseGenerationLimit>false</UseGenerationLimit>\n"
                                      "  <AvgFitness>0</AvgFitness>\n"
                                      "  <MaxFitness>0</MaxFitness>\n"
                                      "  <MinFitness>0</MinFitness>\n"
                                      "</GeneticDocument>\n");
  TTestComponent Copy;
  std::istringstream Stream(SavedDocument(Component));
  Copy.LoadFromStream(Stream);
  EXPECT_EQ(SavedDocument(Copy), SavedDocument(Component));
  EXPECT_TRUE(Copy.LoadWarnings().empty());
}

TEST(GeneticDocument, EverySettingComesBackAndStatisticsDoNot) {
  TTestComponent Component;
  Component.Start({1, 2, 6});
  Component.SetDiversityLimit(0.1);
  Component.SetFitnessCutoff(-2.5);
  Component.SetFitnessMethod(fmWeightedMaximize);
  Component.SetGeneration(41);
  Component.SetUseDiversityLimit(true);
  Component.SetUseFitnessCutoff(true);
  Component.SetGenerationLimit(99);
  Component.SetUseGenerationLimit(true);
  EXPECT_NE(SavedDocument(Component).find(
                "<AvgFitness>3</AvgFitness>\n  <MaxFitness>6</MaxFitness>\n  <MinFitness>1<"),
            std::string::npos);
  TTestComponent Copy;
  std::istringstream Stream(SavedDocument(Component));
  Copy.LoadFromStream(Stream);
  EXPECT_EQ(Copy.DiversityLimit(), 0.1);
  EXPECT_EQ(Copy.FitnessCutoff(), -2.5);
  EXPECT_EQ(Copy.FitnessMethod(), fmWeightedMaximize);
  EXPECT_EQ(Copy.Generation(), 41);
  EXPECT_TRUE(Copy.UseDiversityLimit());
  EXPECT_TRUE(Copy.UseFitnessCutoff());
  EXPECT_EQ(Copy.GenerationLimit(), 99);
  EXPECT_TRUE(Copy.UseGenerationLimit());
  EXPECT_EQ(Copy.MaxFitness(), 0);
}

TEST(GeneticDocument, MissingElementsReadAsNothing) {
  TTestComponent Component;
  Component.SetUseFitnessCutoff(true);
  Component.SetFitnessMethod(fmMaximize);
  LoadDocument(Component, "");
  EXPECT_EQ(Component.DiversityLimit(), 0);
  EXPECT_EQ(Component.FitnessCutoff(), 0);
  EXPECT_EQ(Component.FitnessMethod(), fmMaximize);
  EXPECT_FALSE(Component.UseFitnessCutoff());
  EXPECT_EQ(Component.GenerationLimit(), 1);
  EXPECT_EQ(Component.LoadWarnings(),
            (std::vector<std::string>{"FitnessMethod: \"\" names no value; fmMaximize stays",
                                      "GenerationLimit: 0 became 1"}));
}

TEST(GeneticDocument, TheLimitOfAComponentThatNeverHadOneStays) {
  TTestComponent Fresh;
  LoadDocument(Fresh, "<GenerationLimit>0</GenerationLimit>");
  EXPECT_EQ(Fresh.GenerationLimit(), 0);
  TTestComponent Large;
  LoadDocument(Large, "<GenerationLimit>4294967295</GenerationLimit>"); // unsigned
  EXPECT_EQ(Large.GenerationLimit(), std::numeric_limits<int>::max());
  EXPECT_EQ(Large.LoadWarnings().size(), 2U);
  TTestComponent Set;
  Set.SetGenerationLimit(5);
  LoadDocument(Set, "<GenerationLimit>0</GenerationLimit>");
  EXPECT_EQ(Set.GenerationLimit(), 1);
}

TEST(GeneticDocument, AMethodThatIsNoneAndValuesOutOfBoundsAreReported) {
  TTestComponent Component;
  LoadDocument(Component, "<FitnessMethod>fmBest</FitnessMethod><DiversityLimit>1.5</DiversityLimit>"
                          "<GenerationLimit>-3</GenerationLimit>");
  EXPECT_EQ(Component.FitnessMethod(), fmMinimize);
  EXPECT_EQ(Component.DiversityLimit(), 1);
  EXPECT_EQ(Component.LoadWarnings(),
            (std::vector<std::string>{"DiversityLimit: 1.5 became 1",
                                      "FitnessMethod: \"fmBest\" names no value; fmMinimize stays",
                                      "GenerationLimit: -3 became 1"}));
  LoadDocument(Component, "<FitnessMethod>fmMaximize</FitnessMethod><GenerationLimit>3</GenerationLimit>");
  EXPECT_TRUE(Component.LoadWarnings().empty());
}

TEST(GeneticDocument, ABooleanIsTrueForThatWordInAnyCaseOnly) {
  TTestComponent Component;
  LoadDocument(Component, "<UseFitnessCutoff>TRUE</UseFitnessCutoff>");
  EXPECT_TRUE(Component.UseFitnessCutoff());
  LoadDocument(Component, "<UseFitnessCutoff>1</UseFitnessCutoff>");
  EXPECT_FALSE(Component.UseFitnessCutoff());
}

TEST(GeneticDocument, InfinityIsKeptWhereASettingHasNoBoundsAndNaNIsRefused) {
  using tests::Infinity;
  TTestComponent Component;
  LoadDocument(Component, "<FitnessCutoff>-INF</FitnessCutoff><DiversityLimit>INF</DiversityLimit>");
  EXPECT_EQ(Component.FitnessCutoff(), -Infinity);
  EXPECT_EQ(Component.DiversityLimit(), 1);
  EXPECT_NE(SavedDocument(Component).find("<FitnessCutoff>-INF</FitnessCutoff>"), std::string::npos);
  for (const std::string Setting : {"FitnessCutoff", "DiversityLimit"}) {
    try {
      LoadDocument(Component, "<Generation>9</Generation><" + Setting + ">NaN</" + Setting + ">");
      FAIL();
    } catch (const EXMLError& Error) {
      EXPECT_NE(std::string(Error.what()).find('"' + Setting + "\": must be a number, not NaN"),
                std::string::npos);
    }
  }
  EXPECT_EQ(Component.Generation(), 0);
  Component.SetFitnessCutoff(std::numeric_limits<double>::quiet_NaN());
  EXPECT_THROW(SavedDocument(Component), std::invalid_argument);
}

TEST(GeneticDocument, AValueThatDoesNotReadChangesNothing) {
  TTestComponent Component;
  Component.SetFitnessCutoff(7);
  const std::string Before = SavedDocument(Component);
  for (const std::string Content :
       {"<DiversityLimit>0.5</DiversityLimit><Generation>many</Generation>",
        "<FitnessCutoff>1</FitnessCutoff><GenerationLimit>1.5</GenerationLimit>",
        "<DiversityLimit>0,5</DiversityLimit>", "<Generation>99999999999</Generation>"}) {
    EXPECT_THROW(LoadDocument(Component, Content), EXMLError);
    EXPECT_EQ(SavedDocument(Component), Before);
  }
}

TEST(GeneticDocument, SelectionHandlersSurviveAFailedLoad) {
  class TReproducing : public TTestComponent {
  public:
    using TTestComponent::LoadReproduction;
  } Component;
  int Calls = 0;
  Component.OnSelection = [&](auto&, TQXPopulation& Population, TQXIndividual*& Parent) {
    ++Calls;
    Parent = &Population[0];
  };
  Component.Start({1, 2});
  const TXMLReproductionType Reproduction(
      TXMLDocument::Parse(
          "<Reproduction><SelectionMethod><Method>smElitist</Method><TournamentField>x</TournamentField>"
          "</SelectionMethod></Reproduction>")
          .Root());
  EXPECT_THROW(Component.LoadReproduction(Reproduction), EXMLError);
  EXPECT_EQ(Component.SelectionMethod(), smCustom);
  Component.SelectParent(Component.Population());
  EXPECT_EQ(Calls, 1);
}

TEST(GeneticDocument, ElementsStandInTheOrderOfTheFirstWrite) {
  const TXMLGeneticDocumentType Document = NewGeneticDocument();
  Document.SetMinFitness(1);
  TTestComponent Component;
  Component.SaveToXML(Document);
  Component.SaveToXML(Document); // twice into one document
  EXPECT_EQ(Document.FirstChild().Tag(), "MinFitness");
  EXPECT_EQ(Document.MinFitness(), 0);
  EXPECT_EQ(TXMLNodeList<TXMLNode>(Document, "MinFitness").Count(), 1);
}

TEST(GeneticDocument, FilesAreSavedAndLoaded) {
  const tests::TTemporaryFolder Folder;
  TTestComponent Component;
  Component.SetGeneration(12);
  Component.SaveToFile(Folder.File("run.xml"));
  EXPECT_EQ(tests::ReadFile(Folder.File("run.xml")), SavedDocument(Component));
  EXPECT_EQ(LoadGeneticDocument(Folder.File("run.xml")).Generation(), 12);
  TTestComponent Copy;
  Copy.LoadFromFile(Folder.File("run.xml"));
  EXPECT_EQ(Copy.Generation(), 12);
  EXPECT_THROW(Copy.LoadFromFile(Folder.File("missing.xml")), std::system_error);
  EXPECT_THROW(GetGeneticDocument(TXMLDocument::New("Other")), EXMLError);
}

TEST(GeneticDocument, IsTheSameUnderEveryLocale) {
  TTestComponent Component;
  Component.SetFitnessCutoff(12345.5);
  Component.SetGeneration(1234567);
  const std::string Before = SavedDocument(Component);
  const tests::TGermanLocale German;
  EXPECT_EQ(SavedDocument(Component), Before);
  TTestComponent Copy;
  std::istringstream Stream(Before);
  Copy.LoadFromStream(Stream);
  EXPECT_EQ(Copy.FitnessCutoff(), 12345.5);
}

TEST(ReproductionElement, HasItsSelectionMethodOnceThatIsAskedFor) {
  const TXMLReproductionType Reproduction(TXMLDocument::New("Reproduction").Root());
  EXPECT_FALSE(Reproduction.HasChild("SelectionMethod"));
  EXPECT_EQ(Reproduction.SelectionMethod().TournamentField(), 0);
  EXPECT_TRUE(Reproduction.HasChild("SelectionMethod"));
}

// --- Populations -------------------------------------------------------------------------------------------

/// Keeps its name in an attribute.
class TNamed : public TQXIndividual {
public:
  void LoadFromXML(const TXMLNode& Node) override {
    if (Node.Attribute("n") == "bad") {
      throw std::runtime_error("bad");
    }
    SetName(Node.Attribute("n"));
  }
  void SaveToXML(const TXMLNode& Node) override { Node.SetAttribute("n", Name()); }
};

TEST(PopulationElement, HasAChildForEachMemberNamedForIt) {
  TQXPopulation Population(nullptr, ItemClassOf<TNamed>());
  Population.Add();
  Population.Add().SetName("second one");
  const TXMLNode Node = TXMLDocument::New("Members").Root();
  Population.SaveToXML(Node);
  EXPECT_EQ(Node.FirstChild().Tag(), "TNamed");
  EXPECT_EQ(Node.FirstChild().NextSibling().Tag(), "second_one");
  TQXPopulation Copy(nullptr, ItemClassOf<TNamed>());
  Copy.Add().SetName("former");
  Copy.LoadFromXML(Node);
  ASSERT_EQ(Copy.Count(), 2);
  EXPECT_EQ(Copy[1].Name(), "second one");
}

TEST(PopulationElement, LoadsInOneUpdateAndFormerMembersComeBackWhenAMemberDoesNotRead) {
  TTestComponent Component;
  Component.Start({3, 1, 2});
  TQXIndividual* const Fittest = Component.FittestIndividual();
  const TXMLNode Node = TXMLDocument::Parse("<m><a/><b/></m>").Root();
  Component.Population().LoadFromXML(Node);
  EXPECT_EQ(Component.Population().Count(), 2);
  EXPECT_EQ(Component.FittestIndividual(), nullptr);

  TQXPopulation Named(&Component, ItemClassOf<TNamed>());
  TQXIndividual* const Kept = &Named.Add();
  EXPECT_THROW(Named.LoadFromXML(TXMLDocument::Parse("<m><a/><b n='bad'/></m>").Root()), std::runtime_error);
  EXPECT_EQ(Named.Count(), 1);
  EXPECT_EQ(&Named[0], Kept);
  static_cast<void>(Fittest);
}

TEST(ComponentStream, HoldsTheSettingsOfAGeneticComponentInTheirOrder) {
  TTestComponent Component;
  std::ostringstream Empty;
  WriteComponent(Empty, Component);
  EXPECT_EQ(Empty.str(), "TTestComponent {\n}\n");
  Component.SetInitialPopulation(7);
  Component.SetInitialDuplicatesRetries(0);
  Component.SetOperations({});
  Component.SetFitnessMethod(fmMaximize);
  Component.SetGeneration(3);
  Component.SetGenerationLimit(4);
  Component.SetUseFitnessCutoff(true);
  Component.SetUseDiversityLimit(true);
  Component.SetUseGenerationLimit(true);
  Component.SetTournamentField(5);
  Component.SetMutationProbability(0);
  Component.SetInversionProbability(0.2);
  Component.SetInversionProbability(0.1); // the default
  Component.SetCrossoverProbability(1.0 / 3);
  Component.SetElitistPct(1);
  Component.SetDiversityLimit(0.5);
  Component.SetFitnessCutoff(-1e-300);
  Component.OnSelection = [](auto&, auto&, auto&) {};
  std::ostringstream Text;
  WriteComponent(Text, Component);
  EXPECT_EQ(Text.str(), "TTestComponent {\n"
                        "  InitialPopulation = 7\n"
                        "  InitialDuplicatesRetries = 0\n"
                        "  SelectionMethod = smCustom\n"
                        "  TournamentField = 5\n"
                        "  Operations = []\n"
                        "  FitnessMethod = fmMaximize\n"
                        "  Generation = 3\n"
                        "  GenerationLimit = 4\n"
                        "  UseFitnessCutoff = true\n"
                        "  UseDiversityLimit = true\n"
                        "  UseGenerationLimit = true\n"
                        "  FitnessCutoff = -1e-300\n"
                        "  DiversityLimit = 0.5\n"
                        "  ElitistPct = 1\n"
                        "  CrossoverProbability = 0.3333333333333333\n"
                        "  MutationProbability = 0\n"
                        "}\n");
  EXPECT_FALSE(Component.IsInversionProbabilityStored());
  EXPECT_TRUE(Component.IsMutationProbabilityStored());
  TTestComponent Copy;
  std::istringstream Stream(Text.str());
  ReadComponent(Stream, Copy);
  std::ostringstream Again;
  WriteComponent(Again, Copy);
  EXPECT_EQ(Again.str(), Text.str());
  EXPECT_FALSE(Copy.OnSelection); // handlers are never streamed
}

TEST(ComponentStream, AGeneticComponentIsAsBeforeWhenASetterRefuses) {
  TTestComponent Component;
  Component.Start({1, 2});
  Component.OnSelection = [](auto&, auto& Population, auto*& Parent) { Parent = &Population[1]; };
  std::ostringstream Before;
  WriteComponent(Before, Component);
  std::istringstream Stream(
      "T {\n SelectionMethod = smRandom\n FitnessCutoff = 3\n DiversityLimit = NaN\n}\n");
  EXPECT_THROW(ReadComponent(Stream, Component), EPropertyError);
  std::ostringstream After;
  WriteComponent(After, Component);
  EXPECT_EQ(After.str(), Before.str());
  EXPECT_EQ(&Component.SelectParent(Component.Population()), &Component.Population()[1]);
}

} // namespace
} // namespace qx
