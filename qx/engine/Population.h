#pragma once

#include <qx/engine/Individual.h>
#include <qx/platform/Action.h>
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

  /// Replaces the members by one for each child element of `Node`, which reads it, whatever the tag. When
  /// that raises, the former members are back.
  virtual void LoadFromXML(const TXMLNode& Node);
  /// Appends one child element for each member, tagged with its display name (characters that no tag can hold
  /// become "_"), and lets the member write it.
  virtual void SaveToXML(const TXMLNode& Node);

  /// Evaluates the members whose fitness is stale.
  void EvaluateStale() const;

protected:
  /// Replaces the members by those that `AddMembers` adds, in one update. When that raises, the former
  /// members are back.
  void Reload(TAction AddMembers);
  void RequireInsertable() const override;
  void RequireRemovable(const char* Call) const override;
  void Notify(TCollectionItem& Item, TCollectionNotification Action) override;
  void Update(TCollectionItem* Item) override;

private:
  friend class TQXCustomGeneticComponent;

  TQXCustomGeneticComponent* FComponent;
  bool FIsGeneration = true; // only of those does the component hear what happens to their members
};

} // namespace qx
