#pragma once

#include <qx/symbolic_regression/SymbolicRegression.h>

#include <string_view>

namespace qx {

/// The functions that `TQXSymbolicRegression::SetData` declares, the bounds of its constants, and the
/// standard deviation of the steps by which they mutate.
inline constexpr std::string_view RegressionFunctions[] = {"Add",  "Sub", "Mul", "Div", "Square", "Cube",
                                                           "Sqrt", "Sin", "Cos", "Exp", "Log"};
inline constexpr double GreatestConstant = 5;
inline constexpr double ConstantDeviation = 0.5;

/// Calls `Visit(Name, Value, PlainDefault, Default, Setter)` for each inherited setting of a regression that
/// does not begin as that of `Plain`, a component as it is made.
template <class TVisit>
void VisitDefaults(TQXSymbolicRegression& Regression, const TQXGeneticProgramming& Plain, TVisit Visit) {
  using T = TQXSymbolicRegression;
  const T& R = Regression;
  Visit("InitialPopulation", R.InitialPopulation(), Plain.InitialPopulation(), 1000,
        &T::SetInitialPopulation);
  Visit("InitialDuplicatesRetries", R.InitialDuplicatesRetries(), Plain.InitialDuplicatesRetries(), 0,
        &T::SetInitialDuplicatesRetries);
  Visit("SelectionMethod", R.SelectionMethod(), Plain.SelectionMethod(), smTournament,
        &T::SetSelectionMethod);
  Visit("TournamentField", R.TournamentField(), Plain.TournamentField(), 5, &T::SetTournamentField);
  Visit("CrossoverProbability", R.CrossoverProbability(), Plain.CrossoverProbability(), 0.9,
        &T::SetCrossoverProbability);
  Visit("MutationProbability", R.MutationProbability(), Plain.MutationProbability(), 0.3,
        &T::SetMutationProbability);
  Visit("InversionProbability", R.InversionProbability(), Plain.InversionProbability(), 0.05,
        &T::SetInversionProbability);
  Visit("InitializationMethod", R.InitializationMethod(), Plain.InitializationMethod(), imRampedHalfAndHalf,
        &T::SetInitializationMethod);
  Visit("InitializationDepth", R.InitializationDepth(), Plain.InitializationDepth(), 6,
        &T::SetInitializationDepth);
  Visit("BloatStrategy", R.BloatStrategy(), Plain.BloatStrategy(), bsSizeLimit, &T::SetBloatStrategy);
  Visit("BloatLimit", R.BloatLimit(), Plain.BloatLimit(), 50, &T::SetBloatLimit);
  Visit("MutateReplacementWeight", R.MutateReplacementWeight(), Plain.MutateReplacementWeight(), 25,
        &T::SetMutateReplacementWeight);
  Visit("MutateConstantWeight", R.MutateConstantWeight(), Plain.MutateConstantWeight(), 25,
        &T::SetMutateConstantWeight);
  Visit("MutatePointWeight", R.MutatePointWeight(), Plain.MutatePointWeight(), 25, &T::SetMutatePointWeight);
  Visit("UseFitnessCutoff", R.UseFitnessCutoff(), Plain.UseFitnessCutoff(), true, &T::SetUseFitnessCutoff);
  Visit("FitnessCutoff", R.FitnessCutoff(), Plain.FitnessCutoff(), 1e-24, &T::SetFitnessCutoff);
}

} // namespace qx
