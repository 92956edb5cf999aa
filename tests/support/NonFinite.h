#pragma once

#include <limits>

namespace qx::tests {

inline constexpr double Infinity = std::numeric_limits<double>::infinity();
inline constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

} // namespace qx::tests
