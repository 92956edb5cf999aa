#pragma once

// Internal to the random source; not installed.

#include <qx/platform/Random.h>

#include <cstddef>
#include <cstdint>

namespace qx::detail {

/// Eight xoshiro256+ generators side by side (Blackman and Vigna 2021, "Scrambled linear pseudorandom number
/// generators", ACM TOMS 47); word w of lane l stands at [w][l]. A step advances all lanes and yields eight
/// draws in lane order.
struct alignas(64) TRandomLanes {
  std::uint64_t Words[TQXRandomState::WordsPerLane][TQXRandomState::Lanes];
};

/// The generator's inner loops, built once for each instruction set. All of them give the same draws.
struct TRandomKernels {
  const char* Name;
  /// Writes the draws of `Steps` steps, eight each.
  void (*Fill)(TRandomLanes& Lanes, std::uint64_t* Draws, std::size_t Steps);
  /// Takes 64 draws a word; bit i of a word is set when draw i is below `Threshold`.
  void (*GenerateBelow)(TRandomLanes& Lanes, std::uint64_t Threshold, std::uint64_t* Words, std::size_t Count);
  /// Bit i of the result is set when `Draws[i]` is below `Threshold`, for the first `Count` draws, at most 64.
  /// Up to seven draws past `Count` are read.
  std::uint64_t (*CompareBelow)(const std::uint64_t* Draws, std::size_t Count, std::uint64_t Threshold);
};

/// The kernels that this machine can run, the fastest first; the last are plain C++.
struct TRandomKernelList {
  const TRandomKernels* const* First;
  std::size_t Count;
};
TRandomKernelList RandomKernels();

} // namespace qx::detail
