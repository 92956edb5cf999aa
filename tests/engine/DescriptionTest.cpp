#include "support/Locales.h"
#include "support/TestComponent.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using tests::TTestComponent;

std::string Described(const TTestComponent& Component) {
  TStrings Lines;
  Component.Describe(Lines, "> ");
  return Lines.Text();
}

TEST(Description, OfAStandardComponentHasNineLines) {
  const TTestComponent Component;
  TStrings Lines;
  Component.Describe(Lines, "\t");
  EXPECT_EQ(Lines.Count(), 9);
  EXPECT_EQ(Lines.Text(), "Operating Conditions\n"
                          "\tFitness Method = fmMinimize\n"
                          "\tCrossover Probability = 98.00%\n"
                          "\tInversion Probability = 10.00%\n"
                          "\tMutation Probability = 1.00%\n"
                          "\tSelection Method = smStochasticTournament\n"
                          "Initial Conditions\n"
                          "\tPopulation = 100\n"
                          "There are no Termination Conditions\n");
}

TEST(Description, TellsTheTerminationConditionsInUse) {
  TTestComponent Component;
  Component.SetFitnessMethod(fmWeightedMaximize);
  Component.SetCrossoverProbability(1);
  Component.SetMutationProbability(0.125);
  Component.SetSelectionMethod(smCustom);
  Component.SetUseFitnessCutoff(true);
  Component.SetFitnessCutoff(0.25);
  Component.SetUseDiversityLimit(true);
  Component.SetUseGenerationLimit(true);
  Component.SetGenerationLimit(1234);
  EXPECT_EQ(Described(Component), "Operating Conditions\n"
                                  "> Fitness Method = fmWeightedMaximize\n"
                                  "> Crossover Probability = 1.0E+002%\n"
                                  "> Inversion Probability = 10.00%\n"
                                  "> Mutation Probability = 12.00%\n"
                                  "> Selection Method = smCustom\n"
                                  "Initial Conditions\n"
                                  "> Population = 100\n"
                                  "Termination Conditions\n"
                                  "> Fitness >= 0.25\n"
                                  "> Diversity less than 2.00%\n"
                                  "> Maximum number of generations = 1234\n");
  Component.SetFitnessMethod(fmMinimize);
  Component.SetUseDiversityLimit(false);
  Component.SetUseGenerationLimit(false);
  EXPECT_NE(Described(Component).find("Termination Conditions\n> Fitness <= 0.25\n"), std::string::npos);
}

TEST(Description, IsAppendedToWhatTheListHolds) {
  TStrings Lines = {"before"};
  TTestComponent().Describe(Lines, "");
  EXPECT_EQ(Lines.Count(), 10);
  EXPECT_EQ(Lines[0], "before");
}

TEST(Description, AsOneTextIsIndentedByThreeBlanksAndHasNoLastLineBreak) {
  const TTestComponent Component;
  const std::string Text = Component.ToString();
  EXPECT_EQ(Text.substr(0, 51), "Operating Conditions\n   Fitness Method = fmMinimize");
  EXPECT_EQ(Text.substr(Text.size() - 36), "\nThere are no Termination Conditions");
}

TEST(Description, IsForPeopleAndHasTheLocalesPoint) {
  const tests::TGermanLocale German;
  TTestComponent Component;
  Component.SetUseFitnessCutoff(true);
  Component.SetFitnessCutoff(1234.5);
  EXPECT_NE(Described(Component).find("Crossover Probability = 98,00%"), std::string::npos);
  EXPECT_NE(Described(Component).find("Fitness <= 1234,5\n"), std::string::npos);
}

} // namespace
} // namespace qx
