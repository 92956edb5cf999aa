#pragma once

// Definitions of GPBinaryNode.h.

#include <qx/program_trees/GPBinaryNode.h>
#include <qx/program_trees/GPNode.ipp>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace qx::generics {

template <class T>
TQXGPBinaryNode<T>::TQXGPBinaryNode(TQXGPInstruction<T>* Instruction) : TBase(Instruction) {
  this->FSlotCount = TBase::OwnSlots;
}

template <class T>
void TQXGPBinaryNode<T>::SetSide(std::size_t Side, const TQXGPBinaryNode* Value) {
  if (Value != this->FOwnSlots[Side]) {
    ReplaceSide(Side, Value != nullptr ? FittingCopy(*Value) : nullptr);
  }
}

template <class T>
auto TQXGPBinaryNode<T>::FittingCopy(const TQXGPNode<T>& Source) const -> TPointer {
  TPointer Copy = Source.Clone();
  RequireFitting(*Copy);
  return Copy;
}

template <class T>
void TQXGPBinaryNode<T>::ReplaceSide(std::size_t Side, TPointer Child) {
  TQXGPNode<T>* const Former = this->FOwnSlots[Side];
  const TPointer Freed = Former != nullptr ? this->ExtractChild(*Former) : nullptr;
  if (Child != nullptr) {
    this->Attach(Side, std::move(Child));
  }
}

template <class T>
TQXGPNode<T>& TQXGPBinaryNode<T>::AddChild(TPointer&& Node) {
  return AttachChild(0, std::move(Node));
}

template <class T>
TQXGPNode<T>& TQXGPBinaryNode<T>::AttachChild(int Index, TPointer&& Node) {
  if (Node != nullptr && Node->Parent() == this) {
    return *Node.release();
  }
  if (this->FOwnSlots[0] != nullptr && this->FOwnSlots[1] != nullptr) {
    this->RequireAttachable(Node.get());
    RaiseFull();
  }
  RequireSide(Index);
  const auto Side = static_cast<std::size_t>(Index);
  return this->Attach(this->FOwnSlots[Side] == nullptr ? Side : 1 - Side, std::move(Node));
}

template <class T>
TQXGPNode<T>& TQXGPBinaryNode<T>::InsertChild(int Index, TPointer&& Node) {
  RequireSide(Index);
  this->RequireAttachable(Node.get());
  const auto Side = static_cast<std::size_t>(Index);
  const bool MovesOver = this->FOwnSlots[1 - Side] == nullptr;
  const bool Replaces = MovesOver || this->FOwnSlots[Side] != Node.get();
  TPointer Copy = Replaces ? FittingCopy(*Node) : nullptr; // while nothing has changed yet
  if (MovesOver) {
    std::swap(this->FOwnSlots[0], this->FOwnSlots[1]);
  }
  const bool HasRoom = this->FOwnSlots[1 - Side] == nullptr || Node->Parent() == this;
  if (!HasRoom && Node->Parent() != nullptr) {
    static_cast<void>(Node.release()); // it stays where it is, or goes with the child that is replaced
  }
  if (Replaces) {
    ReplaceSide(Side, std::move(Copy));
  }
  if (!HasRoom) {
    RaiseFull();
  }
  return AddChild(std::move(Node));
}

template <class T>
auto TQXGPBinaryNode<T>::NewNode(TQXGPInstruction<T>* Instruction) const -> TPointer {
  return MakeNode<TQXGPBinaryNode>(Instruction);
}

template <class T>
TQXGPNode<T>* TQXGPBinaryNode<T>::GetChild(int Index) const {
  RequireSide(Index);
  return this->FOwnSlots[Index];
}

template <class T>
void TQXGPBinaryNode<T>::DropChild(const TQXGPNode<T>& Node) noexcept {
  std::replace(this->FOwnSlots, this->FOwnSlots + TBase::OwnSlots, const_cast<TQXGPNode<T>*>(&Node),
               static_cast<TQXGPNode<T>*>(nullptr));
}

template <class T>
void TQXGPBinaryNode<T>::Reserve(int Count) {
  if (Count > 2) {
    RaiseFull();
  }
}

template <class T>
void TQXGPBinaryNode<T>::RequireFitting(const TQXGPNode<T>& Node) const {
  if (this->template SourceAs<TQXGPBinaryNode>(Node) == nullptr) {
    throw std::invalid_argument("A " + Node.ClassName() + " cannot be a child of a " + this->ClassName());
  }
}

template <class T>
void TQXGPBinaryNode<T>::RaiseFull() {
  throw EGPException(std::string(SNodeFull));
}

template <class T>
void TQXGPBinaryNode<T>::RequireSide(int Index) const {
  if (Index != 0 && Index != 1) {
    throw std::out_of_range("Index " + std::to_string(Index) + " is no slot of a node that has two");
  }
}

} // namespace qx::generics
