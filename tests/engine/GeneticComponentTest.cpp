#include "support/ScriptedRandom.h"
#include "support/TestComponent.h"
#include <qx/engine/QXGeneticBase.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace qx {
namespace {

using tests::TTestComponent;

TEST(GeneticComponent, StartsWithItsDefaults) {
  TTestComponent Component;
  EXPECT_EQ(Component.InitialPopulation(), 100);
  EXPECT_EQ(Component.InitialDuplicatesRetries(), 10);
  EXPECT_EQ(Component.CrossoverProbability(), 0.98);
  EXPECT_EQ(Component.MutationProbability(), 0.01);
  EXPECT_EQ(Component.InversionProbability(), 0.1);
  EXPECT_EQ(Component.Operations().Bits(), 7U);
  EXPECT_EQ(Component.SelectionMethod(), smStochasticTournament);
  EXPECT_EQ(Component.TournamentField(), 2);
  EXPECT_EQ(Component.ElitistPct(), 0.1);
  EXPECT_EQ(Component.FitnessMethod(), fmMinimize);
  EXPECT_EQ(Component.FitnessCutoff(), 1);
  EXPECT_FALSE(Component.UseFitnessCutoff());
  EXPECT_EQ(Component.DiversityLimit(), 0.02);
  EXPECT_FALSE(Component.UseDiversityLimit());
  EXPECT_EQ(Component.GenerationLimit(), 0);
  EXPECT_FALSE(Component.UseGenerationLimit());
  EXPECT_EQ(Component.Generation(), 0);
  EXPECT_FALSE(Component.Halt());
  EXPECT_FALSE(Component.Initialized());
  EXPECT_EQ(Component.Population().Count(), 0);
  EXPECT_EQ(Component.PreviousGeneration(), nullptr);
  EXPECT_EQ(Component.FittestIndividual(), nullptr);
}

TEST(GeneticComponent, WritesAreClamped) {
  TTestComponent Component;
  Component.SetMutationProbability(1.5);
  EXPECT_EQ(Component.MutationProbability(), 1);
  Component.SetMutationProbability(-0.2);
  EXPECT_EQ(Component.MutationProbability(), 0);
  Component.SetCrossoverProbability(-1);
  EXPECT_EQ(Component.CrossoverProbability(), 0);
  Component.SetInversionProbability(7);
  EXPECT_EQ(Component.InversionProbability(), 1);
  Component.SetElitistPct(1.01);
  EXPECT_EQ(Component.ElitistPct(), 1);
  Component.SetDiversityLimit(-3);
  EXPECT_EQ(Component.DiversityLimit(), 0);
  Component.SetTournamentField(1);
  EXPECT_EQ(Component.TournamentField(), 2);
  Component.SetGenerationLimit(0);
  EXPECT_EQ(Component.GenerationLimit(), 1);
  Component.SetInitialPopulation(-5);
  EXPECT_EQ(Component.InitialPopulation(), 0);
  Component.SetInitialDuplicatesRetries(-5);
  EXPECT_EQ(Component.InitialDuplicatesRetries(), 0);
  Component.SetFitnessCutoff(-1e9);
  EXPECT_EQ(Component.FitnessCutoff(), -1e9);
  Component.SetMutationProbability(std::numeric_limits<double>::infinity());
  EXPECT_EQ(Component.MutationProbability(), 1);
}

TEST(GeneticComponent, NotANumberIsRefusedByThePropertysName) {
  TTestComponent Component;
  const auto Refused = [](auto Write, const std::string& Name) {
    try {
      Write();
      ADD_FAILURE() << Name;
    } catch (const std::invalid_argument& Error) {
      EXPECT_EQ(Error.what(), Name + " must be a number, not NaN");
    }
  };
  Refused([&] { Component.SetCrossoverProbability(NAN); }, "CrossoverProbability");
  Refused([&] { Component.SetMutationProbability(NAN); }, "MutationProbability");
  Refused([&] { Component.SetInversionProbability(NAN); }, "InversionProbability");
  Refused([&] { Component.SetElitistPct(NAN); }, "ElitistPct");
  Refused([&] { Component.SetDiversityLimit(NAN); }, "DiversityLimit");
  EXPECT_EQ(Component.ElitistPct(), 0.1);
  EXPECT_THROW(Component.SetFitnessMethod(static_cast<TGAFitnessMethod>(4)), std::out_of_range);
  EXPECT_THROW(Component.SetOperations(TGAGeneticOperations::FromBits(255)), std::out_of_range);
  EXPECT_EQ(Component.Operations().Bits(), 7U);
}

TEST(GeneticComponent, TheFactoryMakesAPopulationOfTheItemClass) {
  struct TSpecial : TQXIndividual {};
  TTestComponent Component;
  const auto Population = Component.CreatePopulation(ItemClassOf<TSpecial>());
  EXPECT_EQ(Population->Owner(), &Component);
  EXPECT_EQ(Population->ItemClass().Name(), "TSpecial");
  EXPECT_EQ(Component.Population().ItemClass().Name(), "TQXIndividual");
}

TEST(GeneticComponent, TheMostDerivedFactoryIsTheOneThatCounts) {
  struct TSpecial : TQXIndividual {};
  struct TDescendant : TTestComponent {
    std::unique_ptr<TQXPopulation> CreatePopulation(TItemClass<TQXIndividual>) override {
      return std::make_unique<TQXPopulation>(this, ItemClassOf<TSpecial>());
    }
  } Component;
  Component.Population().Add();
  Component.SetPreviousGeneration(Component.Population());
  EXPECT_NE(dynamic_cast<TSpecial*>(&Component.Population()[0]), nullptr);
  EXPECT_NE(dynamic_cast<TSpecial*>(&(*Component.PreviousGeneration())[0]), nullptr);
}

TEST(GeneticComponent, TheFittestReferenceGoesWithItsIndividual) {
  TTestComponent Component;
  Component.Start({2, 1, 3});
  EXPECT_EQ(Component.FittestIndividual(), &Component.Population()[1]);
  Component.Population().Delete(0);
  EXPECT_NE(Component.FittestIndividual(), nullptr);
  const auto Extracted = Component.Population().Extract(*Component.FittestIndividual());
  EXPECT_EQ(Component.FittestIndividual(), nullptr);
  Component.EvaluateFitness();
  Component.Population().Clear();
  EXPECT_EQ(Component.FittestIndividual(), nullptr);
}

TEST(GeneticComponent, IsFinishedByRawFitnessInTheMethodsDirection) {
  TTestComponent Component;
  Component.Start({2, 5});
  Component.SetFitnessCutoff(2);
  EXPECT_FALSE(Component.IsFinished());
  Component.SetUseFitnessCutoff(true);
  EXPECT_TRUE(Component.IsFinished());
  Component.SetFitnessCutoff(1.9);
  EXPECT_FALSE(Component.IsFinished());
  Component.OnEvaluateWeightedFitness = [](auto&, auto&, double& Fitness) { Fitness = 0; };
  for (const auto Method : {fmMaximize, fmWeightedMaximize}) {
    Component.SetFitnessMethod(Method);
    Component.EvaluateFitness();
    Component.SetFitnessCutoff(5);
    EXPECT_TRUE(Component.IsFinished());
    Component.SetFitnessCutoff(5.1);
    EXPECT_FALSE(Component.IsFinished());
  }
}

TEST(GeneticComponent, WithoutAFittestTheCutoffDoesNotHold) {
  TTestComponent Component;
  Component.SetUseFitnessCutoff(true);
  Component.SetFitnessCutoff(100);
  EXPECT_FALSE(Component.IsFinished());
}

TEST(GeneticComponent, IsFinishedBelowTheDiversityLimitOnly) {
  TTestComponent Component;
  Component.Start({1, 3}); // diversity 2/3
  Component.SetUseDiversityLimit(true);
  Component.SetDiversityLimit(2.0 / 3);
  EXPECT_FALSE(Component.IsFinished());
  Component.SetDiversityLimit(0.7);
  EXPECT_TRUE(Component.IsFinished());
}

TEST(GeneticComponent, AGenerationLimitNeverWrittenFinishesAtOnce) {
  TTestComponent Component;
  Component.Start({1, 2});
  Component.SetUseGenerationLimit(true);
  EXPECT_TRUE(Component.IsFinished());
  Component.Evolve();
  EXPECT_EQ(Component.Generation(), 0);
}

TEST(GeneticComponentAssign, CopiesSettingsStatisticsAndBothGenerations) {
  TTestComponent Source;
  Source.SetSelectionMethod(smTournament);
  Source.SetOperations({goMutate});
  Source.Start({3, 1, 2});
  SeedRandom(1);
  Source.Evolve();
  Source.SetMutationProbability(0.3);
  Source.SetTournamentField(5);
  Source.SetUseDiversityLimit(true);
  Source.SetGenerationLimit(9);
  Source.SetHalt(true);
  TTestComponent Copy;
  Copy.SetInitialPopulation(7);
  Copy.Assign(Source);
  EXPECT_EQ(Copy.Generation(), 1);
  EXPECT_EQ(Copy.MutationProbability(), 0.3);
  EXPECT_EQ(Copy.SelectionMethod(), smTournament);
  EXPECT_EQ(Copy.TournamentField(), 5);
  EXPECT_TRUE(Copy.UseDiversityLimit());
  EXPECT_EQ(Copy.GenerationLimit(), 9);
  EXPECT_TRUE(Copy.Initialized());
  EXPECT_EQ(Copy.MaxFitness(), Source.MaxFitness());
  EXPECT_EQ(Copy.MinFitness(), Source.MinFitness());
  EXPECT_EQ(Copy.AvgFitness(), Source.AvgFitness());
  EXPECT_EQ(Copy.AvgWeightedFitness(), Source.AvgWeightedFitness());
  ASSERT_EQ(Copy.Population().Count(), 3);
  ASSERT_EQ(Copy.PreviousGeneration()->Count(), 3);
  EXPECT_NE(Copy.PreviousGeneration(), Source.PreviousGeneration());
  EXPECT_EQ(Copy.FittestIndividual(), &Copy.Population()[Source.FittestIndividual()->Index()]);
  EXPECT_EQ(Copy.InitialPopulation(), 7);
  EXPECT_EQ(Copy.Operations().Bits(), 7U);
  EXPECT_FALSE(Copy.Halt());
  EXPECT_FALSE(Copy.OnEvaluateFitness);
}

TEST(GeneticComponentAssign, NothingDanglesWhenEitherDies) {
  TTestComponent Copy;
  {
    TTestComponent Source;
    Source.SetSelectionMethod(smElitist);
    Source.Start({3, 1, 2});
    Copy.Assign(Source);
  }
  Copy.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) { Fitness = std::stod(Item.Name()); };
  SeedRandom(1);
  EXPECT_EQ(Copy.Evolve(5), 5);
  EXPECT_EQ(Copy.FittestIndividual()->Fitness(), 1);
}

