#pragma once

#include <qx/program_trees/QXGenerics.GeneticProgramEngine.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace qx {

/// Ready instructions come in groups.
enum TStandardGroup : std::uint8_t {
  /// Add, Sub, Mul, Div, AQ, Neg, Inv.
  sgArithmetic,
  /// Square, Cube, Sqrt, Cbrt, Pow.
  sgPowers,
  /// Exp, Log.
  sgExponential,
  /// Sin, Cos, Tan, Tanh.
  sgTrigonometric,
  /// Abs, Min, Max.
  sgExtremes,
  /// Less, LessOrEqual, Greater, GreaterOrEqual, Equal, NotEqual, If.
  sgComparisons,
  /// And, Or, Not, Nand, Nor, Xor, If.
  sgBoolean
};

// What they do, x, y and z being the values of the arguments. All are of one argument or two, but If, which
// has three. Nothing raises: where a function has no value for its arguments, it is protected as told; what
// is not told follows IEEE, with infinities and NaN.
//
//   Add, Sub, Mul   x + y, x - y, x y
//   Div             x / y; 1 when y is 0 (Koza 1992)
//   AQ              x / sqrt(1 + y y), the analytic quotient (Ni, Drieberg and Rockett 2013)
//   Neg, Inv        -x; 1 / x, and 1 when x is 0
//   Square, Cube    x x, x x x
//   Sqrt, Cbrt      the square root of |x|; the cube root of x
//   Pow             |x| to the power y; 0 when x is 0
//   Exp, Log        e to the power x; the natural logarithm of |x|, and 0 when x is 0 (Koza 1992)
//   Sin, Cos, Tan   of radians
//   Tanh            the hyperbolic tangent
//   Abs             |x|
//   Min, Max        y when that is less (greater), else x
//   Less, ...       x < y, x <= y, x > y, x >= y, x = y, x <> y
//   And, Or, Not    of truths; And and Or look at the second one only when the first does not decide
//   Nand, Nor, Xor  likewise
//   If              y when x is true, else z; the other one is not evaluated
//
// Truth: a float is true when it is greater than 0, and a result is 1 or 0. A variant is true as `AsBoolean`
// says, and a result is a Boolean; a variant argument that does not convert raises.

/// The names in a group, in the order in which they are added.
std::vector<std::string_view> StandardInstructionNames(TStandardGroup Group);

/// The name under which an instruction was added as a standard one, as long as it does what that does and
/// takes as many arguments, whatever it is called now; else an empty one.
std::string_view StandardInstructionName(const generics::TQXGPInstruction<TGAFloat>& Instruction);

/// Adds the instruction of that name, the case of letters aside, to a set, where it may get another name; the
/// comment tells what it does. Raises std::invalid_argument, which names it, when there is none, and
/// EGPException when the set has the name already; the set is as it was then.
generics::TQXGPInstruction<TGAFloat>& AddStandardInstruction(generics::TQXGPInstructions<TGAFloat>& Set,
                                                             std::string_view Name,
                                                             std::string_view NameInSet = {});
/// Over variants there are the arithmetic ones, Min, Max, the comparisons and the Boolean ones.
generics::TQXGPInstruction<Variant>& AddStandardInstruction(generics::TQXGPInstructions<Variant>& Set,
                                                            std::string_view Name,
                                                            std::string_view NameInSet = {});

/// Adds those of a group that the kind of program has and the set does not, by name.
void AddStandardInstructions(generics::TQXGPInstructions<TGAFloat>& Set, TStandardGroup Group);
void AddStandardInstructions(generics::TQXGPInstructions<Variant>& Set, TStandardGroup Group);

} // namespace qx
