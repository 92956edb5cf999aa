#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <support/SmallGeneticProgram.h>
#include <vector>

namespace qx {
namespace {

using tests::I;
using tests::Pick;
using tests::Program;
using tests::R;
using tests::TArithmeticProgramming;
using tests::TScriptedRandom;

using TProgramming = TArithmeticProgramming<>;

// A program of that many nodes and that many levels below the root; both families hold it.
std::string Chain(int Nodes) {
  std::string Tree = "x";
  for (int I = 1; I < Nodes; ++I) {
    Tree = "(Neg " + Tree + ")";
  }
  return Tree;
}

// --- Limits ------------------------------------------------------------------------------------------------

TEST(BloatLimitTest, AChildAboveTheSizeBecomesItsParent) {
  TProgramming Component;
  Component.SetBloatStrategy(bsSizeLimit);
  auto& Parent = Component.Add("y");
  auto& Other = Component.Add("c");
  auto& TooLarge = Component.Add(Chain(11));
  auto& JustRight = Component.Add(Chain(10));
  TScriptedRandom Draws({});
  Component.DoAntiBloating(Parent, Other, TooLarge, true);
  Component.DoAntiBloating(Parent, Other, JustRight, true);
  EXPECT_EQ(Program(TooLarge), "y");
  EXPECT_EQ(JustRight.DNA()->Size(), 10);
  auto& Untouched = Component.Add(Chain(11));
  Component.DoAntiBloating(Parent, Other, Untouched, false); // nothing was done to it
  EXPECT_EQ(Untouched.DNA()->Size(), 11);
}

TEST(BloatLimitTest, AChildAboveTheDepthBecomesItsParent) {
  TProgramming Component;
  Component.SetBloatStrategy(bsDepthLimit);
  auto& Parent = Component.Add("y");
  auto& TooDeep = Component.Add(Chain(12)); // 11 levels below the root
  auto& JustRight = Component.Add(Chain(11));
  Component.DoAntiBloating(Parent, Parent, TooDeep, true);
  Component.DoAntiBloating(Parent, Parent, JustRight, true);
  EXPECT_EQ(Program(TooDeep), "y");
  EXPECT_EQ(JustRight.DNA()->Depth(), 10);
}

// In a whole reproduction each child falls back to its own parent.
TEST(BloatLimitTest, EachChildFallsBackToItsOwnParent) {
  TProgramming Component;
  Component.SetBloatStrategy(bsSizeLimit);
  Component.SetBloatLimit(5);
  Component.SetOperations({goCrossover});
  auto& Parent1 = Component.Add("(Add (Neg x) (Neg (Neg x)))"); // 6 nodes
  auto& Parent2 = Component.Add("(Mul (Neg y) (Neg (Neg y)))");
  auto& Child1 = Component.Add("x");
  auto& Child2 = Component.Add("x");
  TScriptedRandom Draws({R(0)});
  Draws.Add(Pick(1, 6));
  Draws.Add(Pick(1, 6));
  EXPECT_TRUE(Component.DoReproduce(Parent1, Parent2, Child1, Child2));
  EXPECT_EQ(Program(Child1), Program(Parent1));
  EXPECT_EQ(Program(Child2), Program(Parent2));
}

TEST(BloatLimitTest, ShrinkingAppliesOnceWhateverTheReproductionReported) {
  for (const auto Strategy : {bsShrinkSize, bsShrinkDepth}) {
    TProgramming Component;
    Component.SetBloatStrategy(Strategy);
    Component.SetBloatLimit(5);
    auto& Parent = Component.Add("y");
    const int AtLimit = Strategy == bsShrinkSize ? 5 : 6;
    auto& Kept = Component.Add(Chain(AtLimit));
    auto& Shrunk = Component.Add(Chain(AtLimit + 2));
    TScriptedRandom Draws({});
    Component.DoAntiBloating(Parent, Parent, Kept, false);
    Draws.Add(Pick(AtLimit, AtLimit + 2)); // the last function but none
    Draws.Add({I(1, 3)});
    Component.DoAntiBloating(Parent, Parent, Shrunk, false);
    EXPECT_EQ(Kept.DNA()->Size(), AtLimit);
    EXPECT_EQ(Shrunk.DNA()->Size(), AtLimit + 1); // still too large: one shrink only
    tests::ExpectWhole(Shrunk);
  }
}

TEST(BloatLimitTest, HoistingAppliesOnceWhateverTheReproductionReported) {
  for (const auto Strategy : {bsHoistSize, bsHoistDepth}) {
    TProgramming Component;
    Component.SetBloatStrategy(Strategy);
    Component.SetBloatLimit(5);
    auto& Parent = Component.Add("y");
    const int AtLimit = Strategy == bsHoistSize ? 5 : 6;
    auto& Kept = Component.Add(Chain(AtLimit));
    auto& Hoisted = Component.Add(Chain(AtLimit + 2));
    TScriptedRandom Draws({});
    Component.DoAntiBloating(Parent, Parent, Kept, false);
    Draws.Add(Pick(1, AtLimit + 2));
    Component.DoAntiBloating(Parent, Parent, Hoisted, false);
    EXPECT_EQ(Kept.DNA()->Size(), AtLimit);
    EXPECT_EQ(Hoisted.DNA()->Size(), AtLimit + 1);
    tests::ExpectWhole(Hoisted);
  }
}

// --- Fitness -----------------------------------------------------------------------------------------------

TEST(TarpeianTest, OnlyProgramsAboveTheAverageSizeDraw) {
  TProgramming Component;
  Component.SetBloatStrategy(bsTarpeianSize);
  auto& Small = Component.Add(Chain(2));
  auto& Average = Component.Add(Chain(4));
  auto& Large = Component.Add(Chain(6));
  TScriptedRandom Draws({R(0.29), R(0.3)});
  EXPECT_EQ(Component.EvaluateFitness(Small, false), 2);
  EXPECT_EQ(Component.EvaluateFitness(Average, false), 4);
  EXPECT_EQ(Component.EvaluateFitness(Large, false), Component.UnfitFitness());
  EXPECT_EQ(Component.EvaluateFitness(Large, false), 6);
}

TEST(TarpeianTest, DepthIsJudgedByTheAverageDepth) {
  TProgramming Component;
  Component.SetBloatStrategy(bsTarpeianDepth);
  auto& Wide = Component.Add("(Add (Add x y) (Add x y))"); // 7 nodes, 2 levels
  auto& Deep = Component.Add(Chain(5));                    // 5 nodes, 4 levels
  TScriptedRandom Draws({R(0)});
  EXPECT_EQ(Component.EvaluateFitness(Wide, false), 7);
  EXPECT_EQ(Component.EvaluateFitness(Deep, false), Component.UnfitFitness());
}

TEST(TarpeianTest, ProbabilitiesOfZeroAndOneAreNeverAndAlways) {
  TProgramming Component;
  Component.SetBloatStrategy(bsTarpeianSize);
  Component.Add("x");
  auto& Large = Component.Add(Chain(3));
  Component.SetTarpeianProbability(0);
  {
    TScriptedRandom Draws({R(0)});
    EXPECT_EQ(Component.EvaluateFitness(Large, false), 3);
  }
  Component.SetTarpeianProbability(1);
  TScriptedRandom Draws({R(0.999)});
  EXPECT_EQ(Component.EvaluateFitness(Large, false), Component.UnfitFitness());
}

TEST(TarpeianTest, WeightedFitnessIsNotRuledOut) {
  TProgramming Component;
  Component.SetBloatStrategy(bsUnfitSize);
  auto& Large = Component.Add(Chain(11));
  Large.EvaluateFitness();
  Component.OnEvaluateWeightedFitness = [](auto&, auto&, double& Fitness) { Fitness = 42; };
  EXPECT_EQ(Component.EvaluateFitness(Large, true), 42);
}

TEST(UnfitTest, ProgramsAboveTheLimitAreNotRun) {
  TProgramming Component;
  int Runs = 0;
  Component.OnEvaluateFitness = [&](auto&, auto&, double&) { ++Runs; };
  Component.SetBloatStrategy(bsUnfitSize);
  EXPECT_EQ(Component.EvaluateFitness(Component.Add(Chain(10)), false), 0);
  EXPECT_EQ(Component.EvaluateFitness(Component.Add(Chain(11)), false), 3.4e38);
  Component.SetBloatStrategy(bsUnfitDepth);
  EXPECT_EQ(Component.EvaluateFitness(Component.Add(Chain(11)), false), 0);
  EXPECT_EQ(Component.EvaluateFitness(Component.Add(Chain(12)), false), 3.4e38);
  Component.SetFitnessMethod(fmMaximize);
  EXPECT_EQ(Component.EvaluateFitness(Component.Add(Chain(12)), false), 1.5e-45);
  EXPECT_EQ(Runs, 2);
}

// --- Parsimony pressure ------------------------------------------------------------------------------------

TEST(ParsimonyTest, TheCoefficientTimesTheSizeIsThePenalty) {
  TProgramming Component;
  Component.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = 10; };
  Component.SetBloatStrategy(bsSizeParsimonyPressure);
  Component.SetParsimonyCoefficient(0.5);
  auto& Individual = Component.Add(Chain(8));
  const std::vector<std::pair<TGAFitnessMethod, double>> Cases = {
      {fmMaximize, 6}, {fmWeightedMaximize, 6}, {fmMinimize, 14}, {fmWeightedMinimize, 14}};
  for (const auto& [Method, Expected] : Cases) {
    Component.SetFitnessMethod(Method);
    EXPECT_EQ(Individual.WeightedFitness(), Expected) << EnumName(Method);
  }
  EXPECT_EQ(Individual.Fitness(), 10);
}

TEST(ParsimonyTest, TheDepthMayBeTheMeasure) {
  TProgramming Component;
  Component.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = 10; };
  Component.SetBloatStrategy(bsDepthParsimonyPressure);
  Component.SetParsimonyCoefficient(0.5);
  EXPECT_EQ(Component.Add(Chain(8)).WeightedFitness(), 13.5);
}

