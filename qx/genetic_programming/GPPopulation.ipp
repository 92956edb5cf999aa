#pragma once

// Definitions of GPPopulation.h.

#include <qx/genetic_programming/GPIndividual.ipp>
#include <qx/genetic_programming/GPPopulation.h>

namespace qx::generics {

template <class T>
TQXGPPopulation<T>::TQXGPPopulation(TPersistent* Owner, TItemClass<TQXGPIndividual<T>> ItemClass)
    : TBase(Owner, ItemClass), FEngine(dynamic_cast<IQXGeneticProgramEngine<T>*>(Owner)) {}

template <class T>
void TQXGPPopulation<T>::LoadFromXML(const TXMLNode& Node) {
  if (TXMLGPPopulation::Binds(Node)) {
    LoadFromXML(TXMLGPPopulation(Node));
  }
}

template <class T>
void TQXGPPopulation<T>::SaveToXML(const TXMLNode& Node) {
  if (TXMLGPPopulation::Binds(Node)) {
    SaveToXML(TXMLGPPopulation(Node));
  }
}

template <class T>
void TQXGPPopulation<T>::LoadFromXML(const TXMLGPPopulation& Element) {
  const TXMLReadScope Reading(Element);
  this->Reload([&] {
    for (const TXMLIndividualType& Individual : Element.Individual()) {
      this->Add().LoadFromXML(Individual);
    }
  });
}

template <class T>
void TQXGPPopulation<T>::SaveToXML(const TXMLGPPopulation& Element) {
  for (int I = 0; I < this->Count(); ++I) { // evaluating a member may add others
    this->Items(I).SaveToXML(Element.AddIndividual());
  }
}

} // namespace qx::generics
