#pragma once

// What the examples of genetic programming share: the settings that the literature uses most, and a progress
// line.

#include <qx/engine/QXGeneticBase.h>
#include <qx/genetic_programming/QXGeneticProgramming.h>

#include <cstdio>

/// Settings after Koza 1992: ramped half-and-half of six levels, tournaments of seven, crossover alone.
/// Duplicates among the initial programs stay: replacing them lets the programs that follow grow, and of
/// small ones there are not enough.
template <class TProgramming>
void SetUp(TProgramming& gp, int Population) {
  gp.SetInitialPopulation(Population);
  gp.SetInitializationMethod(qx::imRampedHalfAndHalf);
  gp.SetInitializationDepth(6);
  gp.SetInitialDuplicatesRetries(0);
  gp.SetSelectionMethod(qx::smTournament);
  gp.SetTournamentField(7);
  gp.SetCrossoverProbability(0.9);
  gp.SetOperations({qx::goCrossover});
}

/// Prints a line for every so many generations, and lets checkpoints be written.
template <class TProgramming>
void ShowProgress(TProgramming& gp, int Every, qx::TCheckpoints* Checkpoints = nullptr) {
  gp.OnEvolve = [=](auto& Sender) {
    if (Checkpoints != nullptr) {
      Checkpoints->Update(Sender);
    }
    if (Sender.Generation() % Every == 0 || Sender.IsFinished()) {
      std::printf("generation %4d   best error %-12.6g mean size %.1f\n", Sender.Generation(),
                  Sender.MinFitness(), static_cast<double>(Sender.AvgProgramSize()));
      std::fflush(stdout);
    }
  };
}