TEST(ParsimonyTest, AHandlersAnswerStands) {
  TProgramming Component;
  Component.SetBloatStrategy(bsSizeParsimonyPressure);
  Component.OnEvaluateWeightedFitness = [](auto&, auto&, double& Fitness) { Fitness = 3; };
  EXPECT_EQ(Component.Add(Chain(8)).WeightedFitness(), 3);
}

TEST(ParsimonyTest, OtherStrategiesHaveNoPenalty) {
  TProgramming Component;
  Component.SetBloatStrategy(bsLexicographicParsimonyPressure);
  EXPECT_EQ(Component.Add(Chain(8)).WeightedFitness(), 8);
}

TEST(CovariantParsimonyTest, TheCoefficientIsTheCovarianceByTheVarianceOfSizes) {
  TProgramming Component;
  Component.SetBloatStrategy(bsCovariantSizeParsimonyPressure);
  Component.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) {
    const double Size = Item.DNA()->Size();
    Fitness = Size * Size;
  };
  Component.Add(Chain(1));
  Component.Add(Chain(2));
  Component.Add(Chain(4));
  Component.EvaluateFitness();
  // Sizes 1, 2, 4 about 7/3; fitnesses 1, 4, 16 about 7: covariance 12, variance 7/3.
  EXPECT_NEAR(Component.ParsimonyCoefficient(), 12 / (7.0 / 3), 1e-12);
  EXPECT_EQ(Component.Population()[2].WeightedFitness(), 16 + 4 * Component.ParsimonyCoefficient());
  EXPECT_EQ(Component.MaxWeightedFitness(), Component.Population()[2].WeightedFitness());
}

