#include "Choice.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qxevolve {

namespace {

using qx::TRegressionFront;
using qx::TRegressionModel;

// Errors below are those of rounding.
constexpr double LeastError = 1e-20;

int ChosenByTest(const TRegressionFront& Front) {
  constexpr double Tolerance = 1.1;
  double Least = std::numeric_limits<double>::infinity();
  for (const TRegressionModel& Model : Front) {
    Least = std::fmin(Least, Model.TestError);
  }
  for (const TRegressionModel& Model : Front) {
    if (Model.TestError <= std::max(Tolerance * Least, LeastError)) {
      return Model.Size();
    }
  }
  return Front.Last()->Size();
}

} // namespace

int ChosenSize(qx::TQXSymbolicRegression& Regression) {
  const TRegressionFront& Front = Regression.Front();
  if (Front.Empty()) {
    return 0;
  }
  if (Regression.TestData().RowCount() > 0) {
    return ChosenByTest(Front);
  }
  int Chosen = Front.Last()->Size();
  double Steepest = 0;
  double FormerError = 1; // of a constant
  int FormerSize = 0;
  for (const TRegressionModel& Model : Front) {
    const double Error = std::max(Regression.Error(Model, Regression.TrainingData(), qx::emNMSE), LeastError);
    const double Slope = std::log(FormerError / Error) / (Model.Size() - FormerSize);
    if (Slope > Steepest) {
      Steepest = Slope;
      Chosen = Model.Size();
    }
    FormerError = Error;
    FormerSize = Model.Size();
  }
  return Chosen;
}

} // namespace qxevolve
