#pragma once

#include <qx/program_trees/GPNode.h>

#include <cstddef>

namespace qx::generics {

/// A node with two slots, left and right, for children of binary kinds. Either may be free: a node with a
/// right child alone has one child, at place 1. A document does not tell the slots, so there it becomes the
/// left one.
template <class T>
class TQXGPBinaryNode : public TQXGPNode<T> {
  using TBase = TQXGPNode<T>;

public:
  using TBase::AddChild;
  using TBase::InsertChild;
  using typename TBase::TPointer;

  /// A detached node with the instruction's value; made with `MakeNode`.
  explicit TQXGPBinaryNode(TQXGPInstruction<T>* Instruction);
  ~TQXGPBinaryNode() override { this->FreeChildren(); }

  TQXGPBinaryNode* Left() const { return static_cast<TQXGPBinaryNode*>(this->FOwnSlots[0]); }
  TQXGPBinaryNode* Right() const { return static_cast<TQXGPBinaryNode*>(this->FOwnSlots[1]); }
  /// Replaces a child by a copy of the given node, which may be an own descendant, or by nothing. The present
  /// child itself stays.
  void SetLeft(const TQXGPBinaryNode* Value) { SetSide(0, Value); }
  void SetRight(const TQXGPBinaryNode* Value) { SetSide(1, Value); }

  /// The left slot when it is free, else the right one.
  TQXGPNode<T>& AddChild(TPointer&& Node) override;
  /// Stores a copy of the node in a slot, 0 or 1, in place of the child there; a single child there moves to
  /// the other slot first. Then attaches the node itself too, to the slot that is still free. When none is,
  /// this raises EGPException: the copy stays, and the node remains the caller's. For a plain insertion there
  /// are `AddChild` and `AttachChild`.
  TQXGPNode<T>& InsertChild(int Index, TPointer&& Node) override;
  TQXGPNode<T>& AttachChild(int Index, TPointer&& Node) override;

protected:
  TPointer NewNode(TQXGPInstruction<T>* Instruction) const override;
  TQXGPNode<T>* GetChild(int Index) const override;
  int GetChildCount() const override {
    return (this->FOwnSlots[0] != nullptr ? 1 : 0) + (this->FOwnSlots[1] != nullptr ? 1 : 0);
  }

  void StoreChild(std::size_t Slot, TQXGPNode<T>& Node) override { this->FOwnSlots[Slot] = &Node; }
  void DropChild(const TQXGPNode<T>& Node) noexcept override;
  void DropChildren() noexcept override { this->FOwnSlots[0] = this->FOwnSlots[1] = nullptr; }
  void Reserve(int Count) override;
  void RequireFitting(const TQXGPNode<T>& Node) const override;

private:
  void SetSide(std::size_t Side, const TQXGPBinaryNode* Value);
  TPointer FittingCopy(const TQXGPNode<T>& Source) const;
  void ReplaceSide(std::size_t Side, TPointer Child);
  [[noreturn]] static void RaiseFull();
  void RequireSide(int Index) const;
};

extern template class TQXGPBinaryNode<TGAFloat>;
extern template class TQXGPBinaryNode<Variant>;

} // namespace qx::generics
