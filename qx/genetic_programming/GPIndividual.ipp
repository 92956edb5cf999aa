#pragma once

// Definitions of GPIndividual.h.

#include <qx/genetic_programming/GPIndividual.h>
#include <qx/genetic_programming/GPPopulation.h>
#include <qx/platform/Filer.h>
#include <qx/platform/Random.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace qx::generics {

/// A program in the form of `StateText`, which is not put into quotes; empty for none.
struct TProgramText {
  std::string Text;
};

} // namespace qx::generics

namespace qx {

template <>
struct TPropertyText<generics::TProgramText> {
  static std::string Make(const generics::TProgramText& Value) { return Value.Text; }
  static generics::TProgramText Parse(std::string_view Text) { return {std::string(Text)}; }
};

} // namespace qx

namespace qx::generics {

template <class T>
auto TQXGPIndividual<T>::DNA() -> TNode* {
  if (!FHasDNA) [[unlikely]] {
    if (FCopySource != nullptr) {
      CopyNow();
    } else {
      FDNA = CreateDNA();
      FHasDNA = true;
    }
  }
  return FDNA.get();
}

// Nodes lie scattered in memory. Walking a tree waits for one after the other; asking for all of them before
// that, from the list, waits only once.
template <class T>
void TQXGPIndividual<T>::FetchNodes() const {
  constexpr std::size_t CacheLine = 64;
  for (const TNode* const Node : FFlattenedDNA) { // may be gone; that does no harm
    for (std::size_t Byte = 0; Byte < sizeof(TNode); Byte += CacheLine) {
      __builtin_prefetch(reinterpret_cast<const char*>(Node) + Byte);
    }
  }
}

template <class T>
void TQXGPIndividual<T>::SetDNA(const TNode& Value) {
  if (TNode* const Root = DNA()) {
    Root->Assign(Value);
  } else {
    FDNA = Value.Clone();
  }
  FlattenDNA();
}

template <class T>
void TQXGPIndividual<T>::AssignDNA(TNodePointer Value) {
  if (Value != nullptr) {
    Detach(*Value);
  }
  FDNA = std::move(Value);
  FHasDNA = true;
  FCopySource = nullptr;
  FlattenDNA();
}

template <class T>
auto TQXGPIndividual<T>::CreateDNA() -> TNodePointer {
  auto* const Owner = Engine();
  if (Owner == nullptr) {
    throw EGPException(std::string(SMissingGeneticProgram));
  }
  return Owner->CreateNode(nullptr);
}

template <class T>
void TQXGPIndividual<T>::FlattenDNA() {
  MarkStale();
  FFlattenedDNA.clear();
  if (TNode* const Root = DNA()) {
    Root->ForEach([this](TNode& Node) { FFlattenedDNA.push_back(&Node); });
  }
}

template <class T>
TQXGPPopulation<T>* TQXGPIndividual<T>::Collection() const {
  return dynamic_cast<TQXGPPopulation<T>*>(TCollectionItem::Collection());
}

template <class T>
void TQXGPIndividual<T>::SetCollection(TQXGPPopulation<T>& Value) {
  TQXIndividual::SetCollection(Value);
}

template <class T>
void TQXGPIndividual<T>::Assign(const TPersistent& Source) {
  const auto* const Individual = SourceAs<TQXGPIndividual>(Source);
  if (Individual == nullptr) {
    TQXIndividual::Assign(Source);
    return;
  }
  EvaluateSource(*Individual);
  if (Individual != this) {
    AssignProgram(*Individual);
  }
  AssignIndividual(*Individual);
}

// Until the copy is made the individual has its former program, which nobody sees.
template <class T>
void TQXGPIndividual<T>::AssignProgram(const TQXGPIndividual& Source) {
  if (FCopiesLater) {
    FCopySource = &Source;
    FHasDNA = false;
    MarkStale();
  } else {
    CopyProgram(Source);
  }
}

template <class T>
void TQXGPIndividual<T>::CopyNow() {
  FCopiesLater = false;
  if (const TQXGPIndividual* const Source = std::exchange(FCopySource, nullptr)) {
    FHasDNA = true;
    const bool Stale = NeedFitness();
    CopyProgram(*Source);
    SetNeedFitness(Stale);
  }
}

template <class T>
void TQXGPIndividual<T>::CopyProgram(const TQXGPIndividual& Source) {
  Source.FetchNodes();
  FetchNodes();
  IQXGeneticProgramEngine<T>* const Owner = Engine();
  const TNode* const Root = Source.DNA();
  if (Root == nullptr) {
    AssignDNA(nullptr);
  } else if (Owner == nullptr || Owner == Source.Engine()) {
    SetDNA(*Root);
  } else { // the copy is a program of this individual's engine
    TNodePointer Copy = Owner->CreateNode(nullptr);
    Copy->Assign(*Root);
    Copy->BindTo(Owner->Instructions());
    AssignDNA(std::move(Copy));
  }
}

template <class T>
T TQXGPIndividual<T>::Execute(TQXGPContext<T>* Context) {
  const typename TQXIndividual::TUseScope Use(*this); // a handler cannot free the tree that runs
  TNode* const Root = DNA();
  return Root != nullptr ? Root->Execute(Context) : T();
}

// --- Surgery -----------------------------------------------------------------------------------------------

// Where a subtree stands: under a parent, or as the root of an individual.
template <class T>
class TQXGPIndividual<T>::TPlace {
public:
  TPlace(TQXGPIndividual& Individual, TNode& Node)
      : FRoot(Individual.FDNA), FNode(Node), FParent(Node.Parent()),
        FSlot(FParent != nullptr ? FParent->IndexOf(Node) : 0) {
    Individual.RequireOwn(Node);
  }

