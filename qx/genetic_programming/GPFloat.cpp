#include <qx/genetic_programming/GPFloat.h>
#include <qx/platform/Numbers.h>
#include <qx/platform/Text.h>
#include <qx/program_trees/QXGPDomainXML.h>

#include <stdexcept>
#include <string>

namespace qx {

namespace {

std::string DocumentText(TGAFloat Value) {
  constexpr int Digits = 15;
  return NumberText(RoundedToDigits(Value, Digits));
}

// The message as an error of the document would say it: with line and column.
std::string WithPlace(const TXMLDnaType& Element, const std::string& Message) {
  const TXMLNode Place = Element.HasChild("Value") ? Element.FindChild("Value") : TXMLNode(Element);
  try {
    Place.Refuse(Message);
  } catch (const EXMLError& Error) {
    return Error.what();
  }
}

} // namespace

void TQXGPFloatInstruction::LoadValueFromXML(const TXMLInstructionType& Element) {
  if (!Element.IsConstant()) {
    return;
  }
  const std::string Text = TXMLConstantInstructionType(Element).Value();
  if (IsRealBeyondRange(Text)) {
    Element.FindChild("Value").Refuse("the constant \"" + Element.Name() + "\" cannot be " + Text +
                                      ", which no double holds");
  }
  if (const auto Read = ParseReal(Text)) { // what is no number at all leaves the value as it is
    SetValue(*Read);
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
  const std::string Text = Element.Value();
  const std::string Constant = "the constant \"" + Element.Instruction() + "\" ";
  if (IsRealBeyondRange(Text)) {
    Element.FindChild("Value").Refuse(Constant + "cannot be " + Text + ", which no double holds");
  }
  try {
    this->SetValue(Variant(Text).AsReal());
  } catch (const std::invalid_argument& Error) {
    throw std::invalid_argument(WithPlace(Element, Constant + "has no such value: " + Error.what()));
  }
}

template <class TSelf, class TFamily>
void TQXGPFloatNodeOf<TSelf, TFamily>::SaveValueToXML(const TXMLDnaType& Element) const {
  Element.SetValue(DocumentText(this->Value()));
}

template class TQXGPFloatNodeOf<TQXGPFloatNode, generics::TQXGPTreeNode<TGAFloat>>;
template class TQXGPFloatNodeOf<TQXGPBinaryFloatNode, generics::TQXGPBinaryNode<TGAFloat>>;

} // namespace qx