TEST(CovariantParsimonyTest, DepthsHaveTheirOwn) {
  TProgramming Component;
  Component.SetBloatStrategy(bsCovariantDepthParsimonyPressure);
  Component.Add("x");                         // depth 0, fitness 1
  Component.Add("(Add (Add x y) (Add x y))"); // depth 2, fitness 7
  Component.EvaluateFitness();
  EXPECT_EQ(Component.ParsimonyCoefficient(), 3);
  EXPECT_EQ(Component.Population()[1].WeightedFitness(), 7 + 3 * 2);
}

TEST(CovariantParsimonyTest, EqualSizesGiveNoPenalty) {
  TProgramming Component;
  Component.SetBloatStrategy(bsCovariantSizeParsimonyPressure);
  int Count = 0;
  Component.OnEvaluateFitness = [&](auto&, auto&, double& Fitness) { Fitness = ++Count; };
  Component.Add("x");
  Component.Add("y");
  Component.EvaluateFitness();
  EXPECT_EQ(Component.ParsimonyCoefficient(), 0);
  EXPECT_EQ(Component.Population()[1].WeightedFitness(), 2);
  Component.Population().Delete(1);
  Component.EvaluateFitness();
  EXPECT_EQ(Component.ParsimonyCoefficient(), 0); // nor does a single one
}

