#pragma once

// Definitions of GeneticProgramming.h: what keeps programs small, and the statistics of their sizes.

#include <qx/genetic_programming/Covariance.h>
#include <qx/genetic_programming/GeneticProgramming.h>
#include <qx/platform/Random.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace qx::generics {

template <class T>
int TQXCustomGeneticProgramming<T>::SizeOf(TIndividual& Individual) {
  const TNode* const Root = Individual.DNA();
  return Root != nullptr ? Root->Size() : 0;
}

template <class T>
int TQXCustomGeneticProgramming<T>::DepthOf(TIndividual& Individual) {
  const TNode* const Root = Individual.DNA();
  return Root != nullptr ? Root->Depth() : 0;
}

// --- After reproduction ------------------------------------------------------------------------------------

template <class T>
bool TQXCustomGeneticProgramming<T>::DoReproduce(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                                 TQXIndividual& Child1) {
  const bool Performed = TBase::DoReproduce(Parent1, Parent2, Child1);
  DoAntiBloating(static_cast<TIndividual&>(Parent1), static_cast<TIndividual&>(Parent2),
                 static_cast<TIndividual&>(Child1), Performed);
  return Performed;
}

template <class T>
bool TQXCustomGeneticProgramming<T>::DoReproduce(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                                 TQXIndividual& Child1, TQXIndividual& Child2) {
  const bool Performed = ReproduceTwo(Parent1, Parent2, Child1, Child2);
  auto& First = static_cast<TIndividual&>(Parent1);
  auto& Second = static_cast<TIndividual&>(Parent2);
  DoAntiBloating(First, Second, static_cast<TIndividual&>(Child1), Performed);
  DoAntiBloating(Second, First, static_cast<TIndividual&>(Child2), Performed);
  return Performed;
}

// The second child begins as a copy of the first parent and becomes one of the second parent when the two are
// crossed. The first copy is put off, so that it is not made where nobody sees it.
template <class T>
bool TQXCustomGeneticProgramming<T>::ReproduceTwo(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                                  TQXIndividual& Child1, TQXIndividual& Child2) {
  const TQXIndividual* const Children[] = {&Child1, &Child2};
  const bool Apart = &Child1 != &Child2 && std::count(Children, Children + 2, &Parent1) == 0 &&
                     std::count(Children, Children + 2, &Parent2) == 0;
  if (!Apart || this->OnInitializeChild || this->TQXCustomGeneticComponent::OnCrossover ||
      !this->Operations().Contains(goCrossover)) {
    return TBase::DoReproduce(Parent1, Parent2, Child1, Child2);
  }
  typename TIndividual::TCopyingLater Later(static_cast<TIndividual&>(Child2));
  const bool Performed = TBase::DoReproduce(Parent1, Parent2, Child1, Child2);
  Later.End();
  return Performed;
}

template <class T>
bool TQXCustomGeneticProgramming<T>::Crossover(TQXIndividual& Parent1, TQXIndividual& Parent2,
                                               TQXIndividual& Child1, TQXIndividual& Child2) {
  const bool Performed = TBase::Crossover(Parent1, Parent2, Child1, Child2);
  static_cast<TIndividual&>(Child2).CopyNow(); // no handler has been called before
  return Performed;
}

template <class T>
void TQXCustomGeneticProgramming<T>::DoAntiBloating(TIndividual& Parent, TIndividual& /*OtherParent*/,
                                                    TIndividual& Child, bool Performed) {
  const auto IsTooLarge = [&] { return SizeOf(Child) > FSettings.BloatLimit; };
  const auto IsTooDeep = [&] { return DepthOf(Child) > FSettings.BloatLimit; };
  bool Refused = false;
  bool Shrinks = false;
  bool Hoists = false;
  switch (FSettings.BloatStrategy) {
  case bsSizeLimit:
    Refused = Performed && IsTooLarge();
    break;
  case bsDepthLimit:
    Refused = Performed && IsTooDeep();
    break;
  case bsShrinkDepth:
    Shrinks = IsTooDeep();
    break;
  case bsShrinkSize:
    Shrinks = IsTooLarge();
    break;
  case bsHoistDepth:
    Hoists = IsTooDeep();
    break;
  case bsHoistSize:
    Hoists = IsTooLarge();
    break;
  default:
    break;
  }
  if (Refused) {
    Child.Assign(Parent);
  } else if (Shrinks) {
    DoShrinkMutation(Child);
  } else if (Hoists) {
    DoHoistMutation(Child);
  }
}

