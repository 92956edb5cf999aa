// Adding, finding and removing keys of the dictionary, beside std::unordered_map.

#include <qx/collections/QXGenerics.Collections.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

template <class K>
std::vector<K> ShuffledKeys(int Count) {
  std::vector<K> Keys;
  for (int I = 0; I < Count; ++I) {
    if constexpr (std::is_same_v<K, int>) {
      Keys.push_back(7 * I);
    } else {
      Keys.push_back("variable" + std::to_string(I));
    }
  }
  std::shuffle(Keys.begin(), Keys.end(), std::mt19937(1));
  return Keys;
}

template <class K>
struct TOurs {
  void Add(const K& Key, int Value) { Map.Add(Key, Value); }
  bool Find(const K& Key) const { return Map.ContainsKey(Key); }
  void Remove(const K& Key) { Map.Remove(Key); }
  qx::generics::TQXDictionary<K, int> Map;
};

template <class K>
struct TStandard {
  void Add(const K& Key, int Value) { Map.emplace(Key, Value); }
  bool Find(const K& Key) const { return Map.contains(Key); }
  void Remove(const K& Key) { Map.erase(Key); }
  std::unordered_map<K, int> Map;
};

template <template <class> class TMap, class K>
void Add(benchmark::State& State) {
  const auto Keys = ShuffledKeys<K>(static_cast<int>(State.range(0)));
  for (auto _ : State) {
    TMap<K> Map;
    for (const K& Key : Keys) {
      Map.Add(Key, 1);
    }
    benchmark::DoNotOptimize(Map);
  }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

template <template <class> class TMap, class K>
void Find(benchmark::State& State) {
  const auto Keys = ShuffledKeys<K>(static_cast<int>(State.range(0)));
  TMap<K> Map;
  for (const K& Key : Keys) {
    Map.Add(Key, 1);
  }
  for (auto _ : State) {
    for (const K& Key : Keys) {
      benchmark::DoNotOptimize(Map.Find(Key));
    }
  }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

template <template <class> class TMap, class K>
void AddAndRemove(benchmark::State& State) {
  const auto Keys = ShuffledKeys<K>(static_cast<int>(State.range(0)));
  TMap<K> Map;
  for (auto _ : State) {
    for (const K& Key : Keys) {
      Map.Add(Key, 1);
    }
    for (const K& Key : Keys) {
      Map.Remove(Key);
    }
  }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

#define QX_DICTIONARY_BENCHMARK(Operation)                                                                   \
  BENCHMARK_TEMPLATE2(Operation, TOurs, int)->Arg(10000);                                                    \
  BENCHMARK_TEMPLATE2(Operation, TStandard, int)->Arg(10000);                                                \
  BENCHMARK_TEMPLATE2(Operation, TOurs, std::string)->Arg(10000);                                            \
  BENCHMARK_TEMPLATE2(Operation, TStandard, std::string)->Arg(10000)

QX_DICTIONARY_BENCHMARK(Add);
QX_DICTIONARY_BENCHMARK(Find);
QX_DICTIONARY_BENCHMARK(AddAndRemove);

} // namespace
