#pragma once

#include <qx/platform/Random.h>
#include <qx/symbolic_regression/SymbolicRegression.h>

#include <cmath>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace qx::tests {

/// Rows of y = f(x), x even from -1 to 1, with a second column that does not matter.
inline TQXDataSet DataOf(int Rows, const std::function<double(double)>& Function) {
  std::vector<double> X;
  std::vector<double> Other;
  std::vector<double> Y;
  for (int I = 0; I < Rows; ++I) {
    X.push_back(2.0 * I / (Rows - 1) - 1);
    Other.push_back(2 + std::cos(7 * I));
    Y.push_back(Function(X.back()));
  }
  TQXDataSet Data;
  Data.AddColumn("x", X);
  Data.AddColumn("other", Other);
  Data.AddColumn("y", Y);
  return Data;
}

inline double Wave(double X) { return std::sin(3 * X) + X * X; }

/// Makes a regression that is quick.
inline void Prepare(TQXSymbolicRegression& Regression, int Rows = 40) {
  SeedRandom(1);
  Regression.SetInitialPopulation(60);
  Regression.SetData(DataOf(Rows, Wave), "y");
}

/// What a run has come to, in text.
inline std::string Outcome(TQXSymbolicRegression& Regression) {
  std::ostringstream Text;
  Text.precision(17);
  for (const auto& Individual : Regression.Population()) {
    Text << Individual.DNA()->StateText() << ' ' << Individual.Fitness() << '\n';
  }
  for (const TRegressionModel& Model : Regression.Front()) {
    Text << Model.Program->StateText() << ' ' << Model.Error << ' ' << Model.TestError << ' '
         << Model.Scaling.Offset << ' ' << Model.Scaling.Scale << '\n';
  }
  Text << Regression.Evaluations() << ' ' << Random();
  return Text.str();
}

} // namespace qx::tests
