#pragma once

#include "RunFile.h"

#include <optional>
#include <string>
#include <vector>

namespace qxevolve {

/// A drawing for the page: SVG, or why there is none.
struct TFigure {
  std::string Name; // its identifier in the page
  std::string Title;
  std::string Caption;
  std::optional<std::string> SVG;
  std::string Missing; // what would have drawn it
  bool IsWide = false;
};

/// How errors, sizes, depths and diversity went over the generations; predictions and residuals; error
/// against size: by gnuplot. The best program as a tree: by Graphviz.
std::vector<TFigure> DrawFigures(const TRun& Run, qx::TQXSymbolicRegression& Regression);

} // namespace qxevolve
