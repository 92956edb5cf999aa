// Node selection and crossover of program individuals, on full trees and on deep ones.

#include <qx/genetic_programming/QXGenerics.GeneticProgramming.h>
#include <qx/platform/Random.h>

#include <benchmark/benchmark.h>

#include <benchmarks/program_trees/RandomFormula.h>
#include <cstdint>
#include <memory>

namespace qx::benchmarks {
namespace {

using TIndividual = generics::TQXGPIndividual<TGAFloat>;
using TPopulation = generics::TQXGPPopulation<TGAFloat>;
using TTree = generics::TQXGPTreeNode<TGAFloat>;
constexpr double Preference = 0.9;

// Levels of functions whose left operand is a variable and whose right one goes on: twice as many nodes as
// levels, and no subtree but the leaves is small.
TNodePointer Comb(TInstructions& Instructions, std::int64_t Depth) {
  TNodePointer Tree = generics::MakeNode<TTree>(&Instructions[4]);
  for (std::int64_t I = 0; I < Depth; ++I) {
    TNodePointer Above = generics::MakeNode<TTree>(&Instructions[static_cast<int>(I % 4)]);
    Above->AddChild(generics::MakeNode<TTree>(&Instructions[static_cast<int>(4 + I % 3)]));
    Above->AddChild(std::move(Tree));
    Tree = std::move(Above);
  }
  return Tree;
}

struct TCouple {
  explicit TCouple(std::int64_t Depth) {
    AddArithmetic(Instructions);
    SeedRandom(1);
    for (TIndividual* const Individual : {&Mother, &Father}) {
      Individual->AssignDNA(Comb(Instructions, Depth));
    }
  }

  TInstructions Instructions{nullptr};
  TPopulation Population{nullptr};
  TIndividual& Mother = Population.Add();
  TIndividual& Father = Population.Add();
};

void SelectNode(benchmark::State& State) {
  TCouple Couple(State.range(0));
  for (auto _ : State) {
    benchmark::DoNotOptimize(Couple.Mother.SelectNode(Preference));
  }
}
BENCHMARK(SelectNode)->ArgName("depth")->Arg(10)->Arg(1000);

void SelectNodeBySize(benchmark::State& State) {
  TCouple Couple(State.range(0));
  for (auto _ : State) {
    benchmark::DoNotOptimize(Couple.Mother.SelectNode(5, true));
  }
}
BENCHMARK(SelectNodeBySize)->ArgName("depth")->Arg(10)->Arg(1000);

// Two selections, and a swap that puts the subtrees back at the end of a second one: the sizes do not drift.
void SelectAndCross(benchmark::State& State) {
  TCouple Couple(State.range(0));
  for (auto _ : State) {
    TNode& Mine = *Couple.Mother.SelectNode(Preference);
    TNode& Theirs = *Couple.Father.SelectNode(Preference);
    Couple.Mother.Crossover(Mine, Couple.Father, Theirs);
    Couple.Mother.Crossover(Theirs, Couple.Father, Mine);
  }
  State.SetItemsProcessed(2 * State.iterations());
}
BENCHMARK(SelectAndCross)->ArgName("depth")->Arg(10)->Arg(1000);

void AssignProgram(benchmark::State& State) {
  TCouple Couple(State.range(0));
  for (auto _ : State) {
    Couple.Mother.Assign(Couple.Father);
  }
  State.SetItemsProcessed(State.iterations() * Couple.Father.DNA()->Size());
}
BENCHMARK(AssignProgram)->ArgName("depth")->Arg(10)->Arg(1000);

} // namespace
} // namespace qx::benchmarks
