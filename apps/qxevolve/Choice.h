#pragma once

#include <qx/symbolic_regression/SymbolicRegression.h>

namespace qxevolve {

/// Size of the formula of the front that is worth its size. With test rows it is the smallest one whose error
/// on them is at most a tenth above the least. Without, the one at which the logarithm of the unexplained
/// variance falls most for each node that it has more than the one before (after Cranmer 2023). 0 when the
/// front is empty.
int ChosenSize(qx::TQXSymbolicRegression& Regression);

} // namespace qxevolve
