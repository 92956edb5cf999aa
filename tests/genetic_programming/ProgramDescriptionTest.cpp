#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <support/SmallGeneticProgram.h>

namespace qx {
namespace {

using tests::TArithmeticProgramming;
using tests::TOpenProgramming;

TEST(ProgramDescriptionTest, HasEveryLineInItsOrder) {
  TArithmeticProgramming<> Component;
  Component.Instructions()[3].SetComment("metres");
  Component.Instructions()[2].SetComment("");
  Component.SetFitnessMethod(fmWeightedMaximize);
  Component.SetBloatStrategy(bsSizeParsimonyPressure);
  Component.SetInitializationDepth(5);
  Component.SetInitializationMethod(imRampedHalfAndHalf);
  Component.SetUseFitnessCutoff(true);
  Component.SetFitnessCutoff(0.125);
  Component.SetUseDiversityLimit(true);
  Component.SetUseGenerationLimit(true);
  Component.SetGenerationLimit(50);
  TStrings Lines;
  Component.Describe(Lines, "  ");
  EXPECT_EQ(Lines.Text(),
            "Operating Conditions\n"
            "  Fitness Method = fmWeightedMaximize\n"
            "  Crossover Probability = 90.00%\n"
            "  Inversion Probability = 10.00%\n"
            "  Mutation Probability = 1.00%\n"
            "  Mutation Distribution = mmSubtree(33.00%), mmReplacement(0.00%), mmConstant(0.00%), "
            "mmShrink(33.00%), mmHoist(33.00%), mmPoint(0.00%)\n"
            "  Selection Method = smStochasticTournament\n"
            "  Selection Non-terminals Probability = 90.00%\n"
            "  Anti-Bloating Strategy = bsSizeParsimonyPressure\n"
            "  Anti-Bloating Limit = 10\n"
            "  Terminals (3)\n"
            "    x (metres), y, c\n"
            "  Functions (3)\n"
            "    Add (x + y)\n"
            "    Mul (x y)\n"
            "    Neg\n"
            "Initial Conditions\n"
            "  Population = 100\n"
            "  Initial Tree Depth = Max of 5\n"
            "  Initialization Method = imRampedHalfAndHalf\n"
            "Termination Conditions\n"
            "  Fitness >= 0.125\n"
            "  Diversity less than 2.00%\n"
            "  Maximum number of generations = 50\n");
}

TEST(ProgramDescriptionTest, LeavesOutWhatDoesNotApply) {
  const TQXGeneticProgramming Component;
  TStrings Lines;
  Component.Describe(Lines, "\t");
  EXPECT_EQ(Lines.Text(),
            "Operating Conditions\n"
            "\tFitness Method = fmMinimize\n"
            "\tCrossover Probability = 90.00%\n"
            "\tInversion Probability = 10.00%\n"
            "\tMutation Probability = 1.00%\n"
            "\tMutation Distribution = mmSubtree(33.00%), mmReplacement(0.00%), mmConstant(0.00%), "
            "mmShrink(33.00%), mmHoist(33.00%), mmPoint(0.00%)\n"
            "\tSelection Method = smStochasticTournament\n"
            "\tSelection Non-terminals Probability = 90.00%\n"
            "\tTerminals (0)\n"
            "\t\t\n"
            "\tFunctions (0)\n"
            "Initial Conditions\n"
            "\tPopulation = 100\n"
            "\tInitial Tree Depth is based on number of operations\n"
            "\tInitialization Method = imFull\n"
            "There are no Termination Conditions\n");
}

TEST(ProgramDescriptionTest, WithoutWeightsEveryShareIsZero) {
  TQXGeneticProgramming Component;
  Component.SetMutationWeights({});
  EXPECT_NE(Component.ToString().find("mmSubtree(0.00%), mmReplacement(0.00%)"), std::string::npos);
}

TEST(ProgramDescriptionTest, AShareHasTwoSignificantDigits) {
  TQXGeneticProgramming Component;
  Component.SetMutationWeights({1, 11, 0, 0, 0, 0});
  EXPECT_NE(Component.ToString().find("mmSubtree(8.30%), mmReplacement(92.00%)"), std::string::npos);
}

TEST(SearchSpaceTest, CountsByLevels) {
  TOpenProgramming<TQXGeneticProgramming> Component;
  EXPECT_EQ(Component.SearchSpaceSize(0), 0);
  EXPECT_EQ(Component.SearchSpaceSize(1000), 0); // without functions
  Component.Function("a", 2);
  Component.Function("b", 2);
  Component.Variable("x");
  Component.Variable("y");
  EXPECT_EQ(Component.SearchSpaceSize(0), 2); // the functions, not the terminals
  EXPECT_EQ(Component.SearchSpaceSize(1), 32);
  EXPECT_EQ(Component.SearchSpaceSize(2), 2 * 34 * 34);
  EXPECT_TRUE(std::isinf(Component.SearchSpaceSize(4'000'000'000)));
}

TEST(SearchSpaceTest, TakesEachAritysPower) {
  TOpenProgramming<TQXGeneticProgramming> Component;
  Component.Function("a", 1);
  Component.Function("b", 3);
  Component.Function("c", 2);
  for (int I = 0; I < 10; ++I) {
    Component.Variable("x" + std::to_string(I));
  }
  EXPECT_EQ(Component.SearchSpaceSize(0), 3);
  EXPECT_EQ(Component.SearchSpaceSize(1), 13 + 13 * 13 * 13 + 13 * 13);
}

} // namespace
} // namespace qx
