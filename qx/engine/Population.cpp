#include <qx/engine/Population.h>

#include <qx/engine/GeneticComponent.h>

namespace qx {

TQXPopulation::TQXPopulation(TPersistent* Owner, TItemClass<TQXIndividual> ItemClass)
    : TTypedCollection(Owner, ItemClass), FComponent(dynamic_cast<TQXCustomGeneticComponent*>(Owner)) {}

void TQXPopulation::Assign(const TPersistent& Source) {
  if (const auto* Population = SourceAs<TQXPopulation>(Source)) {
    for (const TQXIndividual& Individual : *Population) {
      static_cast<void>(Individual.Fitness());
    }
  }
  TTypedCollection::Assign(Source);
}

void TQXPopulation::Notify(TCollectionItem& Item, TCollectionNotification Action) {
  TTypedCollection::Notify(Item, Action);
  if (FComponent != nullptr) {
    FComponent->PopulationNotify(static_cast<TQXIndividual&>(Item), Action);
  }
}

void TQXPopulation::Update(TCollectionItem* Item) {
  TTypedCollection::Update(Item);
  if (FComponent != nullptr) {
    FComponent->PopulationUpdate(static_cast<TQXIndividual*>(Item));
  }
}

} // namespace qx
