#include <qx/platform/Filer.h>
#include <qx/symbolic_regression/SymbolicRegression.h>

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <tests/support/SmallRegression.h>

namespace {

using namespace qx;
using tests::DataOf;
using tests::Outcome;
using tests::Prepare;
using tests::Wave;

TEST(RegressionPersistence, AStreamHoldsTheSettingsThatAreNotItsOwnDefaults) {
  TQXSymbolicRegression Regression;
  std::ostringstream Plain;
  WriteComponent(Plain, Regression);
  EXPECT_EQ(Plain.str().find("Refinement"), std::string::npos) << Plain.str();
  Regression.SetErrorMeasure(emMAE);
  Regression.SetLinearScaling(false);
  Regression.SetRefinementShare(0.5);
  Regression.SetRefinementSteps(3);
  Regression.SetKeepsBest(false);
  Regression.SetRestartPatience(7);
  Regression.SetStoppingPatience(9);
  Regression.SetThreads(2);
  Regression.SetInitialPopulation(100); // the default of other components
  Regression.SetBloatStrategy(bsNone);
  std::stringstream Stream;
  WriteComponent(Stream, Regression);
  TQXSymbolicRegression Other;
  ReadComponent(Stream, Other);
  EXPECT_EQ(Other.ErrorMeasure(), emMAE);
  EXPECT_FALSE(Other.LinearScaling());
  EXPECT_EQ(Other.RefinementShare(), 0.5);
  EXPECT_EQ(Other.RefinementSteps(), 3);
  EXPECT_FALSE(Other.KeepsBest());
  EXPECT_EQ(Other.RestartPatience(), 7);
  EXPECT_EQ(Other.StoppingPatience(), 9);
  EXPECT_EQ(Other.Threads(), 2);
  EXPECT_EQ(Other.InitialPopulation(), 100);
  EXPECT_EQ(Other.BloatStrategy(), bsNone);
}

TEST(RegressionPersistence, GoesOnFromACheckpointAsIfItHadNotStopped) {
  std::stringstream Checkpoint;
  TQXSymbolicRegression Whole;
  Prepare(Whole);
  Whole.SetRestartPatience(4);
  Whole.Evolve(15);
  Whole.SaveCheckpoint(Checkpoint);
  Whole.Evolve(15);
  const std::string Expected = Outcome(Whole);

  TQXSymbolicRegression Other;
  Prepare(Other);
  Other.LoadCheckpoint(Checkpoint);
  EXPECT_FALSE(Other.Front().Empty());
  Other.Evolve(15);
  EXPECT_TRUE(Outcome(Other) == Expected);
}

TEST(RegressionPersistence, ACheckpointKnowsTheColumnsOfVariables) {
  TQXDataSet Data;
  Data.AddColumn("t", {1, 5, 2, 7});
  Data.AddColumn("T", {2, 3, 5, 7});
  Data.AddColumn("y", {4, 9, 25, 49});
  TQXSymbolicRegression Regression;
  Regression.SetData(Data, "y");
  Regression.Evolve(2);
  std::stringstream Checkpoint;
  Regression.SaveCheckpoint(Checkpoint);
  TQXSymbolicRegression Other; // without data
  AddStandardInstruction(Other.Instructions(), "Square");
  for (const auto& Instruction : Regression.Instructions()) {
    if (const auto Name = StandardInstructionName(Instruction); !Name.empty() && Name != "Square") {
      AddStandardInstruction(Other.Instructions(), Name);
    }
  }
  Other.LoadCheckpoint(Checkpoint);
  EXPECT_EQ(*Other.ColumnNames(), (TColumnNames{{"T_", "T"}}));
  EXPECT_EQ(Other.Predict(*Other.BestModel(), Data), Regression.Predict(*Regression.BestModel(), Data));
  TQXSymbolicRegression Plain;
  Prepare(Plain);
  std::stringstream Second;
  Plain.SaveCheckpoint(Second);
  Prepare(Other);
  Other.LoadCheckpoint(Second);
  EXPECT_EQ(Other.ColumnNames(), nullptr);
}

TEST(RegressionPersistence, ACheckpointThatDoesNotReadLeavesTheModels) {
  std::stringstream Checkpoint;
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  Regression.Evolve(3);
  Regression.SaveCheckpoint(Checkpoint);
  std::string Text = Checkpoint.str();
  const auto Place = Text.find("FrontNumbers = [");
  ASSERT_NE(Place, std::string::npos);
  Text.insert(Place + 16, "1 ");
  Regression.Evolve(2);
  const auto Former = Regression.Front().Count();
  const double Error = Regression.BestModel()->Error;
  std::istringstream Damaged(Text);
  EXPECT_THROW(Regression.LoadCheckpoint(Damaged), EPropertyError);
  EXPECT_EQ(Regression.Front().Count(), Former);
  EXPECT_EQ(Regression.BestModel()->Error, Error);
  EXPECT_EQ(Regression.Evolve(2), 2);
}

TEST(RegressionPersistence, TimeIsCountedFromWhenARunIsTakenUp) {
  std::stringstream Checkpoint;
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  Regression.Evolve(2);
  Regression.SaveCheckpoint(Checkpoint);
  TQXSymbolicRegression Other;
  Prepare(Other);
  Other.LoadCheckpoint(Checkpoint);
  double Seconds = -1;
  Other.OnRecord = [&](auto&, const TRegressionRecord& Record) { Seconds = Record.Seconds; };
  Other.Evolve();
  EXPECT_GE(Seconds, 0);
  EXPECT_LT(Seconds, 60);
}

TEST(RegressionPersistence, CopiedIndividualsAreJudgedByTheOwnData) {
  TQXSymbolicRegression Source;
  Prepare(Source);
  Source.SetThreads(2);
  Source.Evolve(2);
  for (const bool All : {false, true}) {
    TQXSymbolicRegression Target;
    Target.SetData(DataOf(40, [](double X) { return std::exp(X); }), "y");
    if (All) {
      Target.AssignAll(Source);
    } else {
      Target.Assign(Source);
    }
    EXPECT_EQ(Target.Threads(), 2);
    auto& Individual = Target.Population()[0];
    const double Error = Target.ErrorOf(Individual);
    EXPECT_EQ(Individual.Fitness(), std::isfinite(Error) ? Error : Target.UnfitFitness());
  }
}

TEST(RegressionPersistence, AnAssignedComponentHasTheSettings) {
  TQXSymbolicRegression Source;
  Prepare(Source);
  Source.SetErrorMeasure(emRMSE);
  Source.SetThreads(2);
  Source.Evolve(2);
  TQXSymbolicRegression Target;
  Target.SetData(DataOf(40, Wave), "y");
  Target.Assign(Source);
  EXPECT_EQ(Target.ErrorMeasure(), emRMSE);
  EXPECT_EQ(Target.Threads(), 2);
  EXPECT_EQ(Target.Population().Count(), 60);
}

} // namespace
