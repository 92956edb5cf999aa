#include <gtest/gtest.h>

#include <string>
#include <support/SmallGeneticProgram.h>

namespace qx {
namespace {

class InfixTextTest : public testing::Test {
protected:
  InfixTextTest() {
    for (const auto Group : {sgArithmetic, sgPowers, sgExponential, sgExtremes, sgComparisons, sgBoolean}) {
      AddStandardInstructions(FComponent.Instructions(), Group);
    }
    FComponent.Variable("x");
    FComponent.Variable("Y");
    FComponent.Constant("c", 1.0);
    FComponent.Function("Now", 0).SetOperation(gpFunction);
  }
  std::string Infix(const std::string& Tree) {
    return InfixText(*tests::ReadTree<TGAFloat>(FComponent, Tree));
  }

private:
  tests::TOpenProgramming<TQXGeneticProgramming> FComponent;
};

TEST_F(InfixTextTest, ParenthesesStandWhereTheyAreNeeded) {
  EXPECT_EQ(Infix("(Add (Mul x Y) (Add x 2.5))"), "x * Y + x + 2.5");
  EXPECT_EQ(Infix("(Mul (Add x Y) (Sub x 1))"), "(x + Y) * (x - 1)");
  EXPECT_EQ(Infix("(Sub x (Sub x Y))"), "x - (x - Y)");
  EXPECT_EQ(Infix("(Sub (Sub x x) Y)"), "x - x - Y");
  EXPECT_EQ(Infix("(Div x (Mul x Y))"), "x / (x * Y)");
  EXPECT_EQ(Infix("(Div (Mul x Y) x)"), "x * Y / x");
  EXPECT_EQ(Infix("(Mul x (Div Y x))"), "x * (Y / x)"); // not the same where a divisor is 0
  EXPECT_EQ(Infix("(Mul x (Inv Y))"), "x * (1 / Y)");
  EXPECT_EQ(Infix("(Mul (Div x Y) x)"), "x / Y * x");
  EXPECT_EQ(Infix("(Inv (Inv (Add x Y)))"), "1 / (1 / (x + Y))");
  EXPECT_EQ(Infix("(Square (Add x Y))"), "(x + Y)^2");
  EXPECT_EQ(Infix("(Cube (Square x))"), "(x^2)^3");
  EXPECT_EQ(Infix("(Neg (Square x))"), "-x^2");
  EXPECT_EQ(Infix("(Neg (Mul x Y))"), "-(x * Y)");
  EXPECT_EQ(Infix("(Mul x (Neg Y))"), "x * -Y");
}

TEST_F(InfixTextTest, ANegativeConstantIsNotTakenForAnOperator) {
  EXPECT_EQ(Infix("(Sub x -2)"), "x - (-2)");
  EXPECT_EQ(Infix("(Mul x -2)"), "x * (-2)");
  EXPECT_EQ(Infix("(Square -2)"), "(-2)^2");
  EXPECT_EQ(Infix("(Add -2 x)"), "-2 + x");
}

TEST_F(InfixTextTest, WhatIsNoOperatorIsCalled) {
  EXPECT_EQ(Infix("(Mul x (Sqrt (Add x 1)))"), "x * sqrt(x + 1)");
  EXPECT_EQ(Infix("(AQ x (Pow x Y))"), "aq(x, pow(x, Y))");
  EXPECT_EQ(Infix("Now"), "now");
  EXPECT_EQ(Infix("(Add x nil)"), "x + nil");
  EXPECT_EQ(Infix("(Add x)"), "add(x)"); // lacks an argument
  EXPECT_EQ(Infix("nil"), "nil");
}

TEST_F(InfixTextTest, TruthsHaveTheirWords) {
  EXPECT_EQ(Infix("(If (Less x (Add x Y)) (Not (And x Y)) (Or x (And x Y)))"),
            "if(x < x + Y, not (x and Y), x or x and Y)");
  EXPECT_EQ(Infix("(And (Or x Y) (Not x))"), "(x or Y) and not x");
  EXPECT_EQ(Infix("(Xor x Y)"), "xor(x, Y)");
}

TEST_F(InfixTextTest, ADeepProgramIsWritten) {
  tests::TOpenProgramming<TQXBinaryGeneticProgramming> Component;
  AddStandardInstruction(Component.Instructions(), "Neg");
  Component.Variable("x");
  const auto Program = Component.DoInitializeFull(200'000);
  EXPECT_EQ(InfixText(*Program).size(), 199'999U + 2 * 199'998U + 1);
}

} // namespace
} // namespace qx
