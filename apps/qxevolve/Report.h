#pragma once

#include "RunFile.h"

#include <string>

namespace qxevolve {

/// Makes the folder of a report, unless it is there, and tells whether it did. Raises std::system_error when
/// nothing can be written into it.
bool RequireReportFolder(const std::string& Folder);

/// Writes a page about a run, `report.html`, and returns its name. The page stands by itself: its figures are
/// in it. What a tool that is not installed would have drawn is named there as missing.
std::string WriteReport(const std::string& Folder, const TRun& Run, qx::TQXSymbolicRegression& Regression,
                        const qx::TQXDataSet& Table);

} // namespace qxevolve
