#pragma once

#include <qx/program_trees/QXGenerics.GeneticProgramEngine.h>

#include <string>

namespace qx {

/// A node of a family whose value has a text. `TSelf` derives from it and has `TextOf(value)`, the text for
/// people.
template <class TSelf, class TFamily>
class TQXGPValueNode : public TFamily {
public:
  using T = typename TFamily::TValue;
  using TFamily::TFamily;
  using typename TFamily::TPointer;

  /// A variable's name, a constant's value, "" for anything else.
  std::string ValueToString() const override {
    const auto* const Instruction = this->Instruction();
    if (Instruction == nullptr || Instruction->Operation() == gpFunction) {
      return {};
    }
    return Instruction->Operation() == gpVariable ? Instruction->DisplayName() : TSelf::TextOf(this->Value());
  }

protected:
  TPointer NewNode(generics::TQXGPInstruction<T>* Instruction) const override {
    return generics::MakeNode<TSelf>(Instruction);
  }
};

/// An instruction set whose items are of one class: everything that takes or gives one does so as `TItem`.
template <class TItem, class T>
class TQXGPTypedInstructions : public TTypedCollection<TItem, generics::TQXGPInstructions<T>> {
  using TBase = TTypedCollection<TItem, generics::TQXGPInstructions<T>>;

public:
  explicit TQXGPTypedInstructions(TPersistent* Owner, TItemClass<TItem> ItemClass = ItemClassOf<TItem>())
      : TBase(Owner, ItemClass) {}

  /// See `TQXGPInstructions`.
  TItem* FindItemName(std::string_view Name) const { return static_cast<TItem*>(TBase::FindItemName(Name)); }
  TItem& GetItemByName(std::string_view Name) const {
    return static_cast<TItem&>(TBase::GetItemByName(Name));
  }
};

} // namespace qx
