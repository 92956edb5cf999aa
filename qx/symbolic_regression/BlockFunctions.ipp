// The functions of the block kernels, for one row each and without a branch, so that a loop over rows becomes
// vector code. This text is compiled once for each instruction set, in an unnamed namespace: nothing here may
// call a function that is not, or code for one processor could end up in a program for another.

// Bits of a floating-point format.
template <class T>
struct TFormat;
template <>
struct TFormat<double> {
  using TBits = std::uint64_t;
  static constexpr int MantissaBits = 52;
  static constexpr TBits Bias = 1023;
  static constexpr double Rounder = 0x1.8p52; // added and taken off again, rounds to a whole number
  static constexpr double LeastNormal = 0x1p-1022;
};
template <>
struct TFormat<float> {
  using TBits = std::uint32_t;
  static constexpr int MantissaBits = 23;
  static constexpr TBits Bias = 127;
  static constexpr float Rounder = 0x1.8p23F;
  static constexpr float LeastNormal = 0x1p-126F;
};
template <class T>
using TBitsOf = typename TFormat<T>::TBits;

constexpr double Infinite = __builtin_inf();
constexpr double NoNumber = __builtin_nan("");

inline TBitsOf<double> BitsOf(double X) { return __builtin_bit_cast(std::uint64_t, X); }
inline TBitsOf<float> BitsOf(float X) { return __builtin_bit_cast(std::uint32_t, X); }
inline double FromBits(std::uint64_t X) { return __builtin_bit_cast(double, X); }
inline float FromBits(std::uint32_t X) { return __builtin_bit_cast(float, X); }
inline double Magnitude(double X) { return __builtin_fabs(X); }
inline float Magnitude(float X) { return __builtin_fabsf(X); }
inline double SquareRoot(double X) { return __builtin_sqrt(X); }
inline float SquareRoot(float X) { return __builtin_sqrtf(X); }

template <class T>
inline T WithSignOf(T X, T Sign) {
  constexpr TBitsOf<T> SignBit = TBitsOf<T>(1) << (sizeof(T) * 8 - 1);
  return FromBits(static_cast<TBitsOf<T>>((BitsOf(X) & ~SignBit) | (BitsOf(Sign) & SignBit)));
}

// The power of 2 that a whole number is, which stands in the low bits of a sum with the rounder.
template <class T>
inline T PowerOfTwo(TBitsOf<T> Whole) {
  return FromBits(static_cast<TBitsOf<T>>((Whole + TFormat<T>::Bias) << TFormat<T>::MantissaBits));
}

// A polynomial, the lowest coefficient first.
template <std::size_t First = 0, class T, std::size_t Count>
inline T Polynomial(const T (&Coefficients)[Count], T X) {
  if constexpr (First + 1 == Count) {
    return Coefficients[First];
  } else {
    return Coefficients[First] + X * Polynomial<First + 1>(Coefficients, X);
  }
}

// --- Exponential -------------------------------------------------------------------------------------------

template <class T>
struct TExpConstants;
template <>
struct TExpConstants<double> {
  static constexpr double Least = -746, Greatest = 710; // beyond, e^x is 0 or infinite
  static constexpr double InverseLn2 = 0x1.71547652b82fep+0;
  static constexpr double Ln2High = 0x1.62e42fefa3800p-1, Ln2Low = 0x1.ef35793c76730p-45;
  // (e^r - 1 - r) / r^2 for |r| up to ln(2) / 2
  static constexpr double Rest[] = {0.5,
                                    0x1.5555555555556p-3,
                                    0x1.5555555553d63p-5,
                                    0x1.11111111109b3p-7,
                                    0x1.6c16c1788bd90p-10,
                                    0x1.a01a01a7c41d5p-13,
                                    0x1.a019b90d2ae7ap-16,
                                    0x1.71de0dae63bb3p-19,
                                    0x1.289185613a3d6p-22,
                                    0x1.af38a9b0ec855p-26};
};
template <>
struct TExpConstants<float> {
  static constexpr float Least = -104, Greatest = 89;
  static constexpr float InverseLn2 = 0x1.715476p+0F;
  static constexpr float Ln2High = 0x1.62e4p-1F, Ln2Low = 0x1.7f7d1cp-20F;
  static constexpr float Rest[] = {0.5F, 0x1.5554dcp-3F, 0x1.555519p-5F, 0x1.120b6ep-7F, 0x1.6d1109p-10F};
};

// e^x = 2^Power (1 + Fraction), the power as a number and in the low bits of `Bits`.
template <class T>
struct TExpParts {
  TBitsOf<T> Bits;
  T Power;
  T Fraction;
};