TEST(CovariantParsimonyTest, AFitnessThatIsNotFiniteIsLeftOut) {
  TProgramming Component;
  Component.SetBloatStrategy(bsCovariantSizeParsimonyPressure);
  Component.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) {
    Fitness = Item.DNA()->Size() > 5 ? std::numeric_limits<double>::infinity() : 2.0 * Item.DNA()->Size();
  };
  Component.Add(Chain(1));
  Component.Add(Chain(3));
  Component.Add(Chain(9));
  Component.EvaluateFitness();
  EXPECT_EQ(Component.ParsimonyCoefficient(), 2);
}

TEST(LexicographicParsimonyTest, OfEquallyFitTheSmallerWins) {
  TProgramming Component;
  Component.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = 1; };
  Component.SetBloatStrategy(bsLexicographicParsimonyPressure);
  Component.SetTournamentField(2);
  Component.Add(Chain(12));
  Component.Add(Chain(7));
  for (const int First : {0, 1}) {
    TScriptedRandom Draws({I(First, 2), I(1 - First, 2)});
    TQXIndividual* Winner = nullptr;
    Component.SelectTournament(Component, Component.Population(), Winner);
    EXPECT_EQ(Winner, &Component.Population()[1]);
  }
}

TEST(LexicographicParsimonyTest, FitnessComesFirstAndAnEarlierPickStays) {
  TProgramming Component;
  Component.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) { Fitness = Item.DNA()->Depth(); };
  Component.SetFitnessMethod(fmMaximize);
  Component.SetBloatStrategy(bsLexicographicParsimonyPressure);
  Component.SetTournamentField(3);
  Component.Add(Chain(12));
  Component.Add(Chain(7));
  Component.Add(Chain(12));
  TScriptedRandom Draws({I(1, 3), I(2, 3), I(0, 3)});
  TQXIndividual* Winner = nullptr;
  Component.SelectTournament(Component, Component.Population(), Winner);
  EXPECT_EQ(Winner, &Component.Population()[2]); // fitter, and equal in size to the last one
}

TEST(LexicographicParsimonyTest, OtherStrategiesDoNotLookAtTheSize) {
  TProgramming Component;
  Component.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = 1; };
  Component.SetTournamentField(2);
  Component.Add(Chain(12));
  Component.Add(Chain(7));
  TScriptedRandom Draws({I(0, 2), I(1, 2)});
  TQXIndividual* Winner = nullptr;
  Component.SelectTournament(Component, Component.Population(), Winner);
  EXPECT_EQ(Winner, &Component.Population()[0]);
}

// --- Fair crossover ----------------------------------------------------------------------------------------

