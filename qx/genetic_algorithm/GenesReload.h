#pragma once

// Internal to the genetic algorithm's persistence; not installed.

#include <qx/engine/NamedItemsReload.h>
#include <qx/genetic_algorithm/GAGenes.h>

namespace qx::detail {

struct TGeneContent {
  static void Store(TQXGAGene& Target, const TQXGAGene& Source) { Target.Store(Source); }
  static std::string Key(std::string_view Name) { return std::string(Name); }
};

using TGenesReload = TNamedItemsReload<TQXGAGenes, TQXGAGene, TGeneContent>;

} // namespace qx::detail
