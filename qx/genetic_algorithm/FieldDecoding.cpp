#include <qx/genetic_algorithm/FieldDecoding.h>

#include <algorithm>
#include <cmath>
#include <limits>

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

std::uint64_t DistanceOf(std::int64_t Min, std::int64_t Value) {
  return static_cast<std::uint64_t>(Value) - static_cast<std::uint64_t>(Min);
}

// The least code that satisfies a condition which holds from some code on, or the largest code.
template <class TCondition>
std::uint64_t LeastCode(int Bits, TCondition Holds) {
  std::uint64_t Low = 0;
  std::uint64_t High = LargestCode(Bits);
  while (Low < High) {
    const std::uint64_t Middle = Low + (High - Low) / 2;
    if (Holds(Middle)) {
      High = Middle;
    } else {
      Low = Middle + 1;
    }
  }
  return Low;
}

// The least code of a value or, when no code has it, that of the nearest one below which there is a code for.
std::uint64_t CodeOf(int Bits, std::int64_t Min, std::int64_t Max, std::int64_t Value) {
  const std::uint64_t Wanted = DistanceOf(Min, Value);
  const TWide Count = CountOf(Min, Max);
  const std::uint64_t Code =
      LeastCode(Bits, [&](std::uint64_t Candidate) { return NumberOf(Candidate, Count, Bits) >= Wanted; });
  return Code > 0 && NumberOf(Code, Count, Bits) > Wanted ? Code - 1 : Code;
}

double Finite(double Limit) {
  return std::clamp(Limit, std::numeric_limits<double>::lowest(), std::numeric_limits<double>::max());
}

// It never falls from one code to the next.
double RealOf(std::uint64_t Code, int Bits, double Min, double Max) {
  const auto Largest = static_cast<double>(std::max<std::uint64_t>(LargestCode(Bits), 1));
  return Max <= Min ? Min : std::lerp(Min, Max, static_cast<double>(Code) / Largest);
}

} // namespace

std::int64_t DecodeInteger(const TQXEncodedBits& Bits, int Offset, int Size, std::int64_t Min,
                           std::int64_t Max) {
  const TWide Number = NumberOf(ReadCode(Bits, Offset, Size), CountOf(Min, Max), BitsOf(Size));
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(Min) + static_cast<std::uint64_t>(Number));
}

bool HasCode(int Size, std::int64_t Min, std::int64_t Max, std::int64_t Value) {
  const int Bits = BitsOf(Size);
  return NumberOf(CodeOf(Bits, Min, Max, Value), CountOf(Min, Max), Bits) == DistanceOf(Min, Value);
}

void EncodeInteger(TQXEncodedBits& Bits, int Offset, int Size, std::int64_t Min, std::int64_t Max,
                   std::int64_t Value) {
  WriteCode(Bits, Offset, Size, CodeOf(BitsOf(Size), Min, Max, Value));
}

double DecodeReal(const TQXEncodedBits& Bits, int Offset, int Size, double Min, double Max) {
  return RealOf(ReadCode(Bits, Offset, Size), BitsOf(Size), Finite(Min), Finite(Max));
}

void EncodeReal(TQXEncodedBits& Bits, int Offset, int Size, double Min, double Max, double Value) {
  const auto ValueOf = [&](std::uint64_t Code) {
    return RealOf(Code, BitsOf(Size), Finite(Min), Finite(Max));
  };
  const std::uint64_t Code =
      LeastCode(BitsOf(Size), [&](std::uint64_t Candidate) { return ValueOf(Candidate) >= Value; });
  const bool IsBelowNearer = Code > 0 && Value - ValueOf(Code - 1) < ValueOf(Code) - Value;
  WriteCode(Bits, Offset, Size, IsBelowNearer ? Code - 1 : Code);
}

} // namespace qx::detail