// --- Fitness -----------------------------------------------------------------------------------------------

template <class T>
TGAFitness TQXCustomGeneticProgramming<T>::EvaluateFitness(TQXIndividual& Item, bool Weighted) {
  const typename TBase::TUse Use(*this);
  if (!Weighted && IsRuledOut(static_cast<TIndividual&>(Item))) {
    return this->UnfitFitness();
  }
  return TBase::EvaluateFitness(Item, Weighted);
}

template <class T>
bool TQXCustomGeneticProgramming<T>::IsRuledOut(TIndividual& Individual) {
  switch (FSettings.BloatStrategy) {
  case bsTarpeianSize:
    return static_cast<double>(SizeOf(Individual)) > static_cast<double>(AvgProgramSize()) &&
           Random() < FSettings.TarpeianProbability;
  case bsTarpeianDepth:
    return static_cast<double>(DepthOf(Individual)) > static_cast<double>(AvgProgramDepth()) &&
           Random() < FSettings.TarpeianProbability;
  case bsUnfitSize:
    return SizeOf(Individual) > FSettings.BloatLimit;
  case bsUnfitDepth:
    return DepthOf(Individual) > FSettings.BloatLimit;
  default:
    return false;
  }
}

template <class T>
TGAFitness TQXCustomGeneticProgramming<T>::DoEvaluateWeightedFitness(TQXIndividual& Item) {
  const TGAFitness Fitness = TBase::DoEvaluateWeightedFitness(Item);
  if (this->TQXCustomGeneticComponent::OnEvaluateWeightedFitness) {
    return Fitness;
  }
  auto& Individual = static_cast<TIndividual&>(Item);
  TGAFitness Penalty = 0;
  switch (FSettings.BloatStrategy) {
  case bsSizeParsimonyPressure:
  case bsCovariantSizeParsimonyPressure:
    Penalty = FSettings.ParsimonyCoefficient * SizeOf(Individual);
    break;
  case bsDepthParsimonyPressure:
  case bsCovariantDepthParsimonyPressure:
    Penalty = FSettings.ParsimonyCoefficient * DepthOf(Individual);
    break;
  default:
    break;
  }
  const bool Minimizes = this->FitnessMethod() == fmMinimize || this->FitnessMethod() == fmWeightedMinimize;
  return Minimizes ? Fitness + Penalty : Fitness - Penalty;
}

template <class T>
void TQXCustomGeneticProgramming<T>::DoCalculateWeightedFitnessStatistics() {
  const bool BySize = FSettings.BloatStrategy == bsCovariantSizeParsimonyPressure;
  if (BySize || FSettings.BloatStrategy == bsCovariantDepthParsimonyPressure) {
    std::vector<double> Measures;
    std::vector<double> Fitnesses;
    for (int I = 0; I < this->Population().Count(); ++I) {
      TIndividual& Individual = this->Population()[I];
      const TGAFitness Fitness = Individual.Fitness();
      if (std::isfinite(Fitness)) { // one that is not would make the coefficient NaN
        Measures.push_back(BySize ? SizeOf(Individual) : DepthOf(Individual));
        Fitnesses.push_back(Fitness);
      }
    }
    const double Variance = CoVariance(Measures, Measures);
    FSettings.ParsimonyCoefficient = Variance != 0 ? CoVariance(Measures, Fitnesses) / Variance : 0;
  }
  TBase::DoCalculateWeightedFitnessStatistics();
}

