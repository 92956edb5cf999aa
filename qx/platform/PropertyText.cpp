#include <qx/platform/Numbers.h>
#include <qx/platform/PropertyText.h>
#include <qx/platform/Text.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <locale>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace qx {

namespace {

constexpr std::string_view HexDigits = "0123456789abcdef";

[[noreturn]] void Refuse(const char* Why) { throw std::invalid_argument(Why); }

std::string_view InBrackets(std::string_view Text) {
  if (Text.size() < 2 || Text.front() != '[' || Text.back() != ']') {
    Refuse("it is no list in brackets");
  }
  return Trimmed(Text.substr(1, Text.size() - 2));
}

} // namespace

std::string TakeQuoted(std::string_view& Text) {
  const auto Take = [&] {
    if (Text.empty()) {
      Refuse("the text has no closing quote");
    }
    const char C = Text.front();
    Text.remove_prefix(1);
    return C;
  };
  if (Text.empty() || Take() != '"') {
    Refuse("it is no text in quotes");
  }
  std::string Value;
  for (char C = Take(); C != '"'; C = Take()) {
    if (C != '\\') {
      Value += C;
      continue;
    }
    switch (C = Take(); C) {
    case 'n':
      Value += '\n';
      break;
    case 'r':
      Value += '\r';
      break;
    case 't':
      Value += '\t';
      break;
    case 'x': {
      const std::size_t High = HexDigits.find(Take());
      const std::size_t Low = HexDigits.find(Take());
      if (High == std::string_view::npos || Low == std::string_view::npos) {
        Refuse("\\x is followed by no two hexadecimal digits");
      }
      Value += static_cast<char>(High << 4 | Low);
      break;
    }
    case '"':
    case '\\':
      Value += C;
      break;
    default:
      Refuse("an unknown character behind a backslash");
    }
  }
  return Value;
}

int TPropertyText<int>::Parse(std::string_view Text) {
  const std::optional<std::int64_t> Value = ParseInteger(Text);
  if (!Value || !std::in_range<int>(*Value)) {
    Refuse("it is no whole number of 32 bits");
  }
  return static_cast<int>(*Value);
}

bool TPropertyText<bool>::Parse(std::string_view Text) {
  if (Text != "true" && Text != "false") {
    Refuse("it is neither true nor false");
  }
  return Text == "true";
}

float TPropertyText<float>::Parse(std::string_view Text) {
  const double Value = TPropertyText<double>::Parse(Text);
  if (std::isfinite(Value) && std::fabs(Value) > static_cast<double>(std::numeric_limits<float>::max())) {
    Refuse("it is beyond single precision");
  }
  return static_cast<float>(Value);
}

std::string TPropertyText<double>::Make(double Value) { return NumberText(Value); }

double TPropertyText<double>::Parse(std::string_view Text) {
  const std::optional<double> Value = ParseReal(Text);
  if (!Value) {
    Refuse("it is no number");
  }
  return *Value;
}

std::string TPropertyText<std::string>::Make(std::string_view Value) {
  std::string Text = "\"";
  for (const char C : Value) {
    const auto Code = static_cast<unsigned char>(C);
    switch (C) {
    case '"':
    case '\\':
      Text += '\\';
      Text += C;
      break;
    case '\n':
      Text += "\\n";
      break;
    case '\r':
      Text += "\\r";
      break;
    case '\t':
      Text += "\\t";
      break;
    default:
      if (Code >= 0x20 && Code != 0x7f) {
        Text += C;
      } else {
        Text += "\\x";
        Text += HexDigits[Code >> 4];
        Text += HexDigits[Code & 0xf];
      }
    }
  }
  Text += '"';
  return Text;
}

std::string TPropertyText<std::string>::Parse(std::string_view Text) {
  std::string Value = TakeQuoted(Text);
  if (!Text.empty()) {
    Refuse("something stands behind the closing quote");
  }
  return Value;
}

std::string TPropertyText<std::vector<std::string>>::Make(const std::vector<std::string>& Values) {
  std::string Text = "[";
  for (const std::string& Value : Values) {
    Text += (Text.size() > 1 ? " " : "") + TPropertyText<std::string>::Make(Value);
  }
  return Text + ']';
}

std::vector<std::string> TPropertyText<std::vector<std::string>>::Parse(std::string_view Text) {
  Text = InBrackets(Text);
  std::vector<std::string> Values;
  while (!Text.empty()) {
    Values.push_back(TakeQuoted(Text));
    Text = Trimmed(Text);
  }
  return Values;
}

std::vector<std::string_view> WordsInBrackets(std::string_view Text) {
  Text = InBrackets(Text);
  std::vector<std::string_view> Words;
  while (!Text.empty()) {
    Words.push_back(Text.substr(0, Text.find(' ')));
    Text.remove_prefix(Words.back().size());
    Text.remove_prefix(std::min(Text.find_first_not_of(' '), Text.size()));
  }
  return Words;
}

std::string TPropertyText<Variant>::Make(const Variant& Value) {
  switch (Value.Kind()) {
  case vkEmpty:
    return "empty";
  case vkText:
    return TPropertyText<std::string>::Make(Value.AsText());
  case vkReal: {
    std::string Text = NumberText(Value.AsReal());
    const bool LooksWhole = Text.find_first_not_of("-0123456789") == std::string::npos;
    return LooksWhole ? Text + ".0" : Text;
  }
  case vkBoolean:
  case vkInteger:
    break;
  }
  return Value.AsText();
}

Variant TPropertyText<Variant>::Parse(std::string_view Text) {
  if (Text == "empty") {
    return {};
  }
  if (Text == "true" || Text == "false") {
    return Text == "true";
  }
  if (!Text.empty() && Text.front() == '"') {
    return TPropertyText<std::string>::Parse(Text);
  }
  if (const std::optional<std::int64_t> Whole = ParseInteger(Text)) {
    return *Whole;
  }
  return TPropertyText<double>::Parse(Text);
}

std::string TPropertyText<TQXRandomState>::Make(const TQXRandomState& Value) {
  std::ostringstream Stream;
  Stream.imbue(std::locale::classic());
  Stream << Value;
  return Stream.str();
}

TQXRandomState TPropertyText<TQXRandomState>::Parse(std::string_view Text) {
  std::istringstream Stream{std::string(Text)};
  Stream.imbue(std::locale::classic());
  TQXRandomState State{};
  const bool HasSigns = Text.find_first_not_of("0123456789 ") != std::string_view::npos; // a minus would wrap
  if (HasSigns || !(Stream >> State) || !(Stream >> std::ws).eof()) {
    Refuse("it is no state of the random generator");
  }
  return State;
}

} // namespace qx
