#include <qx/genetic_programming/GPFloat.h>
#include <qx/platform/Numbers.h>
#include <qx/platform/Text.h>
#include <qx/program_trees/QXGPDomainXML.h>

namespace qx {

namespace {

std::string DocumentText(TGAFloat Value) {
  constexpr int Digits = 15;
  return NumberText(RoundedToDigits(Value, Digits));
}

} // namespace

void TQXGPFloatInstruction::LoadValueFromXML(const TXMLInstructionType& Element) {
  if (Element.IsConstant()) {
    if (const auto Read = ParseReal(TXMLConstantInstructionType(Element).Value())) {
      SetValue(*Read);
    }
  }
}

void TQXGPFloatInstruction::SaveValueToXML(const TXMLInstructionType& Element) {
  if (Element.IsConstant()) {
    TXMLConstantInstructionType(Element).SetValue(DocumentText(Value()));
  }
}

template <class TSelf, class TFamily>
std::string TQXGPFloatNodeOf<TSelf, TFamily>::TextOf(TGAFloat Value) {
  return GeneralText(Value);
}

template <class TSelf, class TFamily>
void TQXGPFloatNodeOf<TSelf, TFamily>::LoadValueFromXML(const TXMLDnaType& Element) {
  this->SetValue(Variant(Element.Value()).AsReal());
}

template <class TSelf, class TFamily>
void TQXGPFloatNodeOf<TSelf, TFamily>::SaveValueToXML(const TXMLDnaType& Element) const {
  Element.SetValue(DocumentText(this->Value()));
}

template class TQXGPFloatNodeOf<TQXGPFloatNode, generics::TQXGPTreeNode<TGAFloat>>;
template class TQXGPFloatNodeOf<TQXGPBinaryFloatNode, generics::TQXGPBinaryNode<TGAFloat>>;

} // namespace qx
