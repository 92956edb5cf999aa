#include "Figures.h"

#include "Drawing.h"
#include "FriendlyNames.h"
#include "Output.h"
#include <qx/platform/Numbers.h>
#include <qx/symbolic_regression/Formula.h>

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <span>

namespace qxevolve {

namespace {

using qx::TRegressionModel;
using qx::TRegressionRecord;

constexpr std::size_t MostPoints = 2000; // of a scatter
constexpr std::size_t MostRecords = 400; // of a course over the generations

const std::string LogScale = "set logscale y\nset format y '%.0e'\nset mytics 1\n";

constexpr const char* Blue = "#3b82c4";
constexpr const char* Orange = "#d9822b";
constexpr const char* Grey = "#909090";

// In the language of gnuplot.
std::string Quoted(std::string_view Text) {
  std::string Result = "'";
  for (const char C : Text) {
    Result += C == '\'' ? "''" : std::string(1, static_cast<unsigned char>(C) < ' ' ? ' ' : C);
  }
  return Result + "'";
}

// Every so-and-so many of `Count`, the first and the last among them.
std::vector<std::size_t> Thinned(std::size_t Count, std::size_t Most) {
  std::vector<std::size_t> Places;
  const std::size_t Taken = std::min(Count, Most);
  for (std::size_t I = 0; I < Taken; ++I) {
    Places.push_back(Taken == Count ? I : I * (Count - 1) / (Taken - 1));
  }
  return Places;
}

// A table of numbers within a script.
class TBlock {
public:
  explicit TBlock(std::string_view Name) : FText(fmt::format("${} << EOD\n", Name)) {}
  void Add(std::initializer_list<double> Row) {
    for (const double Value : Row) {
      FText += (std::isfinite(Value) ? qx::NumberText(Value) : "NaN") + " ";
    }
    FText += '\n';
    ++FCount;
  }
  std::size_t Count() const { return FCount; }
  std::string Text() const { return FText + "EOD\n"; }

private:
  std::string FText;
  std::size_t FCount = 0;
};

std::string Head(std::string_view XLabel, std::string_view YLabel) {
  return fmt::format("set terminal svg size 640,380 dynamic noenhanced font 'sans-serif,14' linewidth 1.2\n"
                     "set border 3 linewidth 0.8\n"
                     "set tics nomirror\n"
                     "set grid linecolor rgb '{}' linewidth 0.4\n"
                     "set key above left horizontal\n"
                     "set format y '%.4g'\n"
                     "set xlabel {}\nset ylabel {}\n",
                     Grey, Quoted(XLabel), Quoted(YLabel));
}

class TFigures {
public:
  TFigures(const TRun& Run, qx::TQXSymbolicRegression& Regression)
      : FRun(Run), FRegression(Regression), FBest(ModelOfSize(Regression, Run.ChosenSize)) {}

  std::vector<TFigure> Draw() {
    DrawPredictions();
    DrawFront();
    DrawTree();
    DrawErrors();
    DrawDiversity();
    DrawSpread("sizes", "Size of programs", "nodes", [](const TRegressionRecord& R) {
      return std::array{double(R.MinSize), R.AvgSize, double(R.MaxSize)};
    });
    DrawSpread("depths", "Depth of programs", "levels below the root", [](const TRegressionRecord& R) {
      return std::array{double(R.MinDepth), R.AvgDepth, double(R.MaxDepth)};
    });
    return std::move(FFigures);
  }

private:
  void Add(std::string Name, std::string Title, std::string Caption, const std::string& Script,
           const std::string& Tool = "gnuplot") {
    TDrawing Drawing = qxevolve::Draw(Tool, Script);
    if (Drawing.SVG) {
      Drawing.SVG = PartOfPage(*Drawing.SVG, Name);
    }
    FFigures.push_back({std::move(Name), std::move(Title), std::move(Caption), std::move(Drawing)});
  }

  template <class TVisit>
  void ForRecords(TVisit Visit) const {
    for (const std::size_t I : Thinned(FRun.History.size(), MostRecords)) {
      Visit(FRun.History[I]);
    }
  }

  std::string MeasureText() const {
    const std::string Name(qx::EnumName(FRegression.ErrorMeasure()).substr(2));
    return Name == "R2" ? "1 - R2" : Name == "Correlation" ? "1 - r2" : Name;
  }

  // The worst programs of a generation may be off by any power of ten: the scale is that of the best ones.
  void DrawErrors() {
    TBlock Block("course");
    double Most = 0; // of the best ones
    double MostMean = 0;
    bool HasTest = false;
    const auto Positive = [](double Value) {
      return Value > 0 ? Value : std::numeric_limits<double>::quiet_NaN();
    };
    ForRecords([&](const TRegressionRecord& R) {
      Block.Add(
          {double(R.Generation), Positive(R.BestError), Positive(R.MeanError), Positive(R.BestTestError)});
      Most = std::max({Most, std::isfinite(R.BestError) ? R.BestError : 0,
                       std::isfinite(R.BestTestError) ? R.BestTestError : 0});
      MostMean = std::max(MostMean, std::isfinite(R.MeanError) ? R.MeanError : 0);
      HasTest = HasTest || R.BestTestError > 0;
    });
    std::string Script = Head("generation", "error (" + MeasureText() + ")") + Block.Text();
    constexpr double Span = 1e9;
    const double Top = 3 * std::min(std::max(MostMean, Most), Span * Most);
    Script += LogScale + fmt::format("set yrange [*:{}]\n", qx::NumberText(Top > 0 ? Top : 1));
    Script += fmt::format("plot $course using 1:3 with linespoints pt 7 ps 0.2 lc rgb '{}' title 'mean', "
                          "$course using 1:2 with linespoints pt 7 ps 0.3 lc rgb '{}' title 'best'",
                          Grey, Blue);
    if (HasTest) {
      Script += fmt::format(", $course using 1:4 with linespoints pt 7 ps 0.3 lc rgb '{}' "
                            "title 'test rows'",
                            Orange);
    }
    Add("errors", "Error over the generations",
        "Of each generation the best program and the mean of those with a finite error, on the training "
        "rows; of the run the best formula on the test rows, if there are any.",
        Script + "\n");
  }