// `Low` is what `X` is short of the argument.
template <class T>
inline TExpParts<T> SplitExp(T X, T Low = 0) {
  using TConstants = TExpConstants<T>;
  const T Sum = X * TConstants::InverseLn2 + TFormat<T>::Rounder;
  const T Power = Sum - TFormat<T>::Rounder;
  const T R = (X - Power * TConstants::Ln2High) - Power * TConstants::Ln2Low + Low;
  return {BitsOf(Sum), Power, R + R * R * Polynomial(TConstants::Rest, R)};
}

template <class T>
inline T Exp(T X, T Low = 0) {
  using TConstants = TExpConstants<T>;
  T Bounded = X < TConstants::Least ? TConstants::Least : X;
  Bounded = Bounded > TConstants::Greatest ? TConstants::Greatest : Bounded;
  const auto Parts = SplitExp(Bounded, Low);
  // In two factors, of which each is a normal number, so that what is subnormal is rounded once.
  const TBitsOf<T> Half = BitsOf(Parts.Power * T(0.5) + TFormat<T>::Rounder);
  const TBitsOf<T> OtherHalf = Parts.Bits - Half;
  return (1 + Parts.Fraction) * PowerOfTwo<T>(Half) * PowerOfTwo<T>(OtherHalf);
}

inline double Tanh(double X) {
  const double A = Magnitude(X);
  const double Bounded = A > 22 ? 22 : A; // beyond, it is 1
  const auto Parts = SplitExp(2 * Bounded);
  const auto Factor = PowerOfTwo<double>(Parts.Bits);
  const double E = Factor * Parts.Fraction + (Factor - 1); // e^2a - 1
  return WithSignOf(E / (E + 2), X);
}

// --- Logarithm ---------------------------------------------------------------------------------------------

template <class T>
struct TLogConstants;
template <>
struct TLogConstants<double> {
  static constexpr double HalfRoot = 0x1.6a09e667f3bcdp-1; // of 2
  static constexpr double Up = 0x1p54, UpPower = 54;       // makes subnormal numbers normal
  // (2 atanh(q) / q - 2) / q^2 as a polynomial of q^2
  static constexpr double Rest[] = {0x1.5555555555558p-1, 0x1.99999999952d7p-2, 0x1.2492492df281ap-2,
                                    0x1.c71c62e3f11e6p-3, 0x1.7462b51cb66b1p-3, 0x1.39fe51a7c18f9p-3,
                                    0x1.2b5900de53b32p-3};
};
template <>
struct TLogConstants<float> {
  static constexpr float HalfRoot = 0x1.6a09e6p-1F;
  static constexpr float Up = 0x1p24F, UpPower = 24;
  static constexpr float Rest[] = {0x1.555554p-1F, 0x1.9999eap-2F, 0x1.245c40p-2F, 0x1.ddcf72p-3F};
};

// A positive finite number as 2^Power Mantissa, the mantissa between the roots of 1/2 and 2.
template <class T>
struct TLogParts {
  T Power;
  T Mantissa;
};

template <class T>
inline TLogParts<T> SplitLog(T A) {
  using TBits = TBitsOf<T>;
  using TConstants = TLogConstants<T>;
  constexpr int MantissaBits = TFormat<T>::MantissaBits;
  constexpr TBits One = TFormat<T>::Bias << MantissaBits;
  constexpr T Whole = T(TBits(1) << MantissaBits); // has its last place at 1
  const bool Subnormal = A < TFormat<T>::LeastNormal;
  const TBits Bits = BitsOf(Subnormal ? A * TConstants::Up : A);
  const TBits Biased = (Bits - BitsOf(TConstants::HalfRoot) + One) >> MantissaBits;
  const T Power = FromBits(static_cast<TBits>(Biased | BitsOf(Whole))) - (Whole + T(TFormat<T>::Bias));
  return {Subnormal ? Power - TConstants::UpPower : Power,
          FromBits(static_cast<TBits>(Bits - (Biased << MantissaBits) + One))};
}

template <class T>
inline T Log(T X) {
  const T A = Magnitude(X);
  const auto Parts = SplitLog(A);
  const T F = Parts.Mantissa - 1;
  const T Q = F / (2 + F);
  const T Z = Q * Q;
  const T HalfSquare = T(0.5) * F * F;
  const T Rest = Q * (HalfSquare + Z * Polynomial(TLogConstants<T>::Rest, Z));
  const T Result = Parts.Power * TExpConstants<T>::Ln2High +
                   (F - (HalfSquare - (Rest + Parts.Power * TExpConstants<T>::Ln2Low)));
  const T Finite = A < T(Infinite) ? Result : A;
  return A == 0 ? T(0) : Finite;
}

