#include <qx/platform/Numbers.h>
#include <qx/platform/Text.h>
#include <qx/platform/Variant.h>

#include <cmath>
#include <limits>
#include <optional>
#include <ostream>
#include <stdexcept>

namespace qx {

// What a variant is in arithmetic: a whole number, or else a real one.
struct TVariantNumber {
  bool IsWhole;
  std::int64_t Whole;
  double Real;

  static TVariantNumber OfWhole(std::int64_t Value) { return {true, Value, static_cast<double>(Value)}; }
  static TVariantNumber OfReal(double Value) { return {false, 0, Value}; }

  /// Nothing for a text that stands for no number.
  static std::optional<TVariantNumber> Of(const Variant& Value) {
    switch (Value.Kind()) {
    case vkBoolean:
      return OfWhole(std::get<bool>(Value.FValue) ? 1 : 0);
    case vkInteger:
      return OfWhole(std::get<std::int64_t>(Value.FValue));
    case vkReal:
      return OfReal(std::get<double>(Value.FValue));
    case vkText: {
      const auto& Text = std::get<std::string>(Value.FValue);
      if (const auto Whole = ParseInteger(Text)) {
        return OfWhole(*Whole);
      }
      const auto Real = ParseReal(Text);
      return Real ? std::optional(OfReal(*Real)) : std::nullopt;
    }
    case vkEmpty:
      break;
    }
    return OfWhole(0);
  }
};

namespace {

std::string Named(const Variant& Value) {
  return Value.Kind() == vkText ? '"' + Value.AsText() + '"' : Value.AsText();
}

TVariantNumber Number(const Variant& Value, const char* Target) {
  const auto Found = TVariantNumber::Of(Value);
  if (!Found) {
    throw std::invalid_argument(Named(Value) + " cannot be converted to a " + Target);
  }
  return *Found;
}

constexpr char RealTarget[] = "real number";
constexpr char WholeTarget[] = "whole number";
constexpr char BooleanTarget[] = "Boolean";

// `OnWhole(L, R, &Result)` tells whether the result does not fit.
template <class TOnWhole, class TOnReal>
Variant Calculate(const Variant& Left, const Variant& Right, TOnWhole OnWhole, TOnReal OnReal) {
  const TVariantNumber L = Number(Left, RealTarget);
  const TVariantNumber R = Number(Right, RealTarget);
  std::int64_t Result = 0;
  if (L.IsWhole && R.IsWhole && !OnWhole(L.Whole, R.Whole, &Result)) {
    return Result;
  }
  return OnReal(L.Real, R.Real);
}

// Exact, though no type holds all values of both.
std::partial_ordering Compare(std::int64_t Whole, double Real) {
  constexpr double Beyond = 0x1p63;
  if (std::isnan(Real)) {
    return std::partial_ordering::unordered;
  }
  if (Real >= Beyond) {
    return std::partial_ordering::less;
  }
  if (Real < -Beyond) {
    return std::partial_ordering::greater;
  }
  const double Floor = std::floor(Real);
  const auto WholeFloor = static_cast<std::int64_t>(Floor);
  if (Whole != WholeFloor) {
    return Whole <=> WholeFloor;
  }
  return Floor < Real ? std::partial_ordering::less : std::partial_ordering::equivalent;
}

std::partial_ordering Compare(const TVariantNumber& Left, const TVariantNumber& Right) {
  if (Left.IsWhole && Right.IsWhole) {
    return Left.Whole <=> Right.Whole;
  }
  if (Left.IsWhole) {
    return Compare(Left.Whole, Right.Real);
  }
  if (Right.IsWhole) {
    const std::partial_ordering Reversed = Compare(Right.Whole, Left.Real);
    return std::is_lt(Reversed)   ? std::partial_ordering::greater
           : std::is_gt(Reversed) ? std::partial_ordering::less
                                  : Reversed;
  }
  return Left.Real <=> Right.Real;
}

// Two texts, or a text and nothing: what is done as texts.
bool AreTexts(const Variant& Left, const Variant& Right) {
  const bool LeftFits = Left.Kind() == vkText || Left.IsEmpty();
  const bool RightFits = Right.Kind() == vkText || Right.IsEmpty();
  return LeftFits && RightFits && !(Left.IsEmpty() && Right.IsEmpty());
}

std::optional<bool> ParseBoolean(std::string_view Text) {
  Text = Trimmed(Text);
  if (SameText(Text, "true") || SameText(Text, "false")) {
    return SameText(Text, "true");
  }
  return std::nullopt;
}

} // namespace

Variant::Variant(const char* Value) {
  if (Value == nullptr) {
    throw std::invalid_argument("A null pointer is no text for a variant");
  }
  FValue = std::string(Value);
}

bool Variant::ConvertedToBoolean() const {
  if (const auto* Text = std::get_if<std::string>(&FValue)) {
    if (const auto Value = ParseBoolean(*Text)) {
      return *Value;
    }
  }
  const TVariantNumber Value = Number(*this, BooleanTarget);
  return Value.IsWhole ? Value.Whole != 0 : Value.Real != 0;
}

std::int64_t Variant::AsInteger() const {
  const TVariantNumber Value = Number(*this, WholeTarget);
  if (Value.IsWhole) {
    return Value.Whole;
  }
  constexpr double Beyond = 0x1p63;
  const double Rounded = std::nearbyint(Value.Real);
  if (!(Rounded >= -Beyond && Rounded < Beyond)) {
    throw std::out_of_range(Named(*this) + " cannot be converted to a " + WholeTarget + " of 64 bits");
  }
  return static_cast<std::int64_t>(Rounded);
}

double Variant::AsReal() const { return Number(*this, RealTarget).Real; }

std::string Variant::AsText() const {
  switch (Kind()) {
  case vkBoolean:
    return std::get<bool>(FValue) ? "true" : "false";
  case vkInteger:
    return std::to_string(std::get<std::int64_t>(FValue));
  case vkReal:
    return NumberText(std::get<double>(FValue));
  case vkText:
    return std::get<std::string>(FValue);
  case vkEmpty:
    break;
  }
  return {};
}

Variant operator+(const Variant& Left, const Variant& Right) {
  if (AreTexts(Left, Right)) {
    return Left.AsText() + Right.AsText();
  }
  return Calculate(
      Left, Right, [](auto L, auto R, auto* Result) { return __builtin_add_overflow(L, R, Result); },
      [](double L, double R) { return L + R; });
}

Variant operator-(const Variant& Left, const Variant& Right) {
  return Calculate(
      Left, Right, [](auto L, auto R, auto* Result) { return __builtin_sub_overflow(L, R, Result); },
      [](double L, double R) { return L - R; });
}

Variant operator*(const Variant& Left, const Variant& Right) {
  return Calculate(
      Left, Right, [](auto L, auto R, auto* Result) { return __builtin_mul_overflow(L, R, Result); },
      [](double L, double R) { return L * R; });
}

Variant operator/(const Variant& Left, const Variant& Right) { return Left.AsReal() / Right.AsReal(); }

Variant operator%(const Variant& Left, const Variant& Right) {
  const std::int64_t Divisor = Right.AsInteger();
  if (Divisor == 0) {
    throw std::domain_error(Named(Left) + " % " + Named(Right) + ": the remainder of a division by 0");
  }
  const std::int64_t Dividend = Left.AsInteger();
  return Divisor == -1 ? 0 : Dividend % Divisor; // the smallest number has no quotient by -1
}

Variant operator-(const Variant& Value) {
  const TVariantNumber N = Number(Value, RealTarget);
  if (N.IsWhole && N.Whole != std::numeric_limits<std::int64_t>::min()) {
    return -N.Whole;
  }
  return -N.Real;
}

std::partial_ordering operator<=>(const Variant& Left, const Variant& Right) {
  if (AreTexts(Left, Right)) {
    return Left.AsText() <=> Right.AsText();
  }
  const auto NumberBeside = [](const Variant& Value, const Variant& Other) {
    if (Value.Kind() == vkText && Other.Kind() == vkBoolean) {
      if (const auto Boolean = ParseBoolean(Value.AsText())) {
        return std::optional(TVariantNumber::OfWhole(*Boolean ? 1 : 0));
      }
    }
    return TVariantNumber::Of(Value);
  };
  const auto L = NumberBeside(Left, Right);
  const auto R = NumberBeside(Right, Left);
  return L && R ? Compare(*L, *R) : std::partial_ordering::unordered;
}

std::ostream& operator<<(std::ostream& Stream, const Variant& Value) { return Stream << Value.AsText(); }

} // namespace qx
