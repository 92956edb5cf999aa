#include <qx/genetic_programming/GPVariant.h>
#include <qx/platform/Numbers.h>
#include <qx/program_trees/QXGPDomainXML.h>

namespace qx {

void TQXGPVariantInstruction::LoadValueFromXML(const TXMLInstructionType& Element) {
  if (Element.IsConstant()) {
    SetValue(TXMLConstantInstructionType(Element).Value());
  }
}

void TQXGPVariantInstruction::SaveValueToXML(const TXMLInstructionType& Element) {
  if (Element.IsConstant()) {
    TXMLConstantInstructionType(Element).SetValue(Value().AsText());
  }
}

void TQXGPVariantNode::LoadValueFromXML(const TXMLDnaType& Element) { SetValue(Element.Value()); }

void TQXGPVariantNode::SaveValueToXML(const TXMLDnaType& Element) const {
  constexpr int Digits = 15;
  Element.SetValue(NumberText(RoundedToDigits(Value().AsReal(), Digits)));
}

} // namespace qx
