#pragma once

#include "Drawing.h"
#include "RunFile.h"

#include <string>
#include <vector>

namespace qxevolve {

/// A drawing for the page.
struct TFigure {
  std::string Name; // its identifier in the page
  std::string Title;
  std::string Caption;
  TDrawing Drawing;
  bool IsWide = false;
};

/// How errors, sizes, depths and diversity went over the generations; predictions and residuals; error
/// against size: by gnuplot. The best program as a tree: by Graphviz.
std::vector<TFigure> DrawFigures(const TRun& Run, qx::TQXSymbolicRegression& Regression);

} // namespace qxevolve
