#pragma once

#include <qx/foundation/QXGAConsts.h>

#include <cmath>

namespace qx {

/// Extremes and sum of the fitnesses of a population. A fitness that is not a number is counted and otherwise
/// left out.
struct TFitnessStatistics {
  TGAFitness Max = 0;
  TGAFitness Min = 0;
  TGAFitness Sum = 0;
  int Numbers = 0;
  int NotNumbers = 0;

  void Add(TGAFitness Fitness) {
    if (std::isnan(Fitness)) {
      ++NotNumbers;
    } else if (Numbers++ == 0) {
      Max = Min = Sum = Fitness;
    } else {
      Sum += Fitness;
      if (Fitness < Min) {
        Min = Fitness;
      } else if (Fitness > Max) {
        Max = Fitness;
      }
    }
  }

  /// Mean over the `Count` individuals that the population has now; the middle of the extremes when there is
  /// none to divide by.
  TGAFitness Average(int Count) const {
    const int Divisor = Count - NotNumbers;
    return Divisor > 0 ? Sum / Divisor : (Max - Min) / 2 + Min;
  }

  TGAFitness Normalized(TGAFitness Fitness) const { return Sum == 0 ? 0 : Fitness / Sum; }
};

} // namespace qx
