#pragma once

#include <qx/engine/Population.h>
#include <qx/genetic_programming/GPIndividual.h>

namespace qx::generics {

/// A population of programs. Its owner, when it is an engine, makes their nodes.
template <class T>
class TQXGPPopulation : public TTypedCollection<TQXGPIndividual<T>, TQXPopulation> {
  using TBase = TTypedCollection<TQXGPIndividual<T>, TQXPopulation>;

public:
  explicit TQXGPPopulation(TPersistent* Owner,
                           TItemClass<TQXGPIndividual<T>> ItemClass = ItemClassOf<TQXGPIndividual<T>>());

  /// The owner when it is an engine, else nullptr.
  IQXGeneticProgramEngine<T>* Engine() const { return FEngine; }

  /// Read and write the element "Population"; any other one is passed over.
  void LoadFromXML(const TXMLNode& Node) override;
  void SaveToXML(const TXMLNode& Node) override;
  /// Replaces the members by one for each individual. When that raises, the former members are back.
  virtual void LoadFromXML(const TXMLGPPopulation& Element);
  virtual void SaveToXML(const TXMLGPPopulation& Element);

private:
  IQXGeneticProgramEngine<T>* FEngine;
};

extern template class TQXGPPopulation<TGAFloat>;
extern template class TQXGPPopulation<Variant>;

} // namespace qx::generics
