#include <qx/foundation/QXEncodedBits.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace qx {

namespace {

constexpr int WordBits = 64;
constexpr int SingleBits = 32;
constexpr int DoubleBits = 64;

std::uint64_t LowMask(int Length) {
  return Length >= WordBits ? ~std::uint64_t{0} : (std::uint64_t{1} << Length) - 1;
}

// The nearest integer, halves to even, that a field of `Length` bits can hold; the field keeps its low bits.
std::int64_t NearestInteger(double Value, int Length, bool Signed) {
  const int Bits = std::min(Length, WordBits) - (Signed ? 1 : 0);
  const double Beyond = std::ldexp(1.0, Bits);
  const double Whole = std::isnan(Value) ? 0 : std::nearbyint(Value);
  if (Whole >= Beyond) {
    return static_cast<std::int64_t>(LowMask(Bits));
  }
  if (Whole < 0) {
    return Signed ? static_cast<std::int64_t>(std::max(Whole, -Beyond)) : 0;
  }
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(Whole));
}

template <class TReal>
TReal FromImage(TReal Image, bool Signed) {
  if (!std::isfinite(Image)) {
    return 0;
  }
  return Signed ? Image : std::fabs(Image);
}

float NearestSingle(double Value) {
  constexpr double Largest = std::numeric_limits<float>::max();
  return static_cast<float>(std::isfinite(Value) ? std::clamp(Value, -Largest, Largest) : Value);
}

} // namespace

std::string TQXEncodedBits::GetAsBitString(int Offset, int Length) const {
  CheckField(Offset, Length);
  std::string Text(static_cast<std::size_t>(Length), '0');
  for (int I = 0; I < Length; ++I) {
    const auto Place = static_cast<std::size_t>(Offset + I);
    Text[static_cast<std::size_t>(I)] =
        static_cast<char>('0' + static_cast<int>(Words()[Place / WordBits] >> (Place % WordBits) & 1));
  }
  return Text;
}

void TQXEncodedBits::SetAsBitString(int Offset, int Length, std::string_view Value) {
  CheckField(Offset, Length);
  const std::size_t Bad = Value.find_first_not_of("01");
  if (Bad != std::string_view::npos) {
    throw std::invalid_argument("Bit text holds a character other than 0 and 1 at position " +
                                std::to_string(Bad));
  }
  for (int Done = 0; Done < Length; Done += WordBits) {
    const int Chunk = std::min(Length - Done, WordBits);
    std::uint64_t Bits = 0;
    for (int I = 0; I < Chunk && static_cast<std::size_t>(Done + I) < Value.size(); ++I) {
      Bits |= static_cast<std::uint64_t>(Value[static_cast<std::size_t>(Done + I)] == '1') << I;
    }
    WriteBits(Offset + Done, Chunk, Bits);
  }
}

bool TQXEncodedBits::GetAsBoolean(int Offset, int Length) const {
  CheckField(Offset, Length);
  for (int Done = 0; Done < Length; Done += WordBits) {
    if (ReadBits(Offset + Done, std::min(Length - Done, WordBits)) != 0) {
      return true;
    }
  }
  return false;
}

void TQXEncodedBits::SetAsBoolean(int Offset, int Length, bool Value) {
  CheckField(Offset, Length);
  WriteInteger(Offset, Length, Value ? 1 : 0, false);
}

std::int32_t TQXEncodedBits::GetAsInteger(int Offset, int Length, bool Signed) const {
  return static_cast<std::int32_t>(GetAsInt64(Offset, Length, Signed));
}

void TQXEncodedBits::SetAsInteger(int Offset, int Length, std::int32_t Value) {
  CheckField(Offset, Length);
  if (FPreserveSignBit) {
    SetAsInt64(Offset, Length, Value);
  } else {
    WriteInteger(Offset, Length, static_cast<std::uint32_t>(Value), false);
  }
}

std::int64_t TQXEncodedBits::GetAsInt64(int Offset, int Length, bool Signed) const {
  CheckField(Offset, Length);
  return ReadInteger(Offset, Length, Signed);
}

void TQXEncodedBits::SetAsInt64(int Offset, int Length, std::int64_t Value) {
  CheckField(Offset, Length);
  WriteInteger(Offset, Length, static_cast<std::uint64_t>(Value), FPreserveSignBit && Value < 0);
}

float TQXEncodedBits::GetAsFloat(int Offset, int Length, bool Signed) const {
  CheckField(Offset, Length);
  return NearestSingle(GetAsDouble(Offset, Length, Signed));
}

void TQXEncodedBits::SetAsFloat(int Offset, int Length, float Value) { SetAsDouble(Offset, Length, Value); }

