#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qx {

class TQXCustomGeneticComponent;

/// A span of time. Every duration of <chrono> that is counted in whole milliseconds is one: `5min`.
class TTimeSpan {
public:
  constexpr TTimeSpan() = default;
  template <class TDuration>
  requires(TDuration::period::num * 1000 % TDuration::period::den ==
           0) constexpr TTimeSpan(const TDuration& Duration)
      : FMilliseconds(Duration.count() * (TDuration::period::num * 1000 / TDuration::period::den)) {}
  constexpr std::int64_t Milliseconds() const { return FMilliseconds; }

private:
  std::int64_t FMilliseconds = 0;
};

/// When checkpoints are written, and how many are kept.
struct TCheckpointPolicy {
  /// After so many generations; 0: not by generations.
  int EveryGenerations = 10;
  /// When so much time has passed since the last one; 0: not by time.
  TTimeSpan Every{};
  /// So many of the newest are kept, at least one.
  int KeepLast = 2;
};

/// Writes checkpoints of a run while it goes on, and takes the run up again from the newest one.
///
///     qx::TCheckpoints checkpoints("packing.checkpoint", {.EveryGenerations = 50, .KeepLast = 3});
///     checkpoints.Resume(ga); // when there is one
///     ga.OnEvolve = [&](auto& sender) { checkpoints.Update(sender); };
///     ga.Evolve(1000 - ga.Generation());
///
/// The files are called by the given name with a number behind it ("packing.checkpoint.000017"), which grows
/// with each. A file is whole or not there at all, and older ones go only when a newer one is on the disk, so
/// that a process may end at any moment. One process at a time may write under a name.
class TCheckpoints {
public:
  /// @param FileName  beginning of the files' names, with their folder, which must be there.
  explicit TCheckpoints(std::string FileName, TCheckpointPolicy Policy = {});

  /// Writes a checkpoint when one is due: call it after each generation. The first call of a run writes one.
  /// Tells whether it did. Raises what `SaveCheckpoint` does.
  bool Update(TQXCustomGeneticComponent& Component);
  /// Writes one now.
  void Write(TQXCustomGeneticComponent& Component);
  /// Loads the newest checkpoint that reads, and returns its file's name, or nothing when there is none. When
  /// files are there but none of them reads, raises what the newest one raised; the component is as it was
  /// then.
  std::optional<std::string> Resume(TQXCustomGeneticComponent& Component);

private:
  std::string FFileName;
  TCheckpointPolicy FPolicy;
  // Of the last checkpoint that was written or loaded.
  std::optional<int> FGeneration;
  std::int64_t FTime = 0; // in milliseconds, of the steady clock
};

} // namespace qx
