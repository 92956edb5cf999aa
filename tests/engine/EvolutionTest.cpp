#include "support/ScriptedRandom.h"
#include "support/TestComponent.h"
#include <qx/engine/QXGeneticBase.h>

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <support/SmallGeneticProgram.h>

namespace qx {
namespace {

using tests::I;
using tests::R;
using tests::TScriptedRandom;
using tests::TTestComponent;

TEST(Initialize, FillsEvaluatesAndCopies) {
  TTestComponent Component;
  Component.SetInitialPopulation(3);
  Component.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) { Fitness = Item.Index(); };
  Component.SetGeneration(5);
  Component.Initialize();
  EXPECT_EQ(Component.Log, "initialize ");
  EXPECT_EQ(Component.Population().Count(), 3);
  EXPECT_EQ(Component.PreviousGeneration()->Count(), 3);
  EXPECT_EQ((*Component.PreviousGeneration())[2].Fitness(), 2);
  EXPECT_TRUE(Component.Initialized());
  EXPECT_EQ(Component.Generation(), 0);
  EXPECT_EQ(Component.MaxFitness(), 2);
  EXPECT_EQ(Component.FittestIndividual(), &Component.Population()[0]);
}

TEST(Initialize, ALargerPopulationIsLeftAsItIsAndInitializedAgain) {
  TTestComponent Component;
  Component.Fill({1, 2, 3});
  Component.SetInitialPopulation(2);
  Component.Initialize();
  Component.Initialize();
  EXPECT_EQ(Component.Population().Count(), 3);
  EXPECT_EQ(Component.Log, "initialize initialize ");
}

TEST(Initialize, AHandlerMayFillThePopulationItself) {
  TTestComponent Component;
  Component.SetInitialPopulation(2);
  Component.OnInitialization = [&](auto& Sender, bool& Initialized) {
    EXPECT_FALSE(Initialized);
    EXPECT_EQ(Sender.Population().Count(), 2);
    Initialized = true;
  };
  Component.Initialize();
  EXPECT_EQ(Component.Log, "");
  EXPECT_TRUE(Component.Initialized());
  Component.OnInitialization = [](auto&, bool&) {};
  Component.Initialize();
  EXPECT_EQ(Component.Log, "initialize ");
}

TEST(Initialize, AnEvaluationThatFailsIsRepeatedByTheNextGeneration) {
  TTestComponent Component;
  Component.SetInitialPopulation(2);
  bool Fail = true;
  Component.OnEvaluateFitness = [&](auto&, auto& Item, double& Fitness) {
    if (Fail) {
      throw std::runtime_error("fitness");
    }
    Fitness = Item.Index();
  };
  EXPECT_THROW(Component.Evolve(), std::runtime_error);
  EXPECT_FALSE(Component.Initialized());
  Fail = false;
  Component.Evolve();
  EXPECT_EQ(Component.Generation(), 1);
  EXPECT_EQ(Component.Population().Count(), 2);
}

TEST(Evolve, OfAnEmptyPopulationOnlyFires) {
  TTestComponent Component;
  Component.SetInitialPopulation(0);
  int Fired = 0;
  Component.OnEvolve = [&](auto& Sender) {
    EXPECT_EQ(&Sender, &Component);
    ++Fired;
  };
  Component.Evolve();
  EXPECT_EQ(Fired, 1);
  EXPECT_EQ(Component.Generation(), 0);
}

TEST(Evolve, WithoutAFitnessHandlerRaisesAndChangesNothing) {
  TTestComponent Component;
  Component.SetInitialPopulation(2);
  Component.Initialize();
  const TQXPopulation* const Before = &Component.Population();
  int Fired = 0;
  Component.OnEvolve = [&](auto&) { ++Fired; };
  try {
    Component.Evolve();
    FAIL();
  } catch (const EGAException& Error) {
    EXPECT_STREQ(Error.what(), "No fitness function defined");
  }
  EXPECT_EQ(&Component.Population(), Before);
  EXPECT_EQ(Component.Generation(), 0);
  EXPECT_EQ(Fired, 0);
}

TEST(Evolve, AnUnboundCustomSelectionRaisesBeforeTheGenerationsChangePlaces) {
  TTestComponent Component;
  Component.Start({1, 2});
  Component.SetSelectionMethod(smCustom);
  const TQXPopulation* const Before = &Component.Population();
  EXPECT_THROW(Component.Evolve(), EGAException);
  EXPECT_EQ(&Component.Population(), Before);
}

TEST(Evolve, AFinishedRunOnlyFires) {
  TTestComponent Component;
  Component.Start({1, 2});
  Component.SetUseFitnessCutoff(true);
  Component.OnEvaluateFitness = nullptr; // would raise if the generation began
  int Fired = 0;
  Component.OnEvolve = [&](auto&) { ++Fired; };
  Component.Evolve();
  EXPECT_EQ(Fired, 1);
  EXPECT_EQ(Component.Generation(), 0);
}

TEST(Evolve, TheGenerationsChangePlacesAndChildrenOverwriteIndividuals) {
  TTestComponent Component;
  Component.SetSelectionMethod(smRandom);
  Component.SetOperations({});
  Component.Start({4, 5, 6, 7});
  TQXPopulation* const Parents = &Component.Population();
  TQXPopulation* const Children = Component.PreviousGeneration();
  const TQXIndividual* const FirstChild = &(*Children)[0];
  const TScriptedRandom Script{I(3, 4), I(0, 4), I(1, 4), I(2, 4)};
  Component.Evolve();
  EXPECT_EQ(&Component.Population(), Children);
  EXPECT_EQ(Component.PreviousGeneration(), Parents);
  EXPECT_EQ(&Component.Population()[0], FirstChild);
  EXPECT_EQ(Component.Population()[0].Fitness(), 7);
  EXPECT_EQ(Component.Population()[1].Fitness(), 7);
  EXPECT_EQ(Component.Population()[2].Fitness(), 5);
  EXPECT_EQ(Component.Generation(), 1);
  EXPECT_EQ(Component.MinFitness(), 5);
}

TEST(Evolve, AnOddPopulationEndsWithASingleChild) {
  struct TWatching : TTestComponent {
    bool Reproduce(TQXIndividual&, TQXIndividual&, TQXIndividual& Child) override {
      Log += std::to_string(Child.Index()) + " ";
      return false;
    }
    bool Reproduce(TQXIndividual&, TQXIndividual&, TQXIndividual& Child1, TQXIndividual& Child2) override {
      Log += std::to_string(Child1.Index()) + "," + std::to_string(Child2.Index()) + " ";
      return false;
    }
  } Component;
  Component.Start({1, 2, 3, 4, 5});
  Component.Evolve();
  EXPECT_EQ(Component.Log, "0,1 2,3 4 ");
  Component.Log.clear();
  Component.DoParallelEvolveOneStep(1);
  EXPECT_EQ(Component.Log, "2,3 ");
}

TEST(Evolve, EventsAndDrawsOfAGenerationComeInTheirOrder) {
  TTestComponent Component;
  Component.SetSelectionMethod(smRandom);
  Component.Changes = true;
  Component.Start({1, 2, 3});
  std::string Log;
  Component.OnSelection = [&](auto& Sender, auto& Population, auto& Parent) {
    Log += "select ";
    Sender.SelectRandom(Sender, Population, Parent);
  };
  Component.OnInitializeChild = [&](auto&, auto&, auto&, auto&) { Log += "init "; };
  Component.OnCrossover = [&](auto&, auto&, auto&, auto&, auto&) { Log += "cross "; };
  Component.OnMutation = [&](auto&, auto& Item, auto&) {
    Log += "mutate ";
    Item.Modified();
  };
  Component.OnInversion = [&](auto&, auto&, auto&) { Log += "invert "; };
  Component.OnReproduction = [&](auto&, auto&, auto&) { Log += "reproduce "; };
  Component.OnEvaluateFitness = [&](auto&, auto& Item, double& Fitness) {
    Log += "fitness ";
    Fitness = std::stod(Item.Name());
  };
  Component.OnEvaluateWeightedFitness = [&](auto&, auto& Item, double& Fitness) {
    Log += "weighted ";
    Fitness = Item.Fitness();
  };
  Component.OnEvolve = [&](auto& Sender) {
    EXPECT_EQ(Sender.Generation(), 1);
    Log += "evolve";
  };
  const TScriptedRandom Script{I(0, 3), I(1, 3),                          // parents of the pair
                               R(0),    R(0),    R(0.9),  R(0),   R(0.9), // crossover, mutations, inversions
                               I(2, 3), I(2, 3), R(0.99), R(0.9), R(0)};  // the single child
  Component.Evolve();
  EXPECT_EQ(Log, "select select init init cross mutate invert reproduce reproduce "
                 "select select init invert reproduce "
                 "fitness weighted weighted weighted evolve");
}

TEST(Evolve, RunsUpToAsManyGenerationsAsAsked) {
  TTestComponent Component;
  Component.Start({3, 4});
  SeedRandom(1);
  EXPECT_EQ(Component.Evolve(4), 4);
  EXPECT_EQ(Component.Generation(), 4);
  Component.SetUseGenerationLimit(true);
  Component.SetGenerationLimit(6);
  EXPECT_EQ(Component.Evolve(10), 2);
  EXPECT_EQ(Component.Evolve(10), 0);
}

TEST(Evolve, OfNoGenerationsClearsHaltAndDoesNothing) {
  TTestComponent Component;
  Component.Start({3, 4});
  Component.SetHalt(true);
  EXPECT_EQ(Component.Evolve(0), 0);
  EXPECT_FALSE(Component.Halt());
  EXPECT_EQ(Component.Evolve(-3), 0);
  EXPECT_EQ(Component.Generation(), 0);
}

TEST(Evolve, HaltEndsTheRunAfterTheGenerationUnderWay) {
  TTestComponent Component;
  Component.Start({3, 4});
  SeedRandom(1);
  Component.OnEvolve = [](auto& Sender) { Sender.SetHalt(Sender.Generation() == 2); };
  EXPECT_EQ(Component.Evolve(10), 2);
  EXPECT_TRUE(Component.Halt());
}

TEST(Evolve, AHandlerThatRaisesLeavesAUsableComponent) {
  for (int Moment = 0; Moment < 8; ++Moment) {
    TTestComponent Component;
    Component.Start({3, 4, 5, 6});
    Component.SetMutationProbability(1);
    Component.SetInversionProbability(1);
    Component.SetCrossoverProbability(1);
    bool Fail = true;
    const auto Raise = [&] {
      if (Fail) {
        throw std::runtime_error("handler");
      }
    };
    switch (Moment) {
    case 0:
      Component.OnSelection = [&](auto&, auto& Population, auto& Parent) {
        Raise();
        Parent = &Population[0];
      };
      break;
    case 1:
      Component.OnInitializeChild = [&](auto&, auto&, auto&, auto&) { Raise(); };
      break;
    case 2:
      Component.OnCrossover = [&](auto&, auto&, auto&, auto&, auto&) { Raise(); };
      break;
    case 3:
      Component.OnMutation = [&](auto&, auto& Item, auto&) {
        Item.Modified();
        Raise();
      };
      break;
    case 4:
      Component.OnReproduction = [&](auto&, auto&, auto&) { Raise(); };
      break;
    case 5:
      Component.OnMutation = [&](auto&, auto& Item, auto&) { Item.Modified(); };
      Component.OnEvaluateFitness = [&](auto&, auto& Item, double& Fitness) {
        Raise();
        Fitness = std::stod(Item.Name());
      };
      break;
    case 6:
      Component.OnEvaluateWeightedFitness = [&](auto&, auto&, double& Fitness) {
        Raise();
        Fitness = 1;
      };
      break;
    default:
      Component.OnEvolve = [&](auto&) { Raise(); };
    }
    SeedRandom(1);
    EXPECT_THROW(Component.Evolve(), std::runtime_error) << Moment;
    EXPECT_EQ(Component.Generation(), Moment == 7 ? 1 : 0);
    EXPECT_EQ(Component.Population().Count(), 4);
    EXPECT_EQ(Component.PreviousGeneration()->Count(), 4);
    EXPECT_FALSE(Component.Population().Updating());
    EXPECT_FALSE(Component.PreviousGeneration()->Updating());
    Fail = false;
    EXPECT_EQ(Component.Evolve(3), 3) << Moment;
  }
}

TEST(Evolve, AFitnessHandlerAssignedAfterFillingIsAskedBeforeTheRunIsJudged) {
  TTestComponent Component;
  Component.SetInitialPopulation(2);
  Component.Initialize();
  EXPECT_EQ(Component.MinFitness(), 0);
  Component.SetUseFitnessCutoff(true); // 0 would be below the cutoff of 1
  Component.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = 50; };
  EXPECT_TRUE(Component.Population()[0].NeedFitness());
  EXPECT_TRUE((*Component.PreviousGeneration())[0].NeedFitness());
  SeedRandom(1);
  EXPECT_EQ(Component.Evolve(1), 1);
  EXPECT_EQ(Component.MinFitness(), 50);
}

