#include <qx/engine/GeneticComponent.h>
#include <qx/engine/LoadScope.h>
#include <qx/engine/Population.h>

namespace qx {

TQXPopulation::TQXPopulation(TPersistent* Owner, TItemClass<TQXIndividual> ItemClass)
    : TTypedCollection(Owner, ItemClass), FComponent(dynamic_cast<TQXCustomGeneticComponent*>(Owner)) {}

void TQXPopulation::Assign(const TPersistent& Source) {
  if (const auto* Population = SourceAs<TQXPopulation>(Source)) {
    Population->EvaluateStale();
  }
  TTypedCollection::Assign(Source);
}

void TQXPopulation::LoadFromXML(const TXMLNode& Node) {
  Reload([&] {
    for (TXMLNode Child = Node.FirstChild(); Child; Child = Child.NextSibling()) {
      Add().LoadFromXML(Child);
    }
  });
}

void TQXPopulation::Reload(TAction AddMembers) {
  TLoadScope Load(FComponent);
  TUpdateScope Update(*this);
  Load.SetAside(*this);
  AddMembers();
  Update.End();
  Load.Done();
}

void TQXPopulation::SaveToXML(const TXMLNode& Node) {
  for (int I = 0; I < Count(); ++I) { // evaluating a member may add others
    Items(I).SaveToXML(Node.AddChild(XMLTag(Items(I).DisplayName())));
  }
}

void TQXPopulation::EvaluateStale() const {
  for (int I = 0; I < Count(); ++I) {
    static_cast<void>(Items(I).Fitness());
  }
}

void TQXPopulation::RequireInsertable() const {
  if (!FIsGeneration && Count() > 0) {
    throw std::logic_error(
        "The best individual of a run has its place alone: assign it to one of a population");
  }
}

void TQXPopulation::RequireRemovable(const char* Call) const {
  if (FComponent != nullptr) {
    FComponent->RequireNoUse(Call);
  }
}

void TQXPopulation::Notify(TCollectionItem& Item, TCollectionNotification Action) {
  TTypedCollection::Notify(Item, Action);
  if (FComponent != nullptr && FIsGeneration) {
    FComponent->PopulationNotify(static_cast<TQXIndividual&>(Item), Action);
  }
}

void TQXPopulation::Update(TCollectionItem* Item) {
  TTypedCollection::Update(Item);
  if (FComponent != nullptr && FIsGeneration) {
    FComponent->PopulationUpdate(static_cast<TQXIndividual*>(Item));
  }
}

} // namespace qx
