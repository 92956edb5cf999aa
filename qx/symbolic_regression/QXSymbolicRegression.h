#pragma once

// Symbolic regression: data, formulas found for a column of them, and those in several languages.

#include <qx/symbolic_regression/BatchEvaluator.h>
#include <qx/symbolic_regression/DataSet.h>
#include <qx/symbolic_regression/Formula.h>
#include <qx/symbolic_regression/SymbolicRegression.h>
