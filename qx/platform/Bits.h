#pragma once

#include <qx/platform/Persistent.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace qx {

/// A resizable vector of bits, kept in 64-bit words: bit i is bit i modulo 64 of word i / 64. The bits of the
/// last word from `Size` on are always 0.
class TBits : public TPersistent {
public:
  /// The largest size: what a 32-bit position counts, in whole words.
  static constexpr int MaxSize = 0x7fffffff / 64 * 64;

  int Size() const { return FSize; }
  /// Keeps the bits that stay and fills new places with 0. Raises std::out_of_range for a negative size and
  /// std::length_error for one above `MaxSize`.
  void SetSize(int Value);
  /// Raises what `SetSize` raises for that size.
  static void CheckSize(int Value);

  /// Raises std::out_of_range, as `SetBits`.
  bool Bits(int Index) const;
  void SetBits(int Index, bool Value);
  bool operator[](int Index) const { return Bits(Index); }

  /// How many bits are 1.
  int CountOnes() const;

  /// The words behind the bits, to be read in one go.
  std::span<const std::uint64_t> Words() const { return {Data(), WordCount()}; }

  /// Makes this an exact copy of another bit vector, size and bits.
  virtual void Assign(const TBits& Source);
  void Assign(const TPersistent& Source) override;

protected:
  /// The same words, to be written; who writes keeps the bits from `Size` on at 0.
  std::span<std::uint64_t> MutableWords() { return {Data(), WordCount()}; }
  /// Sets the bits of the last word from `Size` on to 0.
  void ClearSpareBits();

private:
  static constexpr std::size_t InlineWords = 1;

  void CheckIndex(int Index) const;
  std::size_t WordCount() const { return (static_cast<std::size_t>(FSize) + 63) / 64; }
  const std::uint64_t* Data() const { return FHeap != nullptr ? FHeap.get() : FInline; }
  std::uint64_t* Data() { return FHeap != nullptr ? FHeap.get() : FInline; }
  // Makes room for so many words. What the words held is lost unless it is kept.
  void Reserve(std::size_t Words, bool Keep) {
    if (Words > FCapacity) [[unlikely]] {
      Grow(Words, Keep);
    }
  }
  void Grow(std::size_t Words, bool Keep);

  // Short vectors need no memory of their own beside the object.
  std::uint64_t FInline[InlineWords] = {};
  std::unique_ptr<std::uint64_t[]> FHeap;
  std::size_t FCapacity = InlineWords;
  int FSize = 0;
};

} // namespace qx
