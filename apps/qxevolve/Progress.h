#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace qxevolve {

/// Where a run stands.
struct TProgressState {
  std::int64_t Generation;
  std::string Best;   // what it has, as in "error 0.01  size 17"
  double Share;       // of the run that is over, 0 to 1
  double Seconds;     // since it began
  double SecondsLeft; // at most
};

/// Seconds that a run has left when it ends with the first of its limits.
double SecondsLeft(double Seconds, double MostSeconds, double Generation, double MostGenerations);

/// Tells how a run goes, a call for each generation.
class TProgress {
public:
  virtual ~TProgress() = default;
  virtual void Update(const TProgressState& /*State*/) {}
  /// Before anything else is written.
  virtual void Finish() {}
};

/// A bar that stays on its line where standard error is a terminal, else a line now and then.
std::unique_ptr<TProgress> NewProgress();

} // namespace qxevolve
