#include "support/NonFinite.h"
#include "support/ScriptedRandom.h"
#include "support/TestComponent.h"
#include <qx/engine/QXGeneticBase.h>

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

namespace qx {
namespace {

using tests::I;
using tests::Infinity;
using tests::R;
using tests::TScriptedRandom;
using tests::TTestComponent;

int Picked(TTestComponent& Component) { return Component.SelectParent(Component.Population()).Index(); }

int PickedAt(TTestComponent& Component, double Draw) {
  const TScriptedRandom Script{R(Draw)};
  return Picked(Component);
}

TEST(Selection, AMethodBindsItsSelection) {
  TTestComponent Component;
  EXPECT_EQ(Component.SelectionMethod(), smStochasticTournament);
  EXPECT_TRUE(Component.OnSelection);
  Component.SetSelectionMethod(smCustom);
  EXPECT_FALSE(Component.OnSelection);
  EXPECT_TRUE(Component.IsCustomSelection());
  Component.SetSelectionMethod(smRandom);
  EXPECT_TRUE(Component.OnSelection);
  EXPECT_THROW(Component.SetSelectionMethod(static_cast<TGASelectionMethod>(6)), std::out_of_range);
  EXPECT_EQ(Component.SelectionMethod(), smRandom);
}

TEST(Selection, TheBuiltInHandlerCanBeReadAndCalled) {
  TTestComponent Component;
  Component.Start({1, 2, 3});
  Component.SetSelectionMethod(smRandom);
  const TScriptedRandom Script{I(2, 3), I(1, 3)};
  TQXIndividual* Parent = nullptr;
  Component.OnSelection(Component, Component.Population(), Parent);
  EXPECT_EQ(Parent, &Component.Population()[2]);
  TTestComponent Other;
  Other.Start({7, 8, 9});
  Other.OnSelection = Component.OnSelection;
  EXPECT_EQ(&Other.SelectParent(Other.Population()), &Other.Population()[1]);
}

TEST(Selection, AssigningAHandlerMakesItCustomAndClearingMakesItRoulette) {
  TTestComponent Component;
  Component.Start({1, 2});
  Component.OnSelection = [](auto&, TQXPopulation& Population, TQXIndividual*& Parent) {
    EXPECT_EQ(Parent, nullptr);
    Parent = &Population[1];
  };
  EXPECT_EQ(Component.SelectionMethod(), smCustom);
  EXPECT_EQ(Picked(Component), 1);
  Component.OnSelection = nullptr;
  EXPECT_EQ(Component.SelectionMethod(), smRoulette);
  EXPECT_TRUE(Component.OnSelection);
}

TEST(Selection, ClearingTheHandlerOfRouletteItselfLeavesNone) {
  TTestComponent Component;
  Component.Start({1, 2});
  Component.SetSelectionMethod(smRoulette);
  Component.OnSelection = nullptr;
  EXPECT_EQ(Component.SelectionMethod(), smRoulette);
  EXPECT_THROW(Picked(Component), EGAException);
}

TEST(Selection, WithoutAHandlerItRaises) {
  TTestComponent Component;
  Component.Start({1, 2});
  Component.SetSelectionMethod(smCustom);
  try {
    Picked(Component);
    FAIL();
  } catch (const EGAException& Error) {
    EXPECT_STREQ(Error.what(), "No custom selection function defined");
  }
}

TEST(Selection, AHandlerThatLeavesNoParentIsNamed) {
  TTestComponent Component;
  Component.Start({1, 2});
  Component.OnSelection = [](auto&, auto&, auto&) {};
  EXPECT_THROW(Picked(Component), std::logic_error);
}

TEST(Selection, AnEmptyPopulationRaisesUnderEveryMethod) {
  for (const auto Method : {smRoulette, smRandom, smTournament, smStochasticTournament, smElitist}) {
    TTestComponent Component;
    Component.Start({});
    Component.SetSelectionMethod(Method);
    EXPECT_THROW(Picked(Component), std::out_of_range) << EnumName(Method);
  }
}

TEST(Selection, AnOverrideInADescendantIsWhatRuns) {
  struct TDescendant : TTestComponent {
    void SelectTournament(TQXCustomGeneticComponent&, TQXPopulation& Population,
                          TQXIndividual*& Parent) override {
      Parent = &Population[1];
    }
  } Component;
  Component.Start({1, 2, 3});
  Component.SetSelectionMethod(smTournament);
  const TScriptedRandom Script{};
  EXPECT_EQ(Picked(Component), 1);
}

TEST(Selection, RandomTakesOneIntegerDraw) {
  TTestComponent Component;
  Component.Start({1, 2, 3});
  Component.SetSelectionMethod(smRandom);
  const TScriptedRandom Script{I(2, 3)};
  EXPECT_EQ(Picked(Component), 2);
}

TEST(Roulette, AMinimizingRunGivesTheWorstNoShare) {
  TTestComponent Component;
  Component.SetSelectionMethod(smRoulette);
  Component.Start({1, 2, 3});
  EXPECT_EQ(PickedAt(Component, 0), 0);
  EXPECT_EQ(PickedAt(Component, 0.66), 0);
  EXPECT_EQ(PickedAt(Component, 0.67), 1);
  EXPECT_EQ(PickedAt(Component, 1 - 0x1p-53), 1);
}

TEST(Roulette, AMaximizingRunSharesByFitness) {
  TTestComponent Component;
  Component.SetFitnessMethod(fmMaximize);
  Component.SetSelectionMethod(smRoulette);
  Component.Start({1, 2, 0, 5});
  EXPECT_EQ(PickedAt(Component, 0.12), 0);
  EXPECT_EQ(PickedAt(Component, 0.125), 1) << "the first share that exceeds the draw";
  EXPECT_EQ(PickedAt(Component, 0.375), 3);
  EXPECT_EQ(PickedAt(Component, 0.99), 3);
}

TEST(Roulette, WeightedMethodsShareByWeightedFitness) {
  for (const bool Maximize : {false, true}) {
    TTestComponent Component;
    Component.SetFitnessMethod(Maximize ? fmWeightedMaximize : fmWeightedMinimize);
    Component.SetSelectionMethod(smRoulette);
    Component.OnEvaluateWeightedFitness = [](auto&, auto& Item, double& Fitness) {
      Fitness = 4 - Item.Fitness();
    };
    Component.Start({1, 2, 3}); // weighted 3, 2, 1
    EXPECT_EQ(PickedAt(Component, 0.49), Maximize ? 0 : 2);
    EXPECT_EQ(PickedAt(Component, 0.99), 2);
    EXPECT_EQ(PickedAt(Component, 0.2), Maximize ? 0 : 1);
  }
}

TEST(Roulette, EqualFitnessesFallBackToAUniformDraw) {
  for (const auto Method : {smRoulette, smElitist}) {
    TTestComponent Component;
    Component.SetSelectionMethod(Method);
    Component.Start({2, 2, 2});
    const TScriptedRandom Script{I(1, 3)};
    EXPECT_EQ(Picked(Component), 1);
  }
}

TEST(Roulette, AMaximizingRunWithSumZeroHasNoShares) {
  TTestComponent Component;
  Component.SetFitnessMethod(fmMaximize);
  Component.SetSelectionMethod(smRoulette);
  Component.Start({-1, 1});
  EXPECT_EQ(Component.GetNormalizedFitness(1), 0);
  EXPECT_EQ(PickedAt(Component, 0), 0); // one draw, which says the place
  EXPECT_EQ(PickedAt(Component, 0.49), 0);
  EXPECT_EQ(PickedAt(Component, 0.5), 1);
  EXPECT_EQ(PickedAt(Component, 1 - 0x1p-53), 1);
}

TEST(Roulette, OfFitnessesWhoseSumIsZeroEachPlaceIsAsLikelyAsAnyOther) {
  TTestComponent Component;
  Component.SetFitnessMethod(fmMaximize);
  Component.SetSelectionMethod(smRoulette);
  Component.Start({-1, 1, -2, 2});
  for (int Place = 0; Place < 4; ++Place) {
    EXPECT_EQ(PickedAt(Component, Place / 4.0), Place);
  }
  Component.SetSelectionMethod(smStochasticTournament);
  EXPECT_EQ(Component.Evolve(50), 50);
}

// Seven shares of one seventh add up to less than 1.
TEST(Roulette, ADrawAboveAllSharesTakesTheLastOneThatHasAShare) {
  TTestComponent Component;
  Component.SetFitnessMethod(fmMaximize);
  Component.SetSelectionMethod(smRoulette);
  Component.Start({1, 1, 1, 1, 1, 1, 1, 0, 0, NAN});
  Component.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = 1e-30; };
  Component.Population()[7].MarkStale();
  Component.EvaluateFitness();
  EXPECT_EQ(PickedAt(Component, 1 - 0x1p-53), 7); // as small as its share is
}

// What reads fitnesses calls handlers, which may change the method meanwhile.
TEST(Selection, AMethodThatChangesWhileItIsPreparedIsPreparedWhenItIsWanted) {
  for (const TGASelectionMethod Method : {smElitist, smRoulette, smStochasticTournament}) {
    TTestComponent Component;
    Component.Start({1, 2, 3, 4});
    Component.SetSelectionMethod(Method);
    Component.SetFitnessMethod(fmWeightedMaximize);
    int Calls = 0;
    Component.OnEvaluateWeightedFitness = [&](auto& Sender, auto& Item, double& Fitness) {
      Fitness = Item.Fitness();
      Sender.SetSelectionMethod(++Calls % 2 == 0 ? Method : smRandom);
    };
    SeedRandom(1);
    EXPECT_NO_THROW(Component.PrioritizePopulation());
    EXPECT_NO_THROW(Component.CalculateCumulativeNormalizedFitnesses());
    EXPECT_EQ(Component.Evolve(3), 3);
  }
}

TEST(Roulette, NotANumberHasNoShare) {
  TTestComponent Component;
  Component.SetSelectionMethod(smRoulette);
  Component.Start({NAN, 1, NAN, 1});
  EXPECT_EQ(PickedAt(Component, 0), 1);
  EXPECT_EQ(PickedAt(Component, 0.49), 1);
  EXPECT_EQ(PickedAt(Component, 0.51), 3);
  Component.SetFitnessMethod(fmMaximize);
  Component.EvaluateFitness();
  EXPECT_EQ(PickedAt(Component, 0), 1);
  EXPECT_EQ(PickedAt(Component, 0.99), 3);
}

TEST(Roulette, AmongZerosAMaximizingRunTakesThePlaceThatTheDrawSays) {
  for (const double Out : {static_cast<double>(NAN), -Infinity}) {
    TTestComponent Component;
    Component.SetFitnessMethod(fmMaximize);
    Component.SetSelectionMethod(smRoulette);
    Component.Start({0, Out, 0, NAN});
    EXPECT_EQ(PickedAt(Component, 0.49), 1);
    EXPECT_EQ(PickedAt(Component, 0.51), 2);
    EXPECT_EQ(PickedAt(Component, 1 - 0x1p-53), 3);
  }
}

TEST(Roulette, InfiniteFitnessesLeaveTheFiniteOnesTheirShares) {
  TTestComponent Component;
  Component.SetSelectionMethod(smRoulette);
  Component.Start({Infinity, 1, 2, Infinity}); // ruled out by a host
  EXPECT_EQ(PickedAt(Component, 0), 1);
  EXPECT_EQ(PickedAt(Component, 0.51), 2);
  EXPECT_EQ(PickedAt(Component, 0.99), 2);
  Component.SetFitnessMethod(fmMaximize);
  Component.Start({-Infinity, 1, 3});
  EXPECT_EQ(PickedAt(Component, 0), 1);
  EXPECT_EQ(PickedAt(Component, 0.26), 2);
  Component.Start({1e308, 1e308, 1.5e308}); // the sum is infinite
  EXPECT_EQ(PickedAt(Component, 0.28), 0);
  EXPECT_EQ(PickedAt(Component, 0.29), 1);
  EXPECT_EQ(PickedAt(Component, 0.58), 2);
}

TEST(Roulette, SharesThatDoNotRiseAreSearchedAsTheyStand) {
  TTestComponent Component;
  Component.SetFitnessMethod(fmMaximize);
  Component.SetSelectionMethod(smRoulette);
  Component.Start({2, -1, 0, 1}); // shares 1, 0.5, 0.5, 1 of the sum 2
  EXPECT_EQ(PickedAt(Component, 0.6), 3) << "halving goes up at the third entry";
}

TEST(Roulette, PicksInProportionToItsShares) {
  TTestComponent Component;
  Component.SetFitnessMethod(fmMaximize);
  Component.SetSelectionMethod(smRoulette);
  Component.Start({1, 2, 3, 4});
  SeedRandom(1);
  constexpr int Picks = 100000;
  int Counts[4] = {};
  for (int P = 0; P < Picks; ++P) {
    ++Counts[Picked(Component)];
  }
  double ChiSquared = 0;
  for (int P = 0; P < 4; ++P) {
    const double Expected = Picks * (P + 1) / 10.0;
    ChiSquared += (Counts[P] - Expected) * (Counts[P] - Expected) / Expected;
  }
  EXPECT_LT(ChiSquared, 21.1); // 3 degrees of freedom, chance 0.0001
}

TEST(Tournament, TwoContestantsAreDrawnAndTheFirstWinsATie) {
  TTestComponent Component;
  Component.SetSelectionMethod(smTournament);
  Component.Start({2, 1, 2});
  const TScriptedRandom Script{I(0, 3), I(1, 3), I(0, 3), I(2, 3), I(2, 3), I(0, 3)};
  EXPECT_EQ(Picked(Component), 1);
  EXPECT_EQ(Picked(Component), 0);
  EXPECT_EQ(Picked(Component), 2);
}

TEST(Tournament, AFieldOfNDrawsN) {
  TTestComponent Component;
  Component.SetSelectionMethod(smTournament);
  Component.SetTournamentField(4);
  Component.Start({5, 4, 3, 2});
  const TScriptedRandom Script{I(1, 4), I(0, 4), I(2, 4), I(1, 4)};
  EXPECT_EQ(Picked(Component), 2);
}

TEST(Tournament, TheStochasticOneDrawsItsChallengersByRoulette) {
  TTestComponent Component;
  Component.SetTournamentField(3);
  Component.Start({1, 2, 3});
  const TScriptedRandom Script{I(2, 3), R(0.7), R(0.1)};
  EXPECT_EQ(Picked(Component), 0);
}

TEST(Tournament, WeightedMethodsCompareWeightedFitness) {
  TTestComponent Component;
  Component.SetSelectionMethod(smTournament);
  Component.SetFitnessMethod(fmWeightedMinimize);
  Component.OnEvaluateWeightedFitness = [](auto&, auto& Item, double& Fitness) { Fitness = -Item.Fitness(); };
  Component.Start({1, 2});
  const TScriptedRandom Script{I(0, 2), I(1, 2)};
  EXPECT_EQ(Picked(Component), 1);
}

class Elitist : public testing::Test {
protected:
  std::string Picks(int Count) {
    const TScriptedRandom Script{};
    std::string Text;
    for (int P = 0; P < Count; ++P) {
      Text += std::to_string(Picked(Component)) + " ";
    }
    return Text;
  }

