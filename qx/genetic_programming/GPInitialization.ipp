#pragma once

// Definitions of GeneticProgramming.h: making nodes and initial programs.

#include <qx/collections/QXGenerics.Collections.h>
#include <qx/genetic_programming/GeneticProgramming.h>
#include <qx/platform/Random.h>
#include <qx/platform/SmallList.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

namespace qx::generics {

// --- Nodes -------------------------------------------------------------------------------------------------

template <class T>
auto TQXCustomGeneticProgramming<T>::MakeNodeFor(TInstruction* Instruction) -> TNodePointer {
  TNodePointer Node = this->CreateNode(Instruction);
  if (Node == nullptr) {
    throw std::logic_error("No node was made by the " + this->ClassName());
  }
  return Node;
}

// A node that is no copy.
template <class T>
auto TQXCustomGeneticProgramming<T>::NewNode(TInstruction& Instruction) -> TNodePointer {
  TNodePointer Node = MakeNodeFor(&Instruction);
  Instruction.OnInitializeNode(Instruction, *Node);
  return Node;
}

template <class T>
auto TQXCustomGeneticProgramming<T>::GetOperationNode(const TNode* /*Parent*/, int /*Index*/)
    -> TNodePointer {
  if (FFunctions.empty()) {
    throw EGPException(std::string(SNoOperationsFound));
  }
  return NewNode(*FFunctions[Random(FFunctions.size())]);
}

template <class T>
auto TQXCustomGeneticProgramming<T>::GetTerminalNode(const TNode* /*Parent*/, int /*Index*/) -> TNodePointer {
  if (FTerminals.empty()) {
    throw EGPException(std::string(SNoTerminalsFound));
  }
  return NewNode(*FTerminals[Random(FTerminals.size())]);
}

template <class T>
auto TQXCustomGeneticProgramming<T>::GetNode(const TNode* /*Parent*/, int /*Index*/) -> TNodePointer {
  TQXGPInstructions<T>& Set = this->Instructions();
  if (Set.Count() == 0) {
    throw EGPException(std::string(SNoInstructionsFound));
  }
  return NewNode(Set[Random(Set.Count())]);
}

template <class T>
auto TQXCustomGeneticProgramming<T>::GetNode(const TNode* /*Parent*/, const TNode& Node, int /*Index*/)
    -> TNodePointer {
  if (Node.Instruction() == nullptr) {
    throw EGPException(std::string(SNoInstructionAssigned));
  }
  return NewNode(GetSimilarInstruction(*Node.Instruction()));
}

template <class T>
auto TQXCustomGeneticProgramming<T>::GetSimilarInstruction(const TInstruction& Instruction) -> TInstruction& {
  const auto IsSimilar = [&](const TInstruction& Other) {
    return Other.Operation() == Instruction.Operation() && Other.Arity() == Instruction.Arity();
  };
  TQXGPInstructions<T>& Set = this->Instructions();
  const auto Count = std::count_if(Set.begin(), Set.end(), IsSimilar);
  if (Count == 0) {
    throw EGPException(std::string(SNoInstructionsFound));
  }
  auto Left = Random(Count);
  return *std::find_if(Set.begin(), Set.end(),
                       [&](const TInstruction& Other) { return IsSimilar(Other) && Left-- == 0; });
}

template <class T>
auto TQXCustomGeneticProgramming<T>::AttachNew(TNode& Parent, int Index, TNodePointer Node) -> TNode& {
  const bool HasTwoSlots = dynamic_cast<const TQXGPBinaryNode<T>*>(&Parent) != nullptr;
  return HasTwoSlots ? Parent.AddChild(std::move(Node)) : Parent.AttachChild(Index, std::move(Node));
}

// --- Trees -------------------------------------------------------------------------------------------------

template <class T>
auto TQXCustomGeneticProgramming<T>::DoInitializeFull(const TNode* Parent, int Index, int Depth)
    -> TNodePointer {
  return BuildTree(Parent, Index, Depth, true);
}

template <class T>
auto TQXCustomGeneticProgramming<T>::DoInitializeGrow(const TNode* Parent, int Index, int Depth)
    -> TNodePointer {
  return BuildTree(Parent, Index, Depth, false);
}

// Without recursion; every node is attached as soon as it is made, and the children of one are complete
// before its next sibling is made.
template <class T>
auto TQXCustomGeneticProgramming<T>::BuildTree(const TNode* Parent, int Index, int Depth, bool Full)
    -> TNodePointer {
  struct TLevel {
    TNode* Node;
    int NextChild;
    int Depth;
  };
  constexpr std::size_t UsualDepth = 32;
  TSmallList<TLevel, UsualDepth> Levels;
  int Nodes = 0;
  const auto Make = [&](const TNode* Above, int Place, int Room) {
    RequireBuildSize(++Nodes);
    if (Room < 2) {
      return GetTerminalNode(Above, Place);
    }
    TNodePointer Node = Full ? GetOperationNode(Above, Place) : GetNode(Above, Place);
    if (Node->IsTerminal() && Node->Instruction() != nullptr && Node->Instruction()->Arity() > 0) {
      throw EGPException(std::string(SInvalidTerminalNode));
    }
    return Node;
  };
  const auto Enter = [&](TNode& Node, int Room) {
    if (Room >= 2 && !Node.IsTerminal()) {
      Levels.Push({&Node, 0, Room});
    }
  };
  TNodePointer Root = Make(Parent, Index, Depth);
  Enter(*Root, Depth);
  while (!Levels.Empty()) {
    TLevel& Level = Levels.Last();
    if (Level.NextChild == Level.Node->Instruction()->Arity()) {
      static_cast<void>(Levels.Pop());
      continue;
    }
    const int Below = Level.Depth - 1;
    TNode& Child = Level.Node->AttachChild(Level.NextChild, Make(Level.Node, Level.NextChild, Below));
    ++Level.NextChild;
    Enter(Child, Below);
  }
  return Root;
}

template <class T>
class TQXCustomGeneticProgramming<T>::TTooLarge : public std::length_error {
public:
  using std::length_error::length_error;
};

template <class T>
void TQXCustomGeneticProgramming<T>::RequireBuildSize(int Nodes) const {
  if (Nodes > FSettings.BuildSizeLimit) {
    throw TTooLarge("A program of more than " + std::to_string(FSettings.BuildSizeLimit) +
                    " nodes would be built; raise BuildSizeLimit, lower InitializationDepth, choose a "
                    "BloatStrategy, or declare instructions that make more different programs");
  }
}

// --- Population --------------------------------------------------------------------------------------------

// The making of one generation of initial programs.
template <class T>
class TQXCustomGeneticProgramming<T>::TInitialPrograms {
public:
  TInitialPrograms(TQXCustomGeneticProgramming& Component, int Retries)
      : FComponent(Component), FUse(Component), FRetries(Retries),
        FDepth(Component.InitializationDepth() > 0 ? Component.InitializationDepth()
                                                   : std::max(1, Component.FunctionsCount())) {}

