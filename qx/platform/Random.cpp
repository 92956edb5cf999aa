#include <qx/platform/Random.h>

#include <qx/platform/RandomKernels.h>

#include <algorithm>
#include <cmath>
#include <istream>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>

namespace qx {

namespace detail {

constinit TRandomBlock RandomBlock;

namespace {

constexpr std::size_t LaneCount = TQXRandomState::Lanes;
constexpr std::size_t BlockSize = 256;
// A vector kernel may read up to seven draws past the last one that counts.
constexpr std::size_t BlockPadding = 8;

TRandomLanes SeededLanes(std::uint64_t Seed) {
  TRandomLanes Lanes;
  for (auto& Words : Lanes.Words) {
    for (std::uint64_t& Word : Words) { // splitmix64 (Steele, Lea and Flood 2014)
      Seed += 0x9e3779b97f4a7c15;
      std::uint64_t Mixed = (Seed ^ Seed >> 30) * 0xbf58476d1ce4e5b9;
      Mixed = (Mixed ^ Mixed >> 27) * 0x94d049bb133111eb;
      Word = Mixed ^ Mixed >> 31;
    }
  }
  return Lanes;
}

// Sets `Count` bits of `Words`, which are 0, from bit `Offset` on.
void PutBits(std::span<std::uint64_t> Words, std::size_t Offset, std::uint64_t Bits, std::size_t Count) {
  const std::size_t Shift = Offset % 64;
  Words[Offset / 64] |= Bits << Shift;
  if (Shift + Count > 64) {
    Words[Offset / 64 + 1] |= Bits >> (64 - Shift);
  }
}

// Turns over the first `Count` bits; those behind them are 0 and stay so.
void Complement(std::span<std::uint64_t> Words, std::size_t Count) {
  for (std::size_t I = 0; I < Count; I += 64) {
    Words[I / 64] ^= Count - I >= 64 ? ~0ULL : (1ULL << (Count - I)) - 1;
  }
}

/// The process-wide generator, and the source that may stand in for it.
class TGenerator {
public:
  TGenerator() { Seed(0); }

  void Seed(std::uint64_t Value) { Restart(SeededLanes(Value), 0); }

  TQXRandomState State() {
    const std::uint64_t* Next = FSource == nullptr ? RandomBlock.Next : FResting.Next;
    const auto Taken = static_cast<std::size_t>(Next - FDraws);
    TRandomLanes Lanes = FBlockStart;
    std::uint64_t Passed[BlockSize];
    FKernels->Fill(Lanes, Passed, Taken / LaneCount);
    TQXRandomState State;
    for (std::size_t W = 0; W < TQXRandomState::WordsPerLane; ++W) {
      std::copy_n(Lanes.Words[W], LaneCount, State.Words[W].begin());
    }
    State.NextLane = static_cast<std::uint32_t>(Taken % LaneCount);
    return State;
  }

  void SetState(const TQXRandomState& State) {
    if (State.NextLane >= LaneCount) {
      throw std::invalid_argument("Random state: lane " + std::to_string(State.NextLane) + " does not exist");
    }
    TRandomLanes Lanes;
    for (std::size_t L = 0; L < LaneCount; ++L) {
      std::uint64_t Any = 0;
      for (std::size_t W = 0; W < TQXRandomState::WordsPerLane; ++W) {
        Lanes.Words[W][L] = State.Words[W][L];
        Any |= State.Words[W][L];
      }
      if (Any == 0) {
        throw std::invalid_argument("Random state: lane " + std::to_string(L) + " is all zero");
      }
    }
    Restart(Lanes, State.NextLane);
  }

  TQXRandomSource* Replace(TQXRandomSource* Source) {
    TQXRandomSource* const Former = FSource;
    if (Former == nullptr && Source != nullptr) {
      FResting = RandomBlock;
      RandomBlock = {};
    } else if (Former != nullptr && Source == nullptr) {
      RandomBlock = FResting;
    }
    FSource = Source;
    return Former;
  }

  TQXRandomSource* Source() const { return FSource; }

  void Refill() {
    FBlockStart = FLanes;
    FKernels->Fill(FLanes, FDraws, BlockSize / LaneCount);
    RandomBlock = {FDraws, FDraws + BlockSize};
  }

