#include <qx/engine/GeneticComponent.h>
#include <qx/foundation/FloatPriorityQueue.h>
#include <qx/platform/StackGuard.h>

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

TQXCustomGeneticComponent::~TQXCustomGeneticComponent() = default;

void TQXCustomGeneticComponent::SetInitialPopulation(int Value) {
  FSettings.InitialPopulation = std::max(Value, 0);
}

void TQXCustomGeneticComponent::SetInitialDuplicatesRetries(int Value) {
  FSettings.InitialDuplicatesRetries = std::max(Value, 0);
}

void TQXCustomGeneticComponent::SetCrossoverProbability(TGAProbability Value) {
  StoreProbability(FSettings.CrossoverProbability, Value, "CrossoverProbability");
}

void TQXCustomGeneticComponent::SetMutationProbability(TGAProbability Value) {
  StoreProbability(FSettings.MutationProbability, Value, "MutationProbability");
}

void TQXCustomGeneticComponent::SetInversionProbability(TGAProbability Value) {
  StoreProbability(FSettings.InversionProbability, Value, "InversionProbability");
}

void TQXCustomGeneticComponent::SetOperations(TGAGeneticOperations Value) {
  constexpr TGAGeneticOperations All = {goCrossover, goMutate, goInvert};
  if ((Value.Bits() & ~All.Bits()) != 0) {
    throw std::out_of_range("Operations: bits " + std::to_string(Value.Bits()) + " hold more than the three");
  }
  FSettings.Operations = Value;
}

void TQXCustomGeneticComponent::SetTournamentField(int Value) {
  FSettings.TournamentField = std::max(Value, 2);
}

void TQXCustomGeneticComponent::SetEliteCount(int Value) { FSettings.EliteCount = std::max(Value, 0); }

void TQXCustomGeneticComponent::SetElitistPct(TGAProbability Value) {
  StoreProbability(FSettings.ElitistPct, Value, "ElitistPct");
}

void TQXCustomGeneticComponent::SetFitnessMethod(TGAFitnessMethod Value) {
  FStatisticsDue |= CheckedEnum(Value, "FitnessMethod") != FSettings.FitnessMethod;
  FSettings.FitnessMethod = Value;
}

void TQXCustomGeneticComponent::SetDiversityLimit(TGAProbability Value) {
  StoreProbability(FSettings.DiversityLimit, Value, "DiversityLimit");
}

void TQXCustomGeneticComponent::SetGenerationLimit(int Value) {
  FSettings.GenerationLimit = std::max(Value, 1);
}

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
  RequireNoUse("Initialize");
  RequireStack(); // a handler may initialize in turn
  FBestEver.reset();
  Repopulate();
  FSettings.Generation = 0;
  ++FStarts;
}

void TQXCustomGeneticComponent::Repopulate() {
  const TUse Running(FRunning);
  FSettings.Initialized = false;
  while (Population().Count() < FSettings.InitialPopulation) {
    Population().Add();
  }
  bool Filled = false;
  OnInitialization(*this, Filled);
  if (!Filled) {
    DoInitialize();
  }
  EvaluateFitness();
  SetPreviousGeneration(Population());
  FSettings.Initialized = true;
}

void TQXCustomGeneticComponent::Evolve() {
  RequireStack(); // a handler may evolve in turn
  DoEvolve();
  OnEvolve(*this);
}

int TQXCustomGeneticComponent::Evolve(int Generations) {
  FSettings.Halt = false;
  std::int64_t Before = FSettings.Generation;
  for (int I = 0; I < Generations; ++I) {
    const int Starts = FStarts;
    Evolve();
    Before = FStarts == Starts ? Before : 0;
    if (IsFinished() || FSettings.Halt) {
      break;
    }
  }
  return static_cast<int>(FSettings.Generation - Before);
}