TEST(Evolve, AFitnessHandlerMayAddIndividualsButNotDeleteThem) {
  for (const bool Weighted : {false, true}) {
    TTestComponent Component;
    Component.Fill({1, 2, 3, 4});
    Component.SetInitialPopulation(0);
    const auto Meddle = [&](auto& Sender, TQXIndividual& Item, double& Fitness) {
      Fitness = Item.Index();
      if (Sender.Population().Count() == 4) {
        Sender.Population().Add();
      } else if (Item.Index() == 2 && Sender.Population().Count() == 5) {
        EXPECT_THROW(Sender.Population().Delete(0), std::logic_error);
      }
    };
    if (Weighted) {
      Component.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) { Fitness = Item.Index(); };
      Component.OnEvaluateWeightedFitness = Meddle;
    } else {
      Component.OnEvaluateFitness = Meddle;
    }
    SeedRandom(1);
    EXPECT_EQ(Component.Evolve(3), 3);
    Component.OnEvaluateWeightedFitness = nullptr;
    Component.EvaluateFitness();
    EXPECT_EQ(Component.FittestIndividual()->Collection(), &Component.Population());
    EXPECT_EQ(Component.Population().Count() + Component.PreviousGeneration()->Count(), 10);
  }
}

TEST(Evolve, CountsFromTheStartWhenItStartsAnewInside) {
  tests::TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(4);
  Component.OnEvaluateFitness = [](auto&, auto& Individual, double& Fitness) {
    Fitness = Individual.DNA()->Size();
  };
  SeedRandom(1);
  EXPECT_EQ(Component.Evolve(3), 3);
  Component.Instructions()[0].SetName("other"); // the programs are made anew
  EXPECT_EQ(Component.Evolve(2), 2);
  EXPECT_EQ(Component.Generation(), 2);
  int Calls = 0;
  Component.OnEvolve = [&](auto& Sender) {
    if (++Calls == 2) {
      Sender.Instructions()[0].SetName("another");
    }
  };
  EXPECT_EQ(Component.Evolve(5), 3);
  EXPECT_EQ(Component.Generation(), 3);
}

