#pragma once

// The settings document of the genetic algorithm: the genetic document, extended by the settings of
// reproduction and a domain.

#include <qx/engine/QXGeneticDocumentXML.h>
#include <qx/genetic_algorithm/QXGADomainXML.h>

#include <string>
#include <string_view>

namespace qx {

// The genetic document has reproduction settings of the same names, which these extend.
namespace genetic_algorithm_xml {

using TXMLSelectionMethod = TXMLReproductionType_SelectionMethod;
using IXMLSelectionMethod = TXMLSelectionMethod;

/// The element "Reproduction".
class TXMLReproductionType : public qx::TXMLReproductionType {
public:
  explicit TXMLReproductionType(const TXMLNode& Node) : qx::TXMLReproductionType(Node) {}

  /// The name of a `TGACrossoverMethod`; "cmGeneBoundary" while the element is missing.
  std::string CrossoverMethod() const {
    return HasChild("CrossoverMethod") ? FindChild("CrossoverMethod").AsText() : "cmGeneBoundary";
  }
  void SetCrossoverMethod(std::string_view Value) const { Child("CrossoverMethod").SetText(Value); }
};
using IXMLReproductionType = TXMLReproductionType;

} // namespace genetic_algorithm_xml

using genetic_algorithm_xml::IXMLSelectionMethod;
using genetic_algorithm_xml::TXMLSelectionMethod;

/// The root element "GeneticAlgorithm".
class TXMLGeneticAlgorithm : public TXMLGeneticDocumentType {
public:
  explicit TXMLGeneticAlgorithm(const TXMLNode& Node) : TXMLGeneticDocumentType(Node) {}

  genetic_algorithm_xml::TXMLReproductionType Reproduction() const {
    return genetic_algorithm_xml::TXMLReproductionType(Child("Reproduction"));
  }
  TXMLGADomainType Domain() const { return TXMLGADomainType(Child("Domain")); }
};
using IXMLGeneticAlgorithm = TXMLGeneticAlgorithm;

/// Binds the root of a document. Raises EXMLError when it is another element.
TXMLGeneticAlgorithm GetGeneticAlgorithm(const TXMLDocument& Document);
/// Reads a file and binds the root; see `TXMLDocument::ReadFile` for what it raises.
TXMLGeneticAlgorithm LoadGeneticAlgorithm(const std::string& FileName);
/// A new document, version "1.0", with an empty root.
TXMLGeneticAlgorithm NewGeneticAlgorithm();

} // namespace qx
