#include "support/NonFinite.h"
#include "support/TestComponent.h"
#include <qx/engine/QXGeneticBase.h>

#include <gtest/gtest.h>

#include <cmath>

namespace qx {
namespace {

using tests::Infinity;
using tests::TTestComponent;

TEST(FitnessStatistics, ExtremesSumAndFittestOfThePopulation) {
  TTestComponent Component;
  Component.Start({4, 1, 3, 1, 6});
  EXPECT_EQ(Component.MaxFitness(), 6);
  EXPECT_EQ(Component.MinFitness(), 1);
  EXPECT_EQ(Component.AvgFitness(), 3);
  EXPECT_EQ(Component.Diversity(), 0.5);
  EXPECT_EQ(Component.FittestIndividual(), &Component.Population()[1]) << "the first of equals";
  Component.SetFitnessMethod(fmMaximize);
  Component.EvaluateFitness();
  EXPECT_EQ(Component.FittestIndividual(), &Component.Population()[4]);
}

TEST(FitnessStatistics, TheFittestIsJudgedByRawFitnessEvenUnderAWeightedMethod) {
  TTestComponent Component;
  Component.Fill({1, 2, 3});
  Component.SetInitialPopulation(0);
  Component.SetFitnessMethod(fmWeightedMinimize);
  Component.OnEvaluateWeightedFitness = [](auto&, TQXIndividual& Item, double& Fitness) {
    Fitness = 10 - Item.Fitness();
  };
  Component.Initialize();
  EXPECT_EQ(Component.FittestIndividual(), &Component.Population()[0]);
  EXPECT_EQ(Component.MinWeightedFitness(), 7);
  EXPECT_EQ(Component.MaxWeightedFitness(), 9);
  EXPECT_EQ(Component.AvgWeightedFitness(), 8);
  TQXIndividual& First = Component.Population()[0];
  TQXIndividual& Last = Component.Population()[2];
  EXPECT_EQ(Component.CompareFitness(First, Last, true), -1);
  EXPECT_EQ(Component.CompareFitness(First, Last, false), 1);
  EXPECT_EQ(&Component.Fittest(First, Last, false), &Last);
}

TEST(FitnessStatistics, EachMethodComparesInItsDirection) {
  TTestComponent Component;
  Component.Start({1, 2});
  TQXIndividual& Low = Component.Population()[0];
  TQXIndividual& High = Component.Population()[1];
  for (const auto Method : {fmMinimize, fmWeightedMinimize}) {
    Component.SetFitnessMethod(Method);
    EXPECT_EQ(Component.CompareFitness(Low, High, true), -1);
    EXPECT_EQ(Component.CompareFitness(High, Low, false), 1);
    EXPECT_EQ(&Component.Fittest(High, Low, true), &Low);
    EXPECT_EQ(Component.UnfitFitness(), 3.4e+38);
  }
  for (const auto Method : {fmMaximize, fmWeightedMaximize}) {
    Component.SetFitnessMethod(Method);
    EXPECT_EQ(Component.CompareFitness(Low, High, true), 1);
    EXPECT_EQ(Component.CompareFitness(High, Low, false), -1);
    EXPECT_EQ(&Component.Fittest(Low, High, false), &High);
    EXPECT_EQ(Component.UnfitFitness(), 1.5e-45);
  }
}

TEST(FitnessStatistics, OfEqualsTheFirstArgumentIsTheFittest) {
  TTestComponent Component;
  Component.Start({2, 2});
  TQXIndividual& First = Component.Population()[0];
  TQXIndividual& Second = Component.Population()[1];
  EXPECT_EQ(&Component.Fittest(First, Second, false), &First);
  EXPECT_EQ(&Component.Fittest(Second, First, true), &Second);
  EXPECT_EQ(Component.CompareFitness(First, Second, true), 0);
}

TEST(FitnessStatistics, DiversityWithoutAMaximumIsInfinite) {
  TTestComponent Component;
  Component.Start({-1, 0});
  EXPECT_EQ(Component.MaxFitness(), 0);
  EXPECT_EQ(Component.Diversity(), Infinity);
  Component.SetUseDiversityLimit(true);
  Component.SetDiversityLimit(1);
  EXPECT_FALSE(Component.IsFinished());
}

TEST(FitnessStatistics, AnEmptyPopulationHasZeroEverywhere) {
  TTestComponent Component;
  Component.Start({3, 5});
  Component.Population().Clear();
  EXPECT_EQ(Component.AvgFitness(), 4) << "the middle of the stored extremes";
  Component.EvaluateFitness();
  EXPECT_EQ(Component.MaxFitness(), 0);
  EXPECT_EQ(Component.MinFitness(), 0);
  EXPECT_EQ(Component.AvgFitness(), 0);
  EXPECT_EQ(Component.MaxWeightedFitness(), 0);
  EXPECT_EQ(Component.AvgWeightedFitness(), 0);
  EXPECT_EQ(Component.GetNormalizedFitness(3), 0);
}

TEST(FitnessStatistics, TheAverageDividesByThePresentCount) {
  TTestComponent Component;
  Component.Start({2, 4});
  Component.Population().Delete(1);
  EXPECT_EQ(Component.AvgFitness(), 6);
}

TEST(FitnessStatistics, NotANumberIsLeftOutOfThemAndIsNeverTheFittest) {
  TTestComponent Component;
  Component.Start({NAN, 1, 3, NAN});
  EXPECT_EQ(Component.MinFitness(), 1);
  EXPECT_EQ(Component.MaxFitness(), 3);
  EXPECT_EQ(Component.AvgFitness(), 2);
  EXPECT_EQ(Component.FittestIndividual(), &Component.Population()[1]);
  Component.SetFitnessMethod(fmMaximize);
  Component.EvaluateFitness();
  EXPECT_EQ(Component.FittestIndividual(), &Component.Population()[2]);
}

TEST(FitnessStatistics, WithoutAnyNumberTheyAreZero) {
  TTestComponent Component;
  Component.Start({NAN, NAN});
  EXPECT_EQ(Component.MaxFitness(), 0);
  EXPECT_EQ(Component.MinFitness(), 0);
  EXPECT_EQ(Component.AvgFitness(), 0);
  EXPECT_EQ(Component.FittestIndividual(), &Component.Population()[0]);
}

TEST(FitnessStatistics, WeightedFitnessIsReadOnceAPass) {
  TTestComponent Component;
  Component.Fill({1, 2, 3});
  Component.SetInitialPopulation(0);
  Component.SetSelectionMethod(smTournament);
  int Calls = 0;
  Component.OnEvaluateWeightedFitness = [&](auto&, auto& Item, double& Fitness) {
    ++Calls;
    Fitness = Item.Fitness();
  };
  Component.Initialize();
  EXPECT_EQ(Calls, 3);
  Component.SetFitnessMethod(fmWeightedMinimize);
  Calls = 0;
  Component.CalculateCumulativeNormalizedFitnesses();
  EXPECT_EQ(Calls, 3);
}

} // namespace
} // namespace qx
