// Settings, data and results of symbolic regression.

#include <qx/platform/Text.h>
#include <qx/symbolic_regression/RegressionDefaults.h>
#include <qx/symbolic_regression/RegressionWorker.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>

namespace qx {

template <>
std::span<const std::string_view> EnumNames<TErrorMeasure>() {
  static constexpr std::string_view Names[] = {"emMSE", "emRMSE", "emNMSE", "emMAE", "emR2", "emCorrelation"};
  return Names;
}

// Gives individuals their errors. While a generation is evaluated they are known.
class TQXSymbolicRegression::TFitnessHandler {
public:
  explicit TFitnessHandler(TQXSymbolicRegression& Regression) : FRegression(&Regression) {}
  void operator()(TQXCustomGeneticComponent& /*Sender*/, TQXIndividual& Item, TGAFitness& Fitness) const {
    const bool IsKnown = &Item == FRegression->FEvaluated;
    const double Error =
        IsKnown ? FRegression->FEvaluatedError : FRegression->ErrorOf(static_cast<TIndividual&>(Item));
    Fitness = std::isfinite(Error) ? Error : FRegression->UnfitFitness();
  }

private:
  TQXSymbolicRegression* FRegression;
};

TQXSymbolicRegression::TQXSymbolicRegression(TComponent* Owner) : TQXTypedGeneticProgramming(Owner) {
  const TQXGeneticProgramming Plain;
  VisitDefaults(*this, Plain,
                [&](std::string_view, const auto&, const auto&, const auto& Default, auto Setter) {
                  (this->*Setter)(Default);
                });
  TQXCustomGeneticComponent::OnEvaluateFitness = TFitnessHandler(*this);
  OnConstantMutation = TGaussianConstantMutation(ConstantDeviation);
}

// Instructions that go tell this object, as long as it is one.
TQXSymbolicRegression::~TQXSymbolicRegression() { FreeGenerations(); }

// --- Data --------------------------------------------------------------------------------------------------

auto TQXSymbolicRegression::RowsFor(TQXDataSet Data, std::string_view Target, std::string_view Weights)
    -> TRows {
  const auto TargetValues = Data.Column(Target);
  const auto WeightValues = Weights.empty() ? std::span<const double>() : Data.Column(Weights);
  TRegressionTarget Targets(TargetValues, WeightValues);
  return {std::move(Data), std::move(Targets)};
}

void TQXSymbolicRegression::SetData(TQXDataSet Data, std::string_view Target, std::string_view Weights) {
  TQXDataSet None;
  for (int I = 0; I < Data.ColumnCount(); ++I) {
    None.AddColumn(Data.ColumnName(I), {});
  }
  SetData({std::move(Data), std::move(None)}, Target, Weights);
}

namespace {

// The data as programs see them, where these are others.
std::optional<TQXDataSet> WithVariables(const TQXDataSet& Data, const TColumnNames* ColumnNames) {
  if (ColumnNames == nullptr) {
    return std::nullopt;
  }
  std::vector<std::string> Hidden; // columns that are called as a variable of another one
  std::map<std::string, std::string> Names;
  for (const auto& [Variable, Column] : *ColumnNames) {
    Names[Column] = Variable;
    Hidden.push_back(Variable);
  }
  return Data.Without(Hidden).Renamed(Names);
}

bool IsVariable(const TBatchPlan::TInstruction& Instruction) {
  return Instruction.Operation() == gpVariable && !Instruction.OnExecute;
}

bool Contains(const std::vector<std::string>& Names, const std::string& Name) {
  return std::ranges::find(Names, Name) != Names.end();
}

} // namespace

void TQXSymbolicRegression::SetData(TDataSplit Split, std::string_view Target, std::string_view Weights) {
  RequireNoEvaluation("SetData");
  if (Split.Training.RowCount() == 0) {
    throw std::invalid_argument("There are no rows to learn from");
  }
  TRows Training = RowsFor(std::move(Split.Training), Target, Weights);
  TRows Test;
  try {
    Test = RowsFor(std::move(Split.Test), Target, Weights);
  } catch (const std::invalid_argument& Error) {
    throw std::invalid_argument(std::string("In the test rows: ") + Error.what());
  }
  std::string TargetName(Target);
  std::string WeightsName(Weights);
  std::vector<std::string> Inputs;
  for (int I = 0; I < Training.Data.ColumnCount(); ++I) {
    if (const std::string& Name = Training.Data.ColumnName(I); Name != Target && Name != Weights) {
      Inputs.push_back(Name);
    }
  }
  for (const std::string& Input : Inputs) {
    static_cast<void>(Test.Data.RowCount() > 0 ? Test.Data.Column(Input) : std::span<const double>());
  }
  const std::vector<std::string> Variables = VariablesFor(Inputs);
  Declare(Variables);
  TColumnNames ColumnNames;
  for (std::size_t I = 0; I < Inputs.size(); ++I) {
    if (Variables[I] != Inputs[I]) {
      ColumnNames[Variables[I]] = Inputs[I];
    }
  }
  FColumnNames = ColumnNames.empty() ? nullptr : std::make_shared<const TColumnNames>(std::move(ColumnNames));
  FTraining = std::move(Training);
  FTraining.Renamed = WithVariables(FTraining.Data, FColumnNames.get());
  FTest = std::move(Test);
  FTest.Renamed = WithVariables(FTest.Data, FColumnNames.get());
  FTargetName = std::move(TargetName);
  FWeightsName = std::move(WeightsName);
  ForgetErrors();
}

// The names of instructions differ by more than the case of letters.
std::vector<std::string> TQXSymbolicRegression::VariablesFor(const std::vector<std::string>& Inputs) {
  std::set<std::string> OfColumns;
  for (const std::string& Input : Inputs) {
    OfColumns.insert(LowerText(Input));
  }
  const auto IsFree = [&](const std::string& Name) {
    const int Place = Instructions().IndexOf(Name);
    return Place < 0 || IsVariable(Instructions()[Place]);
  };
  std::set<std::string> Taken;
  std::vector<std::string> Variables;
  for (const std::string& Input : Inputs) {
    std::string Variable = Input;
    if (!Taken.insert(LowerText(Input)).second) {
      do {
        Variable += '_';
      } while (!IsFree(Variable) || OfColumns.contains(LowerText(Variable)) ||
               !Taken.insert(LowerText(Variable)).second);
    } else if (!IsFree(Input)) {
      throw EGPException("The column \"" + Input + "\" has the name of another instruction");
    }
    Variables.push_back(std::move(Variable));
  }
  return Variables;
}

// The variables become these; functions and a constant are added where there are none. Programs live on
// when nothing of that is a change.
void TQXSymbolicRegression::Declare(const std::vector<std::string>& Variables) {
  auto& Set = Instructions();
  const auto Has = [&](TGPGeneticInstruction Operation) {
    return std::ranges::any_of(Set,
                               [&](const auto& Instruction) { return Instruction.Operation() == Operation; });
  };
  const auto IsUnwanted = [&](const auto& Instruction) {
    return IsVariable(Instruction) && !Contains(Variables, Instruction.Name());
  };
  const auto IsMissing = [&](const std::string& Variable) { return Set.IndexOf(Variable) < 0; };
  const bool HasFunctions = Has(gpFunction);
  const bool HasConstants = Has(gpConstant);
  if (HasFunctions && HasConstants && std::ranges::none_of(Set, IsUnwanted) &&
      std::ranges::none_of(Variables, IsMissing)) {
    return;
  }
  TUpdateScope Update(Set);
  for (int I = Set.Count(); I-- > 0;) {
    if (IsUnwanted(Set[I])) {
      Set.Delete(I);
    }
  }
  for (const std::string& Variable : Variables) {
    if (IsMissing(Variable)) {
      Set.Add().SetName(Variable);
    }
  }
  if (!HasFunctions) {
    for (const std::string_view Name : RegressionFunctions) {
      std::string Free(Name);
      while (Set.IndexOf(Free) >= 0) { // a column may be called so
        Free += '_';
      }
      AddStandardInstruction(Set, Name, Free);
    }
  }
  if (!HasConstants) {
    std::string Name = "Constant";
    while (Set.IndexOf(Name) >= 0) {
      Name += '_';
    }
    AddEphemeralConstant(Set, Name, -GreatestConstant, GreatestConstant);
  }
  Update.End();
}

// Errors mean something else now.
void TQXSymbolicRegression::ForgetErrors() {
  ForgetModels();
  FRun = {};
  auto& Slot = TQXCustomGeneticComponent::OnEvaluateFitness;
  const TQXFitnessEvent Handler = Slot;
  Slot = nullptr;
  Slot = Handler; // which makes all individuals stale, and the statistics due
}

void TQXSymbolicRegression::RequireData() const {
  if (FTraining.Data.RowCount() == 0) {
    throw EGAException("There are no data to learn from: SetData comes first");
  }
}

bool TQXSymbolicRegression::HasOwnFitness() const {
  return TQXCustomGeneticComponent::OnEvaluateFitness.Target<TFitnessHandler>() != nullptr;
}

// --- Settings ----------------------------------------------------------------------------------------------

namespace {

template <class T>
bool Changes(T& Setting, T Value) {
  return std::exchange(Setting, Value) != Value;
}

} // namespace

void TQXSymbolicRegression::SetErrorMeasure(TErrorMeasure Value) {
  RequireNoEvaluation("SetErrorMeasure");
  if (Changes(FSettings.ErrorMeasure, CheckedEnum(Value, "ErrorMeasure"))) {
    ForgetErrors();
  }
}

void TQXSymbolicRegression::SetLinearScaling(bool Value) {
  RequireNoEvaluation("SetLinearScaling");
  if (Changes(FSettings.LinearScaling, Value)) {
    ForgetErrors();
  }
}

void TQXSymbolicRegression::SetSinglePrecision(bool Value) {
  RequireNoEvaluation("SetSinglePrecision");
  if (Changes(FSettings.SinglePrecision, Value)) {
    ForgetErrors();
  }
}

void TQXSymbolicRegression::SetThreads(int Value) {
  RequireNoEvaluation("SetThreads");
  FThreads = std::max(Value, 1);
}

void TQXSymbolicRegression::RequireNoEvaluation(const char* Call) const {
  if (FEvaluating > 0) {
    throw std::logic_error(std::string(Call) + " is refused while programs are evaluated");
  }
}

void TQXSymbolicRegression::SetRefinementShare(TGAProbability Value) {
  if (std::isnan(Value)) {
    throw std::invalid_argument("RefinementShare must be a number, not NaN");
  }
  FSettings.RefinementShare = std::clamp(Value, 0.0, 1.0);
}

void TQXSymbolicRegression::Assign(const TPersistent& Source) {
  TQXTypedGeneticProgramming::Assign(Source);
  AssignSettings(Source);
}

void TQXSymbolicRegression::AssignAll(const TPersistent& Source) {
  TQXTypedGeneticProgramming::AssignAll(Source);
  AssignSettings(Source);
}

// The errors of copied individuals are those of other data.
void TQXSymbolicRegression::AssignSettings(const TPersistent& Source) {
  if (const auto* const Regression = dynamic_cast<const TQXSymbolicRegression*>(&Source);
      Regression != nullptr && Regression != this) {
    FSettings = Regression->FSettings;
    FThreads = Regression->FThreads;
    ForgetErrors();
  }
}

// --- Results -----------------------------------------------------------------------------------------------

namespace {

void RequireColumns(const TRegressionModel& Model, const TQXDataSet& Data) {
  Model.Program->ForEach([&](const TRegressionModel::TNode& Node) {
    const auto* const Instruction = Node.Instruction();
    if (Instruction == nullptr || !IsVariable(*Instruction)) {
      return;
    }
    if (const std::string& Column = Model.ColumnOf(*Instruction); Data.IndexOf(Column) < 0) {
      throw std::invalid_argument("The data have no column \"" + Column + "\"");
    }
  });
}

} // namespace

std::vector<double> TQXSymbolicRegression::Predict(const TRegressionModel& Model, const TQXDataSet& Data) {
  RequireColumns(Model, Data);
  const auto Renamed = WithVariables(Data, Model.ColumnNames.get());
  TQXBatchEvaluator<double> Evaluator(Renamed ? *Renamed : Data, Instructions(), &FFunctions);
  const auto Values = Evaluator.Evaluate(*Model.Program);
  std::vector<double> Predictions(Values.begin(), Values.end());
  for (double& Value : Predictions) {
    Value = Model.Scaling.Offset + Model.Scaling.Scale * Value;
  }
  return Predictions;
}

double TQXSymbolicRegression::Error(const TRegressionModel& Model, const TQXDataSet& Data,
                                    TErrorMeasure Measure) {
  RequireColumns(Model, Data);
  const bool HasWeights = !FWeightsName.empty() && Data.IndexOf(FWeightsName) >= 0;
  const TRegressionTarget Target(Data.Column(FTargetName),
                                 HasWeights ? Data.Column(FWeightsName) : std::span<const double>());
  const auto Renamed = WithVariables(Data, Model.ColumnNames.get());
  TQXBatchEvaluator<double> Evaluator(Renamed ? *Renamed : Data, Instructions(), &FFunctions);
  return Target.Error(CheckedEnum(Measure, "Measure"), Evaluator.Evaluate(*Model.Program).data(),
                      Model.Scaling);
}

double TQXSymbolicRegression::ErrorOf(TIndividual& Individual) {
  const double Error = JobFor(Individual).Error;
  return std::isnan(Error) ? std::numeric_limits<double>::infinity() : Error;
}

TLinearScaling TQXSymbolicRegression::ScalingOf(TIndividual& Individual) {
  return JobFor(Individual).Scaling;
}

} // namespace qx
