#include "support/ScriptedRandom.h"
#include <qx/genetic_algorithm/QXGeneticAlgorithm.h>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <stdexcept>
#include <string>

namespace qx {
namespace {

using tests::I;
using tests::R;
using tests::TScriptedRandom;

struct TOpen : TQXGeneticAlgorithm {
  using TQXGeneticAlgorithm::DoCrossover;
  using TQXGeneticAlgorithm::DoInitialize;
  using TQXGeneticAlgorithm::DoInvert;
  using TQXGeneticAlgorithm::DoMutate;

  explicit TOpen(std::initializer_list<int> Sizes = {}) {
    for (const int Size : Sizes) {
      Genes().Add().SetSize(Size);
    }
  }

  /// Parents of ones and zeros, and two children; returns whether the crossover took place.
  bool Cross(bool WithSecond = true) {
    Population().Clear();
    for (int P = 0; P < 4; ++P) {
      Population().Add();
    }
    Population()[0].Bits().SetAsBitString(0, GeneSize(),
                                          std::string(static_cast<std::size_t>(GeneSize()), '1'));
    return DoCrossover(Population()[0], Population()[1], Population()[2],
                       WithSecond ? &Population()[3] : nullptr);
  }
  std::string Child(int Index) { return Population()[Index + 1].Bits().ToString(); }
  /// The last bit that the first child has from the first parent.
  int Cut() { return Population()[2].Bits().CountOnes() - 1; }
};

TEST(GeneticAlgorithm, StartsEmptyWithTheEnginesDefaults) {
  TQXGeneticAlgorithm Algorithm;
  EXPECT_EQ(Algorithm.GeneSize(), 0);
  EXPECT_EQ(Algorithm.Genes().Count(), 0);
  EXPECT_EQ(Algorithm.CrossoverMethod(), cmGeneBoundary);
  EXPECT_EQ(Algorithm.CrossoverProbability(), 0.98);
  EXPECT_EQ(Algorithm.Population().ItemClass().Name(), "TQXGAIndividual");
  EXPECT_EQ(Algorithm.Population().Owner(), &Algorithm);
  EXPECT_THROW(Algorithm.SetCrossoverMethod(static_cast<TGACrossoverMethod>(5)), std::out_of_range);
}

TEST(GeneSize, FollowsAGrowingGenotypeAndNeverShrinks) {
  TOpen Algorithm{8, 8};
  Algorithm.Population().Add();
  EXPECT_EQ(Algorithm.GeneSize(), 16);
  Algorithm.Genes()[0].SetSize(10);
  EXPECT_EQ(Algorithm.GeneSize(), 18);
  EXPECT_EQ(Algorithm.Population()[0].Bits().Size(), 18);
  Algorithm.Genes()[0].SetSize(2);
  Algorithm.Genes().Clear();
  EXPECT_EQ(Algorithm.GeneSize(), 18);
  EXPECT_EQ(Algorithm.Population()[0].Bits().Size(), 18);
}

TEST(GeneSize, ANewOneResizesAndModifiesEveryIndividualInOneUpdate) {
  struct TWatching : TOpen {
    void PopulationUpdate(TQXIndividual* Item) override { Log += Item == nullptr ? "all " : "one "; }
    std::string Log;
  } Algorithm;
  Algorithm.Population().Add();
  Algorithm.Population().Add();
  static_cast<void>(Algorithm.Population()[0].Fitness());
  Algorithm.Log.clear();
  Algorithm.SetGeneSize(5);
  EXPECT_EQ(Algorithm.Log, "all ");
  EXPECT_EQ(Algorithm.Population()[1].Bits().Size(), 5);
  EXPECT_TRUE(Algorithm.Population()[0].NeedFitness());
  Algorithm.SetGeneSize(5);
  EXPECT_EQ(Algorithm.Log, "all ");
  EXPECT_THROW(Algorithm.SetGeneSize(-1), std::out_of_range);
  EXPECT_EQ(Algorithm.Population().Add().Bits().Size(), 5);
}

TEST(GACrossover, GeneBoundariesAreTheOffsetsOfAnyGeneButTheFirst) {
  TOpen Algorithm{8, 8, 8};
  TScriptedRandom Script{I(0, 2), I(1, 2)};
  EXPECT_TRUE(Algorithm.Cross());
  EXPECT_EQ(Algorithm.Cut(), 8);
  EXPECT_EQ(Algorithm.Child(2), std::string(9, '0') + std::string(15, '1'));
  Algorithm.Cross();
  EXPECT_EQ(Algorithm.Cut(), 16);
}

TEST(GACrossover, ASingleGeneGivesMultiplesOfItsSize) {
  TOpen Algorithm{8};
  Algorithm.SetGeneSize(32);
  TScriptedRandom Script{I(7, 32), I(8, 32), I(31, 32)};
  Algorithm.Cross();
  EXPECT_EQ(Algorithm.Cut(), 0);
  Algorithm.Cross();
  EXPECT_EQ(Algorithm.Cut(), 8);
  Algorithm.Cross();
  EXPECT_EQ(Algorithm.Cut(), 24);
}

TEST(GACrossover, WithoutAUsableGeneTheErrorTellsWhatToDo) {
  const TScriptedRandom Script{};
  TOpen Algorithm;
  Algorithm.SetGeneSize(8);
  EXPECT_THROW(Algorithm.Cross(), std::logic_error);
  Algorithm.Genes().Add();
  EXPECT_THROW(Algorithm.Cross(), std::logic_error);
}

TEST(GACrossover, BitBoundariesAreAnyBit) {
  TOpen Algorithm{10};
  Algorithm.SetCrossoverMethod(cmBitBoundary);
  const TScriptedRandom Script{I(9, 10)};
  Algorithm.Cross();
  EXPECT_EQ(Algorithm.Cut(), 9);
}

TEST(GACrossover, LargerBoundariesNeedTwoOfTheirUnits) {
  for (const auto& [Method, Unit] :
       {std::pair{cmByteBoundary, 8}, std::pair{cmWordBoundary, 16}, std::pair{cmLongwordBoundary, 32}}) {
    TOpen Algorithm{2 * Unit - 1};
    Algorithm.SetCrossoverMethod(Method);
    TScriptedRandom Script{I(3, 2 * Unit - 1)};
    Algorithm.Cross();
    EXPECT_EQ(Algorithm.Cut(), 3);
    Algorithm.SetGeneSize(2 * Unit);
    Script.Add({I(0, 2), I(1, 2)});
    Algorithm.Cross();
    EXPECT_EQ(Algorithm.Cut(), Unit) << "one bit behind the boundary";
    Algorithm.Cross();
    EXPECT_EQ(Algorithm.Cut(), 2 * Unit - 1) << "a boundary at the end copies the first parent whole";
  }
}

TEST(GACrossover, TheHandlerMovesTheCutForBothChildren) {
  TOpen Algorithm{8, 8};
  std::string Log;
  Algorithm.OnCrossover = [&](TQXGeneticAlgorithm& Sender, TQXGAIndividual& Parent1, auto& Parent2,
                              auto& Child, int& CrossoverBit, bool& DoMutation) {
    EXPECT_EQ(&Sender, &Algorithm);
    EXPECT_TRUE(DoMutation);
    Log += std::to_string(Parent1.Index()) + std::to_string(Parent2.Index()) + std::to_string(Child.Index()) +
           "@" + std::to_string(CrossoverBit) + " ";
    --CrossoverBit;
  };
  const TScriptedRandom Script{I(0, 1)};
  EXPECT_TRUE(Algorithm.Cross());
  EXPECT_EQ(Log, "012@8 103@7 ");
  EXPECT_EQ(Algorithm.Child(1), std::string(8, '1') + std::string(8, '0'));
  EXPECT_EQ(Algorithm.Child(2), std::string(7, '0') + std::string(9, '1'));
}

TEST(GACrossover, AVetoStopsBothChildren) {
  TOpen Algorithm{8, 8};
  int Calls = 0;
  Algorithm.OnCrossover = [&](auto&, auto&, auto&, auto&, int&, bool& Flag) {
    Flag = false;
    ++Calls;
  };
  const TScriptedRandom Script{I(0, 1)};
  EXPECT_FALSE(Algorithm.Cross());
  EXPECT_EQ(Calls, 2);
  EXPECT_EQ(Algorithm.Child(1), std::string(16, '0'));
}

TEST(GACrossover, ASecondChildMayBeAbsent) {
  TOpen Algorithm{8, 8};
  int Calls = 0;
  Algorithm.OnCrossover = [&](auto&, auto&, auto&, auto&, int&, bool&) { ++Calls; };
  const TScriptedRandom Script{I(0, 1)};
  EXPECT_TRUE(Algorithm.Cross(false));
  EXPECT_EQ(Calls, 1);
  EXPECT_EQ(Algorithm.Child(2), std::string(16, '0'));
}

TEST(GACrossover, TheEnginesEventIsASlotOfItsOwn) {
  TOpen Algorithm{4, 4};
  Algorithm.SetInitialPopulation(2);
  Algorithm.SetInitialDuplicatesRetries(0);
  Algorithm.SetOperations({goCrossover});
  Algorithm.SetCrossoverProbability(1);
  Algorithm.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = 1; };
  int Own = 0;
  int Engines = 0;
  Algorithm.OnCrossover = [&](auto&, auto&, auto&, auto&, int&, bool&) { ++Own; };
  static_cast<TQXCustomGeneticComponent&>(Algorithm).OnCrossover = [&](auto&, auto&, auto&, auto&, bool&) {
    ++Engines;
  };
  SeedRandom(1);
  Algorithm.Evolve();
  EXPECT_EQ(Own, 2);
  EXPECT_EQ(Engines, 1);
}

TEST(GAMutation, HasNoGateAndDrawsOnceABit) {
  TOpen Algorithm{4};
  Algorithm.SetMutationProbability(0.5);
  TQXGAIndividual& Individual = Algorithm.Population().Add();
  {
    const TScriptedRandom Script{R(0.4), R(0.6), R(0.5), R(0.1)};
    EXPECT_TRUE(Algorithm.Mutate(Individual));
    EXPECT_EQ(Individual.Bits().ToString(), "1001");
  }
  {
    const TScriptedRandom Script{R(0.9), R(0.9), R(0.9), R(0.9)};
    EXPECT_FALSE(Algorithm.DoMutate(Individual));
  }
  Algorithm.OnMutation = [](auto&, auto&, bool& Flag) {
    EXPECT_TRUE(Flag);
    Flag = false;
  };
  const TScriptedRandom Script{};
  EXPECT_FALSE(Algorithm.Mutate(Individual));
}

TEST(GAInversion, DrawsItsRunAndAlwaysReportsAChange) {
  TOpen Algorithm{8};
  TQXGAIndividual& Individual = Algorithm.Population().Add();
  const TScriptedRandom Script{I(6, 8), I(0, 2)};
  EXPECT_TRUE(Algorithm.DoInvert(Individual));
  EXPECT_EQ(Individual.Bits().ToString(), "00000010");
}

TEST(GAInitialize, WithoutRetriesRandomizesEachOnce) {
  TOpen Algorithm{2};
  Algorithm.SetInitialDuplicatesRetries(0);
  Algorithm.Population().Add();
  Algorithm.Population().Add();
  const TScriptedRandom Script{I(1, 2), I(1, 2), I(1, 2), I(1, 2)};
  EXPECT_EQ(Algorithm.DoInitialize(), 0);
}

TEST(GAInitialize, TheRetriesAreOnePoolForThePopulation) {
  TOpen Algorithm{1};
  Algorithm.SetInitialDuplicatesRetries(3);
  for (int P = 0; P < 5; ++P) {
    Algorithm.Population().Add();
  }
  const TScriptedRandom Script{I(0, 2),                   // unique
                               I(0, 2), I(1, 2),          // one retry
                               I(1, 2), I(0, 2), I(1, 2), // the last two: kept unchecked
                               I(0, 2), I(0, 2)};         // unchecked
  EXPECT_EQ(Algorithm.DoInitialize(), 2);
  EXPECT_EQ(Algorithm.Population()[2].Bits().ToString(), "1");
}

TEST(GAInitialize, OneBitAndFiveIndividualsHaveAtMostTwoUnique) {
  TOpen Algorithm{1};
  Algorithm.SetInitialPopulation(5);
  Algorithm.Initialize();
  for (int Seed = 0; Seed < 50; ++Seed) {
    SeedRandom(static_cast<std::uint64_t>(Seed));
    EXPECT_LE(Algorithm.DoInitialize(), 2);
  }
}

TEST(GAInitialize, AgainRandomizesEveryMember) {
  TOpen Algorithm{64};
  Algorithm.SetInitialPopulation(3);
  SeedRandom(1);
  Algorithm.Initialize();
  const std::string Before = Algorithm.Population()[2].Bits().ToString();
  Algorithm.Initialize();
  EXPECT_NE(Algorithm.Population()[2].Bits().ToString(), Before);
  EXPECT_EQ(Algorithm.Population().Count(), 3);
  EXPECT_EQ((*Algorithm.PreviousGeneration())[2].Bits().ToString(),
            Algorithm.Population()[2].Bits().ToString());
}

TEST(GAIndividual, AFailedEvaluationOfTheSourceLeavesTheTargetAsItWas) {
  TOpen Algorithm{8};
  Algorithm.OnEvaluateFitness = [](auto&, TQXGAIndividual& Item, double& Fitness) {
    if (Item.Bits().CountOnes() == 8) {
      throw std::runtime_error("eight");
    }
    Fitness = Item.Bits().CountOnes();
  };
  TQXGAIndividual& Source = Algorithm.Population().Add();
  Source.Bits().SetAsBitString(0, 8, "11111111");
  TQXGAIndividual& Target = Algorithm.Population().Add();
  EXPECT_EQ(Target.Fitness(), 0);
  EXPECT_THROW(Target.Assign(Source), std::runtime_error);
  EXPECT_EQ(Target.Bits().CountOnes(), 0);
  EXPECT_EQ(Target.Fitness(), 0);
}

TEST(GAIndividual, TheChromosomeComesFromTheMostDerivedFactory) {
  struct TSpecialBits : TQXGABits {
    using TQXGABits::TQXGABits;
    std::string ToString() const override { return "special"; }
  };
  struct TSpecial : TQXGAIndividual {
    std::unique_ptr<TQXGABits> CreateDNA() override { return std::make_unique<TSpecialBits>(this); }
  };
  struct TAlgorithm : TQXGeneticAlgorithm {
    std::unique_ptr<TQXPopulation> CreatePopulation(TItemClass<TQXIndividual>) override {
      return std::make_unique<TQXGAPopulation>(this, ItemClassOf<TSpecial>());
    }
  } Algorithm;
  Algorithm.SetGeneSize(4);
  EXPECT_EQ(Algorithm.Population().Add().ToString(), "TSpecial special");
  EXPECT_EQ(Algorithm.Population()[0].Bits().Size(), 4);
}

TEST(GAPopulation, OfAnAlgorithmMayHoldOtherIndividualsAtItsEdge) {
  TQXGeneticAlgorithm Algorithm;
  Algorithm.SetGeneSize(100);
  TQXPopulation Plain(&Algorithm);
  Plain.Add();
  TQXGAPopulation Archive(&Algorithm);
  EXPECT_EQ(Archive.Add().Bits().Size(), 100);
  EXPECT_EQ(Archive.Owner(), &Algorithm);
  EXPECT_EQ(Archive[0].Collection(), &Archive);
}

TEST(GAAssign, CopiesGenotypeSettingsAndBothGenerations) {
  TOpen Source{4, 4};
  Source.Genes()[0].SetName("x");
  Source.SetGeneSize(10);
  Source.SetCrossoverMethod(cmByteBoundary);
  Source.SetInitialPopulation(6);
  Source.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) { Fitness = Item.Bits().CountOnes(); };
  SeedRandom(1);
  Source.Evolve();
  TOpen Copy{1};
  Copy.Assign(Source);
  EXPECT_EQ(Copy.GeneSize(), 10);
  EXPECT_EQ(Copy.CrossoverMethod(), cmByteBoundary);
  EXPECT_EQ(Copy.Genes().Count(), 2);
  EXPECT_EQ(Copy.Genes()[0].Name(), "x");
  ASSERT_EQ(Copy.Population().Count(), 6);
  for (int P = 0; P < 6; ++P) {
    EXPECT_EQ(Copy.Population()[P].Bits().ToString(), Source.Population()[P].Bits().ToString());
    EXPECT_EQ(Copy.Population()[P].Fitness(), Source.Population()[P].Fitness());
  }
  EXPECT_EQ(Copy.FittestIndividual(), &Copy.Population()[Source.FittestIndividual()->Index()]);
  Copy.Assign(Copy);
  EXPECT_EQ(Copy.Genes().Count(), 2);
  // Both go on in the same way.
  Copy.OnEvaluateFitness = Source.OnEvaluateFitness;
  SeedRandom(2);
  Source.Evolve(5);
  SeedRandom(2);
  Copy.Evolve(5);
  EXPECT_EQ(Copy.Population()[3].Bits().ToString(), Source.Population()[3].Bits().ToString());
}

