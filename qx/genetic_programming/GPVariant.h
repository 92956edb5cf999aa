#pragma once

#include <qx/genetic_programming/GPValueNode.h>
#include <qx/platform/Event.h>

#include <string>
#include <typeinfo>

namespace qx {

// What programs over variants are made of.

class TQXGPVariantInstruction;

using TQXGPVariantContext = generics::TQXGPContext<Variant>;
using TQXGPVariantNodeEvent =
    TQXTypedEvent<void(TQXGPVariantInstruction& Sender, generics::TQXGPNode<Variant>& Node,
                       TQXGPVariantContext* Context, Variant& Result),
                  decltype(generics::TQXGPInstruction<Variant>::OnExecute)::TSignature>;

/// An instruction of variant programs.
class TQXGPVariantInstruction : public generics::TQXGPInstruction<Variant> {
public:
  TQXGPVariantNodeEvent OnExecute{TQXGPInstruction::OnExecute};

protected:
  /// A constant's value: written as its text, and read back as that text.
  void LoadValueFromXML(const TXMLInstructionType& Element) override;
  void SaveValueToXML(const TXMLInstructionType& Element) override;
  const std::type_info& PlainClass() const override { return typeid(TQXGPVariantInstruction); }
};

/// The instruction set of variant programs.
class TQXGPVariantInstructions : public TQXGPTypedInstructions<TQXGPVariantInstruction, Variant> {
public:
  using TQXGPTypedInstructions::TQXGPTypedInstructions;
};

/// A node of variant programs. A constant is written into a document as a number and read back as a text.
class TQXGPVariantNode : public TQXGPValueNode<TQXGPVariantNode, generics::TQXGPTreeNode<Variant>> {
public:
  using TQXGPValueNode::TQXGPValueNode;
  static std::string TextOf(const Variant& Value) { return Value.AsText(); }

protected:
  void LoadValueFromXML(const TXMLDnaType& Element) override;
  /// Raises std::invalid_argument for a text that is no number.
  void SaveValueToXML(const TXMLDnaType& Element) const override;
};

} // namespace qx
