#pragma once

// Definitions of GeneticProgramming.h: crossover and mutation.

#include <qx/genetic_programming/GeneticProgramming.h>
#include <qx/platform/Random.h>
#include <qx/platform/StackGuard.h>

#include <algorithm>
#include <utility>

namespace qx::generics {

// --- Crossover ---------------------------------------------------------------------------------------------

template <class T>
void TQXCustomGeneticProgramming<T>::PrepareCrossover(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                                      TQXIndividual& Child1, TQXIndividual* Child2) {
  TBase::PrepareCrossover(Parent1, Parent2, Child1, Child2);
  if (FSettings.CrossoverMethod == cmSubtree && Child2 != nullptr) {
    Child2->Assign(Parent2);
  }
}

template <class T>
bool TQXCustomGeneticProgramming<T>::DoCrossover(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                                 TQXIndividual& Child1, TQXIndividual* Child2) {
  if (FSettings.CrossoverMethod != cmSubtree) {
    return false;
  }
  auto& First = static_cast<TIndividual&>(Parent1);
  auto& Second = static_cast<TIndividual&>(Parent2);
  auto& Child = static_cast<TIndividual&>(Child1);
  auto* const Other = static_cast<TIndividual*>(Child2);
  if (IsFair()) {
    const bool Crossed = DoFairCrossover(First, Second, Child);
    return Other == nullptr ? Crossed : DoFairCrossover(First, Second, *Other);
  }
  TNode* const Mine = SelectPoint(Child);
  TNode* const Theirs = SelectPoint(Other != nullptr ? *Other : Second);
  if (Mine == nullptr || Theirs == nullptr) {
    return false;
  }
  if (Other != nullptr) {
    Child.Crossover(*Mine, *Other, *Theirs);
  } else {
    static_cast<void>(Child.Graft(*Mine, Theirs->Clone()));
  }
  return true;
}

// --- Choice of the mutation --------------------------------------------------------------------------------

// Runs a step that may change a program in any way; then the list of its nodes is made anew, and the program
// is evaluated again, whatever comes of it.
template <class T>
template <class TStep>
bool TQXCustomGeneticProgramming<T>::ThenFlatten(TIndividual& Individual, TStep Step) {
  const typename TBase::TUse Use(*this);
  bool Changed = false;
  try {
    Changed = Step();
  } catch (...) {
    Individual.FlattenDNA();
    throw;
  }
  Individual.FlattenDNA();
  return Changed;
}

template <class T>
bool TQXCustomGeneticProgramming<T>::DoMutate(TQXIndividual& Item) {
  auto& Individual = static_cast<TIndividual&>(Item);
  return ThenFlatten(Individual, [&] {
    bool Accept = true;
    this->TQXCustomGeneticComponent::OnMutation(*this, Item, Accept);
    return Accept && MutateByWeight(Individual);
  });
}

template <class T>
bool TQXCustomGeneticProgramming<T>::MutateByWeight(TIndividual& Individual) {
  int Left = Random(FSettings.MutationWeightSum);
  for (std::size_t Method = 0; Method < FSettings.MutationWeights.size(); ++Method) {
    const int Weight = FSettings.MutationWeights[Method];
    if (Left < Weight) {
      return Mutate(Individual, static_cast<TGPMutationMethod>(Method));
    }
    Left -= Weight;
  }
  return false;
}

template <class T>
bool TQXCustomGeneticProgramming<T>::Mutate(TIndividual& Individual, TGPMutationMethod Method) {
  const typename TBase::TUse Use(*this);
  switch (Method) {
  case mmSubtree:
    return DoSubtreeMutation(Individual);
  case mmReplacement:
    return DoReplacementMutation(Individual);
  case mmConstant:
    return DoConstantMutation(Individual);
  case mmShrink:
    return DoShrinkMutation(Individual);
  case mmHoist:
    return DoHoistMutation(Individual);
  case mmPoint:
    return DoPointMutation(Individual);
  }
  return false;
}

template <class T>
bool TQXCustomGeneticProgramming<T>::DoInvert(TQXIndividual& Item) {
  auto& Individual = static_cast<TIndividual&>(Item);
  ThenFlatten(Individual, [&] {
    TNode* const Root = Individual.DNA();
    return Root != nullptr && DoPointMutation(Individual, *Root);
  });
  return false;
}

// --- Mutation methods --------------------------------------------------------------------------------------

template <class T>
int TQXCustomGeneticProgramming<T>::RegrownDepth(const TNode& Node) const {
  return FSettings.BloatStrategy == bsDepthLimit ? std::min(Node.Depth(), FSettings.BloatLimit)
                                                 : Node.Depth();
}

// Among the children of the parent; 0 for a root.
template <class T>
int TQXCustomGeneticProgramming<T>::PlaceOf(const TNode& Node) {
  return Node.Parent() != nullptr ? Node.Parent()->IndexOf(Node) : 0;
}

template <class T>
bool TQXCustomGeneticProgramming<T>::DoSubtreeMutation(TIndividual& Individual) {
  TNode* const Node = SelectPoint(Individual);
  if (Node == nullptr) {
    return false;
  }
  Individual.Replace(*Node, DoInitializeGrow(Node->Parent(), PlaceOf(*Node), RegrownDepth(*Node)));
  return true;
}

template <class T>
bool TQXCustomGeneticProgramming<T>::DoReplacementMutation(TIndividual& Individual) {
  TNode* const Node = SelectPoint(Individual);
  if (Node == nullptr) {
    return false;
  }
  const int Depth = RegrownDepth(*Node);
  TNodePointer Similar = GetNode(Node->Parent(), *Node, PlaceOf(*Node));
  for (int I = 0; I < Similar->Instruction()->Arity(); ++I) {
    Similar->AttachChild(I, DoInitializeGrow(Similar.get(), I, Depth - 1));
  }
  Individual.Replace(*Node, std::move(Similar));
  return true;
}

template <class T>
bool TQXCustomGeneticProgramming<T>::DoConstantMutation(TIndividual& Individual) {
  TNode* const Node = Individual.SelectNode(FSettings.NonTerminals, TGPGeneticInstructions{gpConstant});
  if (Node == nullptr || !OnConstantMutation) {
    return false;
  }
  Individual.MarkStale();
  OnConstantMutation(*this, *Node);
  return true;
}

template <class T>
bool TQXCustomGeneticProgramming<T>::DoShrinkMutation(TIndividual& Individual) {
  TNode* const Node = SelectPoint(Individual);
  if (Node == nullptr) {
    return false;
  }
  Individual.Replace(*Node, GetTerminalNode(Node->Parent(), PlaceOf(*Node)));
  return true;
}

template <class T>
bool TQXCustomGeneticProgramming<T>::DoHoistMutation(TIndividual& Individual) {
  TNode* const Node = SelectPoint(Individual);
  if (Node == nullptr || Node->Parent() == nullptr) {
    return false;
  }
  Individual.AssignDNA(Node->SetParent(nullptr));
  return true;
}

template <class T>
bool TQXCustomGeneticProgramming<T>::DoPointMutation(TIndividual& Individual) {
  TNode* const Root = Individual.DNA();
  if (Root == nullptr) {
    return false;
  }
  FPointMutated = false;
  const bool Last = DoPointMutation(Individual, *Root);
  return Last || FPointMutated;
}

template <class T>
bool TQXCustomGeneticProgramming<T>::DoPointMutation(TIndividual& Individual, TNode& Node) {
  RequireStack();
  bool Mutated = Random() < FSettings.PointMutationProbability;
  if (Mutated) {
    Node.SetInstruction(GetNode(nullptr, Node, 0)->Instruction());
    Individual.MarkStale();
    FPointMutated = true;
  }
  const bool OnlyOne = FSettings.PointMutationMethod == pmmPerTree;
  for (TNode* const Child : Node.Slots()) {
    if (OnlyOne && Mutated) {
      break;
    }
    if (Child != nullptr) {
      Mutated = DoPointMutation(Individual, *Child);
    }
  }
  return Mutated;
}

} // namespace qx::generics
