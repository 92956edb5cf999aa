// Individuals that a generation keeps, and the best one of a run.

#include <qx/platform/Filer.h>
#include <qx/platform/Random.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <support/ScriptedRandom.h>
#include <support/SmallAlgorithm.h>
#include <support/SmallGeneticProgram.h>
#include <support/Streams.h>
#include <support/TestComponent.h>
#include <vector>

namespace qx {
namespace {

using tests::TSmallAlgorithm;
using tests::TTestComponent;

std::string NamesOf(TQXPopulation& Population) {
  std::string Names;
  for (const TQXIndividual& Individual : Population) {
    Names += std::to_string(static_cast<int>(std::stod(Individual.Name()))) + ' ';
  }
  return Names;
}

TEST(Elite, IsOfNobodyUnlessItIsSet) {
  TTestComponent Component;
  EXPECT_EQ(Component.EliteCount(), 0);
  Component.SetEliteCount(3);
  EXPECT_EQ(Component.EliteCount(), 3);
  Component.SetEliteCount(-1);
  EXPECT_EQ(Component.EliteCount(), 0);
}

TEST(Elite, TakesTheFirstPlacesWithoutAnEventADrawOrAnEvaluation) {
  TTestComponent Component;
  Component.SetSelectionMethod(smCustom);
  Component.Start({5, 1, 4, 1, 3});
  Component.SetEliteCount(2);
  std::string Log;
  Component.OnSelection = [&](auto&, auto& Population, auto*& Parent) {
    Log += "select ";
    Parent = &Population[0];
  };
  Component.OnInitializeChild = [&](auto&, auto&, auto&, auto& Child) {
    Log += "child" + std::to_string(Child.Index()) + ' ';
  };
  Component.OnReproduction = [&](auto&, auto& Child, bool&) {
    Log += "reproduced" + std::to_string(Child.Index()) + ' ';
  };
  Component.OnEvaluateFitness = [&](auto&, auto& Individual, double& Fitness) {
    Log += "evaluate" + std::to_string(Individual.Index()) + ' ';
    Fitness = std::stod(Individual.Name());
  };
  Component.SetOperations({});
  const tests::TCountingRandom Draws;
  Component.Evolve();
  EXPECT_EQ(NamesOf(Component.Population()), "1 1 5 5 5 ");
  EXPECT_EQ(Draws.Integers + Draws.Reals, 0);
  EXPECT_EQ(Log, "select select child2 child3 reproduced2 reproduced3 select select child4 reproduced4 ");
  EXPECT_EQ(Component.MinFitness(), 1);
}

TEST(Elite, OfEqualOnesIsTheOneInFront) {
  TSmallAlgorithm Algorithm;
  Algorithm.SetInitialPopulation(0);
  for (const char* const Name : {"a", "b", "c", "d"}) {
    Algorithm.Population().Add().SetName(Name);
  }
  Algorithm.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = 3; };
  Algorithm.SetEliteCount(3);
  Algorithm.Evolve();
  EXPECT_EQ(Algorithm.Population()[0].Name(), "a");
  EXPECT_EQ(Algorithm.Population()[1].Name(), "b");
  EXPECT_EQ(Algorithm.Population()[2].Name(), "c");
}

TEST(Elite, IsRankedByRawFitnessAndNotANumberIsWorst) {
  TTestComponent Component;
  Component.SetFitnessMethod(fmWeightedMaximize);
  Component.SetSelectionMethod(smRandom);
  Component.Start({2, NAN, 7, 5});
  Component.OnEvaluateWeightedFitness = [](auto&, auto& Item, double& Fitness) { Fitness = -Item.Fitness(); };
  Component.SetEliteCount(4);
  Component.OnInitializeChild = [](auto&, auto&, auto&, auto&) { ADD_FAILURE() << "nothing is reproduced"; };
  Component.Evolve();
  EXPECT_EQ(Component.Population()[0].Fitness(), 7);
  EXPECT_EQ(Component.Population()[1].Fitness(), 5);
  EXPECT_EQ(Component.Population()[2].Fitness(), 2);
  EXPECT_TRUE(std::isnan(Component.Population()[3].Fitness()));
  Component.SetEliteCount(1'000'000); // more than there are
  EXPECT_EQ(Component.Evolve(2), 2);
}

TEST(Elite, KeepsTheFittestFromGettingWorse) {
  for (const bool Programs : {false, true}) {
    TSmallAlgorithm Bits;
    tests::TArithmeticProgramming<> Trees;
    Trees.OnEvaluateFitness = [](auto&, auto& Individual, double& Fitness) {
      Fitness = std::abs(Individual.DNA()->Size() - 17);
    };
    TQXCustomGeneticComponent& Component = Programs ? static_cast<TQXCustomGeneticComponent&>(Trees) : Bits;
    Component.SetInitialPopulation(20);
    Component.SetEliteCount(1);
    SeedRandom(3);
    Component.Evolve();
    double Best = Component.FittestIndividual()->Fitness();
    for (int I = 0; I < 30; ++I) {
      Component.Evolve();
      EXPECT_LE(Component.FittestIndividual()->Fitness(), Best);
      Best = Component.FittestIndividual()->Fitness();
    }
  }
}

TEST(Elite, StandsInStreamsAndCheckpoints) {
  TTestComponent Component;
  EXPECT_EQ(tests::Written(Component).find("EliteCount"), std::string::npos);
  Component.SetEliteCount(4);
  EXPECT_NE(tests::Written(Component).find("EliteCount = 4"), std::string::npos);
  TSmallAlgorithm Source;
  Source.SetEliteCount(2);
  TSmallAlgorithm Copy;
  tests::LoadCheckpoint(Copy, tests::CheckpointOf(Source));
  EXPECT_EQ(Copy.EliteCount(), 2);
  TSmallAlgorithm Assigned;
  Assigned.Assign(Source);
  EXPECT_EQ(Assigned.EliteCount(), 2);
}

// --- The best one ------------------------------------------------------------------------------------------

TEST(BestEver, IsTheFirstBestThatAnEvaluationFound) {
  TTestComponent Component;
  EXPECT_EQ(Component.BestEver(), nullptr);
  Component.SetSelectionMethod(smRandom);
  Component.Start({3, 1, 2});
  ASSERT_NE(Component.BestEver(), nullptr);
  EXPECT_EQ(Component.BestEver()->Fitness(), 1);
  EXPECT_EQ(std::stod(Component.BestEver()->Name()), 1);
  EXPECT_NE(Component.BestEver(), Component.FittestIndividual());
  Component.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) { Fitness = Item.Index() + 4; };
  for (auto& Individual : Component.Population()) {
    Individual.MarkStale();
  }
  Component.EvaluateFitness();
  EXPECT_EQ(Component.FittestIndividual()->Fitness(), 4);
  EXPECT_EQ(Component.BestEver()->Fitness(), 1);
  Component.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) { Fitness = -Item.Index(); };
  for (auto& Individual : Component.Population()) {
    Individual.MarkStale();
  }
  Component.EvaluateFitness();
  EXPECT_EQ(Component.BestEver()->Fitness(), -2);
  const auto& Read = Component;
  EXPECT_EQ(Read.BestEver()->Fitness(), -2);
  Component.Initialize(); // a new run
  EXPECT_EQ(Component.BestEver()->Fitness(), Component.FittestIndividual()->Fitness());
}