  // `Count` draws against a threshold: what the block holds first, whole words straight from the lanes, and
  // the rest from a new block.
  void Below(std::uint64_t Threshold, std::span<std::uint64_t> Words, std::size_t Count) {
    for (std::size_t Done = 0; Done < Count;) {
      const std::size_t Wanted = Count - Done;
      const auto Waiting = static_cast<std::size_t>(RandomBlock.End - RandomBlock.Next);
      if (Waiting > 0) {
        const std::size_t Taken = std::min({Waiting, Wanted, std::size_t{64}});
        PutBits(Words, Done, FKernels->CompareBelow(RandomBlock.Next, Taken, Threshold), Taken);
        RandomBlock.Next += Taken;
        Done += Taken;
      } else if (Wanted >= 64) {
        std::uint64_t Fresh[16];
        const std::size_t Taken = std::min(Wanted / 64, std::size(Fresh));
        FKernels->GenerateBelow(FLanes, Threshold, Fresh, Taken);
        MarkBlockEmpty();
        for (std::size_t W = 0; W < Taken; ++W, Done += 64) {
          PutBits(Words, Done, Fresh[W], 64);
        }
      } else {
        Refill();
      }
    }
  }

private:
  void Restart(const TRandomLanes& Lanes, std::size_t NextLane) {
    FLanes = Lanes;
    MarkBlockEmpty();
    if (NextLane > 0) {
      Refill();
      RandomBlock.Next += NextLane;
    }
    if (FSource != nullptr) {
      FResting = std::exchange(RandomBlock, {});
    }
  }

  // The lanes stand where a block that has been used up would have left them.
  void MarkBlockEmpty() {
    FBlockStart = FLanes;
    RandomBlock = {FDraws, FDraws};
  }

  const TRandomKernels* FKernels = *RandomKernels().First;
  TRandomLanes FLanes;      // after the block
  TRandomLanes FBlockStart; // before it
  std::uint64_t FDraws[BlockSize + BlockPadding] = {};
  TQXRandomSource* FSource = nullptr;
  TRandomBlock FResting; // the generator's block while a source stands in for it
};

TGenerator& Generator() {
  static TGenerator Instance;
  return Instance;
}

} // namespace

std::int64_t SlowRandomInteger(std::int64_t n) {
  TGenerator& Source = Generator();
  if (Source.Source() != nullptr) {
    return Source.Source()->Integer(n);
  }
  Source.Refill();
  return Random(n);
}

double SlowRandomReal() {
  TGenerator& Source = Generator();
  if (Source.Source() != nullptr) {
    return Source.Source()->Real();
  }
  Source.Refill();
  return Random();
}

} // namespace detail

std::ostream& operator<<(std::ostream& Stream, const TQXRandomState& State) {
  for (const auto& Words : State.Words) {
    for (const std::uint64_t Word : Words) {
      Stream << std::to_string(Word) << ' ';
    }
  }
  return Stream << std::to_string(State.NextLane);
}

std::istream& operator>>(std::istream& Stream, TQXRandomState& State) {
  TQXRandomState Read{};
  for (auto& Words : Read.Words) {
    for (std::uint64_t& Word : Words) {
      Stream >> Word;
    }
  }
  Stream >> Read.NextLane;
  if (Stream) {
    State = Read;
  }
  return Stream;
}

void SeedRandom(std::uint64_t Seed) { detail::Generator().Seed(Seed); }

TQXRandomState RandomState() { return detail::Generator().State(); }

void SetRandomState(const TQXRandomState& State) { detail::Generator().SetState(State); }

TQXRandomSourceScope::TQXRandomSourceScope(TQXRandomSource& Source)
    : FFormer(detail::Generator().Replace(&Source)) {}

TQXRandomSourceScope::~TQXRandomSourceScope() { detail::Generator().Replace(FFormer); }

void RandomBelow(double Probability, std::span<std::uint64_t> Words, std::size_t Count) {
  std::fill_n(Words.begin(), (Count + 63) / 64, 0);
  detail::TGenerator& Source = detail::Generator();
  if (Source.Source() != nullptr) {
    for (std::size_t I = 0; I < Count; ++I) {
      detail::PutBits(Words, I, Source.Source()->Real() < Probability ? 1 : 0, 1);
    }
    return;
  }
  // A draw k / 2^53, where k is the upper 53 bits of a word, is below p exactly when k is below
  // ceil(p * 2^53), that is, when the word is below 2^11 times that.
  const double Limit = Probability > 0 ? std::ceil(Probability * 0x1p53) : 0;
  const bool Always = Limit >= 0x1p53;
  Source.Below(Always ? 0 : static_cast<std::uint64_t>(Limit) << 11, Words, Count);
  if (Always) {
    detail::Complement(Words, Count);
  }
}

void RandomBits(std::span<std::uint64_t> Words, std::size_t Count) {
  std::fill_n(Words.begin(), (Count + 63) / 64, 0);
  detail::TGenerator& Source = detail::Generator();
  if (Source.Source() != nullptr) {
    for (std::size_t I = 0; I < Count; ++I) {
      detail::PutBits(Words, I, static_cast<std::uint64_t>(Source.Source()->Integer(2)), 1);
    }
    return;
  }
  Source.Below(1ULL << 63, Words, Count); // the draws of 0
  detail::Complement(Words, Count);
}

} // namespace qx
