#pragma once

// Definitions of GeneticProgramming.h: making nodes and initial programs.

#include <qx/collections/QXGenerics.Collections.h>
#include <qx/genetic_programming/GeneticProgramming.h>
#include <qx/platform/Random.h>
#include <qx/platform/SmallList.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

namespace qx::generics {

// --- Nodes -------------------------------------------------------------------------------------------------

// A node that is no copy.
template <class T>
auto TQXCustomGeneticProgramming<T>::NewNode(TInstruction& Instruction) -> TNodePointer {
  TNodePointer Node = this->CreateNode(&Instruction);
  Instruction.OnInitializeNode(Instruction, *Node);
  return Node;
}

template <class T>
auto TQXCustomGeneticProgramming<T>::GetOperationNode() -> TNodePointer {
  if (FFunctions.empty()) {
    throw EGPException(std::string(SNoOperationsFound));
  }
  return NewNode(*FFunctions[Random(FFunctions.size())]);
}

template <class T>
auto TQXCustomGeneticProgramming<T>::GetTerminalNode() -> TNodePointer {
  if (FTerminals.empty()) {
    throw EGPException(std::string(SNoTerminalsFound));
  }
  return NewNode(*FTerminals[Random(FTerminals.size())]);
}

template <class T>
auto TQXCustomGeneticProgramming<T>::GetNode() -> TNodePointer {
  TQXGPInstructions<T>& Set = this->Instructions();
  if (Set.Count() == 0) {
    throw EGPException(std::string(SNoInstructionsFound));
  }
  return NewNode(Set[Random(Set.Count())]);
}

template <class T>
auto TQXCustomGeneticProgramming<T>::GetNode(const TNode& Node) -> TNodePointer {
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

// --- Trees -------------------------------------------------------------------------------------------------

// Without recursion; every node is attached as soon as it is made, and the children of one are complete
// before its next sibling is made.
template <class T>
auto TQXCustomGeneticProgramming<T>::BuildTree(int Depth, bool Full) -> TNodePointer {
  struct TLevel {
    TNode* Node;
    int NextChild;
    int Depth;
  };
  constexpr std::size_t UsualDepth = 32;
  TSmallList<TLevel, UsualDepth> Levels;
  int Nodes = 0;
  const auto Make = [&](int Room) {
    RequireBuildSize(++Nodes);
    if (Room < 2) {
      return GetTerminalNode();
    }
    TNodePointer Node = Full ? GetOperationNode() : GetNode();
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
  TNodePointer Root = Make(Depth);
  Enter(*Root, Depth);
  while (!Levels.Empty()) {
    TLevel& Level = Levels.Last();
    if (Level.NextChild == Level.Node->Instruction()->Arity()) {
      static_cast<void>(Levels.Pop());
      continue;
    }
    const int Below = Level.Depth - 1;
    TNode& Child = Level.Node->AttachChild(Level.NextChild, Make(Below));
    ++Level.NextChild;
    Enter(Child, Below);
  }
  return Root;
}

template <class T>
void TQXCustomGeneticProgramming<T>::RequireBuildSize(int Nodes) const {
  if (Nodes > FSettings.BuildSizeLimit) {
    throw std::length_error("A program of more than " + std::to_string(FSettings.BuildSizeLimit) +
                            " nodes would be built; raise BuildSizeLimit, lower InitializationDepth, choose a "
                            "BloatStrategy, or declare instructions that make more different programs");
  }
}

// --- Population --------------------------------------------------------------------------------------------

// The making of one generation of initial programs.
template <class T>
class TQXCustomGeneticProgramming<T>::TInitialPrograms {
public:
  explicit TInitialPrograms(TQXCustomGeneticProgramming& Component)
      : FComponent(Component), FRetries(Component.InitialDuplicatesRetries()),
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
    return FComponent.BuildTree(Ramped ? RampedDepth(Index) : std::max(FDepth, FMinimumDepth), Full);
  }

  int RampedDepth(int Index) const {
    const double Share = static_cast<double>(Index) / FComponent.Population().Count();
    const double Depth = Share * (static_cast<double>(FDepth) - 1) + FMinimumDepth;
    return static_cast<int>(std::min<double>(Depth, std::numeric_limits<int>::max()));
  }

  // Builds the program anew, after so many attempts with one more level at least, until no other has its
  // text.
  void MakeDifferent(TIndividual& Individual) {
    int Budget = FRetries;
    std::string Text = Individual.DNA()->ToString();
    while (FKnown.ContainsKey(Text)) {
      RequireOtherPrograms();
      ++FRegenerated;
      Individual.AssignDNA(Build(Individual.Index()));
      if (--Budget == 0) {
        Budget = FRetries;
        FComponent.RequireBuildSize(++FMinimumDepth);
      }
      Text = Individual.DNA()->ToString();
    }
    FKnown.Add(std::move(Text), &Individual);
  }

  // Without functions a program is one terminal, and there are only so many.
  void RequireOtherPrograms() const {
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
  int FRetries;
  int FDepth;
  int FMinimumDepth = 2;
  int FRegenerated = 0;
  TQXDictionary<std::string, TIndividual*> FKnown;
};

template <class T>
int TQXCustomGeneticProgramming<T>::DoInitialize() {
  FStatistics = {};
  TInitialPrograms Programs(*this);
  for (int I = 0; I < this->Instructions().Count(); ++I) { // handlers may change the set
    this->Instructions()[I].Initialize();
  }
  return Programs.Make();
}

} // namespace qx::generics
