#pragma once

#include <qx/engine/Population.h>
#include <qx/genetic_algorithm/GAIndividual.h>

namespace qx {

class TQXCustomGeneticAlgorithm;

/// A population of bit chromosomes.
class TQXGAPopulation : public TTypedCollection<TQXGAIndividual, TQXPopulation> {
public:
  explicit TQXGAPopulation(TPersistent* Owner,
                           TQXGAIndividualClass ItemClass = ItemClassOf<TQXGAIndividual>());

  /// The owner when it is a genetic algorithm, else nullptr.
  TQXCustomGeneticAlgorithm* Owner() const { return FAlgorithm; }

  /// Read and write the element "Chromosomes"; any other one as every population does.
  void LoadFromXML(const TXMLNode& Node) override;
  void SaveToXML(const TXMLNode& Node) override;
  /// Replaces the members by one for each chromosome. When that raises, the former members are back.
  virtual void LoadFromXML(const TXMLChromosomes& Chromosomes);
  virtual void SaveToXML(const TXMLChromosomes& Chromosomes);

private:
  TQXCustomGeneticAlgorithm* FAlgorithm;
};

} // namespace qx