TEST(FairCrossoverTest, TheDonorIsPickedByTheRoulette) {
  TProgramming Component;
  Component.SetBloatStrategy(bsSizeFairCrossover);
  auto& Donor = Component.Add("(Add (Neg x) (Mul y c))"); // sizes 6 2 1 3 1 1
  auto& Child = Component.Add("(Neg (Neg x))");           // sizes 3 2 1
  // Of size 2: three smaller of mean 1, two larger of mean 4.5, so the ratio is 4.5. An equal one weighs 1/2,
  // a larger one 0.5 / (2 * 5.5), a smaller one 0.5 / (3 * 5.5); all in all 0.5 + 1 / 11 + 1 / 11.
  const double Total = 0.5 + 1.0 / 11 + 0.5 / 5.5;
  const double Larger = 0.5 / 11 / Total;
  const double Smaller = 0.5 / 16.5 / Total;
  const auto Roulette = Component.CreateSizeFairRoulette(Donor.FlattenedDNA(), 2, 3, 1, 2, 1, 4.5);
  ASSERT_EQ(Roulette.size(), 6U);
  EXPECT_NEAR(Roulette[0], Larger, 1e-15);
  EXPECT_NEAR(Roulette[1], Larger + 0.5 / Total, 1e-15);
  EXPECT_NEAR(Roulette[2], Larger + 0.5 / Total + Smaller, 1e-15);
  EXPECT_NEAR(Roulette[3], 2 * Larger + 0.5 / Total + Smaller, 1e-15);
  EXPECT_NEAR(Roulette[4], 1 - Smaller, 1e-15);
  EXPECT_EQ(Roulette[5], 1);
  TScriptedRandom Draws({});
  Draws.Add(Pick(1, 3));
  Draws.Add({R(2 * Larger + 0.5 / Total + Smaller - 1e-9)}); // the fourth: Mul
  EXPECT_TRUE(Component.DoFairCrossover(Child, Donor, Child));
  EXPECT_EQ(Program(Child), "(Neg (Mul y 1.5))");
  EXPECT_EQ(Program(Donor), "(Add (Neg x) (Mul y 1.5))");
  tests::ExpectWhole(Child);
}

TEST(FairCrossoverTest, TheEntryAboveTheDrawIsSelected) {
  TProgramming Component;
  auto& Individual = Component.Add("(Add x y)");
  const std::vector<double> Roulette = {0.25, 0.5, 1};
  TScriptedRandom Draws({R(0), R(0.25), R(0.4999), R(0.5), R(0.9999)});
  std::string Names;
  for (int Draw = 0; Draw < 5; ++Draw) {
    Names += Component.SelectSizeFairNode(Individual, Roulette).Instruction()->Name() + ' ';
  }
  EXPECT_EQ(Names, "Add x x y y ");
}

TEST(FairCrossoverTest, ARouletteOfNoNodesSelectsNone) {
  TProgramming Component;
  const auto Roulette = Component.CreateSizeFairRoulette({}, 2, 1, 0, 1, 1, 3);
  EXPECT_TRUE(Roulette.empty());
  TScriptedRandom Draws({R(0.5)});
  EXPECT_THROW(Component.SelectSizeFairNode(Component.Population().Add(), Roulette), std::out_of_range);
}

TEST(FairCrossoverTest, WithoutSmallerAndLargerOnesAnEqualOneIsDrawn) {
  TProgramming Component;
  Component.SetBloatStrategy(bsSizeFairCrossover);
  auto& Donor = Component.Add("(Mul y c)"); // for a leaf: two equal, one larger, none smaller
  auto& Child = Component.Add("(Neg x)");
  TScriptedRandom Draws({});
  Draws.Add(Pick(1, 2));
  Draws.Add({I(1, 2)});
  EXPECT_TRUE(Component.DoFairCrossover(Child, Donor, Child));
  EXPECT_EQ(Program(Child), "(Neg 1.5)");
}

