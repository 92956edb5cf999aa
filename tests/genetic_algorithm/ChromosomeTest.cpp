#include "support/ScriptedRandom.h"
#include <qx/genetic_algorithm/QXGeneticAlgorithm.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>

namespace qx {
namespace {

using tests::I;
using tests::R;
using tests::TScriptedRandom;

struct TOwned {
  explicit TOwned(const std::string& Text) : Bits(Individual.Bits()) {
    Bits.SetSize(static_cast<int>(Text.size()));
    Bits.SetAsBitString(0, Bits.Size(), Text);
    // A fitness that is not stale: the individual has evaluated in a population and left it.
    TQXGeneticAlgorithm Algorithm;
    TQXGAIndividual& Member = Algorithm.Population().Add();
    static_cast<void>(Member.Fitness());
    Member.SetBits(Bits);
    static_cast<void>(Member.Fitness());
    Individual.Assign(Member);
    EXPECT_FALSE(Individual.NeedFitness());
  }

  TQXGAIndividual Individual;
  TQXGABits& Bits;
};

void Set(TQXGABits& Bits, const std::string& Text) {
  Bits.SetSize(static_cast<int>(Text.size()));
  Bits.SetAsBitString(0, Bits.Size(), Text);
}

TEST(Chromosome, CrossoverTakesTheCutBitFromTheFirstSource) {
  TQXGABits First;
  TQXGABits Second;
  Set(First, "11111111");
  Set(Second, "00000000");
  TOwned Child("01010101");
  EXPECT_EQ(&Child.Bits.CrossOver(First, Second, 3), &Child.Bits);
  EXPECT_EQ(Child.Bits.ToString(), "11110000");
  EXPECT_TRUE(Child.Individual.NeedFitness());
  Child.Bits.CrossOver(First, Second, 0);
  EXPECT_EQ(Child.Bits.ToString(), "10000000");
  Child.Bits.CrossOver(First, Second, 7);
  EXPECT_EQ(Child.Bits.ToString(), "11111111");
  Child.Bits.CrossOver(First, Second, std::numeric_limits<int>::max());
  EXPECT_EQ(Child.Bits.ToString(), "11111111");
  Child.Bits.CrossOver(First, Second, -1);
  EXPECT_EQ(Child.Bits.ToString(), "00000000");
  Child.Bits.CrossOver(First, Second, std::numeric_limits<int>::min());
  EXPECT_EQ(Child.Bits.ToString(), "00000000");
}

TEST(Chromosome, AChildLongerThanBothSourcesKeepsItsExtraBits) {
  TQXGABits First;
  TQXGABits Second;
  Set(First, "00");
  Set(Second, "1111");
  TQXGABits Child;
  Set(Child, "1010101");
  Child.CrossOver(First, Second, 5);
  EXPECT_EQ(Child.ToString(), "0011101");
}

TEST(Chromosome, CrossoverWithoutACutDrawsOneFromTheFirstSource) {
  TQXGABits First;
  TQXGABits Second;
  Set(First, "11111");
  Set(Second, "00000000");
  TQXGABits Child;
  Child.SetSize(8);
  const TScriptedRandom Script{I(1, 5)};
  Child.CrossOver(First, Second);
  EXPECT_EQ(Child.ToString(), "11000000");
}

TEST(Chromosome, CrossoverEqualsABitwiseModel) {
  std::mt19937 Choices(1);
  for (int Step = 0; Step < 5000; ++Step) {
    TQXGABits Sources[3];
    std::string Texts[3];
    for (int S = 0; S < 3; ++S) {
      Texts[S].resize(Choices() % 200);
      for (char& C : Texts[S]) {
        C = static_cast<char>('0' + Choices() % 2);
      }
      Set(Sources[S], Texts[S]);
    }
    const std::size_t A = Choices() % 3; // either source may be the child
    const std::size_t B = Choices() % 3;
    const int Cut = static_cast<int>(Choices() % 220) - 10;
    std::string Model = Texts[2];
    std::size_t Place = 0;
    for (; static_cast<int>(Place) <= Cut && Place < Texts[A].size() && Place < Model.size(); ++Place) {
      Model[Place] = Texts[A][Place];
    }
    for (; Place < Texts[B].size() && Place < Model.size(); ++Place) {
      Model[Place] = Texts[B][Place];
    }
    Sources[2].CrossOver(Sources[A], Sources[B], Cut);
    ASSERT_EQ(Sources[2].ToString(), Model) << Texts[A] << " " << Texts[B] << " at " << Cut;
    ASSERT_EQ(Sources[2].CountOnes(), std::count(Model.begin(), Model.end(), '1')) << "bits behind the end";
  }
}

TEST(Chromosome, InvertComplementsARunAndOneBitMore) {
  TOwned Chromosome("00000000");
  Chromosome.Bits.Invert(2, 0);
  EXPECT_EQ(Chromosome.Bits.ToString(), "00100000");
  EXPECT_TRUE(Chromosome.Individual.NeedFitness());
  Chromosome.Bits.Invert(6, 5);
  EXPECT_EQ(Chromosome.Bits.ToString(), "00100011");
  Chromosome.Bits.Invert(0, std::numeric_limits<int>::max());
  EXPECT_EQ(Chromosome.Bits.ToString(), "11011100");
  Chromosome.Bits.Invert(8, 3);
  EXPECT_EQ(Chromosome.Bits.ToString(), "11011100");
}

TEST(Chromosome, InvertDrawsForMinusOneAndForNothingElse) {
  TQXGABits Bits;
  Set(Bits, "00000000");
  {
    const TScriptedRandom Script{I(3, 8), I(2, 5)};
    Bits.Invert(-1, -1);
  }
  EXPECT_EQ(Bits.ToString(), "00011100");
  {
    const TScriptedRandom Script{I(7, 8)};
    Bits.Invert(-1, 0);
  }
  EXPECT_EQ(Bits.ToString(), "00011101");
  {
    const TScriptedRandom Script{I(0, 4)};
    Bits.Invert(4, -1);
  }
  EXPECT_EQ(Bits.ToString(), "00010101");
}

TEST(Chromosome, InvertOfANegativeLengthFlipsNothingAndMarksStaleAllTheSame) {
  TOwned Chromosome("0101");
  const TScriptedRandom Script{};
  Chromosome.Bits.Invert(1, -2);
  Chromosome.Bits.Invert(-7, -9);
  EXPECT_EQ(Chromosome.Bits.ToString(), "0101");
  EXPECT_TRUE(Chromosome.Individual.NeedFitness());
  EXPECT_THROW(Chromosome.Bits.Invert(-2, 1), std::out_of_range);
  EXPECT_THROW(Chromosome.Bits.Invert(std::numeric_limits<int>::min(), -1), std::out_of_range);
}

TEST(Chromosome, MutateDrawsOnceABitInOrder) {
  TOwned Chromosome("00110");
  const TScriptedRandom Script{R(0.1), R(0.2), R(0.19999), R(0.9), R(0)};
  EXPECT_TRUE(Chromosome.Bits.Mutate(0.2));
  EXPECT_EQ(Chromosome.Bits.ToString(), "10011");
  EXPECT_TRUE(Chromosome.Individual.NeedFitness());
}

TEST(Chromosome, MutateOfZeroFlipsNothingAndOfOneEverything) {
  TOwned Chromosome("0110");
  EXPECT_FALSE(Chromosome.Bits.Mutate(0));
  EXPECT_EQ(Chromosome.Bits.ToString(), "0110");
  EXPECT_TRUE(Chromosome.Individual.NeedFitness());
  EXPECT_TRUE(Chromosome.Bits.Mutate(1));
  EXPECT_EQ(Chromosome.Bits.ToString(), "1001");
}

TEST(Chromosome, LongChromosomesMutateEveryBitWithItsProbability) {
  TQXGABits Bits;
  constexpr int Size = 100000;
  Bits.SetSize(Size);
  SeedRandom(1);
  EXPECT_TRUE(Bits.Mutate(0.25));
  EXPECT_NEAR(Bits.CountOnes(), Size * 0.25, 4 * std::sqrt(Size * 0.25 * 0.75));
  const TQXRandomState After = RandomState();
  SeedRandom(1);
  int Ones = 0;
  for (int B = 0; B < Size; ++B) {
    const bool Bit = Random() < 0.25;
    ASSERT_EQ(Bits[B], Bit);
    Ones += static_cast<int>(Bit);
  }
  EXPECT_EQ(Bits.CountOnes(), Ones);
  EXPECT_EQ(RandomState(), After);
}

TEST(Chromosome, RandomizeDrawsEveryBit) {
  TOwned Chromosome("0000");
  const TScriptedRandom Script{I(1, 2), I(0, 2), I(1, 2), I(1, 2)};
  Chromosome.Bits.Randomize();
  EXPECT_EQ(Chromosome.Bits.ToString(), "1011");
  EXPECT_TRUE(Chromosome.Individual.NeedFitness());
}

TEST(Chromosome, ClearKeepsTheSize) {
  TQXGABits Bits;
  Set(Bits, std::string(100, '1'));
  Bits.Clear();
  EXPECT_EQ(Bits.ToString(), std::string(100, '0'));
}

TEST(Chromosome, OfSizeZeroHasNothingToDraw) {
  TQXGABits Bits;
  {
    const TScriptedRandom Script{};
    EXPECT_FALSE(Bits.Mutate(1));
    Bits.Randomize();
    Bits.Clear();
  }
  const TScriptedRandom Script{I(0, 0), I(0, 0), I(0, 0)};
  Bits.Invert(-1, -1);
  Bits.CrossOver(Bits, Bits);
  EXPECT_EQ(Bits.Size(), 0);
}

TEST(Chromosome, MarkingStaleTellsTheCollectionNothing) {
  struct TWatching : TQXGeneticAlgorithm {
    void PopulationUpdate(TQXIndividual*) override { ++Updates; }
    int Updates = 0;
  } Algorithm;
  Algorithm.SetGeneSize(8);
  TQXGAIndividual& Individual = Algorithm.Population().Add();
  Algorithm.Updates = 0;
  Individual.Bits().Mutate(0.5);
  Individual.Bits().Randomize();
  EXPECT_EQ(Algorithm.Updates, 0);
  TQXGABits Other;
  Set(Other, "10101010");
  Individual.SetBits(Other);
  EXPECT_EQ(Algorithm.Updates, 1);
  EXPECT_EQ(Individual.Bits().Owner(), &Individual);
  EXPECT_EQ(Individual.ToString(), "TQXGAIndividual 10101010");
}

} // namespace
} // namespace qx