  int Make() {
    TQXGPPopulation<T>& Population = FComponent.Population();
    for (int I = 0; I < Population.Count(); ++I) {
      Population[I].AssignDNA(Build(I));
      if (FRetries > 0) {
        MakeDifferent(Population[I]);
      }
    }
    return FRegenerated;
  }

private:
  TNodePointer Build(int Index) const {
    const TGPInitializationMethod Method = FComponent.InitializationMethod();
    const bool Even = Index % 2 == 0;
    const bool Half = Method == imHalfAndHalf || Method == imRampedHalfAndHalf;
    const bool Full = Half ? Even : Method == imFull || Method == imRampedFull;
    const bool Ramped = Method == imRampedFull || Method == imRampedGrow || Method == imRampedHalfAndHalf;
    return FComponent.BuildTree(nullptr, 0, Ramped ? RampedDepth(Index) : std::max(FDepth, FMinimumDepth),
                                Full);
  }

  int RampedDepth(int Index) const {
    const double Share = static_cast<double>(Index) / FComponent.Population().Count();
    const double Depth = Share * (static_cast<double>(FDepth) - 1) + FMinimumDepth;
    return static_cast<int>(std::min<double>(Depth, std::numeric_limits<int>::max()));
  }

  // Builds the program anew, after so many attempts with one more level at least, until no other has its
  // text, or until so many nodes have been built that this one is left as it is.
  void MakeDifferent(TIndividual& Individual) {
    int Budget = FRetries;
    std::string Text = Individual.DNA()->ToString();
    while (FKnown.ContainsKey(Text)) {
      RequireOtherTerminals();
      if (!BuildAnew(Individual)) { // more levels were in vain
        ++FComponent.FInitialDuplicates;
        FMinimumDepth = LeastDepth;
        return;
      }
      ++FRegenerated;
      if (--Budget == 0) {
        Budget = FRetries;
        FMinimumDepth += FMinimumDepth < std::numeric_limits<int>::max() ? 1 : 0;
      }
      Text = Individual.DNA()->ToString();
    }
    FKnown.Add(std::move(Text), &Individual);
  }

  bool BuildAnew(TIndividual& Individual) {
    if (FNodesBuilt >= FComponent.DuplicatesBuildLimit()) {
      return false;
    }
    try {
      Individual.AssignDNA(Build(Individual.Index()));
    } catch (const TTooLarge&) { // as others of so many levels would be
      FNodesBuilt = std::numeric_limits<std::int64_t>::max();
      return false;
    }
    FNodesBuilt += Individual.DNA()->Size();
    return true;
  }

  // Without functions a program is one terminal, and there are only so many.
  void RequireOtherTerminals() const {
    if (FComponent.FunctionsCount() > 0) {
      return;
    }
    for (int I = 0; I < FComponent.TerminalsCount(); ++I) {
      TInstruction& Terminal = FComponent.Terminals(I);
      if (Terminal.OnInitializeNode || !FKnown.ContainsKey(FComponent.CreateNode(&Terminal)->ToString())) {
        return;
      }
    }
    throw EGPException(std::string(SNoOperationsFound));
  }

  TQXCustomGeneticProgramming& FComponent;
  typename TBase::TUse FUse;
  int FRetries;
  int FDepth;
  static constexpr int LeastDepth = 2;
  int FMinimumDepth = LeastDepth;
  int FRegenerated = 0;
  std::int64_t FNodesBuilt = 0; // in place of duplicates
  TQXDictionary<std::string, TIndividual*> FKnown;
};

template <class T>
void TQXCustomGeneticProgramming<T>::Repopulate() {
  FDiscardDue = false;
  FStatistics = {};
  TBase::Repopulate();
}

template <class T>
int TQXCustomGeneticProgramming<T>::DoInitialize() {
  const int Retries = this->InitialDuplicatesRetries();
  FInitialDuplicates = 0;
  for (int I = 0; I < this->Instructions().Count(); ++I) {
    this->Instructions()[I].Initialize();
  }
  if (this->Population().Count() == 0) { // handlers have changed the set
    while (this->Population().Count() < this->InitialPopulation()) {
      this->Population().Add();
    }
  }
  return TInitialPrograms(*this, Retries).Make();
}

} // namespace qx::generics