double TQXEncodedBits::GetAsDouble(int Offset, int Length, bool Signed) const {
  CheckField(Offset, Length);
  if (Length == SingleBits) {
    const auto Image = static_cast<std::uint32_t>(ReadBits(Offset, Length));
    return FromImage(std::bit_cast<float>(Image), Signed);
  }
  if (Length == DoubleBits) {
    return FromImage(std::bit_cast<double>(ReadBits(Offset, Length)), Signed);
  }
  const std::int64_t Whole = ReadInteger(Offset, Length, Signed);
  return Signed ? static_cast<double>(Whole) : static_cast<double>(static_cast<std::uint64_t>(Whole));
}

void TQXEncodedBits::SetAsDouble(int Offset, int Length, double Value) {
  CheckField(Offset, Length);
  if (Length == SingleBits) {
    WriteBits(Offset, Length, std::bit_cast<std::uint32_t>(NearestSingle(Value)));
  } else if (Length == DoubleBits) {
    WriteBits(Offset, Length, std::bit_cast<std::uint64_t>(Value));
  } else if (Length > 0) {
    SetAsInt64(Offset, Length, NearestInteger(Value, Length, FPreserveSignBit));
  }
}

void TQXEncodedBits::Encode(int Offset, int Length, std::span<const std::uint8_t> Bytes) {
  CheckField(Offset, Length);
  for (int Done = 0; Done < Length; Done += 8) {
    const auto Byte = static_cast<std::size_t>(Done) / 8;
    WriteBits(Offset + Done, std::min(Length - Done, 8), Byte < Bytes.size() ? Bytes[Byte] : 0);
  }
}

void TQXEncodedBits::Decode(int Offset, int Length, std::span<std::uint8_t> Bytes) const {
  CheckField(Offset, Length);
  if (Bytes.size() < (static_cast<std::size_t>(Length) + 7) / 8) {
    throw std::invalid_argument("A field of " + std::to_string(Length) + " bits does not fit " +
                                std::to_string(Bytes.size()) + " bytes");
  }
  std::fill(Bytes.begin(), Bytes.end(), std::uint8_t{0});
  for (int Done = 0; Done < Length; Done += 8) {
    Bytes[static_cast<std::size_t>(Done) / 8] =
        static_cast<std::uint8_t>(ReadBits(Offset + Done, std::min(Length - Done, 8)));
  }
}

void TQXEncodedBits::CheckField(int Offset, int Length) const {
  if (Offset < 0 || Length < 0 || Offset > Size() - Length) {
    throw std::out_of_range("Field of " + std::to_string(Length) + " bits at offset " +
                            std::to_string(Offset) + " is outside the vector of " + std::to_string(Size()) +
                            " bits");
  }
}

// Up to 64 bits, which may stand in two words.
std::uint64_t TQXEncodedBits::ReadBits(int Offset, int Length) const {
  if (Length == 0) {
    return 0;
  }
  const auto Word = static_cast<std::size_t>(Offset) / WordBits;
  const int Shift = Offset % WordBits;
  std::uint64_t Value = Words()[Word] >> Shift;
  if (Shift + Length > WordBits) {
    Value |= Words()[Word + 1] << (WordBits - Shift);
  }
  return Value & LowMask(Length);
}

void TQXEncodedBits::WriteBits(int Offset, int Length, std::uint64_t Value) {
  if (Length == 0) {
    return;
  }
  const auto Words = MutableWords();
  const auto Word = static_cast<std::size_t>(Offset) / WordBits;
  const int Shift = Offset % WordBits;
  const std::uint64_t Mask = LowMask(Length);
  Value &= Mask;
  Words[Word] = (Words[Word] & ~(Mask << Shift)) | Value << Shift;
  if (Shift + Length > WordBits) {
    const int Low = WordBits - Shift;
    Words[Word + 1] = (Words[Word + 1] & ~(Mask >> Low)) | Value >> Low;
  }
}

// The low 64 bits of the field; a shorter signed field carries its sign up.
std::int64_t TQXEncodedBits::ReadInteger(int Offset, int Length, bool Signed) const {
  std::uint64_t Value = ReadBits(Offset, std::min(Length, WordBits));
  if (Signed && Length > 0 && Length < WordBits && (Value >> (Length - 1) & 1) != 0) {
    Value |= ~LowMask(Length);
  }
  return static_cast<std::int64_t>(Value);
}

void TQXEncodedBits::WriteInteger(int Offset, int Length, std::uint64_t Value, bool Negative) {
  WriteBits(Offset, std::min(Length, WordBits), Value);
  for (int Done = WordBits; Done < Length; Done += WordBits) {
    WriteBits(Offset + Done, std::min(Length - Done, WordBits), Negative ? ~std::uint64_t{0} : 0);
  }
}

} // namespace qx
