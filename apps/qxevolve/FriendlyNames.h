#pragma once

// The library's enumerations as words of the command line: bsSizeFairCrossover is "size-fair-crossover".

#include <qx/foundation/QXGAConsts.h>
#include <qx/symbolic_regression/ErrorMeasure.h>

#include <cctype>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace qxevolve {

/// Without the two letters of the enumeration, in lower case, with a hyphen before each word.
inline std::string FriendlyName(std::string_view Name) {
  std::string Text;
  bool AfterLower = false;
  for (const char C : Name.substr(2)) {
    const auto Letter = static_cast<unsigned char>(C);
    Text += std::isupper(Letter) != 0 && AfterLower ? "-" : "";
    Text += static_cast<char>(std::tolower(Letter));
    AfterLower = std::islower(Letter) != 0;
  }
  return Text;
}

template <class TEnum>
std::map<std::string, TEnum> FriendlyNames() {
  std::map<std::string, TEnum> Names;
  const auto All = qx::EnumNames<TEnum>();
  for (std::size_t I = 0; I < All.size(); ++I) {
    Names.emplace(FriendlyName(All[I]), static_cast<TEnum>(I));
  }
  return Names;
}

template <class TEnum>
std::string FriendlyNameOf(TEnum Value) {
  return FriendlyName(qx::EnumName(Value));
}

} // namespace qxevolve
