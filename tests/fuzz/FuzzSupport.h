#pragma once

// What the fuzz targets share: a component that has a state to lose, and what must hold after every load.

#include <qx/genetic_algorithm/QXGeneticAlgorithm.h>
#include <qx/platform/Filer.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <sstream>
#include <string>

namespace qx::fuzz {

inline void Require(bool Condition, const char* What) {
  if (!Condition) {
    std::fprintf(stderr, "%s\n", What);
    std::abort();
  }
}

/// A component with genes, two generations and statistics.
class TLoaded {
public:
  TLoaded() {
    DefaultXMLLimits.Bytes = 1 << 16; // and as many bits in all chromosomes
    TQXGAGene& Number = Component.Genes().Add();
    Number.SetName("number");
    Number.SetGeneType(gtInteger);
    Number.SetSize(8);
    Component.SetInitialPopulation(3);
    Component.SetInitialDuplicatesRetries(0);
    Component.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) {
      Fitness = Item.Bits().CountOnes();
    };
    Component.Initialize();
  }

  /// Everything that a document and a component stream tell of the component.
  std::string State() {
    std::ostringstream Text;
    WriteComponent(Text, Component);
    for (TQXGAIndividual& Individual : *Component.PreviousGeneration()) {
      Text << Individual.ToString() << '\n';
    }
    Text << Component.MaxFitness() << ' ' << Component.AvgFitness() << ' ' << Component.Initialized() << ' '
         << (Component.FittestIndividual() != nullptr ? Component.FittestIndividual()->Index() : -1);
    return Text.str();
  }

  TQXGeneticAlgorithm Component;
};

/// Runs a load. When it raises, nothing may have changed; when it succeeds, the component can be evaluated,
/// and what it saves, if it can be saved, loads again.
template <class TLoad>
void LoadAndCheck(TLoad Load) {
  TLoaded Loaded;
  const std::string Before = Loaded.State();
  try {
    Load(Loaded.Component);
  } catch (const std::exception&) {
    Require(Loaded.State() == Before, "a load that failed has changed the component");
    return;
  }
  Loaded.Component.EvaluateFitness();
  std::stringstream Saved;
  try {
    Loaded.Component.SaveToStream(Saved);
  } catch (const std::exception&) {
    return; // a gene that holds none of its texts
  }
  if (Saved.str().size() <= DefaultXMLLimits.Bytes) {
    TQXGeneticAlgorithm Again;
    Again.LoadFromStream(Saved);
  }
}

} // namespace qx::fuzz