bool TQXCustomGeneticComponent::IsFinished() {
  if (FSettings.UseFitnessCutoff && FFittestIndividual != nullptr) {
    const TGAFitness Best = FFittestIndividual->Fitness();
    if (Maximizing() ? Best >= FSettings.FitnessCutoff : Best <= FSettings.FitnessCutoff) {
      return true;
    }
  }
  if (FSettings.UseDiversityLimit && Diversity() < FSettings.DiversityLimit) {
    return true;
  }
  return FSettings.UseGenerationLimit && FSettings.Generation >= FSettings.GenerationLimit;
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
  RequireNoUse("Assign");
  Component->EvaluateStale();
  AssignGeneration(Population(), Component->FPopulation.get());
  if (Component->FPreviousGeneration != nullptr) {
    SetPreviousGeneration(*Component->FPreviousGeneration);
  } else {
    FPreviousGeneration.reset();
  }
  FFittestIndividual = Counterpart(*Component);
  if (Component->BestEver() != nullptr) {
    StoreBest(*Component->BestEver());
  } else {
    FBestEver.reset();
  }
  AssignSettings(*Component);
}

void TQXCustomGeneticComponent::AssignSettings(const TQXCustomGeneticComponent& Source) {
  TSettings Settings = Source.FSettings;
  Settings.InitialPopulation = FSettings.InitialPopulation;
  Settings.Operations = FSettings.Operations;
  Settings.Halt = FSettings.Halt;
  Settings.SelectionMethod = FSettings.SelectionMethod; // its setter binds the handler
  FSettings = Settings;
  SetSelectionMethod(Source.FSettings.SelectionMethod);
  FFitnesses = Source.FFitnesses;
  FWeightedFitnesses = Source.FWeightedFitnesses;
  FStatisticsDue = Source.FStatisticsDue;
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
  const TUse Running(FRunning);
  if (!FSettings.Initialized) {
    Initialize();
  }
  if (FStatisticsDue && OnEvaluateFitness) {
    EvaluateFitness();
  }
  if (IsFinished() || Population().Count() == 0) {
    return;
  }
  PrepareGeneration();
  const TUse Use(*this);
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
  if (FSettings.SelectionMethod == smCustom && !OnSelection) {
    throw EGAException(std::string(SNoSelectionFunction));
  }
  if (FSettings.Generation == std::numeric_limits<int>::max()) {
    throw std::overflow_error("Generation cannot be counted beyond " + std::to_string(FSettings.Generation));
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
  for (int Index = KeepElites(); Index < FPopulation->Count(); Index += 2) {
    DoEvolveOneStep(Index);
  }
}

// Copies the best parents to the first places and returns how many.
int TQXCustomGeneticComponent::KeepElites() {
  if (FSettings.EliteCount == 0) {
    return 0;
  }
  FPreviousGeneration->EvaluateStale(); // by handlers, which may evolve in turn
  const int Count = std::min({FSettings.EliteCount, FPopulation->Count(), FPreviousGeneration->Count()});
  std::vector<TQXIndividual*> Ranked = std::move(FRanked);
  Ranked.clear();
  for (TQXIndividual& Individual : *FPreviousGeneration) {
    Ranked.push_back(&Individual);
  }
  const auto Precedes = [this](TQXIndividual* Left, TQXIndividual* Right) {
    const int Order = CompareFitness(*Left, *Right, true);
    return Order != 0 ? Order < 0 : Left->Index() < Right->Index();
  };
  std::partial_sort(Ranked.begin(), Ranked.begin() + Count, Ranked.end(), Precedes);
  for (int I = 0; I < Count; ++I) {
    (*FPopulation)[I].Assign(*Ranked[static_cast<std::size_t>(I)]);
  }
  FRanked = std::move(Ranked);
  return Count;
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

void TQXCustomGeneticComponent::DoFinishEvolve() { ++FSettings.Generation; }

int TQXCustomGeneticComponent::DoInitialize() { return 0; }

void TQXCustomGeneticComponent::RequireNoUse(std::string_view Call) const {
  if (InUse()) {
    throw std::logic_error(std::string(Call) + " is refused while individuals of the " + ClassName() +
                           " are made, selected, changed or evaluated");
  }
}

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
  FBestEver.reset();
  FPopulation.reset();
  FPreviousGeneration.reset();
}

void TQXCustomGeneticComponent::DiscardGenerations() {
  for (TQXPopulation* Generation : {FPopulation.get(), FPreviousGeneration.get()}) {
    if (Generation != nullptr) {
      Generation->Clear();
    }
  }
  FBestEver.reset();
  FSettings.Initialized = false;
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
  if (TQXIndividual* const Best = BestEver(); Best != nullptr && InUse()) { // perhaps by its own evaluation
    Best->MarkStale();
  } else {
    FBestEver.reset();
  }
  FStatisticsDue = true;
}

} // namespace qx
