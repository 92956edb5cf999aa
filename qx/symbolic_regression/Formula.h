#pragma once

#include <qx/genetic_programming/GPFloat.h>
#include <qx/symbolic_regression/BlockKernels.h>
#include <qx/symbolic_regression/RegressionModel.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qx {

/// Languages that a formula is written in.
enum TFormulaStyle : std::uint8_t {
  /// As in "2 * x1 + sin(x2)".
  fsInfix,
  /// For math mode.
  fsLaTeX,
  /// A function of doubles, and before it those that protect its operations, as source for any C++ compiler.
  fsCpp,
  /// The same over arrays of NumPy, or numbers.
  fsPython,
  /// A graph for Graphviz: the tree.
  fsDOT
};

/// A program as a formula that stands by itself: it refers to no instruction and can be simplified and
/// written in several languages. Standard instructions are known by what they do; any other is a call of a
/// function of its name.
///
///     qx::TQXFormula formula(*regression.BestModel());
///     std::cout << formula.Simplify().Text(qx::fsInfix);
///
/// Numbers are written with the digits that read back to the same double, with a decimal point. In C++ and
/// Python names that are no identifiers there become some, in infix notation they stand between backticks, in
/// LaTeX they are text. In Python, functions of the host's get arrays.
class TQXFormula {
public:
  using TNode = generics::TQXGPNode<TGAFloat>;

  /// Variables have the names of their columns. Raises EGPException for a node without instruction or with
  /// fewer children than its function has arguments.
  explicit TQXFormula(const TNode& Program, const TLinearScaling& Scaling = {},
                      const TColumnNames* ColumnNames = nullptr);
  explicit TQXFormula(const TRegressionModel& Model)
      : TQXFormula(*Model.Program, Model.Scaling, Model.ColumnNames.get()) {}

  /// Computes what is constant and leaves out what changes nothing, without a change of any value but perhaps
  /// the sign of a zero: rules of algebra that hold for real numbers but not for rounded, infinite or
  /// protected ones are not applied. So x * 0 stays, for x may be infinite; x / 0 is 1, as protected division
  /// has it.
  TQXFormula& Simplify();

  /// Rounds its constants to so many significant digits, 1 to 17, for people to read; its values change by
  /// as much.
  TQXFormula& RoundConstants(int Digits);

  /// Number of its operations, variables and constants.
  int Size() const;
  /// The names of the variables in it, in the order of their instructions: for `SetData`, that of
  /// the columns.
  std::vector<std::string> Variables() const;
  /// `Name` is that of the function in C++ and Python, whose parameters are the variables, and of the graph.
  /// A comment in C++, the docstring in Python, tells which column each parameter stands for.
  std::string Text(TFormulaStyle Style, std::string_view Name = "formula") const;

  /// What a term is.
  enum TKind : std::uint8_t { Constant, Variable, Operation, Call };
  struct TTerm {
    TKind Kind = Constant;
    TBlockOperation Operator = boCopy; // of an operation: a standard instruction
    double Value = 0;                  // of a constant
    std::string Name;                  // of a variable or a call
    std::vector<std::size_t> Arguments;

    bool operator==(const TTerm& Other) const;
  };
  /// All terms, each after its arguments; the last one is the formula. Terms that are alike are one.
  const std::vector<TTerm>& Terms() const { return FTerms; }

private:
  class TBuilder;

  std::vector<TTerm> FTerms;
  std::vector<std::string> FVariables; // of the program, in their order
};

} // namespace qx
