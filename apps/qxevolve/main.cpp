// qxevolve: formulas out of tables, and packed knapsacks, for people who write no C++.

#include "Error.h"
#include "Manual.h"
#include "Optimize.h"
#include "Output.h"
#include "Regress.h"
#include "RegressOptions.h"
#include "UseRun.h"

#include <CLI/CLI.hpp>
#include <clocale>
#include <exception>
#include <fmt/format.h>
#include <memory>
#include <new>
#include <sstream>
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

// Text in lines of at most `Width` characters.
std::string Wrapped(const std::string& Text, std::size_t Width) {
  std::istringstream Words(Text);
  std::string Result;
  std::size_t Length = 0;
  for (std::string Word; Words >> Word; Length += Word.size() + 1) {
    if (Length + Word.size() > Width) {
      Result += '\n';
      Length = 0;
    } else if (Length > 0) {
      Result += ' ';
    }
    Result += Word;
  }
  return Result;
}

// Help in two columns: without the names of checks, which the messages tell.
class TFormatter : public CLI::Formatter {
public:
  TFormatter() { column_width(Column); }
  std::string make_footer(const CLI::App* App) const override {
    return App->get_footer().empty() ? "" : "\n" + App->get_footer();
  }
  std::string make_option_opts(const CLI::Option* Option) const override {
    if (Option->get_type_size() == 0) {
      return "";
    }
    const std::string Type = Option->get_type_name();
    return ' ' + Type.substr(0, Type.find(':'));
  }
  std::string make_option_desc(const CLI::Option* Option) const override {
    const bool HasDefault = Option->get_type_size() != 0 && !Option->get_default_str().empty();
    return Wrapped(Option->get_description() + (HasDefault ? " [" + Option->get_default_str() + "]" : ""),
                   Width - Column);
  }

private:
  static constexpr std::size_t Column = 30;
  static constexpr std::size_t Width = 100;
};

// Runs a command, and tells in one line what kept it from its end.
template <class TCommand>
int Guarded(TCommand Command) {
  try {
    return Command();
  } catch (const EUsageError& Error) {
    Tell(fmt::format("qxevolve: {}\n", Error.what()));
    return ExitUsage;
  } catch (const std::bad_alloc&) {
    Tell("qxevolve: There is not enough memory; a smaller --population or fewer rows need less\n");
    return ExitFailed;
  } catch (const std::exception& Error) {
    Tell(fmt::format("qxevolve: {}\n", Error.what()));
    return ExitFailed;
  }
}

int Run(int Count, char** Arguments) {
  CLI::App App("Finds formulas in tables of numbers, by evolution.", "qxevolve");
  App.formatter(std::make_shared<TFormatter>());
  App.set_version_flag("--version", "qxevolve " QX_VERSION);
  App.require_subcommand(1);
  App.footer(Examples);
  const auto Add = [&](const std::string& Name, const std::string& What, const std::string& Example) {
    CLI::App* const Command = App.add_subcommand(Name, What);
    Command->footer("Example:\n  " + Example + "\n");
    return Command;
  };
  TRegressOptions ToRegress;
  TUseOptions ToUse;
  TOptimizeOptions ToOptimize;
  CLI::App* const Regressing = Add("regress", "Finds formulas for a column of a table",
                                   "qxevolve regress planets.csv --target period --seconds 10 --functions "
                                   "Add,Mul,Div,Sqrt --save run.xml");
  ToRegress.AddTo(*Regressing);
  CLI::App* const Predicting = Add("predict", "Computes a kept formula for the rows of a table",
                                   "qxevolve predict run.xml new.csv --keep --output predictions.csv");
  ToUse.AddPredictTo(*Predicting);
  CLI::App* const Showing =
      Add("show", "Writes a kept formula in a language", "qxevolve show run.xml --as latex --size 7");
  ToUse.AddShowTo(*Showing);
  CLI::App* const Describing =
      Add("describe", "Prints the settings of a kept run", "qxevolve describe run.xml");
  ToUse.AddDescribeTo(*Describing);
  CLI::App* const Optimizing = Add("optimize", "Packs the most valuable items into a knapsack",
                                   "qxevolve optimize items.csv --capacity 750 --seed 1");
  ToOptimize.AddTo(*Optimizing);
  CLI::App* const Manual =
      Add("manual", "Prints all of this help as Markdown", "qxevolve manual > qxevolve.md");
  CLI::App* const Completion =
      Add("completion", "Prints a script that completes commands in bash", "source <(qxevolve completion)");
  try {
    App.parse(Count, Arguments);
  } catch (const CLI::CallForHelp&) {
    CLI::App* const Asked = App.get_subcommands().empty() ? &App : App.get_subcommands().front();
    Print(Asked->help(Asked == &App ? "" : "qxevolve"));
    return ExitGood;
  } catch (const CLI::CallForVersion& Version) {
    Print(std::string(Version.what()) + "\n");
    return ExitGood;
  } catch (const CLI::ParseError& Error) {
    const std::string Command =
        App.get_subcommands().empty() ? "" : " " + App.get_subcommands().front()->get_name();
    if (Command.empty() && Count > 1 && Arguments[1][0] != '-') {
      throw EUsageError(fmt::format("There is no command \"{}\"; see qxevolve --help", Arguments[1]));
    }
    throw EUsageError(fmt::format("{}; see qxevolve{} --help", Error.what(), Command));
  }
  if (Regressing->parsed()) {
    std::vector<std::string> Command(Arguments, Arguments + Count);
    Command[0] = "qxevolve";
    return Regress(ToRegress, std::move(Command));
  }
  if (Optimizing->parsed()) {
    return Optimize(ToOptimize);
  }
  if (Manual->parsed() || Completion->parsed()) {
    Print(Manual->parsed() ? ManualText(App) : CompletionText(App));
    return ExitGood;
  }
  return Predicting->parsed() ? Predict(ToUse) : Showing->parsed() ? Show(ToUse) : Describe(ToUse);
}

} // namespace

int main(int Count, char** Arguments) {
  return Guarded([&] { return Run(Count, Arguments); });
}