TEST(BestEver, IsACopyThatGenerationsLeaveAlone) {
  TSmallAlgorithm Algorithm;
  Algorithm.SetInitialPopulation(6);
  SeedRandom(8);
  Algorithm.Initialize();
  double Best = Algorithm.BestEver()->Fitness();
  for (int I = 0; I < 40; ++I) {
    Algorithm.Evolve();
    Best = std::min(Best, Algorithm.FittestIndividual()->Fitness());
    EXPECT_EQ(Algorithm.BestEver()->Fitness(), Best);
    EXPECT_EQ(Algorithm.BestEver()->Bits().CountOnes(), Best);
  }
  EXPECT_EQ(Algorithm.BestEver()->Owner(), &Algorithm);
  EXPECT_EQ(Algorithm.Population().Count(), 6);
}

TEST(BestEver, OfProgramsGoesWithTheInstructions) {
  tests::TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(6);
  Component.OnEvaluateFitness = [](auto&, auto& Individual, double& Fitness) {
    Fitness = Individual.DNA()->Size();
  };
  SeedRandom(8);
  Component.Evolve(3);
  ASSERT_NE(Component.BestEver(), nullptr);
  EXPECT_EQ(Component.BestEver()->DNA()->Size(), Component.BestEver()->Fitness());
  Component.Instructions().Delete(0);
  EXPECT_EQ(Component.BestEver(), nullptr);
}

