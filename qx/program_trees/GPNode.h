#pragma once

#include <qx/foundation/QXGAConsts.h>
#include <qx/platform/FreeList.h>
#include <qx/platform/Persistent.h>
#include <qx/platform/SmallList.h>
#include <qx/platform/StackGuard.h>
#include <qx/platform/Variant.h>
#include <qx/program_trees/GPContext.h>
#include <qx/program_trees/GPInstruction.h>
#include <qx/program_trees/GeneticProgramEngine.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace qx {

class TXMLDnaType;

} // namespace qx

namespace qx::generics {

/// A node of a program tree. It refers to an instruction and has a value of its own (the constant, where the
/// instruction is one).
///
/// A node owns its children; a root, or a node that was detached, belongs to whoever holds it. So what hands
/// a node out returns a `TPointer`, and what takes one over takes a `TPointer&&`, which keeps the node when
/// the call raises (a pointer of a derived class is converted first and does not). Nodes are made by
/// `MakeNode`, or by `CreateNode` of a node or an engine.
///
/// Walks over a tree (copying, printing, measuring, loading, saving, freeing) do without recursion, so that
/// its depth is bound by memory alone; only `Execute`, which calls host code, goes down level by level.
///
/// A node class of one's own derives from `TQXGPTreeNode` or `TQXGPBinaryNode`. It overrides `NewNode`, and
/// for fields of its own `DoAssign`, `DoLoadFromXML` and `DoSaveToXML`, and for checkpoints `DoLoadState` and
/// `DoSaveState`, which are called once for each node.
/// Nodes below the root of a copy are put together without `AddChild` and `Modified`.
template <class T>
class TQXGPNode : public TPersistent {
  static_assert(alignof(T) <= FreeListAlignment);

public:
  using TPointer = std::unique_ptr<TQXGPNode>;

  /// Frees the children, then takes the node out of its parent.
  ~TQXGPNode() override;
  // The delete that knows the size is its match. NOLINTNEXTLINE(misc-new-delete-overloads)
  static void* operator new(std::size_t Bytes) { return TakeBlock(Bytes); }
  static void operator delete(void* Block, std::size_t Bytes) noexcept { FreeBlock(Block, Bytes); }

  /// The node above, or nullptr.
  TQXGPNode* Parent() const { return FParent; }
  /// Moves a node that has a parent to another one, as its last child. Raises, and leaves all nodes as they
  /// were: what `AddChild` raises; std::invalid_argument for nullptr; std::logic_error when the node has no
  /// parent, because then its owner must hand it over.
  void SetParent(TQXGPNode* Value);
  /// Takes the node out of its parent and hands it out: what is not kept is freed. nullptr when it has none.
  [[nodiscard]] TPointer SetParent(std::nullptr_t);

  const T& Value() const { return FValue; }
  virtual void SetValue(const T& Value) { FValue = Value; }

  /// What the node does, or nullptr.
  TQXGPInstruction<T>* Instruction() const { return FInstruction; }
  void SetInstruction(TQXGPInstruction<T>* Value) { FInstruction = Value; }

  /// A child; nullptr for a free slot of a binary node. Raises std::out_of_range.
  TQXGPNode* Children(int Index) const { return GetChild(Index); }
  int ChildCount() const { return GetChildCount(); }
  /// The places of the children, in order; those of a binary node are its two slots and may be nullptr.
  std::span<TQXGPNode* const> Slots() const { return {SlotArray(), FSlotCount}; }
  /// Place of a child, or -1.
  int IndexOf(const TQXGPNode& Node) const;

