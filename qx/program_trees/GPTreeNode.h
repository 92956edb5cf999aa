#pragma once

#include <qx/program_trees/GPNode.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace qx::generics {

/// A node with any number of children, in a list.
template <class T>
class TQXGPTreeNode : public TQXGPNode<T> {
  using TBase = TQXGPNode<T>;

public:
  using TBase::AddChild;
  using TBase::Children;
  using TBase::InsertChild;
  using typename TBase::TPointer;

  /// A detached node with the instruction's value; made with `MakeNode`.
  explicit TQXGPTreeNode(TQXGPInstruction<T>* Instruction);
  ~TQXGPTreeNode() override;

  /// The children as a whole list.
  std::span<TQXGPNode<T>* const> Children() const { return this->Slots(); }
  /// Replaces the children by copies of the given nodes, which may be the children or stand below them.
  void SetChildren(std::span<TQXGPNode<T>* const> Value);

  TQXGPNode<T>& AddChild(TPointer&& Node) override;
  /// Before the child at that place. A child of this node already comes to be listed twice; it is owned,
  /// freed and extracted once all the same.
  TQXGPNode<T>& InsertChild(int Index, TPointer&& Node) override;
  TQXGPNode<T>& AttachChild(int Index, TPointer&& Node) override {
    return InsertChild(Index, std::move(Node));
  }

protected:
  TPointer NewNode(TQXGPInstruction<T>* Instruction) const override;
  TQXGPNode<T>* GetChild(int Index) const override;
  int GetChildCount() const override { return static_cast<int>(this->FSlotCount); }

  void StoreChild(std::size_t Slot, TQXGPNode<T>& Node) override;
  void DropChild(const TQXGPNode<T>& Node) noexcept override;
  void DropChildren() noexcept override { this->FSlotCount = 0; }
  void Reserve(int Count) override;
  void RequireFitting(const TQXGPNode<T>& /*Node*/) const override {}

private:
  std::uint32_t Capacity() const { return std::max(TBase::OwnSlots, std::uint32_t{1} << this->FSlotSpace); }
  void FreeSlots() noexcept;
};

extern template class TQXGPTreeNode<TGAFloat>;
extern template class TQXGPTreeNode<Variant>;

} // namespace qx::generics
