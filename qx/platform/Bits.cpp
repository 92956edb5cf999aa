#include <qx/platform/Bits.h>

#include <qx/platform/WordCount.h>

#include <stdexcept>
#include <string>

namespace qx {

namespace {

std::size_t WordsFor(int Size) { return (static_cast<std::size_t>(Size) + 63) / 64; }

} // namespace

void TBits::SetSize(int Value) {
  if (Value < 0) {
    throw std::out_of_range("Size of a bit vector must not be negative (" + std::to_string(Value) + ")");
  }
  FWords.resize(WordsFor(Value));
  FSize = Value;
  ClearSpareBits();
}

bool TBits::Bits(int Index) const {
  CheckIndex(Index);
  return (FWords[static_cast<std::size_t>(Index) / 64] >> (Index % 64) & 1) != 0;
}

void TBits::SetBits(int Index, bool Value) {
  CheckIndex(Index);
  const std::uint64_t Mask = std::uint64_t{1} << (Index % 64);
  std::uint64_t& Word = FWords[static_cast<std::size_t>(Index) / 64];
  Word = Value ? Word | Mask : Word & ~Mask;
}

int TBits::CountOnes() const { return static_cast<int>(qx::CountOnes(FWords)); }

void TBits::Assign(const TBits& Source) {
  FWords = Source.FWords;
  FSize = Source.FSize;
}

void TBits::Assign(const TPersistent& Source) {
  if (const auto* Vector = dynamic_cast<const TBits*>(&Source)) {
    Assign(*Vector);
  } else {
    TPersistent::Assign(Source);
  }
}

void TBits::ClearSpareBits() {
  if (FSize % 64 != 0) {
    FWords.back() &= (std::uint64_t{1} << (FSize % 64)) - 1;
  }
}

void TBits::CheckIndex(int Index) const {
  if (Index < 0 || Index >= FSize) {
    throw std::out_of_range("Bit " + std::to_string(Index) + " is outside the vector of " +
                            std::to_string(FSize) + " bits");
  }
}

} // namespace qx
