#pragma once

// Definitions of GPExecutor.h.

#include <qx/genetic_programming/GPExecutor.h>

#include <utility>

namespace qx::generics {

template <class T>
void TQXCustomGeneticProgrammingExecutor<T>::SetGPProgram(const TNode& Value) {
  TNodePointer Copy = Value.Clone();
  Copy->BindTo(this->Instructions());
  FGPProgram = std::move(Copy);
}

template <class T>
T TQXCustomGeneticProgrammingExecutor<T>::Execute(TQXGPContext<T>* Context) const {
  return FGPProgram != nullptr ? FGPProgram->Execute(Context) : T();
}

template <class T>
void TQXCustomGeneticProgrammingExecutor<T>::Assign(const TPersistent& Source) {
  const auto* const Executor = this->template SourceAs<TQXCustomGeneticProgrammingExecutor>(Source);
  if (Executor == nullptr) {
    TBase::Assign(Source);
    return;
  }
  if (Executor == this) {
    return;
  }
  this->CopyInstructions(*Executor, &TQXGPInstructions<T>::AssignAll);
  if (Executor->FGPProgram != nullptr) {
    SetGPProgram(*Executor->FGPProgram);
  } else {
    FGPProgram.reset();
  }
}

template <class T>
void TQXCustomGeneticProgrammingExecutor<T>::InstructionNotify(TInstruction& Instruction,
                                                               TCollectionNotification Action) {
  if (Action != cnAdded && FGPProgram != nullptr) {
    FGPProgram->ForEach([&](TNode& Node) {
      if (Node.Instruction() == &Instruction) {
        Node.SetInstruction(nullptr);
      }
    });
  }
}

} // namespace qx::generics
