#pragma once

#include <cstdint>

namespace qx::detail {

/// An angle less a whole number of quarter turns: `High` + `Low` radians, at most an eighth turn in
/// magnitude.
struct TReducedAngle {
  double High;
  double Low;
  std::uint64_t Turns; // the quarter turns, less whole ones
};

/// Reduces a finite angle of a million or more in magnitude, in integers, with as many digits of 1/pi as it
/// takes (Payne and Hanek 1983).
TReducedAngle ReduceHugeAngle(double Angle);

} // namespace qx::detail
