// The loops of the block kernels. Each source that includes this text defines QX_KERNEL_SET, the name of the
// function that returns its kernels, and QX_KERNEL_NAME; it is compiled for the instruction set of that name.

#include <qx/symbolic_regression/BlockKernels.h>
#include <qx/symbolic_regression/HugeAngle.h>

#include <cstddef>
#include <cstdint>

namespace qx::detail {

namespace {

#include <qx/symbolic_regression/BlockFunctions.ipp>

// --- Operations on one row ---------------------------------------------------------------------------------

constexpr auto AddOf = [](auto X, auto Y) { return X + Y; };
constexpr auto SubOf = [](auto X, auto Y) { return X - Y; };
constexpr auto MulOf = [](auto X, auto Y) { return X * Y; };
constexpr auto DivOf = [](auto X, auto Y) {
  const auto Quotient = X / Y;
  return Y == 0 ? decltype(X)(1) : Quotient;
};
constexpr auto AQOf = [](auto X, auto Y) {
  const double Real = Y;
  return static_cast<decltype(X)>(X / SquareRoot(1 + Real * Real));
};
constexpr auto NegOf = [](auto X) { return -X; };
constexpr auto InvOf = [](auto X) {
  const auto Inverse = 1 / X;
  return X == 0 ? decltype(X)(1) : Inverse;
};
constexpr auto SquareOf = [](auto X) { return X * X; };
constexpr auto CubeOf = [](auto X) { return X * X * X; };
constexpr auto SqrtOf = [](auto X) { return SquareRoot(Magnitude(X)); };
constexpr auto CbrtOf = [](auto X) { return static_cast<decltype(X)>(Cbrt(static_cast<double>(X))); };
constexpr auto PowOf = [](auto X, auto Y) { return Pow(X, Y); };
constexpr auto ExpOf = [](auto X) { return Exp(X); };
constexpr auto LogOf = [](auto X) { return Log(X); };
constexpr auto SinOf = [](auto X) { return Sin(X); };
constexpr auto CosOf = [](auto X) { return Cos(X); };
constexpr auto TanOf = [](auto X) { return static_cast<decltype(X)>(Tan(static_cast<double>(X))); };
constexpr auto TanhOf = [](auto X) { return static_cast<decltype(X)>(Tanh(static_cast<double>(X))); };
constexpr auto AbsOf = [](auto X) { return Magnitude(X); };
constexpr auto MinOf = [](auto X, auto Y) { return Y < X ? Y : X; };
constexpr auto MaxOf = [](auto X, auto Y) { return Y > X ? Y : X; };

constexpr auto Truth = [](bool Value, auto Like) { return Value ? decltype(Like)(1) : decltype(Like)(0); };
constexpr auto LessOf = [](auto X, auto Y) { return Truth(X < Y, X); };
constexpr auto LessOrEqualOf = [](auto X, auto Y) { return Truth(X <= Y, X); };
constexpr auto GreaterOf = [](auto X, auto Y) { return Truth(X > Y, X); };
constexpr auto GreaterOrEqualOf = [](auto X, auto Y) { return Truth(X >= Y, X); };
constexpr auto EqualOf = [](auto X, auto Y) { return Truth(X == Y, X); };
constexpr auto NotEqualOf = [](auto X, auto Y) { return Truth(X != Y, X); };
constexpr auto IfOf = [](auto X, auto Y, auto Z) { return X > 0 ? Y : Z; };
constexpr auto AndOf = [](auto X, auto Y) { return Truth((X > 0) & (Y > 0), X); };
constexpr auto OrOf = [](auto X, auto Y) { return Truth((X > 0) | (Y > 0), X); };
constexpr auto NotOf = [](auto X) { return Truth(!(X > 0), X); };
constexpr auto NandOf = [](auto X, auto Y) { return Truth(!((X > 0) & (Y > 0)), X); };
constexpr auto NorOf = [](auto X, auto Y) { return Truth(!((X > 0) | (Y > 0)), X); };
constexpr auto XorOf = [](auto X, auto Y) { return Truth((X > 0) != (Y > 0), X); };

constexpr auto AddAddOf = [](auto X, auto Y, auto Z) { return Z + (X + Y); };
constexpr auto AddSubOf = [](auto X, auto Y, auto Z) { return Z + (X - Y); };
constexpr auto AddMulOf = [](auto X, auto Y, auto Z) { return Z + X * Y; };
constexpr auto SubAddOf = [](auto X, auto Y, auto Z) { return Z - (X + Y); };
constexpr auto SubSubOf = [](auto X, auto Y, auto Z) { return Z - (X - Y); };
constexpr auto SubMulOf = [](auto X, auto Y, auto Z) { return Z - X * Y; };
constexpr auto MulAddOf = [](auto X, auto Y, auto Z) { return Z * (X + Y); };
constexpr auto MulSubOf = [](auto X, auto Y, auto Z) { return Z * (X - Y); };
constexpr auto MulMulOf = [](auto X, auto Y, auto Z) { return Z * (X * Y); };
constexpr auto AddLessOf = [](auto X, auto Y, auto Z) { return (X + Y) - Z; };
constexpr auto SubLessOf = [](auto X, auto Y, auto Z) { return (X - Y) - Z; };
constexpr auto MulLessOf = [](auto X, auto Y, auto Z) { return X * Y - Z; };
constexpr auto CopyOf = [](auto X) { return X; };

// --- Loops over rows ---------------------------------------------------------------------------------------

template <class TOperation, class T>
void OverRows(const TBlockArguments<T>& Arguments) {
  constexpr TOperation Operation{};
  constexpr std::size_t Unit = BlockUnit<T>;
  T* __restrict Results = Arguments.Results;
  const T* X = Arguments.X.Values;
  const T* Y = Arguments.Y.Values;
  const T* Z = Arguments.Z.Values;
  for (std::size_t I = 0; I < Arguments.Units; ++I) {
    for (std::size_t Lane = 0; Lane < Unit; ++Lane) {
      if constexpr (requires { Operation(T()); }) {
        Results[Lane] = Operation(X[Lane]);
      } else if constexpr (requires { Operation(T(), T()); }) {
        Results[Lane] = Operation(X[Lane], Y[Lane]);
      } else {
        Results[Lane] = Operation(X[Lane], Y[Lane], Z[Lane]);
      }
    }
    Results += Unit;
    X += Arguments.X.Stride;
    Y += Arguments.Y.Stride;
    Z += Arguments.Z.Stride;
  }
}

template <class T>
bool AnyHugeAngle(const TBlockArguments<T>& Arguments) {
  constexpr std::size_t Unit = BlockUnit<T>;
  const T* X = Arguments.X.Values;
  TBitsOf<T> Huge[Unit] = {};
  for (std::size_t I = 0; I < Arguments.Units; ++I) {
    for (std::size_t Lane = 0; Lane < Unit; ++Lane) {
      Huge[Lane] |= IsHugeAngle(X[Lane]) ? 1 : 0;
    }
    X += Arguments.X.Stride;
  }
  TBitsOf<T> Any = 0;
  for (std::size_t Lane = 0; Lane < Unit; ++Lane) {
    Any |= Huge[Lane];
  }
  return Any != 0;
}

// Functions of an angle, of which few are huge.
template <class TOperation, double (*OfHuge)(double), class T>
void OverAngles(const TBlockArguments<T>& Arguments) {
  OverRows<TOperation>(Arguments);
  if (!AnyHugeAngle(Arguments)) [[likely]] {
    return;
  }
  constexpr std::size_t Unit = BlockUnit<T>;
  for (std::size_t I = 0; I < Arguments.Units * Unit; ++I) {
    const T X = Arguments.X.Values[I / Unit * Arguments.X.Stride + I % Unit];
    if (IsHugeAngle(X)) {
      Arguments.Results[I] = static_cast<T>(OfHuge(static_cast<double>(X)));
    }
  }
}

// --- Sums --------------------------------------------------------------------------------------------------

constexpr std::size_t SumLanes = 8;
using TSumLanes = double __attribute__((vector_size(SumLanes * sizeof(double))));

[[gnu::always_inline]] inline double Total(const TSumLanes& Lanes) {
  return ((Lanes[0] + Lanes[4]) + (Lanes[2] + Lanes[6])) + ((Lanes[1] + Lanes[5]) + (Lanes[3] + Lanes[7]));
}

template <class T>
[[gnu::always_inline]] inline void LoadLanes(TSumLanes& Lanes, const T* Values) {
  for (std::size_t Lane = 0; Lane < SumLanes; ++Lane) {
    Lanes[Lane] = static_cast<double>(Values[Lane]);
  }
}

template <class T>
double Sum(const TErrorRows<T>& Rows) {
  TSumLanes Sums{};
  TSumLanes Prediction{};
  TSumLanes Weight{};
  for (std::size_t Row = 0; Row < Rows.Rows; Row += SumLanes) {
    LoadLanes(Prediction, Rows.Predictions + Row);
    LoadLanes(Weight, Rows.Weights + Row);
    Sums += Weight * Prediction;
  }
  return Total(Sums);
}

template <class T>
TCentredSums Centred(const TErrorRows<T>& Rows, double PredictionCentre, double TargetCentre) {
  TSumLanes Squares{};
  TSumLanes Products{};
  TSumLanes Prediction{};
  TSumLanes Target{};
  TSumLanes Weight{};
  for (std::size_t Row = 0; Row < Rows.Rows; Row += SumLanes) {
    LoadLanes(Prediction, Rows.Predictions + Row);
    LoadLanes(Target, Rows.Targets + Row);
    LoadLanes(Weight, Rows.Weights + Row);
    const TSumLanes Deviation = Prediction - PredictionCentre;
    const TSumLanes Weighted = Weight * Deviation;
    Squares += Weighted * Deviation;
    Products += Weighted * (Target - TargetCentre);
  }
  return {Total(Squares), Total(Products)};
}

template <class T>
TResidualSums Residuals(const TErrorRows<T>& Rows, double Offset, double Scale) {
  TSumLanes Squares{};
  TSumLanes Magnitudes{};
  TSumLanes Prediction{};
  TSumLanes Target{};
  TSumLanes Weight{};
  for (std::size_t Row = 0; Row < Rows.Rows; Row += SumLanes) {
    LoadLanes(Prediction, Rows.Predictions + Row);
    LoadLanes(Target, Rows.Targets + Row);
    LoadLanes(Weight, Rows.Weights + Row);
    const TSumLanes Residual = Target - (Offset + Scale * Prediction);
    const TSumLanes Weighted = Weight * Residual;
    Squares += Weighted * Residual;
    Magnitudes += Residual < 0 ? -Weighted : Weighted;
  }
  return {Total(Squares), Total(Magnitudes)};
}

// --- The table ---------------------------------------------------------------------------------------------

template <class T, class TOperation>
constexpr TBlockKernel<T> Rows(TOperation /*Operation*/) {
  return &OverRows<TOperation, T>;
}

template <class T>
constexpr TBlockKernels<T> Kernels = {QX_KERNEL_NAME,
                                      {Rows<T>(AddOf),
                                       Rows<T>(SubOf),
                                       Rows<T>(MulOf),
                                       Rows<T>(DivOf),
                                       Rows<T>(AQOf),
                                       Rows<T>(NegOf),
                                       Rows<T>(InvOf),
                                       Rows<T>(SquareOf),
                                       Rows<T>(CubeOf),
                                       Rows<T>(SqrtOf),
                                       Rows<T>(CbrtOf),
                                       Rows<T>(PowOf),
                                       Rows<T>(ExpOf),
                                       Rows<T>(LogOf),
                                       &OverAngles<decltype(SinOf), SinOfHuge, T>,
                                       &OverAngles<decltype(CosOf), CosOfHuge, T>,
                                       &OverAngles<decltype(TanOf), TanOfHuge, T>,
                                       Rows<T>(TanhOf),
                                       Rows<T>(AbsOf),
                                       Rows<T>(MinOf),
                                       Rows<T>(MaxOf),
                                       Rows<T>(LessOf),
                                       Rows<T>(LessOrEqualOf),
                                       Rows<T>(GreaterOf),
                                       Rows<T>(GreaterOrEqualOf),
                                       Rows<T>(EqualOf),
                                       Rows<T>(NotEqualOf),
                                       Rows<T>(IfOf),
                                       Rows<T>(AndOf),
                                       Rows<T>(OrOf),
                                       Rows<T>(NotOf),
                                       Rows<T>(NandOf),
                                       Rows<T>(NorOf),
                                       Rows<T>(XorOf),
                                       Rows<T>(AddAddOf),
                                       Rows<T>(AddSubOf),
                                       Rows<T>(AddMulOf),
                                       Rows<T>(SubAddOf),
                                       Rows<T>(SubSubOf),
                                       Rows<T>(SubMulOf),
                                       Rows<T>(MulAddOf),
                                       Rows<T>(MulSubOf),
                                       Rows<T>(MulMulOf),
                                       Rows<T>(AddLessOf),
                                       Rows<T>(SubLessOf),
                                       Rows<T>(MulLessOf),
                                       Rows<T>(CopyOf)},
                                      &Sum<T>,
                                      &Centred<T>,
                                      &Residuals<T>};

} // namespace

template <>
const TBlockKernels<double>& QX_KERNEL_SET<double>() {
  return Kernels<double>;
}
template <>
const TBlockKernels<float>& QX_KERNEL_SET<float>() {
  return Kernels<float>;
}

} // namespace qx::detail
