#pragma once

// The settings document of genetic programming: the genetic document, extended by the settings of
// reproduction and a domain.

#include <qx/engine/QXGeneticDocumentXML.h>
#include <qx/program_trees/QXGPDomainXML.h>

#include <string>
#include <string_view>

namespace qx {

/// "MutationWeights": a whole number for each mutation method, in an element of its name.
class TXMLGPReproductionType_MutationWeights : public TXMLNode {
public:
  explicit TXMLGPReproductionType_MutationWeights(const TXMLNode& Node) : TXMLNode(Node) {}

  int Weight(std::string_view Method) const { return FindChild(Method).AsInteger(); }
  void SetWeight(std::string_view Method, int Value) const { Child(Method).SetInteger(Value); }
};

/// The element "Reproduction". Identifiers that are missing read as told; "imFull" is no point mutation.
class TXMLGPReproductionType : public TXMLReproductionType {
public:
  explicit TXMLGPReproductionType(const TXMLNode& Node) : TXMLReproductionType(Node) {}

  /// The name of a `TGPCrossoverMethod`; "cmSubtree" while it is missing.
  std::string CrossoverMethod() const { return TextOr("CrossoverMethod", "cmSubtree"); }
  void SetCrossoverMethod(std::string_view Value) const { Child("CrossoverMethod").SetText(Value); }
  /// The name of a `TGPInitializationMethod`; "imFull" while it is missing.
  std::string InitializationMethod() const { return TextOr("InitializationMethod", "imFull"); }
  void SetInitializationMethod(std::string_view Value) const { Child("InitializationMethod").SetText(Value); }
  int InitializationDepth() const { return FindChild("InitializationDepth").AsInteger(); }
  void SetInitializationDepth(int Value) const { Child("InitializationDepth").SetInteger(Value); }
  /// The name of a `TGPMutationMethod`, which no component reads or writes; "mmSubtree" while it is missing.
  std::string MutationMethod() const { return TextOr("MutationMethod", "mmSubtree"); }
  void SetMutationMethod(std::string_view Value) const { Child("MutationMethod").SetText(Value); }
  /// Made when it is missing.
  TXMLGPReproductionType_MutationWeights MutationWeights() const {
    return TXMLGPReproductionType_MutationWeights(Child("MutationWeights"));
  }
  /// The element is spelled so.
  double SelectionNonterminalsProbability() const {
    return FindChild("SelectionNonterminalsProbability").AsNumber();
  }
  void SetSelectionNonterminalsProbability(double Value) const {
    Child("SelectionNonterminalsProbability").SetSingle(Value);
  }
  /// The name of a `TGPPointMutationMethod`; "imFull" while it is missing.
  std::string PointMutationMethod() const { return TextOr("PointMutationMethod", "imFull"); }
  void SetPointMutationMethod(std::string_view Value) const { Child("PointMutationMethod").SetText(Value); }
  double PointMutationProbability() const { return FindChild("PointMutationProbability").AsNumber(); }
  void SetPointMutationProbability(double Value) const { Child("PointMutationProbability").SetSingle(Value); }

private:
  std::string TextOr(std::string_view Name, std::string_view Missing) const {
    return HasChild(Name) ? FindChild(Name).AsText() : std::string(Missing);
  }
};

/// The root element "GeneticProgram".
class TXMLGeneticProgram : public TXMLGeneticDocumentType {
public:
  explicit TXMLGeneticProgram(const TXMLNode& Node) : TXMLGeneticDocumentType(Node) {}

  TXMLGPReproductionType Reproduction() const { return TXMLGPReproductionType(Child("Reproduction")); }
  TXMLGPDomainType Domain() const { return TXMLGPDomainType(Child("Domain")); }
};

using IXMLGPReproductionType_MutationWeights = TXMLGPReproductionType_MutationWeights;
using IXMLGPReproductionType = TXMLGPReproductionType;
using IXMLGeneticProgram = TXMLGeneticProgram;

/// Binds the root of a document. Raises EXMLError when it is another element.
TXMLGeneticProgram GetGeneticProgram(const TXMLDocument& Document);
/// Reads a file and binds the root; see `TXMLDocument::ReadFile` for what it raises.
TXMLGeneticProgram LoadGeneticProgram(const std::string& FileName);
/// A new document, version "1.0", with an empty root.
TXMLGeneticProgram NewGeneticProgram();

} // namespace qx
