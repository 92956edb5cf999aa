#include <qx/genetic_programming/QXGenerics.GeneticProgramming.ipp>

namespace qx::generics {

template class TQXGPIndividual<TGAFloat>;
template class TQXGPIndividual<Variant>;
template class TQXGPPopulation<TGAFloat>;
template class TQXGPPopulation<Variant>;

} // namespace qx::generics
