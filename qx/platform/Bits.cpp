#include <qx/platform/Bits.h>
#include <qx/platform/WordCount.h>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace qx {

void TBits::CheckSize(int Value) {
  if (Value < 0) {
    throw std::out_of_range("Size of a bit vector must not be negative (" + std::to_string(Value) + ")");
  }
  if (Value > MaxSize) {
    throw std::length_error("A bit vector holds up to " + std::to_string(MaxSize) + " bits, not " +
                            std::to_string(Value));
  }
}

void TBits::SetSize(int Value) {
  CheckSize(Value);
  const std::size_t Before = WordCount();
  Reserve((static_cast<std::size_t>(Value) + 63) / 64, true);
  FSize = Value;
  if (WordCount() > Before) {
    std::fill(Data() + Before, Data() + WordCount(), 0);
  }
  ClearSpareBits();
}

bool TBits::Bits(int Index) const {
  CheckIndex(Index);
  return (Words()[static_cast<std::size_t>(Index) / 64] >> (Index % 64) & 1) != 0;
}

void TBits::SetBits(int Index, bool Value) {
  CheckIndex(Index);
  const std::uint64_t Mask = std::uint64_t{1} << (Index % 64);
  std::uint64_t& Word = MutableWords()[static_cast<std::size_t>(Index) / 64];
  Word = Value ? Word | Mask : Word & ~Mask;
}

int TBits::CountOnes() const { return static_cast<int>(qx::CountOnes(Words())); }

void TBits::Assign(const TBits& Source) {
  if (&Source == this) {
    return;
  }
  Reserve(Source.WordCount(), false);
  FSize = Source.FSize;
  const std::uint64_t* const From = Source.Data();
  std::uint64_t* const To = Data();
  if (WordCount() == 1) {
    *To = *From;
  } else {
    std::copy_n(From, WordCount(), To);
  }
}

void TBits::Assign(const TPersistent& Source) {
  if (const auto* Vector = SourceAs<TBits>(Source)) {
    Assign(*Vector);
  } else {
    TPersistent::Assign(Source);
  }
}

void TBits::ClearSpareBits() {
  if (FSize % 64 != 0) {
    MutableWords().back() &= (std::uint64_t{1} << (FSize % 64)) - 1;
  }
}

void TBits::Grow(std::size_t Words, bool Keep) {
  auto Heap = std::make_unique_for_overwrite<std::uint64_t[]>(Words);
  if (Keep) {
    std::copy_n(Data(), WordCount(), Heap.get());
  }
  FHeap = std::move(Heap);
  FCapacity = Words;
}

void TBits::CheckIndex(int Index) const {
  if (Index < 0 || Index >= FSize) {
    throw std::out_of_range("Bit " + std::to_string(Index) + " is outside the vector of " +
                            std::to_string(FSize) + " bits");
  }
}

} // namespace qx