  TTestComponent Component;
};

TEST_F(Elitist, TheBestTakeTurnsUpToTheirShareAndOneMore) {
  Component.SetSelectionMethod(smElitist);
  Component.SetElitistPct(0.25);
  Component.Start({5, 3, 8, 1, 9, 2, 7, 6});
  EXPECT_EQ(Picks(7), "3 5 1 3 5 1 3 ");
}

TEST_F(Elitist, TheShareIsRoundedHalfToEven) {
  Component.SetSelectionMethod(smElitist);
  Component.SetElitistPct(0.5);
  Component.Start({1, 2, 3, 4, 5}); // 2.5 rounds to 2
  EXPECT_EQ(Picks(4), "0 1 2 0 ");
}

TEST_F(Elitist, AShareOfZeroPicksTheBestOnly) {
  Component.SetSelectionMethod(smElitist);
  Component.SetElitistPct(0);
  Component.Start({2, 1});
  EXPECT_EQ(Picks(3), "1 1 1 ");
}

TEST_F(Elitist, AShareOfAllStartsAgainBehindTheLast) {
  Component.SetSelectionMethod(smElitist);
  Component.SetElitistPct(1);
  Component.SetFitnessMethod(fmMaximize);
  Component.Start({1, 3, 2});
  EXPECT_EQ(Picks(5), "1 2 0 1 2 ");
}

TEST_F(Elitist, EachGenerationStartsWithTheBest) {
  Component.SetSelectionMethod(smElitist);
  Component.Start({2, 1, 3, 4, 5, 6, 7, 8, 9, 10});
  EXPECT_EQ(Picks(1), "1 ");
  Component.DoStartEvolve();
  Component.SwapGenerations();
  EXPECT_EQ(Picks(3), "1 0 1 ");
}

TEST_F(Elitist, KeysInSinglePrecisionTieInOrderOfIndex) {
  Component.SetSelectionMethod(smElitist);
  Component.SetElitistPct(1);
  Component.Fill({1, 1, 2});
  Component.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) {
    Fitness = Item.Index() == 2 ? 2 : 1 - 1e-12 * Item.Index();
  };
  Component.SetInitialPopulation(0);
  Component.Initialize();
  EXPECT_EQ(Component.FittestIndividual()->Index(), 1);
  EXPECT_EQ(Picks(3), "0 1 2 ");
}

