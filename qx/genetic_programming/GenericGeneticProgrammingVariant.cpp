#include <qx/genetic_programming/QXGenerics.GeneticProgramming.ipp>

namespace qx::generics {

template class TQXGPIndividual<Variant>;
template class TQXGPPopulation<Variant>;
template class TQXCustomGeneticProgramming<Variant>;
template class TQXCustomGeneticProgrammingExecutor<Variant>;

} // namespace qx::generics
