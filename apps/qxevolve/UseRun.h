#pragma once

#include "DataFile.h"

#include <optional>
#include <string>

namespace CLI {
class App;
} // namespace CLI

namespace qxevolve {

/// What is done with a run that is kept in a file.
struct TUseOptions {
  std::string RunFile;
  std::optional<int> Size; // of the model; without it, the one that the run has chosen
  TDataFile Data;
  std::string Output = "-";
  bool Keep = false;
  std::string Style = "infix";

  void AddPredictTo(CLI::App& App);
  void AddShowTo(CLI::App& App);
  void AddDescribeTo(CLI::App& App);
};

int Predict(const TUseOptions& Options);
int Show(const TUseOptions& Options);
int Describe(const TUseOptions& Options);

} // namespace qxevolve
