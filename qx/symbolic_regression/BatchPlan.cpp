#include <qx/genetic_programming/StandardInstructions.h>
#include <qx/symbolic_regression/BatchPlan.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string>
#include <typeinfo>

namespace qx {

namespace {

// Whether the instruction does what instructions do, apart from its handler.
bool IsPlain(const TBatchPlan::TInstruction& Instruction) {
  return typeid(Instruction) == typeid(TQXGPFloatInstruction) ||
         typeid(Instruction) == typeid(TBatchPlan::TInstruction);
}

// Operations of which the standard instruction does not always look at all arguments.
bool IsLazy(TBlockOperation Operation) {
  constexpr TBlockOperation Lazy[] = {boIf, boAnd, boOr, boNand, boNor};
  return std::ranges::find(Lazy, Operation) != std::end(Lazy);
}

} // namespace

void TBatchPlan::Make(TInstructions& Set, const TQXDataSet& Data, const TQXBatchFunctions* Functions) {
  FEntries.clear();
  FExecutesSome = FCallsSome = false;
  for (const TInstruction& Instruction : Set) {
    const TEntry Entry = EntryFor(Instruction, Data, Functions);
    FExecutesSome |= Entry.Action == baExecute;
    FCallsSome |= Entry.Action >= baBlockFunction;
    FEntries.push_back(Entry);
  }
}

TBatchPlan::TEntry TBatchPlan::EntryFor(const TInstruction& Instruction, const TQXDataSet& Data,
                                        const TQXBatchFunctions* Functions) {
  TEntry Entry;
  Entry.Instruction = &Instruction;
  if (const auto* const Function = Functions != nullptr ? Functions->Find(Instruction.Name()) : nullptr) {
    Entry.Action = Function->WholeColumns ? baColumnFunction : baBlockFunction;
    Entry.Arity = Instruction.Arity();
    Entry.Function = &Function->Function;
    return Entry;
  }
  if (!IsPlain(Instruction)) {
    return Entry;
  }
  if (const auto Name = StandardInstructionName(Instruction); !Name.empty()) {
    Entry.Action = baKernel;
    Entry.Operation = BlockOperationOf(Name);
    Entry.Arity = Instruction.Arity();
  } else if (!Instruction.OnExecute && Instruction.Operation() == gpConstant) {
    Entry.Action = baNodeValue;
  } else if (!Instruction.OnExecute && Instruction.Operation() == gpVariable) {
    Entry.Column = Data.IndexOf(Instruction.Name());
    Entry.Action = Entry.Column >= 0 ? baColumn : baValue;
  }
  return Entry;
}

void TBatchPlan::RaiseUnknown(const TInstruction& Instruction) {
  throw std::logic_error("The instruction \"" + Instruction.Name() +
                         "\" is none of those that batch evaluation was prepared for; prepare it again");
}

bool TBatchPlan::IsExecutedBelow(const TNode& Node, const TEntry& Entry) const {
  if (Entry.Action != baKernel || !IsLazy(Entry.Operation)) {
    return false;
  }
  bool Executed = false;
  for (TNode* const Argument : Node.Slots().subspan(1)) {
    Argument->ForEach([&](const TNode& Below) {
      Executed = EntryAlone(Below).Action == baExecute;
      return !Executed;
    });
    if (Executed) {
      return true;
    }
  }
  return false;
}

bool TBatchPlan::CallsHost(TNode& Program) const {
  bool Calls = false;
  if (FCallsSome) {
    Program.ForEach([&](const TNode& Node) {
      Calls = EntryOf(Node).Action >= baBlockFunction;
      return !Calls;
    });
  }
  return Calls;
}

} // namespace qx
