#pragma once

// Internal to the genes; not installed.

#include <qx/foundation/QXEncodedBits.h>

#include <cstdint>

// Fields that stand for a value within limits, whatever their bits are. The code of a field is what its bits
// spell without a sign; of more than 64 bits the highest 64 count, and the others are written as 0.
namespace qx::detail {

/// One of the integers from `Min` to `Max`: number floor(code * count / 2^Size) of them, so that each has as
/// many codes as any other, or one more. `Min` when `Max` is below it.
std::int64_t DecodeInteger(const TQXEncodedBits& Bits, int Offset, int Size, std::int64_t Min,
                           std::int64_t Max);
/// Whether a code of so many bits reads as `Value`.
bool HasCode(int Size, std::int64_t Min, std::int64_t Max, std::int64_t Value);
/// Writes the least code that reads as `Value`; in a field that is too short for all of the integers, that of
/// the nearest one below which it has a code for.
void EncodeInteger(TQXEncodedBits& Bits, int Offset, int Size, std::int64_t Min, std::int64_t Max,
                   std::int64_t Value);

/// Min + (Max - Min) * code / (2^Size - 1), so that both limits have a code.
double DecodeReal(const TQXEncodedBits& Bits, int Offset, int Size, double Min, double Max);
/// Writes the code whose value is nearest.
void EncodeReal(TQXEncodedBits& Bits, int Offset, int Size, double Min, double Max, double Value);

} // namespace qx::detail
