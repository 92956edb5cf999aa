#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>

namespace qx {

// What linear programs are made of: an operation runs over a block of rows at once. The kernels exist for
// each instruction set that the processor may have, out of one source: the same operations in the same order,
// none of them contracted, so that all give the same bits.
//
// The results are those of the standard instructions, to 4 units in the last place for the functions that are
// no IEEE operation, over their whole range: zeros keep their sign, subnormal numbers are no zeros, what
// overflows is infinite, and NaN stays NaN. In single precision arguments and results are.

/// The operations of a program's steps. Those that are standard instructions come first, in their order.
enum TBlockOperation : std::uint8_t {
  boAdd,
  boSub,
  boMul,
  boDiv,
  boAQ,
  boNeg,
  boInv,
  boSquare,
  boCube,
  boSqrt,
  boCbrt,
  boPow,
  boExp,
  boLog,
  boSin,
  boCos,
  boTan,
  boTanh,
  boAbs,
  boMin,
  boMax,
  boLess,
  boLessOrEqual,
  boGreater,
  boGreaterOrEqual,
  boEqual,
  boNotEqual,
  boIf,
  boAnd,
  boOr,
  boNot,
  boNand,
  boNor,
  boXor,
  // Two operations in one step: z op (x op y), and for the last three (x op y) - z.
  boAddAdd,
  boAddSub,
  boAddMul,
  boSubAdd,
  boSubSub,
  boSubMul,
  boMulAdd,
  boMulSub,
  boMulMul,
  boAddLess,
  boSubLess,
  boMulLess,
  boCopy,
  BlockOperationCount
};

/// Rows that a kernel works on at a time: one unit is one line of the cache.
template <class T>
inline constexpr std::size_t BlockUnit = 64 / sizeof(T);

/// Rows, rounded up to whole units.
template <class T>
constexpr std::size_t PaddedRows(std::size_t Rows) {
  return (Rows + BlockUnit<T> - 1) / BlockUnit<T> * BlockUnit<T>;
}

/// An argument of a kernel: values of consecutive rows, or one unit that holds a constant and stands for all.
/// The values are aligned to 64 bytes.
template <class T>
struct TBlockOperand {
  const T* Values = nullptr;
  std::size_t Stride = 0; // from one unit to the next: `BlockUnit`, or 0 for a constant
};

/// What a kernel gets: up to three operands, and where the results go, which overlaps none of them.
template <class T>
struct TBlockArguments {
  T* Results = nullptr;
  TBlockOperand<T> X, Y, Z;
  std::size_t Units = 0;
};

template <class T>
using TBlockKernel = void (*)(const TBlockArguments<T>& Arguments);

/// Passes the derivatives of a program's value back through an operation: what it is by the result times what
/// the result is by each argument. Where a protected operation leaves its function, and where it has a step
/// or a kink, the derivative is that of what is computed there, 0 at the very place.
struct TDerivativeArguments {
  TBlockOperand<double> X, Y, Z;
  const double* Results = nullptr;
  const double* ByResult = nullptr;
  double* ByX = nullptr; // each has room for all rows, also where there is no such argument
  double* ByY = nullptr;
  double* ByZ = nullptr;
  std::size_t Units = 0;
};

using TDerivativeKernel = void (*)(const TDerivativeArguments& Arguments);

/// Predictions beside targets, in rows of which each counts with its weight; the weights of the rows that pad
/// the last unit are 0. All are aligned to 64 bytes.
template <class T>
struct TErrorRows {
  const T* Predictions = nullptr;
  const double* Targets = nullptr;
  const double* Weights = nullptr;
  std::size_t Rows = 0; // a multiple of 8
};

/// Weighted sums of deviations from two centres: of squares, of the prediction, and of products.
struct TCentredSums {
  double Squares;
  double Products;
};

/// Weighted sums of target - (offset + scale prediction): of squares and of magnitudes.
struct TResidualSums {
  double Squares;
  double Magnitudes;
};

/// Kernels for one instruction set. Sums add rows of equal place among eight first, so that the bits do not
/// depend on the instruction set.
template <class T>
struct TBlockKernels {
  std::string_view Name; // of the instruction set
  TBlockKernel<T> Operations[BlockOperationCount];
  TDerivativeKernel Derivatives[boXor + 1];
  double (*Sum)(const TErrorRows<T>& Rows); // of weighted predictions
  TCentredSums (*Centred)(const TErrorRows<T>& Rows, double PredictionCentre, double TargetCentre);
  TResidualSums (*Residuals)(const TErrorRows<T>& Rows, double Offset, double Scale);
};

namespace detail {

template <class T>
const TBlockKernels<T>& BaselineKernels();
template <class T>
const TBlockKernels<T>& AVX2Kernels();
template <class T>
const TBlockKernels<T>& AVX512Kernels();

} // namespace detail

/// The kernels of every instruction set that this processor has, the plainest first.
template <class T>
std::span<const TBlockKernels<T>* const> AllBlockKernels();

namespace detail {

// The last set that `BlockKernels` may give; tests lower it to compare whole runs.
inline std::atomic<std::size_t> LastKernels{std::numeric_limits<std::size_t>::max()};

} // namespace detail

/// The last of them.
template <class T>
const TBlockKernels<T>& BlockKernels() {
  const auto All = AllBlockKernels<T>();
  return *All[std::min(All.size() - 1, detail::LastKernels.load(std::memory_order_relaxed))];
}

template <>
std::span<const TBlockKernels<double>* const> AllBlockKernels();
template <>
std::span<const TBlockKernels<float>* const> AllBlockKernels();

/// Number of arguments of an operation.
int ArityOf(TBlockOperation Operation);
/// The name of the standard instruction that an operation is; empty for the others.
std::string_view NameOf(TBlockOperation Operation);
/// The operation that a standard instruction of floating-point programs is. Raises std::invalid_argument when
/// there is none of that name.
TBlockOperation BlockOperationOf(std::string_view Name);

} // namespace qx
