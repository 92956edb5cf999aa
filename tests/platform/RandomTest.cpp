#include "support/ScriptedRandom.h"
#include <qx/platform/Random.h>
#include <qx/platform/RandomKernels.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <concepts>
#include <random>
#include <sstream>
#include <vector>

namespace qx {
namespace {

template <class T>
concept Drawable = requires(T n) {
  Random(n);
};
static_assert(Drawable<int> && Drawable<std::int64_t> && Drawable<std::size_t>);
static_assert(!Drawable<double> && !Drawable<bool>, "only integers bound an integer draw");

TEST(Random, ASeedGivesTheSameDrawsOnEveryPlatform) {
  SeedRandom(42);
  const double First = Random();
  SeedRandom(42);
  EXPECT_EQ(Random(), First);
  // Worked out apart from the library: the halves of splitmix64's outputs fill word 0 of all lanes, then word
  // 1, and so on; a draw has the sum of words 0 and 3 of its lane above the scrambled word 1.
  std::uint32_t Words[64];
  std::uint64_t State = 42;
  for (std::size_t W = 0; W < 64; W += 2) {
    State += 0x9e3779b97f4a7c15;
    std::uint64_t z = State;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    z ^= z >> 31;
    Words[W] = static_cast<std::uint32_t>(z);
    Words[W + 1] = static_cast<std::uint32_t>(z >> 32);
  }
  const auto Expected = [&Words](std::size_t Lane) {
    const std::uint64_t High = Words[Lane] + Words[48 + Lane];
    const std::uint64_t Low = std::rotl(Words[16 + Lane] * 5, 7) * 9;
    return std::ldexp(static_cast<double>((High << 32 | Low) >> 11), -53);
  };
  EXPECT_EQ(First, Expected(0));
  for (std::size_t Lane = 1; Lane < 16; ++Lane) {
    EXPECT_EQ(Random(), Expected(Lane));
  }
  // One step of lane 0, by the published recurrence.
  const std::uint32_t Shifted = Words[16] << 9;
  Words[32] ^= Words[0];
  Words[48] ^= Words[16];
  Words[16] ^= Words[32];
  Words[0] ^= Words[48];
  Words[32] ^= Shifted;
  Words[48] = std::rotl(Words[48], 11);
  EXPECT_EQ(Random(), Expected(0));
}

TEST(Random, AnUnseededProcessDrawsAsIfSeededWithZero) {
  // Other tests have drawn: only a state that was never touched could show it here, so the seed is set.
  SeedRandom(0);
  const TQXRandomState Seeded = RandomState();
  EXPECT_EQ(Seeded.NextLane, 0U);
  EXPECT_EQ(Seeded.Words[0][0], 0x7b1dcdafU); // the low half of the first output of splitmix64 for 0
}

TEST(Random, RealDrawsLieFromZeroToBelowOne) {
  SeedRandom(1);
  double Sum = 0;
  constexpr int Draws = 100000;
  for (int I = 0; I < Draws; ++I) {
    const double Draw = Random();
    ASSERT_GE(Draw, 0.0);
    ASSERT_LT(Draw, 1.0);
    Sum += Draw;
  }
  EXPECT_NEAR(Sum / Draws, 0.5, 4 / std::sqrt(12.0 * Draws));
}

TEST(Random, IntegerDrawsAreUniform) {
  SeedRandom(2);
  constexpr int Draws = 100000;
  int Counts[10] = {};
  for (int I = 0; I < Draws; ++I) {
    ++Counts[Random(10)];
  }
  double ChiSquared = 0;
  for (const int Count : Counts) {
    ChiSquared += (Count - Draws / 10.0) * (Count - Draws / 10.0) / (Draws / 10.0);
  }
  EXPECT_LT(ChiSquared, 33.7); // 9 degrees of freedom, chance 0.0001
}

TEST(Random, LanesAreIndependentOfEachOther) {
  SeedRandom(3);
  constexpr int Draws = 100000;
  for (int Lag = 1; Lag <= 16; ++Lag) {
    std::vector<double> Sequence(Draws);
    for (double& Draw : Sequence) {
      Draw = Random() - 0.5;
    }
    double Product = 0;
    for (int I = Lag; I < Draws; ++I) {
      Product += Sequence[static_cast<std::size_t>(I)] * Sequence[static_cast<std::size_t>(I - Lag)];
    }
    EXPECT_LT(std::abs(Product / Draws), 4.5 / 12 / std::sqrt(Draws)) << "lag " << Lag;
  }
}

TEST(Random, ARangeBelowOneGivesZeroAndTakesOneDraw) {
  SeedRandom(4);
  EXPECT_EQ(Random(0), 0);
  EXPECT_EQ(Random(-7), 0);
  const double Third = Random();
  SeedRandom(4);
  Random();
  Random();
  EXPECT_EQ(Random(), Third);
}

TEST(Random, TheLargestUnsignedRangeDoesNotDependOnWhereABlockEnds) {
  SeedRandom(5);
  for (int I = 0; I < 600; ++I) {
    const TQXRandomState State = RandomState();
    const std::uint64_t Draw = Random(~std::uint64_t{0});
    const TQXRandomState After = RandomState();
    SetRandomState(State); // an empty block
    ASSERT_EQ(Random(~std::uint64_t{0}), Draw) << I;
    ASSERT_EQ(RandomState(), After);
  }
}

TEST(Random, LargeRangesReachTheirEnds) {
  SeedRandom(5);
  std::int64_t Largest = 0;
  for (int I = 0; I < 1000; ++I) {
    const std::int64_t Draw = Random(std::numeric_limits<std::int64_t>::max());
    ASSERT_GE(Draw, 0);
    Largest = std::max(Largest, Draw);
  }
  EXPECT_GT(Largest, std::numeric_limits<std::int64_t>::max() / 100 * 99);
}

// A mixture of single and bulk draws, taken one by one, and as they come.
class TInterleaving {
public:
  explicit TInterleaving(std::uint64_t Seed) : FChoices(Seed) {}

