// From trees to linear programs.

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

template <class T>
void TProgramCompiler<T>::MakeRoom(std::size_t Nodes) {
  if (FVisited.size() < Nodes) {
    FVisited.resize(Nodes);
    FPendingNodes.resize(Nodes + 1);
    FStack.resize(Nodes);
    FFreeRegisters.resize(Nodes + 1);
  }
}

// Writes the nodes before their arguments and tells how many there are. Arguments that no step of this stage
// computes are left out.
template <class T>
std::size_t TProgramCompiler<T>::Flatten(TNode& Tree) {
  MakeRoom(static_cast<std::size_t>(Tree.Size()));
  TVisited* Visited = FVisited.data();
  TNode** Pending = FPendingNodes.data();
  *Pending++ = &Tree;
  while (Pending != FPendingNodes.data()) {
    TNode* const Node = *--Pending;
    const TBatchPlan::TEntry& Entry = FPlan->EntryOf(*Node);
    *Visited++ = {Node, &Entry};
    if (Entry.Arity > 0 && (Entry.Action == baKernel || Entry.Action == baBlockFunction)) {
      const auto Arguments = Node->Slots();
      const auto Arity = static_cast<std::size_t>(Entry.Arity);
      for (std::size_t I = Arity; I-- > 2;) {
        *Pending++ = Arguments[I];
      }
      const std::size_t Rest = std::min(Arity, std::size_t(2)); // both stores, whether or not there are two
      __builtin_prefetch(Arguments[Rest - 1]);
      Pending[0] = Arguments[Rest - 1];
      Pending[1] = Arguments[0];
      Pending += Rest;
    }
  }
  return static_cast<std::size_t>(Visited - FVisited.data());
}

// The visited nodes, from the last to the first, find their arguments on the stack, the first one on top.
template <class T>
void TProgramCompiler<T>::AddStage(const TPending& Pending) {
  FStackCount = 0;
  FFreeCount = FRegisterCount = 0;
  const std::size_t First = FProgram->Steps.size();
  for (std::size_t I = Flatten(*Pending.Tree); I-- > 0;) {
    Push(ValueOf(FVisited[I]));
  }
  const TValue Root = Pop();
  if (Root.Step < 0) { // a column, or a constant
    EmitKernel(boCopy, &Root, 1);
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
    Arguments.push_back(ColumnAt(Values).Operand);
    FPending.push_back({Argument, Values, nullptr});
  }
  FProgram->Stages.push_back({FProgram->Steps.size(), 1, true});
  TProgramStep<T>& Step = FProgram->Steps.emplace_back();
  Step.Kernel = nullptr;
  Step.Results = Pending.Results;
  Step.Call = Call;
}

template <class T>
auto TProgramCompiler<T>::ValueOf(const TVisited& Visited) -> TValue {
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
auto TProgramCompiler<T>::Apply(TBlockOperation Operation, int Arity) -> TValue {
  TValue Operands[3];
  bool AllConstant = true;
  for (int I = 0; I < Arity; ++I) {
    Operands[I] = Pop();
    AllConstant = AllConstant && Operands[I].Operand.IsConstant();
  }
  if (AllConstant) {
    return Fold(Operation, Operands, Arity);
  }
  if (IsFusable(Operation) && Fuse(Operation, Operands)) {
    return Operands[Operands[0].Step >= Operands[1].Step ? 0 : 1];
  }
  return EmitKernel(Operation, Operands, Arity);
}

// Makes one step out of the last one and an operation on its result, which then is in the same register.
template <class T>
bool TProgramCompiler<T>::Fuse(TBlockOperation Outer, const TValue* Operands) {
  const bool IsFirst = Operands[0].Step >= Operands[1].Step;
  const TValue& Inner = Operands[IsFirst ? 0 : 1];
  if (Inner.Step < 0 || std::cmp_not_equal(Inner.Step + 1, FProgram->Steps.size())) {
    return false;
  }
  TProgramStep<T>& Step = FProgram->Steps.back();
  if (Step.Kernel == nullptr || !IsFusable(Step.Operation)) {
    return false;
  }
  const TValue& Other = Operands[IsFirst ? 1 : 0];
  Step.Operation = IsFirst && Outer == boSub ? FusedLess(Step.Operation) : Fused(Outer, Step.Operation);
  Step.Kernel = FKernels->Operations[Step.Operation];
  Step.Operands[2] = Other.Operand;
  Release(Other);
  return true;
}

template <class T>
auto TProgramCompiler<T>::Fold(TBlockOperation Operation, const TValue* Operands, int Arity) -> TValue {
  TBlockArguments<T> Arguments;
  TBlockOperand<T>* const Places[] = {&Arguments.X, &Arguments.Y, &Arguments.Z};
  for (int I = 0; I < Arity; ++I) {
    *Places[I] = Operands[I].Operand.At(0);
  }
  Arguments.Results = NewConstant();
  Arguments.Units = 1;
  FKernels->Operations[Operation](Arguments);
  return ConstantAt(Arguments.Results);
}

template <class T>
auto TProgramCompiler<T>::EmitKernel(TBlockOperation Operation, const TValue* Operands, int Arity) -> TValue {
  TProgramStep<T>& Step = FProgram->Steps.emplace_back();
  Step.Kernel = FKernels->Operations[Operation];
  Step.Operation = Operation;
  const TValue Result = NewRegister(); // while the operands' are taken: results overlap none of them
  for (int I = 0; I < Arity; ++I) {
    Step.Operands[I] = Operands[I].Operand;
    Release(Operands[I]);
  }
  return Result;
}

template <class T>
auto TProgramCompiler<T>::EmitCall(const TVisited& Visited) -> TValue {
  const bool Executes = Visited.Entry->Action == baExecute;
  const std::int32_t Call = NewCall(Executes ? nullptr : Visited.Entry->Function, Visited.Node);
  auto& Arguments = FProgram->Calls[static_cast<std::size_t>(Call)].Arguments;
  std::vector<TValue> Values;
  for (int I = 0; !Executes && I < Visited.Entry->Arity; ++I) {
    TValue Argument = Pop();
    if (Argument.Operand.IsConstant()) { // a function of the host gets rows of it
      Argument = EmitKernel(boCopy, &Argument, 1);
    }
    Arguments.push_back(Argument.Operand);
    Values.push_back(Argument);
  }
  TProgramStep<T>& Step = FProgram->Steps.emplace_back();
  Step.Kernel = nullptr;
  Step.Call = Call;
  const TValue Result = NewRegister();
  for (const TValue& Value : Values) {
    Release(Value);
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
auto TProgramCompiler<T>::NewRegister() -> TValue {
  auto Register = static_cast<std::int32_t>(FRegisterCount);
  if (FFreeCount == 0) {
    ++FRegisterCount;
  } else {
    Register = FFreeRegisters[--FFreeCount];
  }
  T* const Values = FRegisters.Block(static_cast<std::size_t>(Register));
  FProgram->Steps.back().Results = Values;
  const auto Step = static_cast<std::int32_t>(FProgram->Steps.size()) - 1;
  return {{Values, 0, BlockUnit<T>}, Register, Step};
}

template <class T>
void TProgramCompiler<T>::Release(const TValue& Value) {
  FFreeRegisters[FFreeCount] = Value.Register;
  FFreeCount += Value.Register >= 0 ? 1 : 0;
}

template class TProgramCompiler<double>;
template class TProgramCompiler<float>;

} // namespace qx
