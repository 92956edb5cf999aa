#pragma once

// Numbers as text in documents and streams: always with a decimal point, whatever the locale.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qx {

/// The shortest digits that read back to the same value; plain from 1e-4 up to 1e15 and in exponent form
/// beyond ("1e+15"). "INF", "-INF" and "NaN" for what is no finite number.
std::string NumberText(double Value);
std::string NumberText(float Value);
/// The number narrowed to single precision, with at most seven digits: where more were needed to read back
/// the same single, it is rounded to seven. What is too large for single precision becomes infinite.
std::string SingleText(double Value);
/// The number rounded to so many significant digits, 1 to 17.
double RoundedToDigits(double Value, int Digits);

/// The number that the whole text stands for, blanks around it aside; nothing when it stands for none, or for
/// a whole one that the type cannot hold. A real beyond the range of a double is infinite or 0; reals may be
/// written "INF", "-INF" and "NaN", whatever the case.
std::optional<double> ParseReal(std::string_view Text);
/// Whether the text is that of a finite number that no double can be.
bool IsRealBeyondRange(std::string_view Text);
std::optional<std::int64_t> ParseInteger(std::string_view Text);

} // namespace qx
