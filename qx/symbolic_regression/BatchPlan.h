#pragma once

#include <qx/genetic_programming/GPFloat.h>
#include <qx/symbolic_regression/BatchFunctions.h>
#include <qx/symbolic_regression/BlockKernels.h>
#include <qx/symbolic_regression/DataSet.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qx {

/// What batch evaluation does for an instruction.
enum TBatchAction : std::uint8_t {
  /// Runs a kernel.
  baKernel,
  /// Reads a column.
  baColumn,
  /// Takes the instruction's or the node's value for all rows.
  baValue,
  baNodeValue,
  /// Calls a host's function with blocks of rows, or with whole columns.
  baBlockFunction,
  baColumnFunction,
  /// Executes the node for each row.
  baExecute
};

/// How the instructions of a set are evaluated over the columns of a data set.
class TBatchPlan {
public:
  using TInstruction = generics::TQXGPInstruction<TGAFloat>;
  using TInstructions = generics::TQXGPInstructions<TGAFloat>;
  using TNode = generics::TQXGPNode<TGAFloat>;

  struct TEntry {
    const TInstruction* Instruction = nullptr;
    TBatchAction Action = baExecute;
    TBlockOperation Operation = boCopy; // of a kernel
    int Arity = 0;
    int Column = 0;
    TGAFloat Value = 0;
    const TBatchFunction* Function = nullptr;
  };

  /// Looks at the instructions as they are now. A variable that the data have no column for is 0, as in a
  /// context without it.
  void Make(TInstructions& Set, const TQXDataSet& Data, const TQXBatchFunctions* Functions);

  /// What is done for a node. Raises std::logic_error when the plan does not know its instruction: the set
  /// has changed since.
  const TEntry& EntryOf(const TNode& Node) const {
    const TEntry& Entry = EntryAlone(Node);
    if (Entry.Arity > 0 &&
        (!HasArguments(Node, Entry.Arity) || (FExecutesSome && IsExecutedBelow(Node, Entry)))) [[unlikely]] {
      return FExecute;
    }
    return Entry;
  }

  /// Whether evaluating the program calls code of the host.
  bool CallsHost(TNode& Program) const;

private:
  // Without a look at the node's arguments.
  const TEntry& EntryAlone(const TNode& Node) const {
    const TInstruction* const Instruction = Node.Instruction();
    if (Instruction == nullptr) [[unlikely]] {
      return FExecute;
    }
    const auto Index = static_cast<std::size_t>(Instruction->Index());
    if (Index >= FEntries.size() || FEntries[Index].Instruction != Instruction) [[unlikely]] {
      RaiseUnknown(*Instruction);
    }
    return FEntries[Index];
  }
  // Without a branch for each argument: which of one or two there are cannot be foreseen.
  static bool HasArguments(const TNode& Node, int Count) {
    const auto Slots = Node.Slots();
    const auto Wanted = static_cast<std::size_t>(Count);
    if (Slots.size() < Wanted) {
      return false;
    }
    bool HasAll = Slots[0] != nullptr && Slots[Wanted - 1] != nullptr;
    for (std::size_t I = 2; I < Wanted; ++I) {
      HasAll = HasAll && Slots[I - 1] != nullptr;
    }
    return HasAll;
  }
  static TEntry EntryFor(const TInstruction& Instruction, const TQXDataSet& Data,
                         const TQXBatchFunctions* Functions);
  [[noreturn]] static void RaiseUnknown(const TInstruction& Instruction);
  bool IsExecutedBelow(const TNode& Node, const TEntry& Entry) const;

  std::vector<TEntry> FEntries;
  bool FExecutesSome = false;
  bool FCallsSome = false;
  TEntry FExecute; // for nodes that raise when they are executed, and those that may leave arguments out
};

} // namespace qx