TEST_F(Elitist, WeightedMethodsRankByWeightedFitness) {
  Component.SetSelectionMethod(smElitist);
  Component.SetFitnessMethod(fmWeightedMaximize);
  Component.OnEvaluateWeightedFitness = [](auto&, auto& Item, double& Fitness) { Fitness = -Item.Fitness(); };
  Component.Start({2, 1, 3, 4, 5});
  EXPECT_EQ(Picks(1), "1 ");
}

TEST_F(Elitist, DeletedIndividualsLeaveTheRanking) {
  Component.SetSelectionMethod(smElitist);
  Component.SetElitistPct(1);
  Component.Start({4, 1, 2, 3});
  Component.Population().Delete(1);
  EXPECT_EQ(Picks(3), "1 2 0 "); // the others moved up
}

TEST_F(Elitist, RanksBeforeItsFirstUse) {
  Component.Start({4, 1, 2, 3});
  Component.SetSelectionMethod(smElitist);
  EXPECT_EQ(Picks(1), "1 ");
}

TEST(Selection, ANewMethodIsPreparedBeforeTheGenerationsChangePlaces) {
  for (const auto Method : {smRoulette, smElitist}) {
    TTestComponent Component;
    Component.SetSelectionMethod(smTournament);
    Component.Start({3, 1, 2});
    Component.SetSelectionMethod(Method);
    Component.SetOperations({});
    const TQXPopulation* const Parents = &Component.Population();
    Component.OnInitializeChild = [&](auto&, TQXIndividual& Parent1, auto&, auto&) {
      EXPECT_EQ(Parent1.Collection(), Parents);
    };
    SeedRandom(1);
    Component.Evolve();
    EXPECT_EQ(Component.Generation(), 1);
  }
}

