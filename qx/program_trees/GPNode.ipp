#pragma once

// Definitions of GPNode.h: links, copies, measures, evaluation, text. GPNodeText.ipp and GPNodeXML.ipp have
// the rest.

#include <qx/platform/SmallList.h>
#include <qx/platform/StackGuard.h>
#include <qx/program_trees/GPInstruction.h>
#include <qx/program_trees/GPInstructions.h>
#include <qx/program_trees/GPNode.h>
#include <qx/program_trees/GPNodeText.ipp>
#include <qx/program_trees/GPNodeXML.ipp>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace qx::generics {

template <class T>
TQXGPNode<T>::TQXGPNode(TQXGPInstruction<T>* Instruction)
    : FInstruction(Instruction), FValue(Instruction != nullptr ? Instruction->Value() : T()) {}

template <class T>
TQXGPNode<T>::~TQXGPNode() {
  if (FParent != nullptr) { // freed by somebody who did not own it
    FParent->DropChild(*this);
    FParent->Modified();
  }
}

// --- Links -------------------------------------------------------------------------------------------------

template <class T>
void TQXGPNode<T>::SetParent(TQXGPNode* Value) {
  if (Value == nullptr) {
    throw std::invalid_argument("There is no node to be the parent; SetParent(nullptr) takes a node out");
  }
  if (Value == FParent) {
    return;
  }
  if (FParent == nullptr) {
    throw std::logic_error("A node without a parent is handed over by its owner, with AddChild");
  }
  Value->AddChild(*this);
}

template <class T>
auto TQXGPNode<T>::SetParent(std::nullptr_t) -> TPointer {
  return FParent != nullptr ? FParent->ExtractChild(*this) : nullptr;
}

template <class T>
int TQXGPNode<T>::IndexOf(const TQXGPNode& Node) const {
  const auto Children = Slots();
  const auto Found = std::find(Children.begin(), Children.end(), &Node);
  return Found == Children.end() ? -1 : static_cast<int>(Found - Children.begin());
}

// A node that its parent owns, in the hand of a call that may let it move. The caller releases it when the
// call raises.
template <class T>
auto TQXGPNode<T>::Loan(TQXGPNode& Node) -> TPointer {
  if (Node.FParent == nullptr) {
    throw std::logic_error("A node without a parent is handed over by its owner, as a pointer");
  }
  return TPointer(&Node);
}

template <class T>
TQXGPNode<T>& TQXGPNode<T>::AddChild(TQXGPNode& Node) {
  TPointer Moved = Loan(Node);
  try {
    return AddChild(std::move(Moved));
  } catch (...) {
    static_cast<void>(Moved.release());
    throw;
  }
}

template <class T>
TQXGPNode<T>& TQXGPNode<T>::InsertChild(int Index, TQXGPNode& Node) {
  TPointer Moved = Loan(Node);
  try {
    return InsertChild(Index, std::move(Moved));
  } catch (...) {
    static_cast<void>(Moved.release());
    throw;
  }
}

template <class T>
auto TQXGPNode<T>::ExtractChild(TQXGPNode& Node) -> TPointer {
  if (Node.FParent != this) {
    throw std::invalid_argument("The node to extract is no child of this one");
  }
  DropChild(Node);
  Node.FParent = nullptr;
  TPointer Extracted(&Node);
  Modified();
  return Extracted;
}

template <class T>
TQXGPNode<T>& TQXGPNode<T>::Attach(std::size_t Slot, TPointer&& Node) {
  RequireAttachable(Node.get());
  TQXGPNode& Attached = *Node;
  StoreChild(Slot, Attached);
  FHasOneTwice = FHasOneTwice || Attached.FParent == this;
  if (TQXGPNode* const Former = Attached.FParent; Former != nullptr && Former != this) {
    try {
      static_cast<void>(Former->ExtractChild(Attached).release());
    } catch (...) {
      DropChild(Attached);
      throw;
    }
  }
  static_cast<void>(Node.release());
  Attached.FParent = this;
  Modified();
  if (!FUnwatched) {
    Attached.Watch();
  }
  return Attached;
}

