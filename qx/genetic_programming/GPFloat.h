#pragma once

#include <qx/genetic_programming/GPValueNode.h>
#include <qx/platform/Event.h>

#include <string>
#include <typeinfo>

namespace qx {

// What programs over floating-point numbers are made of. A number has fifteen significant digits as text: for
// people with the decimal point of the global `std::locale`, in documents always with a point.

class TQXGPFloatInstruction;

using TQXGPFloatContext = generics::TQXGPContext<TGAFloat>;
using TQXGPFloatNodeEvent =
    TQXTypedEvent<void(TQXGPFloatInstruction& Sender, generics::TQXGPNode<TGAFloat>& Node,
                       TQXGPFloatContext* Context, TGAFloat& Result),
                  decltype(generics::TQXGPInstruction<TGAFloat>::OnExecute)::TSignature>;

/// An instruction of floating-point programs.
class TQXGPFloatInstruction : public generics::TQXGPInstruction<TGAFloat> {
public:
  TQXGPFloatNodeEvent OnExecute{TQXGPInstruction::OnExecute};

protected:
  /// A constant's value; text that is no number leaves the value as it is.
  void LoadValueFromXML(const TXMLInstructionType& Element) override;
  void SaveValueToXML(const TXMLInstructionType& Element) override;
  const std::type_info& PlainClass() const override { return typeid(TQXGPFloatInstruction); }
};

/// The instruction set of floating-point programs.
class TQXGPFloatInstructions : public TQXGPTypedInstructions<TQXGPFloatInstruction, TGAFloat> {
public:
  using TQXGPTypedInstructions::TQXGPTypedInstructions;
};

/// A floating-point node of a family; `TQXGPFloatNode` and `TQXGPBinaryFloatNode` are its two kinds.
template <class TSelf, class TFamily>
class TQXGPFloatNodeOf : public TQXGPValueNode<TSelf, TFamily> {
public:
  using TQXGPValueNode<TSelf, TFamily>::TQXGPValueNode;
  static std::string TextOf(TGAFloat Value);

protected:
  /// Raises std::invalid_argument for text that is no number.
  void LoadValueFromXML(const TXMLDnaType& Element) override;
  void SaveValueToXML(const TXMLDnaType& Element) const override;
};

class TQXGPFloatNode : public TQXGPFloatNodeOf<TQXGPFloatNode, generics::TQXGPTreeNode<TGAFloat>> {
public:
  using TQXGPFloatNodeOf::TQXGPFloatNodeOf;
};

class TQXGPBinaryFloatNode
    : public TQXGPFloatNodeOf<TQXGPBinaryFloatNode, generics::TQXGPBinaryNode<TGAFloat>> {
public:
  using TQXGPFloatNodeOf::TQXGPFloatNodeOf;
};

extern template class TQXGPFloatNodeOf<TQXGPFloatNode, generics::TQXGPTreeNode<TGAFloat>>;
extern template class TQXGPFloatNodeOf<TQXGPBinaryFloatNode, generics::TQXGPBinaryNode<TGAFloat>>;

} // namespace qx
