#include "support/Allocations.h"
#include <qx/genetic_algorithm/QXGeneticAlgorithm.h>

#include <gtest/gtest.h>

namespace qx {
namespace {

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

} // namespace
} // namespace qx