  /// Takes over a node, as the last child or in a free slot. A child of this node already is left where it
  /// is; a child of another one leaves that. Raises, and leaves all nodes as they were: std::invalid_argument
  /// for nullptr, an own ancestor, or a node of a kind that does not fit; EGPException when no slot is free.
  virtual TQXGPNode& AddChild(TPointer&& Node) = 0;
  /// Moves a node that has a parent; see `SetParent`.
  TQXGPNode& AddChild(TQXGPNode& Node);
  /// Takes over a node at a place, 0 to `ChildCount`. See the families.
  virtual TQXGPNode& InsertChild(int Index, TPointer&& Node) = 0;
  /// Inserts a node that has a parent.
  TQXGPNode& InsertChild(int Index, TQXGPNode& Node);
  /// Takes over a node at a place and does nothing else: before the child that stands there or, in a binary
  /// node, in that slot when it is free, else in the other one. Raises as `AddChild`.
  virtual TQXGPNode& AttachChild(int Index, TPointer&& Node) = 0;
  /// Hands a child out. Raises std::invalid_argument when it is none of this node.
  [[nodiscard]] virtual TPointer ExtractChild(TQXGPNode& Node);
  /// Frees the children; the value becomes the default one, and the instruction nullptr.
  virtual void Clear();

  /// Makes a detached node: by the engine of this node's instruction, if there is one, else of this node's
  /// own kind.
  virtual TPointer CreateNode(TQXGPInstruction<T>* Instruction) const;
  /// The same, as the last child of `Parent` or in its free slot.
  TQXGPNode& CreateNode(TQXGPInstruction<T>* Instruction, TQXGPNode& Parent) const {
    return Parent.AddChild(CreateNode(Instruction));
  }
  /// Makes a copy of the tree: new nodes, the same instructions.
  TPointer Clone() const;
  TQXGPNode& Clone(TQXGPNode& NewParent) const { return NewParent.AddChild(Clone()); }
  /// Replaces this node's content and children by copies of those of another node, which may stand in this
  /// one's own tree. When that raises, the children are as they were.
  void Assign(const TPersistent& Source) override;

  /// Calls `Visit` with each node of this tree, before the children, which come in order. A visit may change
  /// a node, but not which children there are; one that returns a bool ends the walk with false.
  template <class TVisit>
  void ForEach(TVisit Visit);

  /// Lets the nodes of this tree refer to the instructions of a set in place of those of other sets: to the
  /// `Counterpart` of each. Raises EGPException, before anything has changed, when one has none.
  void BindTo(const TQXGPInstructions<T>& Set);

  /// Number of nodes in this tree.
  int Size() const {
    if (FSize == 0) {
      Measure();
    }
    return FSize;
  }
  /// Levels below this node: 0 for a leaf.
  int Depth() const {
    if (FSize == 0) {
      Measure();
    }
    return FDepth;
  }
  /// Forgets size and depth of this node and of those above it. Whatever changes the children calls it. An
  /// override calls the inherited one first; after that, and when one above is called, all have forgotten
  /// theirs.
  virtual void Modified() noexcept;

  /// Evaluates the program. Raises EGPException for a node without instruction, or with fewer children than
  /// its function has arguments; EStackError when the tree is too deep for the stack (see `RequireStack`);
  /// and what handlers raise.
  T Execute(TQXGPContext<T>* Context);
  /// Evaluates the child at a place of `Slots`. Raises std::out_of_range when there is none.
  T ExecuteChild(int Index, TQXGPContext<T>* Context);
  /// Whether the node is no function that takes arguments.
  bool IsTerminal() const;

  /// The program in prefix notation, as in "(Add x 1.5)".
  std::string ToString() const;
  /// The node's value, or a variable's name, as text. Nothing here; kinds whose values have a text override
  /// it.
  virtual std::string ValueToString() const { return {}; }

  /// Reads a tree. The node must have an instruction, which serves as a handle on the set; without one it is
  /// cleared. Raises EGPException for an instruction that the set does not have; then the tree is partly
  /// read.
  virtual void LoadFromXML(const TXMLDnaType& Element);
  /// Writes the tree in place of what the element holds.
  virtual void SaveToXML(const TXMLDnaType& Element) const;

  /// The tree as one line from which `FromStateText` makes the same tree, values to the last bit (a NaN as a
  /// NaN): `"Add"("x" "c"=1.5)`, with "-" for a free slot. Raises std::logic_error for a value whose type has
  /// no text (see `TPropertyText`).
  std::string StateText() const;
  /// Makes a tree of an engine's nodes and instructions. Raises std::invalid_argument for a text that is no
  /// such tree or names an instruction that the engine does not have.
  static TPointer FromStateText(std::string_view Text, IQXGeneticProgramEngine<T>& Engine);

