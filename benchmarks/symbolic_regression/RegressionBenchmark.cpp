// Generations of symbolic regression from end to end: a population of 1,000, tournaments of 7, crossover with
// a chance of 0.9, one thread unless it says otherwise; mutation as by default, no constants refined. Each
// iteration is a run of 50 generations, the initial one not counted. "evaluation" is the share of its time
// that the evaluation of all its programs takes when nothing else is done.

#include <qx/platform/Random.h>
#include <qx/symbolic_regression/BatchEvaluator.h>
#include <qx/symbolic_regression/SymbolicRegression.h>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace qx::benchmarks {
namespace {

constexpr int Generations = 50;

TQXDataSet Quartic() {
  std::vector<double> X;
  std::vector<double> Y;
  for (int I = 0; I < 20; ++I) {
    const double Value = -1 + I / 9.5;
    X.push_back(Value);
    Y.push_back(Value * (1 + Value * (1 + Value * (1 + Value))));
  }
  TQXDataSet Data;
  Data.AddColumn("x", X);
  Data.AddColumn("y", Y);
  return Data;
}

TQXDataSet Friedman(int Rows) {
  std::mt19937_64 Engine(1);
  std::uniform_real_distribution<double> Unit(0, 1);
  std::vector<std::vector<double>> Columns(5);
  std::vector<double> Y;
  for (int Row = 0; Row < Rows; ++Row) {
    for (auto& Column : Columns) {
      Column.push_back(Unit(Engine));
    }
    const auto X = [&](std::size_t I) { return Columns[I].back(); };
    Y.push_back(10 * std::sin(std::numbers::pi * X(0) * X(1)) + 20 * (X(2) - 0.5) * (X(2) - 0.5) + 10 * X(3) +
                5 * X(4));
  }
  TQXDataSet Data;
  for (std::size_t I = 0; I < Columns.size(); ++I) {
    Data.AddColumn("x" + std::to_string(I + 1), Columns[I]);
  }
  Data.AddColumn("y", Y);
  return Data;
}

double Now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void EvolveGenerations(benchmark::State& State, const TQXDataSet& Data, bool Single, int Threads) {
  double Sizes = 0;
  double Evaluation = 0;
  double Whole = 0;
  for (auto _ : State) {
    SeedRandom(1);
    TQXSymbolicRegression Regression;
    Regression.SetTournamentField(7);
    Regression.SetRefinementSteps(0);
    Regression.SetRestartPatience(0);
    Regression.SetUseFitnessCutoff(false);
    Regression.SetSinglePrecision(Single);
    Regression.SetThreads(Threads);
    Regression.SetData(Data, "y");
    Regression.Initialize();
    TQXBatchEvaluator<double> Double(Data, Regression.Instructions());
    TQXBatchEvaluator<float> Float(Data, Regression.Instructions());
    double Run = 0;
    for (int I = 0; I < Generations; ++I) {
      const double Start = Now();
      Regression.Evolve();
      const double Seconds = Now() - Start;
      Run += Seconds;
      const double Again = Now();
      for (auto& Individual : Regression.Population()) {
        if (Single) {
          benchmark::DoNotOptimize(Float.Evaluate(*Individual.DNA()).data());
        } else {
          benchmark::DoNotOptimize(Double.Evaluate(*Individual.DNA()).data());
        }
      }
      Evaluation += Now() - Again;
      Sizes += static_cast<double>(Regression.AvgProgramSize()) / Generations;
    }
    State.SetIterationTime(Run);
    Whole += Run;
  }
  const auto Runs = static_cast<double>(State.iterations());
  State.counters["ms_per_generation"] = 1000 * Whole / Runs / Generations;
  State.counters["evaluation"] = Evaluation / Whole;
  State.counters["mean_size"] = Sizes / Runs;
}

void QuarticOf20Rows(benchmark::State& State) { EvolveGenerations(State, Quartic(), false, 1); }
void FriedmanOf1000Rows(benchmark::State& State) { EvolveGenerations(State, Friedman(1000), false, 1); }
void FriedmanOf1000RowsInSinglePrecision(benchmark::State& State) {
  EvolveGenerations(State, Friedman(1000), true, 1);
}
void FriedmanOf10000Rows(benchmark::State& State) {
  EvolveGenerations(State, Friedman(10'000), false, static_cast<int>(State.range(0)));
}
BENCHMARK(QuarticOf20Rows)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(FriedmanOf1000Rows)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(FriedmanOf1000RowsInSinglePrecision)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(FriedmanOf10000Rows)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->ArgName("threads")
    ->Arg(1)
    ->Arg(2);

} // namespace
} // namespace qx::benchmarks
