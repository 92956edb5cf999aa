#pragma once

#include <qx/foundation/QXGAConsts.h>

namespace qx {

/// The one place that decides which of two fitnesses is better: -1 when `Left` is, +1 when `Right` is, 0 when
/// neither. A fitness that is not a number is worse than every number, and no worse than another such.
inline int CompareFitnesses(TGAFitness Left, TGAFitness Right, bool Maximize) {
  const int Order = static_cast<int>(Left > Right) - static_cast<int>(Left < Right);
  if (Order == 0) { // equal, or not comparable
    return static_cast<int>(Left != Left) - static_cast<int>(Right != Right);
  }
  return Maximize ? -Order : Order;
}

} // namespace qx
