#pragma once

#include "RegressOptions.h"

#include <string>
#include <vector>

namespace qxevolve {

/// Runs `qxevolve regress` and returns the exit code. `Command` is what repeats it.
int Regress(const TRegressOptions& Options, std::vector<std::string> Command);

} // namespace qxevolve
