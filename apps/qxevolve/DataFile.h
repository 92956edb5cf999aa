#pragma once

#include <qx/symbolic_regression/DataSet.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
} // namespace CLI

namespace qxevolve {

/// A table on disk, and how it is written.
struct TDataFile {
  std::string FileName; // "-" for standard input
  std::string Separator;
  std::string DecimalPoint; // "" for a point
  bool NoHeader = false;
  std::string MissingValues = "refuse"; // or "skip" their rows, or "keep" them
  std::vector<std::string> Ignored;

  /// What the table is called in front of people.
  std::string Name() const { return FileName == "-" ? "standard input" : FileName; }

  void AddOptions(CLI::App& App);
  void AddMissingOption(CLI::App& App);
  /// What was not asked for is as in another table.
  void InheritFormat(const TDataFile& Other);
  /// The table without the ignored columns, or only the wanted ones; read once, since a pipe can be read but
  /// once. Raises EUsageError, with the option that
  /// helps, for what is no such table, and std::system_error when it cannot be read.
  qx::TQXDataSet Read(const std::vector<std::string>& Wanted = {}) const;

private:
  static std::string Advice(const std::string& Message);
  std::string ReadText() const;
  void RequireReadableText(std::string_view Text) const;
  qx::TQXDataSet RequireReadableNames(qx::TQXDataSet Data) const;
};

/// A number that tells tables apart: of the columns' names and all values.
std::uint64_t Fingerprint(const qx::TQXDataSet& Data);

} // namespace qxevolve
