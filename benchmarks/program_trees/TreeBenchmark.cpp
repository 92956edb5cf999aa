// Execution of program trees beside the same formulas in C++; building, copying, freeing and measuring them.

#include <benchmark/benchmark.h>

#include <benchmarks/program_trees/RandomFormula.h>
#include <bit>
#include <cstdint>
#include <utility>
#include <vector>

namespace qx::benchmarks {
namespace {

constexpr int Formulas = 16;
constexpr double X = 0.7;
constexpr double Y = -1.3;
constexpr double Z = 2.1;

using TFormula = double (*)(double X, double Y, double Z);

template <int Nodes>
struct TSample {
  TSample() : Instructions(nullptr) {
    AddArithmetic(Instructions);
    Add(std::make_integer_sequence<std::uint64_t, Formulas>());
    Context.Values().Add("x", X);
    Context.Values().Add("y", Y);
    Context.Values().Add("z", Z);
  }

  template <std::uint64_t... Seeds>
  void Add(std::integer_sequence<std::uint64_t, Seeds...>) {
    (Trees.push_back(TRandomFormula<Seeds, Nodes>::Tree(Instructions)), ...);
    (Compiled.push_back(TRandomFormula<Seeds, Nodes>::Value), ...);
  }

  TInstructions Instructions;
  std::vector<TNodePointer> Trees;
  std::vector<TFormula> Compiled;
  TContext Context;
};

template <int Nodes>
void ExecuteTree(benchmark::State& State) {
  TSample<Nodes> Sample;
  for (std::size_t I = 0; I < Sample.Trees.size(); ++I) {
    const double Value = Sample.Trees[I]->Execute(&Sample.Context);
    if (std::bit_cast<std::uint64_t>(Value) != std::bit_cast<std::uint64_t>(Sample.Compiled[I](X, Y, Z)) ||
        Sample.Trees[I]->Size() != Nodes) {
      State.SkipWithError("A tree is not its formula");
      return;
    }
  }
  for (auto _ : State) {
    for (const TNodePointer& Tree : Sample.Trees) {
      benchmark::DoNotOptimize(Tree->Execute(&Sample.Context));
    }
  }
  State.SetItemsProcessed(State.iterations() * Formulas * Nodes);
}
BENCHMARK(ExecuteTree<15>);
BENCHMARK(ExecuteTree<63>);
BENCHMARK(ExecuteTree<255>);

template <int Nodes>
void ExecuteCompiled(benchmark::State& State) {
  TSample<Nodes> Sample;
  for (auto _ : State) {
    for (TFormula Formula : Sample.Compiled) {
      benchmark::DoNotOptimize(Formula); // so that each is called
      benchmark::DoNotOptimize(Formula(X, Y, Z));
    }
  }
  State.SetItemsProcessed(State.iterations() * Formulas * Nodes);
}
BENCHMARK(ExecuteCompiled<15>);
BENCHMARK(ExecuteCompiled<63>);
BENCHMARK(ExecuteCompiled<255>);

template <int Nodes>
void CloneAndFreeTree(benchmark::State& State) {
  const TSample<Nodes> Sample;
  for (auto _ : State) {
    for (const TNodePointer& Tree : Sample.Trees) {
      benchmark::DoNotOptimize(Tree->Clone());
    }
  }
  State.SetItemsProcessed(State.iterations() * Formulas * Nodes);
}
BENCHMARK(CloneAndFreeTree<15>);
BENCHMARK(CloneAndFreeTree<63>);
BENCHMARK(CloneAndFreeTree<255>);

// A chain of functions of one argument, from the root down; `levels` of them.
TNodePointer Chain(TInstructions& Instructions, std::int64_t Levels) {
  using TTree = generics::TQXGPTreeNode<TGAFloat>;
  TNodePointer Root = generics::MakeNode<TTree>(&Instructions[0]);
  TNode* Deepest = Root.get();
  for (std::int64_t I = 1; I < Levels; ++I) {
    Deepest = &Deepest->AddChild(generics::MakeNode<TTree>(&Instructions[0]));
  }
  return Root;
}

void BuildAndFreeChain(benchmark::State& State) {
  TInstructions Instructions(nullptr);
  AddArithmetic(Instructions);
  for (auto _ : State) {
    benchmark::DoNotOptimize(Chain(Instructions, State.range(0)));
  }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}
BENCHMARK(BuildAndFreeChain)->ArgName("levels")->Arg(10)->Arg(1000)->Arg(100'000)->Arg(1'000'000);

void CloneAndFreeChain(benchmark::State& State) {
  TInstructions Instructions(nullptr);
  AddArithmetic(Instructions);
  const TNodePointer Tree = Chain(Instructions, State.range(0));
  for (auto _ : State) {
    benchmark::DoNotOptimize(Tree->Clone());
  }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}
BENCHMARK(CloneAndFreeChain)->ArgName("levels")->Arg(10)->Arg(1000)->Arg(100'000)->Arg(1'000'000);

void MeasureChainAnew(benchmark::State& State) {
  TInstructions Instructions(nullptr);
  AddArithmetic(Instructions);
  const TNodePointer Tree = Chain(Instructions, State.range(0));
  TNode* Deepest = Tree.get();
  while (Deepest->ChildCount() > 0) {
    Deepest = Deepest->Children(0);
  }
  for (auto _ : State) {
    Deepest->Modified();
    benchmark::DoNotOptimize(Tree->Size());
  }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}
BENCHMARK(MeasureChainAnew)->ArgName("levels")->Arg(10)->Arg(1000);

} // namespace
} // namespace qx::benchmarks