TEST(GeneticComponentAssign, ACopyStillOwesTheStatisticsThatItsSourceOwes) {
  TTestComponent Source;
  Source.Fill({-5, 3});
  Source.SetInitialPopulation(0);
  const TQXFitnessEvent Handler = Source.OnEvaluateFitness;
  Source.OnEvaluateFitness = nullptr;
  Source.Initialize();
  Source.SetUseFitnessCutoff(true);
  Source.SetFitnessCutoff(-5);
  Source.OnEvaluateFitness = Handler;
  TTestComponent Copy;
  Copy.Start({1, 2});
  Copy.OnEvaluateFitness = Handler;
  Copy.Assign(Source);
  Copy.Evolve();
  EXPECT_EQ(Copy.Generation(), 0) << "finished before it began";
}

TEST(GeneticComponentAssign, ASourceThatCannotBeEvaluatedChangesNothing) {
  TTestComponent Source;
  Source.Fill({1, 2});
  Source.OnEvaluateFitness = [](auto&, auto&, double&) { throw std::runtime_error("no fitness"); };
  Source.SetMutationProbability(0.7);
  TTestComponent Copy;
  Copy.Start({4});
  EXPECT_THROW(Copy.Assign(Source), std::runtime_error);
  EXPECT_EQ(Copy.Population().Count(), 1);
  EXPECT_EQ(Copy.MutationProbability(), 0.01);
}

