#include <qx/platform/Numbers.h>
#include <qx/platform/Text.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <locale>

namespace qx {

namespace {

char LowerAscii(char C) { return C >= 'A' && C <= 'Z' ? static_cast<char>(C - 'A' + 'a') : C; }

// A number with the point of the global locale.
std::string ForPeople(std::string Number) {
  const std::size_t Point = Number.find('.');
  if (Point != std::string::npos) {
    Number[Point] = std::use_facet<std::numpunct<char>>(std::locale()).decimal_point();
  }
  return Number;
}

} // namespace

bool SameText(std::string_view Left, std::string_view Right) {
  return std::equal(Left.begin(), Left.end(), Right.begin(), Right.end(),
                    [](char L, char R) { return LowerAscii(L) == LowerAscii(R); });
}

std::string_view Trimmed(std::string_view Text) {
  constexpr std::string_view Blanks = " \t\r\n";
  const std::size_t First = Text.find_first_not_of(Blanks);
  return First == std::string_view::npos ? std::string_view()
                                         : Text.substr(First, Text.find_last_not_of(Blanks) + 1 - First);
}

std::string LowerText(std::string_view Text) {
  std::string Lower(Text);
  std::transform(Lower.begin(), Lower.end(), Lower.begin(), LowerAscii);
  return Lower;
}

std::string GeneralText(float Value) { return ForPeople(NumberText(Value)); }

std::string GeneralText(double Value) {
  constexpr int Digits = 15;
  return ForPeople(NumberText(RoundedToDigits(Value, Digits)));
}

std::string FixedText(double Value) {
  constexpr int Digits = 2;
  constexpr double Tenth = 0.1; // below it two decimals are the fewer digits
  if (!std::isfinite(Value)) {
    return ForPeople(NumberText(Value));
  }
  const double Rounded = std::fabs(Value) < Tenth ? Value : RoundedToDigits(Value, Digits);
  char Buffer[32];
  if (std::fabs(Rounded) < 100) {
    return ForPeople(
        {Buffer, std::to_chars(Buffer, std::end(Buffer), Rounded, std::chars_format::fixed, Digits).ptr});
  }
  int Exponent = 0;
  const char* const End =
      std::to_chars(Buffer, std::end(Buffer), Rounded, std::chars_format::scientific, Digits - 1).ptr;
  const std::string_view Text(Buffer, End);
  const std::size_t E = Text.find('e');
  std::from_chars(Text.data() + E + 2, End, Exponent); // behind "e+"
  const std::string Places = std::to_string(Exponent);
  return ForPeople(std::string(Text.substr(0, E)) + "E+" +
                   std::string(3 - std::min<std::size_t>(Places.size(), 3), '0') + Places);
}

std::string PercentText(double Share) { return FixedText(Share * 100) + '%'; }

} // namespace qx
