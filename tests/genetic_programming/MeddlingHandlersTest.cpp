// Handlers that do to their component what they like: it may refuse, but never crashes.

#include <qx/genetic_algorithm/QXGeneticAlgorithm.h>
#include <qx/platform/Random.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <support/SmallGeneticProgram.h>
#include <support/Streams.h>
#include <type_traits>
#include <utility>
#include <vector>

namespace qx {
namespace {

// --- Components --------------------------------------------------------------------------------------------

struct TBitTrial {
  using TComponent = TQXGeneticAlgorithm;

  static void Prepare(TComponent& Component) {
    for (const char* const Name : {"a", "b", "c"}) {
      TQXGAGene& Gene = Component.Genes().Add();
      Gene.SetName(Name);
      Gene.SetGeneType(gtInteger);
      Gene.SetSize(3);
    }
    Component.SetMutationProbability(0.2);
  }
  static double FitnessOf(TQXGAIndividual& Individual) { return Individual.Bits().CountOnes(); }
  static void AddPart(TComponent& Component) { Component.Genes().Add().SetSize(2); }
  static void DeletePart(TComponent& Component) { Component.Genes().Delete(0); }
  static void ClearParts(TComponent& Component) { Component.Genes().Clear(); }
  static void ChangePart(TComponent& Component) { Component.Genes()[0].SetSize(5); }
  static void MovePart(TComponent& Component) { Component.Genes().Move(0, Component.Genes().Count() - 1); }
};

struct TProgramTrial {
  using TComponent = tests::TArithmeticProgramming<>;

  static void Prepare(TComponent& Component) {
    Component.SetMutationProbability(1);
    Component.SetInitializationMethod(imGrow);
    Component.SetInitialDuplicatesRetries(0);
  }
  static double FitnessOf(TComponent::TIndividual& Individual) {
    return Individual.DNA() != nullptr ? Individual.DNA()->Size() : 0;
  }
  static void AddPart(TComponent& Component) { Component.Instructions().Add(); }
  static void DeletePart(TComponent& Component) { Component.Instructions().Delete(0); }
  static void ClearParts(TComponent& Component) { Component.Instructions().Clear(); }
  static void ChangePart(TComponent& Component) { Component.Instructions()[0].SetName("other"); }
  static void MovePart(TComponent& Component) { Component.Instructions().Move(0, 1); }
};

// --- Acts --------------------------------------------------------------------------------------------------

template <class TComponent>
using TAct = std::function<void(TComponent&)>;

template <class TComponent>
void ClearHandlers(TComponent& Component) {
  Component.OnInitialization = nullptr;
  Component.OnEvaluateFitness = nullptr;
  Component.OnEvaluateWeightedFitness = nullptr;
  Component.OnSelection = nullptr;
  Component.OnInitializeChild = nullptr;
  Component.TQXCustomGeneticComponent::OnCrossover = nullptr;
  Component.OnMutation = nullptr;
  Component.OnInversion = nullptr;
  Component.OnReproduction = nullptr;
  Component.OnEvolve = nullptr;
}

template <class TTrial>
std::vector<TAct<typename TTrial::TComponent>> Acts(const std::string& Document, const std::string& Stream) {
  using T = typename TTrial::TComponent;
  return {
      [](T&) { throw std::runtime_error("thrown"); },
      [](T&) { throw 1; },
      [](T& C) { C.Evolve(); },
      [](T& C) { C.Evolve(2); },
      [](T& C) { C.Initialize(); },
      [](T& C) { C.Population().Clear(); },
      [](T& C) { C.Population().Delete(0); },
      [](T& C) { C.PreviousGeneration() != nullptr ? C.PreviousGeneration()->Clear() : void(); },
      [](T& C) { C.PreviousGeneration() != nullptr ? C.PreviousGeneration()->Delete(0) : void(); },
      [](T& C) { C.Population().Add(); },
      [](T& C) { C.SwapGenerations(); },
      [](T& C) { C.EvaluateFitness(); },
      [Document](T& C) { tests::Load(C, Document); },
      [Stream](T& C) {
        std::istringstream Text(Stream);
        ReadComponent(Text, C);
      },
      [](T& C) { tests::Saved(C); },
      [](T& C) { tests::Written(C); },
      TTrial::AddPart,
      TTrial::DeletePart,
      TTrial::ClearParts,
      TTrial::ChangePart,
      TTrial::MovePart,
      ClearHandlers<T>,
      [](T& C) {
        C.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = 7; };
        C.OnSelection = [](auto&, auto& Population, auto*& Parent) { Parent = &Population[0]; };
      },
      [](T& C) { C.SetSelectionMethod(C.SelectionMethod() == smRandom ? smElitist : smRandom); },
      [](T& C) { C.SetFitnessMethod(fmWeightedMaximize); },
      [](T& C) {
        T Other;
        Other.Population().Add();
        C.Assign(Other);
      },
      [](T& C) { C.SetHalt(true); },
  };
}

// --- Trials ------------------------------------------------------------------------------------------------

enum TEvent {
  evInitialization,
  evFitness,
  evWeightedFitness,
  evSelection,
  evInitializeChild,
  evCrossover,
  evMutation,
  evInversion,
  evReproduction,
  evEvolve
};

template <class TTrial>
class TMeddledRun {
  using T = typename TTrial::TComponent;

public:
  TMeddledRun(TEvent Event, int Call, TGASelectionMethod Method, TAct<T> Act)
      : FEvent(Event), FCall(Call), FAct(std::move(Act)) {
    TTrial::Prepare(FComponent);
    FComponent.SetInitialPopulation(5);
    FComponent.SetFitnessMethod(fmWeightedMinimize);
    FComponent.SetCrossoverProbability(1);
    FComponent.SetInversionProbability(1);
    FComponent.SetSelectionMethod(Method);
    AssignHandlers();
  }