TEST(FairCrossoverTest, AReceiverThatNothingFitsIsSelectedAnew) {
  TProgramming Component;
  Component.SetBloatStrategy(bsSizeFairCrossover);
  auto& Donor = Component.Add("y");
  auto& Child = Component.Add("(Neg x)");
  TScriptedRandom Draws({});
  Draws.Add(Pick(0, 2)); // two nodes: the donor has only a smaller one
  Draws.Add(Pick(0, 2));
  Draws.Add(Pick(1, 2));
  Draws.Add({I(0, 1)});
  EXPECT_TRUE(Component.DoFairCrossover(Child, Donor, Child));
  EXPECT_EQ(Program(Child), "(Neg y)");
}

// Of depth 1 the smaller ones have a mean of 0: the ratio is infinite, and only nodes of size 1 weigh
// anything.
TEST(FairCrossoverTest, DepthsCompareWithSizesInTheRoulette) {
  TProgramming Component;
  Component.SetBloatStrategy(bsDepthFairCrossover);
  auto& Donor = Component.Add("(Add (Neg x) (Mul y c))");
  auto& Child = Component.Add("(Neg (Neg x))"); // depths 2 1 0
  const auto Roulette = Component.CreateSizeFairRoulette(Donor.FlattenedDNA(), 1, 3, 2, 1, 0, 2);
  EXPECT_EQ(Roulette, (std::vector<double>{0, 0, 1.0 / 3, 1.0 / 3, 2.0 / 3, 1}));
  TScriptedRandom Draws({});
  Draws.Add(Pick(1, 3));
  Draws.Add({R(0.5)}); // the second leaf
  EXPECT_TRUE(Component.DoFairCrossover(Child, Donor, Child));
  EXPECT_EQ(Program(Child), "(Neg y)");
}

TEST(FairCrossoverTest, BothChildrenTakeFromTheSecondParent) {
  class TWithoutSwap : public TProgramming {
  public:
    class TGuarded : public generics::TQXGPIndividual<TGAFloat> {
    public:
      void Crossover(TNode& /*Node*/, TQXGPIndividual& /*Mate*/, TNode& /*MateNode*/) override {
        ADD_FAILURE() << "no subtrees are swapped";
      }
    };

  protected:
    std::unique_ptr<TQXPopulation> CreatePopulation(TItemClass<TQXIndividual> /*ItemClass*/) override {
      return std::make_unique<generics::TQXGPPopulation<TGAFloat>>(this, ItemClassOf<TGuarded>());
    }
  } Component;
  Component.SetBloatStrategy(bsSizeFairCrossover);
  auto& Parent1 = Component.Add("x");
  auto& Parent2 = Component.Add("(Mul y c)");
  auto& Child1 = Component.Add("x");
  auto& Child2 = Component.Add("(Neg x)");
  TScriptedRandom Draws({});
  Draws.Add(Pick(0, 1));
  Draws.Add({I(0, 2)}); // y
  Draws.Add(Pick(1, 2));
  Draws.Add({I(1, 2)}); // c
  EXPECT_TRUE(Component.DoCrossover(Parent1, Parent2, Child1, &Child2));
  EXPECT_EQ(Program(Child1), "y");
  EXPECT_EQ(Program(Child2), "(Neg 1.5)");
}

TEST(FairCrossoverTest, BinaryTreesHaveItToo) {
  TArithmeticProgramming<TQXBinaryGeneticProgramming> Component;
  Component.SetBloatStrategy(bsSizeFairCrossover);
  auto& Donor = Component.Add("(Mul y c)");
  auto& Child = Component.Add("(Add x (Neg x))");
  TScriptedRandom Draws({});
  Draws.Add(Pick(1, 4));
  Draws.Add({I(1, 2)});
  EXPECT_TRUE(Component.DoCrossover(Child, Donor, Child, nullptr)); // the one child is served
  EXPECT_EQ(Program(Child), "(Add 1.5 (Neg x))");
}

