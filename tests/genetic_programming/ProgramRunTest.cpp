// Whole runs: what a strategy does to the sizes of programs, and that a seed gives the same run everywhere.

#include <qx/platform/Random.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <support/Fingerprint.h>
#include <support/SmallGeneticProgram.h>

namespace qx {
namespace {

using tests::Program;

// Programs for a cubic with a peak at ten points, after some generations of a seed. The fitness is the error
// or, maximizing, 1 / (1 + error). No function of the platform's own takes part, so that the numbers are the
// same everywhere.
struct TRunSettings {
  TGPBloatStrategy Strategy = bsNone;
  std::uint64_t Seed = 1;
  int Generations = 15;
  int BloatLimit = 20;
  TGAFitnessMethod Method = fmWeightedMinimize;
  double ErrorStep = 0; // errors are rounded down to multiples of it
};

template <class TProgramming = TQXGeneticProgramming>
class TRun {
public:
  explicit TRun(const TRunSettings& Settings) : FSettings(Settings) {
    SeedRandom(Settings.Seed);
    for (const char* const Name : {"Add", "Sub", "Mul", "Div"}) {
      AddStandardInstruction(Component.Instructions(), Name);
    }
    Component.Instructions().Add().SetName("x");
    Component.OnEvaluateFitness = [this](auto&, auto& Item, double& Fitness) {
      ++Evaluations;
      const double Error = ErrorOf(Item);
      Fitness = FSettings.Method == fmWeightedMaximize ? 1 / (1 + Error) : Error;
    };
    Component.SetFitnessMethod(Settings.Method);
    Component.SetSelectionMethod(smTournament);
    Component.SetInitialPopulation(200);
    Component.SetInitializationDepth(4);
    Component.SetInitializationMethod(imRampedHalfAndHalf);
    Component.SetMutationProbability(0.05);
    Component.SetBloatStrategy(Settings.Strategy);
    Component.SetBloatLimit(Settings.BloatLimit);
    Component.SetParsimonyCoefficient(0.02);
    Component.Evolve(Settings.Generations);
    Component.CalculateProgramStats();
  }

  TProgramming Component;
  int Evaluations = 0;

private:
  double ErrorOf(generics::TQXGPIndividual<TGAFloat>& Individual) {
    double Error = 0;
    for (int I = 0; I < 10; ++I) {
      const double x = I / 5.0 - 1;
      FContext.Values().AddOrSetValue("x", x);
      Error += std::fabs(Individual.Execute(&FContext) - (x * x * x + 1 / (1 + 25 * x * x)));
    }
    return FSettings.ErrorStep > 0 ? std::floor(Error / FSettings.ErrorStep) * FSettings.ErrorStep : Error;
  }

