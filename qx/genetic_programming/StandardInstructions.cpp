#include <qx/genetic_programming/GPFloat.h>
#include <qx/genetic_programming/StandardInstructions.h>
#include <qx/platform/Text.h>

#include <cmath>
#include <functional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>

namespace qx {

namespace {

using generics::TQXGPContext;
using generics::TQXGPInstruction;
using generics::TQXGPInstructions;
using generics::TQXGPNode;
using generics::TQXGPOperation;

template <class T>
using TOperation = T (*)(TQXGPNode<T>& Node, TQXGPContext<T>* Context);

// One of the ready instructions; `OnVariant` is null where variants do not have it.
struct TStandard {
  std::string_view Name;
  std::string_view Comment;
  TStandardGroup Group;
  int Arity;
  TOperation<TGAFloat> OnFloat;
  TOperation<Variant> OnVariant;
};

template <class T>
TOperation<T> OperationOf(const TStandard& Standard) {
  if constexpr (std::is_same_v<T, Variant>) {
    return Standard.OnVariant;
  } else {
    return Standard.OnFloat;
  }
}

// An operation that calculates with the values of its arguments; `TFunction` is a type of function objects.
template <class T, class TFunction>
T Unary(TQXGPNode<T>& Node, TQXGPContext<T>* Context) {
  return TFunction()(Node.ExecuteChild(0, Context));
}
template <class T, class TFunction>
T Binary(TQXGPNode<T>& Node, TQXGPContext<T>* Context) {
  const T Left = Node.ExecuteChild(0, Context);
  return TFunction()(Left, Node.ExecuteChild(1, Context));
}
template <class TFunction>
constexpr TOperation<TGAFloat> UnaryFloat = &Unary<TGAFloat, TFunction>;
template <class TFunction>
constexpr TOperation<TGAFloat> BinaryFloat = &Binary<TGAFloat, TFunction>;
template <class TFunction>
constexpr TOperation<Variant> UnaryVariant = &Unary<Variant, TFunction>;
template <class TFunction>
constexpr TOperation<Variant> BinaryVariant = &Binary<Variant, TFunction>;

bool IsTrue(TGAFloat Value) { return Value > 0; }
bool IsTrue(const Variant& Value) { return Value.AsBoolean(); }

template <class T>
bool IsTrueAt(int Index, TQXGPNode<T>& Node, TQXGPContext<T>* Context) {
  return IsTrue(Node.ExecuteChild(Index, Context));
}

// --- Truths: of floats 1 and 0, of variants a Boolean ------------------------------------------------------

template <class T>
T And(TQXGPNode<T>& Node, TQXGPContext<T>* Context) {
  return IsTrueAt(0, Node, Context) && IsTrueAt(1, Node, Context);
}
template <class T>
T Or(TQXGPNode<T>& Node, TQXGPContext<T>* Context) {
  return IsTrueAt(0, Node, Context) || IsTrueAt(1, Node, Context);
}
template <class T>
T Not(TQXGPNode<T>& Node, TQXGPContext<T>* Context) {
  return !IsTrueAt(0, Node, Context);
}
template <class T>
T Nand(TQXGPNode<T>& Node, TQXGPContext<T>* Context) {
  return !(IsTrueAt(0, Node, Context) && IsTrueAt(1, Node, Context));
}
template <class T>
T Nor(TQXGPNode<T>& Node, TQXGPContext<T>* Context) {
  return !(IsTrueAt(0, Node, Context) || IsTrueAt(1, Node, Context));
}
template <class T>
T Xor(TQXGPNode<T>& Node, TQXGPContext<T>* Context) {
  const bool Left = IsTrueAt(0, Node, Context);
  return Left != IsTrueAt(1, Node, Context);
}
template <class T>
T If(TQXGPNode<T>& Node, TQXGPContext<T>* Context) {
  return Node.ExecuteChild(IsTrueAt(0, Node, Context) ? 1 : 2, Context);
}

// --- Numbers -----------------------------------------------------------------------------------------------

struct TQuotient {
  TGAFloat operator()(TGAFloat X, TGAFloat Y) const { return Y == 0 ? 1 : X / Y; }
  Variant operator()(const Variant& X, const Variant& Y) const { return (*this)(X.AsReal(), Y.AsReal()); }
};
struct TAnalyticQuotient {
  TGAFloat operator()(TGAFloat X, TGAFloat Y) const { return X / std::sqrt(1 + Y * Y); }
  Variant operator()(const Variant& X, const Variant& Y) const { return (*this)(X.AsReal(), Y.AsReal()); }
};
struct TInverse {
  TGAFloat operator()(TGAFloat X) const { return X == 0 ? 1 : 1 / X; }
  Variant operator()(const Variant& X) const { return (*this)(X.AsReal()); }
};
// A sum of variants is one of numbers, even when both are texts.
struct TSum {
  Variant operator()(const Variant& X, const Variant& Y) const { return X - -Y; }
};
struct TSquare {
  TGAFloat operator()(TGAFloat X) const { return X * X; }
};
struct TCube {
  TGAFloat operator()(TGAFloat X) const { return X * X * X; }
};
struct TSquareRoot {
  TGAFloat operator()(TGAFloat X) const { return std::sqrt(std::fabs(X)); }
};
struct TCubeRoot {
  TGAFloat operator()(TGAFloat X) const { return std::cbrt(X); }
};
struct TPower {
  TGAFloat operator()(TGAFloat X, TGAFloat Y) const { return X == 0 ? 0 : std::pow(std::fabs(X), Y); }
};
struct TExponential {
  TGAFloat operator()(TGAFloat X) const { return std::exp(X); }
};
struct TLogarithm {
  TGAFloat operator()(TGAFloat X) const { return X == 0 ? 0 : std::log(std::fabs(X)); }
};
struct TSine {
  TGAFloat operator()(TGAFloat X) const { return std::sin(X); }
};
struct TCosine {
  TGAFloat operator()(TGAFloat X) const { return std::cos(X); }
};
struct TTangent {
  TGAFloat operator()(TGAFloat X) const { return std::tan(X); }
};
struct THyperbolicTangent {
  TGAFloat operator()(TGAFloat X) const { return std::tanh(X); }
};
struct TAbsolute {
  TGAFloat operator()(TGAFloat X) const { return std::fabs(X); }
};
struct TLesser {
  template <class T>
  T operator()(const T& X, const T& Y) const {
    return Y < X ? Y : X;
  }
};
struct TGreater {
  template <class T>
  T operator()(const T& X, const T& Y) const {
    return Y > X ? Y : X;
  }
};

constexpr TStandard Standards[] = {
    {"Add", "x + y", sgArithmetic, 2, BinaryFloat<std::plus<>>, BinaryVariant<TSum>},
    {"Sub", "x - y", sgArithmetic, 2, BinaryFloat<std::minus<>>, BinaryVariant<std::minus<>>},
    {"Mul", "x y", sgArithmetic, 2, BinaryFloat<std::multiplies<>>, BinaryVariant<std::multiplies<>>},
    {"Div", "x / y, or 1", sgArithmetic, 2, BinaryFloat<TQuotient>, BinaryVariant<TQuotient>},
    {"AQ", "x / sqrt(1 + y y)", sgArithmetic, 2, BinaryFloat<TAnalyticQuotient>,
     BinaryVariant<TAnalyticQuotient>},
    {"Neg", "-x", sgArithmetic, 1, UnaryFloat<std::negate<>>, UnaryVariant<std::negate<>>},
    {"Inv", "1 / x, or 1", sgArithmetic, 1, UnaryFloat<TInverse>, UnaryVariant<TInverse>},
    {"Square", "x x", sgPowers, 1, UnaryFloat<TSquare>, nullptr},
    {"Cube", "x x x", sgPowers, 1, UnaryFloat<TCube>, nullptr},
    {"Sqrt", "square root of |x|", sgPowers, 1, UnaryFloat<TSquareRoot>, nullptr},
    {"Cbrt", "cube root of x", sgPowers, 1, UnaryFloat<TCubeRoot>, nullptr},
    {"Pow", "|x| to the power y, or 0", sgPowers, 2, BinaryFloat<TPower>, nullptr},
    {"Exp", "e to the power x", sgExponential, 1, UnaryFloat<TExponential>, nullptr},
    {"Log", "logarithm of |x|, or 0", sgExponential, 1, UnaryFloat<TLogarithm>, nullptr},
    {"Sin", "sine of x", sgTrigonometric, 1, UnaryFloat<TSine>, nullptr},
    {"Cos", "cosine of x", sgTrigonometric, 1, UnaryFloat<TCosine>, nullptr},
    {"Tan", "tangent of x", sgTrigonometric, 1, UnaryFloat<TTangent>, nullptr},
    {"Tanh", "hyperbolic tangent of x", sgTrigonometric, 1, UnaryFloat<THyperbolicTangent>, nullptr},
    {"Abs", "|x|", sgExtremes, 1, UnaryFloat<TAbsolute>, nullptr},
    {"Min", "lesser of x and y", sgExtremes, 2, BinaryFloat<TLesser>, BinaryVariant<TLesser>},
    {"Max", "greater of x and y", sgExtremes, 2, BinaryFloat<TGreater>, BinaryVariant<TGreater>},
    {"Less", "x < y", sgComparisons, 2, BinaryFloat<std::less<>>, BinaryVariant<std::less<>>},
    {"LessOrEqual", "x <= y", sgComparisons, 2, BinaryFloat<std::less_equal<>>,
     BinaryVariant<std::less_equal<>>},
    {"Greater", "x > y", sgComparisons, 2, BinaryFloat<std::greater<>>, BinaryVariant<std::greater<>>},
    {"GreaterOrEqual", "x >= y", sgComparisons, 2, BinaryFloat<std::greater_equal<>>,
     BinaryVariant<std::greater_equal<>>},
    {"Equal", "x = y", sgComparisons, 2, BinaryFloat<std::equal_to<>>, BinaryVariant<std::equal_to<>>},
    {"NotEqual", "x <> y", sgComparisons, 2, BinaryFloat<std::not_equal_to<>>,
     BinaryVariant<std::not_equal_to<>>},
    {"If", "y if x, else z", sgComparisons, 3, If<TGAFloat>, If<Variant>},
    {"And", "x and y", sgBoolean, 2, And<TGAFloat>, And<Variant>},
    {"Or", "x or y", sgBoolean, 2, Or<TGAFloat>, Or<Variant>},
    {"Not", "not x", sgBoolean, 1, Not<TGAFloat>, Not<Variant>},
    {"Nand", "not (x and y)", sgBoolean, 2, Nand<TGAFloat>, Nand<Variant>},
    {"Nor", "not (x or y)", sgBoolean, 2, Nor<TGAFloat>, Nor<Variant>},
    {"Xor", "either x or y", sgBoolean, 2, Xor<TGAFloat>, Xor<Variant>},
};

bool IsIn(const TStandard& Standard, TStandardGroup Group) {
  return Standard.Group == Group || (Group == sgBoolean && Standard.Name == "If");
}

template <class T>
TQXGPInstruction<T>& Add(TQXGPInstructions<T>& Set, const TStandard& Standard,
                         std::string_view NameInSet = {}) {
  const std::string_view Name = NameInSet.empty() ? Standard.Name : NameInSet;
  if (Set.IndexOf(Name) >= 0) {
    throw EGPException(std::string(SInstructionNotUnique));
  }
  TQXGPInstruction<T>& Added = Set.Add();
  Added.SetName(Name);
  Added.SetComment(Standard.Comment);
  Added.SetArity(Standard.Arity);
  Added.OnExecute = TQXGPOperation<T>{OperationOf<T>(Standard)};
  return Added;
}

template <class T>
TQXGPInstruction<T>& AddByName(TQXGPInstructions<T>& Set, std::string_view Name, std::string_view NameInSet) {
  for (const TStandard& Standard : Standards) {
    if (SameText(Standard.Name, Name) && OperationOf<T>(Standard) != nullptr) {
      return Add(Set, Standard, NameInSet);
    }
  }
  throw std::invalid_argument("There is no standard instruction \"" + std::string(Name) +
                              "\" for programs of this kind");
}

template <class T>
void AddGroup(TQXGPInstructions<T>& Set, TStandardGroup Group) {
  for (const TStandard& Standard : Standards) {
    if (IsIn(Standard, Group) && OperationOf<T>(Standard) != nullptr && Set.IndexOf(Standard.Name) < 0) {
      Add(Set, Standard);
    }
  }
}

} // namespace

std::vector<std::string_view> StandardInstructionNames(TStandardGroup Group) {
  std::vector<std::string_view> Names;
  for (const TStandard& Standard : Standards) {
    if (IsIn(Standard, Group)) {
      Names.push_back(Standard.Name);
    }
  }
  return Names;
}

std::string_view StandardInstructionName(const TQXGPInstruction<TGAFloat>& Instruction) {
  const auto* const Operation = Instruction.OnExecute.Target<TQXGPOperation<TGAFloat>>();
  const bool IsPlain = typeid(Instruction) == typeid(TQXGPInstruction<TGAFloat>) ||
                       typeid(Instruction) == typeid(TQXGPFloatInstruction);
  if (Operation != nullptr && IsPlain && Instruction.Operation() == gpFunction) {
    for (const TStandard& Standard : Standards) {
      if (Standard.OnFloat == Operation->Function && Standard.Arity == Instruction.Arity()) {
        return Standard.Name;
      }
    }
  }
  return {};
}

TQXGPInstruction<TGAFloat>& AddStandardInstruction(TQXGPInstructions<TGAFloat>& Set, std::string_view Name,
                                                   std::string_view NameInSet) {
  return AddByName(Set, Name, NameInSet);
}

TQXGPInstruction<Variant>& AddStandardInstruction(TQXGPInstructions<Variant>& Set, std::string_view Name,
                                                  std::string_view NameInSet) {
  return AddByName(Set, Name, NameInSet);
}

void AddStandardInstructions(TQXGPInstructions<TGAFloat>& Set, TStandardGroup Group) { AddGroup(Set, Group); }

void AddStandardInstructions(TQXGPInstructions<Variant>& Set, TStandardGroup Group) { AddGroup(Set, Group); }

} // namespace qx