TEST(Evolve, WithoutAHandlerAnyMoreTheStatisticsStay) {
  TTestComponent Component;
  Component.Start({3, 4});
  Component.OnEvaluateFitness = nullptr;
  Component.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = 9; };
  Component.OnEvaluateFitness = nullptr;
  EXPECT_THROW(Component.Evolve(), EGAException);
  EXPECT_EQ(Component.MinFitness(), 3);
}

TEST(Evolve, CountsFromAnyGeneration) {
  TTestComponent Component;
  Component.Start({3, 4});
  SeedRandom(1);
  Component.SetGeneration(std::numeric_limits<int>::min());
  EXPECT_EQ(Component.Evolve(2), 2);
}

TEST(Evolve, ASavedSelectionHandlerOutlivesItsComponent) {
  TQXSelectionEvent Saved;
  {
    TTestComponent Component;
    Saved = Component.OnSelection;
  }
  TTestComponent Component;
  Component.Start({3, 4});
  Component.OnSelection = Saved;
  EXPECT_EQ(Component.SelectionMethod(), smCustom);
  Saved = nullptr;
  SeedRandom(1);
  Component.Evolve();
}

TEST(Evolve, AFitnessHandlerThatReplacesAnotherLeavesFitnessesAsTheyAre) {
  TTestComponent Component;
  Component.Start({3, 4});
  Component.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = 50; };
  EXPECT_FALSE(Component.Population()[0].NeedFitness());
}

