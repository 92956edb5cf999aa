#pragma once

#include <qx/symbolic_regression/ErrorMeasure.h>
#include <qx/symbolic_regression/LinearProgram.h>
#include <qx/symbolic_regression/NormalEquations.h>

#include <span>
#include <vector>

namespace qx {

/// Finds values for the constants of a program that lower its sum of squared errors, by Levenberg's and
/// Marquardt's method (Marquardt 1963), with exact derivatives by reverse accumulation over blocks of rows.
/// In double precision.
class TConstantRefinement {
public:
  using TNode = TBatchPlan::TNode;

  /// Gets ready for programs that the plan knows. All three must outlive the refinements.
  void Prepare(const TBatchPlan& Plan, const TQXDataSet& Data, const TRegressionTarget& Target);

  /// A constant of the program and the value that it should have.
  struct TConstant {
    TNode* Node;
    double Value;
  };
  /// The better values, until the next call, after so many steps at most, of which each evaluates the program
  /// once or twice; none when no step was better, when the program has no constants or more than
  /// `MostConstants`, and when it has instructions without a kernel. With `Scaled`, errors are those of the
  /// best linear scaling. The program itself is not changed.
  std::span<const TConstant> Refine(TNode& Program, bool Scaled, int Steps);

  static constexpr std::size_t MostConstants = 32;

private:
  static constexpr std::size_t BlockLength = 128; // rows; there are two blocks for each node
  struct TStep {
    const TBatchPlan::TEntry* Entry;
    TBlockOperand<double> Values; // in the block at hand
    std::size_t Arguments[3];     // places among the steps
    int Constant;                 // place of the constant that the node is, or -1
    bool Varies;                  // with a constant, here or below
  };

  bool Flatten(TNode& Program);
  void FindArguments();
  double ErrorWith(std::span<const double> Values);
  void RunBlock(std::size_t Row, std::size_t Units);
  void PassBack(std::size_t Row, std::size_t Units);
  void Linearize();
  void SetNormalEquations();

  const TBatchPlan* FPlan = nullptr;
  const TQXDataSet* FData = nullptr;
  const TRegressionTarget* FTarget = nullptr;
  std::size_t FRows = 0; // padded
  bool FScaled = false;
  std::vector<TStep> FSteps; // each before those of its arguments
  std::vector<TNode*> FPending;
  std::vector<std::size_t> FStack;
  std::vector<TConstant> FConstants;
  std::vector<double> FBest;
  std::vector<double> FTrial;
  TAlignedVector<double> FUnits; // one for each constant
  TBlockPool<double> FValues;
  TBlockPool<double> FDerivatives;
  TAlignedVector<double> FPredictions;
  TLinearScaling FScaling;
  // What the scaled prediction is by each constant and then, where it is scaled, by offset and scale; and at
  // last the errors.
  TBlockPool<double> FColumns;
  std::size_t FColumnCount = 0;
  TNormalEquations FEquations;
};

} // namespace qx
