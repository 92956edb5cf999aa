// qxevolve: formulas out of tables, and packed knapsacks, for people who write no C++.

#include "Error.h"
#include "HelpFormatter.h"
#include "Manual.h"
#include "Optimize.h"
#include "Output.h"
#include "Regress.h"
#include "RegressOptions.h"
#include "UseRun.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <exception>
#include <fmt/format.h>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

using namespace qxevolve;

constexpr const char* Examples = R"(Examples:
  qxevolve regress planets.csv --target period
      a formula for the column "period" out of the other ones
  qxevolve regress planets.csv --target period --save run.xml --report report
      the same, kept in run.xml, with figures in report/report.html
  qxevolve predict run.xml new.csv --output predictions.csv
      what the formula says for other rows
  qxevolve show run.xml --as python
      the formula as a function
  qxevolve optimize items.csv --capacity 750
      the most valuable items that fit into a knapsack

Exit codes: 0 done, 1 failed, 2 wrong use, 130 ended by Ctrl-C with what there was.
)";

// Errors take one line, whatever a table has in its cells.
int Failed(const char* Message, int Code) {
  std::string Line = Message;
  std::ranges::replace_if(
      Line, [](char C) { return static_cast<unsigned char>(C) < ' '; }, ' ');
  Tell(fmt::format("qxevolve: {}\n", Line));
  return Code;
}

// Runs a command, and tells in one line what kept it from its end.
template <class TCommand>
int Guarded(TCommand Command) {
  try {
    return Command();
  } catch (const EUsageError& Error) {
    return Failed(Error.what(), ExitUsage);
  } catch (const std::bad_alloc&) {
    return Failed("There is not enough memory; a smaller --population or fewer rows need less", ExitFailed);
  } catch (const std::exception& Error) {
    return Failed(Error.what(), ExitFailed);
  }
}

class TProgram {
public:
  TProgram() {
    FApp.formatter(std::make_shared<THelpFormatter>());
    FApp.set_version_flag("--version", "qxevolve " QX_VERSION);
    FApp.require_subcommand(1);
    FApp.footer(Examples);
    AddCommands();
  }

  int Run(int Count, char** Arguments) {
    try {
      FApp.parse(Count, Arguments);
    } catch (const CLI::CallForHelp&) {
      const CLI::App* const Asked = Chosen();
      Print(Asked != nullptr ? Asked->help("qxevolve") : FApp.help());
      return ExitGood;
    } catch (const CLI::CallForVersion& Version) {
      Print(std::string(Version.what()) + "\n");
      return ExitGood;
    } catch (const CLI::ParseError& Error) {
      if (Chosen() == nullptr && Count > 1 && Arguments[1][0] != '-') {
        throw EUsageError(fmt::format("There is no command \"{}\"; see qxevolve --help", Arguments[1]));
      }
      throw EUsageError(fmt::format("{}; see qxevolve{} --help", Error.what(),
                                    Chosen() != nullptr ? " " + Chosen()->get_name() : ""));
    }
    FWords.assign(Arguments, Arguments + Count);
    FWords[0] = "qxevolve";
    return FRuns.at(Chosen())();
  }

private:
  const CLI::App* Chosen() const {
    const auto Commands = FApp.get_subcommands();
    return Commands.empty() ? nullptr : Commands.front();
  }

  template <class TRun>
  CLI::App& Add(const std::string& Name, const std::string& What, const std::string& Example, TRun Run) {
    CLI::App* const Command = FApp.add_subcommand(Name, What);
    Command->footer("Example:\n  " + Example + "\n");
    FRuns[Command] = Run;
    return *Command;
  }

  void AddCommands() {
    FToRegress.AddTo(Add("regress", "Finds formulas for a column of a table",
                         "qxevolve regress planets.csv --target period --seconds 10 --functions "
                         "Add,Mul,Div,Sqrt --save run.xml",
                         [this] { return Regress(FToRegress, FWords); }));
    FToUse.AddPredictTo(Add("predict", "Computes a kept formula for the rows of a table",
                            "qxevolve predict run.xml new.csv --keep --output predictions.csv",
                            [this] { return Predict(FToUse); }));
    FToUse.AddShowTo(Add("show", "Writes a kept formula in a language",
                         "qxevolve show run.xml --as latex --size 7", [this] { return Show(FToUse); }));
    FToUse.AddDescribeTo(Add("describe", "Prints the settings of a kept run", "qxevolve describe run.xml",
                             [this] { return Describe(FToUse); }));
    FToOptimize.AddTo(Add("optimize", "Packs the most valuable items into a knapsack",
                          "qxevolve optimize items.csv --capacity 750 --seed 1",
                          [this] { return Optimize(FToOptimize); }));
    Add("manual", "Prints all of this help as Markdown", "qxevolve manual > qxevolve.md", [] {
      Print(ManualText(TProgram().FApp)); // one that has parsed nothing shows the help of all
      return ExitGood;
    });
    Add("completion", "Prints a script that completes commands in bash", "source <(qxevolve completion)",
        [this] {
          Print(CompletionText(FApp));
          return ExitGood;
        });
  }

  CLI::App FApp{"Finds formulas in tables of numbers, by evolution.", "qxevolve"};
  TRegressOptions FToRegress;
  TUseOptions FToUse;
  TOptimizeOptions FToOptimize;
  std::map<const CLI::App*, std::function<int()>> FRuns;
  std::vector<std::string> FWords; // of the command
};

} // namespace

int main(int Count, char** Arguments) {
  std::signal(SIGPIPE, SIG_IGN); // nobody reads: an error of writing, after which the rest is still done
  return Guarded([&] { return TProgram().Run(Count, Arguments); });
}