TEST(GAAssign, ASourceThatCannotBeEvaluatedChangesNothing) {
  TOpen Source{8};
  Source.Population().Add();
  Source.OnEvaluateFitness = [](auto&, auto&, double&) { throw std::runtime_error("no fitness"); };
  TOpen Copy{3};
  EXPECT_THROW(Copy.Assign(Source), std::runtime_error);
  EXPECT_EQ(Copy.GeneSize(), 3);
  EXPECT_EQ(Copy.Genes()[0].Size(), 3);
}

TEST(GAAssign, FromAnotherGeneticComponentTakesTheEnginesShare) {
  TQXCustomGeneticComponent Source;
  Source.SetMutationProbability(0.5);
  TOpen Copy{3};
  Copy.Assign(Source);
  EXPECT_EQ(Copy.MutationProbability(), 0.5);
  EXPECT_EQ(Copy.GeneSize(), 3);
}

TEST(GAEvents, HandlersGetTheAlgorithmsOwnTypes) {
  TOpen Algorithm{8};
  Algorithm.SetInitialPopulation(4);
  Algorithm.SetCrossoverMethod(cmBitBoundary);
  int Calls = 0;
  Algorithm.OnInitialization = [&](TQXGeneticAlgorithm&, bool&) { ++Calls; };
  Algorithm.OnEvaluateFitness = [&](TQXGeneticAlgorithm&, TQXGAIndividual& Item, double& Fitness) {
    Fitness = Item.Bits().CountOnes();
  };
  Algorithm.OnEvaluateWeightedFitness = [](auto&, TQXGAIndividual& Item, double& Fitness) {
    Fitness = Item.Fitness();
  };
  Algorithm.OnSelection = [](auto&, TQXGAPopulation& Population, TQXGAIndividual*& Parent) {
    Parent = &Population[1];
  };
  Algorithm.OnInitializeChild = [&](auto&, TQXGAIndividual& Parent1, auto&, TQXGAIndividual& Child) {
    EXPECT_EQ(Child.Bits().ToString(), Parent1.Bits().ToString());
    ++Calls;
  };
  Algorithm.OnMutation = [](TQXCustomGeneticComponent&, TQXIndividual&, bool&) {}; // base types serve too
  Algorithm.OnInversion = std::function<void(TQXGeneticAlgorithm&, TQXGAIndividual&, bool&)>();
  Algorithm.OnReproduction = [](auto&, TQXGAIndividual& Item, bool&) { Item.Bits().CountOnes(); };
  Algorithm.OnEvolve = [&](TQXGeneticAlgorithm& Sender) { Calls += Sender.GeneSize(); };
  EXPECT_FALSE(Algorithm.OnInversion);
  EXPECT_EQ(Algorithm.SelectionMethod(), smCustom);
  SeedRandom(1);
  Algorithm.Evolve();
  EXPECT_EQ(Calls, 1 + 4 + 8);
}

