#pragma once

#include "RunFile.h"

#include <string>

namespace qxevolve {

// What `--json` prints: each a line.

std::string RecordJSON(const qx::TRegressionRecord& Record, double RunError, int RunSize);
/// Of a run that has found something.
std::string ResultJSON(const TRun& Run, qx::TQXSymbolicRegression& Regression, const std::string& EndedBy);

} // namespace qxevolve
