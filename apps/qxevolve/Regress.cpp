#include "Regress.h"

#include "Choice.h"
#include "Error.h"
#include "Interrupt.h"
#include "Output.h"
#include "Progress.h"
#include "Records.h"
#include "Report.h"
#include "RunFile.h"
#include <qx/platform/Random.h>
#include <qx/platform/Text.h>
#include <qx/symbolic_regression/Formula.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <memory>
#include <optional>
#include <random>
#include <span>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace qxevolve {

namespace {

using qx::TQXFormula;
using qx::TQXSymbolicRegression;
using qx::TRegressionModel;

constexpr int RowsForTest = 40; // from which on some of them are kept from the run
constexpr double UsualTestShare = 0.25;

std::string ReadableFormula(const TRegressionModel& Model) {
  return TQXFormula(Model).Simplify().RoundConstants(ShownDigits).Text(qx::fsInfix);
}

// One call of `qxevolve regress`.
class TRegress {
public:
  TRegress(const TRegressOptions& Options, std::vector<std::string> Command) : FOptions(Options) {
    FRun.Command = std::move(Command);
  }
  TRegress(const TRegress&) = delete;
  TRegress& operator=(const TRegress&) = delete;
  // A folder without a report is not left behind.
  ~TRegress() {
    if (FHasMadeFolder) {
      std::error_code Ignored;
      std::filesystem::remove(FOptions.Report, Ignored); // unless something is in it
    }
  }

  int Execute() {
    const qx::TQXDataSet Table = ReadTable();
    Prepare(Table);
    RequireOutputs();
    const TInterruptScope Interrupts;
    Evolve();
    FRun.ChosenSize = ChosenSize(FRegression);
    if (FRun.ChosenSize == 0) {
      throw std::runtime_error("No program has a finite error: there is nothing to show");
    }
    Attempt([&] { PrintResult(); });
    if (!FOptions.Save.empty()) {
      Attempt([&] {
        TRunFile::Write(FOptions.Save, FRun, FRegression);
        TellUsual(fmt::format("Kept in {}\n", FOptions.Save));
      });
    }
    if (!FOptions.Report.empty()) {
      Attempt([&] {
        TellUsual(fmt::format("Report: {}\n", WriteReport(FOptions.Report, FRun, FRegression, Table)));
      });
    }
    return FHasFailed ? ExitFailed : FEndedBy == "interrupt" ? ExitInterrupted : ExitGood;
  }

private:
  // One output that fails does not take the other ones with it.
  template <class TWrite>
  void Attempt(TWrite Write) {
    try {
      Write();
    } catch (const std::exception& Error) {
      Tell(fmt::format("qxevolve: {}\n", Error.what()));
      FHasFailed = true;
    }
  }

  void TellUsual(const std::string& Text) const {
    if (FOptions.Progress == TProgressKind::Usual) {
      Tell(Text);
    }
  }

  // What cannot be written later is known before the work.
  void RequireOutputs() {
    if (!FOptions.Save.empty()) {
      RequireOther(FOptions.Save, {FOptions.Data.FileName});
      TRunFile::RequireRunOrNothing(FOptions.Save);
      if (!FResumes && !FOptions.Force) {
        TRunFile::RequireTarget(FOptions.Save, FRun.Target);
      }
      RequireWritable(FOptions.Save);
    }
    if (!FOptions.Report.empty()) {
      FHasMadeFolder = RequireReportFolder(FOptions.Report);
    }
  }

