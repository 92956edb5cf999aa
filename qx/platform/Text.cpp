#include <qx/platform/Text.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <locale>

namespace qx {

namespace {

char LowerAscii(char C) { return C >= 'A' && C <= 'Z' ? static_cast<char>(C - 'A' + 'a') : C; }

} // namespace

bool SameText(std::string_view Left, std::string_view Right) {
  return std::equal(Left.begin(), Left.end(), Right.begin(), Right.end(),
                    [](char L, char R) { return LowerAscii(L) == LowerAscii(R); });
}

std::string GeneralText(float Value) {
  constexpr float PlainFrom = 1e-4F;
  constexpr float PlainBelow = 1e15F;
  const float Size = std::fabs(Value);
  const bool Plain = Size == 0 || (Size >= PlainFrom && Size < PlainBelow);
  char Buffer[64];
  const auto End = std::to_chars(Buffer, Buffer + sizeof Buffer, Value,
                                 Plain ? std::chars_format::fixed : std::chars_format::scientific)
                       .ptr;
  std::string Text(Buffer, End);
  const std::size_t Point = Text.find('.');
  if (Point != std::string::npos) {
    Text[Point] = std::use_facet<std::numpunct<char>>(std::locale()).decimal_point();
  }
  return Text;
}

} // namespace qx