TEST(Evolve, AGenerationThatCannotBeCountedIsRefused) {
  TTestComponent Component;
  Component.Start({3, 4});
  Component.SetGeneration(std::numeric_limits<int>::max());
  EXPECT_THROW(Component.Evolve(), std::overflow_error);
}

TEST(Evolve, TheSameSeedGivesTheSameRun) {
  const auto Run = [] {
    TTestComponent Component;
    Component.SetFitnessMethod(fmMaximize);
    Component.Start({1, 2, 3, 4, 5, 6, 7, 8});
    SeedRandom(77);
    std::string Log;
    for (int Generation = 0; Generation < 10; ++Generation) {
      Component.Evolve();
      for (const TQXIndividual& Individual : Component.Population()) {
        Log += std::to_string(Individual.Fitness()) + " ";
      }
    }
    return Log;
  };
  EXPECT_EQ(Run(), Run());
}

TEST(Evolve, BothOverloadsAreReachableFromADescendant) {
  struct TDescendant : TTestComponent {
    using TTestComponent::Evolve;
    void Evolve() override {
      ++Calls;
      TTestComponent::Evolve();
    }
    int Calls = 0;
  } Component;
  Component.Start({1, 2});
  SeedRandom(1);
  EXPECT_EQ(Component.Evolve(3), 3);
  EXPECT_EQ(Component.Calls, 3);
}

} // namespace
} // namespace qx
