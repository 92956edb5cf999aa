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
constexpr auto AndOf = [](auto X, auto Y) { return Truth(X > 0 && Y > 0, X); };
constexpr auto OrOf = [](auto X, auto Y) { return Truth(X > 0 || Y > 0, X); };
constexpr auto NotOf = [](auto X) { return Truth(!(X > 0), X); };
constexpr auto NandOf = [](auto X, auto Y) { return Truth(!(X > 0 && Y > 0), X); };
constexpr auto NorOf = [](auto X, auto Y) { return Truth(!(X > 0 || Y > 0), X); };
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

// --- Derivatives by the arguments, on one row --------------------------------------------------------------

struct TPartials {
  double X;
  double Y = 0;
  double Z = 0;
};

// What a result is by x, y and z.
constexpr auto ByAdd = [](double, double, double, double) { return TPartials{1, 1}; };
constexpr auto BySub = [](double, double, double, double) { return TPartials{1, -1}; };
constexpr auto ByMul = [](double X, double Y, double, double) { return TPartials{Y, X}; };
constexpr auto ByDiv = [](double, double Y, double, double Result) {
  const double Inverse = 1 / Y;
  return TPartials{Y == 0 ? 0 : Inverse, Y == 0 ? 0 : -Result * Inverse};
};
constexpr auto ByAQ = [](double, double Y, double, double Result) {
  const double Square = 1 + Y * Y;
  return TPartials{1 / SquareRoot(Square), -Result * Y / Square};
};
constexpr auto ByNeg = [](double, double, double, double) { return TPartials{-1}; };
constexpr auto ByInv = [](double X, double, double, double Result) {
  return TPartials{X == 0 ? 0 : -Result * Result};
};
constexpr auto BySquare = [](double X, double, double, double) { return TPartials{2 * X}; };
constexpr auto ByCube = [](double X, double, double, double) { return TPartials{3 * X * X}; };
constexpr auto BySqrt = [](double X, double, double, double Result) {
  const double Slope = 0.5 / Result;
  return TPartials{X == 0 ? 0 : WithSignOf(Slope, X)};
};
constexpr auto ByCbrt = [](double X, double, double, double Result) {
  const double Slope = 1 / (3 * Result * Result);
  return TPartials{X == 0 ? 0 : Slope};
};
constexpr auto ByPow = [](double X, double Y, double, double Result) {
  const double Slope = Y * Result / X;
  return TPartials{X == 0 ? 0 : Slope, Result * Log(X)};
};
constexpr auto ByExp = [](double, double, double, double Result) { return TPartials{Result}; };
constexpr auto ByLog = [](double X, double, double, double) {
  const double Slope = 1 / X;
  return TPartials{X == 0 ? 0 : Slope};
};
constexpr auto BySin = [](double X, double, double, double) { return TPartials{Cos(X)}; };
constexpr auto ByCos = [](double X, double, double, double) { return TPartials{-Sin(X)}; };
constexpr auto ByTan = [](double, double, double, double Result) { return TPartials{1 + Result * Result}; };
constexpr auto ByTanh = [](double, double, double, double Result) { return TPartials{1 - Result * Result}; };
constexpr auto ByAbs = [](double X, double, double, double) {
  return TPartials{X == 0 ? 0 : WithSignOf(1.0, X)};
};
constexpr auto ByMin = [](double X, double Y, double, double) {
  return TPartials{Y < X ? 0.0 : 1.0, Y < X ? 1.0 : 0.0};
};
constexpr auto ByMax = [](double X, double Y, double, double) {
  return TPartials{Y > X ? 0.0 : 1.0, Y > X ? 1.0 : 0.0};
};
constexpr auto ByIf = [](double X, double, double, double) {
  return TPartials{0, X > 0 ? 1.0 : 0.0, X > 0 ? 0.0 : 1.0};
};
constexpr auto ByTruth = [](double, double, double, double) { return TPartials{0}; };

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

template <class TOperation>
void OverDerivatives(const TDerivativeArguments& Arguments) {
  constexpr TOperation Operation{};
  constexpr std::size_t Unit = BlockUnit<double>;
  const double* X = Arguments.X.Values;
  const double* Y = Arguments.Y.Values;
  const double* Z = Arguments.Z.Values;
  double* __restrict ByX = Arguments.ByX;
  double* __restrict ByY = Arguments.ByY;
  double* __restrict ByZ = Arguments.ByZ;
  for (std::size_t I = 0; I < Arguments.Units; ++I) {
    for (std::size_t Lane = 0; Lane < Unit; ++Lane) {
      const std::size_t Row = I * Unit + Lane;
      const double ByResult = Arguments.ByResult[Row];
      const TPartials By = Operation(X[Lane], Y[Lane], Z[Lane], Arguments.Results[Row]);
      ByX[Row] = ByResult * By.X;
      ByY[Row] = ByResult * By.Y;
      ByZ[Row] = ByResult * By.Z;
    }
    X += Arguments.X.Stride;
    Y += Arguments.Y.Stride;
    Z += Arguments.Z.Stride;
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

template <class TOperation>
constexpr TDerivativeKernel Derivative(TOperation /*Operation*/) {
  return &OverDerivatives<TOperation>;
}

template <class T>
constexpr TBlockKernels<T> Kernels = {
    QX_KERNEL_NAME,
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
    {Derivative(ByAdd),   Derivative(BySub),   Derivative(ByMul),    Derivative(ByDiv),   Derivative(ByAQ),
     Derivative(ByNeg),   Derivative(ByInv),   Derivative(BySquare), Derivative(ByCube),  Derivative(BySqrt),
     Derivative(ByCbrt),  Derivative(ByPow),   Derivative(ByExp),    Derivative(ByLog),   Derivative(BySin),
     Derivative(ByCos),   Derivative(ByTan),   Derivative(ByTanh),   Derivative(ByAbs),   Derivative(ByMin),
     Derivative(ByMax),   Derivative(ByTruth), Derivative(ByTruth),  Derivative(ByTruth), Derivative(ByTruth),
     Derivative(ByTruth), Derivative(ByTruth), Derivative(ByIf),     Derivative(ByTruth), Derivative(ByTruth),
     Derivative(ByTruth), Derivative(ByTruth), Derivative(ByTruth),  Derivative(ByTruth)},
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