TEST(Selection, AMethodThatChangesWhileChildrenAreMadeStillSelectsParents) {
  for (const auto Method : {smRoulette, smStochasticTournament, smElitist}) {
    for (const auto Direction : {fmMinimize, fmMaximize}) {
      TTestComponent Component;
      Component.SetSelectionMethod(smTournament);
      Component.SetFitnessMethod(Direction);
      Component.SetOperations({});
      Component.Start({3, 1, 2, 5, 4, 9});
      const TQXPopulation* const Parents = &Component.Population();
      Component.OnReproduction = [&](auto& Sender, auto&, auto&) { Sender.SetSelectionMethod(Method); };
      Component.OnInitializeChild = [&](auto&, TQXIndividual& Parent1, auto&, auto&) {
        EXPECT_EQ(Parent1.Collection(), Parents);
      };
      SeedRandom(3);
      Component.Evolve();
    }
  }
}

TEST(Selection, AHandlerThatClearsItselfWhileChildrenAreMadeHandsOverToRoulette) {
  for (int Seed = 0; Seed < 100; ++Seed) {
    TTestComponent Component;
    Component.SetFitnessMethod(fmMaximize);
    Component.Start({3, 1, 2, 5, 4, 9});
    Component.OnSelection = [](auto& Sender, auto& Population, auto& Parent) {
      Parent = &Population[0];
      Sender.OnSelection = nullptr;
    };
    SeedRandom(static_cast<std::uint64_t>(Seed));
    Component.Evolve();
    EXPECT_EQ(Component.SelectionMethod(), smRoulette);
  }
}

