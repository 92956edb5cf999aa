#include <qx/platform/Numbers.h>
#include <qx/platform/Text.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>
#include <type_traits>

namespace qx {

namespace {

// Room for a plain number of 15 digits before the point, and for any in exponent form.
constexpr std::size_t LongestNumber = 64;

// The value of the digits that `to_chars` gives for the arguments behind the value: in exponent form, because
// plain ones would be all that a large number has.
template <class T, class... TDigits>
double DigitsOf(T Value, TDigits... Digits) {
  char Buffer[LongestNumber];
  const char* const End =
      std::to_chars(Buffer, Buffer + sizeof Buffer, Value, std::chars_format::scientific, Digits...).ptr;
  double Rounded = 0;
  std::from_chars(Buffer, End, Rounded);
  return Rounded;
}

float NarrowedToSingle(double Value) {
  constexpr double Beyond = 0x1.ffffffp127; // halfway from the largest single to the power of two above it
  constexpr float Infinity = std::numeric_limits<float>::infinity();
  if (std::fabs(Value) >= Beyond) {
    return Value > 0 ? Infinity : -Infinity;
  }
  return static_cast<float>(Value);
}

template <class T>
std::optional<T> Parse(std::string_view Text) {
  Text = Trimmed(Text);
  if (Text.size() > 1 && Text.front() == '+' && Text[1] != '-') {
    Text.remove_prefix(1);
  }
  T Value{};
  const char* const End = Text.data() + Text.size();
  const auto Result = std::from_chars(Text.data(), End, Value);
  if (Result.ptr != End || Result.ec == std::errc::invalid_argument) {
    return std::nullopt;
  }
  if constexpr (std::is_same_v<T, double>) {
    if (Result.ec == std::errc::result_out_of_range) { // too large or too small: a wider type tells which
      long double Wide = 0;
      if (std::from_chars(Text.data(), End, Wide).ec == std::errc()) {
        return static_cast<double>(Wide);
      }
    }
  }
  return Result.ec == std::errc() ? std::optional<T>(Value) : std::nullopt;
}

} // namespace

std::string NumberText(double Value) {
  if (std::isnan(Value)) {
    return "NaN";
  }
  if (std::isinf(Value)) {
    return Value > 0 ? "INF" : "-INF";
  }
  constexpr double PlainFrom = 1e-4;
  constexpr double PlainBelow = 1e15;
  const double Size = std::fabs(Value);
  const bool Plain = Size == 0 || (Size >= PlainFrom && Size < PlainBelow);
  char Buffer[LongestNumber];
  const auto Format = Plain ? std::chars_format::fixed : std::chars_format::scientific;
  return {Buffer, std::to_chars(Buffer, Buffer + sizeof Buffer, Value, Format).ptr};
}

std::string NumberText(float Value) {
  return NumberText(std::isfinite(Value) ? DigitsOf(Value) : static_cast<double>(Value));
}

std::string SingleText(double Value) {
  constexpr int Digits = 7;
  const float Single = NarrowedToSingle(Value);
  const double Rounded = RoundedToDigits(static_cast<double>(Single), Digits);
  // Shorter texts than that of seven digits may read back as well.
  return NarrowedToSingle(Rounded) == Single ? NumberText(Single) : NumberText(Rounded);
}

double RoundedToDigits(double Value, int Digits) {
  return std::isfinite(Value) ? DigitsOf(Value, Digits - 1) : Value;
}

std::optional<double> ParseReal(std::string_view Text) { return Parse<double>(Text); }

bool IsRealBeyondRange(std::string_view Text) {
  const std::optional<double> Value = ParseReal(Text);
  return Value && std::isinf(*Value) && Text.find_first_of("0123456789") != std::string_view::npos;
}

std::optional<std::int64_t> ParseInteger(std::string_view Text) { return Parse<std::int64_t>(Text); }

} // namespace qx
