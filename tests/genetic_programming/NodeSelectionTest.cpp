#include <qx/platform/Random.h>

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <support/NonFinite.h>
#include <support/ProgramIndividuals.h>
#include <support/ScriptedRandom.h>
#include <vector>

namespace qx::generics {
namespace {

using tests::I;
using tests::R;
using tests::TScriptedRandom;

class NodeSelectionTest : public tests::ProgramIndividualTest {};

TEST_F(NodeSelectionTest, SelectionDiscardsADrawAndSumsTheOthers) {
  TIndividual& Individual = Add("(Add x (Mul y 2))"); // Add x Mul y c
  TScriptedRandom Draws({R(0.99),                     // discarded
                         I(0, 5), R(0.05),            // a function, but 0.05 does not exceed 0.1
                         I(1, 5), R(0.5),             // a terminal, and 0.55 does not exceed 0.9
                         I(3, 5), R(0.3),             // nor does 0.85
                         I(2, 5), R(0.0)});           // a function
  EXPECT_EQ(Individual.SelectNode(0.9), Individual.FlattenedDNA()[2]);
}

TEST_F(NodeSelectionTest, ATerminalIsSelectedOnceTheSumExceedsTheProbability) {
  TIndividual& Individual = Add("(Add x (Mul y 2))");
  TScriptedRandom Draws({R(0), I(1, 5), R(0.5), I(1, 5), R(0.5)});
  EXPECT_EQ(Individual.SelectNode(0.9), Individual.FlattenedDNA()[1]);
}

TEST_F(NodeSelectionTest, TheSumIsSingleAndTheProbabilityDouble) {
  TIndividual& Individual = Add("(Add x y)");
  // 0.1 in single precision exceeds 1 - 0.9, which is a little below 0.1; in double precision it would too,
  // but the double just below the single would not.
  constexpr double Single = 0.1F;
  const double Below = std::nextafter(1.0 - 0.9, 0);
  {
    TScriptedRandom Draws({R(0), I(0, 3), R(Single)});
    EXPECT_EQ(Individual.SelectNode(0.9), Individual.DNA());
  }
  { // rounded up to the single above, it exceeds 1 - 0.9
    TScriptedRandom Draws({R(0), I(0, 3), R(Below)});
    EXPECT_EQ(Individual.SelectNode(0.9), Individual.DNA());
  }
  { // 0.9 in single precision lies below the double 0.9
    TScriptedRandom Draws({R(0), I(1, 3), R(std::nextafter(0.9, 1)), I(1, 3), R(0.5)});
    EXPECT_EQ(Individual.SelectNode(0.9), Individual.FlattenedDNA()[1]);
  }
}

TEST_F(NodeSelectionTest, ADrawIsAddedInDoublePrecisionAndTheSumNarrowed) {
  const double AboveHalfAnUlp =
      0x1p-24 + 0x1p-50; // in single precision it would be half an ulp of 1, and be lost
  TScriptedRandom Draws({R(0), I(0, 1), R(0.5), I(0, 1), R(0.5), // 1 does not exceed 1
                         I(0, 1), R(AboveHalfAnUlp)});
  TIndividual& Leaf = Add("x");
  EXPECT_EQ(Leaf.SelectNode(1), Leaf.DNA());
}

TEST_F(NodeSelectionTest, SelectionAmongKindsPassesOverTheOthers) {
  TIndividual& Individual = Add("(Add x (Mul y 2))");
  {
    TScriptedRandom Draws({R(0), I(1, 2), R(0.2)});
    EXPECT_EQ(Individual.SelectNode(0.9, {gpFunction}), Individual.FlattenedDNA()[2]);
  }
  {
    TScriptedRandom Draws({R(0), I(2, 3), R(0.95)});
    EXPECT_EQ(Individual.SelectNode(0.9, {gpVariable, gpConstant}), Individual.FlattenedDNA()[4]);
  }
  {
    TScriptedRandom Draws({R(0), I(4, 5), R(0.95)});
    EXPECT_EQ(Individual.SelectNode(0.9, {gpVariable, gpConstant, gpFunction}), Individual.FlattenedDNA()[4]);
  }
  {
    TScriptedRandom Draws({});
    EXPECT_EQ(Add("x").SelectNode(0.9, {gpFunction}), nullptr);
    EXPECT_EQ(Individual.SelectNode(0.9, {}), nullptr);
  }
}

TEST_F(NodeSelectionTest, ANodeWithoutInstructionCountsAsATerminal) {
  TIndividual& Individual = Add("(nil x)");
  TScriptedRandom Draws({R(0), I(0, 2), R(0.5), I(0, 2), R(0.45)});
  EXPECT_EQ(Individual.SelectNode(0.9), Individual.DNA());
  EXPECT_EQ(Individual.SelectNode(0.9, {gpFunction, gpConstant}), nullptr);
}

TEST_F(NodeSelectionTest, SelectionByLimitIsUniformAmongThoseWithin) {
  TIndividual& Individual = Add("(Add x (Mul y 2))");
  {
    TScriptedRandom Draws({I(1, 4), I(0, 3), I(3, 4)});
    EXPECT_EQ(Individual.SelectNode(3, true), Individual.FlattenedDNA()[2]);
    EXPECT_EQ(Individual.SelectNode(0, false), Individual.FlattenedDNA()[1]);
    EXPECT_EQ(Individual.SelectNode(1, false), Individual.FlattenedDNA()[4]);
  }
  TScriptedRandom Draws({});
  EXPECT_EQ(Individual.SelectNode(0, true), nullptr);
  EXPECT_EQ(Individual.SelectNode(-1, false), nullptr);
}

TEST_F(NodeSelectionTest, TheSameSeedSelectsTheSameNodes) {
  TIndividual& Individual = Add("(Add (Mul x 2) (Mul (Neg y) 2))");
  const auto Selected = [&] {
    SeedRandom(5);
    std::vector<TNode*> Nodes;
    for (int K = 0; K < 100; ++K) {
      Nodes.push_back(Individual.SelectNode(0.9));
    }
    return Nodes;
  };
  EXPECT_EQ(Selected(), Selected());
}

TEST_F(NodeSelectionTest, AProbabilityThatNoNodeCanMeetRaises) {
  TIndividual& Leaf = Add("x");
  TIndividual& Tree = Add("(Neg x)");
  using tests::NaN;
  {
    TScriptedRandom Draws({});
    for (const double Probability : {NaN, 0x1p24, 1e300}) {
      EXPECT_THROW(Leaf.SelectNode(Probability), std::invalid_argument);
    }
    EXPECT_THROW(Tree.SelectNode(NaN), std::invalid_argument);
    EXPECT_THROW(Tree.SelectNode(-0x1p24, {gpFunction}), std::invalid_argument);
    EXPECT_THROW(Tree.SelectNode(1e300, {gpVariable}), std::invalid_argument);
  }
  EXPECT_EQ(Tree.SelectNode(1e300), Tree.DNA());
  EXPECT_EQ(Tree.SelectNode(-1e300), Tree.DNA()->Children(0));
  EXPECT_EQ(Leaf.SelectNode(1000), Leaf.DNA());
}

TEST_F(NodeSelectionTest, SelectionIsBiasedTowardsFunctions) {
  TIndividual& Individual = Add("(Add (Mul x 2) (Mul (Neg y) 2))"); // 4 functions, 4 terminals
  SeedRandom(1);
  constexpr int Draws = 100'000;
  int Functions = 0;
  for (int K = 0; K < Draws; ++K) {
    Functions += Individual.SelectNode(0.9)->IsTerminal() ? 0 : 1;
  }
  // Half of the nodes are functions. Two million selections by a program of its own gave 0.7716; the standard
  // error here is 0.0013.
  EXPECT_NEAR(Functions / static_cast<double>(Draws), 0.7716, 0.006);
}

} // namespace
} // namespace qx::generics
