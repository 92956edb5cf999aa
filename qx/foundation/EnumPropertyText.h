#pragma once

// The library's enumerations, and sets of them, as values of properties.

#include <qx/foundation/QXGAConsts.h>
#include <qx/platform/PropertyText.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

namespace qx {

/// The value's name: fmMaximize.
template <class TEnum>
requires std::is_enum_v<TEnum>
struct TPropertyText<TEnum> {
  static std::string Make(TEnum Value) { return std::string(EnumName(Value)); }
  static TEnum Parse(std::string_view Text) {
    const auto Value = EnumValue<TEnum>(Text);
    if (!Value) {
      throw std::invalid_argument('"' + std::string(Text) + "\" is no value of the enumeration");
    }
    return *Value;
  }
};

/// The names in brackets: [goCrossover goMutate].
template <class TEnum>
struct TPropertyText<TEnumSet<TEnum>> {
  static std::string Make(TEnumSet<TEnum> Value) {
    std::string Text = "[";
    const auto Names = EnumNames<TEnum>();
    for (std::size_t I = 0; I < Names.size(); ++I) {
      if (Value.Contains(static_cast<TEnum>(I))) {
        Text += (Text.size() > 1 ? " " : "") + std::string(Names[I]);
      }
    }
    return Text + ']';
  }
  static TEnumSet<TEnum> Parse(std::string_view Text) {
    TEnumSet<TEnum> Value;
    for (const std::string_view Name : WordsInBrackets(Text)) {
      Value.Include(TPropertyText<TEnum>::Parse(Name));
    }
    return Value;
  }
};

} // namespace qx