  void Run() {
    for (int I = 0; I < 3; ++I) { // an act may have made it start anew
      Try([&] { FComponent.Evolve(2); });
    }
    ExpectWhole(FComponent.Population());
    if (FComponent.PreviousGeneration() != nullptr) {
      ExpectWhole(*FComponent.PreviousGeneration());
    }
    if (auto* const Fittest = FComponent.FittestIndividual()) {
      EXPECT_TRUE(Fittest->Collection() == &FComponent.Population() ||
                  Fittest->Collection() == FComponent.PreviousGeneration());
    }
    Try([&] { tests::Saved(FComponent); });
    std::ostringstream Checkpoint;
    EXPECT_NO_THROW(FComponent.SaveCheckpoint(Checkpoint));
    Try([&] { FComponent.Evolve(1); });
  }

  bool Acted() const { return FCalls >= FCall; }

private:
  template <class TCall>
  static void Try(TCall Call) {
    try {
      Call();
    } catch (...) { // a refusal, or what the act has thrown
    }
  }

  template <class TPopulation>
  void ExpectWhole(TPopulation& Population) {
    for (int I = 0; I < Population.Count(); ++I) {
      EXPECT_EQ(Population[I].Index(), I);
      EXPECT_EQ(Population[I].Owner(), &FComponent);
      Try([&] { static_cast<void>(Population[I].WeightedFitness()); });
    }
  }

  void Happens(TEvent Event) {
    if (Event == FEvent && ++FCalls == FCall) {
      FAct(FComponent);
    }
  }

  void AssignHandlers() {
    FComponent.OnInitialization = [this](auto&, bool&) { Happens(evInitialization); };
    FComponent.OnEvaluateFitness = [this](auto&, auto& Individual, double& Fitness) {
      Happens(evFitness);
      Fitness = TTrial::FitnessOf(Individual);
    };
    FComponent.OnEvaluateWeightedFitness = [this](auto&, auto& Individual, double& Fitness) {
      Happens(evWeightedFitness);
      Fitness = TTrial::FitnessOf(Individual) + 1;
    };
    if (FEvent == evSelection) {
      const auto BuiltIn =
          std::make_shared<TQXSelectionEvent>(FComponent.TQXCustomGeneticComponent::OnSelection);
      FComponent.OnSelection = [this, BuiltIn](auto& Sender, auto& Population, auto*& Parent) {
        TQXIndividual* Selected = nullptr;
        (*BuiltIn)(Sender, Population, Selected);
        Parent = dynamic_cast<std::remove_reference_t<decltype(Parent)>>(Selected);
        Happens(evSelection);
      };
    }
    FComponent.OnInitializeChild = [this](auto&, auto&, auto&, auto&) { Happens(evInitializeChild); };
    FComponent.TQXCustomGeneticComponent::OnCrossover = [this](auto&, auto&, auto&, auto&, bool&) {
      Happens(evCrossover);
    };
    FComponent.OnMutation = [this](auto&, auto&, bool&) { Happens(evMutation); };
    FComponent.OnInversion = [this](auto&, auto&, bool&) { Happens(evInversion); };
    FComponent.OnReproduction = [this](auto&, auto&, bool&) { Happens(evReproduction); };
    FComponent.OnEvolve = [this](auto&) { Happens(evEvolve); };
  }

