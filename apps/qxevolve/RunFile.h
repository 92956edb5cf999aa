#pragma once

#include "DataFile.h"
#include <qx/symbolic_regression/SymbolicRegression.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace qxevolve {

/// What a run is about, beside the component that it is the run of.
struct TRun {
  TDataFile Data; // its file by an absolute name
  std::string Target;
  std::string Weights;
  double TestShare = 0;
  std::uint64_t Seed = 0;
  int Rows = 0;
  std::uint64_t Fingerprint = 0;    // of the table
  std::vector<std::string> Command; // that repeats it
  std::vector<qx::TRegressionRecord> History;
  int ChosenSize = 0; // of the formula to be used
};

/// The formula of that size; raises EUsageError when there is none.
const qx::TRegressionModel& ModelOfSize(const qx::TQXSymbolicRegression& Regression, int Size);

/// A run in a file: one that is stopped can go on, and its formulas can be used.
class TRunFile {
public:
  /// Raises what reading XML raises, and EUsageError for a file that holds no run.
  explicit TRunFile(const std::string& FileName);

  const TRun& Run() const { return FRun; }
  /// Raises EUsageError when the file is there and holds something else, which nobody wants to lose.
  static void RequireRunOrNothing(const std::string& FileName);
  /// Raises EUsageError when the file holds a run on another target, or one that cannot be read.
  static void RequireTarget(const std::string& FileName, const std::string& Target);
  /// Names of the standard instructions that its programs are made of. A component that is to be restored has
  /// them first.
  void AddFunctions(qx::TQXSymbolicRegression& Regression) const;
  /// Gives a component all that the run had come to. Its data are the caller's to set, before.
  void Restore(qx::TQXSymbolicRegression& Regression) const;

  /// Replaces the file, wholly or not at all.
  static void Write(const std::string& FileName, const TRun& Run, qx::TQXSymbolicRegression& Regression);

private:
  void Read();

  std::string FFileName;
  TRun FRun;
  std::vector<std::pair<std::string, std::string>> FFunctions; // standard names, and those in the run
  std::string FState;
};

} // namespace qxevolve
