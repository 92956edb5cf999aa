#include <qx/platform/Random.h>
#include <qx/symbolic_regression/BlockKernels.h>
#include <qx/symbolic_regression/Formula.h>
#include <qx/symbolic_regression/SymbolicRegression.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tests/support/SmallRegression.h>
#include <thread>
#include <vector>

namespace {

using namespace qx;
using tests::DataOf;
using tests::Outcome;
using tests::Prepare;
using tests::Wave;

std::vector<std::string> NamesOf(TQXSymbolicRegression& Regression) {
  std::vector<std::string> Names;
  for (const auto& Instruction : Regression.Instructions()) {
    Names.push_back(Instruction.Name());
  }
  return Names;
}

TEST(SymbolicRegression, FindsAFormulaByItself) {
  SeedRandom(2);
  TQXSymbolicRegression Regression;
  Regression.SetData(DataOf(20, [](double X) { return X * X * X + X * X + X; }), "y");
  Regression.Evolve(500);
  ASSERT_NE(Regression.BestModel(), nullptr);
  EXPECT_LT(Regression.BestModel()->Error, 1e-20) << TQXFormula(*Regression.BestModel()).Text(fsInfix);
  EXPECT_LT(Regression.Generation(), 500); // stopped by the cutoff
}

TEST(SymbolicRegression, DeclaresVariablesFunctionsAndAConstant) {
  TQXSymbolicRegression Regression;
  Regression.SetData(DataOf(5, Wave), "y", "other");
  EXPECT_EQ(NamesOf(Regression), (std::vector<std::string>{"x", "Add", "Sub", "Mul", "Div", "Square", "Cube",
                                                           "Sqrt", "Sin", "Cos", "Exp", "Log", "Constant"}));
  Regression.SetData(DataOf(5, Wave), "x"); // other variables, the same functions
  EXPECT_EQ(NamesOf(Regression),
            (std::vector<std::string>{"Add", "Sub", "Mul", "Div", "Square", "Cube", "Sqrt", "Sin", "Cos",
                                      "Exp", "Log", "Constant", "other", "y"}));
}

TEST(SymbolicRegression, KeepsTheInstructionsOfTheHost) {
  TQXSymbolicRegression Regression;
  AddStandardInstruction(Regression.Instructions(), "Tanh");
  auto& Constant = Regression.Instructions().Add();
  Constant.SetName("pi");
  Constant.SetOperation(gpConstant);
  Regression.SetData(DataOf(5, Wave), "y");
  EXPECT_EQ(NamesOf(Regression), (std::vector<std::string>{"Tanh", "pi", "x", "other"}));
}

TEST(SymbolicRegression, AFunctionGivesWayToAColumnOfItsName) {
  TQXSymbolicRegression Regression;
  TQXDataSet Data;
  Data.AddColumn("exp", {1, 2, 3, 4});
  Data.AddColumn("y", {1, 4, 9, 16});
  Regression.SetData(Data, "y");
  auto& Set = Regression.Instructions();
  EXPECT_EQ(Set.GetItemByName("exp").Operation(), gpVariable);
  EXPECT_EQ(StandardInstructionName(Set.GetItemByName("Exp_")), "Exp");
}

// y is T * T - t, and what else is called so is in the way.
TQXDataSet DataOfBothCases() {
  TQXDataSet Data;
  Data.AddColumn("t", {1, 5, 2, 7, 3, 8});
  Data.AddColumn("T", {2, 3, 5, 7, 11, 13});
  Data.AddColumn("t_", {1, 1, 1, 0, 0, 0});
  Data.AddColumn("y", {3, 4, 23, 42, 118, 161});
  return Data;
}

TEST(SymbolicRegression, ColumnsThatDifferByCaseAloneHaveVariablesOfTheirOwn) {
  SeedRandom(1);
  TQXSymbolicRegression Regression;
  Regression.SetData(DataOfBothCases(), "y");
  EXPECT_GE(Regression.Instructions().IndexOf("T__"), 0) << "T_ would be the column t_";
  Regression.Evolve(40);
  const TRegressionModel& Model = *Regression.BestModel();
  ASSERT_LT(Model.Error, 1e-20);
  const TQXFormula Formula(Model);
  EXPECT_EQ(Formula.Variables(), (std::vector<std::string>{"t", "T"}));
  EXPECT_EQ(Formula.Text(fsInfix).find("T_"), std::string::npos) << Formula.Text(fsInfix);
  EXPECT_EQ(Regression.TrainingData().ColumnName(1), "T");
  TQXDataSet Other; // in another order, with less and more
  Other.AddColumn("T", {20, 30});
  Other.AddColumn("T__", {0, 0});
  Other.AddColumn("t", {1, 2});
  const auto Predictions = Regression.Predict(Model, Other);
  EXPECT_NEAR(Predictions[0], 399, 1e-6);
  EXPECT_NEAR(Predictions[1], 898, 1e-6);
  EXPECT_NEAR(Regression.Error(Model, Regression.TrainingData(), emMSE), 0, 1e-12);
  try {
    Regression.Predict(Model, Other.Without(std::vector<std::string>{"T"}));
    FAIL() << "nothing raised";
  } catch (const std::invalid_argument& Error) {
    EXPECT_STREQ(Error.what(), "The data have no column \"T\"");
  }
}

TEST(SymbolicRegression, AGenerationThatIsLateIsCutShort) {
  constexpr int Count = 20'000;
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  Regression.SetInitialPopulation(Count);
  Regression.SetDeadline(0);
  Regression.Initialize();
  EXPECT_TRUE(Regression.IsCutShort());
  EXPECT_EQ(Regression.Evaluations(), 8192) << "a block, and nothing refined";
  EXPECT_FALSE(Regression.Front().Empty());
  EXPECT_EQ(Regression.Population()[Count - 1].Fitness(), Regression.UnfitFitness());
  Regression.Evolve();
  EXPECT_EQ(Regression.Generation(), 1);
  EXPECT_EQ(Regression.Population().Count(), Count);
  const auto Former = Regression.Evaluations();
  Regression.SetDeadline(std::numeric_limits<double>::infinity());
  EXPECT_FALSE(Regression.IsCutShort());
  Regression.Evolve();
  EXPECT_GT(Regression.Evaluations(), Former + Count / 2);
}

TEST(SymbolicRegression, ARunThatIsNotLateIsTheSameAsWithoutADeadline) {
  std::string Outcomes[2];
  for (std::string& Result : Outcomes) {
    TQXSymbolicRegression Regression;
    Prepare(Regression);
    Regression.SetDeadline(&Result == Outcomes ? 1e6 : std::numeric_limits<double>::infinity());
    Regression.Evolve(5);
    EXPECT_FALSE(Regression.IsCutShort());
    Result = Outcome(Regression);
  }
  EXPECT_TRUE(Outcomes[0] == Outcomes[1]);
}

TEST(SymbolicRegression, AStartWithinARunIsNoNewRun) {
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  Regression.SetRestartPatience(1);
  Regression.SetUseFitnessCutoff(false);
  double Best = std::numeric_limits<double>::infinity();
  for (int I = 1; I <= 4; ++I) {
    EXPECT_EQ(Regression.Evolve(5), 5);
    EXPECT_EQ(Regression.Generation(), 5 * I);
    ASSERT_NE(Regression.BestEver(), nullptr);
    EXPECT_LE(Regression.BestEver()->Fitness(), Best);
    Best = Regression.BestEver()->Fitness();
  }
}

// Functions of the host that turn to the component.
class AskedRegression : public testing::Test {
protected:
  AskedRegression() {
    auto& Function = Regression.Instructions().Add();
    Function.SetName("Act");
    Function.SetArity(1);
    AddStandardInstruction(Regression.Instructions(), "Add");
    Prepare(Regression);
    Regression.BatchFunctions().SetColumnFunction("Act", [this](auto Arguments, auto Results) {
      if (Act) {
        std::exchange(Act, nullptr)();
      }
      std::ranges::copy(Arguments[0], Results.begin());
    });
  }

