#pragma once

#include <qx/genetic_programming/QXGeneticProgramming.h>
#include <qx/symbolic_regression/BatchEvaluator.h>
#include <qx/symbolic_regression/DataSet.h>
#include <qx/symbolic_regression/ErrorMeasure.h>
#include <qx/symbolic_regression/RegressionModel.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qx {

class TQXSymbolicRegression;

/// What a generation came to.
struct TRegressionRecord {
  int Generation = 0;
  double BestError = 0;     // of the generation, on the training rows
  double MeanError = 0;     // of the programs whose error is a number
  int UnfitCount = 0;       // programs without such an error, or ruled out
  double Diversity = 0;     // the share of different errors, 0 to 1
  double BestTestError = 0; // that of the best model; NaN without test rows
  int MinSize = 0;
  int MaxSize = 0;
  double AvgSize = 0;
  int MinDepth = 0;
  int MaxDepth = 0;
  double AvgDepth = 0;
  std::int64_t Evaluations = 0; // of programs over all training rows, since the run began
  double Seconds = 0;           // since the run began, or was taken up
};

/// Finds formulas for a column of a data set: genetic programming with its fitness built in.
///
///     qx::TQXSymbolicRegression regression;
///     regression.SetData(qx::TQXDataSet::FromCSV("planets.csv"), "period");
///     regression.Evolve(50);
///     std::cout << regression.BestModel()->Program->ToString();
///
/// `SetData` declares what is missing: a variable for each column, the functions Add, Sub, Mul, Div, Sin,
/// Cos, Exp, Log and Sqrt, and an ephemeral constant. A program's fitness is its error on the training rows,
/// which is minimized; one whose values are not finite gets `UnfitFitness`. A generation is evaluated at
/// once, over blocks of rows (see `TQXBatchEvaluator`), on as many threads as are wanted; the run is the same
/// for any number of them, and only what calls code of the host stays on the caller's thread.
///
/// What the other settings of this component begin with: a population of 1000, no retries of duplicates,
/// tournaments of 5, crossover with a chance of 0.9, mutation of 0.3 and inversion of 0.05, ramped
/// half-and-half to depth 6, no programs above 50 nodes (bsSizeLimit), all six mutation methods, Gaussian
/// steps of constants, and an end at an error of 1e-24.
class TQXSymbolicRegression
    : public TQXTypedGeneticProgramming<TQXCustomGeneticProgramming, TQXSymbolicRegression> {
public:
  using TNode = generics::TQXGPNode<TGAFloat>;

  explicit TQXSymbolicRegression(TComponent* Owner = nullptr);
  ~TQXSymbolicRegression() override;

  // --- Data -----------------------------------------------------------------------------------------------

  /// The rows to learn from and the column to be explained; `Weights` names a column of weights, if there is
  /// one. Variables that the data have no column for are removed. All individuals are stale then, and the
  /// front is empty. Raises std::out_of_range for a column that there is not, std::invalid_argument for
  /// targets and weights that are none (see `TRegressionTarget`) and data without rows, and EGPException for
  /// a column that has the name of an instruction that is no variable; std::logic_error within an evaluation;
  /// nothing has changed then. Models refer to the variables: those of other columns end with them. Of
  /// columns whose names differ by the case of letters alone only the first one has a variable of its name,
  /// the others have theirs with "_" at the end.
  void SetData(TQXDataSet Data, std::string_view Target, std::string_view Weights = {});
  /// The same with rows that judge the models and stop the run, which no program is selected by.
  void SetData(TDataSplit Split, std::string_view Target, std::string_view Weights = {});
  const TQXDataSet& TrainingData() const { return FTraining.Data; }
  const TQXDataSet& TestData() const { return FTest.Data; }
  const std::string& TargetName() const { return FTargetName; }
  const std::string& WeightsName() const { return FWeightsName; }
  /// The columns of variables that are not called so; nullptr when there are none.
  std::shared_ptr<const TColumnNames> ColumnNames() const { return FColumnNames; }
  /// The host's kernels for its own instructions. Change them before a run.
  TQXBatchFunctions& BatchFunctions() { return FFunctions; }

  // --- Settings -------------------------------------------------------------------------------------------
  // A change of one that errors depend on makes all individuals stale and empties the front. An enumeration
  // value that does not exist raises std::out_of_range.

  /// Default emNMSE.
  TErrorMeasure ErrorMeasure() const { return FSettings.ErrorMeasure; }
  void SetErrorMeasure(TErrorMeasure Value);
  /// Whether programs are judged after the best linear scaling of their values. Default true.
  bool LinearScaling() const { return FSettings.LinearScaling; }
  void SetLinearScaling(bool Value);
  /// Whether programs are evaluated in single precision. Default false.
  bool SinglePrecision() const { return FSettings.SinglePrecision; }
  void SetSinglePrecision(bool Value);
  /// Share of the population, the best ones among those that are new, whose constants are refined in each
  /// generation; see `TConstantRefinement`. Default 0.2, clamped to 0..1; raises std::invalid_argument for
  /// NaN.
  TGAProbability RefinementShare() const { return FSettings.RefinementShare; }
  void SetRefinementShare(TGAProbability Value);
  /// Steps of a refinement. Default 8; negative values become 0, which turns it off.
  int RefinementSteps() const { return FSettings.RefinementSteps; }
  void SetRefinementSteps(int Value) { FSettings.RefinementSteps = std::max(Value, 0); }
  /// Whether the best program of all so far takes the place of the worst one when it has been lost. Default
  /// true.
  bool KeepsBest() const { return FSettings.KeepsBest; }
  void SetKeepsBest(bool Value) { FSettings.KeepsBest = Value; }
  /// Generations in which the least error has not fallen by a tenth, after which the population is made anew.
  /// Under bsSizeLimit, children of more than 12 nodes then give way to their parents, of a third more at the
  /// next start, and so on to a larger size than before, until `BloatLimit`: small formulas are found among
  /// small programs. Default 10; 0 for no such start, and for the full size at once. Negative values become
  /// 0.
  int RestartPatience() const { return FSettings.RestartPatience; }
  void SetRestartPatience(int Value) { FSettings.RestartPatience = std::max(Value, 0); }
  /// Generations without a better error on the test rows after which a run is finished; 0, the default, for
  /// no such end. Negative values become 0.
  int StoppingPatience() const { return FSettings.StoppingPatience; }
  void SetStoppingPatience(int Value) { FSettings.StoppingPatience = std::max(Value, 0); }
  /// Threads that evaluate a generation. Default 1; smaller values become 1.
  int Threads() const { return FThreads; }
  void SetThreads(int Value);

  /// So many seconds from now on, a generation that is under way is cut short, so that large populations keep
  /// to a time as well: programs that are not evaluated by then are unfit, constants are not refined, and
  /// children are copies. Infinite, the default: none is. A run that has not been cut is the same as without.
  void SetDeadline(double Seconds);
  /// Whether that has happened since.
  bool IsCutShort() const { return FIsCutShort; }

  // --- Results --------------------------------------------------------------------------------------------

  /// The best programs of the run by size.
  const TRegressionFront& Front() const { return FFront; }
  /// Of all models that have come into the front, the one with the least error on the test rows or, without
  /// such rows, on the training rows; nullptr when there is none.
  const TRegressionModel* BestModel() const { return FTested.Empty() ? FFront.Last() : &FTested[0]; }
  /// What a model says for the rows of a data set, one value for each; columns count by their names. Raises
  /// std::invalid_argument, which names it, for a variable of the model that the data have no column for.
  std::vector<double> Predict(const TRegressionModel& Model, const TQXDataSet& Data);
  /// The error of those predictions by a measure. Raises as `Predict`, and std::out_of_range for data without
  /// the target's column.
  double Error(const TRegressionModel& Model, const TQXDataSet& Data, TErrorMeasure Measure);
  /// The error of an individual on the training rows; infinite when it is no number.
  double ErrorOf(TIndividual& Individual);
  /// The scaling that belongs to it.
  TLinearScaling ScalingOf(TIndividual& Individual);
  /// Programs that have been evaluated over all training rows since the run began.
  std::int64_t Evaluations() const { return FRun.Evaluations; }

  /// Called after each generation, the initial one included.
  TQXEvent<void(TQXSymbolicRegression& Sender, const TRegressionRecord& Record)> OnRecord;

  /// Begins a run: without models, counted from nothing. Raises EGAException without data.
  void Initialize() override;
  /// Also when the test error stands; see `StoppingPatience`.
  bool IsFinished() override;
  /// Adds the settings of this class.
  void Describe(TStrings& Strings, std::string_view TabStr) const override;
  /// Copies the settings too, but neither data nor models nor the host's kernels.
  void Assign(const TPersistent& Source) override;
  void AssignAll(const TPersistent& Source) override;

protected:
  /// Swaps subtrees in their places, so that arguments keep theirs. Under the fair strategies, as inherited.
  bool DoCrossover(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                   TQXIndividual* Child2) override;
  void DoCalculateFitnessStatistics() override;
  void DoEvolve() override;
  void DoFinishEvolve() override;
  bool DoReproduce(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1) override;
  bool DoReproduce(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                   TQXIndividual& Child2) override;
  void InstructionUpdate(TInstruction* Instruction) override;
  void InstructionNotify(TInstruction& Instruction, TCollectionNotification Action) override;
  void DefineProperties(TFiler& Filer) override;
  /// Adds the front and what the run has counted. A checkpoint does not hold the data: set them before it is
  /// loaded.
  void DefineState(TFiler& Filer) override;
  void Remember(TLoadScope& Load) override;

private:
  struct TSettings {
    TErrorMeasure ErrorMeasure = emNMSE;
    bool LinearScaling = true;
    bool SinglePrecision = false;
    bool KeepsBest = true;
    TGAProbability RefinementShare = 0.2;
    int RefinementSteps = 8;
    int RestartPatience = 10;
    int StoppingPatience = 0;
  };
  struct TRows {
    TQXDataSet Data;
    TRegressionTarget Target;
    std::optional<TQXDataSet> Renamed = std::nullopt; // where variables are not called as their columns

    /// The columns under the names of their variables.
    const TQXDataSet& Inputs() const { return Renamed ? *Renamed : Data; }
  };
  struct TRun {
    std::int64_t Evaluations = 0;
    int GenerationsWithoutBetter = 0; // on the test rows
    // Since the population was last made:
    int Starts = 0;                                              // before that
    double LeastError = std::numeric_limits<double>::infinity(); // that counted as a step forward
    int GenerationsWithoutStep = 0;
  };
  // A program that is being evaluated.
  struct TJob {
    TIndividual* Individual;
    TNode* Program;
    TLinearScaling Scaling;
    double Error;
  };
  class TFitnessHandler;
  class TEvaluated;
  class TEvaluation;
  class TWorker;

  static TRows RowsFor(TQXDataSet Data, std::string_view Target, std::string_view Weights);
  std::vector<std::string> VariablesFor(const std::vector<std::string>& Inputs);
  void Declare(const std::vector<std::string>& Variables);
  void AssignSettings(const TPersistent& Source);
  void ForgetErrors();
  void ForgetModels();
  void RequireData() const;
  static double Now();
  bool HasOwnFitness() const;
  void EvaluateGeneration();
  void PrepareWorkers();
  void EvaluateJobs(std::span<TJob> Jobs);
  void RequireNoEvaluation(const char* Call) const;
  bool IsLate();
  std::size_t EvaluateInTime(std::span<TJob> Jobs);
  void RefineBest(std::span<TJob> Jobs);
  void KeepBest(std::span<TJob> Jobs);
  void UpdateFront(std::span<const TJob> Jobs);
  void UpdateBest(std::span<const TJob> Jobs);
  int SizeLimit() const;
  void LimitSize(TIndividual& Child, TQXIndividual& Parent);
  TJob JobFor(TIndividual& Individual);
  void TellRecord();
  void DefineColumnNames(TFiler& Filer);
  void DefineFront(TFiler& Filer, const std::string& Name, TRegressionFront& Front);

  TSettings FSettings;
  int FThreads = 1;
  TRows FTraining;
  TRows FTest;
  std::string FTargetName;
  std::string FWeightsName;
  std::shared_ptr<const TColumnNames> FColumnNames;
  TQXBatchFunctions FFunctions;
  TRegressionFront FFront;
  TRegressionFront FTested; // the model with the least test error, if there is one
  TRegressionFront FBest;   // the best program since the last start, if there is one
  TRun FRun;
  double FStart = 0; // seconds
  double FDeadline = std::numeric_limits<double>::infinity();
  std::atomic<bool> FIsCutShort = false;
  const TQXIndividual* FEvaluated = nullptr; // whose error is known
  double FEvaluatedError = 0;
  std::vector<std::unique_ptr<TWorker>> FWorkers;
  int FEvaluating = 0; // programs, which may call code of the host
};

} // namespace qx