  using TValue = T;
  using TInstruction = TQXGPInstruction<T>;

protected:
  /// A detached node with the instruction's value.
  explicit TQXGPNode(TQXGPInstruction<T>* Instruction);

  /// Makes a detached node of this node's own kind.
  virtual TPointer NewNode(TQXGPInstruction<T>* Instruction) const = 0;
  /// Copies what a node has besides its children.
  virtual void DoAssign(const TQXGPNode& Source);
  /// Read and write what a node's element has besides the children.
  virtual void DoLoadFromXML(const TXMLDnaType& Element);
  virtual void DoSaveToXML(const TXMLDnaType& Element) const;
  /// What a node class adds to the text of a node; not read back when it is empty.
  virtual std::string DoSaveState() const { return {}; }
  virtual void DoLoadState(const std::string& Text);
  virtual void LoadValueFromXML(const TXMLDnaType& /*Element*/) {}
  virtual void SaveValueToXML(const TXMLDnaType& /*Element*/) const {}

  virtual TQXGPNode* GetChild(int Index) const = 0;
  virtual int GetChildCount() const = 0;

  /// Stores a child at a place that is free, or before the one that stands there. What is stored is linked
  /// and measured by the caller.
  virtual void StoreChild(std::size_t Slot, TQXGPNode& Node) = 0;
  /// Takes a child out of its place; of a child that was inserted more than once, every occurrence.
  virtual void DropChild(const TQXGPNode& Node) noexcept = 0;
  virtual void DropChildren() noexcept = 0;
  /// Raises when the node cannot have so many children.
  virtual void Reserve(int Count) = 0;
  /// Raises when a node of that kind cannot be a child of this one.
  virtual void RequireFitting(const TQXGPNode& Node) const = 0;

  /// What all ways in have in common: checks, stores, links. An attached node leaves its parent.
  TQXGPNode& Attach(std::size_t Slot, TPointer&& Node);
  void RequireAttachable(const TQXGPNode* Node) const;
  void FreeChildren() noexcept;
  [[noreturn]] void RaiseIndexError(int Index) const;

  // The places of the children: the node's own, or a block of 2^`FSlotSpace` of them.
  static constexpr std::uint32_t OwnSlots = 2;
  TQXGPNode** SlotArray() const noexcept {
    return FSlotSpace == 0 ? const_cast<TQXGPNode**>(FOwnSlots) : FSlotBlock;
  }
  std::uint32_t FSlotCount = 0;
  std::uint8_t FSlotSpace = 0;
  bool FHasOneTwice = false; // a child may stand at more than one place

private:
  template <class TNode>
  friend std::unique_ptr<TNode> MakeNode(TQXGPInstruction<typename TNode::TValue>* Instruction);
  class TFormerChildren;
  class TStateReader;

  T ExecuteInFull(TQXGPContext<T>* Context);
  bool HasArguments(int Count) const {
    TQXGPNode* const* const Children = SlotArray();
    return std::cmp_greater_equal(FSlotCount, Count) && Children[0] != nullptr &&
           Children[Count - 1] != nullptr; // more than two are an n-ary node's, which has no free slots
  }
  static TPointer Loan(TQXGPNode& Node);
  static TPointer CopyTree(const TQXGPNode& Source);
  TQXGPNode& StoreCopy(std::size_t Slot, TPointer Copy);
  bool HasChildren() const noexcept {
    const auto Children = Slots();
    return std::any_of(Children.begin(), Children.end(), [](auto* Child) { return Child != nullptr; });
  }
  void AddStateText(std::string& Text) const;
  void AddValueText(std::string& Text) const;
  void TakeChildren(TQXGPNode*& Chain) noexcept;
  void Measure() const;
  void SetMeasures(std::int32_t Size, std::int32_t Depth);
  void ForgetMeasures() noexcept { FSize = FDepth = 0; }
  void ForgetUpwards() noexcept;
  void TellUpwards() noexcept;
  void Watch();

