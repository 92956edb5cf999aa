#pragma once

// Internal to the random source; not installed.

#include <qx/platform/Random.h>

#include <cstddef>
#include <cstdint>

namespace qx::detail {

inline constexpr std::size_t LaneCount = TQXRandomState::Lanes;

/// A word whose first `Count` bits are 1; all of them from 64 on.
constexpr std::uint64_t LowBits(std::size_t Count) { return Count >= 64 ? ~0ULL : (1ULL << Count) - 1; }

/// Sixteen xoshiro128 generators side by side (Blackman and Vigna 2021, "Scrambled linear pseudorandom number
/// generators", ACM TOMS 47); word w of lane l stands at [w][l]. A step advances all lanes and yields sixteen
/// draws in lane order. The high half of a draw is the output of the + scrambler, the low half that of the **
/// scrambler of the same state: nearly every comparison with a threshold is decided by the high half alone.
struct alignas(64) TRandomLanes {
  std::uint32_t Words[TQXRandomState::WordsPerLane][TQXRandomState::Lanes];
};

/// The generator's inner loops, built once for each instruction set. All of them give the same draws.
struct TRandomKernels {
  const char* Name;
  /// Writes the draws of `Steps` steps, sixteen each.
  void (*Fill)(TRandomLanes& Lanes, std::uint64_t* Draws, std::size_t Steps);
  /// Writes one bit a draw, 64 a word: 1 when the draw is below `Threshold`. The first `Waiting` draws, 0 to
  /// 63, stand at `Draws`; `Fresh` more, at least one, come from the lanes, and those of the last step, of
  /// which some may be left over, are written to `LastDraws`. The bits of the last word behind the last draw
  /// are 0. Up to seven draws behind the waiting ones are read.
  void (*GenerateBelow)(TRandomLanes& Lanes, std::uint64_t Threshold, const std::uint64_t* Draws,
                        std::size_t Waiting, std::uint64_t* Words, std::size_t Fresh,
                        std::uint64_t* LastDraws);
  /// Bit i of the result is set when `Draws[i]` is below `Threshold`, for the first `Count` draws, at
  /// most 64. Up to seven draws past `Count` are read.
  std::uint64_t (*CompareBelow)(const std::uint64_t* Draws, std::size_t Count, std::uint64_t Threshold);
};

/// The kernels that this machine can run, the fastest first; the last are plain C++.
struct TRandomKernelList {
  const TRandomKernels* const* First;
  std::size_t Count;
};
TRandomKernelList RandomKernels();

} // namespace qx::detail
