// One generation of programs of 40 to 60 nodes, its two halves apart: reproduction (selection, copies,
// crossover, mutation, the bloat strategy) out of a generation that stays as it is, and the evaluation of all
// programs.

#include <qx/genetic_programming/QXGeneticProgramming.h>
#include <qx/platform/Random.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace qx::benchmarks {
namespace {

class TPrograms : public TQXGeneticProgramming {
public:
  TPrograms(int Count, int Variables, TGPBloatStrategy Strategy = bsNone) {
    SeedRandom(1);
    AddStandardInstructions(Instructions(), sgArithmetic);
    for (int I = 0; I < Variables; ++I) {
      Names.push_back("x" + std::to_string(I));
      Instructions().Add().SetName(Names.back());
    }
    SetInitialPopulation(Count);
    SetSelectionMethod(smTournament);
    SetBloatStrategy(Strategy);
    SetBloatLimit(60);
    OnInitialization = [this](auto&, bool& Filled) {
      for (auto& Individual : Population()) {
        Individual.AssignDNA(UsualTree());
      }
      Filled = true;
    };
    OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) { Fitness = Item.DNA()->Depth(); };
    Initialize();
  }

  void ReproduceAll() {
    for (int Index = 0; Index < Population().Count(); Index += 2) {
      DoEvolveOneStep(Index);
    }
  }
  void EvaluateAll() {
    for (auto& Individual : Population()) {
      Individual.EvaluateFitness();
    }
  }
  double MeanSize() {
    CalculateProgramStats();
    return static_cast<double>(AvgProgramSize());
  }

  std::vector<std::string> Names;
  TQXGPFloatContext Context;

private:
  TNodePointer UsualTree() {
    constexpr int Depth = 9;
    for (;;) {
      TNodePointer Tree = DoInitializeGrow(nullptr, 0, Depth);
      if (Tree->Size() >= 40 && Tree->Size() <= 60) {
        return Tree;
      }
    }
  }
};

void ReproducePrograms(benchmark::State& State) {
  const auto Strategy = static_cast<TGPBloatStrategy>(State.range(0));
  TPrograms Programs(static_cast<int>(State.range(1)), 5, Strategy);
  for (auto _ : State) {
    Programs.ReproduceAll();
  }
  State.SetLabel(std::string(EnumName(Strategy)) + ", mean size " + std::to_string(Programs.MeanSize()));
  State.SetItemsProcessed(State.iterations() * State.range(1));
  State.SetComplexityN(State.range(1));
}
BENCHMARK(ReproducePrograms)
    ->ArgNames({"strategy", "population"})
    ->ArgsProduct({benchmark::CreateDenseRange(bsNone, bsLexicographicParsimonyPressure, 1),
                   {50, 1000, 4000, 16000}})
    ->Unit(benchmark::kMillisecond);

// Fitness and its statistics, which is where the other strategies act.
void JudgePrograms(benchmark::State& State) {
  const auto Strategy = static_cast<TGPBloatStrategy>(State.range(0));
  TPrograms Programs(static_cast<int>(State.range(1)), 5, Strategy);
  for (auto _ : State) {
    for (auto& Individual : Programs.Population()) {
      Individual.MarkStale();
    }
    Programs.EvaluateFitness();
  }
  State.SetLabel(std::string(EnumName(Strategy)));
  State.SetItemsProcessed(State.iterations() * State.range(1));
}
BENCHMARK(JudgePrograms)
    ->ArgNames({"strategy", "population"})
    ->ArgsProduct({{bsNone, bsTarpeianSize, bsTarpeianDepth, bsUnfitSize, bsUnfitDepth,
                    bsSizeParsimonyPressure, bsDepthParsimonyPressure, bsCovariantSizeParsimonyPressure,
                    bsCovariantDepthParsimonyPressure},
                   {50, 1000, 4000, 16000}})
    ->Unit(benchmark::kMillisecond);

void EvaluateRows(benchmark::State& State, int Rows, int Variables) {
  TPrograms Programs(1000, Variables);
  Programs.OnEvaluateFitness = [&](auto&, auto& Item, double& Fitness) {
    Fitness = 0;
    for (int Row = 0; Row < Rows; ++Row) {
      double Sum = 0;
      for (std::size_t V = 0; V < Programs.Names.size(); ++V) {
        const double x = std::fmod(0.618 * (Row + 1) * static_cast<double>(V + 1), 2) - 1;
        Programs.Context.Values().AddOrSetValue(Programs.Names[V], x);
        Sum += x;
      }
      Fitness += std::fabs(Item.Execute(&Programs.Context) - Sum * Sum);
    }
  };
  for (auto _ : State) {
    Programs.EvaluateAll();
  }
  State.SetItemsProcessed(State.iterations() * 1000 * Rows);
  State.counters["nodes/s"] =
      benchmark::Counter(static_cast<double>(State.iterations()) * 1000 * Rows * Programs.MeanSize(),
                         benchmark::Counter::kIsRate);
}
void EvaluateQuartic(benchmark::State& State) { EvaluateRows(State, 20, 1); }
void EvaluateTable(benchmark::State& State) { EvaluateRows(State, 1000, 5); }
BENCHMARK(EvaluateQuartic)->Unit(benchmark::kMillisecond);
BENCHMARK(EvaluateTable)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace qx::benchmarks
