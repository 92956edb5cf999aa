#include "Optimize.h"

#include "Checks.h"
#include "Error.h"
#include "Interrupt.h"
#include "Output.h"
#include "Progress.h"
#include <qx/genetic_algorithm/QXGeneticAlgorithm.h>
#include <qx/platform/Numbers.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <memory>
#include <numeric>
#include <random>
#include <span>
#include <vector>

namespace qxevolve {

namespace {

struct TLoad {
  double Value = 0;
  double Weight = 0;
  std::vector<int> Items; // from 0, by rising place
};

// The items of a table, and what fits.
class TKnapsack {
public:
  TKnapsack(const qx::TQXDataSet& Table, const TOptimizeOptions& Options)
      : FValues(Column(Table, Options, "value")), FWeights(Column(Table, Options, "weight")),
        FCapacity(CapacityOf(Table, Options)), FOrder(FValues.size()) {
    std::iota(FOrder.begin(), FOrder.end(), 0);
    std::ranges::stable_sort(FOrder, [&](int First, int Second) { return Density(First) > Density(Second); });
  }

  int Count() const { return static_cast<int>(FValues.size()); }
  double Capacity() const { return FCapacity; }

  // What a chromosome packs: the items that it wants, those of most value for their weight first, as long as
  // they fit; then what still fits of the other ones.
  TLoad Pack(qx::TQXGAGenes& Genes, qx::TQXGABits& Bits) const {
    TLoad Load;
    for (const bool Wanted : {true, false}) {
      for (const int Item : FOrder) {
        if (Genes[Item].GeneAsBoolean(Bits) == Wanted && Load.Weight + Weight(Item) <= FCapacity) {
          Load.Value += Value(Item);
          Load.Weight += Weight(Item);
          Load.Items.push_back(Item);
        }
      }
    }
    std::ranges::sort(Load.Items);
    return Load;
  }

  double Value(int Item) const { return FValues[static_cast<std::size_t>(Item)]; }
  double Weight(int Item) const { return FWeights[static_cast<std::size_t>(Item)]; }

private:
  static std::vector<double> Column(const qx::TQXDataSet& Table, const TOptimizeOptions& Options,
                                    const std::string& Name) {
    const auto Values = Table.Column(Name);
    for (std::size_t Row = 0; Row < Values.size(); ++Row) {
      if (!std::isfinite(Values[Row]) || Values[Row] < 0) {
        throw EUsageError(fmt::format("{}: the {} of item {} is {}, not a number from 0 on",
                                      Options.Data.Name(), Name, Row + 1, Short(Values[Row])));
      }
    }
    return {Values.begin(), Values.end()};
  }

  static double CapacityOf(const qx::TQXDataSet& Table, const TOptimizeOptions& Options) {
    if (Options.Capacity) {
      return *Options.Capacity;
    }
    if (Table.IndexOf("capacity") < 0 || Table.RowCount() == 0) {
      throw EUsageError("How much fits? Give --capacity, or the table a column \"capacity\"");
    }
    const double Capacity = Table.Column("capacity")[0]; // the other rows need none
    if (!std::isfinite(Capacity) || Capacity < 0) {
      throw EUsageError(fmt::format("{}: the capacity in the first row is {}, not a number from 0 on",
                                    Options.Data.Name(), Short(Capacity)));
    }
    return Capacity;
  }

  double Density(int Item) const {
    return Weight(Item) > 0 ? Value(Item) / Weight(Item) : std::numeric_limits<double>::infinity();
  }

  std::vector<double> FValues;
  std::vector<double> FWeights;
  double FCapacity;
  std::vector<int> FOrder;
};

class TOptimize {
public:
  TOptimize(const TOptimizeOptions& Options, TTable Table)
      : FOptions(Options), FKnapsack(Table.Numbers, Options), FNames(std::move(Table.Texts)) {
    for (int Item = 0; Item < FKnapsack.Count(); ++Item) {
      qx::TQXGAGene& Gene = FAlgorithm.Genes().Add();
      Gene.SetName("item" + std::to_string(Item + 1));
      Gene.SetGeneType(qx::gtBoolean);
      Gene.SetSize(1);
    }
    FAlgorithm.SetInitialPopulation(Options.Population);
    FAlgorithm.SetInitialDuplicatesRetries(0);
    FAlgorithm.SetFitnessMethod(qx::fmMaximize);
    FAlgorithm.SetSelectionMethod(qx::smTournament);
    FAlgorithm.SetMutationProbability(0.2);
    FAlgorithm.OnEvaluateFitness = [&](auto&, auto& Item, double& Fitness) {
      TLoad Load = FKnapsack.Pack(FAlgorithm.Genes(), Item.Bits());
      Fitness = Load.Value;
      if (Load.Value > FBest.Value || FBest.Items.empty()) {
        FBest = std::move(Load);
      }
    };
  }

