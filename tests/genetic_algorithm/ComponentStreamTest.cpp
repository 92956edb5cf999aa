// The genetic algorithm as a component stream.

#include "support/Locales.h"
#include "support/SmallAlgorithm.h"

#include <gtest/gtest.h>

#include <random>

namespace qx {
namespace {

using tests::Read;
using tests::TSmallAlgorithm;
using tests::Written;

TEST(GeneticAlgorithmStream, HoldsGenotypeAndPopulationAsBlocks) {
  TSmallAlgorithm Algorithm({"111001000", "000010111"});
  Algorithm.SetName("packer");
  Algorithm.SetCrossoverMethod(cmByteBoundary);
  Algorithm.Level->SetMaxValue(6);
  Algorithm.Population()[1].SetName("second");
  TQXGeneticAlgorithm Plain;
  EXPECT_EQ(Written(Plain), "TQXGeneticAlgorithm {\n}\n");
  EXPECT_EQ(Written(Algorithm), "TSmallAlgorithm {\n"
                                "  Name = \"packer\"\n"
                                "  InitialPopulation = 2\n"
                                "  CrossoverMethod = cmByteBoundary\n"
                                "  Genes {\n"
                                "    TQXGAGene {\n"
                                "      Name = \"flag\"\n"
                                "      GeneType = gtBoolean\n"
                                "      Size = 1\n"
                                "    }\n"
                                "    TQXGAGene {\n"
                                "      Name = \"number\"\n"
                                "      GeneType = gtInteger\n"
                                "      PreserveSignBit = true\n"
                                "      Size = 3\n"
                                "    }\n"
                                "    TQXGAGene {\n"
                                "      Name = \"colour\"\n"
                                "      Enumerations = [\"red\" \"green\" \"blue\"]\n"
                                "      GeneType = gtEnumeration\n"
                                "      Size = 2\n"
                                "      MaxValue = 1\n"
                                "      MinValue = 0\n"
                                "    }\n"
                                "    TQXGAGene {\n"
                                "      Name = \"level\"\n"
                                "      GeneType = gtFloat\n"
                                "      Size = 3\n"
                                "      MaxValue = 6\n"
                                "      MinValue = 0\n"
                                "    }\n"
                                "  }\n"
                                "  GeneSize = 9\n"
                                "  Population {\n"
                                "    TQXGAIndividual {\n"
                                "      Bits = \"111001000\"\n"
                                "    }\n"
                                "    TQXGAIndividual {\n"
                                "      Name = \"second\"\n"
                                "      Bits = \"000010111\"\n"
                                "    }\n"
                                "  }\n"
                                "}\n");
  TSmallAlgorithm Copy({});
  Read(Copy, Written(Algorithm));
  EXPECT_EQ(Written(Copy), Written(Algorithm));
}

TEST(GeneticAlgorithmStream, GenesThatStayAreTheSameObjects) {
  TSmallAlgorithm Algorithm;
  TQXGAGene* const Number = Algorithm.Number;
  const std::string Text = Written(Algorithm);
  Number->SetSize(9);
  Algorithm.Genes().Delete(0);
  Read(Algorithm, Text);
  EXPECT_EQ(Written(Algorithm), Text);
  EXPECT_EQ(&Algorithm.Genes()[1], Number);
  EXPECT_EQ(Number->Offset(), 1);
}

TEST(GeneticAlgorithmStream, EveryPairOfLimitsComesBackHoweverItWasMade) {
  std::mt19937 Choices(1);
  const auto Choose = [&](int n) { return static_cast<int>(Choices() % static_cast<unsigned>(n)); };
  for (int Run = 0; Run < 3000; ++Run) {
    TQXGeneticAlgorithm Algorithm;
    TQXGAGene& Gene = Algorithm.Genes().Add();
    for (int Step = 0; Step < 8; ++Step) {
      switch (Choose(6)) {
      case 0:
        Gene.SetGeneType(static_cast<TGeneType>(Choose(5)));
        break;
      case 1:
        Gene.SetSize(Choose(70));
        break;
      case 2:
        Gene.SetPreserveSignBit(Choose(2) == 1);
        break;
      case 3:
        Gene.SetMaxValue((Choose(2000) - 1000) / 3.0);
        break;
      case 4:
        Gene.SetMinValue((Choose(2000) - 1000) / 3.0);
        break;
      default:
        Gene.Enumerations().Add("text " + std::to_string(Step));
      }
    }
    TQXGeneticAlgorithm Copy;
    Read(Copy, Written(Algorithm));
    ASSERT_EQ(Written(Copy), Written(Algorithm));
    ASSERT_EQ(Copy.Genes()[0].MinValue(), Gene.MinValue());
    ASSERT_EQ(Copy.Genes()[0].MaxValue(), Gene.MaxValue());
    ASSERT_EQ(Copy.Genes()[0].Size(), Gene.Size());
  }
}

TEST(GeneticAlgorithmStream, ASizeBelowThatOfTheGenesComesBack) {
  for (const int Size : {0, 4, 20}) {
    TQXGeneticAlgorithm Algorithm;
    tests::AddGene(Algorithm.Genes(), "n", gtInteger, 8);
    Algorithm.SetGeneSize(Size);
    TQXGeneticAlgorithm Copy;
    Copy.SetGeneSize(30);
    Read(Copy, Written(Algorithm));
    EXPECT_EQ(Copy.GeneSize(), Size);
  }
}

TEST(GeneticAlgorithmStream, GivesBothGenerationsOfARunThePopulation) {
  TSmallAlgorithm Source({"111001000", "000010111"});
  TSmallAlgorithm Algorithm;
  Algorithm.SetFitnessMethod(fmMaximize);
  Read(Algorithm, Written(Source));
  EXPECT_EQ(Algorithm.Population().Count(), 2);
  EXPECT_EQ(Algorithm.PreviousGeneration()->Count(), 2);
  EXPECT_EQ(Algorithm.Evolve(2), 2);
  EXPECT_EQ(Algorithm.Population().Count(), 2);
}

TEST(GeneticAlgorithmStream, ARunGoesOnFromIt) {
  TSmallAlgorithm Source({"111001000", "000010111"});
  Source.SetGeneration(7);
  Source.SetInitialPopulation(50);
  TQXGeneticAlgorithm Algorithm;
  TSmallAlgorithm::CountOnes(Algorithm);
  Read(Algorithm, Written(Source));
  EXPECT_TRUE(Algorithm.Initialized());
  EXPECT_EQ(Algorithm.InitialPopulation(), 50);
  Algorithm.Evolve();
  EXPECT_EQ(Algorithm.Generation(), 8);
  EXPECT_EQ(Algorithm.Population().Count(), 2);
  EXPECT_EQ((*Algorithm.PreviousGeneration())[1].Bits().ToBitString(), "000010111");
}

TEST(GeneticAlgorithmStream, ValuesThatASetterMovedAreReported) {
  TQXGeneticAlgorithm Algorithm;
  Read(Algorithm, "A {\n TournamentField = 1\n ElitistPct = 1.5\n InitialPopulation = 7\n}\n");
  EXPECT_EQ(Algorithm.LoadWarnings(),
            (std::vector<std::string>{"TournamentField: 1 became 2", "ElitistPct: 1.5 became 1"}));
}

TEST(GeneticAlgorithmStream, IsTheSameUnderEveryLocale) {
  TSmallAlgorithm Algorithm;
  Algorithm.SetMutationProbability(1.0 / 3);
  Algorithm.Level->SetMaxValue(6.5);
  const std::string Before = Written(Algorithm);
  const tests::TGermanLocale German;
  EXPECT_EQ(Written(Algorithm), Before);
  TSmallAlgorithm Copy({});
  Read(Copy, Before);
  EXPECT_EQ(Written(Copy), Before);
}

} // namespace
} // namespace qx
