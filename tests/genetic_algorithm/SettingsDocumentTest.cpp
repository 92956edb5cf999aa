// The settings document of the genetic algorithm.

#include "support/Locales.h"
#include "support/SmallAlgorithm.h"
#include "support/TemporaryFolder.h"
#include <qx/platform/Filer.h>

#include <gtest/gtest.h>

#include <support/Streams.h>
#include <type_traits>

namespace qx {
namespace {

using tests::Load;
using tests::Saved;
using tests::TSmallAlgorithm;

// What a component without genes and individuals writes in front of its domain, from "Reproduction" on.
constexpr std::string_view StandardReproduction = "  <Reproduction>\n"
                                                  "    <CrossoverMethod>cmGeneBoundary</CrossoverMethod>\n"
                                                  "    <CrossoverProbability>0.98</CrossoverProbability>\n"
                                                  "    <InversionProbability>0.1</InversionProbability>\n"
                                                  "    <MutationProbability>0.01</MutationProbability>\n"
                                                  "    <SelectionMethod>\n"
                                                  "      <Method>smStochasticTournament</Method>\n"
                                                  "      <ElitistPercent>0.1</ElitistPercent>\n"
                                                  "      <TournamentField>2</TournamentField>\n"
                                                  "    </SelectionMethod>\n"
                                                  "  </Reproduction>\n";

TEST(SettingsDocument, OfAnEmptyComponent) {
  TQXGeneticAlgorithm Algorithm;
  EXPECT_EQ(Saved(Algorithm), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                              "<GeneticAlgorithm>\n"
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
                              "  <MinFitness>0</MinFitness>\n" +
                                  std::string(StandardReproduction) +
                                  "  <Domain>\n"
                                  "    <GenoType Size=\"0\"/>\n"
                                  "    <Chromosomes/>\n"
                                  "  </Domain>\n"
                                  "</GeneticAlgorithm>\n");
}

TEST(SettingsDocument, EverySettingComesBackThroughStreamAndFile) {
  TSmallAlgorithm Algorithm;
  Algorithm.SetCrossoverMethod(cmWordBoundary);
  Algorithm.SetCrossoverProbability(0.1);
  Algorithm.SetInversionProbability(0.7);
  Algorithm.SetMutationProbability(0.003);
  Algorithm.SetSelectionMethod(smElitist);
  Algorithm.SetElitistPct(0.3);
  Algorithm.SetTournamentField(7);
  Algorithm.SetGeneration(41);
  Algorithm.SetGenerationLimit(50);
  const tests::TTemporaryFolder Folder;
  Algorithm.SaveToFile(Folder.File("run.xml"));
  EXPECT_EQ(tests::ReadFile(Folder.File("run.xml")), Saved(Algorithm));
  EXPECT_TRUE(tests::XmllintAccepts(Folder.File("run.xml")));
  TQXGeneticAlgorithm Copy;
  TSmallAlgorithm::CountOnes(Copy);
  Copy.LoadFromFile(Folder.File("run.xml"));
  EXPECT_EQ(Copy.CrossoverMethod(), cmWordBoundary);
  EXPECT_EQ(Copy.CrossoverProbability(), 0.1);
  EXPECT_EQ(Copy.InversionProbability(), 0.7);
  EXPECT_EQ(Copy.MutationProbability(), 0.003);
  EXPECT_EQ(Copy.SelectionMethod(), smElitist);
  EXPECT_EQ(Copy.ElitistPct(), 0.3);
  EXPECT_EQ(Copy.TournamentField(), 7);
  EXPECT_EQ(Copy.Generation(), 41); // though loading the domain initializes the component
  EXPECT_TRUE(Copy.Initialized());
  EXPECT_EQ(Copy.InitialPopulation(), 100);
  Copy.EvaluateFitness();
  EXPECT_EQ(Saved(Copy), Saved(Algorithm));
  EXPECT_TRUE(Copy.LoadWarnings().empty());
}

TEST(SettingsDocument, MissingElementsReadAsNothing) {
  TQXGeneticAlgorithm Algorithm;
  Algorithm.SetCrossoverMethod(cmBitBoundary);
  Algorithm.SetSelectionMethod(smElitist);
  Load(Algorithm, "<GeneticAlgorithm/>");
  EXPECT_EQ(Algorithm.CrossoverMethod(), cmGeneBoundary);
  EXPECT_EQ(Algorithm.SelectionMethod(), smElitist);
  EXPECT_EQ(Algorithm.CrossoverProbability(), 0);
  EXPECT_EQ(Algorithm.ElitistPct(), 0);
  EXPECT_EQ(Algorithm.TournamentField(), 2);
}

TEST(SettingsDocument, NamesOfNoValueKeepTheCurrentOneAndAreReported) {
  TQXGeneticAlgorithm Algorithm;
  Algorithm.SetCrossoverMethod(cmBitBoundary);
  Load(Algorithm,
       "<GeneticAlgorithm><FitnessMethod>fmMaximize</FitnessMethod><GenerationLimit>1</GenerationLimit>"
       "<Reproduction><CrossoverMethod>cmAnywhere</CrossoverMethod>"
       "<CrossoverProbability>-0.5</CrossoverProbability>"
       "<SelectionMethod><Method>smLottery</Method><TournamentField>1</TournamentField></SelectionMethod>"
       "</Reproduction></GeneticAlgorithm>");
  EXPECT_EQ(Algorithm.CrossoverMethod(), cmBitBoundary);
  EXPECT_EQ(Algorithm.SelectionMethod(), smStochasticTournament);
  EXPECT_EQ(Algorithm.LoadWarnings(),
            (std::vector<std::string>{"CrossoverMethod: \"cmAnywhere\" names no value; cmBitBoundary stays",
                                      "CrossoverProbability: -0.5 became 0",
                                      "Method: \"smLottery\" names no value; smStochasticTournament stays",
                                      "TournamentField: 1 became 2"}));
}

TEST(SettingsDocument, ALoadAddsNothingToADocument) {
  for (const std::string Text :
       {"<GeneticAlgorithm/>", "<GeneticAlgorithm><Reproduction/><Domain><GenoType Size='2'/>"
                               "<Chromosomes><Chromosome/></Chromosomes></Domain></GeneticAlgorithm>"}) {
    const TXMLDocument Document = TXMLDocument::Parse(Text);
    const std::string Before = Document.Text();
    TQXGeneticAlgorithm Algorithm;
    Algorithm.LoadFromXML(GetGeneticAlgorithm(Document));
    EXPECT_EQ(Document.Text(), Before);
    static_cast<void>(GetGeneticAlgorithm(Document).Reproduction().SelectionMethod());
    EXPECT_NE(Document.Text().find("<SelectionMethod"), std::string::npos); // a host may
  }
}

TEST(SettingsDocument, ACountThatKeepsARunBusyForeverIsRefused) {
  TQXGeneticAlgorithm Algorithm;
  const auto Load = [&](int Field) {
    tests::Load(Algorithm, "<GeneticAlgorithm><Reproduction>\n<SelectionMethod>\n<TournamentField>" +
                               std::to_string(Field) +
                               "</TournamentField></SelectionMethod></Reproduction></GeneticAlgorithm>");
  };
  try {
    Load(1'000'000'000);
    ADD_FAILURE() << "nothing was raised";
  } catch (const EXMLError& Error) {
    EXPECT_EQ(Error.Line(), 3);
    EXPECT_NE(std::string(Error.what()).find("\"TournamentField\""), std::string::npos) << Error.what();
    EXPECT_NE(std::string(Error.what()).find("1000000000"), std::string::npos) << Error.what();
  }
  EXPECT_EQ(Algorithm.TournamentField(), 2);
  Load(1'000'000);
  EXPECT_EQ(Algorithm.TournamentField(), 1'000'000);
  Algorithm.SetTournamentField(1'000'000'000); // a host may
  EXPECT_EQ(Algorithm.TournamentField(), 1'000'000'000);
  TQXGeneticAlgorithm Copy;
  tests::LoadCheckpoint(Copy, tests::CheckpointOf(Algorithm)); // and what it had comes back
  EXPECT_EQ(Copy.TournamentField(), 1'000'000'000);
}

TEST(SettingsDocument, AStreamsCountsHaveTheSameLimit) {
  for (const std::string Name : {"TournamentField", "InitialPopulation", "InitialDuplicatesRetries"}) {
    TQXGeneticAlgorithm Algorithm;
    std::istringstream Stream("TQXGeneticAlgorithm {\n  " + Name + " = 1000001\n}\n");
    try {
      ReadComponent(Stream, Algorithm);
      ADD_FAILURE() << "nothing was raised";
    } catch (const EPropertyError& Error) {
      EXPECT_NE(std::string(Error.what()).find(Name), std::string::npos) << Error.what();
    }
  }
}

TEST(SettingsDocument, AHandlerStaysUnlessAnotherMethodIsLoaded) {
  TSmallAlgorithm Algorithm;
  Algorithm.OnSelection = [](auto&, auto& Population, auto*& Parent) { Parent = &Population[0]; };
  const std::string Custom = Saved(Algorithm);
  Load(Algorithm, Custom);
  EXPECT_TRUE(Algorithm.OnSelection);
  TSmallAlgorithm Other;
  Load(Other, Custom);
  EXPECT_TRUE(Other.IsCustomSelection());
  EXPECT_FALSE(Other.OnSelection);
}

TEST(SettingsDocument, TheReproductionElementsOfBothDocumentsAreTwoTypes) {
  static_assert(!std::is_same_v<TXMLReproductionType, genetic_algorithm_xml::TXMLReproductionType>);
  static_assert(std::is_base_of_v<TXMLReproductionType, genetic_algorithm_xml::TXMLReproductionType>);
  const TXMLGeneticAlgorithm Document = NewGeneticAlgorithm();
  EXPECT_EQ(Document.Reproduction().CrossoverMethod(), "cmGeneBoundary");
  Document.Reproduction().SetCrossoverMethod("cmBitBoundary");
  EXPECT_EQ(GetGeneticAlgorithm(Document.Document()).Reproduction().CrossoverMethod(), "cmBitBoundary");
}

TEST(SettingsDocument, ARunGoesOnFromIt) {
  TSmallAlgorithm Algorithm;
  Algorithm.Genes().Delete(2); // whose codes do not all have a text
  Algorithm.SetFitnessMethod(fmMaximize);
  Algorithm.Evolve(3);
  TQXGeneticAlgorithm Copy;
  Load(Copy, Saved(Algorithm)); // the handler comes later
  EXPECT_EQ(Copy.FittestIndividual(), nullptr);
  TSmallAlgorithm::CountOnes(Copy);
  EXPECT_EQ(Copy.Evolve(2), 2);
  EXPECT_EQ(Copy.Generation(), 5);
  EXPECT_EQ(Copy.Population().Count(), 3);
}

TEST(SettingsDocument, StatisticsOfALoadedPopulationAreMadeBeforeARunIsFoundFinished) {
  TSmallAlgorithm Algorithm;
  Algorithm.SetFitnessMethod(fmMaximize);
  Algorithm.SetFitnessCutoff(4); // which one individual has
  Algorithm.SetUseFitnessCutoff(true);
  TQXGeneticAlgorithm Copy;
  TSmallAlgorithm::CountOnes(Copy);
  Load(Copy, Saved(Algorithm));
  EXPECT_EQ(Copy.Evolve(5), 0);
  EXPECT_EQ(Copy.FittestIndividual()->Fitness(), 5);
}

TEST(SettingsDocument, AComponentHearsOfOneBatchOfChanges) {
  class THearing : public TSmallAlgorithm {
  public:
    std::string Log;

  protected:
    void PopulationUpdate(TQXIndividual* Item) override { Log += Item == nullptr ? "all " : "one "; }
    void GeneUpdate(TQXGAGene* Item) override { Log += Item == nullptr ? "genes " : "gene "; }
  } Algorithm;
  const TXMLGADomainType Domain = NewGADomain();
  Algorithm.SaveToXML(Domain);
  Algorithm.Log.clear();
  Algorithm.Population().LoadFromXML(Domain.Chromosomes());
  EXPECT_EQ(Algorithm.Log, "all ");
  Algorithm.Log.clear();
  Algorithm.Genes().LoadFromXML(Domain.GenoType());
  EXPECT_EQ(Algorithm.Log, "genes ");
}

TEST(SettingsDocument, IsTheSameUnderEveryLocale) {
  TSmallAlgorithm Algorithm;
  Algorithm.SetFitnessCutoff(12345.5);
  const std::string Before = Saved(Algorithm);
  const tests::TGermanLocale German;
  EXPECT_EQ(Saved(Algorithm), Before);
  TQXGeneticAlgorithm Copy;
  TSmallAlgorithm::CountOnes(Copy);
  Load(Copy, Before);
  Copy.EvaluateFitness();
  EXPECT_EQ(Saved(Copy), Before);
}

TEST(SettingsDocument, SavedTwiceIntoOneDocumentIsThereOnce) {
  TSmallAlgorithm Algorithm;
  const TXMLGeneticAlgorithm Document = NewGeneticAlgorithm();
  Algorithm.SaveToXML(Document);
  const std::string Once = Document.Document().Text();
  Algorithm.SaveToXML(Document);
  EXPECT_EQ(Document.Document().Text(), Once);
}

TEST(SettingsDocument, OfAnotherKindIsRefused) {
  TSmallAlgorithm Algorithm;
  EXPECT_THROW(Load(Algorithm, "<GeneticDocument/>"), EXMLError);
  EXPECT_THROW(Load(Algorithm, "<GADomain/>"), EXMLError);
}

TEST(SettingsDocument, OnlyTheSettingsOfEveryComponentCanBeReadFromAGeneticDocument) {
  TSmallAlgorithm Algorithm;
  const TXMLGeneticDocumentType Document = NewGeneticDocument();
  Document.SetGeneration(9);
  Algorithm.LoadFromXML(Document);
  EXPECT_EQ(Algorithm.Generation(), 9);
  EXPECT_EQ(Algorithm.Population().Count(), 3);
}

} // namespace
} // namespace qx
