#pragma once

// The domain document of genetic programming: the instruction set, the fittest individual and the population
// of programs, as XML.
//
// An attribute or element is made when it is first written and reads as 0 or "" while it is missing; an
// element within an element is made when it is first asked for.

#include <qx/platform/XML.h>

#include <string>
#include <string_view>

namespace qx {

/// What the element of every instruction has.
class TXMLInstructionType : public TXMLNode {
public:
  explicit TXMLInstructionType(const TXMLNode& Node) : TXMLNode(Node) {}

  bool IsFunction() const { return Tag() == "Function"; }
  bool IsVariable() const { return Tag() == "Variable"; }
  /// Whether it is one of the constants whose value is a text.
  bool IsConstant() const {
    return Tag() == "Constant" || Tag() == "FloatConstant" || Tag() == "VariantConstant";
  }

  std::string Name() const { return Attribute("Name"); }
  void SetName(std::string_view Value) const { SetAttribute("Name", Value); }
  std::string Comment() const { return Attribute("Comment"); }
  void SetComment(std::string_view Value) const { SetAttribute("Comment", Value); }
};

/// "Variable".
class TXMLVariableInstructionType : public TXMLInstructionType {
public:
  explicit TXMLVariableInstructionType(const TXMLNode& Node) : TXMLInstructionType(Node) {}
};

/// "Function".
class TXMLFunctionInstructionType : public TXMLInstructionType {
public:
  explicit TXMLFunctionInstructionType(const TXMLNode& Node) : TXMLInstructionType(Node) {}

  /// 0 to 255. Raises EXMLError when the attribute holds anything else.
  int Arity() const;
  /// Raises std::out_of_range, which names the function, for an arity that the format cannot hold.
  static void RequireArity(std::string_view Function, int Value);
  void SetArity(int Value) const;
};

/// "Constant".
class TXMLConstantInstructionType : public TXMLInstructionType {
public:
  explicit TXMLConstantInstructionType(const TXMLNode& Node) : TXMLInstructionType(Node) {}

  std::string Value() const { return FindChild("Value").AsText(); }
  void SetValue(std::string_view Value) const { Child("Value").SetText(Value); }
};

/// "FloatConstant": the value is the text of a decimal number.
class TXMLFloatConstantInstructionType : public TXMLConstantInstructionType {
public:
  explicit TXMLFloatConstantInstructionType(const TXMLNode& Node) : TXMLConstantInstructionType(Node) {}
};

/// "VariantConstant": the value is the text of a variant.
class TXMLVariantConstantInstructionType : public TXMLConstantInstructionType {
public:
  explicit TXMLVariantConstantInstructionType(const TXMLNode& Node) : TXMLConstantInstructionType(Node) {}
};

/// A constant whose value is a whole number; stands in no list.
class TXMLIntegerConstantInstructionType : public TXMLInstructionType {
public:
  explicit TXMLIntegerConstantInstructionType(const TXMLNode& Node) : TXMLInstructionType(Node) {}

  int Value() const { return FindChild("Value").AsInteger(); }
  void SetValue(int Value) const { Child("Value").SetInteger(Value); }
};

using IXMLFunctionInstructionTypeList = TXMLNodeList<TXMLFunctionInstructionType>;
using IXMLVariableInstructionTypeList = TXMLNodeList<TXMLVariableInstructionType>;
using IXMLConstantInstructionTypeList = TXMLNodeList<TXMLConstantInstructionType>;
using IXMLFloatConstantInstructionTypeList = TXMLNodeList<TXMLFloatConstantInstructionType>;
using IXMLVariantConstantInstructionTypeList = TXMLNodeList<TXMLVariantConstantInstructionType>;

/// "Instructions": the lists show the instructions of one kind each.
class TXMLGPInstructions : public TXMLNode {
public:
  explicit TXMLGPInstructions(const TXMLNode& Node) : TXMLNode(Node) {}

  IXMLFunctionInstructionTypeList Function() const { return {*this, "Function"}; }
  IXMLVariableInstructionTypeList Variable() const { return {*this, "Variable"}; }
  IXMLConstantInstructionTypeList Constant() const { return {*this, "Constant"}; }
  IXMLFloatConstantInstructionTypeList FloatConstant() const { return {*this, "FloatConstant"}; }
  IXMLVariantConstantInstructionTypeList VariantConstant() const { return {*this, "VariantConstant"}; }
  // Each appends one element to its list, whatever the length of that.
  TXMLFunctionInstructionType AddFunction() const;
  TXMLVariableInstructionType AddVariable() const;
  TXMLConstantInstructionType AddConstant() const;
};

/// "DNA" and "Child": one node of a program tree, with its children inside.
class TXMLDnaType : public TXMLNode {
public:
  explicit TXMLDnaType(const TXMLNode& Node) : TXMLNode(Node) {}

