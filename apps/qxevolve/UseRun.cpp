#include "UseRun.h"

#include "Error.h"
#include "Output.h"
#include "RunFile.h"
#include "Settings.h"
#include <qx/platform/Numbers.h>
#include <qx/symbolic_regression/Formula.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <span>

namespace qxevolve {

namespace {

using qx::TQXSymbolicRegression;
using qx::TRegressionModel;

const std::map<std::string, qx::TFormulaStyle> Styles = {{"infix", qx::fsInfix},
                                                         {"latex", qx::fsLaTeX},
                                                         {"cpp", qx::fsCpp},
                                                         {"python", qx::fsPython},
                                                         {"dot", qx::fsDOT}};

// A run as it was kept, without its data.
class TKeptRun {
public:
  explicit TKeptRun(const std::string& FileName) : FFile(FileName) {
    FFile.AddFunctions(FRegression);
    FFile.Restore(FRegression);
  }

  const TRun& Run() const { return FFile.Run(); }
  TQXSymbolicRegression& Regression() { return FRegression; }

  const TRegressionModel& Model(std::optional<int> Size) const {
    return ModelOfSize(FRegression, Size.value_or(FFile.Run().ChosenSize));
  }

private:
  TRunFile FFile;
  TQXSymbolicRegression FRegression;
};

std::string TableText(const qx::TQXDataSet& Data) {
  std::string Text;
  std::vector<std::span<const double>> Columns;
  for (int I = 0; I < Data.ColumnCount(); ++I) {
    Text += (I > 0 ? "," : "") + CSVCell(Data.ColumnName(I));
    Columns.push_back(Data.Column(I));
  }
  Text += '\n';
  for (std::size_t Row = 0; Row < static_cast<std::size_t>(Data.RowCount()); ++Row) {
    for (std::size_t I = 0; I < Columns.size(); ++I) {
      Text += (I > 0 ? "," : "") + qx::NumberText(Columns[I][Row]);
    }
    Text += '\n';
  }
  return Text;
}

void AddRunTo(CLI::App& App, TUseOptions& Options) {
  App.add_option("run", Options.RunFile, "File that regress --save has written")
      ->required()
      ->type_name("RUN.xml");
}

void AddModelTo(CLI::App& App, TUseOptions& Options) {
  App.add_option("--size", Options.Size,
                 "Takes the formula of that size, as regress lists them [the one that it marks]")
      ->type_name("N");
  App.add_option("-o,--output", Options.Output, "File to write [standard output]")->type_name("FILE");
}

} // namespace

void TUseOptions::AddPredictTo(CLI::App& App) {
  AddRunTo(App, *this);
  App.add_option("data", Data.FileName, "Table with the columns that the formula needs; - is standard input")
      ->required()
      ->type_name("NEW.csv");
  AddModelTo(App, *this);
  App.add_flag("--keep", Keep, "Writes the table's columns too, before the predictions");
  Data.AddOptions(App);
  Data.AddHeaderOption(App);
}

void TUseOptions::AddShowTo(CLI::App& App) {
  AddRunTo(App, *this);
  App.add_option("--as", Style, "Language: infix, latex, cpp, python (NumPy), dot (Graphviz)")
      ->check(CLI::IsMember({"infix", "latex", "cpp", "python", "dot"}))
      ->type_name("NAME")
      ->capture_default_str();
  AddModelTo(App, *this);
}

void TUseOptions::AddDescribeTo(CLI::App& App) { AddRunTo(App, *this); }

int Predict(const TUseOptions& Options) {
  TKeptRun Kept(Options.RunFile);
  const TRegressionModel& Model = Kept.Model(Options.Size);
  const std::string& Target = Kept.Run().Target;
  RequireOther(Options.Output, {Options.RunFile, Options.Data.FileName});
  TDataFile File = Options.Data;
  File.InheritFormat(Kept.Run().Data);
  File.MissingValues = "keep"; // each row has its prediction, if only NaN
  const auto Variables = qx::TQXFormula(Model).Variables();
  const qx::TQXDataSet Data =
      File.Read(Variables, Options.Keep ? std::nullopt : std::optional(Variables)).Numbers;
  qx::TQXDataSet Result;
  if (Options.Keep) {
    Result = Data;
  }
  std::string Name = Result.IndexOf(Target) >= 0 ? Target + " predicted" : Target;
  while (Result.IndexOf(Name) >= 0) {
    Name += '_';
  }
  try {
    Result.AddColumn(Name, Kept.Regression().Predict(Model, Data));
  } catch (const std::invalid_argument& Error) {
    throw EUsageError(fmt::format("{}: {}", Options.Data.FileName, Error.what()));
  }
  WriteOutput(Options.Output, TableText(Result));
  return ExitGood;
}

int Show(const TUseOptions& Options) {
  RequireOther(Options.Output, {Options.RunFile});
  const TKeptRun Kept(Options.RunFile);
  qx::TQXFormula Formula(Kept.Model(Options.Size));
  Formula.Simplify();
  if (Options.Style == "latex") { // for people to read
    Formula.RoundConstants(ShownDigits);
  }
  std::string Text = Formula.Text(Styles.at(Options.Style), Kept.Run().Target);
  if (!Text.ends_with('\n')) {
    Text += '\n';
  }
  WriteOutput(Options.Output, Text);
  return ExitGood;
}

int Describe(const TUseOptions& Options) {
  TKeptRun Kept(Options.RunFile);
  const TRun& Run = Kept.Run();
  std::string Text = fmt::format(
      "Data = {}, {} rows\nTarget = {}\nWeights = {}\nTest share = {}\nSeed = {}\n", Run.Data.FileName,
      Run.Rows, Run.Target, Run.Weights.empty() ? "None" : Run.Weights, Short(Run.TestShare), Run.Seed);
  for (const std::string& Line : SettingLines(Kept.Regression())) {
    Text += Line + '\n';
  }
  Print(Text);
  return ExitGood;
}

} // namespace qxevolve
