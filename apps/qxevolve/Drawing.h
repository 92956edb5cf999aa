#pragma once

#include <optional>
#include <string>

namespace qxevolve {

/// What a tool ("gnuplot", "dot -Tsvg") writes for a file of that content.
struct TDrawing {
  std::optional<std::string> SVG;
  std::string Missing; // why there is none, as in "gnuplot is not installed"
};
TDrawing Draw(const std::string& Tool, const std::string& Content);

/// Makes a drawing a part of a page: no prologue, identifiers of its own, and the page's text colour in place
/// of black.
std::string PartOfPage(const std::string& SVG, const std::string& Name);

} // namespace qxevolve
