#pragma once

#include <stdexcept>

namespace qxevolve {

/// What the program was asked for does not fit together, or not to the files: the message says what to do.
class EUsageError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

// What the program returns.
inline constexpr int ExitGood = 0;
inline constexpr int ExitFailed = 1;
inline constexpr int ExitUsage = 2;
inline constexpr int ExitInterrupted = 130; // as shells have it, with results all the same

} // namespace qxevolve
