#pragma once

#include <qx/program_trees/QXGenerics.GeneticProgramEngine.h>

#include <string>

namespace qx {

/// A program as people write it, as in "x * sqrt(x) + 1". Instructions that have the names of standard ones
/// (see StandardInstructions.h) are shown as operators: + - * / ^, the comparisons, and, or, not; all others
/// as calls, with their names in small letters. A node that lacks arguments is shown as a call of those that
/// it has, and one without instruction as "nil".
std::string InfixText(const generics::TQXGPNode<TGAFloat>& Program);
std::string InfixText(const generics::TQXGPNode<Variant>& Program);

} // namespace qx
