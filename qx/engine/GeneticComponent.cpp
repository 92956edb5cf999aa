#include <qx/engine/GeneticComponent.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

namespace qx {

namespace {

// Stores a setting that is clamped into 0 to 1.
void StoreProbability(TGAProbability& Setting, TGAProbability Value, const char* Property) {
  if (std::isnan(Value)) {
    throw std::invalid_argument(std::string(Property) + " must be a number, not NaN");
  }
  Setting = std::clamp(Value, 0.0, 1.0);
}

// Copies a generation; an absent one copies as an empty one.
void AssignGeneration(TQXPopulation& Target, const TQXPopulation* Source) {
  if (Source != nullptr) {
    Target.Assign(*Source);
  } else {
    Target.Clear();
  }
}

} // namespace

TQXCustomGeneticComponent::TQXCustomGeneticComponent(TComponent* Owner) : TComponent(Owner) {
  BindSelection();
}

void TQXCustomGeneticComponent::SetInitialPopulation(int Value) { FInitialPopulation = std::max(Value, 0); }

void TQXCustomGeneticComponent::SetInitialDuplicatesRetries(int Value) {
  FInitialDuplicatesRetries = std::max(Value, 0);
}

void TQXCustomGeneticComponent::SetCrossoverProbability(TGAProbability Value) {
  StoreProbability(FCrossoverProbability, Value, "CrossoverProbability");
}

void TQXCustomGeneticComponent::SetMutationProbability(TGAProbability Value) {
  StoreProbability(FMutationProbability, Value, "MutationProbability");
}

void TQXCustomGeneticComponent::SetInversionProbability(TGAProbability Value) {
  StoreProbability(FInversionProbability, Value, "InversionProbability");
}

void TQXCustomGeneticComponent::SetOperations(TGAGeneticOperations Value) {
  constexpr TGAGeneticOperations All = {goCrossover, goMutate, goInvert};
  if ((Value.Bits() & ~All.Bits()) != 0) {
    throw std::out_of_range("Operations: bits " + std::to_string(Value.Bits()) + " hold more than the three");
  }
  FOperations = Value;
}

void TQXCustomGeneticComponent::SetTournamentField(int Value) { FTournamentField = std::max(Value, 2); }

void TQXCustomGeneticComponent::SetElitistPct(TGAProbability Value) {
  StoreProbability(FElitistPct, Value, "ElitistPct");
}

void TQXCustomGeneticComponent::SetFitnessMethod(TGAFitnessMethod Value) {
  FStatisticsDue |= CheckedEnum(Value, "FitnessMethod") != FFitnessMethod;
  FFitnessMethod = Value;
}

void TQXCustomGeneticComponent::SetDiversityLimit(TGAProbability Value) {
  StoreProbability(FDiversityLimit, Value, "DiversityLimit");
}

void TQXCustomGeneticComponent::SetGenerationLimit(int Value) { FGenerationLimit = std::max(Value, 1); }

TQXPopulation& TQXCustomGeneticComponent::Population() {
  if (FPopulation == nullptr) [[unlikely]] {
    FPopulation = CreatePopulation(ItemClassOf<TQXIndividual>());
  }
  return *FPopulation;
}

void TQXCustomGeneticComponent::SetPreviousGeneration(const TQXPopulation& Value) {
  if (FPreviousGeneration == nullptr) {
    FPreviousGeneration = CreatePopulation(Population().ItemClass());
  }
  FPreviousGeneration->Assign(Value);
}

void TQXCustomGeneticComponent::Initialize() {
  FInitialized = false;
  while (Population().Count() < FInitialPopulation) {
    Population().Add();
  }
  bool Filled = false;
  OnInitialization(*this, Filled);
  if (!Filled) {
    DoInitialize();
  }
  EvaluateFitness();
  SetPreviousGeneration(Population());
  FInitialized = true;
  FGeneration = 0;
}

void TQXCustomGeneticComponent::Evolve() {
  DoEvolve();
  OnEvolve(*this);
}

int TQXCustomGeneticComponent::Evolve(int Generations) {
  FHalt = false;
  const std::int64_t Before = FGeneration;
  for (int I = 0; I < Generations; ++I) {
    Evolve();
    if (IsFinished() || FHalt) {
      break;
    }
  }
  return static_cast<int>(FGeneration - Before);
}

bool TQXCustomGeneticComponent::IsFinished() {
  if (FUseFitnessCutoff && FFittestIndividual != nullptr) {
    const TGAFitness Best = FFittestIndividual->Fitness();
    if (Maximizing() ? Best >= FFitnessCutoff : Best <= FFitnessCutoff) {
      return true;
    }
  }
  if (FUseDiversityLimit && Diversity() < FDiversityLimit) {
    return true;
  }
  return FUseGenerationLimit && FGeneration >= FGenerationLimit;
}

void TQXCustomGeneticComponent::SwapGenerations() {
  FPopulation.swap(FPreviousGeneration);
  FStatisticsDue = true;
}

void TQXCustomGeneticComponent::Assign(const TPersistent& Source) {
  if (&Source == this) {
    return;
  }
  const auto* Component = SourceAs<TQXCustomGeneticComponent>(Source);
  if (Component == nullptr) {
    TComponent::Assign(Source);
    return;
  }
  Component->EvaluateStale();
  AssignGeneration(Population(), Component->FPopulation.get());
  if (Component->FPreviousGeneration != nullptr) {
    SetPreviousGeneration(*Component->FPreviousGeneration);
  } else {
    FPreviousGeneration.reset();
  }
  FFittestIndividual = Counterpart(*Component);
  AssignSettings(*Component);
}

void TQXCustomGeneticComponent::AssignSettings(const TQXCustomGeneticComponent& Source) {
  FGeneration = Source.FGeneration;
  FFitnessCutoff = Source.FFitnessCutoff;
  FMutationProbability = Source.FMutationProbability;
  FInversionProbability = Source.FInversionProbability;
  FCrossoverProbability = Source.FCrossoverProbability;
  FElitistPct = Source.FElitistPct;
  FFitnessMethod = Source.FFitnessMethod;
  FFitnesses = Source.FFitnesses;
  FWeightedFitnesses = Source.FWeightedFitnesses;
  FDiversityLimit = Source.FDiversityLimit;
  FGenerationLimit = Source.FGenerationLimit;
  FTournamentField = Source.FTournamentField;
  FInitialized = Source.FInitialized;
  FUseFitnessCutoff = Source.FUseFitnessCutoff;
  FUseDiversityLimit = Source.FUseDiversityLimit;
  FUseGenerationLimit = Source.FUseGenerationLimit;
  FInitialDuplicatesRetries = Source.FInitialDuplicatesRetries;
  FStatisticsDue = Source.FStatisticsDue;
  SetSelectionMethod(Source.FSelectionMethod);
  ForgetSelection();
}

// The own individual that stands where the source's fittest one stands there.
TQXIndividual* TQXCustomGeneticComponent::Counterpart(const TQXCustomGeneticComponent& Source) {
  if (Source.FFittestIndividual == nullptr) {
    return nullptr;
  }
  const bool Current = Source.FFittestIndividual->Collection() == Source.FPopulation.get();
  TQXPopulation* const Own = Current ? FPopulation.get() : FPreviousGeneration.get();
  return &Own->Items(Source.FFittestIndividual->Index());
}

std::unique_ptr<TQXPopulation>
TQXCustomGeneticComponent::CreatePopulation(TItemClass<TQXIndividual> ItemClass) {
  return std::make_unique<TQXPopulation>(this, ItemClass);
}

void TQXCustomGeneticComponent::PopulationNotify(TQXIndividual& Item, TCollectionNotification Action) {
  if (Action == cnAdded) {
    return;
  }
  if (&Item == FFittestIndividual) {
    FFittestIndividual = nullptr;
  }
  if (Item.TCollectionItem::Collection() == FPopulation.get()) {
    FStatisticsDue = true;
  }
  if (FElite != nullptr) {
    FElite->Remove(Item);
  }
}

void TQXCustomGeneticComponent::PopulationUpdate(TQXIndividual* /*Item*/) {}

void TQXCustomGeneticComponent::DoEvolve() {
  if (!FInitialized) {
    Initialize();
  }
  if (FStatisticsDue && OnEvaluateFitness) {
    EvaluateFitness();
  }
  if (IsFinished() || Population().Count() == 0) {
    return;
  }
  PrepareGeneration();
  DoStartEvolve();
  TUpdateScope Update(*FPopulation);
  ReproduceAll();
  EvaluateFitness();
  Update.End();
  DoFinishEvolve();
}

// What a generation needs, checked before anything changes.
void TQXCustomGeneticComponent::PrepareGeneration() {
  if (!OnEvaluateFitness) {
    throw EGAException(std::string(SNoFitnessFunction));
  }
  if (FSelectionMethod == smCustom && !OnSelection) {
    throw EGAException(std::string(SNoSelectionFunction));
  }
  if (FGeneration == std::numeric_limits<int>::max()) {
    throw std::overflow_error("Generation cannot be counted beyond " + std::to_string(FGeneration));
  }
  if (FPreviousGeneration == nullptr) {
    SetPreviousGeneration(Population());
  }
}

void TQXCustomGeneticComponent::ReproduceAll() {
  struct TReproducing {
    explicit TReproducing(bool& Flag) : FFlag(Flag), FFormer(std::exchange(Flag, true)) {}
    ~TReproducing() { FFlag = FFormer; }
    bool& FFlag;
    bool FFormer; // a handler may evolve in turn
  } const Reproducing(FReproducing);
  for (int Index = 0; Index < FPopulation->Count(); Index += 2) {
    DoEvolveOneStep(Index);
  }
}

void TQXCustomGeneticComponent::DoEvolveOneStep(int Index) {
  TQXPopulation& Children = *FPopulation;
  TQXIndividual& Parent1 = SelectParent(*FPreviousGeneration);
  TQXIndividual& Parent2 = SelectParent(*FPreviousGeneration);
  if (Index >= Children.Count() - 1) {
    Reproduce(Parent1, Parent2, Children[Index]);
  } else {
    Reproduce(Parent1, Parent2, Children[Index], Children[Index + 1]);
  }
}

void TQXCustomGeneticComponent::DoStartEvolve() {
  FSelectionCursor = -1;
  SwapGenerations();
}

void TQXCustomGeneticComponent::DoFinishEvolve() { ++FGeneration; }

int TQXCustomGeneticComponent::DoInitialize() { return 0; }

void TQXCustomGeneticComponent::EvaluateStale() const {
  for (const TQXPopulation* Generation : {FPopulation.get(), FPreviousGeneration.get()}) {
    if (Generation != nullptr) {
      Generation->EvaluateStale();
    }
  }
}

void TQXCustomGeneticComponent::FreeGenerations() {
  FFittestIndividual = nullptr;
  FElite.reset();
  FPopulation.reset();
  FPreviousGeneration.reset();
}

void TQXCustomGeneticComponent::FitnessHandlerChanged(bool WasAssigned) {
  if (WasAssigned || !OnEvaluateFitness) {
    return;
  }
  for (TQXPopulation* Generation : {FPopulation.get(), FPreviousGeneration.get()}) {
    if (Generation != nullptr) {
      for (TQXIndividual& Individual : *Generation) {
        Individual.MarkStale();
      }
    }
  }
  FStatisticsDue = true;
}

} // namespace qx
