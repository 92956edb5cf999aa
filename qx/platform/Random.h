#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <limits>
#include <span>
#include <type_traits>
#include <utility>

namespace qx {

/// Where draws come from when the built-in generator is not wanted: a scripted sequence in a test, or a
/// generator of the host's own. Install it with `TQXRandomSourceScope`.
class TQXRandomSource {
public:
  virtual ~TQXRandomSource() = default;
  /// One integer draw, uniform in 0 to n-1; 0 when n is below 1.
  virtual std::int64_t Integer(std::int64_t n) = 0;
  /// One real draw, uniform in [0, 1).
  virtual double Real() = 0;
};

/// The state of the process-wide generator: everything that its future draws depend on.
struct TQXRandomState {
  static constexpr std::size_t Lanes = 16;
  static constexpr std::size_t WordsPerLane = 4;

  std::array<std::array<std::uint32_t, Lanes>, WordsPerLane> Words;
  /// The lane that the next draw comes from.
  std::uint32_t NextLane;

  bool operator==(const TQXRandomState&) const = default;
  /// One line of decimal numbers, apart from its line feed; reads back with `>>`.
  friend std::ostream& operator<<(std::ostream& Stream, const TQXRandomState& State);
  /// Sets the stream's fail bit, and leaves `State` alone, when the text is no state.
  friend std::istream& operator>>(std::istream& Stream, TQXRandomState& State);
};

/// Starts the process-wide generator anew. The same seed gives the same draws on every platform and
/// instruction set. The library never calls this: until a host does, a process starts as if seeded with 0.
void SeedRandom(std::uint64_t Seed);

/// Saves the state of the process-wide generator.
TQXRandomState RandomState();
/// Goes on from a saved state. Raises std::invalid_argument for a state that no generator can be in.
void SetRandomState(const TQXRandomState& State);

/// While it lives, all draws of the process come from `Source`; the generator rests and then goes on where it
/// stood. Scopes nest.
class TQXRandomSourceScope {
public:
  explicit TQXRandomSourceScope(TQXRandomSource& Source);
  TQXRandomSourceScope(const TQXRandomSourceScope&) = delete;
  TQXRandomSourceScope& operator=(const TQXRandomSourceScope&) = delete;
  ~TQXRandomSourceScope();

private:
  TQXRandomSource* FFormer;
};

namespace detail {

// The generator's draws wait here in blocks. While a source replaces the generator the block is empty, so
// that the straight way of a draw has one test for both.
struct TRandomBlock {
  const std::uint64_t* Next = nullptr;
  const std::uint64_t* End = nullptr;
};
extern constinit TRandomBlock RandomBlock;

// Fills the block and returns nullptr, or returns the source that stands in for the generator.
TQXRandomSource* RefillRandomBlock();

} // namespace detail

/// A real draw: uniform in [0, 1), a multiple of 2^-53.
inline double Random() {
  detail::TRandomBlock& Block = detail::RandomBlock;
  if (Block.Next == Block.End) [[unlikely]] {
    if (TQXRandomSource* const Source = detail::RefillRandomBlock()) {
      return Source->Real();
    }
  }
  return static_cast<double>(*Block.Next++ >> 11) * 0x1p-53;
}

/// An integer draw: uniform in 0 to n-1 (each value's chance is within n / 2^64 of 1/n). For n below 1 the
/// result is 0; a draw is taken all the same.
template <std::integral T>
requires(!std::same_as<T, bool>) T Random(T n) {
  detail::TRandomBlock& Block = detail::RandomBlock;
  if (Block.Next == Block.End) [[unlikely]] {
    if (TQXRandomSource* const Source = detail::RefillRandomBlock()) {
      constexpr auto Largest = std::numeric_limits<std::int64_t>::max();
      return static_cast<T>(
          Source->Integer(std::cmp_less(n, Largest) ? static_cast<std::int64_t>(n) : Largest));
    }
  }
  const std::uint64_t Draw = *Block.Next++;
  if (n <= 0) {
    return 0;
  }
  __extension__ using TWide = unsigned __int128;
  return static_cast<T>(static_cast<TWide>(Draw) * static_cast<std::uint64_t>(n) >> 64);
}

/// Takes `Count` real draws and sets bit i of `Words` (bit i modulo 64 of word i / 64) exactly when draw i is
/// below `Probability`. Bits from `Count` on, up to the end of the last word used, become 0.
/// Equal to `Count` calls of `Random()`, but fast. Raises std::invalid_argument, and draws nothing, when the
/// words do not hold so many bits.
void RandomBelow(double Probability, std::span<std::uint64_t> Words, std::size_t Count);

/// Takes `Count` draws of `Random(2)` and sets bit i of `Words` to draw i. Otherwise as `RandomBelow`.
void RandomBits(std::span<std::uint64_t> Words, std::size_t Count);

} // namespace qx
