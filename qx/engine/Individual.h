#pragma once

#include <qx/foundation/QXGAConsts.h>
#include <qx/platform/CollectionItem.h>
#include <qx/platform/XML.h>

#include <memory>
#include <string>
#include <string_view>

namespace qx {

class TLoadScope;
class TQXCustomGeneticComponent;
class TQXPopulation;

/// A member of a population: it has a name and a fitness that is evaluated when it is first asked for.
///
/// Every question about fitness goes to the individual's *owner*: the owner of its population, when that is a
/// genetic component. Without such an owner each of them answers 0. A concrete individual adds a genome,
/// calls `Modified` after every change of it, and overrides `Assign`.
class TQXIndividual : public TCollectionItem {
public:
  /// Copies fitness (a stale source is evaluated first), stale flag and name of another individual.
  void Assign(const TPersistent& Source) override;
  /// Adds a copy of this individual to its own population. Raises std::logic_error when it is in none.
  TQXIndividual& Clone() const;

  const std::string& Name() const { return FName; }
  void SetName(std::string_view Value);

  /// The population that holds the individual, or nullptr.
  TQXPopulation* Collection() const;
  /// Moves the individual to another population; see `TCollectionItem::SetCollection`.
  void SetCollection(TQXPopulation& Value);
  /// The component that owns the individual's population, or nullptr.
  TQXCustomGeneticComponent* Owner() const { return FOwner; }

  /// The raw fitness, evaluated by the owner at most once between two changes of the individual.
  TGAFitness Fitness() const {
    if (FNeedFitness) {
      EvaluateFitness();
    }
    return FFitness;
  }
  TGAFitness AdjustedFitness() const;
  /// Computed anew at every read: read it once and keep it.
  TGAFitness WeightedFitness() const;
  TGAFitness NormalizedFitness() const;
  /// The name is spelled so.
  TGAFitness NormalizedWeigthedFitness() const;

  /// Evaluates the raw fitness now. Without an owner it becomes 0 and stays stale.
  void EvaluateFitness() const;
  /// Whether the next read of `Fitness` evaluates it.
  bool NeedFitness() const { return FNeedFitness; }
  /// Marks the fitness as stale and tells the collection nothing.
  void MarkStale() { FNeedFitness = true; }
  /// Marks the fitness as stale and reports a change to the collection.
  void Modified();

  /// Read and write the genome inside an element. Nothing here; a concrete individual overrides them.
  virtual void LoadFromXML(const TXMLNode& Node);
  virtual void SaveToXML(const TXMLNode& Node);

protected:
  /// While it lives, the component frees no individual.
  class TUseScope {
  public:
    explicit TUseScope(const TQXIndividual& Individual);
    TUseScope(const TUseScope&) = delete;
    TUseScope& operator=(const TUseScope&) = delete;
    ~TUseScope() { *FCount -= 1; }

  private:
    int FNobodys = 0;
    int* FCount;
  };

  void DefineProperties(TFiler& Filer) override;
  /// Adds the fitness, and whether it is stale.
  void DefineState(TFiler& Filer) override;
  void SetNeedFitness(bool Value) { FNeedFitness = Value; }
  /// Evaluates an individual that is to be copied, if it is stale. That may fail, before anything has
  /// changed.
  void EvaluateSource(const TQXIndividual& Source) const;
  /// What `Assign` does with an individual of whatever class.
  void AssignIndividual(const TQXIndividual& Source);
  /// The name, or the class name when it is empty.
  std::string GetDisplayName() const override;
  void CollectionChanged(TOwnedCollection* Value) override;

private:
  friend class TLoadScope;

  TQXCustomGeneticComponent* FOwner = nullptr;
  mutable TGAFitness FFitness = 0;
  mutable bool FNeedFitness = true;
  std::string FName;
};

} // namespace qx