// --- Fair crossover ----------------------------------------------------------------------------------------

// The nodes of a donor whose measures are smaller than, equal to and larger than that of the node that gives
// way.
template <class T>
struct TQXCustomGeneticProgramming<T>::TMeasureCounts {
  int Smaller = 0;
  int Equal = 0;
  int Larger = 0;
  double SmallerSum = 0;
  double LargerSum = 0;
};

template <class T>
bool TQXCustomGeneticProgramming<T>::IsFair() const {
  return FSettings.BloatStrategy == bsSizeFairCrossover || FSettings.BloatStrategy == bsDepthFairCrossover;
}

template <class T>
int TQXCustomGeneticProgramming<T>::FairMeasure(const TNode& Node) const {
  return FSettings.BloatStrategy == bsDepthFairCrossover ? Node.Depth() : Node.Size();
}

template <class T>
auto TQXCustomGeneticProgramming<T>::CountMeasures(std::span<TNode* const> Nodes, int Measure) const
    -> TMeasureCounts {
  TMeasureCounts Counts;
  for (const TNode* const Node : Nodes) {
    const int Other = FairMeasure(*Node);
    if (Other < Measure) {
      ++Counts.Smaller;
      Counts.SmallerSum += Other;
    } else if (Other > Measure) {
      ++Counts.Larger;
      Counts.LargerSum += Other;
    } else {
      ++Counts.Equal;
    }
  }
  return Counts;
}

template <class T>
bool TQXCustomGeneticProgramming<T>::DoFairCrossover(TIndividual& /*Parent1*/, TIndividual& Parent2,
                                                     TIndividual& Child) {
  const std::vector<TNode*>& Donors = Parent2.FlattenedDNA();
  for (;;) {
    TNode* const Receiver = SelectPoint(Child);
    if (Receiver == nullptr || Donors.empty()) {
      return false;
    }
    const int Measure = FairMeasure(*Receiver);
    const TMeasureCounts Counts = CountMeasures(Donors, Measure);
    const TNode* Donor = nullptr;
    if (Counts.Smaller > 0 && Counts.Larger > 0) {
      Donor = &SelectSizeFairNode(Parent2,
                                  CreateSizeFairRoulette(Donors, Measure, Counts.Smaller, Counts.Equal,
                                                         Counts.Larger, Counts.SmallerSum / Counts.Smaller,
                                                         Counts.LargerSum / Counts.Larger));
    } else if (Counts.Equal > 0) {
      int Left = Random(Counts.Equal);
      Donor = *std::find_if(Donors.begin(), Donors.end(),
                            [&](const TNode* Node) { return FairMeasure(*Node) == Measure && Left-- == 0; });
    }
    if (Donor != nullptr) {
      static_cast<void>(Child.Graft(*Receiver, Donor->Clone()));
      return true;
    }
  }
}

// Nodes are told apart by their sizes here, also where the measure is a depth.
template <class T>
std::vector<double>
TQXCustomGeneticProgramming<T>::CreateSizeFairRoulette(std::span<TNode* const> Nodes, int Measure,
                                                       int SmallerCount, int /*EqualCount*/, int LargerCount,
                                                       double SmallerMean, double LargerMean) const {
  const double ForEqual = 1.0 / Measure;
  const double Ratio = LargerMean / SmallerMean;
  const double ForLarger = (1 - ForEqual) / (LargerCount * (Ratio + 1));
  const double ForSmaller = (1 - ForEqual) / (SmallerCount * (Ratio + 1));
  std::vector<double> Roulette;
  Roulette.reserve(Nodes.size());
  double Total = 0;
  for (const TNode* const Node : Nodes) {
    const int Size = Node->Size();
    Roulette.push_back(Size == Measure ? ForEqual : Size > Measure ? ForLarger : ForSmaller);
    Total += Roulette.back();
  }
  double Sum = 0;
  for (double& Entry : Roulette) {
    Sum += Entry / Total;
    Entry = Sum;
  }
  if (!Roulette.empty()) {
    Roulette.back() = 1; // whatever rounding has made of it
  }
  return Roulette;
}

