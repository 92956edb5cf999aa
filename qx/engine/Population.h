#pragma once

#include <qx/engine/Individual.h>
#include <qx/platform/Collection.h>

namespace qx {

/// An owned, ordered collection of individuals of one class. What happens to its members reaches the genetic
/// component that owns it.
class TQXPopulation : public TTypedCollection<TQXIndividual, TOwnedCollection> {
public:
  /// @param Owner  the genetic component that the population belongs to; any other object, or nullptr, makes
  /// a
  ///               population whose members have no fitness.
  explicit TQXPopulation(TPersistent* Owner,
                         TItemClass<TQXIndividual> ItemClass = ItemClassOf<TQXIndividual>());

  /// The owner when it is a genetic component, else nullptr.
  TQXCustomGeneticComponent* Owner() const { return FComponent; }

  /// Members of the source that are stale are evaluated before the first own member goes, so that a fitness
  /// handler that raises changes nothing here.
  void Assign(const TPersistent& Source) override;

  /// Evaluates the members whose fitness is stale.
  void EvaluateStale() const;

protected:
  void Notify(TCollectionItem& Item, TCollectionNotification Action) override;
  void Update(TCollectionItem* Item) override;

private:
  TQXCustomGeneticComponent* FComponent;
};

} // namespace qx