TEST(Selection, AGenerationAfterAFailedOneSelectsItsParentsFromTheRightPopulation) {
  for (const auto Method : {smRoulette, smElitist}) {
    TTestComponent Component;
    Component.SetSelectionMethod(Method);
    Component.SetOperations({});
    Component.Start({3, 1, 2, 5, 4, 9});
    int Calls = 0;
    Component.OnReproduction = [&](auto&, auto&, auto&) {
      if (++Calls == 2) {
        throw std::runtime_error("handler");
      }
    };
    SeedRandom(4);
    EXPECT_THROW(Component.Evolve(), std::runtime_error);
    const TQXPopulation* const Parents = &Component.Population();
    Component.OnInitializeChild = [&](auto&, TQXIndividual& Parent1, auto&, auto&) {
      EXPECT_EQ(Parent1.Collection(), Parents);
    };
    Component.Evolve();
    EXPECT_EQ(Component.Generation(), 1);
    EXPECT_EQ(Component.FittestIndividual()->Collection(), &Component.Population());
  }
}

TEST(Selection, SwappedGenerationsAreJudgedAnew) {
  TTestComponent Component;
  Component.SetSelectionMethod(smElitist);
  Component.SetOperations({});
  Component.Start({3, 1, 2});
  Component.SwapGenerations();
  const TQXPopulation* const Parents = &Component.Population();
  Component.OnInitializeChild = [&](auto&, TQXIndividual& Parent1, auto&, auto&) {
    EXPECT_EQ(Parent1.Collection(), Parents);
  };
  Component.Evolve();
}

