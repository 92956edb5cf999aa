#pragma once

// The values of properties as text, each on one line. Parsing raises std::invalid_argument, which says what
// is wrong with the text.

#include <qx/platform/Random.h>
#include <qx/platform/Variant.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace qx {

/// The words of a list in brackets, which blanks part.
std::vector<std::string_view> WordsInBrackets(std::string_view Text);

/// Takes one text in quotes from the front of `Text`.
std::string TakeQuoted(std::string_view& Text);

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

/// As the double that it is, so that it reads back to the same value.
template <>
struct TPropertyText<float> {
  static std::string Make(float Value) { return TPropertyText<double>::Make(static_cast<double>(Value)); }
  static float Parse(std::string_view Text);
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

/// In brackets: [1 2.5 3].
template <class TNumber>
requires std::is_arithmetic_v<TNumber>
struct TPropertyText<std::vector<TNumber>> {
  static std::string Make(const std::vector<TNumber>& Values) {
    std::string Text = "[";
    for (const TNumber Value : Values) {
      Text += (Text.size() > 1 ? " " : "") + TPropertyText<TNumber>::Make(Value);
    }
    return Text + ']';
  }
  static std::vector<TNumber> Parse(std::string_view Text) {
    std::vector<TNumber> Values;
    for (const std::string_view Word : WordsInBrackets(Text)) {
      Values.push_back(TPropertyText<TNumber>::Parse(Word));
    }
    return Values;
  }
};

/// Nothing is "empty", Booleans are true and false, real numbers have a point or an exponent, texts stand in
/// quotes.
template <>
struct TPropertyText<Variant> {
  static std::string Make(const Variant& Value);
  static Variant Parse(std::string_view Text);
};

template <>
struct TPropertyText<TQXRandomState> {
  static std::string Make(const TQXRandomState& Value);
  static TQXRandomState Parse(std::string_view Text);
};

/// Whether values of a type can be written.
template <class T>
concept HasPropertyText = requires(const T& Value) {
  TPropertyText<T>::Make(Value);
};

/// Whether two values are the same: as numbers, sign of zero included (a NaN is a NaN), or as texts.
template <class T>
bool SameState(const T& Left, const T& Right) {
  if constexpr (std::is_floating_point_v<T>) {
    return std::isnan(Left) ? std::isnan(Right) : Left == Right && std::signbit(Left) == std::signbit(Right);
  } else if constexpr (std::is_integral_v<T>) {
    return Left == Right;
  } else {
    return TPropertyText<T>::Make(Left) == TPropertyText<T>::Make(Right);
  }
}

} // namespace qx
