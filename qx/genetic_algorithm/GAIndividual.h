#pragma once

#include <qx/engine/Individual.h>
#include <qx/genetic_algorithm/GABits.h>
#include <qx/genetic_algorithm/QXGADomainXML.h>
#include <qx/platform/ItemClass.h>

#include <memory>
#include <string>

namespace qx {

class TQXGAPopulation;

/// An individual whose genome is a bit chromosome.
class TQXGAIndividual : public TQXIndividual {
public:
  /// The individual's own chromosome, made by `CreateDNA` when it is first asked for.
  TQXGABits& Bits() {
    if (FBits == nullptr) [[unlikely]] {
      FBits = CreateDNA();
    }
    return *FBits;
  }
  const TQXGABits& Bits() const { return const_cast<TQXGAIndividual&>(*this).Bits(); }
  /// Copies the given chromosome into the own one and marks the individual as modified.
  void SetBits(const TQXGABits& Value);

  TQXGAPopulation* Collection() const;
  void SetCollection(TQXGAPopulation& Value);

  void Assign(const TPersistent& Source) override;

  /// The class name, one blank, and the bits.
  virtual std::string ToString() const;

  /// Read and write a chromosome element; any other element is passed over.
  void LoadFromXML(const TXMLNode& Node) override;
  void SaveToXML(const TXMLNode& Node) override;
  /// Reads name and bits, whatever the number of bits: text that is too long is cut, text that is too short
  /// leaves the rest 0. Raises EXMLError for any character but '0' and '1'.
  virtual void LoadFromXML(const TXMLChromosome& Chromosome);
  /// Writes display name, fitness, bits and, in a genetic algorithm, the value of each gene. Raises
  /// EGAException when an enumerated gene holds none of its texts.
  virtual void SaveToXML(const TXMLChromosome& Chromosome);

protected:
  void DefineProperties(TFiler& Filer) override;
  /// Makes the chromosome, owned by this individual.
  virtual std::unique_ptr<TQXGABits> CreateDNA();

private:
  std::unique_ptr<TQXGABits> FBits;
};

/// A class of genetic-algorithm individuals as a value.
using TQXGAIndividualClass = TItemClass<TQXGAIndividual>;

} // namespace qx
