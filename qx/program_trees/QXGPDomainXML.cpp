#include <qx/program_trees/QXGPDomainXML.h>

#include <stdexcept>

namespace qx {

namespace {

constexpr int LargestArity = 255;

} // namespace

int TXMLFunctionInstructionType::Arity() const {
  const int Value = AttributeAsInteger("Arity");
  if (Value < 0 || Value > LargestArity) {
    Refuse("the arity of \"" + Name() + "\" must be from 0 to 255, not " + std::to_string(Value));
  }
  return Value;
}

void TXMLFunctionInstructionType::RequireArity(std::string_view Function, int Value) {
  if (Value < 0 || Value > LargestArity) {
    throw std::out_of_range("The function \"" + std::string(Function) + "\" takes " + std::to_string(Value) +
                            " arguments; a document holds an arity from 0 to 255");
  }
}

void TXMLFunctionInstructionType::SetArity(int Value) const {
  RequireArity(Name(), Value);
  SetAttribute("Arity", Value);
}

TXMLFunctionInstructionType TXMLGPInstructions::AddFunction() const {
  return TXMLFunctionInstructionType(AddChild("Function"));
}

TXMLVariableInstructionType TXMLGPInstructions::AddVariable() const {
  return TXMLVariableInstructionType(AddChild("Variable"));
}

TXMLConstantInstructionType TXMLGPInstructions::AddConstant() const {
  return TXMLConstantInstructionType(AddChild("Constant"));
}

bool TXMLIndividualType::Binds(const TXMLNode& Node) {
  return Node.Tag() == "Individual" || Node.Tag() == "FittestIndividual";
}

bool TXMLGPPopulation::Binds(const TXMLNode& Node) { return Node.Tag() == "Population"; }

TXMLGPDomain GetGPDomain(const TXMLDocument& Document) { return TXMLGPDomain(Document.Root("GPDomain")); }

TXMLGPDomain LoadGPDomain(const std::string& FileName) {
  return GetGPDomain(TXMLDocument::ReadFile(FileName));
}

TXMLGPDomain NewGPDomain() { return TXMLGPDomain(TXMLDocument::New("GPDomain").Root()); }

TXMLGPInstructions GetGPInstructions(const TXMLDocument& Document) {
  return TXMLGPInstructions(Document.Root("Instructions"));
}

TXMLGPInstructions LoadGPInstructions(const std::string& FileName) {
  return TXMLGPInstructions(LoadGPDomain(FileName));
}

TXMLGPInstructions NewGPInstructions() { return TXMLGPInstructions(NewGPDomain()); }

TXMLGPPopulation GetGPPopulation(const TXMLDocument& Document) {
  return TXMLGPPopulation(Document.Root("Population"));
}

TXMLGPPopulation LoadGPPopulation(const std::string& FileName) {
  return TXMLGPPopulation(LoadGPDomain(FileName));
}

TXMLGPPopulation NewGPPopulation() { return TXMLGPPopulation(NewGPDomain()); }

} // namespace qx
