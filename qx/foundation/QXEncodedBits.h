#pragma once

#include <qx/platform/Bits.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace qx {

/// A bit vector that holds typed values in fields, each given by the offset and the length in bits.
///
/// Integers stand in plain binary, the least significant bit first, in two's complement when the sign counts.
/// A field wider than the value is filled with its sign (or with 0 when signs do not count); a narrower one
/// keeps the low bits. Real numbers stand as the IEEE image of a single in fields of 32 bits and of a double
/// in fields of 64; in fields of any other length as the integer that is nearest, halves to even. A field of
/// length 0 reads 0 and writes nothing. A field with a negative offset or length, or one that reaches past
/// `Size`, raises std::out_of_range before anything changes.
class TQXEncodedBits : public TBits {
public:
  using TBits::Assign;

  /// Whether numeric fields are signed; who reads or writes one sets it first.
  bool PreserveSignBit() const { return FPreserveSignBit; }
  void SetPreserveSignBit(bool Value) { FPreserveSignBit = Value; }

  /// The whole vector as bit text.
  virtual std::string ToString() const { return ToBitString(); }
  std::string ToBitString() const { return GetAsBitString(0, Size()); }

  /// The field as '0' and '1' in the order of positions.
  std::string GetAsBitString(int Offset, int Length) const;
  /// Text that is too short leaves the rest 0, text that is too long is cut. Raises std::invalid_argument,
  /// and changes nothing, for any character but '0' and '1'.
  void SetAsBitString(int Offset, int Length, std::string_view Value);

  /// True when any bit of the field is 1.
  bool GetAsBoolean(int Offset, int Length) const;
  /// Writes 1 or 0 as an integer.
  void SetAsBoolean(int Offset, int Length, bool Value);

  // Numbers are signed as `PreserveSignBit` says, or as the last argument does.
  std::int32_t GetAsInteger(int Offset, int Length) const {
    return GetAsInteger(Offset, Length, FPreserveSignBit);
  }
  std::int32_t GetAsInteger(int Offset, int Length, bool Signed) const;
  void SetAsInteger(int Offset, int Length, std::int32_t Value);
  std::int64_t GetAsInt64(int Offset, int Length) const {
    return GetAsInt64(Offset, Length, FPreserveSignBit);
  }
  std::int64_t GetAsInt64(int Offset, int Length, bool Signed) const;
  void SetAsInt64(int Offset, int Length, std::int64_t Value);

  /// An image that is no finite number reads 0. When signs do not count, the sign bit of an image is ignored.
  float GetAsFloat(int Offset, int Length) const { return GetAsFloat(Offset, Length, FPreserveSignBit); }
  float GetAsFloat(int Offset, int Length, bool Signed) const;
  void SetAsFloat(int Offset, int Length, float Value);
  double GetAsDouble(int Offset, int Length) const { return GetAsDouble(Offset, Length, FPreserveSignBit); }
  double GetAsDouble(int Offset, int Length, bool Signed) const;
  /// A finite value beyond single precision becomes the largest single in a field of 32 bits; in a field of
  /// any other length than 32 and 64, a value beyond what it holds becomes the nearest integer that it does
  /// hold.
  void SetAsDouble(int Offset, int Length, double Value);

  /// Fills the field from bytes, the least significant bit of the first byte first; missing bytes are 0.
  void Encode(int Offset, int Length, std::span<const std::uint8_t> Bytes);
  /// Copies the field into bytes, in the same order; bytes that are left over become 0. Raises
  /// std::invalid_argument when the bytes cannot hold the field.
  void Decode(int Offset, int Length, std::span<std::uint8_t> Bytes) const;

private:
  void CheckField(int Offset, int Length) const;
  std::uint64_t ReadBits(int Offset, int Length) const;
  void WriteBits(int Offset, int Length, std::uint64_t Value);
  std::int64_t ReadInteger(int Offset, int Length, bool Signed) const;
  void WriteInteger(int Offset, int Length, std::uint64_t Value, bool Negative);

  bool FPreserveSignBit = false;
};

} // namespace qx