inline double Cbrt(double X) {
  const double A = Magnitude(X);
  const auto Parts = SplitLog(A);
  const double Sum = Parts.Power * (1.0 / 3) + TFormat<double>::Rounder;
  const double Third = Sum - TFormat<double>::Rounder;
  const auto Rest = BitsOf(Parts.Power - 3 * Third + TFormat<double>::Rounder);
  const double M = Parts.Mantissa * PowerOfTwo<double>(Rest);
  const double Root = Exp(Log(M) * (1.0 / 3));
  const double Better = Root - (Root * Root * Root - M) / (3 * Root * Root);
  const double Result = Better * PowerOfTwo<double>(BitsOf(Sum));
  const double Finite = A < Infinite ? Result : A;
  return WithSignOf(A == 0 ? 0 : Finite, X);
}

// --- Power: with a logarithm of twice the digits -----------------------------------------------------------

struct TPair {
  double High;
  double Low;
};

inline TPair ExactSum(double X, double Y) {
  const double High = X + Y;
  const double Part = High - X;
  return {High, (X - (High - Part)) + (Y - Part)};
}

inline TPair ExactProduct(double X, double Y) {
  constexpr double Splitter = 0x1p27 + 1;
  const double XPart = X * Splitter;
  const double YPart = Y * Splitter;
  const double XHigh = XPart - (XPart - X);
  const double YHigh = YPart - (YPart - Y);
  const double XLow = X - XHigh;
  const double YLow = Y - YHigh;
  const double High = X * Y;
  return {High, ((XHigh * YHigh - High) + XHigh * YLow + XLow * YHigh) + XLow * YLow};
}

// The logarithm of a positive finite number.
inline TPair LogPair(double A) {
  // The rest after 2 q + 2/3 q^3, divided by q^5, as a polynomial of q^2.
  constexpr double Rest[] = {0x1.999999999999ap-2, 0x1.2492492492521p-2, 0x1.c71c71c6eaa10p-3,
                             0x1.745d177a96056p-3, 0x1.3b1395d2190c1p-3, 0x1.1118c7e4b0917p-3,
                             0x1.df7cc8e5fa539p-4, 0x1.e02e6fff27908p-4};
  constexpr double TwoThirds = 0x1.5555555555555p-1;
  constexpr double TwoThirdsLow = 0x1.5555555555555p-55;
  const auto Parts = SplitLog(A);
  const double F = Parts.Mantissa - 1;
  const double Denominator = 2 + F;
  const double DenominatorLow = F - (Denominator - 2);
  const double Q = F / Denominator;
  const TPair Back = ExactProduct(Q, Denominator);
  const double QLow = ((F - Back.High) - Back.Low - Q * DenominatorLow) / Denominator;
  const TPair Z = ExactProduct(Q, Q);
  const TPair Cube = ExactProduct(Q, Z.High);
  const double CubeLow = Cube.Low + Q * (Z.Low + 2 * Q * QLow) + QLow * Z.High;
  const TPair Term = ExactProduct(Cube.High, TwoThirds);
  const double TermLow = Term.Low + Cube.High * TwoThirdsLow + CubeLow * TwoThirds;
  const TPair Sum = ExactSum(Parts.Power * TExpConstants<double>::Ln2High, 2 * Q);
  const TPair Next = ExactSum(Sum.High, Term.High);
  const TPair Total = ExactSum(Next.High, Cube.High * Z.High * Polynomial(Rest, Z.High));
  return {Total.High,
          Sum.Low + Next.Low + Total.Low + 2 * QLow + TermLow + Parts.Power * TExpConstants<double>::Ln2Low};
}

inline double Pow(double X, double Y) {
  constexpr double Greatest = 0x1p64; // beyond, every power but that of 1 is 0 or infinite
  const double A = Magnitude(X);
  double Bounded = Y > Greatest ? Greatest : Y;
  Bounded = Bounded < -Greatest ? -Greatest : Bounded;
  const TPair Logarithm = LogPair(A);
  const TPair Product = ExactProduct(Bounded, Logarithm.High);
  const double Low = Product.Low + Bounded * Logarithm.Low;
  const bool Ordinary = Magnitude(Product.High) < 1000;
  const double Power = Exp(Product.High, Ordinary ? Low : 0);
  const double OfInfinite = Y > 0 ? Infinite : 0;
  const double OfAny = A < Infinite ? Power : A == Infinite ? OfInfinite : NoNumber;
  const double Result = Y == Y ? OfAny : NoNumber;
  const double NotOne = Y == 0 || A == 1 ? 1 : Result;
  return A == 0 ? 0 : NotOne;
}

inline float Pow(float X, float Y) {
  const double A = Magnitude(static_cast<double>(X));
  const double Power = Exp(static_cast<double>(Y) * Log(A));
  const double NotOne = Y == 0 || A == 1 ? 1 : Power;
  return static_cast<float>(A == 0 ? 0 : NotOne);
}

// --- Angles ------------------------------------------------------------------------------------------------

