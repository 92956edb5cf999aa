#pragma once

#include <qx/symbolic_regression/LinearProgram.h>

#include <span>
#include <vector>

namespace qx {

/// Evaluates floating-point programs over all rows of a data set at once, in double or in single precision:
/// the tree becomes a linear program over blocks of rows that fit into the first-level cache, run by
/// vectorised kernels. What each row gets is what `Execute` gives for it, the columns being the variables, to
/// a few units in the last place of each function; the bits are the same on every processor.
///
/// Standard instructions have kernels. An instruction of the host's own may have one in `TQXBatchFunctions`;
/// one without is executed row by row, with all that is below it. So is an If, And, Or, Nand or Nor above
/// such an instruction, which may leave it out. Functions of one program are called in no order that is laid
/// down.
///
///     qx::TQXBatchEvaluator<double> evaluator(data, gp.Instructions());
///     std::span<const double> values = evaluator.Evaluate(*gp.FittestIndividual()->DNA());
template <class T>
class TQXBatchEvaluator {
public:
  using TNode = TBatchPlan::TNode;
  using TInstructions = TBatchPlan::TInstructions;

  TQXBatchEvaluator() = default;
  TQXBatchEvaluator(const TQXDataSet& Data, TInstructions& Set,
                    const TQXBatchFunctions* Functions = nullptr) {
    Prepare(Data, Set, Functions);
  }
  TQXBatchEvaluator(const TQXBatchEvaluator&) = delete;
  TQXBatchEvaluator& operator=(const TQXBatchEvaluator&) = delete;

  /// Gets ready for programs of those instructions; once, and again after the instructions, the data or the
  /// functions have changed. All three must outlive the evaluations.
  void Prepare(const TQXDataSet& Data, TInstructions& Set, const TQXBatchFunctions* Functions = nullptr);
  /// Runs the kernels of another instruction set than the processor's best.
  void SetKernels(const TBlockKernels<T>& Kernels);

  /// The program's values, one for each row, until the next call. They are aligned to 64 bytes and padded as
  /// the columns are. Raises what `Execute` raises for programs that are not whole, also where it would leave
  /// out what is missing, what the host's functions raise, and std::logic_error for an instruction that there
  /// was none of in `Prepare`.
  std::span<const T> Evaluate(TNode& Program);
  /// Whether the evaluation calls code of the host, be it a function or an `OnExecute`.
  bool CallsHost(TNode& Program) const { return FPlan.CallsHost(Program); }
  /// What is done for each instruction.
  const TBatchPlan& Plan() const { return FPlan; }

private:
  void PrepareCompiler();

  const TQXDataSet* FData = nullptr;
  const TBlockKernels<T>* FKernels = &BlockKernels<T>();
  TBatchPlan FPlan;
  std::vector<TAlignedVector<T>> FNarrowColumns; // in single precision
  TProgramCompiler<T> FCompiler;
  TLinearProgram<T> FProgram;
  TRowExecution FExecution;
  TAlignedVector<T> FResults;
};

extern template class TQXBatchEvaluator<double>;
extern template class TQXBatchEvaluator<float>;

} // namespace qx
