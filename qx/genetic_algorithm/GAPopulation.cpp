#include <qx/genetic_algorithm/GAPopulation.h>
#include <qx/genetic_algorithm/GeneticAlgorithm.h>

namespace qx {

TQXGAPopulation::TQXGAPopulation(TPersistent* Owner, TQXGAIndividualClass ItemClass)
    : TTypedCollection(Owner, ItemClass), FAlgorithm(dynamic_cast<TQXCustomGeneticAlgorithm*>(Owner)) {}

} // namespace qx
