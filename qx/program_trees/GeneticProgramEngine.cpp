#include <qx/program_trees/QXGenerics.GeneticProgramEngine.ipp>

namespace qx::generics {

template class TQXGPContext<TGAFloat>;
template class TQXGPContext<Variant>;
template class TQXGPInstruction<TGAFloat>;
template class TQXGPInstruction<Variant>;
template class TQXGPInstructions<TGAFloat>;
template class TQXGPInstructions<Variant>;
template class TQXGPNode<TGAFloat>;
template class TQXGPNode<Variant>;
template class TQXGPTreeNode<TGAFloat>;
template class TQXGPTreeNode<Variant>;
template class TQXGPBinaryNode<TGAFloat>;
template class TQXGPBinaryNode<Variant>;

} // namespace qx::generics