TEST(BestEver, IsCopiedWithTheComponent) {
  TSmallAlgorithm Source;
  Source.Evolve(5);
  TSmallAlgorithm Copy;
  Copy.Assign(Source);
  ASSERT_NE(Copy.BestEver(), nullptr);
  EXPECT_NE(Copy.BestEver(), Source.BestEver());
  EXPECT_EQ(Copy.BestEver()->Bits().ToBitString(), Source.BestEver()->Bits().ToBitString());
  Copy.Assign(TQXGeneticAlgorithm());
  EXPECT_EQ(Copy.BestEver(), nullptr);
}

TEST(BestEver, ComesBackFromACheckpointAndNotFromADocument) {
  TSmallAlgorithm Source;
  SeedRandom(1);
  Source.Evolve(9);
  const std::string Best = Source.BestEver()->Bits().ToBitString();
  TSmallAlgorithm Copy;
  tests::LoadCheckpoint(Copy, tests::CheckpointOf(Source));
  ASSERT_NE(Copy.BestEver(), nullptr);
  EXPECT_EQ(Copy.BestEver()->Bits().ToBitString(), Best);
  EXPECT_EQ(Copy.BestEver()->Fitness(), Source.BestEver()->Fitness());
  Source.Population().Clear();
  tests::Load(Copy, tests::Saved(Source));
  EXPECT_EQ(Copy.BestEver(), nullptr);
  Copy.Population().Add();
  Copy.EvaluateFitness();
  EXPECT_EQ(Copy.BestEver()->Fitness(), Copy.FittestIndividual()->Fitness());
}

TEST(BestEver, IsBackAfterALoadThatFails) {
  TSmallAlgorithm Algorithm;
  SeedRandom(1);
  Algorithm.Evolve(3);
  const TQXIndividual* const Best = Algorithm.BestEver();
  std::string Text = tests::CheckpointOf(Algorithm);
  Text.replace(Text.find("StatisticsDue = "), 16, "StatisticsDue = ?");
  EXPECT_ANY_THROW(tests::LoadCheckpoint(Algorithm, Text));
  EXPECT_EQ(Algorithm.BestEver(), Best);
  TSmallAlgorithm Other;
  std::string Document = tests::Saved(Other);
  const auto Bits = Document.rfind("<Bits>");
  Document.replace(Bits, 7, "<Bits>x");
  EXPECT_ANY_THROW(tests::Load(Algorithm, Document));
  EXPECT_EQ(Algorithm.BestEver(), Best);
}

TEST(Elite, IsChosenAfterTheEvaluationsThatMayEvolveInTurn) {
  TSmallAlgorithm Component;
  Component.SetInitialPopulation(20);
  Component.SetEliteCount(3);
  bool Once = false;
  Component.OnEvaluateFitness = [&](auto& Sender, auto& Individual, double& Fitness) {
    Fitness = Individual.Bits().CountOnes();
    if (Once) {
      Once = false;
      for (int I = 0; I < 500; ++I) {
        Sender.Population().Add();
      }
      Sender.Evolve(1);
    }
  };
  Component.Evolve(2);
  for (auto& Individual : Component.Population()) {
    Individual.Modified();
  }
  Once = true;
  EXPECT_NO_THROW(Component.Evolve());
}

TEST(BestEver, KeepsItsPlaceAlone) {
  TSmallAlgorithm Component;
  Component.OnEvaluateFitness = [](auto&, auto& Individual, double& Fitness) {
    Fitness = Individual.Bits().CountOnes();
  };
  Component.Evolve(2);
  EXPECT_THROW(static_cast<void>(Component.BestEver()->Clone()), std::logic_error);
  const std::string Text = tests::CheckpointOf(Component);
  EXPECT_NO_THROW(tests::LoadCheckpoint(Component, Text));
}

TEST(BestEver, LivesThroughAChangeOfTheHandlerThatEvaluatesIt) {
  TSmallAlgorithm Component;
  const auto Plain = [](auto&, auto& Individual, double& Fitness) {
    Fitness = Individual.Bits().CountOnes();
  };
  Component.OnEvaluateFitness = Plain;
  Component.Evolve(2);
  Component.OnEvaluateFitness = [&](auto& Sender, auto& Individual, double& Fitness) {
    Sender.OnEvaluateFitness = nullptr;
    Sender.OnEvaluateFitness = Plain;
    Fitness = Individual.Bits().CountOnes();
  };
  ASSERT_NE(Component.BestEver(), nullptr);
  Component.BestEver()->Modified();
  EXPECT_GE(Component.BestEver()->Fitness(), 0);
}

} // namespace
} // namespace qx
