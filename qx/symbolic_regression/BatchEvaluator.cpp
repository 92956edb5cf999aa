#include <qx/symbolic_regression/BatchEvaluator.h>

#include <algorithm>
#include <type_traits>
#include <utility>

namespace qx {

template <class T>
void TQXBatchEvaluator<T>::Prepare(const TQXDataSet& Data, TInstructions& Set,
                                   const TQXBatchFunctions* Functions) {
  FPlan.Make(Set, Data, Functions);
  FExecution.Prepare(Data);
  FResults.resize(PaddedRows<T>(static_cast<std::size_t>(Data.RowCount())));
  FData = &Data;
  PrepareCompiler();
}

template <class T>
void TQXBatchEvaluator<T>::SetKernels(const TBlockKernels<T>& Kernels) {
  FKernels = &Kernels;
  if (FData != nullptr) {
    PrepareCompiler();
  }
}

template <class T>
void TQXBatchEvaluator<T>::PrepareCompiler() {
  std::vector<const T*> Columns;
  FNarrowColumns.clear();
  for (int I = 0; I < FData->ColumnCount(); ++I) {
    if constexpr (std::is_same_v<T, double>) {
      Columns.push_back(FData->Column(I).data());
    } else {
      const double* const Values = FData->Column(I).data();
      TAlignedVector<T>& Narrow = FNarrowColumns.emplace_back(FResults.size());
      std::transform(Values, Values + FResults.size(), Narrow.begin(),
                     [](double Value) { return static_cast<T>(Value); });
      Columns.push_back(Narrow.data());
    }
  }
  FCompiler.Prepare(FPlan, std::move(Columns), FResults.size(), *FKernels);
}

template <class T>
std::span<const T> TQXBatchEvaluator<T>::Evaluate(TNode& Program) {
  const auto Rows = static_cast<std::size_t>(FData->RowCount());
  FCompiler.Compile(Program, FResults.data(), FProgram);
  FProgram.Run(Rows, FExecution);
  return std::span(FResults).first(Rows);
}

template class TQXBatchEvaluator<double>;
template class TQXBatchEvaluator<float>;

} // namespace qx