  qx::TQXDataSet ReadTable() {
    FResumes = FOptions.Resume && std::filesystem::exists(FOptions.Save);
    if (FResumes) {
      FFile.emplace(FOptions.Save);
    }
    if (std::ranges::find(FOptions.Data.Ignored, FOptions.Target) != FOptions.Data.Ignored.end()) {
      throw EUsageError("The target cannot be left out by --ignore");
    }
    std::vector<std::string> Needed = {FOptions.Target};
    if (!FOptions.Weights.empty()) {
      Needed.push_back(FOptions.Weights);
    }
    TTable Read = FOptions.Data.Read(Needed);
    qx::TQXDataSet Table = std::move(Read.Numbers);
    for (const std::string& Name : {FOptions.Target, FOptions.Weights}) {
      if (!Name.empty() && Table.IndexOf(Name) < 0) {
        const bool MayBeOne = Table.ColumnCount() == 1 && FOptions.Data.Separator.empty();
        throw EUsageError(fmt::format("{} has no column \"{}\"; it has {}{}", FOptions.Data.Name(), Name,
                                      ColumnNames(Table),
                                      MayBeOne ? "; --separator CHAR tells what is between cells" : ""));
      }
    }
    if (Table.ColumnCount() < (FOptions.Weights.empty() ? 2 : 3)) {
      throw EUsageError(FOptions.Data.Name() + " has no column to explain \"" + FOptions.Target + "\" by");
    }
    if (Table.RowCount() < 2) {
      throw EUsageError(fmt::format("{} has {}; a formula needs two or more{}{}", FOptions.Data.Name(),
                                    Table.RowCount() == 0 ? "no rows of numbers" : "one row of numbers",
                                    Read.Skipped.empty() ? "" : "; ", Read.Skipped));
    }
    if (!Read.Skipped.empty()) {
      TellUsual(Read.Skipped + '\n');
    }
    RequireTarget(Table);
    const auto Values = Table.Column(FOptions.Target);
    if (std::ranges::all_of(Values, [&](double Value) { return Value == Values[0]; })) {
      throw EUsageError(fmt::format("\"{}\" is {} in every row: there is nothing to explain", FOptions.Target,
                                    Short(Values[0])));
    }
    return WithoutConstants(Table);
  }

  // Rows are counted as in the table, before they are drawn for the test.
  void RequireTarget(const qx::TQXDataSet& Table) const {
    const auto Values = Table.Column(FOptions.Target);
    try {
      qx::TRegressionTarget(Values, FOptions.Weights.empty() ? std::span<const double>()
                                                             : Table.Column(FOptions.Weights));
    } catch (const std::invalid_argument& Error) {
      const bool Skips = std::ranges::all_of(Values, [](double Value) { return std::isfinite(Value); });
      throw EUsageError(FOptions.Data.Name() + ": " + Error.what() +
                        (Skips ? "" : "; --missing skip leaves such rows out"));
    }
  }

  // What is the same in every row explains nothing.
  qx::TQXDataSet WithoutConstants(const qx::TQXDataSet& Table) const {
    std::vector<std::string> Constant;
    std::string Told;
    for (int I = 0; I < Table.ColumnCount(); ++I) {
      const std::string& Name = Table.ColumnName(I);
      const auto Values = Table.Column(I);
      if (Name != FOptions.Weights &&
          std::ranges::all_of(Values, [&](double Value) { return Value == Values[0]; })) {
        Constant.push_back(Name);
        Told += fmt::format("\"{}\" is {} in every row, and left out\n", Name, Short(Values[0]));
      }
    }
    qx::TQXDataSet Rest = Table.Without(Constant);
    if (Rest.ColumnCount() < (FOptions.Weights.empty() ? 2 : 3)) {
      throw EUsageError(fmt::format("{} has no column that changes to explain \"{}\" by",
                                    FOptions.Data.Name(), FOptions.Target));
    }
    TellUsual(Told);
    return Rest;
  }

  static std::string ColumnNames(const qx::TQXDataSet& Table) {
    constexpr int Most = 12;
    std::string Names;
    for (int I = 0; I < std::min(Table.ColumnCount(), Most); ++I) {
      Names += (I > 0 ? ", " : "") + Table.ColumnName(I);
    }
    return Names + (Table.ColumnCount() > Most ? ", ..." : "");
  }

