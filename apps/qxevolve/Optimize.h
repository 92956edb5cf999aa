#pragma once

#include "DataFile.h"

#include <cstdint>
#include <optional>
#include <string>

namespace CLI {
class App;
} // namespace CLI

namespace qxevolve {

/// What `qxevolve optimize` is asked for.
struct TOptimizeOptions {
  TDataFile Data;
  std::optional<double> Capacity; // without it, that of the table's column
  std::string Names;              // the column with those of the items; without it, "name" or "item"
  int Population = 200;
  int Generations = 1000;
  double Seconds = 10;
  std::optional<std::uint64_t> Seed;
  std::string Output = "-";
  bool Quiet = false;

  void AddTo(CLI::App& App);
};

/// Packs a knapsack by the genetic algorithm; returns the exit code.
int Optimize(const TOptimizeOptions& Options);

} // namespace qxevolve
