// A generation of symbolic regression: evaluated at once, its constants refined, its best models kept.

#include <qx/symbolic_regression/ParallelFor.h>
#include <qx/symbolic_regression/RegressionWorker.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numeric>
#include <utility>

namespace qx {

namespace {

// Stores the values in the constants, and the constants' in their place.
void ExchangeValues(std::vector<TConstantRefinement::TConstant>& Constants) {
  for (auto& Constant : Constants) {
    const double Former = Constant.Node->Value();
    Constant.Node->SetValue(Constant.Value);
    Constant.Value = Former;
  }
}

// Errors that are no numbers come last.
bool IsBetter(double Error, double Other) {
  return Error < Other || (std::isnan(Other) && !std::isnan(Error));
}

} // namespace

double TQXSymbolicRegression::Now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void TQXSymbolicRegression::SetDeadline(double Seconds) {
  FDeadline = Now() + Seconds;
  FIsCutShort = false;
}

// Whether the time is over; what asks does less then.
bool TQXSymbolicRegression::IsLate() {
  const bool Late = FDeadline < std::numeric_limits<double>::infinity() && Now() > FDeadline;
  if (Late) {
    FIsCutShort = true;
  }
  return Late;
}

void TQXSymbolicRegression::Initialize() {
  RequireData();
  ForgetModels();
  FRun = {};
  FStart = Now();
  TQXTypedGeneticProgramming::Initialize();
  TellRecord();
}

void TQXSymbolicRegression::DoEvolve() {
  const bool Stands =
      FSettings.RestartPatience > 0 && FRun.GenerationsWithoutStep >= FSettings.RestartPatience;
  if (Stands && Initialized() && !IsFinished()) {
    FBest.Clear();
    ++FRun.Starts;
    FRun.LeastError = std::numeric_limits<double>::infinity();
    FRun.GenerationsWithoutStep = 0;
    Repopulate();
  }
  TQXTypedGeneticProgramming::DoEvolve();
}

void TQXSymbolicRegression::DoFinishEvolve() {
  TQXTypedGeneticProgramming::DoFinishEvolve();
  TellRecord();
}

bool TQXSymbolicRegression::IsFinished() {
  return (FSettings.StoppingPatience > 0 && FTest.Data.RowCount() > 0 &&
          FRun.GenerationsWithoutBetter >= FSettings.StoppingPatience) ||
         TQXTypedGeneticProgramming::IsFinished();
}

// The most nodes that children may have under bsSizeLimit: one stage, two stages, and so on, until all stages
// up to what is allowed are gone through each time.
int TQXSymbolicRegression::SizeLimit() const {
  constexpr double Least = 12;
  constexpr double Growth = 4.0 / 3;
  if (FSettings.RestartPatience == 0 || BloatLimit() <= Least) {
    return BloatLimit();
  }
  const int Stages = static_cast<int>(std::ceil(std::log(BloatLimit() / Least) / std::log(Growth))) + 1;
  int Stage = FRun.Starts;
  for (int Length = 1; Stage >= Length; Length = std::min(Length + 1, Stages)) {
    Stage -= Length;
  }
  return std::min(BloatLimit(), static_cast<int>(std::lround(Least * std::pow(Growth, Stage))));
}

void TQXSymbolicRegression::LimitSize(TIndividual& Child, TQXIndividual& Parent) {
  if (BloatStrategy() == bsSizeLimit && Child.DNA() != nullptr && Child.DNA()->Size() > SizeLimit()) {
    Child.Assign(Parent);
  }
}

bool TQXSymbolicRegression::DoReproduce(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                        TQXIndividual& Child1) {
  if (IsLate()) {
    Child1.Assign(Parent1);
    return false;
  }
  const bool Performed = TQXTypedGeneticProgramming::DoReproduce(Parent1, Parent2, Child1);
  LimitSize(static_cast<TIndividual&>(Child1), Parent1);
  return Performed;
}

bool TQXSymbolicRegression::DoReproduce(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                                        TQXIndividual& Child2) {
  if (IsLate()) {
    Child1.Assign(Parent1);
    Child2.Assign(Parent2);
    return false;
  }
  const bool Performed = TQXTypedGeneticProgramming::DoReproduce(Parent1, Parent2, Child1, Child2);
  LimitSize(static_cast<TIndividual&>(Child1), Parent1);
  LimitSize(static_cast<TIndividual&>(Child2), Parent2);
  return Performed;
}

bool TQXSymbolicRegression::DoCrossover(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                                        TQXIndividual* Child2) {
  const bool IsFair = BloatStrategy() == bsSizeFairCrossover || BloatStrategy() == bsDepthFairCrossover;
  if (IsFair || CrossoverMethod() != cmSubtree) {
    return TQXTypedGeneticProgramming::DoCrossover(Parent1, Parent2, Child1, Child2);
  }
  auto& Child = static_cast<TIndividual&>(Child1);
  auto& Donor = static_cast<TIndividual&>(Child2 != nullptr ? *Child2 : Parent2);
  TNode* const Mine = Child.SelectNode(SelectionNonTerminalsProbability());
  TNode* const Theirs = Donor.SelectNode(SelectionNonTerminalsProbability());
  if (Mine == nullptr || Theirs == nullptr) {
    return false;
  }
  TNodePointer Former = Child.Replace(*Mine, Theirs->Clone());
  if (Child2 != nullptr) {
    Donor.Replace(*Theirs, std::move(Former));
  }
  return true;
}

void TQXSymbolicRegression::DoCalculateFitnessStatistics() {
  if (HasOwnFitness()) {
    EvaluateGeneration();
  }
  TQXTypedGeneticProgramming::DoCalculateFitnessStatistics();
}

// While it lives, the error of an individual is known.
class TQXSymbolicRegression::TEvaluated {
public:
  TEvaluated(TQXSymbolicRegression& Regression, const TJob& Job) : FRegression(Regression) {
    FRegression.FEvaluated = Job.Individual;
    FRegression.FEvaluatedError = Job.Error;
  }
  TEvaluated(const TEvaluated&) = delete;
  TEvaluated& operator=(const TEvaluated&) = delete;
  ~TEvaluated() { FRegression.FEvaluated = nullptr; }

private:
  TQXSymbolicRegression& FRegression;
};

// While it lives, programs are evaluated: nothing that they need may go.
class TQXSymbolicRegression::TEvaluation {
public:
  explicit TEvaluation(TQXSymbolicRegression& Regression) : FUse(Regression), FCount(Regression.FEvaluating) {
    ++FCount;
  }
  TEvaluation(const TEvaluation&) = delete;
  TEvaluation& operator=(const TEvaluation&) = delete;
  ~TEvaluation() { --FCount; }

private:
  TUse FUse;
  int& FCount;
};

// Evaluates the stale individuals of the population.
void TQXSymbolicRegression::EvaluateGeneration() {
  PrepareWorkers();
  std::vector<TJob> Jobs;
  for (TIndividual& Individual : Population()) {
    if (Individual.NeedFitness() && Individual.DNA() != nullptr) {
      Jobs.push_back({&Individual, Individual.DNA(), {}, 0});
    }
  }
  const std::size_t Count = EvaluateInTime(Jobs);
  FRun.Evaluations += static_cast<std::int64_t>(Count);
  RefineBest(std::span(Jobs).first(Count));
  KeepBest(Jobs);
  for (const TJob& Job : Jobs) {
    const TEvaluated Evaluated(*this, Job);
    Job.Individual->EvaluateFitness();
  }
  UpdateBest(Jobs);
  UpdateFront(Jobs);
}

// Evaluates what there is time for, one block at least; the others have no error. Tells how many it were.
std::size_t TQXSymbolicRegression::EvaluateInTime(std::span<TJob> Jobs) {
  constexpr std::size_t Block = 8192;
  std::size_t Count = 0;
  while (Count < Jobs.size() && (Count == 0 || !IsLate())) {
    const std::size_t Next = std::min(Block, Jobs.size() - Count);
    EvaluateJobs(Jobs.subspan(Count, Next));
    Count += Next;
  }
  for (TJob& Job : Jobs.subspan(Count)) {
    Job.Error = std::numeric_limits<double>::quiet_NaN();
  }
  return Count;
}

void TQXSymbolicRegression::PrepareWorkers() {
  RequireData();
  FWorkers.resize(static_cast<std::size_t>(FThreads));
  for (auto& Worker : FWorkers) {
    if (Worker == nullptr) {
      Worker = std::make_unique<TWorker>();
    }
    Worker->Prepare(*this, Instructions());
  }
}

auto TQXSymbolicRegression::JobFor(TIndividual& Individual) -> TJob {
  TJob Jobs[] = {{&Individual, Individual.DNA(), {}, std::numeric_limits<double>::infinity()}};
  if (Jobs[0].Program == nullptr) {
    return Jobs[0];
  }
  if (FEvaluating > 0) { // a function of the host asks, while the workers are at work
    RequireData();
    const TEvaluation Evaluation(*this);
    TWorker Worker;
    Worker.Prepare(*this, Instructions());
    Worker.Evaluate(Jobs[0]);
    return Jobs[0];
  }
  PrepareWorkers();
  EvaluateJobs(Jobs);
  return Jobs[0];
}

// Programs that call code of the host are evaluated on the caller's thread, after the others.
void TQXSymbolicRegression::EvaluateJobs(std::span<TJob> Jobs) {
  const TEvaluation Evaluation(*this);
  std::vector<TJob*> Own;
  std::vector<TJob*> OfHost;
  for (TJob& Job : Jobs) {
    (FWorkers.front()->CallsHost(*Job.Program) ? OfHost : Own).push_back(&Job);
  }
  ParallelFor(Own.size(), FWorkers.size(), [&](std::size_t Thread, std::size_t Index) {
    if (const std::size_t Next = Index + FWorkers.size(); Next < Own.size()) {
      Own[Next]->Individual->FetchNodes(); // while this one is evaluated
    }
    FWorkers[Thread]->Evaluate(*Own[Index]);
  });
  for (TJob* const Job : OfHost) {
    FWorkers.front()->Evaluate(*Job);
  }
}

// Values are found on all threads, and stored on the caller's.
void TQXSymbolicRegression::RefineBest(std::span<TJob> Jobs) {
  const double Wanted = FSettings.RefinementShare * Population().Count();
  const std::size_t Count = std::min(Jobs.size(), static_cast<std::size_t>(std::ceil(Wanted)));
  if (FSettings.RefinementSteps == 0 || Count == 0) {
    return;
  }
  std::vector<std::size_t> Order(Jobs.size());
  std::iota(Order.begin(), Order.end(), std::size_t(0));
  std::partial_sort(Order.begin(), Order.begin() + static_cast<std::ptrdiff_t>(Count), Order.end(),
                    [&](std::size_t A, std::size_t B) {
                      return IsBetter(Jobs[A].Error, Jobs[B].Error) ||
                             (!IsBetter(Jobs[B].Error, Jobs[A].Error) && A < B);
                    });
  const TEvaluation Evaluation(*this);
  std::vector<std::vector<TConstantRefinement::TConstant>> Found(Count);
  ParallelFor(Count, FWorkers.size(), [&](std::size_t Thread, std::size_t Index) {
    if (!IsLate()) {
      Found[Index] = FWorkers[Thread]->Refine(*Jobs[Order[Index]].Program);
    }
  });
  std::vector<TJob> Refined;
  for (std::size_t I = 0; I < Count; ++I) {
    ExchangeValues(Found[I]);
    if (!Found[I].empty()) {
      Refined.push_back(Jobs[Order[I]]);
    }
  }
  EvaluateJobs(Refined);
  FRun.Evaluations += static_cast<std::int64_t>(Refined.size());
  for (std::size_t I = 0, Next = 0; I < Count; ++I) {
    if (Found[I].empty()) {
      continue;
    }
    const TJob& Job = Refined[Next++];
    if (IsBetter(Job.Error, Jobs[Order[I]].Error)) {
      Jobs[Order[I]] = Job;
    } else { // squares are less, but not what the measure says
      ExchangeValues(Found[I]);
    }
  }
}

// Puts the best program since the last start, if the generation has lost it, in the place of the worst new
// one.
void TQXSymbolicRegression::KeepBest(std::span<TJob> Jobs) {
  if (!FSettings.KeepsBest || FBest.Empty() || Jobs.empty()) {
    return;
  }
  const TRegressionModel& Best = FBest[0];
  for (TIndividual& Individual : Population()) {
    if (!Individual.NeedFitness() && Individual.Fitness() <= Best.Error) {
      return;
    }
  }
  const auto ByError = [](const TJob& A, const TJob& B) { return IsBetter(A.Error, B.Error); };
  if (std::ranges::min_element(Jobs, ByError)->Error <= Best.Error) {
    return;
  }
  TJob& Worst = *std::ranges::max_element(Jobs, ByError);
  Worst.Individual->SetDNA(*Best.Program);
  Worst.Program = Worst.Individual->DNA();
  Worst.Error = Best.Error;
  Worst.Scaling = Best.Scaling;
}

void TQXSymbolicRegression::UpdateBest(std::span<const TJob> Jobs) {
  for (const TJob& Job : Jobs) {
    if (std::isfinite(Job.Error) && (FBest.Empty() || Job.Error < FBest[0].Error)) {
      FBest.Clear();
      FBest.Add({Job.Program->Clone(), Job.Scaling, Job.Error, std::numeric_limits<double>::quiet_NaN(),
                 FColumnNames});
    }
  }
  constexpr double Step = 0.9;
  const bool Steps = !FBest.Empty() && !(FBest[0].Error >= Step * FRun.LeastError);
  if (Steps) {
    FRun.LeastError = FBest[0].Error;
  }
  FRun.GenerationsWithoutStep = Steps ? 0 : FRun.GenerationsWithoutStep + 1;
}

void TQXSymbolicRegression::UpdateFront(std::span<const TJob> Jobs) {
  bool Better = false;
  for (const TJob& Job : Jobs) {
    if (!FFront.Wants(Job.Program->Size(), Job.Error)) {
      continue;
    }
    TRegressionModel Model{Job.Program->Clone(), Job.Scaling, Job.Error,
                           std::numeric_limits<double>::quiet_NaN(), FColumnNames};
    if (FTest.Data.RowCount() > 0) {
      TQXBatchEvaluator<double> Evaluator(FTest.Inputs(), Instructions(), &FFunctions);
      Model.TestError = FTest.Target.Error(FSettings.ErrorMeasure, Evaluator.Evaluate(*Model.Program).data(),
                                           Model.Scaling);
      if (FTested.Empty() || IsBetter(Model.TestError, FTested[0].TestError)) {
        FTested.Clear();
        FTested.Add(Model.Clone());
        Better = true;
      }
    }
    FFront.Add(std::move(Model));
  }
  FRun.GenerationsWithoutBetter = Better ? 0 : FRun.GenerationsWithoutBetter + 1;
}

void TQXSymbolicRegression::TellRecord() {
  if (!OnRecord) {
    return;
  }
  TRegressionRecord Record;
  std::vector<double> Errors;
  for (TIndividual& Individual : Population()) {
    if (Individual.Fitness() < UnfitFitness()) {
      Errors.push_back(Individual.Fitness());
    }
  }
  const auto Count = static_cast<double>(Population().Count());
  Record.Generation = Generation();
  Record.UnfitCount = Population().Count() - static_cast<int>(Errors.size());
  std::ranges::sort(Errors);
  Record.BestError = Errors.empty() ? UnfitFitness() : Errors.front();
  Record.MeanError = Errors.empty() ? UnfitFitness()
                                    : std::accumulate(Errors.begin(), Errors.end(), 0.0) /
                                          static_cast<double>(Errors.size());
  Errors.erase(std::unique(Errors.begin(), Errors.end()), Errors.end());
  Record.Diversity = Count > 0 ? static_cast<double>(Errors.size()) / Count : 0;
  const TRegressionModel* const Best = BestModel();
  Record.BestTestError = Best != nullptr ? Best->TestError : std::numeric_limits<double>::quiet_NaN();
  Record.MinSize = MinProgramSize();
  Record.MaxSize = MaxProgramSize();
  Record.AvgSize = static_cast<double>(AvgProgramSize());
  Record.MinDepth = MinProgramDepth();
  Record.MaxDepth = MaxProgramDepth();
  Record.AvgDepth = static_cast<double>(AvgProgramDepth());
  Record.Evaluations = FRun.Evaluations;
  Record.Seconds = Now() - FStart;
  OnRecord(*this, Record);
}

} // namespace qx
