#include <qx/symbolic_regression/HugeAngle.h>

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace qx::detail {

namespace {

using TWord = std::uint64_t;
__extension__ using TDoubleWord = unsigned __int128;

// The binary digits of 1/pi, after a word of those before the point, which are 0.
constexpr TWord InversePi[] = {0x0000000000000000, 0x517cc1b727220a94, 0xfe13abe8fa9a6ee0, 0x6db14acc9e21c820,
                               0xff28b1d5ef5de2b0, 0xdb92371d2126e970, 0x0324977504e8c90e, 0x7f0ef58e5894d39f,
                               0x74411afa975da242, 0x74ce38135a2fbf20, 0x9cc8eb1cc1a99cfa, 0x4e422fc5defc941d,
                               0x8ffc4bffef02cc07, 0xf79788c5ad05368f, 0xb69b3f6793e584db, 0xa7a31fb34f2ff516,
                               0xba93dd63f5f2f8bd, 0x9e839cfbc5294975, 0x35fdafd88fc6ae84, 0x2b0198237e3db5d5,
                               0xf867de104d7a1b0e};

constexpr int WordBits = 64;
constexpr int MantissaBits = 53;
constexpr int SpareBits = WordBits - MantissaBits;

TWord HighWord(TDoubleWord Value) { return static_cast<TWord>(Value >> WordBits); }
TWord LowWord(TDoubleWord Value) { return static_cast<TWord>(Value); }

// The word that begins so many digits after the beginning of the table.
TWord Digits(int First) {
  const auto Place = static_cast<std::size_t>(First / WordBits);
  const TDoubleWord Pair = TDoubleWord(InversePi[Place]) << WordBits | InversePi[Place + 1];
  return HighWord(Pair << (First % WordBits));
}

// A number of 192 bits, the highest word first.
struct TWide {
  TWord Words[3];

  void ShiftLeft(int Count) { // by 1 to 63
    Words[0] = Words[0] << Count | Words[1] >> (WordBits - Count);
    Words[1] = Words[1] << Count | Words[2] >> (WordBits - Count);
    Words[2] <<= Count;
  }
  void Negate() {
    Words[2] = ~Words[2] + 1;
    Words[1] = ~Words[1] + (Words[2] == 0 ? 1 : 0);
    Words[0] = ~Words[0] + (Words[1] == 0 && Words[2] == 0 ? 1 : 0);
  }
};

// A positive `Angle` / pi modulo 2: one bit before the point and 191 after it. What the digits left out would
// add to the digits before is a multiple of 2.
TWide HalfTurns(double Angle) {
  int Exponent;
  const auto Mantissa = static_cast<TWord>(std::ldexp(std::frexp(Angle, &Exponent), MantissaBits));
  const int First = WordBits + Exponent - MantissaBits - 1;
  const TDoubleWord Low = TDoubleWord(Mantissa) * Digits(First + 2 * WordBits);
  const TDoubleWord Middle = TDoubleWord(Mantissa) * Digits(First + WordBits) + HighWord(Low);
  return {{Mantissa * Digits(First) + HighWord(Middle), LowWord(Middle), LowWord(Low)}};
}

} // namespace

TReducedAngle ReduceHugeAngle(double Angle) {
  TWide Turns = HalfTurns(std::fabs(Angle));
  const TWord Quarters = Turns.Words[0] >> (WordBits - 2);
  Turns.ShiftLeft(2); // a fraction of a quarter turn
  const bool RoundsUp = Turns.Words[0] >> (WordBits - 1) != 0;
  if (RoundsUp) { // a signed one
    Turns.Negate();
  }
  const int Zeros = std::countl_zero(Turns.Words[0]); // 62 at most for a double
  if (Zeros > 0) {
    Turns.ShiftLeft(Zeros);
  }
  const double High = std::ldexp(static_cast<double>(Turns.Words[0] >> SpareBits), -MantissaBits - Zeros);
  const TWord Rest = Turns.Words[0] << MantissaBits | Turns.Words[1] >> SpareBits;
  const double Low = std::ldexp(static_cast<double>(Rest), -MantissaBits - WordBits - Zeros);

  constexpr double QuarterHigh = 0x1.921fb54442d18p+0;
  constexpr double QuarterLow = 0x1.1a62633145c07p-54;
  const double Sign = RoundsUp != std::signbit(Angle) ? -1 : 1;
  const double Product = High * QuarterHigh;
  const double ProductLow = std::fma(High, QuarterHigh, -Product) + (High * QuarterLow + Low * QuarterHigh);
  const TWord Count = Quarters + (RoundsUp ? 1 : 0);
  return {Sign * Product, Sign * ProductLow, std::signbit(Angle) ? 0 - Count : Count};
}

} // namespace qx::detail
