#pragma once

#include <qx/engine/QXGeneticBase.h>

#include <string>

namespace qx::tests {

/// A genetic component whose individuals are bare: fitness is what the test says by name. Its operators write
/// down that they were called, and report a change or not as told. Protected steps are open.
class TTestComponent : public TQXCustomGeneticComponent {
public:
  using TQXCustomGeneticComponent::CreatePopulation;
  using TQXCustomGeneticComponent::DoCalculateFitnessStatistics;
  using TQXCustomGeneticComponent::DoCrossover;
  using TQXCustomGeneticComponent::DoEvaluateWeightedFitness;
  using TQXCustomGeneticComponent::DoEvolve;
  using TQXCustomGeneticComponent::DoEvolveOneStep;
  using TQXCustomGeneticComponent::DoInitialize;
  using TQXCustomGeneticComponent::DoInvert;
  using TQXCustomGeneticComponent::DoMutate;
  using TQXCustomGeneticComponent::DoParallelEvolveOneStep;
  using TQXCustomGeneticComponent::DoReproduce;
  using TQXCustomGeneticComponent::DoSelectParent;
  using TQXCustomGeneticComponent::DoStartEvolve;
  using TQXCustomGeneticComponent::PopulationUpdate;
  using TQXCustomGeneticComponent::TQXCustomGeneticComponent;

  /// Makes individuals of those fitnesses: each is named by its number, which the handler reads.
  void Fill(std::initializer_list<double> Fitnesses) {
    for (const double Fitness : Fitnesses) {
      Population().Add().SetName(std::to_string(Fitness));
    }
    OnEvaluateFitness = [](auto&, TQXIndividual& Item, double& Fitness) { Fitness = std::stod(Item.Name()); };
  }

  /// Fills, evaluates, and copies the population into the previous generation, drawing nothing.
  void Start(std::initializer_list<double> Fitnesses) {
    Population().Clear();
    Fill(Fitnesses);
    SetInitialPopulation(0);
    Initialize();
    Log.clear();
  }

  std::string Log;
  bool Changes = false;

protected:
  int DoInitialize() override {
    Log += "initialize ";
    return 0;
  }
  bool DoCrossover(TQXIndividual&, TQXIndividual&, TQXIndividual&, TQXIndividual* Child2) override {
    Log += Child2 == nullptr ? "cross1 " : "cross2 ";
    return Changes;
  }
  bool DoMutate(TQXIndividual&) override {
    Log += "mutate ";
    return Changes;
  }
  bool DoInvert(TQXIndividual&) override {
    Log += "invert ";
    return Changes;
  }
};

} // namespace qx::tests