  /// Name of the node's instruction in the set.
  std::string Instruction() const { return Attribute("Instruction"); }
  void SetInstruction(std::string_view Value) const { SetAttribute("Instruction", Value); }
  /// The value of a constant node.
  std::string Value() const { return FindChild("Value").AsText(); }
  void SetValue(std::string_view Value) const { TXMLNode::Child("Value").SetText(Value); }
  TXMLNodeList<TXMLDnaType> Child() const { return {*this, "Child"}; }
  /// Appends one element to the children, whatever their number.
  TXMLDnaType AddChild() const { return TXMLDnaType(TXMLNode::AddChild("Child")); }
};

using IXMLDnaTypeList = TXMLNodeList<TXMLDnaType>;

/// "Individual", and "FittestIndividual".
class TXMLIndividualType : public TXMLNode {
public:
  explicit TXMLIndividualType(const TXMLNode& Node) : TXMLNode(Node) {}
  /// Whether an element is one of those.
  static bool Binds(const TXMLNode& Node);

  std::string Name() const { return FindChild("Name").AsText(); }
  void SetName(std::string_view Value) const { Child("Name").SetText(Value); }
  double Fitness() const { return FindChild("Fitness").AsReal(); }
  /// In single precision.
  void SetFitness(double Value) const { Child("Fitness").SetSingle(Value); }
  TXMLDnaType DNA() const { return TXMLDnaType(Child("DNA")); }
};

using IXMLIndividualTypeList = TXMLNodeList<TXMLIndividualType>;

/// "Population".
class TXMLGPPopulation : public TXMLNode {
public:
  explicit TXMLGPPopulation(const TXMLNode& Node) : TXMLNode(Node) {}
  static bool Binds(const TXMLNode& Node);

  IXMLIndividualTypeList Individual() const { return {*this, "Individual"}; }
  TXMLIndividualType AddIndividual() const { return TXMLIndividualType(AddChild("Individual")); }
};

/// "GPDomain".
class TXMLGPDomain : public TXMLNode {
public:
  explicit TXMLGPDomain(const TXMLNode& Node) : TXMLNode(Node) {}

  TXMLGPInstructions Instructions() const { return TXMLGPInstructions(Child("Instructions")); }
  bool HasFittestIndividual() const { return HasChild("FittestIndividual"); }
  TXMLIndividualType FittestIndividual() const { return TXMLIndividualType(Child("FittestIndividual")); }
  TXMLGPPopulation Population() const { return TXMLGPPopulation(Child("Population")); }
};

using TXMLGPDomainType = TXMLGPDomain;

using IXMLInstructionType = TXMLInstructionType;
using IXMLVariableInstructionType = TXMLVariableInstructionType;
using IXMLFunctionInstructionType = TXMLFunctionInstructionType;
using IXMLConstantInstructionType = TXMLConstantInstructionType;
using IXMLFloatConstantInstructionType = TXMLFloatConstantInstructionType;
using IXMLVariantConstantInstructionType = TXMLVariantConstantInstructionType;
using IXMLIntegerConstantInstructionType = TXMLIntegerConstantInstructionType;
using IXMLGPInstructions = TXMLGPInstructions;
using IXMLDnaType = TXMLDnaType;
using IXMLIndividualType = TXMLIndividualType;
using IXMLGPPopulation = TXMLGPPopulation;
using IXMLGPDomain = TXMLGPDomain;
using IXMLGPDomainType = TXMLGPDomainType;

// Each of three elements may be the root of a document. `Get...` binds the root and raises EXMLError when it
// is another element; `Load...` reads a file first; `New...` makes an empty document, version "1.0". Files of
// instructions or of a population alone, as `Load...` and `New...` know them, have the root "GPDomain" too.

TXMLGPDomain GetGPDomain(const TXMLDocument& Document);
TXMLGPDomain LoadGPDomain(const std::string& FileName);
TXMLGPDomain NewGPDomain();
TXMLGPInstructions GetGPInstructions(const TXMLDocument& Document);
TXMLGPInstructions LoadGPInstructions(const std::string& FileName);
TXMLGPInstructions NewGPInstructions();
TXMLGPPopulation GetGPPopulation(const TXMLDocument& Document);
TXMLGPPopulation LoadGPPopulation(const std::string& FileName);
TXMLGPPopulation NewGPPopulation();

} // namespace qx