// Whether the number of quarter turns takes more than 20 bits, so that its products with parts of pi would
// not be exact.
template <class T>
inline bool IsHugeAngle(T X) {
  constexpr T GreatestAngle = T(1.6e6);
  return Magnitude(X) > GreatestAngle && Magnitude(X) < T(Infinite);
}

// The sine and the cosine of an angle of at most an eighth turn, `High` + `Low`.
inline double SineOf(double High, double Low) {
  constexpr double Rest[] = {-0x1.5555555555555p-3, 0x1.1111111110babp-7,   -0x1.a01a019e820aep-13,
                             0x1.71de37946ed6dp-19, -0x1.ae6008d114485p-26, 0x1.5e0a4fc16be59p-33};
  const double Square = High * High;
  return High + (High * Square * Polynomial(Rest, Square) + Low);
}

inline double CosineOf(double High, double Low) {
  constexpr double Rest[] = {0x1.5555555555555p-5,   -0x1.6c16c16c16963p-10, 0x1.a01a019f4ddfdp-16,
                             -0x1.27e4fa16cc2d1p-22, 0x1.1eeb67d026ec6p-29,  -0x1.907cd8ff5ede7p-37};
  const double Square = High * High;
  const double Half = 0.5 * Square;
  const double Sum = 1 - Half;
  return Sum + (((1 - Sum) - Half) + (Square * Square * Polynomial(Rest, Square) - High * Low));
}

inline float SineOf(float X, float /*Low*/) {
  constexpr float Rest[] = {-0x1.555552p-3F, 0x1.110c26p-7F, -0x1.9ac856p-13F};
  const float Square = X * X;
  return X + X * Square * Polynomial(Rest, Square);
}

inline float CosineOf(float X, float /*Low*/) {
  constexpr float Rest[] = {0x1.555554p-5F, -0x1.6c12d0p-10F, 0x1.9bd786p-16F};
  const float Square = X * X;
  return 1 - (Square * 0.5F - Square * Square * Polynomial(Rest, Square));
}

// An angle less so many quarter turns, whose number stands in the low bits of `Turns`.
struct TAngle {
  TPair Rest;
  std::uint64_t Turns;
};

// As Cody and Waite (1980) do it.
inline TAngle LessQuarterTurns(double X) {
  constexpr double PerRadian = 0x1.45f306dc9c883p-1;
  const double Sum = X * PerRadian + TFormat<double>::Rounder;
  const double Count = Sum - TFormat<double>::Rounder;
  const double Rest = (X - Count * 0x1.921fb54400000p+0) - Count * 0x1.0b4611a600000p-34;
  const double Third = Count * 0x1.3198a2e000000p-69;
  const double High = Rest - Third;
  return {{High, ((Rest - High) - Third) - Count * 0x1.b839a252049c1p-104}, BitsOf(Sum)};
}

// The sine of an angle that was so reduced.
template <class T>
inline T SineOfReduced(const TAngle& Angle) {
  const auto High = static_cast<T>(Angle.Rest.High);
  const auto Low = static_cast<T>(Angle.Rest.Low);
  const auto Turns = static_cast<TBitsOf<T>>(Angle.Turns);
  const T Sine = SineOf(High, Low);
  const T Cosine = CosineOf(High, Low);
  const T Value = (Turns & 1) == 0 ? Sine : Cosine;
  return FromBits(static_cast<TBitsOf<T>>(BitsOf(Value) ^ (Turns >> 1) << (sizeof(T) * 8 - 1)));
}

template <class T>
inline T Sin(T X) {
  const T Sine = SineOfReduced<T>(LessQuarterTurns(static_cast<double>(X)));
  return X == 0 ? X : Sine;
}

template <class T>
inline T Cos(T X) {
  TAngle Angle = LessQuarterTurns(static_cast<double>(X));
  ++Angle.Turns;
  return SineOfReduced<T>(Angle);
}

inline double Tan(double X) {
  const TAngle Angle = LessQuarterTurns(X);
  const double Sine = SineOf(Angle.Rest.High, Angle.Rest.Low);
  const double Cosine = CosineOf(Angle.Rest.High, Angle.Rest.Low);
  const bool Odd = (Angle.Turns & 1) != 0;
  const double Tangent = (Odd ? -Cosine : Sine) / (Odd ? Sine : Cosine);
  return X == 0 ? X : Tangent;
}

inline TAngle ReduceHuge(double X) {
  const auto Angle = detail::ReduceHugeAngle(X);
  return {{Angle.High, Angle.Low}, Angle.Turns};
}

inline double SinOfHuge(double X) { return SineOfReduced<double>(ReduceHuge(X)); }

inline double CosOfHuge(double X) {
  TAngle Angle = ReduceHuge(X);
  ++Angle.Turns;
  return SineOfReduced<double>(Angle);
}

inline double TanOfHuge(double X) { return SinOfHuge(X) / CosOfHuge(X); }
