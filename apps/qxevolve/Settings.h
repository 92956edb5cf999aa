#pragma once

#include <qx/symbolic_regression/SymbolicRegression.h>

#include <string>
#include <vector>

namespace qxevolve {

/// The settings of a regression for people, a line each: as the component describes itself, with shares that
/// add up to 100% and the names of columns.
std::vector<std::string> SettingLines(const qx::TQXSymbolicRegression& Regression);

} // namespace qxevolve
