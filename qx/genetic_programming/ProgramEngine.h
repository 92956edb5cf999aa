#pragma once

#include <qx/engine/LoadScope.h>
#include <qx/platform/Component.h>
#include <qx/program_trees/QXGenerics.GeneticProgramEngine.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace qx::generics {

/// A component that owns an instruction set and makes the nodes of programs over it. `TBase` is a component
/// class.
template <class TBase, class T>
class TQXProgramEngine : public TBase, public IQXGeneticProgramEngine<T> {
public:
  using TInstruction = TQXGPInstruction<T>;
  using TNode = TQXGPNode<T>;
  using TNodePointer = typename TNode::TPointer;
  using TValue = T;

  explicit TQXProgramEngine(TComponent* Owner = nullptr) : TBase(Owner) {}

  /// The instruction set, made by `CreateInstructions` when it is first asked for.
  TQXGPInstructions<T>& Instructions() override {
    if (FInstructions == nullptr) {
      FInstructions = CreateInstructions(ItemClassOf<TInstruction>());
    }
    return *FInstructions;
  }
  const TQXGPInstructions<T>& Instructions() const {
    return const_cast<TQXProgramEngine*>(this)->Instructions(); // which may be made now
  }
  /// Copies the given instructions, without their handlers, into the own set.
  void SetInstructions(const TQXGPInstructions<T>& Value) { Instructions().Assign(Value); }

  /// The functions that nothing is known to execute: they have no handler of `OnExecute`, and their class
  /// does not override the evaluation. Such a function evaluates to the default value.
  std::vector<TInstruction*> InstructionsWithoutHandler() {
    std::vector<TInstruction*> Found;
    for (TInstruction& Instruction : Instructions()) {
      if (Instruction.IsWithoutHandler()) {
        Found.push_back(&Instruction);
      }
    }
    return Found;
  }

  /// A detached node for an instruction or for none, of this component's node class; with `MakeNode`.
  TNodePointer CreateNode(TInstruction* Instruction) override {
    return MakeNode<TQXGPTreeNode<T>>(Instruction);
  }
  /// The same as a child of `Parent`.
  TNode& CreateNode(TInstruction* Instruction, TNode& Parent) {
    return Parent.AddChild(CreateNode(Instruction));
  }
  /// No limit.
  int MaxNodeArity() const override { return std::numeric_limits<std::int32_t>::max(); }

protected:
  /// Makes the instruction set, owned by this component.
  virtual std::unique_ptr<TQXGPInstructions<T>> CreateInstructions(TItemClass<TInstruction> ItemClass) {
    return std::make_unique<TQXGPInstructions<T>>(this, ItemClass);
  }

  /// Copies the instructions of another engine, by `Assign` or `AssignAll` of the set.
  void CopyInstructions(const TQXProgramEngine& Source,
                        void (TQXGPInstructions<T>::*Copy)(const TPersistent&)) {
    if (Source.FInstructions != nullptr) {
      (Instructions().*Copy)(*Source.FInstructions);
    } else {
      Instructions().Clear();
    }
  }

  /// Reads instructions into the set. When the load fails, those that it added are gone and the others as
  /// they were.
  void MergeInstructions(const TXMLGPInstructions& Element, TLoadScope& Load) {
    using TContent = TInstructionContent<T>;
    auto Former = std::make_shared<std::vector<std::unique_ptr<TInstruction>>>();
    for (const TInstruction& Instruction : Instructions()) {
      Former->push_back(Instructions().ItemClass().Make());
      TContent::Store(*Former->back(), Instruction);
    }
    Load.OnFailure([this, Former] {
      TUpdateScope Update(Instructions());
      while (std::cmp_greater(Instructions().Count(), Former->size())) {
        Instructions().Delete(Instructions().Count() - 1);
      }
      for (std::size_t I = 0; I < Former->size(); ++I) {
        TContent::Store(Instructions()[static_cast<int>(I)], *(*Former)[I]);
      }
      Update.End();
    });
    Instructions().LoadFromXML(Element);
  }

private:
  std::unique_ptr<TQXGPInstructions<T>> FInstructions;
};

} // namespace qx::generics