TEST(GeneticComponentAssign, ACustomSelectionComesWithoutItsHandler) {
  TTestComponent Source;
  Source.Start({1, 2});
  Source.OnSelection = [](auto&, auto& Population, auto& Parent) { Parent = &Population[0]; };
  TTestComponent Copy;
  Copy.Assign(Source);
  Copy.OnEvaluateFitness = Source.OnEvaluateFitness;
  EXPECT_EQ(Copy.SelectionMethod(), smCustom);
  EXPECT_FALSE(Copy.OnSelection);
  try {
    Copy.Evolve();
    FAIL();
  } catch (const EGAException& Error) {
    EXPECT_STREQ(Error.what(), "No custom selection function defined");
  }
}

TEST(GeneticComponentAssign, ToItselfAndFromAnEmptyComponent) {
  TTestComponent Component;
  Component.Start({3, 1});
  Component.Assign(Component);
  EXPECT_EQ(Component.Population().Count(), 2);
  EXPECT_EQ(Component.FittestIndividual(), &Component.Population()[1]);
  TTestComponent Empty;
  Component.Assign(Empty);
  EXPECT_EQ(Component.Population().Count(), 0);
  EXPECT_EQ(Component.PreviousGeneration(), nullptr);
  EXPECT_EQ(Component.FittestIndividual(), nullptr);
  EXPECT_FALSE(Component.Initialized());
  EXPECT_THROW(Component.Assign(TComponent()), std::invalid_argument);
}

TEST(GeneticComponent, AFreshComponentClearsGenerationLimitByWritingZero) {
  TTestComponent Component;
  Component.SetGenerationLimit(-4);
  EXPECT_EQ(Component.GenerationLimit(), 1);
}

} // namespace
} // namespace qx