  void Prepare(const qx::TQXDataSet& Table) {
    DescribeRun(Table);
    auto& Instructions = FRegression.Instructions();
    if (FResumes) {
      FFile->AddFunctions(FRegression);
    } else {
      AddFunctions(Table);
    }
    auto Split = FRun.TestShare > 0 ? Table.SplitBySeed(1 - FRun.TestShare, FRun.Seed)
                                    : qx::TDataSplit{Table, Table.Rows(0, 0)};
    try {
      FRegression.SetData(std::move(Split), FRun.Target, FRun.Weights);
    } catch (const std::invalid_argument& Error) { // targets or weights that are none
      throw EUsageError(FOptions.Data.Name() + ": " + Error.what());
    } catch (const qx::EGPException& Error) { // names
      throw EUsageError(FOptions.Data.Name() + ": " + Error.what() + "; rename it, or --ignore it");
    }
    if (FOptions.NoConstants && !FResumes) {
      for (int I = Instructions.Count(); I-- > 0;) {
        if (Instructions[I].Operation() == qx::gpConstant) {
          Instructions.Delete(I);
        }
      }
    }
    if (FResumes) {
      FFile->Restore(FRegression);
    } else {
      qx::SeedRandom(FRun.Seed);
    }
    const auto FormerMeasure = FRegression.ErrorMeasure();
    FOptions.ApplySettings(FRegression);
    if (FRegression.ErrorMeasure() != FormerMeasure) { // its errors are no course of these
      FRun.History.clear();
    }
    FFormerSeconds = FRun.History.empty() ? 0 : FRun.History.back().Seconds;
    FFormerGenerations = FResumes ? FRegression.Generation() : 0;
  }

  // Each gets a name that no column has.
  void AddFunctions(const qx::TQXDataSet& Table) {
    auto& Set = FRegression.Instructions();
    const auto IsTaken = [&](const std::string& Name) {
      for (int I = 0; I < Table.ColumnCount(); ++I) {
        if (qx::SameText(Table.ColumnName(I), Name)) {
          return true;
        }
      }
      return Set.IndexOf(Name) >= 0;
    };
    for (const std::string& Standard : FOptions.Functions) {
      std::string Name = Standard;
      const bool IsThere = std::ranges::any_of(Set, [&](const auto& Instruction) {
        return qx::SameText(qx::StandardInstructionName(Instruction), Standard);
      });
      while (!IsThere && IsTaken(Name)) {
        Name += '_';
      }
      if (!IsThere) {
        AddStandardInstruction(Set, Standard, Name);
      }
    }
  }

  void DescribeRun(const qx::TQXDataSet& Table) {
    const std::uint64_t Found = Fingerprint(Table);
    if (FResumes) {
      ResumeRun(Found);
    }
    FRun.Data = FOptions.Data; // the file may have moved
    FRun.Data.FileName = FOptions.Data.FileName == "-"
                             ? FOptions.Data.FileName
                             : std::filesystem::absolute(FOptions.Data.FileName).string();
    if (!FResumes) {
      BeginRun(Table, Found);
    }
  }

  void ResumeRun(std::uint64_t Found) {
    FRun = FFile->Run(); // with the command that began it
    const bool Same =
        FRun.Fingerprint == Found && FRun.Target == FOptions.Target && FRun.Weights == FOptions.Weights;
    if (!Same) {
      throw EUsageError(fmt::format("{} holds a run on other data: {} rows of {}, target {}", FOptions.Save,
                                    FRun.Rows, FRun.Data.FileName, FRun.Target));
    }
    if (FOptions.Seed.value_or(FRun.Seed) != FRun.Seed || !FOptions.Functions.empty() ||
        FOptions.NoConstants || FOptions.TestShare.value_or(FRun.TestShare) != FRun.TestShare) {
      throw EUsageError(
          "--seed, --test-share, --functions and --no-constants belong to a new run; leave them "
          "out with --resume");
    }
  }

