#pragma once

#include <optional>
#include <string>

namespace qxevolve {

/// What a tool ("gnuplot", "dot -Tsvg") writes for a file of that content, or nothing when it is not
/// installed or fails.
std::optional<std::string> Draw(const std::string& Tool, const std::string& Content);

/// Makes a drawing a part of a page: no prologue, identifiers of its own, and the page's text colour in place
/// of black.
std::string PartOfPage(const std::string& SVG, const std::string& Name);

} // namespace qxevolve
