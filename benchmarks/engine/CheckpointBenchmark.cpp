// Checkpoints in memory: both generations of a run with everything that belongs to them.

#include <qx/genetic_algorithm/QXGeneticAlgorithm.h>
#include <qx/genetic_programming/QXGeneticProgramming.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <sstream>

namespace qx::benchmarks {
namespace {

class TBits : public TQXGeneticAlgorithm {
public:
  TBits() {
    SeedRandom(1);
    SetGeneSize(100);
    SetInitialPopulation(100'000);
    SetInitialDuplicatesRetries(0);
    OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) { Fitness = Item.Bits().CountOnes(); };
    Initialize();
  }
};

class TPrograms : public TQXGeneticProgramming {
public:
  TPrograms() {
    SeedRandom(1);
    AddStandardInstructions(Instructions(), sgArithmetic);
    Instructions().Add().SetName("x");
    AddEphemeralConstant(Instructions(), "c", -1, 1);
    SetInitialPopulation(16'000);
    SetInitialDuplicatesRetries(0);
    SetInitializationMethod(imFull);
    SetInitializationDepth(5);
    OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) { Fitness = Item.DNA()->Size(); };
    Initialize();
  }
};

template <class TComponent>
void SaveCheckpoint(benchmark::State& State) {
  TComponent Component;
  std::ostringstream Stream;
  for (auto _ : State) {
    Stream.str({});
    Component.SaveCheckpoint(Stream);
  }
  State.SetBytesProcessed(State.iterations() * static_cast<std::int64_t>(Stream.view().size()));
}
BENCHMARK_TEMPLATE(SaveCheckpoint, TBits)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(SaveCheckpoint, TPrograms)->Unit(benchmark::kMillisecond);

template <class TComponent>
void LoadCheckpoint(benchmark::State& State) {
  TComponent Component;
  std::ostringstream Saved;
  Component.SaveCheckpoint(Saved);
  for (auto _ : State) {
    std::istringstream Stream(Saved.str());
    Component.LoadCheckpoint(Stream);
  }
  State.SetBytesProcessed(State.iterations() * static_cast<std::int64_t>(Saved.view().size()));
}
BENCHMARK_TEMPLATE(LoadCheckpoint, TBits)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(LoadCheckpoint, TPrograms)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace qx::benchmarks
