#include "RegressOptions.h"

#include "Checks.h"
#include "FriendlyNames.h"
#include "Output.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <thread>
#include <type_traits>

namespace qxevolve {

namespace {

using TRegression = qx::TQXSymbolicRegression;

std::vector<std::string> FunctionNames() {
  std::vector<std::string> Names;
  for (int Group = qx::sgArithmetic; Group <= qx::sgBoolean; ++Group) {
    for (const std::string_view Name : qx::StandardInstructionNames(static_cast<qx::TStandardGroup>(Group))) {
      if (std::ranges::find(Names, Name) == Names.end()) {
        Names.emplace_back(Name);
      }
    }
  }
  return Names;
}

int UsualThreads() { return static_cast<int>(std::max(std::thread::hardware_concurrency(), 1U)); }

} // namespace

// A setting of the component that has its default unless the option is given.
template <class TValue, class TSetter>
CLI::Option* TRegressOptions::AddSetting(CLI::App& App, const std::string& Name,
                                         const std::string& Description, TValue Default, TSetter Setter) {
  const auto Value = std::make_shared<TValue>(Default);
  CLI::Option* const Option = App.add_option(Name, *Value, Description)->capture_default_str();
  if constexpr (std::is_floating_point_v<TValue>) {
    Option->default_str(Short(Default))->type_name("NUMBER");
  } else {
    Option->type_name("N");
  }
  FSettings.push_back([=](TRegression& Regression) {
    if (Option->count() > 0) {
      (Regression.*Setter)(*Value);
    }
  });
  return Option;
}

template <class TEnum, class TSetter>
void TRegressOptions::AddChoice(CLI::App& App, const std::string& Name, const std::string& Description,
                                TEnum Default, TSetter Setter) {
  const auto Names = FriendlyNames<TEnum>();
  std::string All;
  std::vector<std::string> Words(Names.size());
  for (const auto& [Word, Value] : Names) {
    Words[static_cast<std::size_t>(Value)] = Word;
  }
  std::erase(Words, "custom"); // needs code
  for (const std::string& Word : Words) {
    All += (All.empty() ? "" : ", ") + Word;
  }
  const auto Chosen = std::make_shared<std::string>(FriendlyNameOf(Default));
  CLI::Option* const Option = App.add_option(Name, *Chosen, Description + ": " + All)
                                  ->type_name("NAME")
                                  ->check(CLI::IsMember(Words))
                                  ->capture_default_str();
  FSettings.push_back([=](TRegression& Regression) {
    if (Option->count() > 0) {
      (Regression.*Setter)(Names.at(*Chosen));
    }
  });
}

void TRegressOptions::AddTo(CLI::App& App) {
  const TRegression Defaults;
  App.add_option("data", Data.FileName,
                 "Table of numbers, as CSV; its first line names the columns. - is standard input")
      ->required()
      ->type_name("FILE.csv");
  App.add_option("-t,--target", Target, "Column to find a formula for")
      ->required()
      ->type_name("NAME")
      ->group("Data");
  App.add_option("--weights", Weights, "Column that says how much each row counts")
      ->type_name("NAME")
      ->group("Data");
  App.add_option(
         "--test-share", TestShare,
         "Share of the rows, drawn by the seed, that no program is bred by, and that choose the formula: "
         "the smallest one whose error there is within a tenth of the least [0.25 of 40 rows or more, "
         "else 0]")
      ->check(IsWithin(0, 0.9))
      ->type_name("SHARE")
      ->group("Data");
  Data.AddOptions(App);
  Data.AddHeaderOption(App);
  Data.AddMissingOption(App);
  AddRunOptions(App);
  AddProgramOptions(App, Defaults);
  AddOperatorOptions(App, Defaults);
  AddErrorOptions(App, Defaults);
  AddOutputOptions(App);
}

void TRegressOptions::AddRunOptions(CLI::App& App) {
  const auto Group = "Run";
  App.add_option("-s,--seconds", Seconds, "Ends the run after so long, at the end of a generation")
      ->check(IsPositive())
      ->take_last() // the command that repeats a run adds one
      ->type_name("NUMBER")
      ->capture_default_str()
      ->group(Group);
  App.add_option("-g,--generations", Generations,
                 "Ends the run after so many generations, those before --resume included [no limit]")
      ->check(IsWhole(1))
      ->take_last()
      ->type_name("N")
      ->group(Group);
  App.add_option("--seed", Seed, "Makes the run repeatable [a new one each time, which is told]")
      ->check(IsWhole(0, std::numeric_limits<std::int64_t>::max()))
      ->type_name("N")
      ->group(Group);
  AddSetting(App, "--stop-at", "Ends the run at that error on the training rows", qx::TGAFitness(1e-24),
             &TRegression::SetFitnessCutoff)
      ->check(IsWithin(0))
      ->group(Group);
  AddSetting(App, "--patience",
             "Ends the run when the error on the test rows has not fallen for so many generations; 0: never",
             0, &TRegression::SetStoppingPatience)
      ->check(IsWhole(0))
      ->group(Group);
  AddSetting(App, "--restart-patience",
             "Makes the population anew when the error has not fallen by a tenth for so many generations; 0: "
             "never",
             TRegression().RestartPatience(), &TRegression::SetRestartPatience)
      ->check(IsWhole(0))
      ->group(Group);
  constexpr int MostThreads = 1024;
  AddSetting(App, "--threads", "Threads that evaluate; the run is the same for any number [one a processor]",
             UsualThreads(), &TRegression::SetThreads)
      ->check(IsWhole(1, MostThreads))
      ->default_str("")
      ->group(Group);
}

void TRegressOptions::AddProgramOptions(CLI::App& App, const TRegression& Defaults) {
  const auto Group = "Programs";
  constexpr int MostIndividuals = 1'000'000;
  constexpr int GreatestDepth = 30;
  AddSetting(App, "-p,--population", "Programs in a generation", Defaults.InitialPopulation(),
             &TRegression::SetInitialPopulation)
      ->check(IsWhole(2, MostIndividuals))
      ->group(Group);
  App.add_option(
         "-f,--functions", Functions,
         "What programs are made of [Add,Sub,Mul,Div,Square,Cube,Sqrt,Sin,Cos,Exp,Log]; there are also "
         "Neg, Inv, AQ, Cbrt, Pow, Tan, Tanh, Abs, Min, Max, comparisons and logic")
      ->delimiter(',')
      ->check(CLI::IsMember(FunctionNames(), CLI::ignore_case))
      ->type_name("NAME,...")
      ->group(Group);
  App.add_flag("--no-constants", NoConstants, "Programs have no numbers of their own")->group(Group);
  AddSetting(App, "--depth", "Levels of the deepest initial programs", Defaults.InitializationDepth(),
             &TRegression::SetInitializationDepth)
      ->check(IsWhole(0, GreatestDepth))
      ->group(Group);
  AddChoice(App, "--bloat", "Remedy against programs that grow without gain", Defaults.BloatStrategy(),
            &TRegression::SetBloatStrategy);
  App.get_option("--bloat")->group(Group);
  AddSetting(App, "--bloat-limit", "Nodes, or levels, that the remedy begins at", Defaults.BloatLimit(),
             &TRegression::SetBloatLimit)
      ->check(IsWhole(1))
      ->group(Group);
}

void TRegressOptions::AddOperatorOptions(CLI::App& App, const TRegression& Defaults) {
  const auto Group = "Selection and reproduction";
  AddChoice(App, "--selection", "How parents are chosen", Defaults.SelectionMethod(),
            &TRegression::SetSelectionMethod);
  App.get_option("--selection")->group(Group);
  constexpr int MostContestants = 10'000;
  AddSetting(App, "--tournament", "Contestants of a tournament", Defaults.TournamentField(),
             &TRegression::SetTournamentField)
      ->check(IsWhole(2, MostContestants))
      ->group(Group);
  const auto AddChance = [&](const std::string& Name, const std::string& What, double Default, auto Setter) {
    AddSetting(App, Name, What, Default, Setter)->check(IsWithin(0, 1))->group(Group);
  };
  AddChance("--crossover", "Chance that two parents are crossed", Defaults.CrossoverProbability(),
            &TRegression::SetCrossoverProbability);
  AddChance("--mutation", "Chance that a child is mutated", Defaults.MutationProbability(),
            &TRegression::SetMutationProbability);
  AddChance("--inversion", "Chance that arguments of a child change places", Defaults.InversionProbability(),
            &TRegression::SetInversionProbability);
  AddChance("--refine", "Share of the programs whose constants are refined in each generation",
            Defaults.RefinementShare(), &TRegression::SetRefinementShare);
  constexpr int MostSteps = 1000;
  AddSetting(App, "--refine-steps", "Steps of that", Defaults.RefinementSteps(),
             &TRegression::SetRefinementSteps)
      ->check(IsWhole(0, MostSteps))
      ->group(Group);
}

void TRegressOptions::AddErrorOptions(CLI::App& App, const TRegression& Defaults) {
  const auto Group = "Error";
  AddChoice(App, "--error", "What is made small", Defaults.ErrorMeasure(), &TRegression::SetErrorMeasure);
  App.get_option("--error")->group(Group);
  const auto AddSwitch = [&](const std::string& Name, const std::string& What, auto Setter, bool Value) {
    CLI::Option* const Option = App.add_flag(Name, What)->group(Group);
    FSettings.push_back([=](TRegression& Regression) {
      if (Option->count() > 0) {
        (Regression.*Setter)(Value);
      }
    });
  };
  AddSwitch("--no-scaling", "Judges programs as they are, without the best offset and scale",
            &TRegression::SetLinearScaling, false);
  AddSwitch("--single", "Computes in single precision: faster, with about six digits",
            &TRegression::SetSinglePrecision, true);
}

void TRegressOptions::AddOutputOptions(CLI::App& App) {
  const auto Group = "Output";
  App.add_option("--save", Save, "Keeps the run in a file, for predict, show, describe and --resume")
      ->type_name("FILE.xml")
      ->group(Group);
  App.add_flag("--resume", Resume, "Goes on with the run in that file, when it is there")
      ->needs("--save")
      ->group(Group);
  App.add_flag("--force", Force, "Replaces a run on another target in that file")
      ->needs("--save")
      ->group(Group);
  App.add_option("--checkpoint", CheckpointSeconds, "Saves after each so many seconds as well; 0: at the end")
      ->needs("--save")
      ->check(IsWithin(0))
      ->type_name("NUMBER")
      ->capture_default_str()
      ->group(Group);
  App.add_option("--report", Report, "Writes a page with figures, report.html, into that folder")
      ->type_name("DIR")
      ->group(Group);
  CLI::Option* const Quiet =
      App.add_flag_callback(
             "-q,--quiet", [this] { Progress = TProgressKind::Quiet; }, "Prints the formula alone")
          ->group(Group);
  App.add_flag_callback(
         "--json", [this] { Progress = TProgressKind::JSON; },
         "Prints a record of JSON for each generation, and one of the result")
      ->excludes(Quiet)
      ->group(Group);
}

void TRegressOptions::ApplySettings(TRegression& Regression) const {
  Regression.SetThreads(UsualThreads());
  for (const auto& Apply : FSettings) {
    Apply(Regression);
  }
}

} // namespace qxevolve
