// Packs a knapsack (0-1 knapsack problem; instance of 15 items after Kreher and Stinson): which items of
// given profit and weight are the most profitable ones that do not exceed the capacity? One boolean gene an
// item.
//
// Usage: knapsack [--seed N] [--load FILE] [--save FILE]

#include "../RunOptions.h"
#include <qx/genetic_algorithm/QXGeneticAlgorithm.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

struct TItem {
  int Profit;
  int Weight;
};

constexpr std::array<TItem, 15> Items = {{{135, 70},
                                          {139, 73},
                                          {149, 77},
                                          {150, 80},
                                          {156, 82},
                                          {163, 87},
                                          {173, 90},
                                          {184, 94},
                                          {192, 98},
                                          {201, 106},
                                          {210, 110},
                                          {214, 113},
                                          {221, 115},
                                          {229, 118},
                                          {240, 120}}};
constexpr int Capacity = 750;
constexpr int Optimum = 1458;

TItem Load(const qx::TQXGAGenes& Genes, const qx::TQXGABits& Bits) {
  TItem Sum{0, 0};
  for (const qx::TQXGAGene& Gene : Genes) {
    if (Gene.GeneAsBoolean(Bits)) {
      const TItem& Item = Items[static_cast<std::size_t>(Gene.Index())];
      Sum = {Sum.Profit + Item.Profit, Sum.Weight + Item.Weight};
    }
  }
  return Sum;
}

int Run(const TRunOptions& Options) {
  qx::SeedRandom(Options.Seed);

  qx::TQXGeneticAlgorithm ga;
  for (std::size_t I = 0; I < Items.size(); ++I) {
    qx::TQXGAGene& Gene = ga.Genes().Add();
    Gene.SetName("item" + std::to_string(I + 1));
    Gene.SetGeneType(qx::gtBoolean);
    Gene.SetSize(1);
  }
  ga.SetInitialPopulation(600);
  ga.SetFitnessMethod(qx::fmMaximize);
  ga.SetSelectionMethod(qx::smTournament);
  ga.SetMutationProbability(0.05);
  // What is too heavy loses more profit than it could have gained: the excess counts ten times.
  ga.OnEvaluateFitness = [&](auto&, auto& Item, double& Fitness) {
    const TItem Sum = Load(ga.Genes(), Item.Bits());
    Fitness = Sum.Weight <= Capacity ? Sum.Profit : Capacity - 10.0 * (Sum.Weight - Capacity);
  };
  ga.OnEvolve = [&](auto& Sender) {
    if (Sender.Generation() % 20 == 0) {
      std::printf("generation %4d   best profit %4.0f   population mean %6.1f\n", Sender.Generation(),
                  Sender.MaxFitness(), Sender.AvgFitness());
      std::fflush(stdout);
    }
  };
  if (!Options.Load.empty()) {
    ga.LoadFromFile(Options.Load);
  }
  ga.SetUseFitnessCutoff(true);
  ga.SetFitnessCutoff(Optimum);
  const int Generations = ga.Evolve(400);

  const qx::TQXGABits& Best = ga.BestEver()->Bits();
  const TItem Sum = Load(ga.Genes(), Best);
  std::printf("\nKnapsack: items");
  for (const qx::TQXGAGene& Gene : ga.Genes()) {
    if (Gene.GeneAsBoolean(Best)) {
      std::printf(" %d", Gene.Index() + 1);
    }
  }
  std::printf("\nProfit %d (optimum %d), weight %d of %d, after %d generations\n", Sum.Profit, Optimum,
              Sum.Weight, Capacity, Generations);
  if (!Options.Save.empty()) {
    ga.SaveToFile(Options.Save);
    std::printf("Saved generation %d to %s\n", ga.Generation(), Options.Save.c_str());
  }
  return Sum.Weight <= Capacity ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int Count, char** Arguments) { return RunExample(Count, Arguments, Run, LoadsAndSavesFile); }
