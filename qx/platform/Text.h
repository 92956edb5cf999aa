#pragma once

#include <string>
#include <string_view>

namespace qx {

/// Whether two names are equal when the case of ASCII letters does not count.
bool SameText(std::string_view Left, std::string_view Right);

/// The text without the blanks, tabs and line breaks at its ends.
std::string_view Trimmed(std::string_view Text);
/// The text with the letters of ASCII in lower case.
std::string LowerText(std::string_view Text);

// Numbers as text for people, with the decimal point of the global `std::locale`.

/// The shortest digits that read back to the same single-precision number; plain from 1e-4 up to 1e15, and in
/// exponent form beyond ("1e+15").
std::string GeneralText(float Value);
/// The same with up to fifteen digits.
std::string GeneralText(double Value);
/// Two decimals, but no more than two significant digits: 98 is "98.00", 12.5 is "12.00" (halves go to the
/// even digit). A number with more than two digits before the point is in exponent form: 100 is "1.0E+002".
std::string FixedText(double Value);
/// A share of 1 in the same form, in per cent: 0.9 is "90.00%".
std::string PercentText(double Share);

} // namespace qx
