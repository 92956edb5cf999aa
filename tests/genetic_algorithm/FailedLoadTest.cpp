// Loads that fail further in leave the component as it was: settings, genes, generations, the very objects.

#include "support/SmallAlgorithm.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace qx {
namespace {

using tests::StateOf;
using tests::TSmallAlgorithm;

const std::string Settings = "<Generation>77</Generation><FitnessMethod>fmMaximize</FitnessMethod>"
                             "<Reproduction><CrossoverMethod>cmBitBoundary</CrossoverMethod>"
                             "<SelectionMethod><Method>smRandom</Method></SelectionMethod></Reproduction>";

std::string Document(const std::string& Domain) {
  return "<GeneticAlgorithm>" + Settings + "<Domain>" + Domain + "</Domain></GeneticAlgorithm>";
}

TEST(FailedLoad, LeavesTheComponentAsItWas) {
  TSmallAlgorithm Algorithm;
  Algorithm.OnSelection = [](auto&, auto& Population, auto*& Parent) { Parent = &Population[0]; };
  Algorithm.Evolve(2);
  const std::string Before = StateOf(Algorithm);
  for (const std::string Domain : {
           "<GenoType Size='-1'/>",
           "<GenoType Size='2000000000'/>",
           "<GenoType Size='x'/>",
           "<GenoType Size='4'><BooleanGene><Name>flag</Name><Size>-1</Size></BooleanGene></GenoType>",
           "<GenoType "
           "Size='4'><FloatGene><Name>level</Name><Size>2</Size></FloatGene><IntegerGene><Size>1</Size>"
           "<MinValue>NaN</MinValue></IntegerGene></GenoType>",
           "<GenoType "
           "Size='4'/><Chromosomes><Chromosome/><Chromosome><Genes><Bits>01x</Bits></Genes></Chromosome></"
           "Chromosomes>",
           "<GenoType "
           "Size='4'><IntegerGene><Name>number</Name><Size>2000000000</Size></IntegerGene></GenoType>",
       }) {
    EXPECT_ANY_THROW(tests::Load(Algorithm, Document(Domain))) << Domain;
    EXPECT_EQ(StateOf(Algorithm), Before) << Domain;
  }
  EXPECT_EQ(&Algorithm.SelectParent(*Algorithm.PreviousGeneration()), &(*Algorithm.PreviousGeneration())[0]);
  EXPECT_EQ(Algorithm.Evolve(1), 1);
}

TEST(FailedLoad, OfAMalformedDocumentChangesNothing) {
  TSmallAlgorithm Algorithm;
  const std::string Before = StateOf(Algorithm);
  const std::string Whole = tests::Saved(Algorithm);
  for (std::size_t Length = 0; Length + 2 < Whole.size(); Length += 7) {
    EXPECT_THROW(tests::Load(Algorithm, Whole.substr(0, Length)), EXMLError);
  }
  EXPECT_EQ(StateOf(Algorithm), Before);
}

TEST(FailedLoad, OfAFreshComponentLeavesItFresh) {
  TQXGeneticAlgorithm Algorithm;
  const std::string Before = StateOf(Algorithm);
  EXPECT_THROW(
      tests::Load(Algorithm,
                  Document("<GenoType Size='4'/><Chromosomes><Chromosome><Genes><Bits>x</Bits></Genes>"
                           "</Chromosome></Chromosomes>")),
      EXMLError);
  EXPECT_EQ(StateOf(Algorithm), Before);
  EXPECT_FALSE(Algorithm.Initialized());
  EXPECT_EQ(Algorithm.PreviousGeneration(), nullptr);
}

TEST(FailedLoad, WhenAHandlerRaisesWhileTheLoadedPopulationIsEvaluated) {
  TSmallAlgorithm Algorithm;
  const std::string Text = tests::Saved(Algorithm);
  const std::string Before = StateOf(Algorithm);
  Algorithm.OnEvaluateFitness = [](auto&, auto&, double&) { throw std::runtime_error("handler"); };
  EXPECT_THROW(tests::Load(Algorithm, Text), std::runtime_error);
  EXPECT_EQ(StateOf(Algorithm), Before);
}

TEST(FailedLoad, WhenInitializingRaisesTheInitialPopulationIsRestored) {
  TQXGeneticAlgorithm Algorithm;
  Algorithm.OnInitialization = [](auto&, bool&) { throw std::runtime_error("handler"); };
  EXPECT_THROW(tests::Load(Algorithm, "<GeneticAlgorithm/>"), std::runtime_error);
  EXPECT_EQ(Algorithm.InitialPopulation(), 100);
  EXPECT_FALSE(Algorithm.Initialized());
}

TEST(FailedLoad, OfGenesAloneRestoresTheChromosomesThatTheSizeCut) {
  TSmallAlgorithm Algorithm;
  const std::string Before = tests::Written(Algorithm);
  const auto GenoType = GetGenoType(TXMLDocument::Parse(
      "<GenoType Size='3'><BooleanGene><Name>flag</Name><Size>x</Size></BooleanGene></GenoType>"));
  EXPECT_THROW(Algorithm.Genes().LoadFromXML(GenoType), EXMLError);
  EXPECT_EQ(tests::Written(Algorithm), Before);
  const auto Later = GetGenoType(
      TXMLDocument::Parse("<GenoType Size='3'><BooleanGene><Name>flag</Name><Size>1</Size></BooleanGene>"
                          "<FloatGene><Size>-1</Size></FloatGene></GenoType>"));
  EXPECT_THROW(Algorithm.Genes().LoadFromXML(Later), std::out_of_range);
  EXPECT_EQ(tests::Written(Algorithm), Before);
  EXPECT_EQ(&Algorithm.Genes()[0], Algorithm.Flag);
}

TEST(FailedLoad, OfGenesAndPopulationsWithoutAComponent) {
  TQXGAGenes Genes(nullptr);
  TQXGAGene* const Kept = &tests::AddGene(Genes, "kept", gtInteger, 5);
  EXPECT_THROW(Genes.LoadFromXML(
                   GetGenoType(TXMLDocument::Parse("<GenoType><BooleanGene><Name>kept</Name><Size>1</Size></"
                                                   "BooleanGene><FloatGene><Size>x</Size></FloatGene>"
                                                   "</GenoType>"))),
               EXMLError);
  ASSERT_EQ(Genes.Count(), 1);
  EXPECT_EQ(&Genes[0], Kept);
  EXPECT_EQ(Kept->Size(), 5);
  EXPECT_EQ(Kept->GeneType(), gtInteger);
  TQXGAPopulation Population(nullptr);
  TQXGAIndividual* const Individual = &Population.Add();
  Individual->Bits().SetSize(3);
  EXPECT_THROW(Population.LoadFromXML(GetChromosomes(TXMLDocument::Parse(
                   "<Chromosomes><Chromosome><Genes><Bits>x</Bits></Genes></Chromosome></Chromosomes>"))),
               EXMLError);
  EXPECT_EQ(&Population[0], Individual);
}

TEST(FailedLoad, OfAComponentStreamLeavesTheComponentAsItWas) {
  TSmallAlgorithm Algorithm;
  Algorithm.Evolve(2);
  const std::string Before = StateOf(Algorithm);
  for (const std::string Body : {
           "GeneSize = -1",
           "GeneSize = 2000000000",
           "CrossoverMethod = cmBitBoundary\n DiversityLimit = NaN",
           "CrossoverMethod = cmBitBoundary\n GeneSize = -4",
           "CrossoverMethod = cmAnywhere",
           "Genes {\n G {\n Name = \"flag\"\n Size = -1\n}\n}",
           "GeneSize = 4\n Genes {\n G {\n Name = \"level\"\n Size = 2\n}\n G {\n MaxValue = NaN\n}\n}",
           "GeneSize = 4\n Population {\n I {\n Bits = \"01\"\n}\n I {\n Bits = \"0x\"\n}\n}",
           "Genes {\n G {\n Colour = 1\n}\n}",
           // genes that grow, a size that shrinks again, and then a failure
           "Genes {\n G {\n Name = \"number\"\n Size = 30\n}\n}\n GeneSize = 9\n Population {\n I {\n Bits = "
           "\"0x\"\n}\n}",
       }) {
    EXPECT_THROW(tests::Read(Algorithm, "A {\n" + Body + "\n}\n"), EPropertyError) << Body;
    EXPECT_EQ(StateOf(Algorithm), Before) << Body;
  }
}

TEST(FailedLoad, WhenAHandlerHasEvolvedOrSwappedGenerations) {
  const std::string Text = tests::Saved(*std::make_unique<TSmallAlgorithm>());
  for (const bool Initialized : {true, false}) {
    for (const bool Evolve : {true, false}) {
      TQXGeneticAlgorithm Algorithm;
      Algorithm.Genes().Assign(TSmallAlgorithm().Genes());
      Algorithm.SetCrossoverMethod(cmBitBoundary);
      Algorithm.SetInitialPopulation(3);
      TSmallAlgorithm::CountOnes(Algorithm);
      if (Initialized) {
        Algorithm.Initialize();
      } else {
        Algorithm.Population().Add();
        Algorithm.EvaluateFitness();
      }
      const std::string Before = StateOf(Algorithm);
      const TQXPopulation* const Population = &Algorithm.Population();
      int Calls = 0;
      Algorithm.OnEvaluateFitness = [&](auto& Sender, auto&, double& Fitness) {
        Fitness = 1;
        if (++Calls == 2) {
          if (Evolve) {
            Sender.Evolve();
          } else {
            Sender.SwapGenerations();
          }
          throw std::runtime_error("handler");
        }
      };
      EXPECT_THROW(tests::Load(Algorithm, Text), std::runtime_error);
      EXPECT_EQ(StateOf(Algorithm), Before);
      EXPECT_EQ(&Algorithm.Population(), Population);
    }
  }
}

TEST(FailedLoad, KeepsASizeBelowThatOfTheGenes) {
  TSmallAlgorithm Algorithm;
  Algorithm.SetGeneSize(4);
  const std::string Before = StateOf(Algorithm);
  EXPECT_ANY_THROW(tests::Load(
      Algorithm,
      Document(
          "<GenoType "
          "Size='4'/><Chromosomes><Chromosome><Genes><Bits>2</Bits></Genes></Chromosome></Chromosomes>")));
  EXPECT_EQ(StateOf(Algorithm), Before);
}

// Does something once, when a load has filled the population.
class TFilledAlgorithm : public TSmallAlgorithm {
public:
  std::function<void()> OnFilled;

protected:
  void PopulationUpdate(TQXIndividual* Item) override {
    TSmallAlgorithm::PopulationUpdate(Item);
    if (OnFilled && Item == nullptr && Population().Count() == 3) {
      std::exchange(OnFilled, nullptr)();
    }
  }
};

TEST(FailedLoad, InsideALoadThatSucceedsIsUndoneAlone) {
  TFilledAlgorithm Algorithm;
  const TXMLGeneticAlgorithm Outer = NewGeneticAlgorithm();
  Algorithm.SaveToXML(Outer);
  Outer.Reproduction().SelectionMethod().SetTournamentField(7);
  bool Tried = false;
  Algorithm.OnFilled = [&] {
    Tried = true;
    EXPECT_THROW(tests::Load(Algorithm, "<GeneticAlgorithm><Generation>5</Generation><Reproduction>"
                                        "<SelectionMethod><TournamentField>9</TournamentField>"
                                        "<ElitistPercent>x</ElitistPercent></SelectionMethod>"
                                        "</Reproduction></GeneticAlgorithm>"),
                 EXMLError);
  };
  Algorithm.LoadFromXML(Outer);
  EXPECT_TRUE(Tried);
  EXPECT_EQ(Algorithm.TournamentField(), 7);
  EXPECT_EQ(Algorithm.Population().Count(), 3);
  EXPECT_TRUE(Algorithm.LoadWarnings().empty());
}

TEST(FailedLoad, InsideALoadThatSucceedsRestoresTheChromosomesThatItResized) {
  TFilledAlgorithm Algorithm;
  const std::string Text = tests::Saved(Algorithm);
  std::string Genes;
  for (int I = 0; I < 64; ++I) {
    Genes += "<BooleanGene><Size>1</Size></BooleanGene>";
  }
  const auto Bad = GetGenoType(TXMLDocument::Parse("<GenoType Size='64'>" + Genes +
                                                   "<FloatGene><Size>x</Size></FloatGene></GenoType>"));
  bool Tried = false;
  Algorithm.OnFilled = [&] {
    Tried = true;
    EXPECT_THROW(Algorithm.Genes().LoadFromXML(Bad), EXMLError);
  };
  tests::Load(Algorithm, Text);
  EXPECT_TRUE(Tried);
  EXPECT_EQ(Algorithm.GeneSize(), 9);
  EXPECT_EQ(Algorithm.Population()[0].Bits().ToBitString(), "111001000");
}

TEST(FailedLoad, WhenAGenotypeRefusesOrFreesAGeneThatComesBack) {
  class TChoosy : public TQXGAGenes {
  public:
    using TQXGAGenes::TQXGAGenes;
    bool Refuses = false;
    bool Frees = false;

  protected:
    bool Accepts(const TCollectionItem& Item) const override {
      return (!Refuses || static_cast<const TQXGAGene&>(Item).ID() != -1) && TQXGAGenes::Accepts(Item);
    }
    void Notify(TCollectionItem& Item, TCollectionNotification Action) override {
      TQXGAGenes::Notify(Item, Action);
      if (std::exchange(Frees, Frees && Action != cnAdded) && Action == cnAdded) {
        Delete(Item.Index());
        throw std::runtime_error("hook");
      }
    }
  };
  for (const bool Refuses : {true, false}) {
    TChoosy Genes(nullptr);
    tests::AddGene(Genes, "first", gtInteger, 5);
    TQXGAGene* const Second = &tests::AddGene(Genes, "second", gtInteger, 6);
    Genes.Refuses = Refuses;
    Genes.Frees = !Refuses;
    EXPECT_ANY_THROW(Genes.LoadFromXML(
        GetGenoType(TXMLDocument::Parse("<GenoType><BooleanGene><Name>first</Name><Size>1</Size></"
                                        "BooleanGene><FloatGene><Size>x</Size></FloatGene></GenoType>"))));
    EXPECT_EQ(&Genes[Genes.Count() - 1], Second);
    EXPECT_EQ(Second->Size(), 6);
  }
}

TEST(FailedLoad, KeepsNoFittestThatAHookHasFreed) {
  class TFreeing : public TSmallAlgorithm {
  public:
    bool Frees = false;

  protected:
    void PopulationNotify(TQXIndividual& Item, TCollectionNotification Action) override {
      TSmallAlgorithm::PopulationNotify(Item, Action);
      if (Frees && Action == cnExtracted && Item.Collection() == &Population()) {
        Population().Delete(Item.Index());
      }
    }
  } Algorithm;
  Algorithm.Frees = true;
  EXPECT_THROW(
      tests::Load(
          Algorithm,
          Document(
              "<GenoType "
              "Size='2'/><Chromosomes><Chromosome><Genes><Bits>x</Bits></Genes></Chromosome></Chromosomes>")),
      EXMLError);
  EXPECT_EQ(Algorithm.FittestIndividual(), nullptr);
  EXPECT_EQ(Algorithm.Population().Count(), 0);
}

TEST(FailedLoad, InsideAnEvaluationIsRefused) {
  TSmallAlgorithm Algorithm;
  const std::string Text = tests::Saved(Algorithm);
  Algorithm.OnEvaluateFitness = [&](auto& Sender, auto&, double&) { tests::Load(Sender, Text); };
  EXPECT_THROW(Algorithm.Population()[0].EvaluateFitness(), std::logic_error);
  EXPECT_EQ(Algorithm.Population()[0].Bits().ToBitString(), "111001000");
}

TEST(FailedLoad, WhileChildrenAreMadeIsRefused) {
  TSmallAlgorithm Algorithm;
  const std::string Text = tests::Saved(Algorithm);
  Algorithm.OnSelection = [&](auto& Sender, auto& Population, auto*& Parent) {
    Parent = &Population[0];
    tests::Load(Sender, Text);
  };
  EXPECT_THROW(Algorithm.Evolve(), std::logic_error);
  Algorithm.SetSelectionMethod(smRandom);
  EXPECT_EQ(Algorithm.Evolve(1), 1);
}

} // namespace
} // namespace qx
