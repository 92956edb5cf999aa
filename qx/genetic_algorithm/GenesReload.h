#pragma once

// Internal to the genetic algorithm's persistence; not installed.

#include <qx/engine/LoadScope.h>
#include <qx/genetic_algorithm/GAGenes.h>

#include <deque>
#include <map>
#include <string>
#include <string_view>

namespace qx::detail {

/// Replaces the genes of a genotype while it is loaded. A gene whose name the genotype had before comes back
/// as the same object, so that a host may go on using it.
class TGenesReload {
public:
  /// Empties the genotype.
  TGenesReload(TQXGAGenes& Genes, TLoadScope& Load);

  /// Appends a gene that is as a new one.
  TQXGAGene& Add(std::string_view Name);

private:
  // What the genes hold comes back with them when the load fails.
  static TSetAsideItems& SetAside(TQXGAGenes& Genes, TLoadScope& Load);

  TQXGAGenes& FGenes;
  TSetAsideItems& FFormer;
  std::map<std::string, std::deque<int>, std::less<>> FPlaces; // of the former genes, by name
};

} // namespace qx::detail
