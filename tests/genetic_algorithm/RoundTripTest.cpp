// Random components: what one saves, another loads, evaluates and saves to the same bytes.

#include "support/Cases.h"
#include "support/Locales.h"
#include "support/SmallAlgorithm.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <random>

namespace qx {
namespace {

constexpr int Components = tests::Cases(100'000, 5000);

class TRandomAlgorithm {
public:
  explicit TRandomAlgorithm(unsigned Seed) : FChoices(Seed) {}

  void Make(TQXGeneticAlgorithm& Algorithm) {
    MakeSettings(Algorithm);
    for (int I = Choose(4); I > 0; --I) {
      MakeGene(Algorithm.Genes().Add());
    }
    // Spare bits are lost, so there are none behind genes.
    Algorithm.SetGeneSize(Algorithm.Genes().Size() > 0 ? Algorithm.Genes().Size() : Choose(20));
    for (int I = Choose(4); I > 0; --I) {
      TQXGAIndividual& Individual = Algorithm.Population().Add();
      Individual.SetName(Text());
      Individual.Bits().Randomize();
      for (TQXGAGene& Gene : Algorithm.Genes()) {
        if (Gene.IsEnumeration()) {
          Gene.SetGeneAsEnumeration(Individual.Bits(),
                                    Gene.Enumerations()[Choose(Gene.Enumerations().Count())]);
        }
      }
    }
  }

private:
  int Choose(int n) { return static_cast<int>(FChoices() % static_cast<unsigned>(n)); }
  double Share() { return Choose(1000) / 999.0; }

  std::string Text() {
    constexpr std::string_view Pieces[] = {
        "a",   " ",  "<",  ">",  "&",     "\"", "'", "\xc3\xa9", "\xe6\x97\xa5",
        "]]>", "\n", "\t", "\r", "&amp;", "1,5"};
    std::string All;
    for (int I = Choose(5); I > 0; --I) {
      All += Pieces[Choose(static_cast<int>(std::size(Pieces)))];
    }
    return All;
  }

  void MakeSettings(TQXGeneticAlgorithm& Algorithm) {
    Algorithm.SetDiversityLimit(Share());
    Algorithm.SetFitnessCutoff(std::ldexp(Share() - 0.5, Choose(260) - 130));
    Algorithm.SetFitnessMethod(static_cast<TGAFitnessMethod>(Choose(4)));
    Algorithm.SetGeneration(static_cast<int>(FChoices()));
    Algorithm.SetUseDiversityLimit(Choose(2) == 0);
    Algorithm.SetUseFitnessCutoff(Choose(2) == 0);
    Algorithm.SetUseGenerationLimit(Choose(2) == 0);
    if (Choose(2) == 0) {
      Algorithm.SetGenerationLimit(Choose(1 << 30));
    }
    Algorithm.SetCrossoverMethod(static_cast<TGACrossoverMethod>(Choose(5)));
    Algorithm.SetCrossoverProbability(Share());
    Algorithm.SetInversionProbability(Share());
    Algorithm.SetMutationProbability(Share() * 1e-5);
    Algorithm.SetSelectionMethod(static_cast<TGASelectionMethod>(Choose(6)));
    Algorithm.SetElitistPct(Share());
    Algorithm.SetTournamentField(Choose(9));
  }

  void MakeGene(TQXGAGene& Gene) {
    Gene.SetName(Text());
    Gene.SetPreserveSignBit(Choose(2) == 0); // of a numeric gene; the format has none for the others
    Gene.SetSize(1 + Choose(70));
    Gene.SetGeneType(static_cast<TGeneType>(1 + Choose(4)));
    if (Gene.IsEnumeration()) {
      Gene.SetPreserveSignBit(false);
      for (int I = 1 + Choose(5); I > 0; --I) {
        Gene.Enumerations().Add(std::to_string(I) + Text());
      }
    }
  }

  std::mt19937 FChoices;
};

void Judge(TQXGeneticAlgorithm& Algorithm) {
  Algorithm.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) {
    Fitness = std::sqrt(Item.Bits().CountOnes()) / 7 - 1;
  };
}

void RoundTrip(unsigned Seed) {
  TQXGeneticAlgorithm Algorithm;
  TRandomAlgorithm(Seed).Make(Algorithm);
  Judge(Algorithm);
  Algorithm.EvaluateFitness();
  const std::string Text = tests::Saved(Algorithm);
  TQXGeneticAlgorithm Copy;
  Judge(Copy);
  tests::Load(Copy, Text);
  Copy.EvaluateFitness();
  ASSERT_EQ(tests::Saved(Copy), Text) << "seed " << Seed;
}

TEST(RoundTrip, RandomComponentsAreSavedToTheSameBytesAgain) {
  for (unsigned Seed = 0; Seed < Components && !testing::Test::HasFailure(); ++Seed) {
    RoundTrip(Seed);
  }
}

TEST(RoundTrip, RandomComponentsAreSavedToTheSameBytesAgainInAGermanProcess) {
  const tests::TGermanLocale German;
  for (unsigned Seed = 0; Seed < Components && !testing::Test::HasFailure(); ++Seed) {
    RoundTrip(Seed);
  }
}

TEST(RoundTrip, ALongNameOrTextOfAnyCharacterComesBack) {
  TQXGeneticAlgorithm Algorithm;
  std::string Name;
  for (int Character = 0x20; Character < 0x7f; ++Character) {
    Name += static_cast<char>(Character);
  }
  tests::AddGene(Algorithm.Genes(), Name + std::string(1 << 16, 'x'), gtBoolean, 1);
  TQXGeneticAlgorithm Copy;
  tests::Load(Copy, tests::Saved(Algorithm));
  EXPECT_EQ(Copy.Genes()[0].Name(), Algorithm.Genes()[0].Name());
}

} // namespace
} // namespace qx
