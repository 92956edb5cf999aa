#include <qx/genetic_algorithm/FieldDecoding.h>

#include <algorithm>
#include <cmath>

namespace qx::detail {

namespace {

constexpr int CodeBits = 64;

__extension__ using TWide = unsigned __int128;

int BitsOf(int Size) { return std::min(Size, CodeBits); }

std::uint64_t LargestCode(int Bits) { return Bits == 0 ? 0 : ~std::uint64_t{0} >> (CodeBits - Bits); }

std::uint64_t ReadCode(const TQXEncodedBits& Bits, int Offset, int Size) {
  static_cast<void>(Bits.GetAsInt64(Offset, Size, false)); // checks the whole field
  const int Count = BitsOf(Size);
  return static_cast<std::uint64_t>(Bits.GetAsInt64(Offset + Size - Count, Count, false));
}

void WriteCode(TQXEncodedBits& Bits, int Offset, int Size, std::uint64_t Code) {
  Bits.SetPreserveSignBit(false);
  Bits.SetAsInt64(Offset, Size, 0);
  const int Count = BitsOf(Size);
  Bits.SetAsInt64(Offset + Size - Count, Count, static_cast<std::int64_t>(Code));
}

// How many integers the limits have between them.
TWide CountOf(std::int64_t Min, std::int64_t Max) {
  return Max < Min ? TWide{1} : TWide{static_cast<std::uint64_t>(Max) - static_cast<std::uint64_t>(Min)} + 1;
}

// Of all 2^64 integers, which leave the product no room, a code's number is the code with zeros behind it.
TWide NumberOf(std::uint64_t Code, TWide Count, int Bits) {
  return Count >> CodeBits != 0 ? TWide{Code} << (CodeBits - Bits) : Code * Count >> Bits;
}

} // namespace

std::int64_t DecodeInteger(const TQXEncodedBits& Bits, int Offset, int Size, std::int64_t Min,
                           std::int64_t Max) {
  const TWide Number = NumberOf(ReadCode(Bits, Offset, Size), CountOf(Min, Max), BitsOf(Size));
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(Min) + static_cast<std::uint64_t>(Number));
}

void EncodeInteger(TQXEncodedBits& Bits, int Offset, int Size, std::int64_t Min, std::int64_t Max,
                   std::int64_t Value) {
  const std::uint64_t Number = static_cast<std::uint64_t>(Value) - static_cast<std::uint64_t>(Min);
  const TWide Count = CountOf(Min, Max);
  // The least code whose number is not below the wanted one.
  std::uint64_t Low = 0;
  std::uint64_t High = LargestCode(BitsOf(Size));
  while (Low < High) {
    const std::uint64_t Middle = Low + (High - Low) / 2;
    if (NumberOf(Middle, Count, BitsOf(Size)) >= Number) {
      High = Middle;
    } else {
      Low = Middle + 1;
    }
  }
  if (Low > 0 && NumberOf(Low, Count, BitsOf(Size)) > Number) { // no code has it
    --Low;
  }
  WriteCode(Bits, Offset, Size, Low);
}

double DecodeReal(const TQXEncodedBits& Bits, int Offset, int Size, double Min, double Max) {
  const auto Largest = static_cast<double>(std::max<std::uint64_t>(LargestCode(BitsOf(Size)), 1));
  const double Share = static_cast<double>(ReadCode(Bits, Offset, Size)) / Largest;
  // Not by the difference of the limits, which may not be finite.
  return Max <= Min ? Min : std::clamp(Min * (1 - Share) + Max * Share, Min, Max);
}

void EncodeReal(TQXEncodedBits& Bits, int Offset, int Size, double Min, double Max, double Value) {
  const std::uint64_t Largest = LargestCode(BitsOf(Size));
  const double Share = Max <= Min ? 0 : (Value / 2 - Min / 2) / (Max / 2 - Min / 2);
  const double Code = std::nearbyint(Share * static_cast<double>(Largest));
  WriteCode(Bits, Offset, Size,
            Code >= static_cast<double>(Largest) ? Largest : static_cast<std::uint64_t>(std::max(Code, 0.0)));
}

} // namespace qx::detail
