#pragma once

#include <qx/engine/TypedGeneticComponent.h>
#include <qx/genetic_algorithm/GAGenes.h>
#include <qx/genetic_algorithm/GAPopulation.h>
#include <qx/genetic_algorithm/QXGeneticAlgorithmXML.h>

#include <memory>

namespace qx {

class TQXCustomGeneticAlgorithm;

// The genetic algorithm's own events. `Sender` is the component that fires.

using TQXGAIndividualEvent = TQXEvent<void(TQXCustomGeneticAlgorithm& Sender, TQXGAIndividual& Item)>;
using TQXGeneEvent = TQXEvent<void(TQXCustomGeneticAlgorithm& Sender, TQXGAGene& Item)>;
/// The handler may move the cut, and clears the flag to veto the crossover.
using TQXGACrossoverEvent =
    TQXEvent<void(TQXCustomGeneticAlgorithm& Sender, TQXGAIndividual& Parent1, TQXGAIndividual& Parent2,
                  TQXGAIndividual& Child, int& CrossoverBit, bool& DoMutation)>;

/// A genetic algorithm over bit chromosomes of one length, whose typed genes the host declares.
///
///     qx::TQXGeneticAlgorithm ga;
///     qx::TQXGAGene& x = ga.Genes().Add();
///     x.SetGeneType(qx::gtInteger);
///     x.SetSize(8);
///     ga.OnEvaluateFitness = [&](auto&, auto& item, double& fitness) { fitness =
///     x.GeneAsInteger(item.Bits()); }; ga.Evolve(50);
class TQXCustomGeneticAlgorithm
    : public TQXTypedGeneticComponent<TQXCustomGeneticComponent, TQXCustomGeneticAlgorithm, TQXGAIndividual,
                                      TQXGAPopulation> {
public:
  explicit TQXCustomGeneticAlgorithm(TComponent* Owner = nullptr);
  /// Frees the individuals first, which may look at the genotype to the last.
  ~TQXCustomGeneticAlgorithm() override;

  /// The genotype.
  TQXGAGenes& Genes();
  const TQXGAGenes& Genes() const { return const_cast<TQXCustomGeneticAlgorithm*>(this)->Genes(); }
  /// Copies the given genes into the genotype; `GeneSize` follows when that became longer.
  void SetGenes(const TQXGAGenes& Value);
  /// Length in bits of every chromosome of the population. It follows the genotype when that grows, and never
  /// shrinks with it; bits behind the genes take part in crossover and mutation. A new size resizes every
  /// chromosome. Raises std::out_of_range for a negative one.
  int GeneSize() const { return FGeneSize; }
  void SetGeneSize(int Value);
  /// Where a crossover may cut. Default cmGeneBoundary.
  TGACrossoverMethod CrossoverMethod() const { return FCrossoverMethod; }
  void SetCrossoverMethod(TGACrossoverMethod Value);

  void Assign(const TPersistent& Source) override;

  /// Asks `OnMutation`, then mutates. There is no probability gate and no draw here: the mutation probability
  /// counts for every bit.
  bool Mutate(TQXIndividual& Item) override;

  using TQXTypedGeneticComponent::LoadFromXML;
  using TQXTypedGeneticComponent::SaveToXML;
  /// The settings of every genetic component, those of reproduction, and the domain.
  virtual void LoadFromXML(const TXMLGeneticAlgorithm& Document);
  virtual void SaveToXML(const TXMLGeneticAlgorithm& Document);
  /// The genotype and the population, and the fittest individual, which is not read. Loading initializes the
  /// component, if need be, without random individuals; both generations become the population that is
  /// loaded, and are evaluated when there is a fitness handler. `Generation` stays.
  virtual void LoadFromXML(const TXMLGADomainType& Domain);
  virtual void SaveToXML(const TXMLGADomainType& Domain);
  void SaveToStream(std::ostream& Stream) override;
  void LoadFromStream(std::istream& Stream) override;
  void LoadFromFile(const std::string& FileName) override;

  /// Fires for each child just before its chromosome is crossed. It is a slot of its own beside the engine's,
  /// which a reference to `TQXCustomGeneticComponent` reaches and which fires once a pair.
  TQXGACrossoverEvent OnCrossover;

protected:
  friend class TQXGAGenes;
  friend class TQXGAPopulation;

  /// Makes a `TQXGAPopulation` of `TQXGAIndividual` items.
  std::unique_ptr<TQXPopulation> CreatePopulation(TItemClass<TQXIndividual> ItemClass) override;
  /// Makes the genotype, owned by this component.
  virtual std::unique_ptr<TQXGAGenes> CreateGenes(TItemClass<TQXGAGene> ItemClass);

  void PopulationNotify(TQXIndividual& Item, TCollectionNotification Action) override;
  /// Told when a gene comes into the genotype or is about to leave it.
  virtual void GeneNotify(TQXGAGene& Item, TCollectionNotification Action);
  /// Told when a gene, or with nullptr the genotype as a whole, has changed.
  virtual void GeneUpdate(TQXGAGene* Item);
  /// Told when a gene's size has changed: lets `GeneSize` follow.
  virtual void GenesSizeChange();

  /// Randomizes every chromosome. While the retries last (one pool of `InitialDuplicatesRetries` for all of
  /// them), a chromosome that another one has already is drawn again. Returns how many were found unique.
  int DoInitialize() override;
  /// Draws a cut by `CrossoverMethod` and crosses the chromosomes there. Raises std::logic_error when a gene
  /// boundary is asked for and there is no gene, or a single one of size 0.
  bool DoCrossover(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                   TQXIndividual* Child2) override;
  bool DoMutate(TQXIndividual& Item) override;
  bool DoInvert(TQXIndividual& Item) override;

  void DefineProperties(TFiler& Filer) override;
  /// Adds the offsets, which hosts may set and which the first gene keeps from genes that are gone.
  void DefineState(TFiler& Filer) override;
  void RequireRoomFor(int Individuals) const override;
  void Remember(TLoadScope& Load) override;

private:
  // Raises std::length_error when a document asks for more chromosomes or bits than a load may make.
  void RequireRoom(int Chromosomes, std::int64_t Bits) const;
  void RememberChromosomes(TLoadScope& Load);
  void ResizeChromosomes(int Size);
  int DrawCrossoverBit(int Length);
  int DrawGeneBoundary(int Length);

  std::unique_ptr<TQXGAGenes> FGenes;
  int FGeneSize = 0;
  TGACrossoverMethod FCrossoverMethod = cmGeneBoundary;
  bool FChromosomesRemembered = false; // by the load that is under way
};

/// The genetic algorithm that a host places and configures.
class TQXGeneticAlgorithm : public TQXTypedGeneticComponent<TQXCustomGeneticAlgorithm, TQXGeneticAlgorithm,
                                                            TQXGAIndividual, TQXGAPopulation> {
public:
  explicit TQXGeneticAlgorithm(TComponent* Owner = nullptr) : TQXTypedGeneticComponent(Owner) {}

  /// See `TQXCustomGeneticAlgorithm::OnCrossover`.
  TQXTypedEvent<void(TQXGeneticAlgorithm&, TQXGAIndividual&, TQXGAIndividual&, TQXGAIndividual&, int&, bool&),
                TQXGACrossoverEvent::TSignature>
      OnCrossover{TQXCustomGeneticAlgorithm::OnCrossover};
};

using TQXGAFitnessEvent = TQXCustomGeneticAlgorithm::TFitnessEvent;
using TQXGAParentChildEvent = TQXCustomGeneticAlgorithm::TParentChildEvent;
using TQXGAMutationEvent = TQXCustomGeneticAlgorithm::TMutationEvent;
using TQXGASelectionEvent = TQXCustomGeneticAlgorithm::TSelectionEvent;

} // namespace qx