  // Neither this node nor one above it has known measures or an override of `Modified`, so that a walk up may
  // stop here. Where it is false it is false below as well.
  mutable bool FUnwatched = false;
  bool FModifiedIsOverridden = true; // unless `MakeNode` knows better
  // Size and depth; not known as long as the size is 0. Where they are known they are known below as well.
  mutable std::int32_t FSize = 0;
  mutable std::int32_t FDepth = 0;
  TQXGPNode* FParent = nullptr;
  TQXGPInstruction<T>* FInstruction;
  T FValue;

protected:
  union {
    TQXGPNode* FOwnSlots[OwnSlots] = {};
    TQXGPNode** FSlotBlock;
  };

private:
  // The node whose override of `Modified` is being called on the way up.
  static inline constinit thread_local TQXGPNode* FTold = nullptr;
};

template <class T>
template <class TVisit>
void TQXGPNode<T>::ForEach(TVisit Visit) {
  constexpr std::size_t UsualCount = 32;
  TSmallList<TQXGPNode*, UsualCount> Pending;
  Pending.Push(this);
  while (!Pending.Empty()) {
    TQXGPNode* const Node = Pending.Pop();
    if constexpr (std::is_void_v<decltype(Visit(*Node))>) {
      Visit(*Node);
    } else if (!Visit(*Node)) {
      return;
    }
    const auto Children = Node->Slots();
    for (std::size_t Slot = Children.size(); Slot-- > 0;) {
      if (Children[Slot] != nullptr) {
        Pending.Push(Children[Slot]);
      }
    }
  }
}

// Where neither an override nor a handler of the host's takes part, the value is found without virtual calls.
template <class T>
inline T TQXGPNode<T>::Execute(TQXGPContext<T>* Context) {
  if (FInstruction != nullptr) [[likely]] {
    switch (FInstruction->FEvaluation) {
    case evVariable:
      if (Context != nullptr) [[likely]] {
        const T* const Found = Context->Values().Find(FInstruction->FName, FInstruction->FHint);
        return Found != nullptr ? *Found : T();
      }
      break;
    case evConstant:
      return FValue;
    case evOperation:
      if (HasArguments(FInstruction->FArity)) [[likely]] {
        RequireStack();
        return FInstruction->FFunction(*this, Context);
      }
      break;
    case evNotKnown:
    case evInFull:
      break;
    }
  }
  return ExecuteInFull(Context);
}

template <class T>
inline T TQXGPNode<T>::ExecuteChild(int Index, TQXGPContext<T>* Context) {
  TQXGPNode* const Child = static_cast<std::uint32_t>(Index) < FSlotCount ? SlotArray()[Index] : nullptr;
  if (Child == nullptr) [[unlikely]] {
    RaiseIndexError(Index);
  }
  return Child->Execute(Context);
}

/// Whether a node class leaves `SetValue` as it is.
template <class TNode>
inline constexpr bool HasPlainSetValue = [] {
  using TValue = typename TNode::TValue;
  if constexpr (requires { &TNode::SetValue; }) {
    return std::is_same_v<decltype(&TNode::SetValue), void (TQXGPNode<TValue>::*)(const TValue&)>;
  } else {
    return false;
  }
}();

/// Makes a whole, detached node of a class, with the instruction's value. Only of nodes made so is it known
/// that their class leaves `Modified` as it is; above any other node each change costs a walk to the root.
template <class TNode>
std::unique_ptr<TNode> MakeNode(TQXGPInstruction<typename TNode::TValue>* Instruction) {
  static_assert(alignof(TNode) <= FreeListAlignment);
  auto Node = std::make_unique<TNode>(Instruction);
  if constexpr (requires { &TNode::Modified; }) {
    using TInherited = void (TQXGPNode<typename TNode::TValue>::*)() noexcept;
    TQXGPNode<typename TNode::TValue>& Base = *Node;
    Base.FModifiedIsOverridden = !std::is_same_v<decltype(&TNode::Modified), TInherited>;
    Base.FUnwatched = !Base.FModifiedIsOverridden && Base.FSize == 0;
  }
  if constexpr (!HasPlainSetValue<TNode>) { // the constructor has stored the value, but told no override
    if (Instruction != nullptr) {
      Node->SetValue(Instruction->Value());
    }
  }
  return Node;
}

extern template class TQXGPNode<TGAFloat>;
extern template class TQXGPNode<Variant>;

} // namespace qx::generics
