#include <qx/symbolic_regression/ConstantRefinement.h>

#include <algorithm>
#include <cmath>
#include <functional>

namespace qx {

void TConstantRefinement::Prepare(const TBatchPlan& Plan, const TQXDataSet& Data,
                                  const TRegressionTarget& Target) {
  FPlan = &Plan;
  FData = &Data;
  FTarget = &Target;
  FRows = PaddedRows<double>(Target.RowCount());
  FPredictions.assign(FRows, 0);
  FValues.SetLength(BlockLength);
  FDerivatives.SetLength(BlockLength);
  FColumns.SetLength(FRows);
}

auto TConstantRefinement::Refine(TNode& Program, bool Scaled, int Steps) -> std::span<const TConstant> {
  FScaled = Scaled;
  if (!Flatten(Program)) {
    return {};
  }
  constexpr double FirstDamping = 1e-2;
  constexpr double DampingFactor = 10;
  constexpr double Negligible = 1e-12;
  double Damping = FirstDamping;
  double Least = ErrorWith(FBest);
  bool Improved = false;
  bool Linear = false; // whether the equations are those of the best values
  for (int Step = 0; Step < Steps && std::isfinite(Least) && Least > 0; ++Step) {
    if (!Linear) {
      Linearize();
      Linear = true;
    }
    double Reached = Least;
    if (FEquations.Solve(Damping, FTrial)) {
      FTrial.resize(FBest.size());
      std::ranges::transform(FTrial, FBest, FTrial.begin(), std::plus<>());
      Reached = ErrorWith(FTrial);
    }
    if (!(Reached < Least)) { // NaN is no better
      Damping *= DampingFactor;
      continue;
    }
    const bool Converged = Least - Reached <= Negligible * Least;
    FBest.swap(FTrial);
    Least = Reached;
    Improved = true;
    Linear = false;
    Damping /= DampingFactor;
    if (Converged) {
      break;
    }
  }
  if (!Improved) {
    return {};
  }
  for (std::size_t I = 0; I < FBest.size(); ++I) {
    FConstants[I].Value = FBest[I];
  }
  return FConstants;
}

// Lists the nodes, each before its arguments; tells whether there are constants that can be refined.
bool TConstantRefinement::Flatten(TNode& Program) {
  FSteps.clear();
  FConstants.clear();
  FBest.clear();
  FPending.assign(1, &Program);
  while (!FPending.empty()) {
    TNode& Node = *FPending.back();
    FPending.pop_back();
    const TBatchPlan::TEntry& Entry = FPlan->EntryOf(Node);
    if (Entry.Action > baNodeValue) {
      return false;
    }
    int Constant = -1;
    if (Entry.Action == baNodeValue) {
      Constant = static_cast<int>(FConstants.size());
      FConstants.push_back({&Node, Node.Value()});
      FBest.push_back(Node.Value());
    }
    FSteps.push_back({&Entry, {}, {}, Constant, Constant >= 0});
    for (auto I = static_cast<std::size_t>(Entry.Arity); I-- > 0;) {
      FPending.push_back(Node.Slots()[I]);
    }
  }
  FindArguments();
  return !FConstants.empty() && FConstants.size() <= MostConstants && FRows > 0;
}

// From the last step to the first: the arguments of a step are those that lie on the stack.
void TConstantRefinement::FindArguments() {
  FStack.clear();
  for (std::size_t I = FSteps.size(); I-- > 0;) {
    TStep& Step = FSteps[I];
    for (int Argument = 0; Argument < Step.Entry->Arity; ++Argument) {
      Step.Arguments[Argument] = FStack.back();
      Step.Varies |= FSteps[FStack.back()].Varies;
      FStack.pop_back();
    }
    FStack.push_back(I);
  }
}

// The sum of squared errors with those constants; leaves the predictions and their scaling.
double TConstantRefinement::ErrorWith(std::span<const double> Values) {
  constexpr std::size_t Unit = BlockUnit<double>;
  FUnits.resize((Values.size() + 1) * Unit);
  for (std::size_t I = 0; I < Values.size(); ++I) {
    std::fill_n(FUnits.begin() + static_cast<std::ptrdiff_t>(I * Unit), Unit, Values[I]);
  }
  for (std::size_t Row = 0; Row < FRows; Row += BlockLength) {
    const std::size_t Units = std::min(BlockLength, FRows - Row) / Unit;
    RunBlock(Row, Units);
    TBlockArguments<double> Copy;
    Copy.Results = FPredictions.data() + Row;
    Copy.X = FSteps.front().Values;
    Copy.Units = Units;
    BlockKernels<double>().Operations[boCopy](Copy);
  }
  FScaling = FScaled ? FTarget->ScalingFor(FPredictions.data()) : TLinearScaling();
  return FTarget->SquaredError(FPredictions.data(), FScaling);
}

// Computes the values of all steps.
void TConstantRefinement::RunBlock(std::size_t Row, std::size_t Units) {
  constexpr std::size_t Unit = BlockUnit<double>;
  for (std::size_t I = FSteps.size(); I-- > 0;) {
    TStep& Step = FSteps[I];
    if (Step.Constant >= 0) {
      Step.Values = {FUnits.data() + static_cast<std::size_t>(Step.Constant) * Unit, 0};
    } else if (Step.Entry->Action == baColumn) {
      Step.Values = {FData->Column(Step.Entry->Column).data() + Row, Unit};
    } else {
      double* const Results = FValues.Block(I);
      Step.Values = {Results, Unit};
      if (Step.Entry->Action == baValue) {
        std::fill_n(Results, Units * Unit, Step.Entry->Value);
        continue;
      }
      TBlockArguments<double> Arguments;
      TBlockOperand<double>* const Places[] = {&Arguments.X, &Arguments.Y, &Arguments.Z};
      for (int Argument = 0; Argument < Step.Entry->Arity; ++Argument) {
        *Places[Argument] = FSteps[Step.Arguments[Argument]].Values;
      }
      Arguments.Results = Results;
      Arguments.Units = Units;
      BlockKernels<double>().Operations[Step.Entry->Operation](Arguments);
    }
  }
}

// Computes what the program's value is by each constant, for the block that `RunBlock` has computed.
void TConstantRefinement::PassBack(std::size_t Row, std::size_t Units) {
  constexpr std::size_t Unit = BlockUnit<double>;
  std::fill_n(FDerivatives.Block(0), Units * Unit, 1.0);
  for (std::size_t I = 0; I < FSteps.size(); ++I) {
    const TStep& Step = FSteps[I];
    if (Step.Constant >= 0) {
      std::copy_n(FDerivatives.Block(I), Units * Unit,
                  FColumns.Block(static_cast<std::size_t>(Step.Constant)) + Row);
    } else if (Step.Varies) {
      const std::size_t Spare = FSteps.size(); // blocks for arguments that do not matter
      double* By[] = {FDerivatives.Block(Spare), FDerivatives.Block(Spare + 1),
                      FDerivatives.Block(Spare + 2)};
      TBlockOperand<double> Values[] = {Step.Values, Step.Values, Step.Values};
      for (int Argument = 0; Argument < Step.Entry->Arity; ++Argument) {
        const std::size_t Place = Step.Arguments[Argument];
        Values[Argument] = FSteps[Place].Values;
        if (FSteps[Place].Varies) {
          By[Argument] = FDerivatives.Block(Place);
        }
      }
      BlockKernels<double>().Derivatives[Step.Entry->Operation]({Values[0], Values[1], Values[2],
                                                                 Step.Values.Values, FDerivatives.Block(I),
                                                                 By[0], By[1], By[2], Units});
    }
  }
}

// The normal equations at the best values.
void TConstantRefinement::Linearize() {
  ErrorWith(FBest);
  const std::size_t Constants = FBest.size();
  for (std::size_t Row = 0; Row < FRows; Row += BlockLength) {
    const std::size_t Units = std::min(BlockLength, FRows - Row) / BlockUnit<double>;
    RunBlock(Row, Units);
    PassBack(Row, Units);
  }
  FColumnCount = Constants + (FScaled ? 2 : 0);
  for (std::size_t I = 0; FScaled && I < Constants; ++I) {
    double* const Column = FColumns.Block(I);
    std::transform(Column, Column + FRows, Column, [&](double Value) { return FScaling.Scale * Value; });
  }
  if (FScaled) {
    std::fill_n(FColumns.Block(Constants), FRows, 1.0);
    std::ranges::copy(FPredictions, FColumns.Block(Constants + 1));
  }
  double* const Errors = FColumns.Block(FColumnCount);
  const auto Targets = FTarget->Targets();
  std::fill_n(Errors, FRows, 0.0);
  for (std::size_t Row = 0; Row < Targets.size(); ++Row) {
    Errors[Row] = Targets[Row] - (FScaling.Offset + FScaling.Scale * FPredictions[Row]);
  }
  SetNormalEquations();
}

void TConstantRefinement::SetNormalEquations() {
  FEquations.SetSize(FColumnCount);
  for (std::size_t I = 0; I < FColumnCount; ++I) {
    for (std::size_t J = 0; J <= I; ++J) {
      FEquations.Matrix(I, J) = FTarget->Product(FColumns.Block(I), FColumns.Block(J));
    }
    FEquations.Right(I) = FTarget->Product(FColumns.Block(I), FColumns.Block(FColumnCount));
  }
}

} // namespace qx
