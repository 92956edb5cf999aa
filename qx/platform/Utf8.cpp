#include <qx/platform/Utf8.h>

namespace qx {

namespace {

constexpr unsigned char ContinuationMask = 0xc0;
constexpr unsigned char Continuation = 0x80;
constexpr int BitsPerContinuation = 6;

struct TForm {
  std::size_t Length;
  char32_t FirstBits;
  char32_t Smallest; // a smaller code point has a shorter form
};

TForm FormOf(unsigned char First) {
  if (First < 0x80) {
    return {1, First, 0};
  }
  if (First >= 0xc2 && First < 0xe0) {
    return {2, static_cast<char32_t>(First & 0x1f), 0x80};
  }
  if (First >= 0xe0 && First < 0xf0) {
    return {3, static_cast<char32_t>(First & 0x0f), 0x800};
  }
  if (First >= 0xf0 && First < 0xf5) {
    return {4, static_cast<char32_t>(First & 0x07), 0x10000};
  }
  return {0, 0, 0};
}

} // namespace

std::optional<char32_t> NextCodePoint(std::string_view Text, std::size_t& Offset) {
  if (Offset >= Text.size()) {
    return std::nullopt;
  }
  const TForm Form = FormOf(static_cast<unsigned char>(Text[Offset]));
  if (Form.Length == 0 || Text.size() - Offset < Form.Length) {
    return std::nullopt;
  }
  char32_t CodePoint = Form.FirstBits;
  for (std::size_t I = 1; I < Form.Length; ++I) {
    const auto Byte = static_cast<unsigned char>(Text[Offset + I]);
    if ((Byte & ContinuationMask) != Continuation) {
      return std::nullopt;
    }
    CodePoint = CodePoint << BitsPerContinuation | (Byte & ~unsigned{ContinuationMask});
  }
  const bool Surrogate = CodePoint >= 0xd800 && CodePoint <= 0xdfff;
  if (CodePoint < Form.Smallest || Surrogate || CodePoint > 0x10ffff) {
    return std::nullopt;
  }
  Offset += Form.Length;
  return CodePoint;
}

void AppendCodePoint(std::string& Text, char32_t CodePoint) {
  const auto Append = [&](char32_t Marker, int Shift) {
    const char32_t Bits = CodePoint >> Shift;
    Text += static_cast<char>(Marker == Continuation ? Marker | (Bits & 0x3f) : Marker | Bits);
  };
  if (CodePoint < 0x80) {
    Append(0, 0);
  } else if (CodePoint < 0x800) {
    Append(0xc0, 6);
    Append(Continuation, 0);
  } else if (CodePoint < 0x10000) {
    Append(0xe0, 12);
    Append(Continuation, 6);
    Append(Continuation, 0);
  } else {
    Append(0xf0, 18);
    Append(Continuation, 12);
    Append(Continuation, 6);
    Append(Continuation, 0);
  }
}

} // namespace qx
