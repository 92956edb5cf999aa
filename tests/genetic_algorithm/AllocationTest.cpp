#include "support/Allocations.h"
#include "support/SmallAlgorithm.h"
#include <qx/genetic_algorithm/QXGeneticAlgorithm.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace qx {
namespace {

using tests::Repeated;
using tests::TSmallAlgorithm;

TEST(Allocation, AGenerationAfterTheFirstTakesNoMemoryUnderAnySelection) {
  for (int Selection = smRoulette; Selection < smCustom; ++Selection) {
    for (const int Bits : {10, 64, 1000}) {
      for (const auto Method : {fmMinimize, fmMaximize, fmWeightedMinimize, fmWeightedMaximize}) {
        TQXGeneticAlgorithm Algorithm;
        Algorithm.SetInitialPopulation(51);
        Algorithm.SetGeneSize(Bits);
        Algorithm.SetCrossoverMethod(cmBitBoundary);
        Algorithm.SetInversionProbability(0.5);
        Algorithm.SetFitnessMethod(Method);
        Algorithm.SetSelectionMethod(static_cast<TGASelectionMethod>(Selection));
        int Events = 0;
        Algorithm.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) {
          Fitness = Item.Bits().CountOnes();
        };
        Algorithm.OnCrossover = [&](auto&, auto&, auto&, auto&, int&, bool&) { ++Events; };
        Algorithm.OnReproduction = [&](auto&, auto&, bool&) { ++Events; };
        Algorithm.OnEvolve = [&](auto&) { ++Events; };
        SeedRandom(1);
        Algorithm.Evolve();
        const long Before = tests::Allocations();
        Algorithm.Evolve(20);
        EXPECT_EQ(tests::Allocations(), Before) << EnumName(static_cast<TGASelectionMethod>(Selection))
                                                << ", " << Bits << " bits, " << EnumName(Method);
        EXPECT_GT(Before, 0);
        EXPECT_GT(Events, 0);
      }
    }
  }
}

TEST(HostileDocument, AbsurdSizesTakeNoMemory) {
  const std::string Chromosomes = "<Chromosomes>" + Repeated("<Chromosome/>", 30) + "</Chromosomes>";
  for (const std::string& Domain : {
           std::string("<GenoType Size='2000000000'/>"),
           "<GenoType Size='2000000000'/>" + Chromosomes,
           "<GenoType Size='8'><IntegerGene><Size>2000000000</Size></IntegerGene></GenoType>" + Chromosomes,
           "<GenoType Size='8'>" + Repeated("<FloatGene><Size>99999999</Size></FloatGene>", 10) +
               "</GenoType>" + Chromosomes,
           "<GenoType Size='100000000'/>" + Chromosomes,
       }) {
    TSmallAlgorithm Algorithm;
    const std::string Text = "<GeneticAlgorithm><Domain>" + Domain + "</Domain></GeneticAlgorithm>";
    ASSERT_LT(Text.size(), 1024U);
    const std::size_t Before = tests::AllocatedBytes();
    EXPECT_THROW(tests::Load(Algorithm, Text), std::length_error) << Domain;
    EXPECT_LT(tests::AllocatedBytes() - Before, 1U << 20) << Domain;
  }
}

TEST(HostileDocument, AbsurdSizesInAComponentStreamTakeNoMemory) {
  for (const std::string Body :
       {"GeneSize = 2000000000", "GeneSize = 100000000\n Population {\n I {\n}\n I {\n}\n I {\n}\n}",
        "GeneSize = 268435456\n Genes {\n G {\n Size = 5\n}\n}"}) {
    TSmallAlgorithm Algorithm;
    const std::size_t Before = tests::AllocatedBytes();
    EXPECT_THROW(tests::Read(Algorithm, "A {\n" + Body + "\n}\n"), EPropertyError) << Body;
    EXPECT_LT(tests::AllocatedBytes() - Before, 1U << 20) << Body;
  }
}

TEST(FailedLoad, OfASizeThatGrewTakesMemoryOnce) {
  TSmallAlgorithm Algorithm;
  const std::string Before = tests::StateOf(Algorithm);
  std::string Genes;
  for (int I = 0; I < 2000; ++I) {
    Genes += "<BooleanGene><Size>1</Size></BooleanGene>";
  }
  const std::size_t Bytes = tests::AllocatedBytes();
  EXPECT_THROW(Algorithm.Genes().LoadFromXML(GetGenoType(TXMLDocument::Parse(
                   "<GenoType>" + Genes + "<FloatGene><Size>x</Size></FloatGene></GenoType>"))),
               EXMLError);
  EXPECT_LT(tests::AllocatedBytes() - Bytes, 8U << 20);
  EXPECT_EQ(tests::StateOf(Algorithm), Before);
}

} // namespace
} // namespace qx
