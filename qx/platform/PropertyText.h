#pragma once

// The values of properties as text, each on one line. Parsing raises std::invalid_argument, which says what
// is wrong with the text.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qx {

/// How a value of type `T` is written and read. Other types than those below may add their own.
template <class T>
struct TPropertyText;

template <>
struct TPropertyText<int> {
  static std::string Make(int Value) { return std::to_string(Value); }
  static int Parse(std::string_view Text);
};

template <>
struct TPropertyText<bool> {
  static std::string Make(bool Value) { return Value ? "true" : "false"; }
  static bool Parse(std::string_view Text);
};

/// The shortest digits that read back to the same double.
template <>
struct TPropertyText<double> {
  static std::string Make(double Value);
  static double Parse(std::string_view Text);
};

/// In double quotes, with \" \\ \n \r \t and \xNN for other control characters.
template <>
struct TPropertyText<std::string> {
  static std::string Make(std::string_view Value);
  static std::string Parse(std::string_view Text);
};

/// In brackets: ["one" "two"].
template <>
struct TPropertyText<std::vector<std::string>> {
  static std::string Make(const std::vector<std::string>& Values);
  static std::vector<std::string> Parse(std::string_view Text);
};

} // namespace qx