TEST(Selection, ANewFitnessMethodIsJudgedBeforeItsFirstGeneration) {
  TTestComponent Component;
  Component.SetSelectionMethod(smElitist);
  Component.SetElitistPct(0);
  Component.SetOperations({});
  Component.Start({3, 1, 2, 10});
  Component.SetFitnessMethod(fmMaximize);
  Component.Evolve();
  EXPECT_EQ(Component.MinFitness(), 10);
}

TEST(Selection, APopulationWrittenBetweenGenerationsIsJudgedAnew) {
  TTestComponent Other;
  Other.Start({1, 1, 1, 2});
  TTestComponent Component;
  Component.SetFitnessMethod(fmMaximize);
  Component.Start({30, 10, 20, 50});
  SeedRandom(5);
  for (int Generation = 0; Generation < 50; ++Generation) {
    Component.SetPopulation(Other.Population());
    Component.Evolve();
  }
  EXPECT_LE(Component.MaxFitness(), 2);
}

TEST(Selection, AnIndividualDeletedBetweenGenerationsIsNotSelectedAnyMore) {
  for (const auto Direction : {fmMinimize, fmMaximize})
    for (const auto Method : {smRoulette, smRandom, smTournament, smStochasticTournament, smElitist}) {
      TTestComponent Component;
      Component.SetSelectionMethod(Method);
      Component.SetFitnessMethod(Direction);
      Component.Start({3, 1, 2, 5});
      SeedRandom(2);
      for (int Generation = 0; Generation < 3; ++Generation) {
        Component.Population().Delete(Component.FittestIndividual()->Index());
        Component.Evolve();
      }
      EXPECT_EQ(Component.Generation(), 3) << EnumName(Method);
    }
}

} // namespace
} // namespace qx
