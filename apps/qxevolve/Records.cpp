#include "Records.h"

#include "Output.h"
#include <qx/symbolic_regression/Formula.h>

#include <fmt/format.h>

namespace qxevolve {

namespace {

std::string ModelJSON(const qx::TRegressionModel& Model) {
  return fmt::format(R"({{"size":{},"error":{},"test_error":{},"formula":{}}})", Model.Size(),
                     JSON(Model.Error), JSON(Model.TestError),
                     JSON(qx::TQXFormula(Model).Simplify().Text(qx::fsInfix)));
}

} // namespace

std::string RecordJSON(const qx::TRegressionRecord& Record, double RunError, int RunSize) {
  const qx::TRegressionRecord& R = Record;
  return fmt::format(
      R"({{"event":"generation","generation":{},"best_error":{},"mean_error":{},"run_error":{},"run_size":{},)"
      R"("test_error":{},"unfit":{},"diversity":{},"size":{{"min":{},"mean":{},"max":{}}},)"
      R"("depth":{{"min":{},"mean":{},"max":{}}},"evaluations":{},"seconds":{}}})"
      "\n",
      R.Generation, JSON(R.BestError), JSON(R.MeanError), JSON(RunError), RunSize, JSON(R.BestTestError),
      R.UnfitCount, JSON(R.Diversity), R.MinSize, JSON(R.AvgSize), R.MaxSize, R.MinDepth, JSON(R.AvgDepth),
      R.MaxDepth, R.Evaluations, JSON(R.Seconds));
}

std::string ResultJSON(const TRun& Run, qx::TQXSymbolicRegression& Regression, const std::string& EndedBy) {
  const qx::TRegressionModel& Best = ModelOfSize(Regression, Run.ChosenSize);
  std::string Front;
  for (const qx::TRegressionModel& Model : Regression.Front()) {
    Front += (Front.empty() ? "" : ",") + ModelJSON(Model);
  }
  const auto RSquared = [&](const qx::TQXDataSet& Data) {
    return Data.RowCount() > 0 ? JSON(1 - Regression.Error(Best, Data, qx::emR2)) : "null";
  };
  return fmt::format(
      R"({{"event":"result","target":{},"chosen":{},"r2":{},"test_r2":{},"front":[{}],"seed":{},)"
      R"("generations":{},"seconds":{},"ended_by":{}}})"
      "\n",
      JSON(Run.Target), ModelJSON(Best), RSquared(Regression.TrainingData()), RSquared(Regression.TestData()),
      Front, Run.Seed, Regression.Generation(), JSON(Run.History.empty() ? 0 : Run.History.back().Seconds),
      JSON(EndedBy));
}

} // namespace qxevolve