template <class T>
void TQXGPNode<T>::RequireAttachable(const TQXGPNode* Node) const {
  if (Node == nullptr) {
    throw std::invalid_argument("There is no node to attach");
  }
  RequireFitting(*Node);
  // Up to the node, if it is above; but no further than it has nodes, among which this one would be. A tree
  // may be deep or large, but what it grows by is small.
  constexpr std::size_t UsualCount = 32;
  TSmallList<const TQXGPNode*, UsualCount> Counted;
  Counted.Push(Node);
  for (const TQXGPNode* Above = this; Above != nullptr && !Counted.Empty(); Above = Above->FParent) {
    if (Above == Node) {
      throw std::invalid_argument("A node cannot be attached below itself");
    }
    for (const TQXGPNode* const Child : Counted.Pop()->Slots()) {
      if (Child != nullptr) {
        Counted.Push(Child);
      }
    }
  }
}

template <class T>
void TQXGPNode<T>::RaiseIndexError(int Index) const {
  throw std::out_of_range("There is no child at index " + std::to_string(Index) + " of a node that has " +
                          std::to_string(GetChildCount()));
}

// --- Freeing -----------------------------------------------------------------------------------------------

// Orphans the children and puts them in front of a chain that goes through the parent links. A child that was
// inserted twice is recognised by its link, which leads elsewhere the second time.
template <class T>
void TQXGPNode<T>::TakeChildren(TQXGPNode*& Chain) noexcept {
  for (TQXGPNode* const Child : Slots()) {
    if (Child != nullptr && Child->FParent == this) {
      Child->FParent = std::exchange(Chain, Child);
    }
  }
  DropChildren();
}

// The children that a node had, with all that is below them: freed at the end, without recursion.
template <class T>
class TQXGPNode<T>::TFormerChildren {
public:
  explicit TFormerChildren(TQXGPNode& Node) { Node.TakeChildren(FChain); }
  TFormerChildren(const TFormerChildren&) = delete;
  TFormerChildren& operator=(const TFormerChildren&) = delete;
  ~TFormerChildren() {
    while (FChain != nullptr) {
      const TPointer Node(std::exchange(FChain, FChain->FParent));
      if (Node->HasChildren()) {
        Node->TakeChildren(FChain);
      }
      Node->FParent = nullptr;
    }
  }

private:
  TQXGPNode* FChain = nullptr;
};

template <class T>
void TQXGPNode<T>::FreeChildren() noexcept {
  if (HasChildren()) {
    const TFormerChildren Former(*this);
  }
}

template <class T>
void TQXGPNode<T>::Clear() {
  FInstruction = nullptr;
  FValue = T();
  FreeChildren();
  Modified();
}

// --- Copies ------------------------------------------------------------------------------------------------

template <class T>
auto TQXGPNode<T>::CreateNode(TQXGPInstruction<T>* Instruction) const -> TPointer {
  auto* const Engine = FInstruction != nullptr ? FInstruction->Engine() : nullptr;
  TPointer Node = Engine != nullptr ? Engine->CreateNode(Instruction) : NewNode(Instruction);
  if (Node == nullptr) {
    throw std::logic_error("No node was made by " +
                           std::string(Engine != nullptr ? "the engine" : ClassName()));
  }
  return Node;
}

template <class T>
auto TQXGPNode<T>::Clone() const -> TPointer {
  TPointer Copy = CreateNode(FInstruction);
  Copy->Assign(*this);
  return Copy;
}

template <class T>
void TQXGPNode<T>::Assign(const TPersistent& Source) {
  if (&Source == this) {
    return;
  }
  const auto* const Node = SourceAs<TQXGPNode>(Source);
  if (Node == nullptr) {
    TPersistent::Assign(Source);
    return;
  }
  // The copies are made first: the source may stand below this node, and making them may fail.
  constexpr std::size_t UsualCount = 4;
  TSmallList<TPointer, UsualCount> Copies;
  Reserve(Node->GetChildCount());
  const std::int32_t SourceSize = Node->FSize;
  const std::int32_t SourceDepth = Node->FDepth;
  for (const TQXGPNode* const Child : Node->Slots()) {
    Copies.Push(Child != nullptr ? CopyTree(*Child) : nullptr);
    if (Child != nullptr) {
      RequireFitting(*Copies.Last());
    }
  }
  DoAssign(*Node);
  const TFormerChildren Former(*this);
  for (std::size_t I = 0; I < Copies.Count(); ++I) {
    if (Copies[I] != nullptr) {
      StoreCopy(I, std::move(Copies[I]));
    }
  }
  Modified();
  SetMeasures(SourceSize, SourceDepth);
  for (TQXGPNode* const Child : Slots()) {
    if (Child != nullptr && !FUnwatched) {
      Child->Watch();
    }
  }
}

