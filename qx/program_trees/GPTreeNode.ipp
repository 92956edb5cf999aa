#pragma once

// Definitions of GPTreeNode.h.

#include <qx/program_trees/GPNode.ipp>
#include <qx/program_trees/GPTreeNode.h>

#include <algorithm>
#include <bit>
#include <stdexcept>
#include <utility>
#include <vector>

namespace qx::generics {

template <class T>
TQXGPTreeNode<T>::TQXGPTreeNode(TQXGPInstruction<T>* Instruction) : TBase(Instruction) {}

template <class T>
TQXGPTreeNode<T>::~TQXGPTreeNode() {
  this->FreeChildren();
  FreeSlots();
}

template <class T>
void TQXGPTreeNode<T>::SetChildren(std::span<TQXGPNode<T>* const> Value) {
  std::vector<TPointer> Copies; // first, since the given nodes may go with the present children
  for (const TQXGPNode<T>* const Node : Value) {
    if (Node == nullptr) {
      throw std::invalid_argument("There is no node to copy");
    }
    Copies.push_back(Node->Clone());
  }
  this->FreeChildren();
  this->Modified();
  for (TPointer& Copy : Copies) {
    AddChild(std::move(Copy));
  }
}

template <class T>
TQXGPNode<T>& TQXGPTreeNode<T>::AddChild(TPointer&& Node) {
  if (Node != nullptr && Node->Parent() == this) {
    return *Node.release();
  }
  return this->Attach(this->FSlotCount, std::move(Node));
}

template <class T>
TQXGPNode<T>& TQXGPTreeNode<T>::InsertChild(int Index, TPointer&& Node) {
  if (Index < 0 || Index > GetChildCount()) {
    this->RaiseIndexError(Index);
  }
  return this->Attach(static_cast<std::size_t>(Index), std::move(Node));
}

template <class T>
auto TQXGPTreeNode<T>::NewNode(TQXGPInstruction<T>* Instruction) const -> TPointer {
  return MakeNode<TQXGPTreeNode>(Instruction);
}

template <class T>
TQXGPNode<T>* TQXGPTreeNode<T>::GetChild(int Index) const {
  if (static_cast<std::uint32_t>(Index) >= this->FSlotCount) [[unlikely]] { // a negative index is a huge one
    this->RaiseIndexError(Index);
  }
  return this->SlotArray()[Index];
}

template <class T>
void TQXGPTreeNode<T>::StoreChild(std::size_t Slot, TQXGPNode<T>& Node) {
  if (this->FSlotCount == Capacity()) {
    Reserve(GetChildCount() + 1);
  }
  TQXGPNode<T>** const Slots = this->SlotArray();
  std::size_t Place = this->FSlotCount++;
  for (; Place > Slot; --Place) {
    Slots[Place] = Slots[Place - 1];
  }
  Slots[Place] = &Node;
}

template <class T>
void TQXGPTreeNode<T>::DropChild(const TQXGPNode<T>& Node) noexcept {
  TQXGPNode<T>** const Slots = this->SlotArray();
  if (!this->FHasOneTwice && this->FSlotCount > 0 && Slots[this->FSlotCount - 1] == &Node) {
    --this->FSlotCount;
    return;
  }
  const auto* const End = std::remove(Slots, Slots + this->FSlotCount, &Node);
  this->FSlotCount = static_cast<std::uint32_t>(End - Slots);
}

template <class T>
void TQXGPTreeNode<T>::Reserve(int Count) {
  if (std::cmp_less_equal(Count, Capacity())) {
    return;
  }
  const auto Space = static_cast<std::uint8_t>(std::bit_width(static_cast<std::uint32_t>(Count - 1)));
  auto** const Block = static_cast<TQXGPNode<T>**>(TakeBlock(sizeof(TQXGPNode<T>*) << Space));
  std::copy_n(this->SlotArray(), this->FSlotCount, Block);
  FreeSlots();
  this->FSlotBlock = Block;
  this->FSlotSpace = Space;
}

template <class T>
void TQXGPTreeNode<T>::FreeSlots() noexcept {
  if (this->FSlotSpace > 0) {
    FreeBlock(this->FSlotBlock, sizeof(TQXGPNode<T>*) << this->FSlotSpace);
  }
}

} // namespace qx::generics
