#include <qx/platform/Random.h>
#include <qx/platform/RandomKernels.h>

#include <algorithm>
#include <istream>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>

namespace qx {

namespace detail {

constinit TRandomBlock RandomBlock;

namespace {

constexpr std::size_t BlockSize = 256;
// A vector kernel may read up to seven draws past the last one that counts.
constexpr std::size_t BlockPadding = 8;

// Two words from each output of splitmix64 (Steele, Lea and Flood 2014), the low half first.
constexpr TRandomLanes SeededLanes(std::uint64_t Seed) {
  TRandomLanes Lanes{};
  std::uint64_t Mixed = 0;
  for (auto& Words : Lanes.Words) {
    for (std::size_t L = 0; L < LaneCount; ++L) {
      if (L % 2 == 0) {
        Seed += 0x9e3779b97f4a7c15;
        Mixed = (Seed ^ Seed >> 30) * 0xbf58476d1ce4e5b9;
        Mixed = (Mixed ^ Mixed >> 27) * 0x94d049bb133111eb;
        Mixed ^= Mixed >> 31;
      }
      Words[L] = static_cast<std::uint32_t>(Mixed);
      Mixed >>= 32;
    }
  }
  return Lanes;
}

// Takes back one step of all lanes.
void StepBack(TRandomLanes& Lanes) {
  auto& Words = Lanes.Words;
  for (std::size_t L = 0; L < LaneCount; ++L) {
    const std::uint32_t Mixed3 = Words[3][L] >> 11 | Words[3][L] << 21;
    const std::uint32_t Word0 = Words[0][L] ^ Mixed3;
    // What is left of word 1 is x ^ x << 9.
    const std::uint32_t Folded = Words[1][L] ^ Words[2][L];
    const std::uint32_t Word1 = Folded ^ Folded << 9 ^ Folded << 18 ^ Folded << 27;
    Words[2][L] = Words[1][L] ^ Word1 ^ Word0;
    Words[3][L] = Mixed3 ^ Word1;
    Words[1][L] = Word1;
    Words[0][L] = Word0;
  }
}

// Appends `Count` bits to those that stand below bit `Offset`.
void AppendBits(std::uint64_t* Words, std::size_t Offset, std::uint64_t Bits, std::size_t Count) {
  const std::size_t Shift = Offset % 64;
  std::uint64_t* const Word = Words + Offset / 64;
  if (Shift == 0) {
    *Word = Bits;
    return;
  }
  *Word |= Bits << Shift;
  if (Shift + Count > 64) {
    Word[1] = Bits >> (64 - Shift);
  }
}

// Turns over the first `Count` bits; those behind them are 0 and stay so.
void Complement(std::uint64_t* Words, std::size_t Count) {
  for (std::size_t I = 0; I < Count; I += 64) {
    Words[I / 64] ^= LowBits(Count - I);
  }
}

inline void RequireRoom(std::span<const std::uint64_t> Words, std::size_t Count) {
  if (Count > 64 * Words.size()) [[unlikely]] {
    throw std::invalid_argument(std::to_string(Count) + " bits do not fit " + std::to_string(Words.size()) +
                                " words");
  }
}

/// The process-wide generator, and the source that may stand in for it. Draws that have been made and not yet
/// taken stand at the end of `FDraws`.
class TGenerator {
public:
  constexpr TGenerator() = default;

  void Restart(const TRandomLanes& Lanes, std::size_t NextLane) {
    FLanes = Lanes;
    SetWaiting(0);
    if (NextLane > 0) {
      Refill();
      RandomBlock.Next += NextLane;
    }
    if (FSource != nullptr) {
      FResting = std::exchange(RandomBlock, {});
    }
  }

  TQXRandomState State() const {
    const TRandomBlock& Block = FSource == nullptr ? RandomBlock : FResting;
    const auto Waiting = static_cast<std::size_t>(Block.End - Block.Next);
    TRandomLanes Lanes = FLanes;
    for (std::size_t Untaken = 0; Untaken < Waiting; Untaken += LaneCount) {
      StepBack(Lanes);
    }
    TQXRandomState State;
    for (std::size_t W = 0; W < TQXRandomState::WordsPerLane; ++W) {
      std::copy_n(Lanes.Words[W], LaneCount, State.Words[W].begin());
    }
    State.NextLane = static_cast<std::uint32_t>((LaneCount - Waiting % LaneCount) % LaneCount);
    return State;
  }

  TQXRandomSource* Replace(TQXRandomSource* Source) {
    TQXRandomSource* const Former = FSource;
    if (Former == nullptr && Source != nullptr) {
      FResting = std::exchange(RandomBlock, {});
    } else if (Former != nullptr && Source == nullptr) {
      RandomBlock = FResting;
    }
    FSource = Source;
    return Former;
  }

  TQXRandomSource* Source() const { return FSource; }

  // Short blocks while draws are taken in bulk, which is faster straight from the lanes; longer and longer
  // ones while they are taken one by one.
  void Refill() {
    const std::size_t Count = FRefillSteps * LaneCount;
    Kernels().Fill(FLanes, FDraws + BlockSize - Count, FRefillSteps);
    SetWaiting(Count);
    FRefillSteps = std::min(2 * FRefillSteps, BlockSize / LaneCount);
  }

