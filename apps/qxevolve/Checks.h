#pragma once

// Checks of what options are given, with messages for people.

#include <qx/platform/Numbers.h>

#include <CLI/CLI.hpp>
#include <string>

namespace qxevolve {

inline CLI::Validator NumberCheck(bool ZeroToo) {
  return {[=](std::string& Text) {
            const auto Value = qx::ParseReal(Text);
            if (Value && (*Value > 0 || (ZeroToo && *Value == 0))) {
              return std::string();
            }
            return Text + (ZeroToo ? " is not a number from 0 on" : " is not a number above 0");
          },
          "NUMBER"};
}
inline CLI::Validator IsPositive() { return NumberCheck(false); }
inline CLI::Validator IsNotNegative() { return NumberCheck(true); }

} // namespace qxevolve
