#pragma once

#include <qx/genetic_programming/ProgramEngine.h>

namespace qx::generics {

/// Holds one program and its instructions, to run it apart from the evolution that found it.
///
///     executor.Instructions().AssignAll(gp.Instructions());
///     executor.SetGPProgram(*gp.FittestIndividual()->DNA());
///     y = executor.Execute(&context);
///
/// Changes of the instruction set leave the program; where one of its instructions goes, its nodes have none,
/// and running them raises.
template <class T>
class TQXCustomGeneticProgrammingExecutor : public TQXProgramEngine<TComponent, T> {
  using TBase = TQXProgramEngine<TComponent, T>;

public:
  using typename TBase::TInstruction;
  using typename TBase::TNode;
  using typename TBase::TNodePointer;

  explicit TQXCustomGeneticProgrammingExecutor(TComponent* Owner = nullptr) : TBase(Owner) {}

  /// Root of the program, or nullptr.
  TNode* GPProgram() const { return FGPProgram.get(); }
  /// Copies a tree. The copy refers to the own instructions: to the `Counterpart` of each. Raises
  /// EGPException, and keeps the former program, when one has none.
  void SetGPProgram(const TNode& Value);

  /// Runs the program; without one the result is the default value. Raises what nodes raise.
  T Execute(TQXGPContext<T>* Context) const;

  /// Copies the instructions, with their handlers, and the program of another executor.
  void Assign(const TPersistent& Source) override;

protected:
  void InstructionUpdate(TInstruction* /*Instruction*/) override {}
  void InstructionNotify(TInstruction& Instruction, TCollectionNotification Action) override;
  void InstructionOperationUpdate(TInstruction& /*Instruction*/) override {}

private:
  TNodePointer FGPProgram;
};

extern template class TQXCustomGeneticProgrammingExecutor<TGAFloat>;
extern template class TQXCustomGeneticProgrammingExecutor<Variant>;

} // namespace qx::generics
