#include "Report.h"

#include "Figures.h"
#include "Output.h"
#include "PageStyle.h"
#include "Settings.h"
#include "ShellText.h"
#include <qx/platform/Files.h>
#include <qx/symbolic_regression/Formula.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <numeric>

namespace qxevolve {

namespace {

using qx::TQXFormula;
using qx::TRegressionModel;

std::string FormulaText(const TRegressionModel& Model) {
  return HTML(TQXFormula(Model).Simplify().RoundConstants(ShownDigits).Text(qx::fsInfix));
}

class TPage {
public:
  TPage(const TRun& Run, qx::TQXSymbolicRegression& Regression, const qx::TQXDataSet& Table)
      : FRun(Run), FRegression(Regression), FTable(Table), FBest(ModelOfSize(Regression, Run.ChosenSize)) {}

  std::string Text() {
    std::string Body = Summary();
    for (const TFigure& Figure : DrawFigures(FRun, FRegression)) {
      Body += FigureText(Figure);
    }
    Body += FrontTable() + ColumnTable() + Settings();
    const std::string Title = HTML(FRun.Target + ": a formula");
    return fmt::format(
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\"/>\n"
        "<meta name=\"viewport\" content=\"width=device-width\"/>\n<title>{}</title>\n"
        "<style>{}</style>\n</head>\n<body>\n<main>\n<h1>{}</h1>\n{}</main>\n</body>\n</html>\n",
        Title, PageStyle, Title, Body);
  }

private:
  double RSquared(const qx::TQXDataSet& Data) { return 1 - FRegression.Error(FBest, Data, qx::emR2); }

  std::string Summary() {
    const auto& Training = FRegression.TrainingData();
    const auto& Test = FRegression.TestData();
    std::string Quality =
        fmt::format("R<sup>2</sup> {:.6f} on {} training rows", RSquared(Training), Training.RowCount());
    if (Test.RowCount() > 0) {
      Quality += fmt::format(", {:.6f} on {} test rows", RSquared(Test), Test.RowCount());
    }
    return fmt::format(
        "<p class=\"formula\"><code>{} = {}</code></p>\n<p>{}; {} generations in {:.1f} s.</p>\n",
        HTML(FRun.Target), FormulaText(FBest), Quality, FRegression.Generation(),
        FRun.History.empty() ? 0 : FRun.History.back().Seconds);
  }

  static std::string FigureText(const TFigure& Figure) {
    const std::string Drawing =
        Figure.Drawing.SVG
            ? *Figure.Drawing.SVG
            : fmt::format("<p class=\"missing\">{}: this figure is missing.</p>", Figure.Drawing.Missing);
    return fmt::format("<figure id=\"{}\"{}>\n<h2>{}</h2>\n{}\n<figcaption>{}</figcaption>\n</figure>\n",
                       Figure.Name, Figure.IsWide ? " class=\"wide\"" : "", HTML(Figure.Title), Drawing,
                       HTML(Figure.Caption));
  }

  std::string FrontTable() {
    const bool HasTest = FRegression.TestData().RowCount() > 0;
    std::string Rows;
    for (const TRegressionModel& Model : FRegression.Front()) {
      Rows +=
          fmt::format("<tr{}><td>{}</td><td>{:.4g}</td>{}<td class=\"text\"><code>{}</code></td></tr>\n",
                      Model.Size() == FRun.ChosenSize ? " class=\"chosen\"" : "", Model.Size(), Model.Error,
                      HasTest ? fmt::format("<td>{:.4g}</td>", Model.TestError) : "", FormulaText(Model));
    }
    return fmt::format(
        "<section id=\"formulas\">\n<h2>Formulas by size</h2>\n<table>\n<tr><th>size</th><th>error</th>"
        "{}<th class=\"text\">formula</th></tr>\n{}</table>\n</section>\n",
        HasTest ? "<th>on test rows</th>" : "", Rows);
  }

  std::string ColumnTable() const {
    std::string Rows;
    for (int I = 0; I < FTable.ColumnCount(); ++I) {
      const auto Values = FTable.Column(I);
      const auto Count = static_cast<double>(Values.size());
      const double Mean = std::accumulate(Values.begin(), Values.end(), 0.0) / Count;
      double Squares = 0;
      for (const double Value : Values) {
        Squares += (Value - Mean) * (Value - Mean);
      }
      const auto [Least, Greatest] = std::ranges::minmax(Values);
      Rows +=
          fmt::format("<tr><td class=\"text\">{}{}</td><td>{}</td><td>{}</td><td>{}</td><td>{}</td></tr>\n",
                      HTML(FTable.ColumnName(I)), FTable.ColumnName(I) == FRun.Target ? " (target)" : "",
                      Short(Least), Short(Mean), Short(Greatest), Short(std::sqrt(Squares / Count)));
    }
    return fmt::format(
        "<section id=\"data\">\n<h2>Data</h2>\n<p>{}: {} rows, of which {} to test.</p>\n<table>\n"
        "<tr><th class=\"text\">column</th><th>least</th><th>mean</th><th>greatest</th>"
        "<th>standard deviation</th></tr>\n{}</table>\n</section>\n",
        HTML(FRun.Data.FileName), FTable.RowCount(), FRegression.TestData().RowCount(), Rows);
  }

  // A run that time has ended is repeated by its generations.
  std::vector<std::string> RepeatingCommand() const {
    std::vector<std::string> Words = FRun.Command;
    std::erase(Words, "--resume");
    Words.insert(Words.end(), {"--generations", std::to_string(std::max(FRegression.Generation(), 1)),
                               "--seconds", "1e9"});
    return Words;
  }

  std::string Settings() const {
    std::string Lines;
    for (const std::string& Line : SettingLines(FRegression)) {
      Lines += Line + '\n';
    }
    if (!FRun.Weights.empty()) {
      Lines += "   Weights = " + FRun.Weights + '\n';
    }
    return fmt::format("<section id=\"settings\">\n<h2>Settings</h2>\n<pre>{}</pre>\n"
                       "<p>Seed {}. The command that repeats the run, with the settings that it began "
                       "with{}:</p>\n<pre>{}</pre>\n</section>\n",
                       HTML(Lines), FRun.Seed,
                       FRegression.IsCutShort() ? " (but for the last generation, which time has cut short)"
                                                : "",
                       HTML(ShellText(RepeatingCommand())));
  }

  const TRun& FRun;
  qx::TQXSymbolicRegression& FRegression;
  const qx::TQXDataSet& FTable;
  const TRegressionModel& FBest;
};

} // namespace

bool RequireReportFolder(const std::string& Folder) {
  std::error_code Error;
  const bool IsNew = std::filesystem::create_directories(Folder, Error);
  if (Error) {
    throw std::system_error(Error, "Cannot make the folder \"" + Folder + "\"");
  }
  RequireWritable(Folder + "/report.html");
  return IsNew;
}

std::string WriteReport(const std::string& Folder, const TRun& Run, qx::TQXSymbolicRegression& Regression,
                        const qx::TQXDataSet& Table) {
  std::string FileName = Folder + "/report.html";
  qx::ReplaceFile(FileName, TPage(Run, Regression, Table).Text());
  return FileName;
}

} // namespace qxevolve