template <class T>
void TQXGPNode<T>::DoAssign(const TQXGPNode& Source) {
  FInstruction = Source.FInstruction;
  FValue = Source.FValue;
}

template <class T>
auto TQXGPNode<T>::CopyTree(const TQXGPNode& Source) -> TPointer {
  struct TPair {
    const TQXGPNode* Source;
    TQXGPNode* Copy;
  };
  const auto CopyNode = [](const TQXGPNode& Node) {
    TPointer Copy = Node.CreateNode(Node.FInstruction);
    Copy->FreeChildren(); // if whoever has made it gave it some
    Copy->DoAssign(Node);
    Copy->SetMeasures(Node.FSize, Node.FDepth);
    return Copy;
  };
  constexpr std::size_t UsualWidth = 32;
  TSmallList<TPair, UsualWidth> Pending; // those with children
  const auto Await = [&](const TQXGPNode& Node, TQXGPNode& Copy) {
    if (Node.HasChildren()) {
      Pending.Push({&Node, &Copy});
    }
  };
  TPointer Root = CopyNode(Source);
  Await(Source, *Root);
  while (!Pending.Empty()) {
    const auto [Node, Copy] = Pending.Pop();
    Copy->Reserve(Node->GetChildCount());
    const auto Children = Node->Slots();
    for (std::size_t I = 0; I < Children.size(); ++I) {
      if (Children[I] != nullptr) {
        TPointer Child = CopyNode(*Children[I]);
        Copy->RequireFitting(*Child);
        Child->FUnwatched = Child->FUnwatched && Copy->FUnwatched;
        Await(*Children[I], Copy->StoreCopy(I, std::move(Child)));
      }
    }
  }
  return Root;
}

template <class T>
TQXGPNode<T>& TQXGPNode<T>::StoreCopy(std::size_t Slot, TPointer Copy) {
  StoreChild(Slot, *Copy);
  Copy->FParent = this;
  return *Copy.release();
}

template <class T>
void TQXGPNode<T>::BindTo(const TQXGPInstructions<T>& Set) {
  const auto IsForeign = [&](const TQXGPNode& Node) {
    return Node.FInstruction != nullptr && Node.FInstruction->Collection() != &Set;
  };
  ForEach([&](TQXGPNode& Node) {
    if (IsForeign(Node)) {
      static_cast<void>(Set.Counterpart(*Node.FInstruction));
    }
  });
  ForEach([&](TQXGPNode& Node) {
    if (IsForeign(Node)) {
      Node.FInstruction = &Set.Counterpart(*Node.FInstruction);
    }
  });
}

// --- Measures ----------------------------------------------------------------------------------------------

template <class T>
void TQXGPNode<T>::Measure() const {
  constexpr std::size_t UsualCount = 64;
  TSmallList<const TQXGPNode*, UsualCount> Unknown;
  Unknown.Push(this);
  for (std::size_t I = 0; I < Unknown.Count(); ++I) {
    for (const TQXGPNode* const Child : Unknown[I]->Slots()) {
      if (Child != nullptr && Child->FSize == 0) {
        Unknown.Push(Child);
      }
    }
  }
  while (!Unknown.Empty()) { // from the leaves up
    const TQXGPNode* const Node = Unknown.Pop();
    std::int32_t Size = 1;
    std::int32_t Depth = 0;
    for (const TQXGPNode* const Child : Node->Slots()) {
      if (Child != nullptr) {
        Size += Child->FSize;
        Depth = std::max(Depth, Child->FDepth + 1);
      }
    }
    Node->FSize = Size;
    Node->FDepth = Depth;
    Node->FUnwatched = false;
  }
}

