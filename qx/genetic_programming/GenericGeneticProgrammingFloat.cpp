#include <qx/genetic_programming/QXGenerics.GeneticProgramming.ipp>

namespace qx::generics {

template class TQXGPIndividual<TGAFloat>;
template class TQXGPPopulation<TGAFloat>;
template class TQXCustomGeneticProgramming<TGAFloat>;
template class TQXCustomGeneticProgrammingExecutor<TGAFloat>;

} // namespace qx::generics
