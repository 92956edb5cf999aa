#pragma once

// Checks of what options are given, with messages for people.

#include <qx/platform/Numbers.h>

#include <CLI/CLI.hpp>
#include <cstdint>
#include <fmt/format.h>
#include <limits>
#include <string>

namespace qxevolve {

inline CLI::Validator IsPositive() {
  return {[](std::string& Text) {
            const auto Value = qx::ParseReal(Text);
            return Value && *Value > 0 ? std::string() : Text + " is no number above 0";
          },
          ""};
}

/// A number within bounds, which belong to it.
inline CLI::Validator IsWithin(double Least, double Greatest = std::numeric_limits<double>::max()) {
  return {[=](std::string& Text) {
            const auto Value = qx::ParseReal(Text);
            if (Value && *Value >= Least && *Value <= Greatest) {
              return std::string();
            }
            return Greatest < std::numeric_limits<double>::max()
                       ? fmt::format("{} is no number from {} to {}", Text, Least, Greatest)
                       : fmt::format("{} is no number from {} on", Text, Least);
          },
          ""};
}

/// A whole number within bounds, which belong to it.
inline CLI::Validator IsWhole(std::int64_t Least, std::int64_t Greatest = std::numeric_limits<int>::max()) {
  return {[=](std::string& Text) {
            const auto Value = qx::ParseInteger(Text);
            return Value && *Value >= Least && *Value <= Greatest
                       ? std::string()
                       : fmt::format("{} is no whole number from {} to {}", Text, Least, Greatest);
          },
          ""};
}

} // namespace qxevolve
