#include <qx/genetic_programming/QXGenerics.GeneticProgramming.ipp>

namespace qx::generics {

template class TQXGPIndividual<TGAFloat>;
template class TQXGPIndividual<Variant>;
template class TQXGPPopulation<TGAFloat>;
template class TQXGPPopulation<Variant>;
template class TQXCustomGeneticProgramming<TGAFloat>;
template class TQXCustomGeneticProgramming<Variant>;
template class TQXCustomGeneticProgrammingExecutor<TGAFloat>;
template class TQXCustomGeneticProgrammingExecutor<Variant>;

} // namespace qx::generics
