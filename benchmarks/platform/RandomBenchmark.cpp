// The random source beside std::mt19937_64.

#include <qx/platform/Random.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

namespace {

void RealDraw(benchmark::State& State) {
  for (auto _ : State) {
    benchmark::DoNotOptimize(qx::Random());
  }
}
BENCHMARK(RealDraw);

void RealDrawOfMersenneTwister(benchmark::State& State) {
  std::mt19937_64 Generator(1);
  for (auto _ : State) {
    benchmark::DoNotOptimize(static_cast<double>(Generator() >> 11) * 0x1p-53);
  }
}
BENCHMARK(RealDrawOfMersenneTwister);

void IntegerDraw(benchmark::State& State) {
  for (auto _ : State) {
    benchmark::DoNotOptimize(qx::Random(1000));
  }
}
BENCHMARK(IntegerDraw);

void IntegerDrawOfMersenneTwister(benchmark::State& State) {
  std::mt19937_64 Generator(1);
  std::uniform_int_distribution<int> Distribution(0, 999);
  for (auto _ : State) {
    benchmark::DoNotOptimize(Distribution(Generator));
  }
}
BENCHMARK(IntegerDrawOfMersenneTwister);

void BulkDecisions(benchmark::State& State) {
  const auto Count = static_cast<std::size_t>(State.range(0));
  std::vector<std::uint64_t> Words((Count + 63) / 64);
  for (auto _ : State) {
    qx::RandomBelow(0.001, Words, Count);
    benchmark::DoNotOptimize(Words.data());
  }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}
BENCHMARK(BulkDecisions)->Arg(64)->Arg(1000)->Arg(10000);

void BulkDecisionsOfMersenneTwister(benchmark::State& State) {
  const auto Count = static_cast<std::size_t>(State.range(0));
  std::vector<std::uint64_t> Words((Count + 63) / 64);
  std::mt19937_64 Generator(1);
  for (auto _ : State) {
    for (std::size_t I = 0; I < Count; ++I) {
      const bool Below = static_cast<double>(Generator() >> 11) * 0x1p-53 < 0.001;
      Words[I / 64] = Words[I / 64] << 1 | static_cast<std::uint64_t>(Below);
    }
    benchmark::DoNotOptimize(Words.data());
  }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}
BENCHMARK(BulkDecisionsOfMersenneTwister)->Arg(1000);

} // namespace