  int Execute() {
    const std::uint64_t Seed = FOptions.Seed.value_or(std::random_device()());
    qx::SeedRandom(Seed);
    if (!FOptions.Quiet) {
      Tell(fmt::format("{} items, capacity {}; seed {}; Ctrl-C ends the run with what it has\n",
                       FKnapsack.Count(), Short(FKnapsack.Capacity()), Seed));
    }
    const bool Interrupted = Evolve();
    WriteOutput(FOptions.Output, ResultText());
    return Interrupted ? ExitInterrupted : ExitGood;
  }

private:
  // Tells whether it was interrupted.
  bool Evolve() {
    const auto Progress = FOptions.Quiet ? std::make_unique<TProgress>() : NewProgress();
    const auto Start = std::chrono::steady_clock::now();
    const TInterruptScope Interrupts;
    double Seconds = 0;
    for (int I = 0;
         I <= FOptions.Generations && Seconds < FOptions.Seconds && !TInterruptScope::IsInterrupted(); ++I) {
      if (I == 0) {
        FAlgorithm.Initialize();
        WantAll();
      } else {
        FAlgorithm.Evolve();
      }
      Seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - Start).count();
      const double Share = std::max(Seconds / FOptions.Seconds, double(I) / FOptions.Generations);
      Progress->Update({I, fmt::format("value {}", Short(FBest.Value)), std::min(Share, 1.0), Seconds,
                        SecondsLeft(Seconds, FOptions.Seconds, I, FOptions.Generations)});
    }
    Progress->Finish();
    return TInterruptScope::IsInterrupted();
  }

  // Lets the first individual want all items: it packs them by value for weight.
  void WantAll() {
    for (qx::TQXGAGene& Gene : FAlgorithm.Genes()) {
      Gene.SetAsBoolean(0, true);
    }
    FAlgorithm.EvaluateFitness();
  }

  // A table of what is packed.
  std::string ResultText() const {
    std::string Text = "item,value,weight\n";
    for (const int Item : FBest.Items) {
      const std::string Name =
          FNames.empty() ? std::to_string(Item + 1) : FNames[static_cast<std::size_t>(Item)];
      Text += fmt::format("{},{},{}\n", CSVCell(Name), qx::NumberText(FKnapsack.Value(Item)),
                          qx::NumberText(FKnapsack.Weight(Item)));
    }
    if (!FOptions.Quiet) {
      Tell(fmt::format("Value {}, weight {} of {}, {} of {} items\n", Short(FBest.Value), Short(FBest.Weight),
                       Short(FKnapsack.Capacity()), FBest.Items.size(), FKnapsack.Count()));
    }
    return Text;
  }

  const TOptimizeOptions& FOptions;
  TKnapsack FKnapsack;
  std::vector<std::string> FNames; // of the items, if they have some
  qx::TQXGeneticAlgorithm FAlgorithm;
  TLoad FBest;
};

} // namespace

void TOptimizeOptions::AddTo(CLI::App& App) {
  App.add_option("items", Data.FileName,
                 "Table with the columns value and weight, and perhaps capacity, whose "
                 "first row counts")
      ->required()
      ->type_name("ITEMS.csv");
  App.add_option("-c,--capacity", Capacity, "Weight that fits [the table's]")
      ->check(IsWithin(0))
      ->type_name("NUMBER");
  App.add_option("--names", Names, "Column with what the items are called [name or item, if there is one]")
      ->type_name("NAME");
  App.add_option("-p,--population", Population, "Individuals")
      ->check(IsWhole(2, 1'000'000))
      ->type_name("N")
      ->capture_default_str();
  App.add_option("-g,--generations", Generations, "Ends the run after so many generations")
      ->check(IsWhole(1))
      ->type_name("N")
      ->capture_default_str();
  App.add_option("-s,--seconds", Seconds, "Ends the run after so long")
      ->check(IsPositive())
      ->type_name("NUMBER")
      ->capture_default_str();
  App.add_option("--seed", Seed, "Makes the run repeatable [a new one each time, which is told]")
      ->check(IsWhole(0, std::numeric_limits<std::int64_t>::max()))
      ->type_name("N");
  App.add_option("-o,--output", Output, "File for the items that are packed [standard output]")
      ->type_name("FILE");
  App.add_flag("-q,--quiet", Quiet, "Prints the items alone");
  Data.AddOptions(App);
}

int Optimize(const TOptimizeOptions& Options) {
  if (Options.Output != "-") {
    RequireOther(Options.Output, {Options.Data.FileName});
    RequireWritable(Options.Output);
  }
  TDataFile File = Options.Data;
  File.MissingValues = "keep"; // those in columns that count are refused later
  const std::vector<std::string> Names =
      Options.Names.empty() ? std::vector<std::string>{"name", "item"} : std::vector{Options.Names};
  const std::vector<std::string> Columns = {"value", "weight", "capacity"};
  TTable Table = File.Read(Columns, Columns, Names);
  for (const std::string Name : {"value", "weight"}) {
    if (Table.Numbers.IndexOf(Name) < 0) {
      throw EUsageError(fmt::format("{} has no column \"{}\"", Options.Data.Name(), Name));
    }
  }
  if (Table.Numbers.RowCount() == 0) {
    throw EUsageError(Options.Data.Name() + " has no items");
  }
  if (!Options.Names.empty() && Table.Texts.empty()) {
    throw EUsageError(fmt::format("{} has no column \"{}\"", Options.Data.Name(), Options.Names));
  }
  return TOptimize(Options, std::move(Table)).Execute();
}

} // namespace qxevolve
