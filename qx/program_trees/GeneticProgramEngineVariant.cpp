#include <qx/program_trees/QXGenerics.GeneticProgramEngine.ipp>

namespace qx::generics {

template class TQXGPContext<Variant>;
template class TQXGPInstruction<Variant>;
template class TQXGPInstructions<Variant>;
template class TQXGPNode<Variant>;
template class TQXGPTreeNode<Variant>;
template class TQXGPBinaryNode<Variant>;

} // namespace qx::generics
