// Component streams and checkpoints of symbolic regression.

#include <qx/engine/LoadScope.h>
#include <qx/foundation/EnumPropertyText.h>
#include <qx/platform/Filer.h>
#include <qx/platform/Text.h>
#include <qx/symbolic_regression/RegressionDefaults.h>

#include <memory>
#include <string>
#include <utility>

namespace qx {

void TQXSymbolicRegression::ForgetModels() {
  FFront.Clear();
  FTested.Clear();
  FBest.Clear();
}

// Models go with the instructions that their programs refer to, once these are free to go.
void TQXSymbolicRegression::InstructionUpdate(TInstruction* Instruction) {
  TQXTypedGeneticProgramming::InstructionUpdate(Instruction);
  ForgetModels();
}

void TQXSymbolicRegression::InstructionNotify(TInstruction& Instruction, TCollectionNotification Action) {
  TQXTypedGeneticProgramming::InstructionNotify(Instruction, Action);
  ForgetModels();
}

void TQXSymbolicRegression::Describe(TStrings& Strings, std::string_view TabStr) const {
  TQXTypedGeneticProgramming::Describe(Strings, TabStr);
  Strings.Add("Regression");
  const auto Add = [&](std::string_view Label, const std::string& Value) {
    AddDescription(Strings, TabStr, Label, Value);
  };
  const auto YesOrNo = [](bool Value) { return std::string(Value ? "Yes" : "No"); };
  Add("Error Measure", std::string(EnumName(FSettings.ErrorMeasure)));
  Add("Linear Scaling", YesOrNo(FSettings.LinearScaling));
  Add("Single Precision", YesOrNo(FSettings.SinglePrecision));
  Add("Tournament Field", std::to_string(TournamentField()));
  Add("Refinement Share", PercentText(FSettings.RefinementShare));
  Add("Refinement Steps", std::to_string(FSettings.RefinementSteps));
  Add("Keeps Best", YesOrNo(FSettings.KeepsBest));
  Add("Restart Patience", std::to_string(FSettings.RestartPatience));
  Add("Stopping Patience", std::to_string(FSettings.StoppingPatience));
}

// What errors depend on comes first: individuals that are read have theirs already.
void TQXSymbolicRegression::DefineProperties(TFiler& Filer) {
  const TSettings Defaults;
  const TSettings& S = FSettings;
  const auto Define = [&](std::string_view Name, const auto& Value, const auto& Default, auto Setter) {
    Filer.Property(Name, Value, Value != Default, [&](const auto& Read) { (this->*Setter)(Read); });
  };
  const auto DefineCount = [&](std::string_view Name, int Value, int Default, auto Setter) {
    Filer.Property(Name, Value, Value != Default, [&](int Read) {
      if (!Filer.Exact()) {
        RequireCount(Read);
      }
      (this->*Setter)(Read);
    });
  };
  Define("ErrorMeasure", S.ErrorMeasure, Defaults.ErrorMeasure, &TQXSymbolicRegression::SetErrorMeasure);
  Define("LinearScaling", S.LinearScaling, Defaults.LinearScaling, &TQXSymbolicRegression::SetLinearScaling);
  Define("SinglePrecision", S.SinglePrecision, Defaults.SinglePrecision,
         &TQXSymbolicRegression::SetSinglePrecision);
  Define("RefinementShare", S.RefinementShare, Defaults.RefinementShare,
         &TQXSymbolicRegression::SetRefinementShare);
  DefineCount("RefinementSteps", S.RefinementSteps, Defaults.RefinementSteps,
              &TQXSymbolicRegression::SetRefinementSteps);
  Define("KeepsBest", S.KeepsBest, Defaults.KeepsBest, &TQXSymbolicRegression::SetKeepsBest);
  Define("RestartPatience", S.RestartPatience, Defaults.RestartPatience,
         &TQXSymbolicRegression::SetRestartPatience);
  Define("StoppingPatience", S.StoppingPatience, Defaults.StoppingPatience,
         &TQXSymbolicRegression::SetStoppingPatience);
  DefineCount("Threads", FThreads, 1, &TQXSymbolicRegression::SetThreads);
  TQXTypedGeneticProgramming::DefineProperties(Filer);
  if (!Filer.Exact()) { // an inherited setting that is the plain default, and so not stored, is not the own
                        // one
    const TQXGeneticProgramming Plain;
    VisitDefaults(
        *this, Plain,
        [&](std::string_view Name, auto Value, auto PlainDefault, decltype(Value) Default, auto Setter) {
          Filer.Property(Name, Value, Value == PlainDefault && Value != Default,
                         [&](const auto& Read) { (this->*Setter)(Read); });
        });
  }
}

void TQXSymbolicRegression::DefineState(TFiler& Filer) {
  TQXTypedGeneticProgramming::DefineState(Filer);
  auto Evaluations = static_cast<double>(FRun.Evaluations);
  Filer.Field("Evaluations", Evaluations);
  FRun.Evaluations = static_cast<std::int64_t>(Evaluations);
  Filer.Field("GenerationsWithoutBetter", FRun.GenerationsWithoutBetter);
  Filer.Field("Starts", FRun.Starts);
  Filer.Field("LeastError", FRun.LeastError);
  Filer.Field("GenerationsWithoutStep", FRun.GenerationsWithoutStep);
  DefineColumnNames(Filer);
  DefineFront(Filer, "Front", FFront);
  DefineFront(Filer, "Tested", FTested);
  DefineFront(Filer, "Best", FBest);
}

// A variable, its column, and so on.
void TQXSymbolicRegression::DefineColumnNames(TFiler& Filer) {
  std::vector<std::string> Names;
  for (const auto& [Variable, Column] : FColumnNames != nullptr ? *FColumnNames : TColumnNames()) {
    Names.insert(Names.end(), {Variable, Column});
  }
  Filer.Property("ColumnNames", Names, true, [&](const std::vector<std::string>& Read) {
    if (Read.size() % 2 != 0) {
      throw std::invalid_argument("a variable lacks its column");
    }
    TColumnNames ColumnNames;
    for (std::size_t I = 0; I < Read.size(); I += 2) {
      ColumnNames[Read[I]] = Read[I + 1];
    }
    FColumnNames = Read.empty() ? nullptr : std::make_shared<const TColumnNames>(std::move(ColumnNames));
  });
}

void TQXSymbolicRegression::DefineFront(TFiler& Filer, const std::string& Name, TRegressionFront& Front) {
  std::vector<std::string> Programs;
  std::vector<double> Numbers; // four for each model
  for (const TRegressionModel& Model : Front) {
    Programs.push_back(Model.Program->StateText());
    Numbers.insert(Numbers.end(), {Model.Scaling.Offset, Model.Scaling.Scale, Model.Error, Model.TestError});
  }
  Filer.Field(Name + "Programs", Programs);
  Filer.Property(Name + "Numbers", Numbers, true, [&](const std::vector<double>& Read) {
    constexpr std::size_t PerModel = 4;
    if (Read.size() != PerModel * Programs.size()) {
      throw std::invalid_argument("there are not four numbers for each program");
    }
    Front.Clear();
    for (std::size_t I = 0; I < Programs.size(); ++I) {
      const double* const Of = &Read[PerModel * I];
      Front.Add({TNode::FromStateText(Programs[I], *this), {Of[0], Of[1]}, Of[2], Of[3], FColumnNames});
    }
  });
}

void TQXSymbolicRegression::Remember(TLoadScope& Load) {
  TQXTypedGeneticProgramming::Remember(Load);
  struct TModels {
    TRegressionFront Front, Tested, Best;
  };
  auto Models = std::make_shared<TModels>(TModels{FFront.Clone(), FTested.Clone(), FBest.Clone()});
  Load.OnFailure([this, Settings = FSettings, Threads = FThreads, Run = FRun, Start = FStart, Models,
                  Names = FColumnNames] {
    FColumnNames = Names;
    FStart = Start;
    FSettings = Settings;
    FThreads = Threads;
    FRun = Run;
    FFront = std::move(Models->Front);
    FTested = std::move(Models->Tested);
    FBest = std::move(Models->Best);
  });
  FStart = Now();
}

} // namespace qx
