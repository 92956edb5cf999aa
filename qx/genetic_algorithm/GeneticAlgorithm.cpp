#include <qx/collections/QXGenerics.Collections.h>
#include <qx/genetic_algorithm/GeneticAlgorithm.h>
#include <qx/platform/Random.h>

#include <stdexcept>
#include <string>

namespace qx {

TQXCustomGeneticAlgorithm::TQXCustomGeneticAlgorithm(TComponent* Owner) : TQXTypedGeneticComponent(Owner) {}

TQXCustomGeneticAlgorithm::~TQXCustomGeneticAlgorithm() { FreeGenerations(); }

TQXGAGenes& TQXCustomGeneticAlgorithm::Genes() {
  if (FGenes == nullptr) {
    FGenes = CreateGenes(ItemClassOf<TQXGAGene>());
  }
  return *FGenes;
}

void TQXCustomGeneticAlgorithm::SetGenes(const TQXGAGenes& Value) {
  Genes().Assign(Value);
  GenesSizeChange();
}

void TQXCustomGeneticAlgorithm::SetGeneSize(int Value) {
  if (Value < 0) {
    throw std::out_of_range("GeneSize must not be negative (" + std::to_string(Value) + ")");
  }
  if (Value == FGeneSize) {
    return;
  }
  if (TLoadScope* const Load = CurrentLoad()) {
    RequireRoom(Population().Count(), Value);
    RememberChromosomes(*Load);
  }
  ResizeChromosomes(Value);
  FGeneSize = Value;
  TUpdateScope Update(Population());
  for (TQXGAIndividual& Individual : Population()) {
    Individual.Modified();
  }
  Update.End();
}

// All of them, or none when one cannot have that size.
void TQXCustomGeneticAlgorithm::ResizeChromosomes(int Size) {
  TBits::CheckSize(Size);
  int Resized = 0;
  try {
    for (; Resized < Population().Count(); ++Resized) {
      Population()[Resized].Bits().SetSize(Size);
    }
  } catch (...) { // those before it go back to what they had, which needs no room
    while (Resized-- > 0) {
      Population()[Resized].Bits().SetSize(FGeneSize);
    }
    throw;
  }
}

void TQXCustomGeneticAlgorithm::SetCrossoverMethod(TGACrossoverMethod Value) {
  FCrossoverMethod = CheckedEnum(Value, "CrossoverMethod");
}

void TQXCustomGeneticAlgorithm::Assign(const TPersistent& Source) {
  const auto* Algorithm = SourceAs<TQXCustomGeneticAlgorithm>(Source);
  if (Algorithm != nullptr && Algorithm != this) {
    RequireNoUse("Assign");
    Algorithm->EvaluateStale(); // may fail; then nothing has changed
    FGeneSize = Algorithm->FGeneSize;
    FCrossoverMethod = Algorithm->FCrossoverMethod;
    if (Algorithm->FGenes != nullptr) {
      Genes().Assign(*Algorithm->FGenes);
    } else {
      Genes().Clear();
    }
  }
  TQXTypedGeneticComponent::Assign(Source);
}

bool TQXCustomGeneticAlgorithm::Mutate(TQXIndividual& Item) {
  const TUse Use(*this);
  bool Allowed = true;
  TQXCustomGeneticComponent::OnMutation(*this, Item, Allowed);
  return Allowed && DoMutate(Item);
}

std::unique_ptr<TQXPopulation>
TQXCustomGeneticAlgorithm::CreatePopulation(TItemClass<TQXIndividual> /*ItemClass*/) {
  return std::make_unique<TQXGAPopulation>(this);
}

std::unique_ptr<TQXGAGenes> TQXCustomGeneticAlgorithm::CreateGenes(TItemClass<TQXGAGene> ItemClass) {
  return std::make_unique<TQXGAGenes>(this, ItemClass);
}

void TQXCustomGeneticAlgorithm::PopulationNotify(TQXIndividual& Item, TCollectionNotification Action) {
  TQXTypedGeneticComponent::PopulationNotify(Item, Action);
  if (Action == cnAdded && !Restoring()) {
    if (auto* const Individual = dynamic_cast<TQXGAIndividual*>(&Item)) {
      Individual->Bits().SetSize(FGeneSize);
    }
  }
}

void TQXCustomGeneticAlgorithm::GeneNotify(TQXGAGene& /*Item*/, TCollectionNotification /*Action*/) {}

void TQXCustomGeneticAlgorithm::GeneUpdate(TQXGAGene* /*Item*/) {}

void TQXCustomGeneticAlgorithm::GenesSizeChange() {
  if (Genes().Size() > FGeneSize && !Restoring()) {
    SetGeneSize(Genes().Size());
  }
}

int TQXCustomGeneticAlgorithm::DoInitialize() {
  int Retries = InitialDuplicatesRetries();
  int Unique = 0;
  generics::TQXDictionary<std::string, TQXGAIndividual*> Known;
  for (TQXGAIndividual& Individual : Population()) {
    TQXGABits& Bits = Individual.Bits();
    Bits.Randomize();
    while (Retries > 0) {
      std::string Key = Bits.ToString();
      if (!Known.ContainsKey(Key)) {
        Known.Add(std::move(Key), &Individual);
        ++Unique;
        break;
      }
      --Retries;
      Bits.Randomize();
    }
  }
  return Unique;
}

bool TQXCustomGeneticAlgorithm::DoCrossover(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                            TQXIndividual& Child1, TQXIndividual* Child2) {
  auto& First = static_cast<TQXGAIndividual&>(Parent1);
  auto& Second = static_cast<TQXGAIndividual&>(Parent2);
  auto& Child = static_cast<TQXGAIndividual&>(Child1);
  int CrossoverBit = DrawCrossoverBit(Child.Bits().Size());
  bool Allowed = true;
  OnCrossover(*this, First, Second, Child, CrossoverBit, Allowed);
  if (Allowed) {
    Child.Bits().CrossOver(First.Bits(), Second.Bits(), CrossoverBit);
  }
  if (Child2 != nullptr) {
    auto& Other = static_cast<TQXGAIndividual&>(*Child2);
    OnCrossover(*this, Second, First, Other, CrossoverBit, Allowed);
    if (Allowed) {
      Other.Bits().CrossOver(Second.Bits(), First.Bits(), CrossoverBit);
    }
  }
  return Allowed;
}

// A boundary is the first bit of what follows it, and the chromosome's crossover takes that bit from the
// first parent too.
int TQXCustomGeneticAlgorithm::DrawCrossoverBit(int Length) {
  int Unit = 1;
  switch (FCrossoverMethod) {
  case cmGeneBoundary:
    return DrawGeneBoundary(Length);
  case cmBitBoundary:
    break;
  case cmByteBoundary:
    Unit = 8;
    break;
  case cmWordBoundary:
    Unit = 16;
    break;
  case cmLongwordBoundary:
    Unit = 32;
    break;
  }
  return Unit > 1 && FGeneSize >= 2 * Unit ? (Random(Length / Unit) + 1) * Unit : Random(Length);
}

int TQXCustomGeneticAlgorithm::DrawGeneBoundary(int Length) {
  const int Count = Genes().Count();
  if (Count > 1) {
    return Genes()[Random(Count - 1) + 1].Offset();
  }
  if (Count == 0 || Genes()[0].Size() == 0) {
    throw std::logic_error("cmGeneBoundary needs a gene with a size: declare one, or set CrossoverMethod to "
                           "cmBitBoundary");
  }
  const int Size = Genes()[0].Size();
  return Random(Length) / Size * Size;
}

bool TQXCustomGeneticAlgorithm::DoMutate(TQXIndividual& Item) {
  return static_cast<TQXGAIndividual&>(Item).Bits().Mutate(MutationProbability());
}

bool TQXCustomGeneticAlgorithm::DoInvert(TQXIndividual& Item) {
  static_cast<TQXGAIndividual&>(Item).Bits().Invert(-1, -1);
  return true;
}

} // namespace qx
