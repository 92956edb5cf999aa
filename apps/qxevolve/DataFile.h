#pragma once

#include <qx/symbolic_regression/DataSet.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
} // namespace CLI

namespace qxevolve {

/// What a table holds: numbers, and perhaps one column of texts, a text for each row.
struct TTable {
  qx::TQXDataSet Numbers;
  std::vector<std::string> Texts;
  std::string Skipped; // which rows are not there, and why; "" when all are
};

/// A table on disk, and how it is written.
struct TDataFile {
  std::string FileName; // "-" for standard input
  std::string Separator;
  std::string DecimalPoint; // "" for a point
  bool NoHeader = false;
  bool Thousands = false;               // marks of them, and percentages
  std::string MissingValues = "refuse"; // or "skip" their rows, or "keep" them
  std::vector<std::string> Ignored;

  /// What the table is called in front of people.
  std::string Name() const { return FileName == "-" ? "standard input" : FileName; }

  void AddOptions(CLI::App& App);
  void AddMissingOption(CLI::App& App);
  void AddHeaderOption(CLI::App& App);
  /// What was not asked for is as in another table.
  void InheritFormat(const TDataFile& Other);
  /// The table without the ignored columns, or only the wanted ones; read once, since a pipe can be read but
  /// once. With it the texts of the first of those columns that is there. Raises EUsageError, with the option
  /// that helps, which leaves no needed column out, for what is no such table, and std::system_error when it
  /// cannot be read.
  TTable Read(const std::vector<std::string>& Needed,
              const std::optional<std::vector<std::string>>& Wanted = std::nullopt,
              const std::vector<std::string>& Texts = {}) const;

private:
  qx::TCSVFormat Format() const;
  std::string Advice(const qx::EDataError& Error, const std::vector<std::string>& Needed) const;
  std::string SeparatorAdvice(const qx::EDataError& Error) const;
  std::string TextAdvice(const qx::EDataError& Error, const std::vector<std::string>& Needed) const;
  std::string NumbersAdvice(char UsedSeparator, std::vector<qx::TFaultyColumn>& Columns) const;
  static void SkipRows(TTable& Table);
  std::string ReadText() const;
  void RequireReadableText(std::string_view Text) const;
  qx::TQXDataSet RequireReadableNames(qx::TQXDataSet Data) const;
};

/// A number that tells tables apart: of the columns' names and all values.
std::uint64_t Fingerprint(const qx::TQXDataSet& Data);

} // namespace qxevolve
