#pragma once

// Definitions of GeneticProgramming.h: instructions, settings, copies. GPInitialization.ipp, GPOperators.ipp,
// GPBloatControl.ipp, GPPersistence.ipp and GPDescription.ipp have the rest.

#include <qx/genetic_programming/GeneticProgramming.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <utility>

namespace qx::generics {

template <class T>
TQXCustomGeneticProgramming<T>::TQXCustomGeneticProgramming(TComponent* Owner) : TBase(Owner) {
  constexpr int Contestants = 7;
  this->SetCrossoverProbability(GP_CROSSOVER_PROBABILITY);
  this->SetTournamentField(Contestants);
}

template <class T>
TQXCustomGeneticProgramming<T>::~TQXCustomGeneticProgramming() {
  this->FreeGenerations();
}

template <class T>
std::unique_ptr<TQXPopulation>
TQXCustomGeneticProgramming<T>::CreatePopulation(TItemClass<TQXIndividual> /*ItemClass*/) {
  return std::make_unique<TQXGPPopulation<T>>(this);
}

// --- Instructions ------------------------------------------------------------------------------------------

template <class T>
auto TQXCustomGeneticProgramming<T>::ItemAt(const TInstructionList& List, int Index, const char* What)
    -> TInstruction& {
  if (Index < 0 || std::cmp_greater_equal(Index, List.size())) {
    throw std::out_of_range("There is no " + std::string(What) + " at index " + std::to_string(Index) +
                            " of " + std::to_string(List.size()));
  }
  return *List[static_cast<std::size_t>(Index)];
}

template <class T>
void TQXCustomGeneticProgramming<T>::DiscardPrograms() {
  FDiscardDue = false;
  FStatistics = {};
  this->DiscardGenerations();
}

// A single instruction is moved without a look at the others, so that n changes cost n.
template <class T>
void TQXCustomGeneticProgramming<T>::InstructionUpdate(TInstruction* Instruction) {
  if (Instruction == nullptr && this->InUse() && !this->Instructions().HasEndedChanges()) {
    return; // an update that has changed nothing, as it could not now
  }
  const bool Alone = Instruction != nullptr && this->Instructions().OnlyFlipped(*Instruction);
  if (Alone) {
    TInstructionList& From = Instruction->Arity() > 0 ? FTerminals : FFunctions;
    TInstructionList& To = Instruction->Arity() > 0 ? FFunctions : FTerminals;
    if (EraseLast(From, Instruction)) {
      To.push_back(Instruction);
    }
  } else if (this->Instructions().AnyFlipped()) {
    MoveWhere(false, FFunctions, FTerminals);
    MoveWhere(true, FTerminals, FFunctions);
  }
  this->Instructions().ForgetFlipped();
  FDiscardDue = true; // also when it is too early for it: an update that was open ends in a handler
  this->RequireNoUse("EndUpdate");
  DiscardPrograms();
}

// Looks for it from the end, where what came last is.
template <class T>
bool TQXCustomGeneticProgramming<T>::EraseLast(TInstructionList& List, const TInstruction* Instruction) {
  const auto Found = std::find(List.rbegin(), List.rend(), Instruction);
  if (Found == List.rend()) {
    return false;
  }
  List.erase(std::prev(Found.base()));
  return true;
}

// Takes it out of the list that has it; looks at both from their ends at once, since it is in one only.
template <class T>
bool TQXCustomGeneticProgramming<T>::Unlist(const TInstruction& Instruction) {
  const std::size_t Longest = std::max(FFunctions.size(), FTerminals.size());
  for (std::size_t Distance = 1; Distance <= Longest; ++Distance) {
    for (TInstructionList* const List : {&FFunctions, &FTerminals}) {
      if (Distance <= List->size() && (*List)[List->size() - Distance] == &Instruction) {
        List->erase(List->end() - static_cast<std::ptrdiff_t>(Distance));
        return true;
      }
    }
  }
  return false;
}

// Moves the instructions that do or do not take arguments to the end of the other list, in their order.
template <class T>
void TQXCustomGeneticProgramming<T>::MoveWhere(bool WantsFunction, TInstructionList& From,
                                               TInstructionList& To) {
  const auto IsMisplaced = [=](const TInstruction* Instruction) {
    return (Instruction->Arity() > 0) == WantsFunction;
  };
  std::copy_if(From.begin(), From.end(), std::back_inserter(To), IsMisplaced);
  std::erase_if(From, IsMisplaced);
}

template <class T>
void TQXCustomGeneticProgramming<T>::InstructionNotify(TInstruction& Instruction,
                                                       TCollectionNotification Action) {
  if (Action == cnAdded) {
    (Instruction.Arity() > 0 ? FFunctions : FTerminals).push_back(&Instruction);
  }
  DiscardPrograms();
  if (Action != cnAdded) {
    Unlist(Instruction);
  }
}

template <class T>
void TQXCustomGeneticProgramming<T>::RequireChangeable(const char* Call) const {
  this->RequireNoUse(Call);
}

template <class T>
void TQXCustomGeneticProgramming<T>::InstructionOperationUpdate(TInstruction& Instruction) {
  if (Unlist(Instruction)) {
    (Instruction.Arity() > 0 ? FFunctions : FTerminals).push_back(&Instruction);
  }
  this->Instructions().ForgetFlipped(Instruction);
}

// --- Settings ----------------------------------------------------------------------------------------------

template <class T>
void TQXCustomGeneticProgramming<T>::SetCrossoverMethod(TGPCrossoverMethod Value) {
  FSettings.CrossoverMethod = CheckedEnum(Value, "CrossoverMethod");
}

template <class T>
void TQXCustomGeneticProgramming<T>::SetInitializationDepth(int Value) {
  FSettings.InitializationDepth = std::max(Value, 0);
}

template <class T>
void TQXCustomGeneticProgramming<T>::SetInitializationMethod(TGPInitializationMethod Value) {
  FSettings.InitializationMethod = CheckedEnum(Value, "InitializationMethod");
}

template <class T>
void TQXCustomGeneticProgramming<T>::SetBuildSizeLimit(int Value) {
  FSettings.BuildSizeLimit = std::max(Value, 1);
}

template <class T>
void TQXCustomGeneticProgramming<T>::SetDuplicatesBuildLimit(int Value) {
  FSettings.DuplicatesBuildLimit = std::max(Value, 0);
}

template <class T>
void TQXCustomGeneticProgramming<T>::SetMutationWeights(const TGPMutationMethodWeights& Value) {
  FSettings.MutationWeights = Value;
  FSettings.MutationWeightSum = SumOfWeights(Value);
}

template <class T>
int TQXCustomGeneticProgramming<T>::MutateWeights(TGPMutationMethod Method) const {
  return FSettings.MutationWeights[CheckedEnum(Method, "Method")];
}

template <class T>
void TQXCustomGeneticProgramming<T>::SetMutateWeights(TGPMutationMethod Method, int Value) {
  if (Value != MutateWeights(Method)) {
    FSettings.MutationWeights[Method] = static_cast<std::uint8_t>(std::max(Value, 0));
    FSettings.MutationWeightSum = SumOfWeights(FSettings.MutationWeights);
  }
}

template <class T>
int TQXCustomGeneticProgramming<T>::SumOfWeights(const TGPMutationMethodWeights& Weights) {
  return std::accumulate(Weights.begin(), Weights.end(), 0);
}

template <class T>
void TQXCustomGeneticProgramming<T>::SetPointMutationMethod(TGPPointMutationMethod Value) {
  FSettings.PointMutationMethod = CheckedEnum(Value, "PointMutationMethod");
}

template <class T>
void TQXCustomGeneticProgramming<T>::SetBloatStrategy(TGPBloatStrategy Value) {
  FSettings.BloatStrategy = CheckedEnum(Value, "BloatStrategy");
}

template <class T>
void TQXCustomGeneticProgramming<T>::SetBloatLimit(int Value) {
  constexpr int Least = 5;
  FSettings.BloatLimit = std::max(Value, Least);
}

// --- Copies ------------------------------------------------------------------------------------------------

template <class T>
void TQXCustomGeneticProgramming<T>::Assign(const TPersistent& Source) {
  AssignWith(Source, &TQXGPInstructions<T>::Assign);
}

template <class T>
void TQXCustomGeneticProgramming<T>::AssignAll(const TPersistent& Source) {
  AssignWith(Source, &TQXGPInstructions<T>::AssignAll);
}

template <class T>
void TQXCustomGeneticProgramming<T>::AssignWith(const TPersistent& Source,
                                                void (TQXGPInstructions<T>::*CopySet)(const TPersistent&)) {
  const auto* const Component = this->template SourceAs<TQXCustomGeneticProgramming>(Source);
  if (Component != nullptr && Component != this) {
    this->RequireNoUse("Assign");
    RequireSameNodes(const_cast<TQXCustomGeneticProgramming&>(*Component)); // changes nothing
    Component->EvaluateStale(); // may fail; then nothing has changed
    FSettings = Component->FSettings;
    this->CopyInstructions(*Component, CopySet);
  }
  TBase::Assign(Source);
}

template <class T>
void TQXCustomGeneticProgramming<T>::RequireSameNodes(TQXCustomGeneticProgramming& Source) {
  if (Source.Population().Count() == 0 &&
      (Source.PreviousGeneration() == nullptr || Source.PreviousGeneration()->Count() == 0)) {
    return;
  }
  const TNodePointer Own = MakeNodeFor(nullptr);
  const TNodePointer Other = Source.MakeNodeFor(nullptr);
  if (const TNode& Left = *Own, &Right = *Other; typeid(Left) != typeid(Right)) {
    throw std::invalid_argument("A " + this->ClassName() + ", whose programs are made of " +
                                Own->ClassName() + ", cannot be assigned from a " + Source.ClassName() +
                                ", whose are made of " + Other->ClassName());
  }
}

} // namespace qx::generics
