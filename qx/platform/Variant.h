#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace qx {

/// What a variant holds.
enum TVariantKind : std::uint8_t { vkEmpty, vkBoolean, vkInteger, vkReal, vkText };

/// An integral type that is neither Boolean nor a character.
template <class T>
concept WholeNumber =
    std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char> && !std::same_as<T, wchar_t> &&
    !std::same_as<T, char8_t> && !std::same_as<T, char16_t> && !std::same_as<T, char32_t>;

/// A value whose type is known only when the program runs: nothing, a Boolean, a whole number of 64 bits, a
/// double or a text.
///
/// It converts to each of these, as far as the value allows: nothing is false, 0 and ""; a Boolean is 1 or 0
/// and "true" or "false"; a text is the number or Boolean that the whole of it stands for. Numbers have a
/// decimal point in text, whatever the locale, and read back to the same value.
///
/// Arithmetic takes what is no text as a number, and whole numbers remain whole where the result is: a sum,
/// difference or product that 64 bits do not hold becomes a real one, and a quotient is always real. A text
/// takes part as the number that it stands for; but two texts are joined by `+`. Comparison goes by bytes
/// between texts, else by number; a text that stands for no number equals none and is neither less nor
/// greater. Beside a text, nothing is "". So there is an order among numbers and one among texts, but none
/// among both: do not sort a mixture.
class Variant {
public:
  Variant() = default;
  template <std::same_as<bool> TBoolean> // and nothing that converts to bool
  Variant(TBoolean Value) : FValue(Value) {}
  template <WholeNumber TInteger>
  Variant(TInteger Value);
  template <std::floating_point TReal>
  Variant(TReal Value) : FValue(static_cast<double>(Value)) {}
  Variant(std::string Value) : FValue(std::move(Value)) {}
  Variant(std::string_view Value) : FValue(std::string(Value)) {}
  template <std::same_as<char> TCharacter>
  Variant(TCharacter Value) : FValue(std::string(1, Value)) {}
  /// Raises std::invalid_argument for nullptr.
  Variant(const char* Value);
  Variant(std::nullptr_t) = delete;

  TVariantKind Kind() const { return static_cast<TVariantKind>(FValue.index()); }
  bool IsEmpty() const { return Kind() == vkEmpty; }

  // Each conversion raises std::invalid_argument for a text that stands for no such value, and
  // std::out_of_range for a number that the target does not hold; the message names value and target.

  /// A number is true unless it is 0.
  bool AsBoolean() const {
    const bool* const Value = std::get_if<bool>(&FValue);
    return Value != nullptr ? *Value : ConvertedToBoolean();
  }
  /// Halves are rounded to the even number. NaN raises std::out_of_range.
  std::int64_t AsInteger() const;
  double AsReal() const;
  std::string AsText() const;

  friend Variant operator+(const Variant& Left, const Variant& Right);
  friend Variant operator-(const Variant& Left, const Variant& Right);
  friend Variant operator*(const Variant& Left, const Variant& Right);
  /// Real division, by the rules of IEEE: 1 / 0 is infinite.
  friend Variant operator/(const Variant& Left, const Variant& Right);
  /// The remainder of whole numbers (reals are rounded first), with the sign of `Left`. Raises
  /// std::domain_error when `Right` is 0.
  friend Variant operator%(const Variant& Left, const Variant& Right);
  friend Variant operator-(const Variant& Value);
  Variant& operator+=(const Variant& Right) { return *this = *this + Right; }
  Variant& operator-=(const Variant& Right) { return *this = *this - Right; }
  Variant& operator*=(const Variant& Right) { return *this = *this * Right; }
  Variant& operator/=(const Variant& Right) { return *this = *this / Right; }
  Variant& operator%=(const Variant& Right) { return *this = *this % Right; }

  friend bool operator==(const Variant& Left, const Variant& Right) { return std::is_eq(Left <=> Right); }
  friend std::partial_ordering operator<=>(const Variant& Left, const Variant& Right);

  /// The value as text.
  friend std::ostream& operator<<(std::ostream& Stream, const Variant& Value);

private:
  friend struct TVariantNumber;

  bool ConvertedToBoolean() const;

  // In the order of the kinds.
  std::variant<std::monostate, bool, std::int64_t, double, std::string> FValue;
};

// A whole number beyond 64 signed bits is held as a real one.
template <WholeNumber TInteger>
Variant::Variant(TInteger Value) {
  if (std::in_range<std::int64_t>(Value)) {
    FValue = static_cast<std::int64_t>(Value);
  } else {
    FValue = static_cast<double>(Value);
  }
}

} // namespace qx
