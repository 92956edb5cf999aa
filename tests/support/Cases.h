#pragma once

namespace qx::tests {

/// How many random cases a test tries: all of them in the thorough builds, so many as a change is soon proven
/// with in the others.
constexpr int Cases(int All, int Quick) {
#ifdef QX_THOROUGH_TESTS
  static_cast<void>(Quick);
  return All;
#else
  static_cast<void>(All);
  return Quick;
#endif
}

} // namespace qx::tests
