#pragma once

#include <qx/symbolic_regression/DataSet.h>

#include <cstdint>
#include <string>
#include <vector>

namespace CLI {
class App;
} // namespace CLI

namespace qxevolve {

/// A table on disk, and how it is written.
struct TDataFile {
  std::string FileName;
  std::string Separator;
  std::string DecimalPoint = ".";
  bool NoHeader = false;
  std::string MissingValues = "refuse";
  std::vector<std::string> Ignored;

  void AddOptions(CLI::App& App);
  /// The table without the ignored columns. Raises EUsageError for one that is not there, and what
  /// `TQXDataSet::FromCSV` does, with the option that helps.
  qx::TQXDataSet Read() const;
};

/// A number that tells tables apart: of the columns' names and all values.
std::uint64_t Fingerprint(const qx::TQXDataSet& Data);

} // namespace qxevolve