template <class T>
auto TQXCustomGeneticProgramming<T>::SelectSizeFairNode(const TIndividual& Individual,
                                                        std::span<const double> Roulette) const -> TNode& {
  const auto Selected = std::upper_bound(Roulette.begin(), Roulette.end(), Random());
  return *Individual.FlattenedDNA().at(static_cast<std::size_t>(Selected - Roulette.begin()));
}

// --- Selection ---------------------------------------------------------------------------------------------

template <class T>
void TQXCustomGeneticProgramming<T>::SelectTournament(TQXCustomGeneticComponent& Sender,
                                                      TQXPopulation& Population, TQXIndividual*& Parent) {
  if (FSettings.BloatStrategy != bsLexicographicParsimonyPressure) {
    TBase::SelectTournament(Sender, Population, Parent);
    return;
  }
  this->SelectRandom(Sender, Population, Parent);
  for (int I = 1; I < this->TournamentField(); ++I) {
    TQXIndividual* Contender = nullptr;
    this->SelectRandom(Sender, Population, Contender);
    const int Compared = this->CompareFitness(*Parent, *Contender, false);
    if (Compared > 0 || (Compared == 0 && SizeOf(static_cast<TIndividual&>(*Contender)) <
                                              SizeOf(static_cast<TIndividual&>(*Parent)))) {
      Parent = Contender;
    }
  }
}

// --- A generation and its statistics -----------------------------------------------------------------------

template <class T>
void TQXCustomGeneticProgramming<T>::DoEvolve() {
  if (FDiscardDue) {
    DiscardPrograms();
  }
  if (!this->Initialized()) {
    this->Initialize();
  }
  const typename TBase::TUse Use(*this);
  TBase::DoEvolve();
}

template <class T>
void TQXCustomGeneticProgramming<T>::DoEvolveOneStep(int Index) {
  TQXGPPopulation<T>& Population = this->Population();
  for (int Next = Index + 2; Next < std::min(Index + 4, Population.Count()); ++Next) {
    Population[Next].FetchNodes(); // those that the next step overwrites
  }
  TBase::DoEvolveOneStep(Index);
}

template <class T>
void TQXCustomGeneticProgramming<T>::DoStartEvolve() {
  TBase::DoStartEvolve();
  FStatistics = {};
}

template <class T>
auto TQXCustomGeneticProgramming<T>::Statistics() const -> const TProgramStatistics& {
  if (FStatistics.MaxSize == 0) { // they are taken when somebody looks
    const_cast<TQXCustomGeneticProgramming*>(this)->CalculateProgramStats();
  }
  return FStatistics;
}

template <class T>
void TQXCustomGeneticProgramming<T>::CalculateProgramStats() {
  FStatistics = {};
  TQXGPPopulation<T>& Population = this->Population();
  if (Population.Count() == 0) {
    return;
  }
  TProgramStatistics Taken;
  Taken.MinSize = Taken.MaxSize = SizeOf(Population[0]);
  Taken.MinDepth = Taken.MaxDepth = DepthOf(Population[0]);
  std::int64_t Sizes = 0;
  std::int64_t Depths = 0;
  for (TIndividual& Individual : Population) {
    const int Size = SizeOf(Individual);
    const int Depth = DepthOf(Individual);
    Taken.MinSize = std::min(Taken.MinSize, Size);
    Taken.MaxSize = std::max(Taken.MaxSize, Size);
    Taken.MinDepth = std::min(Taken.MinDepth, Depth);
    Taken.MaxDepth = std::max(Taken.MaxDepth, Depth);
    Sizes += Size;
    Depths += Depth;
  }
  Taken.AvgSize = static_cast<float>(static_cast<double>(Sizes) / Population.Count());
  Taken.AvgDepth = static_cast<float>(static_cast<double>(Depths) / Population.Count());
  FStatistics = Taken;
}

} // namespace qx::generics
