// From trees to linear programs.

#include <qx/platform/SmallList.h>
#include <qx/symbolic_regression/LinearProgram.h>

#include <algorithm>
#include <span>
#include <utility>

namespace qx {

namespace {

// Units of constants that are made at a time.
constexpr std::size_t PageUnits = 64;

bool IsFusable(TBlockOperation Operation) { return Operation <= boMul; } // Add, Sub and Mul

TBlockOperation Fused(TBlockOperation Outer, TBlockOperation Inner) {
  return static_cast<TBlockOperation>(boAddAdd + 3 * Outer + Inner);
}
TBlockOperation FusedLess(TBlockOperation Inner) { return static_cast<TBlockOperation>(boAddLess + Inner); }

} // namespace

template <class T>
void TProgramCompiler<T>::Prepare(const TBatchPlan& Plan, std::vector<const T*> Columns,
                                  std::size_t PaddedRowCount, const TBlockKernels<T>& Kernels) {
  FPlan = &Plan;
  FColumns = std::move(Columns);
  FKernels = &Kernels;
  FConstants.SetLength(PageUnits * BlockUnit<T>);
  FRegisters.SetLength(BlockRows<T> + BlockUnit<T>); // so that equal rows of registers share no line's place
  FWholeColumns.SetLength(PaddedRowCount);
}

template <class T>
void TProgramCompiler<T>::Compile(TNode& Tree, T* Results, TLinearProgram<T>& Program) {
  FProgram = &Program;
  Program.Clear();
  FConstantCount = FWholeColumnCount = 0;
  FPending.assign(1, {&Tree, Results, nullptr});
  while (!FPending.empty()) { // what a stage reads is made by stages that are added after it
    const TPending Pending = FPending.back();
    FPending.pop_back();
    if (Pending.Column != nullptr) {
      AddColumnCall(Pending);
    } else {
      AddStage(Pending);
    }
  }
}

// Nodes before their arguments. Arguments that no step of this stage computes are left out.
template <class T>
void TProgramCompiler<T>::Flatten(TNode& Tree) {
  constexpr std::size_t UsualCount = 64;
  TSmallList<TNode*, UsualCount> Pending;
  Pending.Push(&Tree);
  FVisited.clear();
  while (!Pending.Empty()) {
    TNode* const Node = Pending.Pop();
    const TBatchPlan::TEntry& Entry = FPlan->EntryOf(*Node);
    FVisited.push_back({Node, &Entry});
    if (Entry.Action == baKernel || Entry.Action == baBlockFunction) {
      const auto Arguments = Node->Slots();
      for (auto I = static_cast<std::size_t>(Entry.Arity); I-- > 0;) {
        Pending.Push(Arguments[I]);
      }
    }
  }
}

// The visited nodes, from the last to the first, find their arguments on the stack, the first one on top.
template <class T>
void TProgramCompiler<T>::AddStage(const TPending& Pending) {
  Flatten(*Pending.Tree);
  FStack.clear();
  FFreeRegisters.clear();
  FRegisterCount = 0;
  const std::size_t First = FProgram->Steps.size();
  for (std::size_t I = FVisited.size(); I-- > 0;) {
    FStack.push_back(OperandFor(FVisited[I]));
  }
  TOperand Root = Pop();
  if (Root.Step < 0) { // a column, or a constant
    Root = EmitKernel(boCopy, &Root, 1);
  }
  FProgram->Steps.back().Results = Pending.Results;
  FProgram->Steps.back().ResultRowStep = 1;
  FProgram->Stages.push_back({First, FProgram->Steps.size() - First, false});
}

// A function that wants whole columns runs by itself, after stages that make its arguments.
template <class T>
void TProgramCompiler<T>::AddColumnCall(const TPending& Pending) {
  const std::int32_t Call = NewCall(Pending.Column->Function, nullptr);
  auto& Arguments = FProgram->Calls[static_cast<std::size_t>(Call)].Arguments;
  for (TNode* const Argument : Pending.Tree->Slots().first(static_cast<std::size_t>(Pending.Column->Arity))) {
    T* const Values = FWholeColumns.Block(FWholeColumnCount++);
    Arguments.push_back(ColumnAt(Values));
    FPending.push_back({Argument, Values, nullptr});
  }
  FProgram->Stages.push_back({FProgram->Steps.size(), 1, true});
  TProgramStep<T>& Step = FProgram->Steps.emplace_back();
  Step.Results = Pending.Results;
  Step.Call = Call;
}

template <class T>
auto TProgramCompiler<T>::OperandFor(const TVisited& Visited) -> TOperand {
  const TBatchPlan::TEntry& Entry = *Visited.Entry;
  switch (Entry.Action) {
  case baKernel:
    return Apply(Entry.Operation, Entry.Arity);
  case baColumn:
    return ColumnAt(FColumns[static_cast<std::size_t>(Entry.Column)]);
  case baValue:
  case baNodeValue: {
    const TGAFloat Value = Entry.Action == baValue ? Entry.Value : Visited.Node->Value();
    T* const Unit = NewConstant();
    std::fill_n(Unit, BlockUnit<T>, static_cast<T>(Value));
    return ConstantAt(Unit);
  }
  case baColumnFunction: {
    T* const Values = FWholeColumns.Block(FWholeColumnCount++);
    FPending.push_back({Visited.Node, Values, &Entry});
    return ColumnAt(Values);
  }
  case baBlockFunction:
  case baExecute:
    break;
  }
  return EmitCall(Visited);
}

template <class T>
auto TProgramCompiler<T>::Apply(TBlockOperation Operation, int Arity) -> TOperand {
  TOperand Operands[3];
  bool AllConstant = true;
  for (int I = 0; I < Arity; ++I) {
    Operands[I] = Pop();
    AllConstant = AllConstant && Operands[I].IsConstant();
  }
  if (AllConstant) {
    return Fold(Operation, Operands, Arity);
  }
  TOperand Result;
  if (IsFusable(Operation) && Fuse(Operation, Operands, Result)) {
    return Result;
  }
  return EmitKernel(Operation, Operands, Arity);
}

// Makes one step out of the last one and an operation on its result.
template <class T>
bool TProgramCompiler<T>::Fuse(TBlockOperation Outer, const TOperand* Operands, TOperand& Result) {
  const auto Last = static_cast<std::int32_t>(FProgram->Steps.size()) - 1;
  const bool IsFirst = Operands[0].Step == Last;
  if (Last < 0 || (!IsFirst && Operands[1].Step != Last)) {
    return false;
  }
  TProgramStep<T>& Step = FProgram->Steps.back();
  if (Step.Kernel == nullptr || !IsFusable(Step.Operation)) {
    return false;
  }
  const TOperand& Other = Operands[IsFirst ? 1 : 0];
  Step.Operation = IsFirst && Outer == boSub ? FusedLess(Step.Operation) : Fused(Outer, Step.Operation);
  Step.Kernel = FKernels->Operations[Step.Operation];
  Step.Operands[2] = Other;
  Release(Other);
  Result = Operands[IsFirst ? 0 : 1];
  return true;
}

template <class T>
auto TProgramCompiler<T>::Fold(TBlockOperation Operation, const TOperand* Operands, int Arity) -> TOperand {
  TBlockArguments<T> Arguments;
  TBlockOperand<T>* const Places[] = {&Arguments.X, &Arguments.Y, &Arguments.Z};
  for (int I = 0; I < Arity; ++I) {
    *Places[I] = Operands[I].At(0);
  }
  Arguments.Results = NewConstant();
  Arguments.Units = 1;
  FKernels->Operations[Operation](Arguments);
  return ConstantAt(Arguments.Results);
}

template <class T>
auto TProgramCompiler<T>::EmitKernel(TBlockOperation Operation, const TOperand* Operands, int Arity)
    -> TOperand {
  TProgramStep<T>& Step = FProgram->Steps.emplace_back();
  Step.Kernel = FKernels->Operations[Operation];
  Step.Operation = Operation;
  const TOperand Result = NewRegister(); // while the operands' are taken: results overlap none of them
  for (int I = 0; I < Arity; ++I) {
    Step.Operands[I] = Operands[I];
    Release(Operands[I]);
  }
  return Result;
}

template <class T>
auto TProgramCompiler<T>::EmitCall(const TVisited& Visited) -> TOperand {
  const bool Executes = Visited.Entry->Action == baExecute;
  const std::int32_t Call = NewCall(Executes ? nullptr : Visited.Entry->Function, Visited.Node);
  auto& Arguments = FProgram->Calls[static_cast<std::size_t>(Call)].Arguments;
  for (int I = 0; !Executes && I < Visited.Entry->Arity; ++I) {
    TOperand Argument = Pop();
    if (Argument.IsConstant()) { // a function of the host gets rows of it
      Argument = EmitKernel(boCopy, &Argument, 1);
    }
    Arguments.push_back(Argument);
  }
  FProgram->Steps.emplace_back().Call = Call;
  const TOperand Result = NewRegister();
  for (const TOperand& Argument : Arguments) {
    Release(Argument);
  }
  return Result;
}

template <class T>
std::int32_t TProgramCompiler<T>::NewCall(const TBatchFunction* Function, TNode* Node) {
  const std::size_t Index = FProgram->CallCount++;
  if (Index == FProgram->Calls.size()) {
    FProgram->Calls.emplace_back();
  }
  TProgramCall<T>& Call = FProgram->Calls[Index];
  Call.Function = Function;
  Call.Node = Node;
  Call.Arguments.clear();
  return static_cast<std::int32_t>(Index);
}

template <class T>
T* TProgramCompiler<T>::NewConstant() {
  const std::size_t Place = FConstantCount++;
  return FConstants.Block(Place / PageUnits) + Place % PageUnits * BlockUnit<T>;
}

// For the results of the last step.
template <class T>
auto TProgramCompiler<T>::NewRegister() -> TOperand {
  auto Register = static_cast<std::int32_t>(FRegisterCount);
  if (FFreeRegisters.empty()) {
    ++FRegisterCount;
  } else {
    Register = FFreeRegisters.back();
    FFreeRegisters.pop_back();
  }
  T* const Values = FRegisters.Block(static_cast<std::size_t>(Register));
  FProgram->Steps.back().Results = Values;
  return {Values, 0, BlockUnit<T>, Register, static_cast<std::int32_t>(FProgram->Steps.size()) - 1};
}

template <class T>
void TProgramCompiler<T>::Release(const TOperand& Operand) {
  if (Operand.Register >= 0) {
    FFreeRegisters.push_back(Operand.Register);
  }
}

template <class T>
auto TProgramCompiler<T>::Pop() -> TOperand {
  const TOperand Top = FStack.back();
  FStack.pop_back();
  return Top;
}

template class TProgramCompiler<double>;
template class TProgramCompiler<float>;

} // namespace qx
