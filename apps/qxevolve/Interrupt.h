#pragma once

namespace qxevolve {

/// While it lives, the first Ctrl-C (or a request to end) is noted, and the next one ends the process as it
/// always does.
class TInterruptScope {
public:
  TInterruptScope();
  TInterruptScope(const TInterruptScope&) = delete;
  TInterruptScope& operator=(const TInterruptScope&) = delete;
  ~TInterruptScope();

  static bool IsInterrupted();
};

} // namespace qxevolve
