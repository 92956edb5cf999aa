#pragma once

#include "DataFile.h"
#include <qx/symbolic_regression/SymbolicRegression.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace qxevolve {

/// How a run tells what it does.
enum class TProgressKind : std::uint8_t { Usual, Quiet, JSON };

/// What `qxevolve regress` is asked for.
class TRegressOptions {
public:
  void AddTo(CLI::App& App);

  TDataFile Data;
  std::string Target;
  std::string Weights;
  std::optional<double> TestShare; // without it, a quarter of a table that is large enough

  int Generations = std::numeric_limits<int>::max();
  double Seconds = 60;
  std::optional<std::uint64_t> Seed;
  std::vector<std::string> Functions; // of standard instructions; empty for those of the component
  bool NoConstants = false;

  std::string Save;
  bool Resume = false;
  bool Force = false; // replaces a run on another target
  double CheckpointSeconds = 30;
  std::string Report;
  TProgressKind Progress = TProgressKind::Usual;

  /// Gives the component the settings that were asked for; the others stay.
  void ApplySettings(qx::TQXSymbolicRegression& Regression) const;

private:
  using TRegression = qx::TQXSymbolicRegression;

  void AddRunOptions(CLI::App& App);
  void AddProgramOptions(CLI::App& App, const TRegression& Defaults);
  void AddOperatorOptions(CLI::App& App, const TRegression& Defaults);
  void AddErrorOptions(CLI::App& App, const TRegression& Defaults);
  void AddOutputOptions(CLI::App& App);
  template <class TValue, class TSetter>
  CLI::Option* AddSetting(CLI::App& App, const std::string& Name, const std::string& Description,
                          TValue Default, TSetter Setter);
  template <class TEnum, class TSetter>
  void AddChoice(CLI::App& App, const std::string& Name, const std::string& Description, TEnum Default,
                 TSetter Setter);

  std::vector<std::function<void(TRegression&)>> FSettings;
};

} // namespace qxevolve
