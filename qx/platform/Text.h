#pragma once

#include <string>
#include <string_view>

namespace qx {

/// Whether two names are equal when the case of ASCII letters does not count.
bool SameText(std::string_view Left, std::string_view Right);

/// A single-precision number as text for people: the shortest digits that read back to the same value, plain
/// from 1e-4 up to 1e15 and in exponent form beyond, with the decimal point of the global `std::locale`.
std::string GeneralText(float Value);

} // namespace qx