  void BeginRun(const qx::TQXDataSet& Table, std::uint64_t Found) {
    FRun.Target = FOptions.Target;
    FRun.Weights = FOptions.Weights;
    FRun.Rows = Table.RowCount();
    FRun.Fingerprint = Found;
    FRun.TestShare = FOptions.TestShare.value_or(Table.RowCount() >= RowsForTest ? UsualTestShare : 0);
    FRun.Seed = FOptions.Seed.value_or(std::random_device()());
    if (!FOptions.Seed) {
      FRun.Command.insert(FRun.Command.end(), {"--seed", std::to_string(FRun.Seed)});
    }
  }

  void Evolve() {
    const auto Progress =
        FOptions.Progress == TProgressKind::Usual ? NewProgress() : std::make_unique<TProgress>();
    TellUsual(fmt::format("{} rows, {} to test; seed {}; Ctrl-C ends the run with what it has\n", FRun.Rows,
                          FRegression.TestData().RowCount(), FRun.Seed));
    FRegression.OnRecord = [&](TQXSymbolicRegression&, const qx::TRegressionRecord& Record) {
      FRun.History.push_back(Record);
      FRun.History.back().Seconds += FFormerSeconds;
      const auto* const Best = FRegression.Front().Last();
      const double Error = Best != nullptr ? Best->Error : Record.BestError;
      const int Size = Best != nullptr ? Best->Size() : 0;
      if (FOptions.Progress == TProgressKind::JSON) {
        PrintRecord(RecordJSON(FRun.History.back(), Error, Size));
      }
      const double Time = Seconds() / FOptions.Seconds;
      const double Count = static_cast<double>(Record.Generation) / static_cast<double>(FOptions.Generations);
      Progress->Update({Record.Generation, fmt::format("error {:.4g}  size {}", Error, Size),
                        std::min(std::max(Time, Count), 1.0), Seconds(),
                        SecondsLeft(Seconds(), FOptions.Seconds, Record.Generation - FFormerGenerations,
                                    FOptions.Generations - FFormerGenerations)});
    };
    double Saved = 0;
    // Generations end whole, so that the run can be repeated, unless one takes far too long.
    constexpr double Longer = 1.05;
    constexpr double AtLeast = 0.25;
    FRegression.SetDeadline(Longer * FOptions.Seconds + AtLeast - Seconds());
    while (!FRegression.Initialized() || !IsOver()) {
      if (FRegression.Initialized()) {
        FRegression.Evolve();
      } else {
        FRegression.Initialize();
      }
      if (!FOptions.Save.empty() && FOptions.CheckpointSeconds > 0 &&
          Seconds() >= Saved + FOptions.CheckpointSeconds) {
        Progress->Finish();
        SaveCheckpoint();
        Saved = Seconds();
      }
    }
    Progress->Finish();
  }

  // A run does not end because the disk is full for a while: its end tells.
  void SaveCheckpoint() {
    FRun.ChosenSize = ChosenSize(FRegression);
    try {
      TRunFile::Write(FOptions.Save, FRun, FRegression);
    } catch (const std::exception& Error) {
      Tell(fmt::format("qxevolve: {} (the run goes on)\n", Error.what()));
    }
  }

  // When nobody reads any more, the run ends, and is kept.
  void PrintRecord(const std::string& Record) {
    if (!FHasFailed) {
      Attempt([&] { Print(Record); });
    }
  }