  template <class TSpread>
  void DrawSpread(const std::string& Name, const std::string& Title, const std::string& Unit,
                  TSpread Spread) {
    TBlock Block("course");
    ForRecords([&](const TRegressionRecord& R) {
      const auto Values = Spread(R);
      Block.Add({double(R.Generation), Values[0], Values[1], Values[2]});
    });
    Add(Name, Title + " over the generations", "The mean, between the least and the greatest.",
        Head("generation", Unit) + Block.Text() +
            fmt::format("set yrange [0:*]\n"
                        "plot $course using 1:2:4 with filledcurves fs solid 0.25 noborder lc rgb '{0}' "
                        "title 'least to greatest', "
                        "$course using 1:3 with linespoints pt 7 ps 0.3 lc rgb '{0}' title 'mean'\n",
                        Blue));
  }

  void DrawDiversity() {
    TBlock Block("course");
    ForRecords([&](const TRegressionRecord& R) { Block.Add({double(R.Generation), R.Diversity}); });
    Add("diversity", "Diversity over the generations", "The share of different errors in the population.",
        Head("generation", "share of different errors") + Block.Text() +
            fmt::format("set yrange [0:1.05]\nunset key\n"
                        "plot $course using 1:2 with linespoints pt 7 ps 0.3 lc rgb '{}'\n",
                        Blue));
  }

  // The rows of a table, measured and predicted.
  TBlock Scatter(std::string_view Name, const qx::TQXDataSet& Data) {
    TBlock Block(Name);
    if (Data.RowCount() > 0) {
      const auto Measured = Data.Column(FRun.Target);
      const auto Predicted = FRegression.Predict(FBest, Data);
      for (const std::size_t I : Thinned(Measured.size(), MostPoints)) {
        Block.Add({Measured[I], Predicted[I]});
      }
    }
    return Block;
  }

  void DrawPredictions() {
    const TBlock Training = Scatter("training", FRegression.TrainingData());
    const TBlock Test = Scatter("test", FRegression.TestData());
    const std::string Data = Training.Text() + Test.Text();
    const auto Points = [&](const std::string& Using) {
      std::string Text = fmt::format(
          "$training using {} with points pt 7 ps 0.45 lc rgb '{}' title 'training rows'", Using, Blue);
      if (Test.Count() > 0) {
        Text += fmt::format(", $test using {} with points pt 7 ps 0.45 lc rgb '{}' title 'test rows'", Using,
                            Orange);
      }
      return Text + "\n";
    };
    const std::string Sample =
        static_cast<std::size_t>(FRun.Rows) > Training.Count() + Test.Count()
            ? fmt::format(" {} of {} rows are shown.", Training.Count() + Test.Count(), FRun.Rows)
            : "";
    Add("predictions", "Predicted against measured", "On the line, the formula is right." + Sample,
        Head("measured " + FRun.Target, "predicted " + FRun.Target) + Data +
            fmt::format("plot x with lines lc rgb '{}' notitle, ", Grey) + Points("1:2"));
    Add("residuals", "Residuals", "What is measured less what is predicted." + Sample,
        Head("predicted " + FRun.Target, "residual") + Data +
            fmt::format("plot 0 with lines lc rgb '{}' notitle, ", Grey) + Points("2:($1-$2)"));
  }

  void DrawFront() {
    TBlock Block("front");
    bool Positive = true;
    const std::string Reason =
        FRegression.TestData().RowCount() > 0
            ? "the smallest whose error on the test rows is within a tenth of the least."
            : "where the error falls most for each node more.";
    for (const TRegressionModel& Model : FRegression.Front()) {
      Block.Add({double(Model.Size()), Model.Error});
      Positive = Positive && Model.Error > 0;
    }
    Add("front", "Error against size",
        "The least error of a program for each size. The chosen one is marked: " + Reason,
        Head("size (nodes)", "error (" + MeasureText() + ")") + Block.Text() + (Positive ? LogScale : "") +
            fmt::format("unset key\nset offsets 1, 1, 0, 0\n"
                        "plot $front using 1:2 with steps lc rgb '{0}', "
                        "$front using 1:2 with points pt 7 ps 0.7 lc rgb '{0}', "
                        "$front using ($1=={1}?$1:NaN):2 with points pt 7 ps 1 lc rgb '{2}'\n",
                        Blue, FBest.Size(), Orange));
  }

  void DrawTree() {
    constexpr int Digits = 4;
    constexpr int Wide = 24; // nodes
    qx::TQXFormula Formula(FBest);
    Formula.Simplify().RoundConstants(Digits);
    Add("tree", "The program as a tree", "After simplification, with numbers rounded to four digits.",
        Formula.Text(qx::fsDOT), "dot -Tsvg -Gbgcolor=transparent -Nfontname=sans-serif");
    FFigures.back().IsWide = Formula.Size() > Wide;
  }

  const TRun& FRun;
  qx::TQXSymbolicRegression& FRegression;
  const TRegressionModel& FBest;
  std::vector<TFigure> FFigures;
};

} // namespace

std::vector<TFigure> DrawFigures(const TRun& Run, qx::TQXSymbolicRegression& Regression) {
  return TFigures(Run, Regression).Draw();
}

} // namespace qxevolve
