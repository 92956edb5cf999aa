#include "support/TestComponent.h"
#include <qx/engine/QXGeneticBase.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace qx {
namespace {

using tests::TTestComponent;

TEST(Individual, WithoutAGeneticOwnerEveryFitnessIsZeroAndStaysStale) {
  TComponent Foreign;
  TQXPopulation Orphaned(nullptr);
  TQXPopulation Misplaced(&Foreign);
  TQXIndividual Free;
  for (TQXIndividual* Individual : {&Free, &Orphaned.Add(), &Misplaced.Add()}) {
    EXPECT_EQ(Individual->Owner(), nullptr);
    EXPECT_EQ(Individual->Fitness(), 0);
    EXPECT_EQ(Individual->Fitness(), 0);
    EXPECT_TRUE(Individual->NeedFitness());
    EXPECT_EQ(Individual->AdjustedFitness(), 0);
    EXPECT_EQ(Individual->WeightedFitness(), 0);
    EXPECT_EQ(Individual->NormalizedFitness(), 0);
    EXPECT_EQ(Individual->NormalizedWeigthedFitness(), 0);
  }
  EXPECT_EQ(Misplaced.Owner(), nullptr);
}

TEST(Individual, FitnessIsEvaluatedOnceBetweenTwoChanges) {
  TTestComponent Component;
  int Calls = 0;
  Component.OnEvaluateFitness = [&](auto&, auto&, double& Fitness) { Fitness = ++Calls; };
  TQXIndividual& Individual = Component.Population().Add();
  EXPECT_TRUE(Individual.NeedFitness());
  EXPECT_EQ(Individual.Fitness(), 1);
  EXPECT_EQ(Individual.Fitness(), 1);
  Individual.Modified();
  EXPECT_EQ(Individual.Fitness(), 2);
  Individual.EvaluateFitness();
  EXPECT_EQ(Individual.Fitness(), 3);
}

TEST(Individual, WeightedFitnessIsAskedForAtEveryRead) {
  TTestComponent Component;
  int Calls = 0;
  Component.OnEvaluateWeightedFitness = [&](auto&, auto&, double& Fitness) { Fitness = ++Calls; };
  const TQXIndividual& Individual = Component.Population().Add();
  EXPECT_EQ(Individual.WeightedFitness(), 1);
  EXPECT_EQ(Individual.WeightedFitness(), 2);
}

TEST(Individual, OnlyAnotherNameMarksItStale) {
  TTestComponent Component;
  Component.Start({1});
  TQXIndividual& Individual = Component.Population()[0];
  const std::string Name = Individual.Name();
  EXPECT_FALSE(Individual.NeedFitness());
  Individual.SetName(Name);
  EXPECT_FALSE(Individual.NeedFitness());
  Individual.SetName("2");
  EXPECT_TRUE(Individual.NeedFitness());
}

TEST(Individual, DisplayNameIsTheNameOrTheClassName) {
  TQXIndividual Individual;
  EXPECT_EQ(Individual.DisplayName(), "TQXIndividual");
  Individual.SetName("Ada");
  EXPECT_EQ(Individual.DisplayName(), "Ada");
}

TEST(Individual, AssignEvaluatesAStaleSourceAndReportsAChange) {
  struct TWatching : TTestComponent {
    void PopulationUpdate(TQXIndividual* Item) override {
      Log += Item == nullptr ? "all " : "item" + std::to_string(Item->Index()) + " ";
    }
  } Component;
  Component.Fill({5, 7});
  Component.Log.clear();
  Component.Population()[1].Assign(Component.Population()[0]);
  EXPECT_EQ(Component.Log, "item1 ");
  EXPECT_FALSE(Component.Population()[0].NeedFitness());
  EXPECT_FALSE(Component.Population()[1].NeedFitness());
  EXPECT_EQ(Component.Population()[1].Fitness(), 5);
  EXPECT_EQ(Component.Population()[1].Name(), Component.Population()[0].Name());
}

TEST(Individual, AssignFromAnOrphanKeepsTheStaleFlag) {
  TQXIndividual Source;
  TQXIndividual Individual;
  Individual.Assign(Source);
  EXPECT_TRUE(Individual.NeedFitness());
  EXPECT_THROW(Individual.Assign(TComponent()), std::invalid_argument);
}

TEST(Individual, CloneJoinsThePopulationAsItsItemClass) {
  struct TSpecial : TQXIndividual {};
  TTestComponent Component;
  TQXPopulation Population(&Component, ItemClassOf<TSpecial>());
  Population.Add().SetName("a");
  TQXIndividual& Clone = Population[0].Clone();
  EXPECT_EQ(Population.Count(), 2);
  EXPECT_EQ(Clone.Name(), "a");
  EXPECT_NE(dynamic_cast<TSpecial*>(&Clone), nullptr);
  EXPECT_EQ(Clone.DisplayName(), "a");
  TQXIndividual Free;
  EXPECT_THROW(Free.Clone(), std::logic_error);
}

TEST(Individual, MovesToAnotherPopulationAndItsOwner) {
  TTestComponent First;
  TTestComponent Second;
  TQXIndividual& Individual = First.Population().Add();
  EXPECT_EQ(Individual.Owner(), &First);
  EXPECT_EQ(Individual.Collection(), &First.Population());
  Individual.SetCollection(Second.Population());
  EXPECT_EQ(Individual.Owner(), &Second);
  const auto Extracted = Second.Population().Extract(Individual);
  EXPECT_EQ(Extracted->Owner(), nullptr);
}

TEST(Individual, DerivedFitnessesGoThroughTheOwner) {
  TTestComponent Component;
  Component.Start({1, 3});
  const TQXIndividual& Individual = Component.Population()[1];
  EXPECT_EQ(Individual.AdjustedFitness(), 0.25);
  EXPECT_EQ(Individual.NormalizedFitness(), 0.75);
  EXPECT_EQ(Individual.NormalizedWeigthedFitness(), 0.75);
  Component.SetFitnessMethod(fmMaximize);
  EXPECT_EQ(Component.Population()[0].AdjustedFitness(), 1.0 / 3);
}

TEST(Population, NotificationsReachTheOwner) {
  struct TWatching : TTestComponent {
    void PopulationNotify(TQXIndividual& Item, TCollectionNotification Action) override {
      Log += std::to_string(Action) + ":" + std::to_string(Item.Index()) + " ";
      TTestComponent::PopulationNotify(Item, Action);
    }
    void PopulationUpdate(TQXIndividual* Item) override { Log += Item == nullptr ? "all " : "one "; }
  } Component;
  Component.Population().Add();
  Component.Population().Insert(0);
  Component.Population().Extract(Component.Population()[1]);
  Component.Population().Delete(0);
  EXPECT_EQ(Component.Log, "0:0 all 0:0 all 1:1 all 2:0 all ");
}

TEST(Population, WritingAnItemCopiesIntoIt) {
  TTestComponent Component;
  Component.Fill({1, 2});
  Component.Population().SetItems(0, Component.Population()[1]);
  EXPECT_EQ(Component.Population()[0].Fitness(), 2);
  EXPECT_EQ(Component.Population().FindItemID(0), &Component.Population()[0]);
}

TEST(Population, ASourceThatCannotBeEvaluatedChangesNothing) {
  TTestComponent Source;
  Source.Fill({1, 2});
  Source.OnEvaluateFitness = [](auto&, auto&, double&) { throw std::runtime_error("no fitness"); };
  TTestComponent Component;
  Component.Fill({7});
  EXPECT_THROW(Component.SetPopulation(Source.Population()), std::runtime_error);
  ASSERT_EQ(Component.Population().Count(), 1);
  EXPECT_EQ(Component.Population()[0].Fitness(), 7);
}

TEST(Population, SurvivesBeingAssignedToItself) {
  TTestComponent Component;
  Component.Start({1, 2});
  const TQXIndividual* const First = &Component.Population()[0];
  Component.SetPopulation(Component.Population());
  EXPECT_EQ(&Component.Population()[0], First);
  Component.SetPreviousGeneration(*Component.PreviousGeneration());
  EXPECT_EQ(Component.PreviousGeneration()->Count(), 2);
}

} // namespace
} // namespace qx
