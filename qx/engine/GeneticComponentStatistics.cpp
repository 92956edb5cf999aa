// The genetic component's fitness: evaluation, statistics and what is derived from them.

#include <qx/engine/GeneticComponent.h>
#include <qx/platform/StackGuard.h>

#include <limits>

namespace qx {

TGAFitness TQXCustomGeneticComponent::AvgFitness() const {
  return FFitnesses.Average(FPopulation != nullptr ? FPopulation->Count() : 0);
}

TGAFitness TQXCustomGeneticComponent::AvgWeightedFitness() const {
  return FWeightedFitnesses.Average(FPopulation != nullptr ? FPopulation->Count() : 0);
}

TGAFitness TQXCustomGeneticComponent::Diversity() const {
  return FFitnesses.Max == 0 ? std::numeric_limits<TGAFitness>::infinity() : AvgFitness() / FFitnesses.Max;
}

void TQXCustomGeneticComponent::EvaluateFitness() {
  const TUse Running(FRunning);
  const TUse Use(*this);
  FStatisticsDue = false; // a handler that changes the fitness method makes them due again
  try {
    if (Population().Count() == 0) {
      FFitnesses = {};
      FWeightedFitnesses = {};
    } else {
      DoCalculateFitnessStatistics();
      RememberBest();
      DoCalculateWeightedFitnessStatistics();
      DoSelectionPreparation();
    }
  } catch (...) {
    FStatisticsDue = true;
    throw;
  }
}

TQXIndividual* TQXCustomGeneticComponent::BestEver() {
  return FBestEver != nullptr && FBestEver->Count() > 0 ? &FBestEver->Items(0) : nullptr;
}

const TQXIndividual* TQXCustomGeneticComponent::BestEver() const {
  return const_cast<TQXCustomGeneticComponent*>(this)->BestEver();
}

void TQXCustomGeneticComponent::RememberBest() {
  if (FFittestIndividual == nullptr || !OnEvaluateFitness) {
    return;
  }
  TQXIndividual* const Best = BestEver();
  if (Best == nullptr || CompareFitness(*FFittestIndividual, *Best, true) < 0) {
    StoreBest(*FFittestIndividual);
  }
}

void TQXCustomGeneticComponent::StoreBest(const TQXIndividual& Best) {
  if (BestEver() == nullptr) {
    FBestEver = CreatePopulation(Population().ItemClass());
    FBestEver->FIsGeneration = false;
    FBestEver->Add();
  }
  BestEver()->Assign(Best);
}

TGAFitness TQXCustomGeneticComponent::EvaluateFitness(TQXIndividual& Item, bool Weighted) {
  RequireStack(); // a handler may ask for the fitness in turn
  const TUse Use(*this);
  if (Weighted) {
    return DoEvaluateWeightedFitness(Item);
  }
  TGAFitness Fitness = 0;
  OnEvaluateFitness(*this, Item, Fitness);
  return Fitness;
}

TGAFitness TQXCustomGeneticComponent::DoEvaluateWeightedFitness(TQXIndividual& Item) {
  if (!OnEvaluateWeightedFitness) {
    return Item.Fitness();
  }
  TGAFitness Fitness = 0;
  OnEvaluateWeightedFitness(*this, Item, Fitness);
  return Fitness;
}

// Handlers may add individuals while these passes run, so they go by index.
void TQXCustomGeneticComponent::DoCalculateFitnessStatistics() {
  TFitnessStatistics Statistics;
  FFittestIndividual = nullptr;
  for (int I = 0; I < Population().Count(); ++I) {
    TQXIndividual& Individual = Population()[I];
    Statistics.Add(Individual.Fitness());
    TQXIndividual* const Better =
        FFittestIndividual == nullptr ? &Individual : &Fittest(*FFittestIndividual, Individual, true);
    if (Better != FFittestIndividual) { // seldom; and a write every time would hold up the next comparison
      FFittestIndividual = Better;
    }
  }
  FFitnesses = Statistics;
}

void TQXCustomGeneticComponent::DoCalculateWeightedFitnessStatistics() {
  TFitnessStatistics Statistics;
  for (int I = 0; I < Population().Count(); ++I) {
    Statistics.Add(Population()[I].WeightedFitness());
  }
  FWeightedFitnesses = Statistics;
}

TQXIndividual& TQXCustomGeneticComponent::Fittest(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                                  bool UsePureFitness) {
  return CompareFitness(Parent1, Parent2, UsePureFitness) > 0 ? Parent2 : Parent1;
}

TGAFitness TQXCustomGeneticComponent::GetAdjustedFitness(TGAFitness Value) const {
  return Maximizing() ? 1 / (FFitnesses.Max - Value + 1) : 1 / (1 + Value);
}

TGAFitness TQXCustomGeneticComponent::GetNormalizedFitness(TGAFitness Value) const {
  return FFitnesses.Normalized(Value);
}

TGAFitness TQXCustomGeneticComponent::GetNormalizedWeightedFitness(TGAFitness Value) const {
  return FWeightedFitnesses.Normalized(Value);
}

TGAFitness TQXCustomGeneticComponent::UnfitFitness() {
  constexpr TGAFitness LowestOfMaximizing = 1.5e-45;
  constexpr TGAFitness HighestOfMinimizing = 3.4e+38;
  return Maximizing() ? LowestOfMaximizing : HighestOfMinimizing;
}

} // namespace qx
