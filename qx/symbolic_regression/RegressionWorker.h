#pragma once

#include <qx/symbolic_regression/ConstantRefinement.h>
#include <qx/symbolic_regression/SymbolicRegression.h>

#include <vector>

namespace qx {

/// What one thread needs to evaluate programs.
class TQXSymbolicRegression::TWorker {
public:
  void Prepare(const TQXSymbolicRegression& Regression, TBatchPlan::TInstructions& Set) {
    FSettings = &Regression.FSettings;
    FTarget = &Regression.FTraining.Target;
    if (FSettings->SinglePrecision) {
      FSingle.Prepare(Regression.FTraining.Inputs(), Set, &Regression.FFunctions);
    } else {
      FDouble.Prepare(Regression.FTraining.Inputs(), Set, &Regression.FFunctions);
    }
    FRefinement.Prepare(Plan(), Regression.FTraining.Inputs(), *FTarget);
  }

  bool CallsHost(TNode& Program) const { return Plan().CallsHost(Program); }

  void Evaluate(TJob& Job) {
    if (FSettings->SinglePrecision) {
      Judge(Job, FSingle.Evaluate(*Job.Program).data());
    } else {
      Judge(Job, FDouble.Evaluate(*Job.Program).data());
    }
  }

  /// Better constants for the program; see `TConstantRefinement`.
  std::vector<TConstantRefinement::TConstant> Refine(TNode& Program) {
    const auto Constants =
        FRefinement.Refine(Program, FSettings->LinearScaling || FSettings->ErrorMeasure == emCorrelation,
                           FSettings->RefinementSteps);
    return {Constants.begin(), Constants.end()};
  }

private:
  const TBatchPlan& Plan() const { return FSettings->SinglePrecision ? FSingle.Plan() : FDouble.Plan(); }

  template <class T>
  void Judge(TJob& Job, const T* Predictions) const {
    Job.Scaling = FSettings->LinearScaling ? FTarget->ScalingFor(Predictions) : TLinearScaling();
    Job.Error = FTarget->Error(FSettings->ErrorMeasure, Predictions, Job.Scaling);
  }

  const TSettings* FSettings = nullptr;
  const TRegressionTarget* FTarget = nullptr;
  TQXBatchEvaluator<double> FDouble;
  TQXBatchEvaluator<float> FSingle;
  TConstantRefinement FRefinement;
};

} // namespace qx