  TNode* Parent() const { return FParent; }
  TNodePointer Take() { return FParent != nullptr ? FParent->ExtractChild(FNode) : std::move(FRoot); }
  /// Gives the parent another child, or the individual another root.
  void Add(TNodePointer&& Node) {
    if (FParent != nullptr) {
      FParent->AddChild(std::move(Node));
    } else {
      Detach(*Node);
      FRoot = std::move(Node);
    }
  }
  /// Puts a node where the former one stood.
  void Put(TNodePointer&& Node) {
    if (FParent != nullptr) {
      FParent->AttachChild(FSlot, std::move(Node));
    } else {
      FRoot = std::move(Node);
    }
  }
  /// Takes out what was added, if it is not in the caller's hand.
  void TakeBack(TNode& Added, TNodePointer& Hand) {
    if (Hand == nullptr && (FParent == nullptr || Added.Parent() == FParent)) {
      Hand = FParent != nullptr ? FParent->ExtractChild(Added) : std::move(FRoot);
    }
  }
  void MoveToEnd() {
    TNodePointer Moved = Take();
    try {
      Add(std::move(Moved));
    } catch (...) {
      TakeBack(FNode, Moved);
      Put(std::move(Moved));
      throw;
    }
  }

private:
  TNodePointer& FRoot;
  TNode& FNode;
  TNode* FParent;
  int FSlot;
};

template <class T>
auto TQXGPIndividual<T>::Graft(TNode& Node, TNodePointer&& NewNode) -> TNodePointer {
  return Exchange(Node, std::move(NewNode), &TPlace::Add);
}

template <class T>
auto TQXGPIndividual<T>::Replace(TNode& Node, TNodePointer&& NewNode) -> TNodePointer {
  return Exchange(Node, std::move(NewNode), &TPlace::Put);
}

template <class T>
auto TQXGPIndividual<T>::Exchange(TNode& Node, TNodePointer&& NewNode, void (TPlace::*Store)(TNodePointer&&))
    -> TNodePointer {
  TPlace Place(*this, Node);
  if (NewNode == nullptr) {
    throw std::invalid_argument("There is no node to graft");
  }
  TNode& Added = *NewNode;
  TNodePointer Former = Place.Take();
  try {
    (Place.*Store)(std::move(NewNode));
  } catch (...) {
    Place.TakeBack(Added, NewNode);
    Place.Put(std::move(Former));
    throw;
  }
  FlattenDNA();
  return Former;
}

template <class T>
void TQXGPIndividual<T>::Crossover(TNode& Node, TQXGPIndividual& Mate, TNode& MateNode) {
  TPlace Here(*this, Node);
  TPlace There(Mate, MateNode);
  if (&Node != &MateNode && (IsWithin(&Node, MateNode) || IsWithin(&MateNode, Node))) {
    throw std::invalid_argument("A subtree cannot be swapped with one that it contains");
  }
  if (&Node == &MateNode || (Here.Parent() == There.Parent() && Here.Parent() != nullptr)) {
    Here.MoveToEnd(); // the other one has its parent already
    FlattenDNA();
    return;
  }
  TNodePointer Theirs = There.Take();
  TNodePointer Mine;
  try {
    Mine = Graft(Node, std::move(Theirs));
    There.Add(std::move(Mine));
  } catch (...) {
    if (Theirs == nullptr) { // it was grafted
      There.TakeBack(Node, Mine);
      Here.TakeBack(MateNode, Theirs);
      Here.Put(std::move(Mine));
    }
    There.Put(std::move(Theirs));
    FlattenDNA();
    Mate.FlattenDNA();
    throw;
  }
  Mate.FlattenDNA();
}

// A pointer that somebody has made of an attached node becomes the only owner.
template <class T>
void TQXGPIndividual<T>::Detach(TNode& Node) {
  static_cast<void>(Node.SetParent(nullptr).release());
}

template <class T>
bool TQXGPIndividual<T>::IsWithin(const TNode* Inner, const TNode& Outer) {
  while (Inner != nullptr && Inner != &Outer) {
    Inner = Inner->Parent();
  }
  return Inner != nullptr;
}

template <class T>
void TQXGPIndividual<T>::RequireOwn(const TNode& Node) const {
  Settle();
  if (FDNA == nullptr || !IsWithin(&Node, *FDNA)) {
    throw std::invalid_argument("The node is not in the tree of " + DisplayName());
  }
}

template <class T>
IQXGeneticProgramEngine<T>* TQXGPIndividual<T>::Engine() const {
  const TQXGPPopulation<T>* const Population = Collection();
  return Population != nullptr ? Population->Engine() : nullptr;
}

// --- Selection ---------------------------------------------------------------------------------------------

template <class T>
bool TQXGPIndividual<T>::TakesArguments(const TNode& Node) {
  return Node.Instruction() != nullptr && Node.Instruction()->Arity() > 0;
}

// A sum in single precision stops growing at 2^24.
template <class T>
void TQXGPIndividual<T>::RequireSelectable(std::span<TNode* const> Nodes,
                                           TGAProbability NonTerminalProbability) {
  constexpr double LargestSum = 0x1p24;
  const bool NonTerminals = 1.0 - NonTerminalProbability < LargestSum;
  const bool Terminals = NonTerminalProbability < LargestSum;
  if (NonTerminals && Terminals) [[likely]] {
    return;
  }
  const bool Any = std::any_of(Nodes.begin(), Nodes.end(), [=](const TNode* Node) {
    return TakesArguments(*Node) ? NonTerminals : Terminals;
  });
  if (!Any) {
    throw std::invalid_argument("No node can be selected with the probability " +
                                std::to_string(NonTerminalProbability) + " of nodes that are not terminal");
  }
}

template <class T>
auto TQXGPIndividual<T>::DoSelectNode(std::span<TNode* const> Nodes, TGAProbability NonTerminalProbability)
    -> TNode* {
  if (FDNA == nullptr || Nodes.empty()) {
    return nullptr;
  }
  RequireSelectable(Nodes, NonTerminalProbability);
  static_cast<void>(Random());
  const double ForNonTerminals = 1.0 - NonTerminalProbability;
  float Sum = 0;
  for (;;) {
    TNode* const Node = Nodes[Random(Nodes.size())];
    Sum = static_cast<float>(static_cast<double>(Sum) + Random());
    const double Needed = TakesArguments(*Node) ? ForNonTerminals : NonTerminalProbability;
    if (static_cast<double>(Sum) > Needed) {
      return Node;
    }
  }
}

template <class T>
auto TQXGPIndividual<T>::SelectNode(TGAProbability NonTerminalProbability) -> TNode* {
  return DoSelectNode(FlattenedDNA(), NonTerminalProbability);
}

template <class T>
auto TQXGPIndividual<T>::SelectNode(TGAProbability NonTerminalProbability, TGPGeneticInstructions Operations)
    -> TNode* {
  constexpr TGPGeneticInstructions All = {gpVariable, gpConstant, gpFunction};
  if (Operations == All) {
    return SelectNode(NonTerminalProbability);
  }
  Settle();
  std::vector<TNode*> Nodes;
  std::copy_if(FFlattenedDNA.begin(), FFlattenedDNA.end(), std::back_inserter(Nodes), [=](const TNode* Node) {
    return Node->Instruction() != nullptr && Operations.Contains(Node->Instruction()->Operation());
  });
  return DoSelectNode(Nodes, NonTerminalProbability);
}

template <class T>
auto TQXGPIndividual<T>::SelectWithin(int Limit, bool BySize) -> TNode* {
  Settle();
  std::vector<TNode*> Nodes;
  std::copy_if(FFlattenedDNA.begin(), FFlattenedDNA.end(), std::back_inserter(Nodes),
               [=](const TNode* Node) { return (BySize ? Node->Size() : Node->Depth()) <= Limit; });
  return Nodes.empty() ? nullptr : Nodes[Random(Nodes.size())];
}

// --- Text and documents ------------------------------------------------------------------------------------

template <class T>
std::string TQXGPIndividual<T>::ToString() const {
  const TNode* const Root = DNA();
  return Root != nullptr ? DisplayName() + ": " + Root->ToString() : DisplayName();
}

template <class T>
void TQXGPIndividual<T>::LoadFromXML(const TXMLNode& Node) {
  if (TXMLIndividualType::Binds(Node)) {
    LoadFromXML(TXMLIndividualType(Node));
  }
}

template <class T>
void TQXGPIndividual<T>::SaveToXML(const TXMLNode& Node) {
  if (TXMLIndividualType::Binds(Node)) {
    SaveToXML(TXMLIndividualType(Node));
  }
}

template <class T>
void TQXGPIndividual<T>::LoadFromXML(const TXMLIndividualType& Element) {
  const TXMLReadScope Reading(Element);
  SetName(Element.Name());
  if (DNA() == nullptr) { // what reads the tree
    AssignDNA(CreateDNA());
    if (FDNA == nullptr) {
      throw std::logic_error(DisplayName() + " has no root that could read a tree");
    }
  }
  const TXMLDnaType Source(Element.FindChild("DNA"));
  IQXGeneticProgramEngine<T>* const Owner = Engine();
  if (FDNA->Instruction() == nullptr && Owner != nullptr) {
    FDNA->SetInstruction(&Owner->Instructions().GetItemByName(Source.Instruction()));
  }
  try {
    FDNA->LoadFromXML(Source);
  } catch (...) {
    FlattenDNA(); // the nodes on the list are gone
    throw;
  }
  FlattenDNA();
}

template <class T>
void TQXGPIndividual<T>::SaveToXML(const TXMLIndividualType& Element) {
  Element.SetName(Name());
  Element.SetFitness(Fitness());
  if (const TNode* const Root = DNA()) {
    Root->SaveToXML(Element.DNA());
  }
}

template <class T>
void TQXGPIndividual<T>::DefineProperties(TFiler& Filer) {
  TQXIndividual::DefineProperties(Filer);
  if constexpr (HasPropertyText<T>) {
    const TNode* const Root = Filer.Writes() ? DNA() : nullptr;
    const TProgramText Text{Root != nullptr ? Root->StateText() : ""};
    Filer.Property("Program", Text, Root != nullptr, [this](const TProgramText& Read) {
      IQXGeneticProgramEngine<T>* const Owner = Engine();
      if (Owner == nullptr) {
        throw std::invalid_argument("a program is read by an individual of an engine");
      }
      AssignDNA(Read.Text.empty() ? nullptr : TNode::FromStateText(Read.Text, *Owner));
    });
  }
}

template <class T>
void TQXGPIndividual<T>::DefineState(TFiler& Filer) {
  if constexpr (!HasPropertyText<T>) {
    throw std::logic_error("The program of " + DisplayName() + " has values whose type has no text");
  }
  TQXIndividual::DefineState(Filer);
  Filer.Property("Listed", !FlattenedDNA().empty(), true, [this](bool Read) {
    if (!Read) {
      FFlattenedDNA.clear();
    }
  });
}

} // namespace qx::generics