  // `Count` draws, at least one, against a threshold: first what is waiting, then straight from the lanes.
  void Below(std::uint64_t Threshold, std::uint64_t* Words, std::size_t Count) {
    auto Waiting = static_cast<std::size_t>(RandomBlock.End - RandomBlock.Next);
    while (Waiting >= 64 || Waiting >= Count) {
      const std::size_t Taken = std::min(Count, std::size_t{64});
      *Words++ = Kernels().CompareBelow(RandomBlock.Next, Taken, Threshold);
      RandomBlock.Next += Taken;
      Waiting -= Taken;
      Count -= Taken;
      if (Count == 0) {
        return;
      }
    }
    const std::size_t Fresh = Count - Waiting;
    Kernels().GenerateBelow(FLanes, Threshold, RandomBlock.Next, Waiting, Words, Fresh,
                            FDraws + BlockSize - LaneCount);
    SetWaiting((LaneCount - Fresh % LaneCount) % LaneCount);
    FRefillSteps = 1;
  }

  // A draw k / 2^53, where k is the upper 53 bits of a word, is below p exactly when k is below
  // ceil(p * 2^53), that is, when the word is below 2^11 times that. For p of 1 and more that is no word: 0
  // stands for it.
  std::uint64_t Threshold(double Probability) {
    if (Probability != FProbability) [[unlikely]] {
      const double Scaled = Probability > 0 && Probability < 1 ? Probability * 0x1p53 : 0;
      const auto Floor = static_cast<std::uint64_t>(Scaled);
      FThreshold = (static_cast<double>(Floor) < Scaled ? Floor + 1 : Floor) << 11;
      FProbability = Probability;
    }
    return FThreshold;
  }

private:
  void SetWaiting(std::size_t Count) { RandomBlock = {FDraws + BlockSize - Count, FDraws + BlockSize}; }

  const TRandomKernels& Kernels() {
    if (FKernels == nullptr) [[unlikely]] {
      FKernels = *RandomKernels().First;
    }
    return *FKernels;
  }

  const TRandomKernels* FKernels = nullptr;
  TRandomLanes FLanes = SeededLanes(0); // behind all draws that have been made
  alignas(64) std::uint64_t FDraws[BlockSize + BlockPadding] = {};
  std::size_t FRefillSteps = 1;
  // The last probability asked for, and its threshold.
  double FProbability = 0;
  std::uint64_t FThreshold = 0;
  TQXRandomSource* FSource = nullptr;
  TRandomBlock FResting; // the generator's block while a source stands in for it
};

constinit TGenerator Generator;

} // namespace

TQXRandomSource* RefillRandomBlock() {
  if (Generator.Source() == nullptr) {
    Generator.Refill();
  }
  return Generator.Source();
}

} // namespace detail

std::ostream& operator<<(std::ostream& Stream, const TQXRandomState& State) {
  for (const auto& Words : State.Words) {
    for (const std::uint32_t Word : Words) {
      Stream << std::to_string(Word) << ' ';
    }
  }
  return Stream << std::to_string(State.NextLane);
}

std::istream& operator>>(std::istream& Stream, TQXRandomState& State) {
  TQXRandomState Read{};
  for (auto& Words : Read.Words) {
    for (std::uint32_t& Word : Words) {
      Stream >> Word;
    }
  }
  Stream >> Read.NextLane;
  if (Stream) {
    State = Read;
  }
  return Stream;
}

void SeedRandom(std::uint64_t Seed) { detail::Generator.Restart(detail::SeededLanes(Seed), 0); }

TQXRandomState RandomState() { return detail::Generator.State(); }

void SetRandomState(const TQXRandomState& State) {
  if (State.NextLane >= TQXRandomState::Lanes) {
    throw std::invalid_argument("Random state: lane " + std::to_string(State.NextLane) + " does not exist");
  }
  detail::TRandomLanes Lanes;
  for (std::size_t L = 0; L < TQXRandomState::Lanes; ++L) {
    std::uint32_t Any = 0;
    for (std::size_t W = 0; W < TQXRandomState::WordsPerLane; ++W) {
      Lanes.Words[W][L] = State.Words[W][L];
      Any |= State.Words[W][L];
    }
    if (Any == 0) {
      throw std::invalid_argument("Random state: lane " + std::to_string(L) + " is all zero");
    }
  }
  detail::Generator.Restart(Lanes, State.NextLane);
}

TQXRandomSourceScope::TQXRandomSourceScope(TQXRandomSource& Source)
    : FFormer(detail::Generator.Replace(&Source)) {}

TQXRandomSourceScope::~TQXRandomSourceScope() { detail::Generator.Replace(FFormer); }

void RandomBelow(double Probability, std::span<std::uint64_t> Words, std::size_t Count) {
  detail::RequireRoom(Words, Count);
  if (Count == 0) {
    return;
  }
  if (TQXRandomSource* const Source = detail::Generator.Source()) [[unlikely]] {
    for (std::size_t I = 0; I < Count; ++I) {
      detail::AppendBits(Words.data(), I, Source->Real() < Probability ? 1 : 0, 1);
    }
    return;
  }
  detail::Generator.Below(detail::Generator.Threshold(Probability), Words.data(), Count);
  if (Probability >= 1) [[unlikely]] {
    detail::Complement(Words.data(), Count);
  }
}

void RandomBits(std::span<std::uint64_t> Words, std::size_t Count) {
  detail::RequireRoom(Words, Count);
  if (Count == 0) {
    return;
  }
  if (TQXRandomSource* const Source = detail::Generator.Source()) {
    for (std::size_t I = 0; I < Count; ++I) {
      detail::AppendBits(Words.data(), I, static_cast<std::uint64_t>(Source->Integer(2)) & 1, 1);
    }
    return;
  }
  detail::Generator.Below(1ULL << 63, Words.data(), Count); // the draws of 0
  detail::Complement(Words.data(), Count);
}

} // namespace qx