TEST(FairCrossoverTest, WithoutAProgramOnEitherSideThereIsNone) {
  TProgramming Component;
  Component.SetBloatStrategy(bsSizeFairCrossover);
  auto& None = Component.Population().Add();
  None.AssignDNA(nullptr);
  auto& Child = Component.Add("x");
  TScriptedRandom Draws({});
  Draws.Add(Pick(0, 1));
  EXPECT_FALSE(Component.DoFairCrossover(Child, None, Child));
  EXPECT_FALSE(Component.DoFairCrossover(Child, Child, None));
}

// --- Statistics --------------------------------------------------------------------------------------------

TEST(ProgramStatisticsTest, AreTakenAtTheFirstReadAndKept) {
  TProgramming Component;
  EXPECT_EQ(Component.MaxProgramSize(), 0);
  Component.Add(Chain(3));
  Component.Add("(Add (Add x y) (Add x y))");
  EXPECT_EQ(Component.MinProgramSize(), 3);
  EXPECT_EQ(Component.MaxProgramSize(), 7);
  EXPECT_EQ(Component.AvgProgramSize(), 5);
  EXPECT_EQ(Component.MinProgramDepth(), 2);
  EXPECT_EQ(Component.MaxProgramDepth(), 2);
  EXPECT_EQ(Component.AvgProgramDepth(), 2);
  Component.Add(Chain(9));
  EXPECT_EQ(Component.MaxProgramSize(), 7);
  Component.CalculateProgramStats();
  EXPECT_EQ(Component.MaxProgramSize(), 9);
  EXPECT_EQ(Component.AvgProgramSize(), static_cast<float>(19.0 / 3));
  EXPECT_EQ(Component.AvgProgramDepth(), 4);
  Component.Population().Clear();
  Component.CalculateProgramStats();
  EXPECT_EQ(Component.AvgProgramSize(), 0);
}

TEST(ProgramStatisticsTest, EveryGenerationTakesItsOwn) {
  TProgramming Component;
  Component.SetInitialPopulation(20);
  Component.SetFitnessMethod(fmMaximize);
  Component.Initialize();
  for (int Generation = 0; Generation < 5; ++Generation) {
    Component.Evolve();
    double Sum = 0;
    for (auto& Individual : Component.Population()) {
      Sum += Individual.DNA()->Size();
    }
    EXPECT_EQ(Component.AvgProgramSize(), static_cast<float>(Sum / 20));
  }
}

TEST(CovarianceTest, FollowsItsDefinition) {
  using generics::CoVariance;
  const std::vector<double> X = {1, 2, 3};
  const std::vector<double> Y = {2, 4, 6};
  EXPECT_EQ(CoVariance(X, Y), 2);
  EXPECT_EQ(CoVariance(X, X), 1);
  EXPECT_EQ(CoVariance(X, std::vector<double>{1, 2, 3, 4}), 0);
  EXPECT_EQ(CoVariance({}, {}), 0);
  EXPECT_EQ(CoVariance(std::vector{5.0}, std::vector{7.0}), 0);
}

TEST(CovarianceTest, CorrelationIsBetweenMinusOneAndOne) {
  using generics::Correlation;
  const std::vector<double> X = {1, 2, 3};
  EXPECT_DOUBLE_EQ(Correlation(X, std::vector<double>{2, 4, 6}), 1);
  EXPECT_DOUBLE_EQ(Correlation(X, std::vector<double>{3, 2, 1}), -1);
  EXPECT_DOUBLE_EQ(Correlation(X, std::vector<double>{1, 0, 1}), 0);
  EXPECT_DOUBLE_EQ(Correlation(X, std::vector<double>{1, 3, 2}), 0.5);
  EXPECT_EQ(Correlation(X, std::vector<double>{4, 4, 4}), 0);
  EXPECT_EQ(Correlation(X, std::vector<double>{1, 2}), 0);
  EXPECT_EQ(Correlation(std::vector{5.0}, std::vector{7.0}), 0);
}

} // namespace
} // namespace qx