TEST(GAEvents, ASettingWithEffectsHasThemThroughEveryView) {
  TOpen Algorithm{8};
  TQXCustomGeneticAlgorithm& Custom = Algorithm;
  Custom.OnSelection = [](TQXCustomGeneticAlgorithm&, auto& Population, auto& Parent) {
    Parent = &Population[0];
  };
  EXPECT_EQ(Algorithm.SelectionMethod(), smCustom);
  Algorithm.OnSelection = nullptr;
  EXPECT_EQ(Algorithm.SelectionMethod(), smRoulette);
  EXPECT_TRUE(Custom.OnSelection);
}

TEST(GALifetime, IndividualsGoBeforeTheGenotypeThatTheyMayLookAt) {
  struct TLooking : TQXGAIndividual {
    ~TLooking() override {
      if (Algorithm != nullptr) {
        Seen += Algorithm->Genes().Count();
      }
    }
    TQXCustomGeneticAlgorithm* Algorithm = nullptr;
    int& Seen = Total();
    static int& Total() {
      static int Count = 0;
      return Count;
    }
  };
  struct TAlgorithm : TQXCustomGeneticAlgorithm {
    std::unique_ptr<TQXPopulation> CreatePopulation(TItemClass<TQXIndividual>) override {
      return std::make_unique<TQXGAPopulation>(this, ItemClassOf<TLooking>());
    }
  };
  {
    TAlgorithm Algorithm;
    Algorithm.Genes().Add();
    static_cast<TLooking&>(Algorithm.Population().Add()).Algorithm = &Algorithm;
  }
  EXPECT_EQ(TLooking::Total(), 1);
}