template <class T>
void TQXGPNode<T>::SetMeasures(std::int32_t Size, std::int32_t Depth) {
  FSize = Size;
  FDepth = Depth;
  FUnwatched = FUnwatched && Size == 0;
}

template <class T>
void TQXGPNode<T>::Modified() noexcept {
  if (FUnwatched) {
    return;
  }
  ForgetMeasures();
  if (FTold == this) { // the walk that has called this node's override goes on by itself
    FTold = nullptr;
    return;
  }
  ForgetUpwards();
}

template <class T>
void TQXGPNode<T>::ForgetUpwards() noexcept {
  bool Overridden = false;
  TQXGPNode* Top = FParent;
  for (; Top != nullptr && !Top->FUnwatched; Top = Top->FParent) {
    Top->ForgetMeasures();
    Overridden = Overridden || Top->FModifiedIsOverridden;
  }
  if (Overridden) {
    TellUpwards();
    return;
  }
  for (TQXGPNode* Node = FModifiedIsOverridden ? FParent : this; Node != Top; Node = Node->FParent) {
    Node->FUnwatched = true;
  }
}

// Calls the overrides above, the nearest first, as if each had called the next one. One that does not call
// the inherited `Modified` ends the walk.
template <class T>
void TQXGPNode<T>::TellUpwards() noexcept {
  struct TRestore {
    TQXGPNode* Former = FTold;
    ~TRestore() { FTold = Former; }
  } const Restore;
  for (TQXGPNode* Node = FParent; Node != nullptr; Node = Node->FParent) {
    if (Node->FModifiedIsOverridden) {
      FTold = Node;
      Node->Modified();
      if (FTold == Node) {
        return;
      }
    }
  }
}

// From now on changes in this tree are told above it.
template <class T>
void TQXGPNode<T>::Watch() {
  constexpr std::size_t UsualCount = 32;
  TSmallList<TQXGPNode*, UsualCount> Pending;
  Pending.Push(this);
  while (!Pending.Empty()) {
    TQXGPNode* const Node = Pending.Pop();
    if (Node->FUnwatched) {
      Node->FUnwatched = false;
      for (TQXGPNode* const Child : Node->Slots()) {
        if (Child != nullptr) {
          Pending.Push(Child);
        }
      }
    }
  }
}

// --- Evaluation and text -----------------------------------------------------------------------------------

template <class T>
T TQXGPNode<T>::ExecuteInFull(TQXGPContext<T>* Context) {
  if (FInstruction == nullptr) {
    throw EGPException(std::string(SNoInstructionAssigned));
  }
  RequireStack();
  if (FInstruction->FEvaluation == evNotKnown) {
    FInstruction->LearnEvaluation();
  }
  return FInstruction->Execute(*this, Context);
}

template <class T>
bool TQXGPNode<T>::IsTerminal() const {
  return FInstruction == nullptr || FInstruction->Operation() != gpFunction || FInstruction->Arity() == 0;
}

template <class T>
std::string TQXGPNode<T>::ToString() const {
  struct TLevel {
    const TQXGPNode* Node;
    std::size_t NextSlot;
  };
  std::string Text;
  constexpr std::size_t UsualDepth = 32;
  TSmallList<TLevel, UsualDepth> Levels;
  const auto Enter = [&](const TQXGPNode& Node) {
    const auto* const Instruction = Node.FInstruction;
    if (Instruction == nullptr) {
      Text += "nil";
    } else {
      Text += Node.GetChildCount() > 0 ? "(" : "";
      Text += Instruction->Operation() == gpFunction ? Instruction->DisplayName() : Node.ValueToString();
    }
    Levels.Push({&Node, 0});
  };
  Enter(*this);
  while (!Levels.Empty()) {
    TLevel& Level = Levels.Last();
    const auto Children = Level.Node->Slots();
    while (Level.NextSlot < Children.size() && Children[Level.NextSlot] == nullptr) {
      ++Level.NextSlot;
    }
    if (Level.NextSlot < Children.size()) {
      Text += ' ';
      Enter(*Children[Level.NextSlot++]);
    } else {
      Text += Level.Node->GetChildCount() > 0 ? ")" : "";
      static_cast<void>(Levels.Pop());
    }
  }
  return Text;
}

} // namespace qx::generics
