#pragma once

#include <qx/program_trees/QXGenerics.GeneticProgramEngine.h>

#include <string_view>

namespace qx {

/// Adds an ephemeral random constant (Koza 1992): a constant whose nodes in new programs, and in new subtrees
/// of mutation, each draw a value of their own, uniform between two bounds: one real draw. Copies keep the
/// value. Raises EGPException when the name is taken and std::invalid_argument for bounds that are not
/// numbers or no interval; then nothing is added.
generics::TQXGPInstruction<TGAFloat>& AddEphemeralConstant(generics::TQXGPInstructions<TGAFloat>& Set,
                                                           std::string_view Name, double Low, double High);
generics::TQXGPInstruction<Variant>& AddEphemeralConstant(generics::TQXGPInstructions<Variant>& Set,
                                                          std::string_view Name, double Low, double High);

/// A handler for `OnConstantMutation`: a Gaussian step from the present value.
///
///     gp.SetMutateConstantWeight(25);
///     gp.OnConstantMutation = qx::TGaussianConstantMutation(0.1);
///
/// Two real draws for a step. A variant constant that is no number raises std::invalid_argument.
class TGaussianConstantMutation {
public:
  /// @param Deviation  standard deviation of the step, in the unit of the constants. Raises
  ///                   std::invalid_argument when it is negative or no number.
  explicit TGaussianConstantMutation(double Deviation);

  template <class TSender>
  void operator()(TSender& /*Sender*/, generics::TQXGPNode<TGAFloat>& Node) const {
    Node.SetValue(Node.Value() + Step());
  }
  template <class TSender>
  void operator()(TSender& /*Sender*/, generics::TQXGPNode<Variant>& Node) const {
    Node.SetValue(Variant(Node.Value().AsReal() + Step()));
  }

private:
  double Step() const;

  double FDeviation;
};

} // namespace qx