  void Compare(int Steps) {
    for (int Step = 0; Step < Steps; ++Step) {
      const TQXRandomState Start = RandomState();
      const std::size_t Count = FChoices() % 3 == 0 ? FChoices() % 2000 : FChoices() % 80;
      const double Probability = Probabilities[FChoices() % std::size(Probabilities)];
      const bool Coins = FChoices() % 4 == 0;
      std::vector<std::uint64_t> Bulk((Count + 63) / 64, 0xabcdef);
      if (Coins) {
        RandomBits(Bulk, Count);
      } else {
        RandomBelow(Probability, Bulk, Count);
      }
      const TQXRandomState End = RandomState();

      SetRandomState(Start);
      std::vector<std::uint64_t> Single(Bulk.size());
      for (std::size_t I = 0; I < Count; ++I) {
        const bool Bit = Coins ? Random(2) == 1 : Random() < Probability;
        Single[I / 64] |= static_cast<std::uint64_t>(Bit) << (I % 64);
      }
      ASSERT_EQ(Bulk, Single) << Count << " draws below " << Probability;
      ASSERT_EQ(RandomState(), End) << "after " << Count << " draws";
      for (std::size_t I = FChoices() % 40; I > 0; --I) {
        Random();
      }
    }
  }

private:
  static constexpr double Probabilities[] = {0,   0.001, 0.5, 1,      0.999999,    -1,     2,
                                             0.3, 1e-18, 0.1, 1e-300, 1 - 0x1p-53, 0x1p-53};
  std::mt19937_64 FChoices;
};

TEST(Random, DrawingInBulkEqualsDrawingOneByOne) {
  SeedRandom(6);
  TInterleaving(6).Compare(3000);
}

TEST(Random, NotANumberIsNoProbability) {
  SeedRandom(7);
  std::uint64_t Words[2] = {1, 1};
  RandomBelow(std::nan(""), Words, 100);
  EXPECT_EQ(Words[0] | Words[1], 0U);
}

TEST(Random, BulkDrawsNeedRoomAndOtherwiseDrawNothing) {
  SeedRandom(8);
  const TQXRandomState Before = RandomState();
  std::uint64_t Word = 5;
  EXPECT_THROW(RandomBelow(0.5, {&Word, 1}, 65), std::invalid_argument);
  EXPECT_THROW(RandomBits({&Word, 1}, 65), std::invalid_argument);
  EXPECT_EQ(Word, 5U);
  EXPECT_EQ(RandomState(), Before);
}

TEST(Random, EveryInstructionSetGivesTheSameDraws) {
  const detail::TRandomKernelList Kernels = detail::RandomKernels();
  ASSERT_GE(Kernels.Count, 1U);
  const detail::TRandomKernels& Plain = *Kernels.First[Kernels.Count - 1];
  EXPECT_STREQ(Plain.Name, "plain");
  std::mt19937_64 Choices(9);
  for (std::size_t K = 0; K + 1 < Kernels.Count; ++K) {
    const detail::TRandomKernels& Fast = *Kernels.First[K];
    SCOPED_TRACE(Fast.Name);
    detail::TRandomLanes Lanes;
    for (auto& Words : Lanes.Words) {
      for (std::uint32_t& Word : Words) {
        Word = static_cast<std::uint32_t>(Choices());
      }
    }
    detail::TRandomLanes PlainLanes = Lanes;
    for (int Step = 0; Step < 300; ++Step) {
      std::uint64_t Draws[72] = {};
      std::uint64_t PlainDraws[72] = {};
      Fast.Fill(Lanes, Draws, 4);
      Plain.Fill(PlainLanes, PlainDraws, 4);
      ASSERT_TRUE(std::equal(Draws, Draws + 64, PlainDraws));
      const std::uint64_t Threshold = Choices() >> Choices() % 20;
      const std::size_t Count = Choices() % 65;
      ASSERT_EQ(Fast.CompareBelow(Draws, Count, Threshold), Plain.CompareBelow(PlainDraws, Count, Threshold));
      const std::size_t Waiting = Choices() % 64;
      const std::size_t Fresh = Choices() % 200 + 1;
      std::uint64_t Words[5] = {};
      std::uint64_t PlainWords[5] = {};
      std::uint64_t Last[16];
      std::uint64_t PlainLast[16];
      Fast.GenerateBelow(Lanes, Threshold, Draws, Waiting, Words, Fresh, Last);
      Plain.GenerateBelow(PlainLanes, Threshold, PlainDraws, Waiting, PlainWords, Fresh, PlainLast);
      ASSERT_TRUE(std::equal(Words, Words + 5, PlainWords)) << Waiting << " + " << Fresh;
      ASSERT_TRUE(std::equal(Last, Last + 16, PlainLast));
    }
  }
}

// A threshold whose high half is that of a draw to come: the low halves decide.
TEST(Random, EveryInstructionSetDecidesTies) {
  const detail::TRandomKernelList Kernels = detail::RandomKernels();
  std::mt19937_64 Choices(10);
  for (std::size_t K = 0; K < Kernels.Count; ++K) {
    const detail::TRandomKernels& Kernel = *Kernels.First[K];
    SCOPED_TRACE(Kernel.Name);
    for (int Step = 0; Step < 500; ++Step) {
      detail::TRandomLanes Lanes;
      for (auto& Words : Lanes.Words) {
        for (std::uint32_t& Word : Words) {
          Word = static_cast<std::uint32_t>(Choices());
        }
      }
      detail::TRandomLanes Ahead = Lanes;
      std::uint64_t Draws[256];
      Kernels.First[Kernels.Count - 1]->Fill(Ahead, Draws, 16);
      const std::size_t Fresh = Choices() % 200 + 1;
      const std::uint64_t Threshold = Draws[Choices() % Fresh] + Choices() % 3 - 1;
      std::uint64_t Words[5] = {};
      std::uint64_t Last[16];
      Kernel.GenerateBelow(Lanes, Threshold, Draws, 0, Words, Fresh, Last);
      for (std::size_t I = 0; I < Fresh; ++I) {
        ASSERT_EQ((Words[I / 64] >> (I % 64) & 1) != 0, Draws[I] < Threshold) << I << " of " << Fresh;
      }
      const std::size_t LastStep = (Fresh - 1) / 16 * 16;
      ASSERT_TRUE(std::equal(Last, Last + 16, Draws + LastStep));
    }
  }
}

TEST(Random, AStateGoesOnWhereItWasTaken) {
  SeedRandom(10);
  for (int Taken = 0; Taken < 600; Taken += 7) {
    SeedRandom(10);
    for (int I = 0; I < Taken; ++I) {
      Random();
    }
    const TQXRandomState State = RandomState();
    const double Next = Random();
    const int After = Random(1000);
    SeedRandom(99);
    SetRandomState(State);
    EXPECT_EQ(Random(), Next);
    EXPECT_EQ(Random(1000), After);
  }
}

TEST(Random, AStateReadsBackFromItsText) {
  SeedRandom(11);
  Random();
  const TQXRandomState State = RandomState();
  std::stringstream Text;
  Text << State;
  TQXRandomState Read{};
  Text >> Read;
  EXPECT_TRUE(Text);
  EXPECT_EQ(Read, State);
}

TEST(Random, TextThatIsNoStateIsRefused) {
  std::stringstream Text("1 2 three");
  TQXRandomState Read{};
  Read.NextLane = 5;
  Text >> Read;
  EXPECT_FALSE(Text);
  EXPECT_EQ(Read.NextLane, 5U);
}

TEST(Random, AStateThatNoGeneratorCanBeInIsRefused) {
  SeedRandom(12);
  const TQXRandomState Good = RandomState();
  TQXRandomState Bad = Good;
  Bad.NextLane = 16;
  EXPECT_THROW(SetRandomState(Bad), std::invalid_argument);
  Bad = Good;
  for (auto& Words : Bad.Words) {
    Words[3] = 0;
  }
  EXPECT_THROW(SetRandomState(Bad), std::invalid_argument);
  EXPECT_EQ(RandomState(), Good);
}

TEST(Random, ASourceTakesThePlaceOfTheGeneratorWhichThenGoesOn) {
  SeedRandom(13);
  const double First = Random();
  const double Second = Random();
  SeedRandom(13);
  EXPECT_EQ(Random(), First);
  {
    tests::TScriptedRandom Script{tests::R(0.25), tests::I(3, 7)};
    EXPECT_EQ(Random(), 0.25);
    {
      tests::TScriptedRandom Inner{tests::R(0.75)};
      EXPECT_EQ(Random(), 0.75);
    }
    EXPECT_EQ(Random(7), 3);
  }
  EXPECT_EQ(Random(), Second);
}

TEST(Random, SeedingUnderASourceWaitsForTheGeneratorsTurn) {
  SeedRandom(14);
  const double First = Random();
  {
    tests::TScriptedRandom Script{tests::R(0.5)};
    SeedRandom(14);
    EXPECT_EQ(Random(), 0.5);
  }
  EXPECT_EQ(Random(), First);
}

TEST(Random, ASourceSeesEveryDrawOfABulk) {
  tests::TScriptedRandom Script{tests::R(0.1), tests::R(0.9), tests::R(0.2), tests::I(1, 2), tests::I(0, 2)};
  std::uint64_t Word = 0;
  RandomBelow(0.5, {&Word, 1}, 3);
  EXPECT_EQ(Word, 5U);
  RandomBits({&Word, 1}, 2);
  EXPECT_EQ(Word, 1U);
}

TEST(Random, MutationDecisionsHaveTheirProbability) {
  SeedRandom(15);
  constexpr std::size_t Draws = 100000 * 64;
  std::vector<std::uint64_t> Words(Draws / 64);
  RandomBelow(0.01, Words, Draws);
  double Ones = 0;
  for (const std::uint64_t Word : Words) {
    Ones += std::popcount(Word);
  }
  EXPECT_NEAR(Ones / Draws, 0.01, 4 * std::sqrt(0.01 * 0.99 / Draws));
}

} // namespace
} // namespace qx
