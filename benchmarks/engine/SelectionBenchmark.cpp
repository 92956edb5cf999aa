// One selection by each built-in method, and the preparation that a generation makes for it.

#include <qx/engine/QXGeneticBase.h>
#include <qx/foundation/QXGAConsts.h>
#include <qx/platform/Random.h>

#include <benchmark/benchmark.h>

#include <string>

namespace {

void Fill(qx::TQXCustomGeneticComponent& Component, benchmark::State& State) {
  const auto Method = static_cast<qx::TGASelectionMethod>(State.range(0));
  State.SetLabel(std::string(qx::EnumName(Method)));
  qx::SeedRandom(1);
  Component.SetSelectionMethod(Method);
  Component.SetInitialPopulation(static_cast<int>(State.range(1)));
  Component.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = qx::Random(); };
  Component.Initialize();
}

void Methods(benchmark::internal::Benchmark* Benchmark) {
  Benchmark->ArgNames({"method", "individuals"});
  for (int Method = qx::smRoulette; Method < qx::smCustom; ++Method) {
    Benchmark->Args({Method, 100})->Args({Method, 10000});
  }
}

void Selection(benchmark::State& State) {
  qx::TQXCustomGeneticComponent Component;
  Fill(Component, State);
  for (auto _ : State) {
    benchmark::DoNotOptimize(&Component.SelectParent(Component.Population()));
  }
}
BENCHMARK(Selection)->Apply(Methods);

void StatisticsAndPreparation(benchmark::State& State) {
  qx::TQXCustomGeneticComponent Component;
  Fill(Component, State);
  for (auto _ : State) {
    Component.EvaluateFitness();
  }
  State.SetItemsProcessed(State.iterations() * State.range(1));
}
BENCHMARK(StatisticsAndPreparation)->Apply(Methods);

} // namespace
