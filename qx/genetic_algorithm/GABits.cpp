#include <qx/genetic_algorithm/GABits.h>
#include <qx/genetic_algorithm/GAIndividual.h>
#include <qx/platform/Random.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace qx {

namespace {

constexpr int WordBits = 64;
constexpr std::uint64_t AllOnes = ~std::uint64_t{0};

// Calls `Visit(word index, mask of the bits that are meant)` for the bits from `First` up to `End`, excluded.
// Whole words come with a constant mask, so that a loop over them needs none.
template <class TVisit>
[[gnu::always_inline]] inline void VisitBits(int First, int End, TVisit Visit) {
  if (First >= End) {
    return;
  }
  const auto FirstWord = static_cast<std::size_t>(First / WordBits);
  const auto LastWord = static_cast<std::size_t>((End - 1) / WordBits);
  const std::uint64_t FirstMask = AllOnes << (First % WordBits);
  const std::uint64_t LastMask = AllOnes >> (WordBits - 1 - (End - 1) % WordBits);
  if (FirstWord == LastWord) {
    Visit(FirstWord, FirstMask & LastMask);
    return;
  }
  Visit(FirstWord, FirstMask);
  for (std::size_t Word = FirstWord + 1; Word < LastWord; ++Word) {
    Visit(Word, AllOnes);
  }
  Visit(LastWord, LastMask);
}

} // namespace

void TQXGABits::Clear() {
  const int Bits = Size();
  SetSize(0);
  SetSize(Bits);
}

TQXGABits& TQXGABits::CrossOver(const TQXGABits& Source1, const TQXGABits& Source2) {
  const int CrossBit = Random(Source1.Size());
  return CrossOver(Source1, Source2, CrossBit);
}

TQXGABits& TQXGABits::CrossOver(const TQXGABits& Source1, const TQXGABits& Source2, int CrossBit) {
  const auto Target = MutableWords();
  const auto Words1 = Source1.Words();
  const auto Words2 = Source2.Words();
  const int FromFirst = std::min(Source1.Size(), Size());
  const int Cut = CrossBit < FromFirst ? std::max(CrossBit + 1, 0) : FromFirst;
  const int End = std::min(Source2.Size(), Size());
  if (Target.size() == 1 && Source2.Size() == Size() && !Words1.empty()) { // one word, to its end
    const std::uint64_t FromSecond = Cut < WordBits ? AllOnes << Cut : 0;
    Target[0] = (Words1[0] & ~FromSecond) | (Words2[0] & FromSecond);
    Changed();
    return *this;
  }
  VisitBits(0, Cut, [&](std::size_t Word, std::uint64_t Mask) {
    Target[Word] = (Target[Word] & ~Mask) | (Words1[Word] & Mask);
  });
  VisitBits(Cut, End, [&](std::size_t Word, std::uint64_t Mask) {
    Target[Word] = (Target[Word] & ~Mask) | (Words2[Word] & Mask);
  });
  Changed();
  return *this;
}

void TQXGABits::Invert(int Offset, int Len) {
  if (Offset < -1 && Len >= -1) {
    throw std::out_of_range("Inversion cannot start at bit " + std::to_string(Offset));
  }
  if (Offset == -1) {
    Offset = Random(Size());
  }
  if (Len == -1) {
    Len = Random(Size() - Offset);
  }
  if (Len >= 0) {
    const auto Target = MutableWords();
    const int End = Len < Size() - Offset ? Offset + Len + 1 : Size();
    VisitBits(Offset, End, [&](std::size_t Word, std::uint64_t Mask) { Target[Word] ^= Mask; });
  }
  Changed();
}

bool TQXGABits::Mutate(double MutationProbability) {
  constexpr std::size_t ChunkWords = 32;
  std::uint64_t Flips[ChunkWords];
  std::uint64_t Any = 0;
  auto Left = static_cast<std::size_t>(Size());
  for (std::uint64_t* Word = MutableWords().data(); Left > 0;) {
    const std::size_t Count = std::min(Left, ChunkWords * WordBits);
    RandomBelow(MutationProbability, Flips, Count);
    for (std::size_t Bit = 0; Bit < Count; Bit += WordBits) {
      *Word++ ^= Flips[Bit / WordBits];
      Any |= Flips[Bit / WordBits];
    }
    Left -= Count;
  }
  Changed();
  return Any != 0;
}

void TQXGABits::Randomize() {
  RandomBits(MutableWords(), static_cast<std::size_t>(Size()));
  Changed();
}

void TQXGABits::Changed() {
  if (FOwner != nullptr) {
    FOwner->MarkStale();
  }
}

} // namespace qx
