#pragma once

#include <qx/platform/Collection.h>

#include <memory>

namespace qx::generics {

template <class T>
class TQXGPInstruction;
template <class T>
class TQXGPInstructions;
template <class T>
class TQXGPNode;

/// What instruction sets, nodes and individuals need of the component that they belong to. It is found as the
/// owner of the instruction set or of the population.
template <class T>
class IQXGeneticProgramEngine {
public:
  /// The component's instruction set.
  virtual TQXGPInstructions<T>& Instructions() = 0;
  /// Makes a detached node, of the component's node class, for an instruction or for none; with `MakeNode`.
  virtual std::unique_ptr<TQXGPNode<T>> CreateNode(TQXGPInstruction<T>* Instruction) = 0;
  /// The largest arity that an instruction may have.
  virtual int MaxNodeArity() const = 0;
  /// Called before an instruction or the set changes in a way that the engine hears of, with the name of the
  /// call: an engine whose programs are in use raises std::logic_error.
  virtual void RequireChangeable(const char* /*Call*/) const {}
  /// An instruction changed or, with nullptr, the set did.
  virtual void InstructionUpdate(TQXGPInstruction<T>* Instruction) = 0;
  /// An instruction has come, or is about to go.
  virtual void InstructionNotify(TQXGPInstruction<T>& Instruction, TCollectionNotification Action) = 0;
  /// An instruction's kind changed.
  virtual void InstructionOperationUpdate(TQXGPInstruction<T>& Instruction) = 0;

protected:
  ~IQXGeneticProgramEngine() = default;
};

} // namespace qx::generics
