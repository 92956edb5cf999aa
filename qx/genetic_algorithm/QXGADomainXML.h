#pragma once

// The domain document of the genetic algorithm: the genotype, the fittest individual and the chromosomes, as
// XML.
//
// Each property of an element class is a child element of the same name, which is made when it is first
// written and reads as 0, false or "" while it is missing; an element within an element is made when it is
// first asked for. Reals are written in single precision, but the limits of genes as doubles.

#include <qx/platform/XML.h>

#include <string>
#include <string_view>

namespace qx {

/// What the element of every gene has; "BooleanGene" has nothing more.
class TXMLGeneType : public TXMLNode {
public:
  explicit TXMLGeneType(const TXMLNode& Node) : TXMLNode(Node) {}

  std::string Name() const { return FindChild("Name").AsText(); }
  void SetName(std::string_view Value) const { Child("Name").SetText(Value); }
  /// In bits.
  int Size() const { return FindChild("Size").AsInteger(); }
  void SetSize(int Value) const { Child("Size").SetInteger(Value); }
};

/// "IntegerGene" and "FloatGene".
class TXMLNumericGeneType : public TXMLGeneType {
public:
  explicit TXMLNumericGeneType(const TXMLNode& Node) : TXMLGeneType(Node) {}

  double MinValue() const { return FindChild("MinValue").AsNumber(); }
  void SetMinValue(double Value) const { Child("MinValue").SetReal(Value); }
  double MaxValue() const { return FindChild("MaxValue").AsNumber(); }
  void SetMaxValue(double Value) const { Child("MaxValue").SetReal(Value); }
  bool PreserveSignBit() const { return FindChild("PreserveSignBit").AsBoolean(); }
  void SetPreserveSignBit(bool Value) const { Child("PreserveSignBit").SetBoolean(Value); }
};

/// "EnumerationGene".
class TXMLEnumerationGeneType : public TXMLGeneType {
public:
  explicit TXMLEnumerationGeneType(const TXMLNode& Node) : TXMLGeneType(Node) {}

  /// The allowed texts.
  IXMLString_List Enumeration() const { return {*this, "Enumeration"}; }
};

using IXMLBooleanGeneTypeList = TXMLNodeList<TXMLGeneType>;
using IXMLIntegerGeneTypeList = TXMLNodeList<TXMLNumericGeneType>;
using IXMLFloatGeneTypeList = TXMLNodeList<TXMLNumericGeneType>;
using IXMLEnumerationGeneTypeList = TXMLNodeList<TXMLEnumerationGeneType>;

/// "GenoType": the genes. The lists show those of one kind each; the genes' order is that of the child
/// elements.
class TXMLGenoType : public TXMLNode {
public:
  explicit TXMLGenoType(const TXMLNode& Node) : TXMLNode(Node) {}

  /// The attribute "Size": bits of a chromosome.
  int Size() const { return AttributeAsInteger("Size"); }
  void SetSize(int Value) const { SetAttribute("Size", Value); }
  IXMLBooleanGeneTypeList BooleanGene() const { return {*this, "BooleanGene"}; }
  IXMLIntegerGeneTypeList IntegerGene() const { return {*this, "IntegerGene"}; }
  IXMLFloatGeneTypeList FloatGene() const { return {*this, "FloatGene"}; }
  IXMLEnumerationGeneTypeList EnumerationGene() const { return {*this, "EnumerationGene"}; }
};

/// "Genes": a chromosome's bits, and its values for people and other programs.
class TXMLGenes : public TXMLNode {
public:
  explicit TXMLGenes(const TXMLNode& Node) : TXMLNode(Node) {}

  /// '0' and '1' in the order of positions.
  std::string Bits() const { return FindChild("Bits").AsText(); }
  void SetBits(std::string_view Value) const { Child("Bits").SetText(Value); }
  IXMLBooleanList BooleanGeneValue() const { return {*this, "BooleanGeneValue"}; }
  IXMLIntegerList IntegerGeneValue() const { return {*this, "IntegerGeneValue"}; }
  IXMLFloatList FloatGeneValue() const { return {*this, "FloatGeneValue"}; }
  IXMLString_List EnumerationGeneValue() const { return {*this, "EnumerationGeneValue"}; }
};

/// "Chromosome", and "FittestIndividual".
class TXMLChromosome : public TXMLNode {
public:
  explicit TXMLChromosome(const TXMLNode& Node) : TXMLNode(Node) {}
  /// Whether an element is one of those.
  static bool Binds(const TXMLNode& Node);

  std::string Name() const { return FindChild("Name").AsText(); }
  void SetName(std::string_view Value) const { Child("Name").SetText(Value); }
  double Fitness() const { return FindChild("Fitness").AsReal(); }
  void SetFitness(double Value) const { Child("Fitness").SetSingle(Value); }
  TXMLGenes Genes() const { return TXMLGenes(Child("Genes")); }
};

/// "Chromosomes": one child element for each individual.
class TXMLChromosomes : public TXMLNode {
public:
  explicit TXMLChromosomes(const TXMLNode& Node) : TXMLNode(Node) {}
  static bool Binds(const TXMLNode& Node);

  TXMLNodeList<TXMLChromosome> Chromosome() const { return {*this, "Chromosome"}; }
};

/// "GADomain", and "Domain" of the settings document.
class TXMLGADomainType : public TXMLNode {
public:
  explicit TXMLGADomainType(const TXMLNode& Node) : TXMLNode(Node) {}

  TXMLGenoType GenoType() const { return TXMLGenoType(Child("GenoType")); }
  bool HasFittestIndividual() const { return HasChild("FittestIndividual"); }
  TXMLChromosome FittestIndividual() const { return TXMLChromosome(Child("FittestIndividual")); }
  TXMLChromosomes Chromosomes() const { return TXMLChromosomes(Child("Chromosomes")); }
};

using IXMLGeneType = TXMLGeneType;
using IXMLNumericGeneType = TXMLNumericGeneType;
using IXMLEnumerationGeneType = TXMLEnumerationGeneType;
using IXMLGenoType = TXMLGenoType;
using IXMLGenes = TXMLGenes;
using IXMLChromosome = TXMLChromosome;
using IXMLChromosomes = TXMLChromosomes;
using IXMLGADomainType = TXMLGADomainType;

// Each of three elements may be the root of a document. `Get...` binds the root and raises EXMLError when it
// is another element; `Load...` reads a file first; `New...` makes an empty document, version "1.0".

TXMLGADomainType GetGADomain(const TXMLDocument& Document);
TXMLGADomainType LoadGADomain(const std::string& FileName);
TXMLGADomainType NewGADomain();
TXMLGenoType GetGenoType(const TXMLDocument& Document);
TXMLGenoType LoadGenoType(const std::string& FileName);
TXMLGenoType NewGenoType();
TXMLChromosomes GetChromosomes(const TXMLDocument& Document);
TXMLChromosomes LoadChromosomes(const std::string& FileName);
TXMLChromosomes NewChromosomes();

} // namespace qx