  TRunSettings FSettings;
  TQXGPFloatContext FContext;
};

// --- The effect of the strategies --------------------------------------------------------------------------

// Means over some seeds.
struct TMeans {
  double Size = 0;
  double Depth = 0;
};
TMeans MeansOf(TRunSettings Settings) {
  constexpr int Seeds = 4;
  TMeans Means;
  for (int Seed = 1; Seed <= Seeds; ++Seed) {
    Settings.Seed = static_cast<std::uint64_t>(Seed);
    TRun Run(Settings);
    Means.Size += static_cast<double>(Run.Component.AvgProgramSize()) / Seeds;
    Means.Depth += static_cast<double>(Run.Component.AvgProgramDepth()) / Seeds;
  }
  return Means;
}

void ExpectSmaller(const TRunSettings& Settings) {
  TRunSettings Uncontrolled = Settings;
  Uncontrolled.Strategy = bsNone;
  EXPECT_LT(MeansOf(Settings).Size, 0.75 * MeansOf(Uncontrolled).Size) << EnumName(Settings.Strategy);
}
void ExpectFlatter(const TRunSettings& Settings) {
  TRunSettings Uncontrolled = Settings;
  Uncontrolled.Strategy = bsNone;
  EXPECT_LT(MeansOf(Settings).Depth, 0.75 * MeansOf(Uncontrolled).Depth) << EnumName(Settings.Strategy);
}

TEST(BloatEffectTest, WithoutAStrategyProgramsGrow) {
  EXPECT_GT(MeansOf({}).Size, 2 * MeansOf({.Generations = 1}).Size);
}

TEST(BloatEffectTest, ASizeLimitHolds) {
  TRun Run({.Strategy = bsSizeLimit});
  EXPECT_LE(Run.Component.MaxProgramSize(), 31); // of initial programs, which are no children
  EXPECT_LE(Run.Component.AvgProgramSize(), 20);
  ExpectSmaller({.Strategy = bsSizeLimit});
}

TEST(BloatEffectTest, ADepthLimitHolds) {
  TRun Run({.Strategy = bsDepthLimit, .BloatLimit = 5});
  EXPECT_EQ(Run.Component.MaxProgramDepth(), 5);
  ExpectFlatter({.Strategy = bsDepthLimit, .BloatLimit = 5});
}

TEST(BloatEffectTest, TarpeianStrategiesHoldProgramsDown) {
  ExpectSmaller({.Strategy = bsTarpeianSize});
  ExpectFlatter({.Strategy = bsTarpeianDepth});
}

TEST(BloatEffectTest, TarpeianStrategiesLeaveProgramsUnrun) {
  EXPECT_LT(TRun({.Strategy = bsTarpeianSize}).Evaluations, TRun({}).Evaluations);
}

TEST(BloatEffectTest, UnfitProgramsAreNotTheFittest) {
  for (std::uint64_t Seed = 1; Seed <= 4; ++Seed) {
    TRun BySize({.Strategy = bsUnfitSize, .Seed = Seed});
    EXPECT_LE(BySize.Component.FittestIndividual()->DNA()->Size(), 20);
    TRun ByDepth({.Strategy = bsUnfitDepth, .Seed = Seed, .BloatLimit = 6});
    EXPECT_LE(ByDepth.Component.FittestIndividual()->DNA()->Depth(), 6);
  }
}

TEST(BloatEffectTest, ShrinkingHoldsProgramsDown) {
  ExpectSmaller({.Strategy = bsShrinkSize});
  ExpectFlatter({.Strategy = bsShrinkDepth, .BloatLimit = 5});
}

TEST(BloatEffectTest, HoistingHoldsProgramsDown) {
  ExpectSmaller({.Strategy = bsHoistSize});
  ExpectFlatter({.Strategy = bsHoistDepth, .BloatLimit = 5});
}

TEST(BloatEffectTest, FairCrossoverHoldsProgramsDown) {
  ExpectSmaller({.Strategy = bsSizeFairCrossover});
  ExpectFlatter({.Strategy = bsDepthFairCrossover});
}

TEST(BloatEffectTest, ParsimonyPressureHoldsProgramsDown) {
  ExpectSmaller({.Strategy = bsSizeParsimonyPressure});
  ExpectFlatter({.Strategy = bsDepthParsimonyPressure});
}

// Maximizing, the pressure takes away just what size contributes to fitness. Minimizing, the same coefficient
// is added, and what grows fitter by growing is favoured twice.
TEST(BloatEffectTest, CovariantPressureHoldsProgramsDownWhenMaximizing) {
  ExpectSmaller({.Strategy = bsCovariantSizeParsimonyPressure, .Method = fmWeightedMaximize});
  ExpectFlatter({.Strategy = bsCovariantDepthParsimonyPressure, .Method = fmWeightedMaximize});
}

TEST(BloatEffectTest, LexicographicPressureHoldsProgramsDownWhereFitnessesAreEqual) {
  ExpectSmaller({.Strategy = bsLexicographicParsimonyPressure, .Generations = 10, .ErrorStep = 0.5});
}

// --- One seed, one run -------------------------------------------------------------------------------------

// Of the programs and the fitnesses of a population.
template <class TProgramming>
std::uint64_t Fingerprint(TProgramming& Component) {
  tests::TFingerprint Taken;
  for (auto& Individual : Component.Population()) {
    Taken.Take(Program(Individual));
    char Bits[32];
    const int Length = std::snprintf(Bits, sizeof Bits, "%a", Individual.Fitness());
    Taken.Take({Bits, static_cast<std::size_t>(Length)});
  }
  return Taken.Hash();
}

TEST(ProgramRunTest, ASeedGivesTheSameRunOnEveryCompiler) {
  std::string Fingerprints;
  for (int Strategy = bsNone; Strategy <= bsLexicographicParsimonyPressure; ++Strategy) {
    TRun Run(
        {.Strategy = static_cast<TGPBloatStrategy>(Strategy), .Seed = 3, .Generations = 6, .BloatLimit = 9});
    Fingerprints += std::to_string(Fingerprint(Run.Component) % 100'000) + ' ';
  }
  EXPECT_EQ(Fingerprints,
            "50043 2845 34767 7777 7112 97102 67988 70925 21492 29251 59209 18644 73057 62880 9921 "
            "74841 44789 45010 ");
  TRun<TQXBinaryGeneticProgramming> Binary({.Seed = 3, .Generations = 6});
  EXPECT_EQ(Fingerprint(Binary.Component) % 100'000, 37963U);
}

TEST(ProgramRunTest, VariantProgramsEvolve) {
  SeedRandom(5);
  TQXGeneticProgrammingVariant Component;
  AddStandardInstructions(Component.Instructions(), sgBoolean);
  Component.Instructions().Add().SetName("a");
  Component.Instructions().Add().SetName("b");
  TQXGPVariantContext Context;
  Component.OnEvaluateFitness = [&](TQXGeneticProgrammingVariant&, auto& Item, double& Fitness) {
    Fitness = 0;
    for (int Case = 0; Case < 4; ++Case) {
      const bool a = (Case & 1) != 0;
      const bool b = (Case & 2) != 0;
      Context.Values().AddOrSetValue("a", a);
      Context.Values().AddOrSetValue("b", b);
      Fitness += Item.Execute(&Context).AsBoolean() == (a == b) ? 0 : 1; // neither of the functions does it
    }
  };
  Component.SetFitnessCutoff(0);
  Component.SetUseFitnessCutoff(true);
  Component.SetInitializationMethod(imGrow);
  Component.SetInitializationDepth(3);
  Component.Evolve(50);
  EXPECT_EQ(Component.FittestIndividual()->Fitness(), 0);
}

} // namespace
} // namespace qx
