#pragma once

#include <qx/genetic_algorithm/GAGene.h>
#include <qx/genetic_algorithm/QXGADomainXML.h>
#include <qx/platform/Collection.h>

namespace qx {

class TQXCustomGeneticAlgorithm;

/// The genotype: an ordered collection of genes laid end to end in the chromosome. It keeps their offsets
/// current and tells the component that owns it when it grows.
class TQXGAGenes : public TTypedCollection<TQXGAGene, TOwnedCollection> {
public:
  explicit TQXGAGenes(TPersistent* Owner, TItemClass<TQXGAGene> ItemClass = ItemClassOf<TQXGAGene>());

  /// The owner when it is a genetic algorithm, else nullptr.
  TQXCustomGeneticAlgorithm* Owner() const { return FAlgorithm; }

  /// Total length of the genes in bits: the end of the last one. The first gene keeps the offset that it has:
  /// when the gene before it goes or it is moved to the front, the bits before it belong to no gene.
  int Size() const;

  /// What the fields of the genes stand for. Default gdStrict: a random field may name no text of an
  /// enumerated gene, which cannot be read then, and leave an integer gene's limits. Under gdAlwaysValid each
  /// gene of a type, read as that type, gives one of its texts or a value within its limits: number
  /// floor(code * count / 2^Size) of its texts or integers, where the code is what the bits spell unsigned;
  /// of a floating-point gene the limits are the least and the largest code, and the values between lie
  /// evenly. A value is written as a code that reads back, in a field that is long enough.
  TGADecoding Decoding() const { return FDecoding; }
  void SetDecoding(TGADecoding Value);

  /// Adds the way of decoding to what is copied.
  void Assign(const TPersistent& Source) override;
  void Move(int From, int To) override;

  /// Called when the gene at `Index` has a new size: moves the genes behind it, then tells the owner.
  virtual void SizeChange(int Index);

  /// Writes the genes, the attribute "Decoding" when it is not gdStrict, and the attribute "Size": the genes'
  /// total, or the chromosomes' when that is 0. A gene
  /// of unknown type is left out.
  void SaveToXML(const TXMLGenoType& GenoType);
  /// Writes the value of each gene in an individual's chromosome. Raises EGAException when an enumerated gene
  /// holds none of its texts.
  void SaveToXML(const TXMLGenes& Genes, TQXGAIndividual& Item);
  /// Replaces the genes; one whose name was there before comes back as the same object. The owner's
  /// `GeneSize` becomes the attribute "Size" first; limits come from sizes and signs, and the size of an
  /// enumerated gene from its texts; under gdAlwaysValid the limits are those of the document. When something
  /// raises, genes and owner are as they were.
  void LoadFromXML(const TXMLGenoType& GenoType);

protected:
  /// Raises std::length_error for a gene that makes the genotype too long.
  bool Accepts(const TCollectionItem& Item) const override;
  void Notify(TCollectionItem& Item, TCollectionNotification Action) override;
  void Update(TCollectionItem* Item) override;

private:
  friend class TQXGAGene;

  void UpdateOffsets(int Start);
  // What stands at `Index` and behind it is not known to follow the gene before.
  void OffsetsUnknownFrom(int Index);
  // Raises std::length_error when the genotype would become too long by a gene's new size.
  void CheckGrowth(const TQXGAGene& Gene, int OldSize, int NewSize) const;
  // The first bit behind a gene; raises std::length_error when it cannot be told.
  static int EndOf(const TQXGAGene& Gene);
  [[noreturn]] static void RaiseTooLong(const TQXGAGene& Gene);

  TQXCustomGeneticAlgorithm* FAlgorithm;
  TGADecoding FDecoding = gdStrict;
  // Genes known to stand end to end, counted from the first; what lies behind is computed when it is due.
  int FOffsetsKnown = 0;
};

} // namespace qx
