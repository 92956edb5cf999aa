#include <qx/symbolic_regression/LinearProgram.h>

#include <algorithm>
#include <span>
#include <type_traits>

namespace qx {

void TRowExecution::Prepare(const TQXDataSet& Data) {
  FData = &Data;
  FContext.Values().Clear();
  for (int I = 0; I < Data.ColumnCount(); ++I) {
    FContext.Values().Add(Data.ColumnName(I), 0);
  }
}

TGAFloat TRowExecution::Execute(TBatchPlan::TNode& Node, std::size_t Row) {
  for (int I = 0; I < FData->ColumnCount(); ++I) {
    FContext.Values().SetItems(FData->ColumnName(I), FData->Column(I)[Row]);
  }
  return Node.Execute(&FContext);
}

template <class T>
void TLinearProgram<T>::Run(std::size_t Rows, TRowExecution& Execution) {
  for (std::size_t I = Stages.size(); I-- > 0;) {
    if (Stages[I].WholeColumns) {
      RunCall(Steps[Stages[I].FirstStep], 0, Rows, Execution);
    } else {
      RunSteps(Stages[I], Rows, Execution);
    }
  }
}

template <class T>
void TLinearProgram<T>::RunSteps(const TProgramStage& Stage, std::size_t Rows, TRowExecution& Execution) {
  TBlockArguments<T> Arguments;
  const auto StageSteps = std::span(Steps).subspan(Stage.FirstStep, Stage.StepCount);
  for (std::size_t Row = 0; Row < Rows; Row += BlockRows<T>) {
    const std::size_t Count = std::min(Rows - Row, BlockRows<T>);
    Arguments.Units = PaddedRows<T>(Count) / BlockUnit<T>;
    for (const TProgramStep<T>& Step : StageSteps) {
      if (Step.Kernel == nullptr) [[unlikely]] {
        RunCall(Step, Row, Count, Execution);
        continue;
      }
      Arguments.Results = Step.Results + Row * Step.ResultRowStep;
      Arguments.X = Step.Operands[0].At(Row);
      Arguments.Y = Step.Operands[1].At(Row);
      Arguments.Z = Step.Operands[2].At(Row);
      Step.Kernel(Arguments);
    }
  }
}

// Calls code of the host, which works in double precision.
template <class T>
void TLinearProgram<T>::RunCall(const TProgramStep<T>& Step, std::size_t Row, std::size_t Rows,
                                TRowExecution& Execution) {
  if (Rows == 0) {
    return;
  }
  TProgramCall<T>& Call = Calls[static_cast<std::size_t>(Step.Call)];
  T* const Results = Step.Results + Row * Step.ResultRowStep;
  if (Call.Function == nullptr) {
    for (std::size_t I = 0; I < Rows; ++I) {
      Results[I] = static_cast<T>(Execution.Execute(*Call.Node, Row + I));
    }
  } else {
    Call.Spans.clear();
    Call.Reals.resize(Call.Arguments.size() + 1);
    for (std::size_t I = 0; I < Call.Arguments.size(); ++I) {
      const T* const Values = Call.Arguments[I].At(Row).Values;
      Call.Reals[I].assign(Values, Values + Rows);
      Call.Spans.emplace_back(Call.Reals[I]);
    }
    std::vector<double>& Reals = Call.Reals.back();
    Reals.assign(Rows, 0);
    (*Call.Function)(Call.Spans, Reals);
    std::ranges::transform(Reals, Results, [](double Value) { return static_cast<T>(Value); });
  }
  std::fill(Results + Rows, Results + PaddedRows<T>(Rows), Results[Rows - 1]);
}

template struct TLinearProgram<double>;
template struct TLinearProgram<float>;

} // namespace qx
