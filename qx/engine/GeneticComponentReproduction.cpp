// The genetic component's reproduction: the schedule of the operators and their probability gates.

#include <qx/engine/GeneticComponent.h>
#include <qx/platform/Random.h>

namespace qx {

bool TQXCustomGeneticComponent::Reproduce(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                          TQXIndividual& Child1) {
  const TUse Use(*this);
  bool Changed = DoReproduce(Parent1, Parent2, Child1);
  OnReproduction(*this, Child1, Changed);
  return Changed;
}

bool TQXCustomGeneticComponent::Reproduce(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                          TQXIndividual& Child1, TQXIndividual& Child2) {
  const TUse Use(*this);
  bool Changed = DoReproduce(Parent1, Parent2, Child1, Child2);
  OnReproduction(*this, Child1, Changed);
  OnReproduction(*this, Child2, Changed);
  return Changed;
}

bool TQXCustomGeneticComponent::DoReproduce(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                            TQXIndividual& Child1) {
  InitializeChild(Parent1, Parent2, Child1);
  return ApplyOperators(Parent1, Parent2, Child1, nullptr);
}

bool TQXCustomGeneticComponent::DoReproduce(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                            TQXIndividual& Child1, TQXIndividual& Child2) {
  InitializeChild(Parent1, Parent2, Child1);
  InitializeChild(Parent1, Parent2, Child2);
  return ApplyOperators(Parent1, Parent2, Child1, &Child2);
}

// Every operator call stands on its own: whatever came before it, it draws.
bool TQXCustomGeneticComponent::ApplyOperators(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                               TQXIndividual& Child1, TQXIndividual* Child2) {
  bool Changed = false;
  if (FSettings.Operations.Contains(goCrossover)) {
    Changed = Child2 == nullptr ? Crossover(Parent1, Parent2, Child1)
                                : Crossover(Parent1, Parent2, Child1, *Child2);
  }
  if (FSettings.Operations.Contains(goMutate)) {
    Changed |= Mutate(Child1);
    if (Child2 != nullptr) {
      Changed |= Mutate(*Child2);
    }
  }
  if (FSettings.Operations.Contains(goInvert)) {
    Changed |= Invert(Child1);
    if (Child2 != nullptr) {
      Changed |= Invert(*Child2);
    }
  }
  return Changed;
}

void TQXCustomGeneticComponent::InitializeChild(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                                TQXIndividual& Child) {
  const TUse Use(*this);
  Child.Assign(Parent1);
  OnInitializeChild(*this, Parent1, Parent2, Child);
}

bool TQXCustomGeneticComponent::Crossover(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                          TQXIndividual& Child1) {
  return GatedCrossover(Parent1, Parent2, Child1, nullptr);
}

bool TQXCustomGeneticComponent::Crossover(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                          TQXIndividual& Child1, TQXIndividual& Child2) {
  return GatedCrossover(Parent1, Parent2, Child1, &Child2);
}

bool TQXCustomGeneticComponent::GatedCrossover(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                               TQXIndividual& Child1, TQXIndividual* Child2) {
  const TUse Use(*this);
  bool Allowed = Random() < FSettings.CrossoverProbability;
  if (Allowed) {
    OnCrossover(*this, Parent1, Parent2, Child1, Allowed);
  }
  if (Allowed) {
    PrepareCrossover(Parent1, Parent2, Child1, Child2);
    Allowed = DoCrossover(Parent1, Parent2, Child1, Child2);
  }
  return Allowed;
}

bool TQXCustomGeneticComponent::Mutate(TQXIndividual& Item) {
  const TUse Use(*this);
  bool Allowed = Random() < FSettings.MutationProbability;
  if (Allowed) {
    OnMutation(*this, Item, Allowed);
  }
  return Allowed && DoMutate(Item);
}

bool TQXCustomGeneticComponent::Invert(TQXIndividual& Item) {
  const TUse Use(*this);
  bool Allowed = Random() < FSettings.InversionProbability;
  if (Allowed) {
    OnInversion(*this, Item, Allowed);
  }
  return Allowed && DoInvert(Item);
}

void TQXCustomGeneticComponent::PrepareCrossover(TQXIndividual& /*Parent1*/, TQXIndividual& /*Parent2*/,
                                                 TQXIndividual& /*Child1*/, TQXIndividual* /*Child2*/) {}

bool TQXCustomGeneticComponent::DoCrossover(TQXIndividual& /*Parent1*/, TQXIndividual& /*Parent2*/,
                                            TQXIndividual& /*Child1*/, TQXIndividual* /*Child2*/) {
  return false;
}

bool TQXCustomGeneticComponent::DoMutate(TQXIndividual& /*Item*/) { return false; }

bool TQXCustomGeneticComponent::DoInvert(TQXIndividual& /*Item*/) { return false; }

} // namespace qx
