#pragma once

#include <qx/symbolic_regression/AlignedVector.h>
#include <qx/symbolic_regression/BatchFunctions.h>
#include <qx/symbolic_regression/BatchPlan.h>
#include <qx/symbolic_regression/BlockKernels.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace qx {

/// Rows of a block: as many as let the registers of usual programs fit into the first-level cache.
template <class T>
inline constexpr std::size_t BlockRows = 4096 / sizeof(T);

/// Where a step of a linear program finds values: in a column, a constant, or a register, which holds one
/// block of rows.
template <class T>
struct TProgramOperand {
  const T* Values = nullptr;
  std::uint32_t RowStep = 0; // 1 for a column: its block begins at the block's first row
  std::uint32_t Stride = 0;  // see `TBlockOperand`

  bool IsConstant() const { return Stride == 0; }
  TBlockOperand<T> At(std::size_t Row) const { return {Values + Row * RowStep, Stride}; }
};

/// One operation over a block of rows: a kernel, or a call.
template <class T>
struct TProgramStep {
  TBlockKernel<T> Kernel;
  T* Results;
  TProgramOperand<T> Operands[3];
  std::int32_t Call = -1;          // place of the call, for a step without kernel
  std::uint32_t ResultRowStep = 0; // as that of an operand
  TBlockOperation Operation;
};

/// What a step without kernel calls.
template <class T>
struct TProgramCall {
  const TBatchFunction* Function = nullptr;
  TBatchPlan::TNode* Node = nullptr; // to be executed for each row, when there is no function
  std::vector<TProgramOperand<T>> Arguments;
  std::vector<std::vector<double>> Reals; // what the function gets, and where its results go
  std::vector<std::span<const double>> Spans;
};

/// A part of a program. Its steps run over all rows, block by block, or over whole columns.
struct TProgramStage {
  std::size_t FirstStep = 0;
  std::size_t StepCount = 0;
  bool WholeColumns = false;
};

/// Executes nodes for one row after another.
class TRowExecution {
public:
  /// A context with the columns as variables.
  void Prepare(const TQXDataSet& Data);
  TGAFloat Execute(TBatchPlan::TNode& Node, std::size_t Row);

private:
  const TQXDataSet* FData = nullptr;
  TQXGPFloatContext FContext;
};

/// A program tree as a list of steps over blocks of rows.
template <class T>
struct TLinearProgram {
  std::vector<TProgramStage> Stages; // the last one comes first
  std::vector<TProgramStep<T>> Steps;
  std::vector<TProgramCall<T>> Calls;
  std::size_t CallCount = 0;

  void Clear() {
    Stages.clear();
    Steps.clear();
    CallCount = 0;
  }
  /// Computes the results for so many rows, and for those that pad them.
  void Run(std::size_t Rows, TRowExecution& Execution);

private:
  void RunSteps(const TProgramStage& Stage, std::size_t Rows, TRowExecution& Execution);
  void RunCall(const TProgramStep<T>& Step, std::size_t Row, std::size_t Rows, TRowExecution& Execution);
};

/// Aligned blocks of values, made when they are first wanted, which stay where they are.
template <class T>
class TBlockPool {
public:
  /// Blocks of that length; forgets those of another.
  void SetLength(std::size_t Length) {
    if (Length != FLength) {
      FBlocks.clear();
      FOwned.clear();
      FLength = Length;
    }
  }
  T* Block(std::size_t Index) {
    while (Index >= FBlocks.size()) {
      FOwned.emplace_back(FLength);
      FBlocks.push_back(FOwned.back().data());
    }
    return FBlocks[Index];
  }

private:
  std::vector<TAlignedVector<T>> FOwned;
  std::vector<T*> FBlocks;
  std::size_t FLength = 0;
};

/// Makes linear programs out of trees. All memory is kept for the next program.
template <class T>
class TProgramCompiler {
public:
  using TNode = TBatchPlan::TNode;
  using TOperand = TProgramOperand<T>;

  /// The columns that the plan refers to, each padded to whole units, and the kernels.
  void Prepare(const TBatchPlan& Plan, std::vector<const T*> Columns, std::size_t PaddedRowCount,
               const TBlockKernels<T>& Kernels);

  /// Makes the program that puts the tree's values into `Results`, which has room for all padded rows.
  void Compile(TNode& Tree, T* Results, TLinearProgram<T>& Program);

private:
  struct TVisited {
    TNode* Node;
    const TBatchPlan::TEntry* Entry;
  };
  // A value that is known so far. A register is filled by a step, and free once it has been read.
  struct TValue {
    TOperand Operand;
    std::int32_t Register = -1;
    std::int32_t Step = -1;
  };
  // A tree whose values a column is to get.
  struct TPending {
    TNode* Tree;
    T* Results;
    const TBatchPlan::TEntry* Column; // of a node whose function wants whole columns
  };

  void MakeRoom(std::size_t Nodes);
  std::size_t Flatten(TNode& Tree);
  void AddStage(const TPending& Pending);
  void AddColumnCall(const TPending& Pending);
  TValue ValueOf(const TVisited& Visited);
  TValue Apply(TBlockOperation Operation, int Arity);
  bool Fuse(TBlockOperation Outer, const TValue* Operands);
  TValue Fold(TBlockOperation Operation, const TValue* Operands, int Arity);
  TValue EmitKernel(TBlockOperation Operation, const TValue* Operands, int Arity);
  TValue EmitCall(const TVisited& Visited);
  std::int32_t NewCall(const TBatchFunction* Function, TNode* Node);

  T* NewConstant();
  static TValue ConstantAt(const T* Unit) { return {{Unit, 0, 0}}; }
  static TValue ColumnAt(const T* Values) { return {{Values, 1, BlockUnit<T>}}; }
  TValue NewRegister();
  void Release(const TValue& Value);
  void Push(const TValue& Value) { FStack[FStackCount++] = Value; }
  const TValue& Pop() { return FStack[--FStackCount]; }

  const TBatchPlan* FPlan = nullptr;
  const TBlockKernels<T>* FKernels = nullptr;
  std::vector<const T*> FColumns;
  TLinearProgram<T>* FProgram = nullptr;
  // With room for all nodes of a tree.
  std::vector<TVisited> FVisited;
  std::vector<TNode*> FPendingNodes;
  std::vector<TValue> FStack;
  std::size_t FStackCount = 0;
  std::vector<TPending> FPending;
  TBlockPool<T> FConstants; // pages of many units
  std::size_t FConstantCount = 0;
  TBlockPool<T> FRegisters;
  std::size_t FRegisterCount = 0;
  std::vector<std::int32_t> FFreeRegisters;
  std::size_t FFreeCount = 0;
  TBlockPool<T> FWholeColumns;
  std::size_t FWholeColumnCount = 0;
};

extern template class TProgramCompiler<double>;
extern template class TProgramCompiler<float>;

} // namespace qx
