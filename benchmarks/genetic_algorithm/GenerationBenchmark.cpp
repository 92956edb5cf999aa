// One generation of OneMax: the whole component with its events bound, beside a bare loop over packed words.

#include "BareLoop.h"
#include <qx/genetic_algorithm/QXGeneticAlgorithm.h>

#include <benchmark/benchmark.h>

namespace {

void Shapes(benchmark::internal::Benchmark* Benchmark) {
  Benchmark->ArgNames({"individuals", "bits"})->Args({1000, 1000})->Args({100, 10000})->Args({10000, 64});
}

void ReportPerBit(benchmark::State& State) {
  const double BitsPerGeneration = static_cast<double>(State.range(0) * State.range(1));
  State.counters["per_bit"] = benchmark::Counter(
      BitsPerGeneration, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void Component(benchmark::State& State) {
  qx::SeedRandom(1);
  long Events = 0;
  qx::TQXGeneticAlgorithm ga;
  ga.SetInitialPopulation(static_cast<int>(State.range(0)));
  ga.SetInitialDuplicatesRetries(0);
  ga.SetGeneSize(static_cast<int>(State.range(1)));
  ga.SetCrossoverMethod(qx::cmBitBoundary);
  ga.SetMutationProbability(0.001);
  ga.SetOperations({qx::goCrossover, qx::goMutate});
  ga.SetSelectionMethod(qx::smTournament);
  ga.SetFitnessMethod(qx::fmMaximize);
  ga.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) { Fitness = Item.Bits().CountOnes(); };
  ga.OnCrossover = [&](auto&, auto&, auto&, auto&, int&, bool&) { ++Events; };
  ga.OnMutation = [&](auto&, auto&, bool&) { ++Events; };
  ga.OnReproduction = [&](auto&, auto&, bool&) { ++Events; };
  ga.OnInitializeChild = [&](auto&, auto&, auto&, auto&) { ++Events; };
  ga.OnEvolve = [&](auto&) { ++Events; };
  ga.Initialize();
  for (auto _ : State) {
    ga.Evolve();
  }
  State.counters["best"] = ga.MaxFitness();
  State.counters["events"] =
      benchmark::Counter(static_cast<double>(Events), benchmark::Counter::kAvgIterations);
  ReportPerBit(State);
}

void BareLoop(benchmark::State& State) {
  qx::benchmarks::TBareLoop Loop(static_cast<std::size_t>(State.range(0)),
                                 static_cast<std::size_t>(State.range(1)));
  for (auto _ : State) {
    Loop.Generation();
  }
  State.counters["best"] = Loop.BestFitness();
  ReportPerBit(State);
}

BENCHMARK(BareLoop)->Apply(Shapes);
BENCHMARK(Component)->Apply(Shapes);

} // namespace
