#include <qx/program_trees/QXGenerics.GeneticProgramEngine.ipp>

namespace qx::generics {

template class TQXGPContext<TGAFloat>;
template class TQXGPInstruction<TGAFloat>;
template class TQXGPInstructions<TGAFloat>;
template class TQXGPNode<TGAFloat>;
template class TQXGPTreeNode<TGAFloat>;
template class TQXGPBinaryNode<TGAFloat>;

} // namespace qx::generics
