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

private:
  TQXCustomGeneticAlgorithm* FAlgorithm;
};

} // namespace qx