  TQXSymbolicRegression Regression;
  std::function<void()> Act;
};

TEST_F(AskedRegression, RefusesOtherDataAndSettingsMeanwhile) {
  const std::vector<std::function<void()>> Acts = {
      [&] { Regression.SetData(DataOf(9000, Wave), "y"); }, [&] { Regression.SetErrorMeasure(emMAE); },
      [&] { Regression.SetSinglePrecision(true); }, [&] { Regression.SetThreads(3); },
      [&] { Regression.SetLinearScaling(false); }};
  for (const auto& Wanted : Acts) {
    Act = Wanted;
    EXPECT_THROW(Regression.Evolve(2), std::logic_error);
    EXPECT_EQ(Act, nullptr);
  }
  EXPECT_EQ(Regression.TrainingData().RowCount(), 40);
  EXPECT_EQ(Regression.ErrorMeasure(), emNMSE);
  EXPECT_NO_THROW(Regression.Evolve(2));
}

TEST_F(AskedRegression, TellsErrorsMeanwhile) {
  Regression.Evolve(1);
  for (auto& Individual : Regression.Population()) {
    Individual.Modified();
  }
  auto& First = Regression.Population()[0];
  double Told = 0;
  Act = [&] { Told = Regression.ErrorOf(First); };
  Regression.EvaluateFitness();
  EXPECT_EQ(Act, nullptr);
  for (auto& Individual : Regression.Population()) {
    const double Error = Regression.ErrorOf(Individual);
    EXPECT_EQ(Individual.Fitness(), std::isfinite(Error) ? Error : Regression.UnfitFitness());
  }
}

TEST(SymbolicRegression, DescribesItsSettings) {
  TQXSymbolicRegression Regression;
  Regression.SetErrorMeasure(emMAE);
  Regression.SetRestartPatience(7);
  const std::string Text = Regression.ToString();
  EXPECT_NE(Text.find("\nRegression\n   Error Measure = emMAE\n   Linear Scaling = Yes\n"),
            std::string::npos);
  EXPECT_NE(Text.find("   Refinement Share = 20.00%\n"), std::string::npos);
  EXPECT_NE(Text.find("   Restart Patience = 7\n"), std::string::npos);
}

TEST(SymbolicRegression, RefusesDataThatDoNotServeAndChangesNothing) {
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  const auto Names = NamesOf(Regression);
  EXPECT_THROW(Regression.SetData(DataOf(5, Wave), "z"), std::out_of_range);
  EXPECT_THROW(Regression.SetData(DataOf(5, Wave), "y", "z"), std::out_of_range);
  EXPECT_THROW(Regression.SetData(DataOf(5, Wave), "y", "x"), std::invalid_argument); // negative weights
  EXPECT_THROW(Regression.SetData(TQXDataSet(), "y"), std::invalid_argument);
  EXPECT_THROW(Regression.SetData(DataOf(5, Wave).Rows(0, 0), "y"), std::invalid_argument);
  EXPECT_THROW(Regression.SetData(DataOf(5, [](double) { return NAN; }), "y"), std::invalid_argument);
  TQXDataSet Data = DataOf(5, Wave);
  Data.AddColumn("Sin", {1, 2, 3, 4, 5});
  EXPECT_THROW(Regression.SetData(Data, "y"), EGPException);
  EXPECT_EQ(NamesOf(Regression), Names);
  EXPECT_EQ(Regression.TrainingData().RowCount(), 40);
  EXPECT_EQ(Regression.TargetName(), "y");
}

TEST(SymbolicRegression, WithoutDataThereIsNothingToLearnFrom) {
  TQXSymbolicRegression Regression;
  EXPECT_THROW(Regression.Evolve(), EGAException);
  EXPECT_EQ(Regression.BestModel(), nullptr);
}

TEST(SymbolicRegression, FitnessIsTheErrorOfTheScaledProgram) {
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  Regression.Evolve(3);
  auto& Fittest = *Regression.FittestIndividual();
  const auto Scaling = Regression.ScalingOf(Fittest);
  TQXGPFloatContext Context;
  double Squares = 0;
  double Sum = 0;
  double TargetSquares = 0;
  const auto& Data = Regression.TrainingData();
  for (const double Value : Data.Column("y")) {
    Sum += Value / Data.RowCount();
  }
  for (std::size_t Row = 0; Row < 40; ++Row) {
    Context.Values().AddOrSetValue("x", Data.Column("x")[Row]);
    Context.Values().AddOrSetValue("other", Data.Column("other")[Row]);
    const double Target = Data.Column("y")[Row];
    Squares += std::pow(Target - (Scaling.Offset + Scaling.Scale * Fittest.Execute(&Context)), 2);
    TargetSquares += std::pow(Target - Sum, 2);
  }
  EXPECT_NEAR(Fittest.Fitness(), Squares / TargetSquares, 1e-12);
  EXPECT_EQ(Regression.ErrorOf(Fittest), Fittest.Fitness());
}

TEST(SymbolicRegression, ProgramsWithoutFiniteValuesAreUnfit) {
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  Regression.Initialize();
  auto& Individual = Regression.Population()[0];
  auto Program = Regression.CreateNode(&Regression.Instructions()[Regression.Instructions().IndexOf("Exp")]);
  Program
      ->AddChild(
          Regression.CreateNode(&Regression.Instructions()[Regression.Instructions().IndexOf("Constant")]))
      .SetValue(1e6);
  Individual.AssignDNA(std::move(Program));
  EXPECT_EQ(Individual.Fitness(), Regression.UnfitFitness());
  EXPECT_FALSE(std::isfinite(Regression.ErrorOf(Individual)));
}

TEST(SymbolicRegression, IsTheSameOnAnyNumberOfThreads) {
  std::string Expected;
  for (const int Threads : {1, 2, 3, 8}) {
    TQXSymbolicRegression Regression;
    Regression.SetThreads(Threads);
    Prepare(Regression, 600);
    Regression.Evolve(12);
    const std::string Reached = Outcome(Regression);
    if (Expected.empty()) {
      Expected = Reached;
    }
    EXPECT_TRUE(Reached == Expected) << Threads;
  }
}

// What a run comes to with each of the sets of kernels that this processor has.
template <class TPrepare>
std::vector<std::string> OutcomesByKernels(TPrepare PrepareRun) {
  std::vector<std::string> Outcomes;
  for (std::size_t I = 0; I < AllBlockKernels<double>().size(); ++I) {
    detail::LastKernels = I;
    TQXSymbolicRegression Regression;
    PrepareRun(Regression);
    Regression.Evolve(12);
    Outcomes.push_back(Outcome(Regression));
  }
  detail::LastKernels = std::numeric_limits<std::size_t>::max();
  return Outcomes;
}

TEST(SymbolicRegression, IsTheSameOnEveryInstructionSet) {
  for (const bool Single : {false, true}) {
    for (const TErrorMeasure Measure : {emNMSE, emMAE, emCorrelation}) {
      const auto Outcomes = OutcomesByKernels([&](TQXSymbolicRegression& Regression) {
        Regression.SetSinglePrecision(Single);
        Regression.SetErrorMeasure(Measure);
        for (const TStandardGroup Group :
             {sgArithmetic, sgPowers, sgExponential, sgTrigonometric, sgExtremes}) {
          AddStandardInstructions(Regression.Instructions(), Group);
        }
        Prepare(Regression, 300);
      });
      for (const std::string& Other : Outcomes) {
        EXPECT_TRUE(Other == Outcomes.front()) << Measure << Single;
      }
      EXPECT_GT(Outcomes.front().size(), 60U);
    }
  }
}

TEST(SymbolicRegression, CodeOfTheHostRunsOnTheCallersThread) {
  TQXSymbolicRegression Regression;
  const auto Caller = std::this_thread::get_id();
  bool Elsewhere = false;
  int Calls = 0;
  auto& Own = Regression.Instructions().Add();
  Own.SetName("Own");
  Own.SetArity(1);
  Own.OnExecute = [&](auto&, auto& Node, auto* Context, double& Result) {
    Elsewhere |= std::this_thread::get_id() != Caller;
    ++Calls;
    Result = Node.ExecuteChild(0, Context) / 2;
  };
  AddStandardInstruction(Regression.Instructions(), "Add");
  AddStandardInstruction(Regression.Instructions(), "Sin");
  Regression.SetThreads(4);
  Prepare(Regression);
  Regression.Evolve(5);
  EXPECT_FALSE(Elsewhere);
  EXPECT_GT(Calls, 0);
}

TEST(SymbolicRegression, ErrorsOfHostCodeEndTheGenerationAndTheRunGoesOnAfterwards) {
  TQXSymbolicRegression Regression;
  auto& Own = Regression.Instructions().Add();
  Own.SetName("Own");
  Own.SetArity(1);
  bool Raises = true;
  Own.OnExecute = [&](auto&, auto& Node, auto* Context, double& Result) {
    if (Raises) {
      throw std::runtime_error("not now");
    }
    Result = Node.ExecuteChild(0, Context);
  };
  AddStandardInstruction(Regression.Instructions(), "Add");
  Prepare(Regression);
  EXPECT_THROW(Regression.Evolve(), std::runtime_error);
  Raises = false;
  EXPECT_EQ(Regression.Evolve(3), 3);
}

TEST(SymbolicRegression, TheFrontHasTheLeastErrorForEachSize) {
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  std::vector<double> Least(200, std::numeric_limits<double>::infinity()); // by size
  Regression.SetKeepsBest(false);
  Regression.OnEvolve = [&](auto& Sender) {
    for (auto& Individual : Sender.Population()) {
      double& Error = Least[static_cast<std::size_t>(Individual.DNA()->Size())];
      Error = std::min(Error, Individual.Fitness());
    }
  };
  Regression.Initialize();
  Regression.OnEvolve(Regression);
  Regression.Evolve(15);
  double Best = std::numeric_limits<double>::infinity();
  int Count = 0;
  for (std::size_t Size = 0; Size < Least.size(); ++Size) {
    if (Least[Size] < Best && Least[Size] < Regression.UnfitFitness()) {
      Best = Least[Size];
      ASSERT_LT(Count, Regression.Front().Count());
      EXPECT_EQ(Regression.Front()[Count].Size(), static_cast<int>(Size));
      EXPECT_EQ(Regression.Front()[Count].Error, Best);
      ++Count;
    }
  }
  EXPECT_EQ(Regression.Front().Count(), Count);
  EXPECT_EQ(Regression.BestModel(), &Regression.Front()[Count - 1]); // there are no test rows
}

TEST(SymbolicRegression, TestRowsJudgeTheModels) {
  SeedRandom(3);
  TQXSymbolicRegression Regression;
  Regression.SetInitialPopulation(80);
  Regression.SetData(DataOf(60, Wave).SplitBySeed(0.5, 1), "y");
  Regression.Evolve(10);
  const TRegressionModel& Best = *Regression.BestModel();
  for (const TRegressionModel& Model : Regression.Front()) {
    EXPECT_GE(Model.TestError, Best.TestError); // of all that have been in the front
    EXPECT_NEAR(Regression.Error(Model, Regression.TestData(), emNMSE), Model.TestError, 1e-12);
    EXPECT_NEAR(Regression.Error(Model, Regression.TrainingData(), emNMSE), Model.Error, 1e-12);
  }
  const auto Predictions = Regression.Predict(Best, Regression.TestData());
  ASSERT_EQ(Predictions.size(), 30U);
  EXPECT_NEAR(Predictions[0], Regression.TestData().Column("y")[0], 1);
}

TEST(SymbolicRegression, StopsWhenTheTestErrorStands) {
  SeedRandom(4);
  TQXSymbolicRegression Regression;
  Regression.SetInitialPopulation(50);
  Regression.SetStoppingPatience(5);
  int Row = 0;
  Regression.SetData(DataOf(60, [&](double) { return (++Row * 7919) % 101; }).SplitBySeed(0.5, 1), "y");
  int Stands = -1; // not the initial generation
  double Least = std::numeric_limits<double>::infinity();
  Regression.OnRecord = [&](auto&, const TRegressionRecord& Record) {
    Stands = Record.BestTestError < Least ? 0 : Stands + 1; // the least one is never lost
    Least = std::min(Least, Record.BestTestError);
  };
  Regression.Evolve(1000);
  EXPECT_LT(Regression.Generation(), 1000);
  EXPECT_EQ(Stands, 5);
}

TEST(SymbolicRegression, PredictionNamesTheColumnThatIsMissing) {
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  Regression.Evolve(5);
  TQXDataSet Data;
  Data.AddColumn("y", {1, 2});
  const auto Model = Regression.BestModel()->Clone();
  ASSERT_FALSE(TQXFormula(Model).Variables().empty());
  EXPECT_THROW(Regression.Predict(Model, Data), std::invalid_argument);
}

TEST(SymbolicRegression, RecordsTellWhatAGenerationCameTo) {
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  std::vector<TRegressionRecord> Records;
  Regression.OnRecord = [&](auto& Sender, const TRegressionRecord& Record) {
    Records.push_back(Record);
    EXPECT_EQ(Record.Generation, Sender.Generation());
    EXPECT_EQ(Record.BestError, Sender.MinFitness());
    EXPECT_EQ(Record.MaxSize, Sender.MaxProgramSize());
    EXPECT_EQ(Record.Evaluations, Sender.Evaluations());
    std::set<double> Errors;
    double Sum = 0;
    int Unfit = 0;
    for (auto& Individual : Sender.Population()) {
      if (Individual.Fitness() < Sender.UnfitFitness()) {
        Errors.insert(Individual.Fitness());
        Sum += Individual.Fitness();
      } else {
        ++Unfit;
      }
    }
    EXPECT_EQ(Record.UnfitCount, Unfit);
    EXPECT_NEAR(Record.MeanError, Sum / (60 - Unfit), 1e-9 * Record.MeanError);
    EXPECT_DOUBLE_EQ(Record.Diversity, static_cast<double>(Errors.size()) / 60);
  };
  Regression.Evolve(4);
  ASSERT_EQ(Records.size(), 5U);
  for (std::size_t I = 0; I < Records.size(); ++I) {
    EXPECT_EQ(Records[I].Generation, static_cast<int>(I));
    EXPECT_TRUE(std::isnan(Records[I].BestTestError));
    EXPECT_GE(Records[I].Seconds, I == 0 ? 0 : Records[I - 1].Seconds);
  }
}

TEST(SymbolicRegression, TheBestProgramIsKept) {
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  Regression.SetRestartPatience(0);
  double Least = std::numeric_limits<double>::infinity();
  Regression.OnEvolve = [&](auto& Sender) {
    EXPECT_LE(Sender.MinFitness(), Least);
    Least = Sender.MinFitness();
  };
  Regression.Evolve(25);
}

TEST(SymbolicRegression, ARunThatStandsStartsAnewWithLargerPrograms) {
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  Regression.SetRestartPatience(12);
  int Starts = 0;
  Regression.OnInitialization = [&](auto& Sender,
                                    bool& Filled) { // small programs, which reproduction enlarges
    const auto Node = [&](const char* Name) {
      return Sender.CreateNode(&Sender.Instructions()[Sender.Instructions().IndexOf(Name)]);
    };
    for (auto& Individual : Sender.Population()) {
      auto Sum = Node("Add");
      Sum->AddChild(Node("other"));
      Sum->AddChild(Node("other"));
      Individual.AssignDNA(std::move(Sum));
    }
    Filled = true;
    ++Starts;
  };
  constexpr int Limits[] = {12, 12, 16, 12, 16, 21, 12, 16, 21, 28};
  std::vector<int> Largest;
  Regression.OnRecord = [&](auto&, const TRegressionRecord& Record) {
    Largest.resize(static_cast<std::size_t>(Starts));
    Largest.back() = std::max(Largest.back(), Record.MaxSize);
  };
  while (Starts < 10) {
    Regression.Evolve();
  }
  for (std::size_t Start = 0; Start + 1 < Largest.size(); ++Start) {
    EXPECT_LE(Largest[Start], Limits[Start]) << Start;
  }
  EXPECT_GT(*std::ranges::max_element(Largest), 16);
  EXPECT_GT(Regression.Generation(), 9 * 12);
}

TEST(SymbolicRegression, ChangesOfWhatErrorsDependOnMakeIndividualsStale) {
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  for (const auto& Change : std::vector<std::function<void()>>{
           [&] { Regression.SetErrorMeasure(emMAE); }, [&] { Regression.SetLinearScaling(false); },
           [&] { Regression.SetSinglePrecision(true); },
           [&] { Regression.SetData(DataOf(30, Wave), "y"); }}) {
    Regression.Evolve(2);
    EXPECT_FALSE(Regression.Population()[0].NeedFitness());
    EXPECT_FALSE(Regression.Front().Empty());
    Change();
    EXPECT_TRUE(Regression.Population()[0].NeedFitness());
    EXPECT_TRUE(Regression.Front().Empty());
  }
  Regression.SetErrorMeasure(emMAE); // no change
  Regression.Evolve(1);
  EXPECT_FALSE(Regression.Front().Empty());
  EXPECT_THROW(Regression.SetErrorMeasure(static_cast<TErrorMeasure>(6)), std::out_of_range);
  EXPECT_THROW(Regression.SetRefinementShare(NAN), std::invalid_argument);
}

TEST(SymbolicRegression, AChangeOfInstructionsDropsTheModels) {
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  Regression.Evolve(2);
  Regression.Instructions().Delete(Regression.Instructions().IndexOf("Sin"));
  EXPECT_TRUE(Regression.Front().Empty());
  EXPECT_EQ(Regression.BestModel(), nullptr);
  Regression.Evolve(2);
  EXPECT_EQ(Regression.Generation(), 2); // of a new run
}

TEST(SymbolicRegression, AHandlerOfTheHostTakesTheFitnessPlace) {
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  Regression.OnEvaluateFitness = [](auto& Sender, auto& Item, double& Fitness) {
    Fitness = Sender.ErrorOf(Item) + Item.DNA()->Size();
  };
  Regression.Evolve(2);
  auto& Fittest = *Regression.FittestIndividual();
  EXPECT_EQ(Fittest.Fitness(), Regression.ErrorOf(Fittest) + Fittest.DNA()->Size());
}

TEST(SymbolicRegression, SinglePrecisionLearnsToo) {
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  Regression.SetSinglePrecision(true);
  Regression.Evolve(20);
  EXPECT_LT(Regression.BestModel()->Error, 0.05);
}

TEST(SymbolicRegression, RefinementMakesNoProgramWorseByTheMeasure) {
  for (const TErrorMeasure Measure : {emMAE, emCorrelation, emNMSE}) {
    SeedRandom(5);
    TQXSymbolicRegression Regression;
    Regression.SetInitialPopulation(30);
    Regression.SetErrorMeasure(Measure);
    Regression.SetLinearScaling(false);
    Regression.SetRefinementShare(1);
    Regression.SetRestartPatience(0);
    int Row = 0; // of which one is far off
    Regression.SetData(DataOf(11, [&](double X) { return X + (++Row == 4 ? 100 : 0); }), "y");
    std::vector<double> Before; // of programs as they are made
    Regression.OnInitialization = [&](auto& Sender, bool& Filled) {
      auto& Set = Sender.Instructions();
      for (auto& Individual : Sender.Population()) {
        auto Sum = Sender.CreateNode(&Set[Set.IndexOf("Add")]);
        Sum->AddChild(Sender.CreateNode(&Set[Set.IndexOf("x")]));
        Sum->AddChild(Sender.CreateNode(&Set[Set.IndexOf("Constant")])).SetValue(Individual.Index());
        Individual.AssignDNA(std::move(Sum));
        Before.push_back(Sender.ErrorOf(Individual));
      }
      Filled = true;
    };
    Regression.Initialize();
    for (std::size_t I = 0; I < Before.size(); ++I) {
      EXPECT_LE(Regression.Population()[static_cast<int>(I)].Fitness(), Before[I]) << Measure;
    }
  }
}

TEST(SymbolicRegression, ATestErrorThatIsNoNumberIsBeatenByAnyOther) {
  for (int Seed = 1; Seed <= 6; ++Seed) {
    SeedRandom(static_cast<std::uint64_t>(Seed));
    TQXSymbolicRegression Regression;
    Regression.SetInitialPopulation(60);
    TDataSplit Split = DataOf(40, Wave).SplitBySeed(0.5, 1);
    std::vector<double> Broken(Split.Test.Column("other").begin(), Split.Test.Column("other").end());
    Broken[0] = NAN;
    TQXDataSet Rest;
    Rest.AddColumn("x", Split.Test.Column("x"));
    Rest.AddColumn("other", Broken);
    Rest.AddColumn("y", Split.Test.Column("y"));
    Split.Test = Rest;
    Regression.SetData(Split, "y");
    Regression.Evolve(10);
    EXPECT_TRUE(std::isfinite(Regression.BestModel()->TestError)) << Seed;
  }
}

TEST(SymbolicRegression, TestRowsNeedTheColumnsToo) {
  TQXSymbolicRegression Regression;
  TDataSplit Split = DataOf(40, Wave).SplitByShare(0.5);
  TQXDataSet Rest;
  Rest.AddColumn("y", Split.Test.Column("y"));
  Split.Test = Rest;
  EXPECT_THROW(Regression.SetData(Split, "y"), std::out_of_range);
  EXPECT_EQ(Regression.Instructions().Count(), 0);
}

TEST(SymbolicRegression, ARunThatIsFinishedIsTakenUpWhenErrorsMeanSomethingElse) {
  TQXSymbolicRegression Regression;
  SeedRandom(1);
  Regression.SetInitialPopulation(60);
  Regression.SetData(DataOf(20, [](double X) { return 2 * X; }), "y");
  Regression.Evolve(5);
  ASSERT_TRUE(Regression.IsFinished());
  Regression.SetErrorMeasure(emMSE);
  Regression.Evolve(1);
  ASSERT_NE(Regression.BestModel(), nullptr);
  Regression.SetData(DataOf(20, Wave), "y");
  EXPECT_EQ(Regression.Evolve(1), 1);
  EXPECT_GT(Regression.MinFitness(), 1e-6);
}

TEST(SymbolicRegression, AskingForAnErrorChangesNothing) {
  TQXSymbolicRegression Regression;
  Prepare(Regression);
  Regression.Evolve(1);
  const auto Evaluations = Regression.Evaluations();
  Regression.ErrorOf(Regression.Population()[0]);
  EXPECT_EQ(Regression.Evaluations(), Evaluations);
}

} // namespace
