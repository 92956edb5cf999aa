#include "support/ScriptedRandom.h"
#include "support/TestComponent.h"
#include <qx/engine/QXGeneticBase.h>

#include <gtest/gtest.h>

#include <string>

namespace qx {
namespace {

using tests::R;
using tests::TScriptedRandom;
using tests::TTestComponent;

class Reproduction : public testing::Test {
protected:
  Reproduction() {
    Component.Start({1, 2, 3, 4});
    Component.SetCrossoverProbability(0.5);
    Component.SetMutationProbability(0.25);
    Component.SetInversionProbability(0.75);
  }

  TQXIndividual& At(int Index) { return Component.Population()[Index]; }
  bool ReproducePair() { return Component.Reproduce(At(0), At(1), At(2), At(3)); }
  bool ReproduceOne() { return Component.Reproduce(At(0), At(1), At(2)); }

  TTestComponent Component;
};

TEST_F(Reproduction, EveryGateTakesOneDrawWhateverComesOfIt) {
  const TScriptedRandom Script{R(0.5), R(0.25), R(0.25), R(0.75), R(0.75)};
  EXPECT_FALSE(ReproducePair());
  EXPECT_EQ(Component.Log, "");
  EXPECT_EQ(At(2).Fitness(), 1);
  EXPECT_EQ(At(3).Fitness(), 1) << "both children start as copies of the first parent";
  EXPECT_FALSE(At(3).NeedFitness());
}

TEST_F(Reproduction, OperatorsRunInTheirOrderOnEveryChild) {
  const TScriptedRandom Script{R(0.49), R(0.24), R(0.24), R(0.74), R(0.74)};
  EXPECT_FALSE(ReproducePair());
  EXPECT_EQ(Component.Log, "cross2 mutate mutate invert invert ");
}

TEST_F(Reproduction, ASingleChildUsesOneOfEachGate) {
  const TScriptedRandom Script{R(0.49), R(0.24), R(0.74)};
  EXPECT_FALSE(ReproduceOne());
  EXPECT_EQ(Component.Log, "cross1 mutate invert ");
}

TEST_F(Reproduction, AChangeIsReportedAndStopsNothing) {
  Component.Changes = true;
  const TScriptedRandom Script{R(0), R(0), R(0), R(0), R(0)};
  EXPECT_TRUE(ReproducePair());
  EXPECT_EQ(Component.Log, "cross2 mutate mutate invert invert ");
}

TEST_F(Reproduction, OperationsChooseTheGates) {
  Component.SetOperations({goMutate});
  {
    const TScriptedRandom Script{R(0.24), R(0.9)};
    ReproducePair();
    EXPECT_EQ(Component.Log, "mutate ");
  }
  Component.SetOperations({});
  const TScriptedRandom Script{};
  EXPECT_FALSE(ReproducePair());
  EXPECT_EQ(At(3).Fitness(), 1);
}

TEST_F(Reproduction, ProbabilityOneAlwaysAndZeroNeverApplies) {
  Component.SetCrossoverProbability(1);
  Component.SetMutationProbability(0);
  Component.SetOperations({goCrossover, goMutate});
  const TScriptedRandom Script{R(1 - 0x1p-53), R(0), R(0)};
  ReproducePair();
  EXPECT_EQ(Component.Log, "cross2 ");
}

TEST_F(Reproduction, EventsFireInTheirOrder) {
  std::string Log;
  const auto Number = [](const TQXIndividual& Item) { return std::to_string(Item.Index()); };
  Component.OnInitializeChild = [&](auto&, auto& P1, auto& P2, auto& Child) {
    EXPECT_EQ(Child.Fitness(), 1);
    Log += "init" + Number(P1) + Number(P2) + Number(Child) + " ";
  };
  Component.OnCrossover = [&](auto&, auto& P1, auto& P2, auto& Child, bool& Flag) {
    EXPECT_TRUE(Flag);
    Log += "cross" + Number(P1) + Number(P2) + Number(Child) + " ";
  };
  Component.OnMutation = [&](auto&, auto& Item, bool&) { Log += "mutate" + Number(Item) + " "; };
  Component.OnInversion = [&](auto&, auto& Item, bool&) { Log += "invert" + Number(Item) + " "; };
  Component.OnReproduction = [&](auto&, auto& Item, bool& Flag) {
    Log += "done" + Number(Item) + (Flag ? "+ " : "- ");
    Flag = !Flag; // both handlers see the same flag
  };
  const TScriptedRandom Script{R(0), R(0), R(0.9), R(0.9), R(0)};
  EXPECT_FALSE(ReproducePair());
  EXPECT_EQ(Log, "init012 init013 cross012 mutate2 invert3 done2- done3+ ");
}

TEST_F(Reproduction, AVetoKeepsTheOperatorAway) {
  Component.Changes = true;
  Component.OnCrossover = [](auto&, auto&, auto&, auto&, bool& Flag) { Flag = false; };
  Component.OnMutation = [](auto&, auto&, bool& Flag) { Flag = false; };
  Component.OnInversion = [](auto&, auto&, bool& Flag) { Flag = false; };
  const TScriptedRandom Script{R(0), R(0), R(0), R(0), R(0)};
  EXPECT_FALSE(ReproducePair());
  EXPECT_EQ(Component.Log, "");
  EXPECT_EQ(At(2).Fitness(), 1);
}

TEST_F(Reproduction, AHandlerCannotForceWhatTheDrawRejected) {
  Component.OnMutation = [](auto&, auto&, bool&) { FAIL(); };
  const TScriptedRandom Script{R(0.9), R(0.9), R(0.9), R(0.9), R(0.9)};
  ReproducePair();
}

TEST_F(Reproduction, AReproductionHandlerChangesTheResult) {
  Component.SetOperations({});
  Component.OnReproduction = [](auto&, auto&, bool& Flag) { Flag = true; };
  EXPECT_TRUE(ReproduceOne());
}

TEST_F(Reproduction, CrossoverIsPreparedAfterTheVetoAndBeforeTheOperator) {
  struct TPreparing : TTestComponent {
    void PrepareCrossover(TQXIndividual&, TQXIndividual&, TQXIndividual&, TQXIndividual* Child2) override {
      Log += Child2 == nullptr ? "prepare1 " : "prepare2 ";
    }
  } Preparing;
  Preparing.Start({1, 2, 3, 4});
  Preparing.OnCrossover = [&](auto&, auto&, auto&, auto&, bool&) { Preparing.Log += "event "; };
  Preparing.SetOperations({goCrossover});
  TQXPopulation& Population = Preparing.Population();
  {
    const TScriptedRandom Script{R(0), R(0)};
    Preparing.Reproduce(Population[0], Population[1], Population[2], Population[3]);
    Preparing.Reproduce(Population[0], Population[1], Population[2]);
  }
  EXPECT_EQ(Preparing.Log, "event prepare2 cross2 event prepare1 cross1 ");
  Preparing.Log.clear();
  Preparing.OnCrossover = [](auto&, auto&, auto&, auto&, bool& Flag) { Flag = false; };
  const TScriptedRandom Script{R(0)};
  Preparing.Reproduce(Population[0], Population[1], Population[2]);
  EXPECT_EQ(Preparing.Log, "");
}

TEST(ReproductionDefaults, TheBaseOperatorsDoNothing) {
  struct TBare : TQXCustomGeneticComponent {
    using TQXCustomGeneticComponent::DoCrossover;
    using TQXCustomGeneticComponent::DoInitialize;
    using TQXCustomGeneticComponent::DoInvert;
    using TQXCustomGeneticComponent::DoMutate;
  } Component;
  TQXIndividual Individual;
  EXPECT_EQ(Component.DoInitialize(), 0);
  EXPECT_FALSE(Component.DoMutate(Individual));
  EXPECT_FALSE(Component.DoInvert(Individual));
  EXPECT_FALSE(Component.DoCrossover(Individual, Individual, Individual, nullptr));
}

} // namespace
} // namespace qx
