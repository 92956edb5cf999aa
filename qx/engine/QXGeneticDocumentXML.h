#pragma once

// The genetic document: the settings that every evolving component has, as XML.
//
// Each property of an element class is a child element of the same name, which is made when it is first
// written and reads as 0, false or "" while it is missing. Reals are written in single precision and read as
// doubles.

#include <qx/platform/XML.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace qx {

/// The root element "GeneticDocument", which the documents of the concrete components extend.
class TXMLGeneticDocumentType : public TXMLNode {
public:
  explicit TXMLGeneticDocumentType(const TXMLNode& Node) : TXMLNode(Node) {}

  double DiversityLimit() const { return FindChild("DiversityLimit").AsNumber(); }
  void SetDiversityLimit(double Value) const { Child("DiversityLimit").SetSingle(Value); }
  double AvgFitness() const { return FindChild("AvgFitness").AsReal(); }
  void SetAvgFitness(double Value) const { Child("AvgFitness").SetSingle(Value); }
  double MaxFitness() const { return FindChild("MaxFitness").AsReal(); }
  void SetMaxFitness(double Value) const { Child("MaxFitness").SetSingle(Value); }
  double MinFitness() const { return FindChild("MinFitness").AsReal(); }
  void SetMinFitness(double Value) const { Child("MinFitness").SetSingle(Value); }
  double FitnessCutoff() const { return FindChild("FitnessCutoff").AsNumber(); }
  void SetFitnessCutoff(double Value) const { Child("FitnessCutoff").SetSingle(Value); }
  /// The name of a `TGAFitnessMethod`.
  std::string FitnessMethod() const { return FindChild("FitnessMethod").AsText(); }
  void SetFitnessMethod(std::string_view Value) const { Child("FitnessMethod").SetText(Value); }
  int Generation() const { return FindChild("Generation").AsInteger(); }
  void SetGeneration(int Value) const { Child("Generation").SetInteger(Value); }
  bool UseDiversityLimit() const { return FindChild("UseDiversityLimit").AsBoolean(); }
  void SetUseDiversityLimit(bool Value) const { Child("UseDiversityLimit").SetBoolean(Value); }
  bool UseFitnessCutoff() const { return FindChild("UseFitnessCutoff").AsBoolean(); }
  void SetUseFitnessCutoff(bool Value) const { Child("UseFitnessCutoff").SetBoolean(Value); }
  std::int64_t GenerationLimit() const { return FindChild("GenerationLimit").AsInt64(); }
  void SetGenerationLimit(std::int64_t Value) const { Child("GenerationLimit").SetInteger(Value); }
  bool UseGenerationLimit() const { return FindChild("UseGenerationLimit").AsBoolean(); }
  void SetUseGenerationLimit(bool Value) const { Child("UseGenerationLimit").SetBoolean(Value); }
};

/// The element "SelectionMethod" of the reproduction settings.
class TXMLReproductionType_SelectionMethod : public TXMLNode {
public:
  explicit TXMLReproductionType_SelectionMethod(const TXMLNode& Node) : TXMLNode(Node) {}

  /// The name of a `TGASelectionMethod`.
  std::string Method() const { return FindChild("Method").AsText(); }
  void SetMethod(std::string_view Value) const { Child("Method").SetText(Value); }
  double ElitistPercent() const { return FindChild("ElitistPercent").AsNumber(); }
  void SetElitistPercent(double Value) const { Child("ElitistPercent").SetSingle(Value); }
  int TournamentField() const { return FindChild("TournamentField").AsInteger(); }
  void SetTournamentField(int Value) const { Child("TournamentField").SetInteger(Value); }
};

/// The element "Reproduction" of the documents that extend this one.
class TXMLReproductionType : public TXMLNode {
public:
  explicit TXMLReproductionType(const TXMLNode& Node) : TXMLNode(Node) {}

  double CrossoverProbability() const { return FindChild("CrossoverProbability").AsNumber(); }
  void SetCrossoverProbability(double Value) const { Child("CrossoverProbability").SetSingle(Value); }
  double InversionProbability() const { return FindChild("InversionProbability").AsNumber(); }
  void SetInversionProbability(double Value) const { Child("InversionProbability").SetSingle(Value); }
  double MutationProbability() const { return FindChild("MutationProbability").AsNumber(); }
  void SetMutationProbability(double Value) const { Child("MutationProbability").SetSingle(Value); }
  /// Made when it is missing.
  TXMLReproductionType_SelectionMethod SelectionMethod() const {
    return TXMLReproductionType_SelectionMethod(Child("SelectionMethod"));
  }
};

using IXMLGeneticDocumentType = TXMLGeneticDocumentType;
using IXMLReproductionType = TXMLReproductionType;
using IXMLReproductionType_SelectionMethod = TXMLReproductionType_SelectionMethod;

/// Binds the root of a document. Raises EXMLError when it is another element.
TXMLGeneticDocumentType GetGeneticDocument(const TXMLDocument& Document);
/// Reads a file and binds the root; see `TXMLDocument::ReadFile` for what it raises.
TXMLGeneticDocumentType LoadGeneticDocument(const std::string& FileName);
/// A new document, version "1.0", with an empty root.
TXMLGeneticDocumentType NewGeneticDocument();

} // namespace qx