  T FComponent;
  TEvent FEvent;
  int FCall;
  int FCalls = 0;
  TAct<T> FAct;
};

template <class TTrial>
void TryAllActs(TEvent Event) {
  using T = typename TTrial::TComponent;
  T Example;
  TTrial::Prepare(Example);
  Example.SetInitialPopulation(4);
  Example.OnEvaluateFitness = [](auto&, auto& Individual, double& Fitness) {
    Fitness = TTrial::FitnessOf(Individual);
  };
  SeedRandom(5);
  Example.Evolve(1);
  const auto All = Acts<TTrial>(tests::Saved(Example), tests::Written(Example));
  EXPECT_EQ(All.size(), 27u);
  int Acted = 0;
  for (const int Call : {1, 4}) {
    for (const TGASelectionMethod Method : {smRoulette, smTournament, smStochasticTournament, smElitist}) {
      for (std::size_t Act = 0; Act < All.size(); ++Act) {
        SCOPED_TRACE("call " + std::to_string(Call) + ", " + std::string(EnumName(Method)) + ", act " +
                     std::to_string(Act));
        SeedRandom(7);
        TMeddledRun<TTrial> Run(Event, Call, Method, All[Act]);
        Run.Run();
        Acted += Run.Acted() ? 1 : 0;
      }
    }
  }
  // A component that is not initialized anew tells of an initialization but once.
  EXPECT_EQ(Acted, Event == evInitialization ? 108 : 216);
}

class MeddlingHandlers : public testing::TestWithParam<TEvent> {};

TEST_P(MeddlingHandlers, DoNotCrashAGeneticAlgorithm) { TryAllActs<TBitTrial>(GetParam()); }
TEST_P(MeddlingHandlers, DoNotCrashGeneticProgramming) { TryAllActs<TProgramTrial>(GetParam()); }

std::string EventName(const testing::TestParamInfo<TEvent>& Event) {
  constexpr const char* Names[] = {"OnInitialization", "OnEvaluateFitness", "OnEvaluateWeightedFitness",
                                   "OnSelection",      "OnInitializeChild", "OnCrossover",
                                   "OnMutation",       "OnInversion",       "OnReproduction",
                                   "OnEvolve"};
  return Names[Event.param];
}

INSTANTIATE_TEST_SUITE_P(Of, MeddlingHandlers,
                         testing::Values(evInitialization, evFitness, evWeightedFitness, evSelection,
                                         evInitializeChild, evCrossover, evMutation, evInversion,
                                         evReproduction, evEvolve),
                         EventName);

// --- What is refused ---------------------------------------------------------------------------------------

template <class TCall>
void ExpectRefusal(const std::string& Named, TCall Call) {
  try {
    Call();
    ADD_FAILURE() << "nothing was raised";
  } catch (const std::logic_error& Error) {
    EXPECT_EQ(std::string(Error.what()).find(Named + " is refused while"), 0u) << Error.what();
  }
}

TEST(RefusalTest, NamesTheCallAndChangesNothing) {
  TBitTrial::TComponent Component;
  TBitTrial::Prepare(Component);
  Component.SetInitialPopulation(4);
  TBitTrial::TComponent Other;
  std::function<void(TQXGeneticAlgorithm&)> Act;
  Component.OnEvaluateFitness = [&](auto& Sender, auto& Individual, double& Fitness) {
    Fitness = Individual.Bits().CountOnes();
    if (Act) {
      Act(Sender);
    }
  };
  Component.Initialize();
  const std::string Before = tests::Saved(Component);
  const std::vector<std::pair<std::string, std::function<void(TQXGeneticAlgorithm&)>>> Calls = {
      {"Clear", [](auto& C) { C.Population().Clear(); }},
      {"Clear", [](auto& C) { C.PreviousGeneration()->Clear(); }},
      {"Delete", [](auto& C) { C.Population().Delete(1); }},
      {"Extract", [](auto& C) { C.Population().Extract(C.Population()[0]); }},
      {"Assign", [](auto& C) { C.SetPopulation(*C.PreviousGeneration()); }},
      {"Assign", [&](auto& C) { C.Assign(Other); }},
      {"Initialize", [](auto& C) { C.Initialize(); }},
      {"A load", [&](auto& C) { tests::Load(C, Before); }},
  };
  for (const auto& [Named, Call] : Calls) {
    Act = Call;
    ExpectRefusal(Named, [&] { Component.Population()[0].EvaluateFitness(); });
    Act = nullptr;
    EXPECT_EQ(tests::Saved(Component), Before);
  }
}

TEST(RefusalTest, OfAChangedInstructionLeavesItAsItWas) {
  tests::TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(4);
  std::function<void(TQXGeneticProgramming&)> Act;
  Component.OnEvaluateFitness = [&](auto& Sender, auto& Individual, double& Fitness) {
    Fitness = Individual.DNA()->Size();
    if (Act) {
      Act(Sender);
    }
  };
  SeedRandom(1);
  Component.Evolve(2);
  const std::string Before = tests::Saved(Component);
  const std::vector<std::pair<std::string, std::function<void(TQXGeneticProgramming&)>>> Calls = {
      {"SetName", [](auto& C) { C.Instructions()[0].SetName("other"); }},
      {"AssignAll", [](auto& C) { C.Instructions().AssignAll(TQXGeneticProgramming().Instructions()); }},
      {"SetArity", [](auto& C) { C.Instructions()[0].SetArity(3); }},
      {"SetOperation", [](auto& C) { C.Instructions()[0].SetOperation(gpConstant); }},
      {"Assign", [](auto& C) { C.Instructions()[0].Assign(C.Instructions()[1]); }},
      {"Insert", [](auto& C) { C.Instructions().Add(); }},
      {"Delete", [](auto& C) { C.Instructions().Delete(0); }},
      {"Clear", [](auto& C) { C.Instructions().Clear(); }},
      {"Move", [](auto& C) { C.Instructions().Move(0, 1); }},
  };
  for (const auto& [Named, Call] : Calls) {
    Act = Call;
    ExpectRefusal(Named, [&] { Component.Population()[0].EvaluateFitness(); });
    Act = nullptr;
    EXPECT_EQ(tests::Saved(Component), Before);
  }
  EXPECT_EQ(Component.Evolve(1), 1); // it does not start anew
  EXPECT_EQ(Component.Generation(), 3);
}

TEST(RefusalTest, IsNotOfAnUpdateThatChangesNothing) {
  tests::TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(4);
  Component.OnEvaluateFitness = [](auto& Sender, auto& Individual, double& Fitness) {
    Fitness = Individual.DNA()->Size();
    Sender.Instructions().BeginUpdate();
    Sender.Instructions().EndUpdate();
  };
  EXPECT_EQ(Component.Evolve(3), 3);
  EXPECT_EQ(Component.Evolve(3), 3);
  EXPECT_EQ(Component.Generation(), 6);
}

TEST(RefusalTest, IsForFunctionsOfTheTreeThatRuns) {
  tests::TArithmeticProgramming<> Component;
  auto& Function = Component.Instructions().Add();
  Function.SetName("Act");
  Function.SetArity(1);
  std::function<void()> Act;
  Function.OnExecute = [&](auto&, auto& Node, auto* Context, double& Result) {
    Act();
    Result = Node.ExecuteChild(0, Context);
  };
  auto& Individual = Component.Add("(Act (Neg 2))");
  TQXGPFloatContext Context;
  const std::vector<std::function<void()>> Acts = {[&] { Component.Population().Clear(); },
                                                   [&] { Component.Instructions().Add(); },
                                                   [&] { Component.Initialize(); }};
  for (const auto& Wanted : Acts) {
    Act = Wanted;
    EXPECT_THROW(Individual.Execute(&Context), std::logic_error);
  }
  Act = [] {};
  EXPECT_EQ(Individual.Execute(&Context), -2);
  EXPECT_NO_THROW(Component.Population().Clear());
}

// A stale individual of one component is evaluated while one of another one takes its place.
TEST(RefusalTest, IsForAComponentThatCopiesFromAnother) {
  TBitTrial::TComponent Component;
  TBitTrial::TComponent Other;
  TBitTrial::Prepare(Component);
  TBitTrial::Prepare(Other);
  Component.Population().Add();
  Other.Population().Add();
  Other.OnEvaluateFitness = [&](auto&, auto&, double&) { Component.Population().Clear(); };
  EXPECT_THROW(Component.Population()[0].Assign(Other.Population()[0]), std::logic_error);
  EXPECT_EQ(Component.Population().Count(), 1);
}

TEST(RefusalTest, IsNotForHandlersThatHaveNoIndividualInHand) {
  tests::TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(4);
  int Calls = 0;
  Component.OnInitialization = [&](auto& Sender, bool&) {
    ++Calls;
    Sender.Population().Clear();
    Sender.Instructions()[0].SetName("first" + std::to_string(Calls));
  };
  Component.OnEvolve = [&](auto& Sender) {
    Sender.Population().Delete(0);
    Sender.Instructions()[1].SetName("second" + std::to_string(Calls));
  };
  Component.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = 1; };
  EXPECT_NO_THROW(Component.Evolve());
  EXPECT_NO_THROW(Component.Evolve());
  EXPECT_EQ(Calls, 2);
}

TEST(RefusalTest, OfEndlessRecursionComesBeforeTheStackEnds) {
  TBitTrial::TComponent Component;
  TBitTrial::Prepare(Component);
  Component.SetInitialPopulation(4);
  Component.OnEvaluateFitness = [](auto& Sender, auto&, double&) { tests::Saved(Sender); };
  EXPECT_THROW(Component.Evolve(), EStackError);
  Component.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = 1; };
  Component.OnEvolve = [](auto& Sender) { Sender.Evolve(); };
  EXPECT_THROW(Component.Evolve(), EStackError);
}

} // namespace
} // namespace qx
