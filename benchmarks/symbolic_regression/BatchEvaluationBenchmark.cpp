// Evaluation of random programs over rows of data: in blocks, in double and single precision, and tree by
// tree. Items are node evaluations: nodes of the trees times rows.

#include <qx/symbolic_regression/BatchEvaluator.h>

#include <benchmark/benchmark.h>

#include <benchmarks/symbolic_regression/CompiledTrees.h>
#include <benchmarks/symbolic_regression/RandomTrees.h>
#include <cmath>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace qx::benchmarks {
namespace {

// Compilation to linear form included.
template <class T, TFunctionSet Functions>
void EvaluateInBlocks(benchmark::State& State) {
  TRandomTrees Sample(Functions);
  const TQXDataSet Data = RandomData(static_cast<int>(State.range(0)));
  TQXBatchEvaluator<T> Evaluator(Data, Sample.Instructions());
  for (auto _ : State) {
    for (const auto& Tree : Sample.Trees()) {
      benchmark::DoNotOptimize(Evaluator.Evaluate(*Tree).data());
    }
  }
  State.SetItemsProcessed(State.iterations() * Sample.NodeCount() * State.range(0));
}
BENCHMARK(EvaluateInBlocks<double, fsArithmetic>)->ArgName("rows")->Arg(20)->Arg(1000)->Arg(10'000);
BENCHMARK(EvaluateInBlocks<double, fsMixed>)->ArgName("rows")->Arg(20)->Arg(1000)->Arg(10'000);
BENCHMARK(EvaluateInBlocks<float, fsArithmetic>)->ArgName("rows")->Arg(20)->Arg(1000)->Arg(10'000);
BENCHMARK(EvaluateInBlocks<float, fsMixed>)->ArgName("rows")->Arg(20)->Arg(1000)->Arg(10'000);

// The first programs as compiled C++, each checked against what the evaluation gives.
template <TFunctionSet Functions>
void EvaluateCompiled(benchmark::State& State) {
  TRandomTrees Sample(Functions);
  const TQXDataSet Data = RandomData(static_cast<int>(State.range(0)));
  TQXBatchEvaluator<double> Evaluator(Data, Sample.Instructions());
  const TCompiledTree* const Compiled = Functions == fsArithmetic ? CompiledArithmetic : CompiledMixed;
  const double* Columns[VariableCount];
  for (int I = 0; I < VariableCount; ++I) {
    Columns[I] = Data.Column(I).data();
  }
  std::vector<double> Results(static_cast<std::size_t>(Data.RowCount()));
  std::int64_t Nodes = 0;
  std::int64_t Far = 0;
  for (int I = 0; I < CompiledTreeCount; ++I) {
    auto& Tree = *Sample.Trees()[static_cast<std::size_t>(I)];
    Nodes += Tree.Size();
    Compiled[I](Columns, Results.data(), Data.RowCount());
    const auto Values = Evaluator.Evaluate(Tree);
    for (std::size_t Row = 0; Row < Values.size(); ++Row) {
      const bool Same = Values[Row] == Results[Row] || (std::isnan(Values[Row]) && std::isnan(Results[Row]));
      Far += !Same && !(std::fabs(Values[Row] - Results[Row]) <= 1e-6 * std::fabs(Results[Row])) ? 1 : 0;
    }
  }
  // Some programs are chaotic: sines of huge numbers that differ in their last places.
  if (Far > CompiledTreeCount * State.range(0) / 50) {
    State.SkipWithError("The compiled programs are not the evaluated ones");
    return;
  }
  for (auto _ : State) {
    for (int I = 0; I < CompiledTreeCount; ++I) {
      Compiled[I](Columns, Results.data(), Data.RowCount());
      benchmark::ClobberMemory();
    }
  }
  State.SetItemsProcessed(State.iterations() * Nodes * State.range(0));
}
BENCHMARK(EvaluateCompiled<fsArithmetic>)->ArgName("rows")->Arg(20)->Arg(1000)->Arg(10'000);
BENCHMARK(EvaluateCompiled<fsMixed>)->ArgName("rows")->Arg(20)->Arg(1000)->Arg(10'000);

// A data set without rows leaves the compilation alone.
template <TFunctionSet Functions>
void CompileToLinearForm(benchmark::State& State) {
  TRandomTrees Sample(Functions);
  const TQXDataSet Data = RandomData(0);
  TQXBatchEvaluator<double> Evaluator(Data, Sample.Instructions());
  for (auto _ : State) {
    for (const auto& Tree : Sample.Trees()) {
      benchmark::DoNotOptimize(Evaluator.Evaluate(*Tree).data());
    }
  }
  State.SetItemsProcessed(State.iterations() * static_cast<std::int64_t>(Sample.Trees().size()));
}
BENCHMARK(CompileToLinearForm<fsArithmetic>);
BENCHMARK(CompileToLinearForm<fsMixed>);

template <TFunctionSet Functions>
void ExecuteRowByRow(benchmark::State& State) {
  TRandomTrees Sample(Functions);
  const TQXDataSet Data = RandomData(static_cast<int>(State.range(0)));
  struct TVariable {
    std::string Name;
    std::span<const double> Column;
    generics::TDictionaryHint Hint{};
  };
  std::vector<TVariable> Variables;
  TQXGPFloatContext Context;
  for (int I = 0; I < Data.ColumnCount(); ++I) {
    Variables.push_back({Data.ColumnName(I), Data.Column(I)});
    Context.Values().Add(Data.ColumnName(I), 0);
  }
  for (auto _ : State) {
    for (const auto& Tree : Sample.Trees()) {
      for (std::size_t Row = 0; Row < static_cast<std::size_t>(Data.RowCount()); ++Row) {
        for (TVariable& Variable : Variables) {
          Context.Values().SetItems(Variable.Name, Variable.Column[Row], Variable.Hint);
        }
        benchmark::DoNotOptimize(Tree->Execute(&Context));
      }
    }
  }
  State.SetItemsProcessed(State.iterations() * Sample.NodeCount() * State.range(0));
}
BENCHMARK(ExecuteRowByRow<fsArithmetic>)->ArgName("rows")->Arg(20)->Arg(1000)->Arg(10'000);
BENCHMARK(ExecuteRowByRow<fsMixed>)->ArgName("rows")->Arg(20)->Arg(1000)->Arg(10'000);

} // namespace
} // namespace qx::benchmarks
