#pragma once

#include <qx/engine/GeneticComponent.h>
#include <qx/platform/Event.h>

namespace qx {

/// Narrows a genetic component to its own individual and population classes: populations, the fittest
/// individual and every event are declared anew with the derived types, so that a host and its handlers never
/// cast. `TSelf` is what handlers get as their sender: the class that derives from this one.
template <class TBase, class TSelf, class TIndividual, class TPopulation>
class TQXTypedGeneticComponent : public TBase {
  using TEngine = TQXCustomGeneticComponent;
  template <class TBaseEvent, class... TTyped>
  using TTypedEvent = TQXTypedEvent<void(TTyped...), typename TBaseEvent::TSignature>;

public:
  explicit TQXTypedGeneticComponent(TComponent* Owner = nullptr) : TBase(Owner) {}

  TPopulation& Population() { return static_cast<TPopulation&>(TEngine::Population()); }
  TPopulation* PreviousGeneration() { return static_cast<TPopulation*>(TEngine::PreviousGeneration()); }
  TIndividual* FittestIndividual() { return static_cast<TIndividual*>(TEngine::FittestIndividual()); }
  TIndividual* BestEver() { return static_cast<TIndividual*>(TEngine::BestEver()); }

  const TPopulation& Population() const { return static_cast<const TPopulation&>(TEngine::Population()); }
  const TPopulation* PreviousGeneration() const {
    return static_cast<const TPopulation*>(TEngine::PreviousGeneration());
  }
  const TIndividual* FittestIndividual() const {
    return static_cast<const TIndividual*>(TEngine::FittestIndividual());
  }
  const TIndividual* BestEver() const { return static_cast<const TIndividual*>(TEngine::BestEver()); }

  using TFitnessEvent = TTypedEvent<TQXFitnessEvent, TSelf&, TIndividual&, TGAFitness&>;
  using TParentChildEvent =
      TTypedEvent<TQXParentChildEvent, TSelf&, TIndividual&, TIndividual&, TIndividual&>;
  using TMutationEvent = TTypedEvent<TQXMutationEvent, TSelf&, TIndividual&, bool&>;
  using TSelectionEvent = TTypedEvent<TQXSelectionEvent, TSelf&, TPopulation&, TIndividual*&>;
  using TCrossoverEvent =
      TTypedEvent<TQXCrossoverEvent, TSelf&, TIndividual&, TIndividual&, TIndividual&, bool&>;

  TTypedEvent<TQXInitializationEvent, TSelf&, bool&> OnInitialization{TEngine::OnInitialization};
  TFitnessEvent OnEvaluateFitness{TEngine::OnEvaluateFitness};
  TFitnessEvent OnEvaluateWeightedFitness{TEngine::OnEvaluateWeightedFitness};
  TSelectionEvent OnSelection{TEngine::OnSelection};
  TParentChildEvent OnInitializeChild{TEngine::OnInitializeChild};
  TCrossoverEvent OnCrossover{TEngine::OnCrossover};
  TMutationEvent OnMutation{TEngine::OnMutation};
  TMutationEvent OnInversion{TEngine::OnInversion};
  TMutationEvent OnReproduction{TEngine::OnReproduction};
  TTypedEvent<TQXNotifyEvent, TSelf&> OnEvolve{TEngine::OnEvolve};
};

} // namespace qx
