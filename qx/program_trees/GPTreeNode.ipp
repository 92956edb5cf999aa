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
TQXGPTreeNode<T>::TQXGPTreeNode(TQXGPInstruction<T>* Instruction) : TBase(Instruction) {
  this->FSlots = FOwnSlots;
}

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
  return this->FSlots[Index];
}

template <class T>
void TQXGPTreeNode<T>::StoreChild(std::size_t Slot, TQXGPNode<T>& Node) {
  if (this->FSlotCount == FCapacity) {
    Reserve(GetChildCount() + 1);
  }
  std::size_t Place = this->FSlotCount++;
  for (; Place > Slot; --Place) {
    this->FSlots[Place] = this->FSlots[Place - 1];
  }
  this->FSlots[Place] = &Node;
}

template <class T>
void TQXGPTreeNode<T>::DropChild(const TQXGPNode<T>& Node) noexcept {
  TQXGPNode<T>** const End = this->FSlots + this->FSlotCount;
  this->FSlotCount = static_cast<std::uint32_t>(std::remove(this->FSlots, End, &Node) - this->FSlots);
}

template <class T>
void TQXGPTreeNode<T>::Reserve(int Count) {
  if (std::cmp_less_equal(Count, FCapacity)) {
    return;
  }
  const std::uint32_t NewCapacity = std::bit_ceil(static_cast<std::uint32_t>(Count));
  auto** const NewSlots = static_cast<TQXGPNode<T>**>(TakeBlock(NewCapacity * sizeof(TQXGPNode<T>*)));
  std::copy_n(this->FSlots, this->FSlotCount, NewSlots);
  FreeSlots();
  this->FSlots = NewSlots;
  FCapacity = NewCapacity;
}

template <class T>
void TQXGPTreeNode<T>::FreeSlots() noexcept {
  if (this->FSlots != FOwnSlots) {
    FreeBlock(this->FSlots, FCapacity * sizeof(TQXGPNode<T>*));
  }
}

} // namespace qx::generics