TEST(GARun, GenerationsMayGrowTheirChromosomesInBetween) {
  TOpen Algorithm{8};
  Algorithm.SetInitialPopulation(5);
  Algorithm.SetCrossoverMethod(cmBitBoundary);
  Algorithm.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) { Fitness = Item.Bits().CountOnes(); };
  SeedRandom(1);
  Algorithm.Evolve(2);
  Algorithm.Genes()[0].SetSize(100);
  Algorithm.Evolve(2);
  for (const TQXGAIndividual& Individual : Algorithm.Population()) {
    EXPECT_EQ(Individual.Bits().Size(), 100);
  }
}

TEST(GARun, TheSameSeedGivesTheSameRunUnderEveryMethod) {
  for (int Selection = smRoulette; Selection < smCustom; ++Selection) {
    for (int Crossing = cmGeneBoundary; Crossing <= cmLongwordBoundary; ++Crossing) {
      const auto Run = [&] {
        TOpen Algorithm{20, 30, 50};
        Algorithm.SetInitialPopulation(21);
        Algorithm.SetFitnessMethod(fmMaximize);
        Algorithm.SetSelectionMethod(static_cast<TGASelectionMethod>(Selection));
        Algorithm.SetCrossoverMethod(static_cast<TGACrossoverMethod>(Crossing));
        Algorithm.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) {
          Fitness = Item.Bits().CountOnes();
        };
        SeedRandom(5);
        Algorithm.Evolve(10);
        std::string Text;
        for (const TQXGAIndividual& Individual : Algorithm.Population()) {
          Text += Individual.Bits().ToString();
        }
        return Text;
      };
      EXPECT_EQ(Run(), Run());
    }
  }
}

TEST(GARun, SolvesOneMax) {
  TOpen Algorithm{100};
  Algorithm.SetFitnessMethod(fmMaximize);
  Algorithm.SetCrossoverMethod(cmBitBoundary);
  Algorithm.SetSelectionMethod(smTournament);
  Algorithm.SetOperations({goCrossover, goMutate});
  Algorithm.SetMutationProbability(0.005);
  Algorithm.SetUseFitnessCutoff(true);
  Algorithm.SetFitnessCutoff(100);
  Algorithm.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) { Fitness = Item.Bits().CountOnes(); };
  SeedRandom(1);
  EXPECT_LT(Algorithm.Evolve(500), 500);
  EXPECT_EQ(Algorithm.FittestIndividual()->Fitness(), 100);
}

} // namespace
} // namespace qx
