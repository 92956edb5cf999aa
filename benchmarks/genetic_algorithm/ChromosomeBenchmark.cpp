// The operators of a bit chromosome.

#include <qx/genetic_algorithm/QXGeneticAlgorithm.h>

#include <benchmark/benchmark.h>

namespace {

template <class TOperator>
void Measure(benchmark::State& State, TOperator Operator) {
  qx::SeedRandom(1);
  qx::TQXGABits First;
  qx::TQXGABits Second;
  qx::TQXGABits Child;
  for (qx::TQXGABits* Bits : {&First, &Second, &Child}) {
    Bits->SetSize(static_cast<int>(State.range(0)));
    Bits->Randomize();
  }
  for (auto _ : State) {
    Operator(Child, First, Second);
    benchmark::DoNotOptimize(Child.Words().data());
  }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

void Crossover(benchmark::State& State) {
  Measure(State, [](auto& Child, auto& First, auto& Second) { Child.CrossOver(First, Second); });
}
void Mutation(benchmark::State& State) {
  Measure(State, [](auto& Child, auto&, auto&) { Child.Mutate(0.001); });
}
void Inversion(benchmark::State& State) {
  Measure(State, [](auto& Child, auto&, auto&) { Child.Invert(-1, -1); });
}
void Randomization(benchmark::State& State) {
  Measure(State, [](auto& Child, auto&, auto&) { Child.Randomize(); });
}
void Copy(benchmark::State& State) {
  Measure(State, [](auto& Child, auto& First, auto&) { Child.Assign(First); });
}
void Count(benchmark::State& State) {
  Measure(State, [](auto& Child, auto&, auto&) { benchmark::DoNotOptimize(Child.CountOnes()); });
}

BENCHMARK(Crossover)->Arg(64)->Arg(1000)->Arg(10000);
BENCHMARK(Mutation)->Arg(64)->Arg(1000)->Arg(10000);
BENCHMARK(Inversion)->Arg(64)->Arg(1000)->Arg(10000);
BENCHMARK(Randomization)->Arg(64)->Arg(1000)->Arg(10000);
BENCHMARK(Copy)->Arg(64)->Arg(1000)->Arg(10000);
BENCHMARK(Count)->Arg(64)->Arg(1000)->Arg(10000);

} // namespace