  double Seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - FStart).count();
  }

  bool IsOver() {
    if (TInterruptScope::IsInterrupted()) {
      FEndedBy = "interrupt";
    } else if (FHasFailed) {
      FEndedBy = "output";
    } else if (Seconds() >= FOptions.Seconds) {
      FEndedBy = "time";
    } else if (FRegression.Initialized() && FRegression.Generation() >= FOptions.Generations) {
      FEndedBy = "generations";
    } else if (FRegression.Initialized() && FRegression.IsFinished()) {
      const auto* const Best = FRegression.Front().Last();
      FEndedBy = Best != nullptr && Best->Error <= FRegression.FitnessCutoff() ? "error" : "patience";
    }
    return !FEndedBy.empty();
  }

  double RSquared(const TRegressionModel& Model, const qx::TQXDataSet& Data) {
    return 1 - FRegression.Error(Model, Data, qx::emR2);
  }

  void PrintResult() {
    const TRegressionModel& Best = ModelOfSize(FRegression, FRun.ChosenSize);
    const std::string Formula = FRun.Target + " = " + ReadableFormula(Best);
    switch (FOptions.Progress) {
    case TProgressKind::Quiet:
      Print(Formula + "\n");
      break;
    case TProgressKind::JSON:
      Print(ResultJSON(FRun, FRegression, FEndedBy));
      break;
    case TProgressKind::Usual:
      PrintFront();
      Print("\n" + Formula + "\n" + QualityText(Best) + "\n");
      break;
    }
  }

  std::string QualityText(const TRegressionModel& Best) {
    std::string Text = fmt::format("R2 {:.6f} on {} rows", RSquared(Best, FRegression.TrainingData()),
                                   FRegression.TrainingData().RowCount());
    if (FRegression.TestData().RowCount() > 0) {
      Text += fmt::format(", {:.6f} on {} test rows", RSquared(Best, FRegression.TestData()),
                          FRegression.TestData().RowCount());
    }
    return Text + fmt::format("; {} generations, {:.1f} s; stopped: {}", FRegression.Generation(),
                              FRun.History.back().Seconds, WhyStopped());
  }

  std::string WhyStopped() const {
    if (FEndedBy == "error") {
      return "error below " + Short(FRegression.FitnessCutoff());
    }
    if (FEndedBy == "patience") {
      return fmt::format("{} generations without a smaller test error", FRegression.StoppingPatience());
    }
    return FEndedBy == "time"          ? "time is up"
           : FEndedBy == "generations" ? "that many were asked for"
           : FEndedBy == "interrupt"   ? "Ctrl-C"
                                       : "nobody reads the output";
  }

  // The error that the formula is chosen by stands beside the other one.
  void PrintFront() {
    const auto Width = TerminalWidth(STDOUT_FILENO);
    const bool HasTest = FRegression.TestData().RowCount() > 0;
    std::string Text = fmt::format("\n{:>6}  {:>11}{}  formula\n", "size", "error",
                                   HasTest ? fmt::format("  {:>11}", "test error") : "");
    for (const TRegressionModel& Model : FRegression.Front()) {
      const char Mark = Model.Size() == FRun.ChosenSize ? '*' : ' ';
      const std::string Line =
          fmt::format("{:>6}{} {:>11.4g}{}  {}", Model.Size(), Mark, Model.Error,
                      HasTest ? fmt::format("  {:>11.4g}", Model.TestError) : "", ReadableFormula(Model));
      Text += (Width ? Shortened(Line, *Width) : Line) + '\n'; // `show --size` has all of it
    }
    Print(Text);
  }

  const TRegressOptions& FOptions;
  TRun FRun;
  std::optional<TRunFile> FFile; // that is resumed
  bool FResumes = false;
  TQXSymbolicRegression FRegression;
  std::chrono::steady_clock::time_point FStart = std::chrono::steady_clock::now();
  double FFormerSeconds = 0; // of the run before it was taken up
  int FFormerGenerations = 0;
  bool FHasFailed = false; // some output
  bool FHasMadeFolder = false;
  std::string FEndedBy;
};

} // namespace

int Regress(const TRegressOptions& Options, std::vector<std::string> Command) {
  return TRegress(Options, std::move(Command)).Execute();
}

} // namespace qxevolve
