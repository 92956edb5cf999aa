#include <qx/genetic_programming/QXGeneticProgramming.h>

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <support/NonFinite.h>
#include <vector>

namespace qx {
namespace {

using tests::Infinity;
using tests::NaN;

/// The value of a standard instruction over constants.
template <class T>
T Value(std::string_view Name, std::initializer_list<T> Arguments) {
  generics::TQXGPInstructions<T> Set(nullptr);
  generics::TQXGPInstruction<T>& Function = AddStandardInstruction(Set, Name);
  generics::TQXGPInstruction<T>& Constant = Set.Add();
  Constant.SetOperation(gpConstant);
  EXPECT_EQ(Function.Arity(), static_cast<int>(Arguments.size())) << Name;
  const auto Tree = generics::MakeNode<generics::TQXGPTreeNode<T>>(&Function);
  for (const T& Argument : Arguments) {
    Tree->AddChild(generics::MakeNode<generics::TQXGPTreeNode<T>>(&Constant)).SetValue(Argument);
  }
  return Tree->Execute(nullptr);
}

double Float(std::string_view Name, std::initializer_list<double> Arguments) {
  return Value(Name, Arguments);
}
Variant Any(std::string_view Name, std::initializer_list<Variant> Arguments) {
  return Value(Name, Arguments);
}

TEST(StandardInstructionsTest, CalculateOverFloats) {
  EXPECT_EQ(Float("Add", {2, 3}), 5);
  EXPECT_EQ(Float("Sub", {2, 3}), -1);
  EXPECT_EQ(Float("Mul", {2, 3}), 6);
  EXPECT_EQ(Float("Div", {3, 2}), 1.5);
  EXPECT_EQ(Float("AQ", {3, 2}), 3 / std::sqrt(5.0));
  EXPECT_EQ(Float("Neg", {2}), -2);
  EXPECT_EQ(Float("Inv", {4}), 0.25);
  EXPECT_EQ(Float("Square", {-3}), 9);
  EXPECT_EQ(Float("Cube", {-3}), -27);
  EXPECT_EQ(Float("Sqrt", {9}), 3);
  EXPECT_DOUBLE_EQ(Float("Cbrt", {-27}), -3);
  EXPECT_DOUBLE_EQ(Float("Pow", {2, 0.5}), std::pow(2, 0.5));
  EXPECT_DOUBLE_EQ(Float("Exp", {1}), std::exp(1.0));
  EXPECT_DOUBLE_EQ(Float("Log", {2}), std::log(2.0));
  EXPECT_DOUBLE_EQ(Float("Sin", {1}), std::sin(1.0));
  EXPECT_DOUBLE_EQ(Float("Cos", {1}), std::cos(1.0));
  EXPECT_DOUBLE_EQ(Float("Tan", {1}), std::tan(1.0));
  EXPECT_DOUBLE_EQ(Float("Tanh", {1}), std::tanh(1.0));
  EXPECT_EQ(Float("Abs", {-2}), 2);
  EXPECT_EQ(Float("Min", {2, 3}), 2);
  EXPECT_EQ(Float("Max", {2, 3}), 3);
}

TEST(StandardInstructionsTest, AreProtectedAsTold) {
  EXPECT_EQ(Float("Div", {5, 0}), 1);
  EXPECT_EQ(Float("Div", {0, -0.0}), 1);
  EXPECT_EQ(Float("Div", {1, 5e-324}), Infinity);
  EXPECT_EQ(Float("AQ", {5, 0}), 5);
  EXPECT_EQ(Float("Inv", {0}), 1);
  EXPECT_EQ(Float("Sqrt", {-9}), 3);
  EXPECT_DOUBLE_EQ(Float("Pow", {-2, 0.5}), std::pow(2, 0.5));
  EXPECT_EQ(Float("Pow", {0, -1}), 0);
  EXPECT_EQ(Float("Pow", {0, 0}), 0);
  EXPECT_DOUBLE_EQ(Float("Log", {-2}), std::log(2.0));
  EXPECT_EQ(Float("Log", {0}), 0);
  EXPECT_EQ(Float("Exp", {1000}), Infinity);
  EXPECT_TRUE(std::isnan(Float("Sin", {Infinity})));
  EXPECT_EQ(Float("Min", {1, NaN}), 1);
  EXPECT_EQ(Float("Max", {1, NaN}), 1);
  EXPECT_TRUE(std::isnan(Float("Min", {NaN, 1})));
}

TEST(StandardInstructionsTest, CompareAndChoose) {
  for (const double Y : {1.0, 2.0, 3.0}) {
    EXPECT_EQ(Float("Less", {2, Y}), 2 < Y ? 1 : 0);
    EXPECT_EQ(Float("LessOrEqual", {2, Y}), 2 <= Y ? 1 : 0);
    EXPECT_EQ(Float("Greater", {2, Y}), 2 > Y ? 1 : 0);
    EXPECT_EQ(Float("GreaterOrEqual", {2, Y}), 2 >= Y ? 1 : 0);
    EXPECT_EQ(Float("Equal", {2, Y}), 2 == Y ? 1 : 0);
    EXPECT_EQ(Float("NotEqual", {2, Y}), 2 != Y ? 1 : 0);
    EXPECT_EQ(Any("Less", {2, Y}).Kind(), vkBoolean);
    EXPECT_EQ(Any("Less", {2, Y}).AsBoolean(), 2 < Y);
  }
  EXPECT_EQ(Float("If", {0.1, 2, 3}), 2);
  EXPECT_EQ(Float("If", {0, 2, 3}), 3);
  EXPECT_EQ(Float("If", {-1, 2, 3}), 3);
  EXPECT_EQ(Float("If", {NaN, 2, 3}), 3);
  EXPECT_EQ(Any("If", {true, "yes", "no"}).AsText(), "yes");
}

TEST(StandardInstructionsTest, HaveTheTruthTablesOfTheirNames) {
  for (const bool X : {false, true}) {
    EXPECT_EQ(Float("Not", {X ? 1.0 : 0.0}), X ? 0 : 1);
    EXPECT_EQ(Any("Not", {X}), !X);
    for (const bool Y : {false, true}) {
      const auto Check = [=](std::string_view Name, bool Expected) {
        EXPECT_EQ(Float(Name, {X ? 2.0 : -2.0, Y ? 0.5 : 0.0}), Expected ? 1 : 0) << Name << X << Y;
        EXPECT_EQ(Any(Name, {X, Y}).Kind(), vkBoolean);
        EXPECT_EQ(Any(Name, {X, Y}).AsBoolean(), Expected) << Name << X << Y;
      };
      Check("And", X && Y);
      Check("Or", X || Y);
      Check("Nand", !(X && Y));
      Check("Nor", !(X || Y));
      Check("Xor", X != Y);
    }
  }
}

TEST(StandardInstructionsTest, CalculateOverVariantsWithNumbersWhateverTheirKind) {
  EXPECT_EQ(Any("Add", {2, 3}).Kind(), vkInteger);
  EXPECT_EQ(Any("Add", {"2", "3"}).AsReal(), 5);
  EXPECT_EQ(Any("Sub", {"2", 0.5}).AsReal(), 1.5);
  EXPECT_EQ(Any("Mul", {true, 3}).AsReal(), 3);
  EXPECT_EQ(Any("Div", {3, 2}).AsReal(), 1.5);
  EXPECT_EQ(Any("Div", {3, "0"}).AsReal(), 1);
  EXPECT_EQ(Any("AQ", {3, 0}).AsReal(), 3);
  EXPECT_EQ(Any("Neg", {2}).AsInteger(), -2);
  EXPECT_EQ(Any("Inv", {Variant()}).AsReal(), 1);
  EXPECT_EQ(Any("Min", {2, 1.5}).AsReal(), 1.5);
  EXPECT_EQ(Any("Max", {2, 1.5}).AsReal(), 2);
  EXPECT_THROW(Any("Add", {"red", 1}), std::invalid_argument);
}

TEST(StandardInstructionsTest, EvaluateOnlyTheArgumentsThatDecide) {
  TQXGPFloatInstructions Set(nullptr);
  int Evaluated = 0;
  TQXGPFloatInstruction& Seen = Set.Add();
  Seen.SetName("Seen");
  Seen.OnExecute = [&](auto&, auto&, auto*, double& Result) { Result = ++Evaluated; };
  TQXGPFloatInstruction& Zero = Set.Add();
  Zero.SetOperation(gpConstant);
  TQXGPFloatContext Context;
  const auto CountOf = [&](const char* Name, std::initializer_list<TQXGPFloatInstruction*> Arguments) {
    const auto Tree = generics::MakeNode<TQXGPFloatNode>(&AddStandardInstruction(Set, Name));
    for (TQXGPFloatInstruction* const Argument : Arguments) {
      Tree->AddChild(generics::MakeNode<TQXGPFloatNode>(Argument));
    }
    Evaluated = 0;
    Tree->Execute(&Context);
    return Evaluated;
  };
  EXPECT_EQ(CountOf("And", {&Zero, &Seen}), 0);
  EXPECT_EQ(CountOf("Nand", {&Zero, &Seen}), 0);
  EXPECT_EQ(CountOf("Or", {&Seen, &Seen}), 1);
  EXPECT_EQ(CountOf("Nor", {&Seen, &Seen}), 1);
  EXPECT_EQ(CountOf("Xor", {&Zero, &Seen}), 1);
  EXPECT_EQ(CountOf("If", {&Zero, &Seen, &Zero}), 0);
  EXPECT_EQ(Set.IndexOf("and"), 2);
}

TEST(StandardInstructionsTest, AreAddedByNameOnce) {
  TQXGPFloatInstructions Set(nullptr);
  generics::TQXGPInstruction<TGAFloat>& Added = AddStandardInstruction(Set, "sqrt");
  EXPECT_EQ(Added.ToString(), "Sqrt 'square root of |x|' gpFunction");
  EXPECT_THROW(AddStandardInstruction(Set, "Sqrt"), EGPException);
  EXPECT_EQ(Set.Count(), 1);
  TQXGPVariantInstructions Variants(nullptr);
  try {
    AddStandardInstruction(Variants, "Sqrt");
    FAIL() << "nothing raised";
  } catch (const std::invalid_argument& Error) {
    EXPECT_STREQ(Error.what(), "There is no standard instruction \"Sqrt\" for programs of this kind");
  }
  EXPECT_EQ(Variants.Count(), 0);
}

TEST(StandardInstructionsTest, AreAddedByGroup) {
  const auto NamesOf = [](const auto& Set) {
    std::string Names;
    for (const auto& Instruction : Set) {
      Names += Instruction.Name() + " ";
    }
    return Names;
  };
  TQXGPFloatInstructions Set(nullptr);
  AddStandardInstruction(Set, "Mul");
  AddStandardInstructions(Set, sgArithmetic);
  EXPECT_EQ(NamesOf(Set), "Mul Add Sub Div AQ Neg Inv ");
  Set.Clear();
  AddStandardInstructions(Set, sgBoolean);
  EXPECT_EQ(NamesOf(Set), "If And Or Not Nand Nor Xor ");
  AddStandardInstructions(Set, sgComparisons);
  EXPECT_EQ(NamesOf(Set),
            "If And Or Not Nand Nor Xor Less LessOrEqual Greater GreaterOrEqual Equal NotEqual ");
  TQXGPVariantInstructions Variants(nullptr);
  for (const TStandardGroup Group : {sgPowers, sgExponential, sgTrigonometric}) {
    AddStandardInstructions(Variants, Group);
  }
  EXPECT_EQ(Variants.Count(), 0);
  AddStandardInstructions(Variants, sgExtremes);
  EXPECT_EQ(NamesOf(Variants), "Min Max ");
  EXPECT_EQ(StandardInstructionNames(sgExponential), (std::vector<std::string_view>{"Exp", "Log"}));
}

} // namespace
} // namespace qx
