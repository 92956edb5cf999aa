#pragma once

#include <qx/engine/Individual.h>
#include <qx/genetic_algorithm/GABits.h>
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

protected:
  /// Makes the chromosome, owned by this individual.
  virtual std::unique_ptr<TQXGABits> CreateDNA();

private:
  std::unique_ptr<TQXGABits> FBits;
};

/// A class of genetic-algorithm individuals as a value.
using TQXGAIndividualClass = TItemClass<TQXGAIndividual>;

} // namespace qx
