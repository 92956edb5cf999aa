// The genetic component's selection: the handler, the built-in methods and what they prepare.

#include <qx/engine/GeneticComponent.h>
#include <qx/foundation/FloatPriorityQueue.h>
#include <qx/platform/Random.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

namespace qx {

namespace {

// Whether the value takes part in a sum of shares at all.
bool IsShare(TGAFitness Value) {
  return !std::isnan(Value) && Value != -std::numeric_limits<TGAFitness>::infinity();
}

// Makes values whose sum is not finite summable: of infinite ones the positive leave nothing to the others
// and the negative are no shares; values that are too large are scaled down. Returns the new sum.
TGAFitness MakeSummable(TGAFitnessArray& Values) {
  TGAFitness Largest = 0;
  for (const TGAFitness Value : Values) {
    Largest = IsShare(Value) ? std::max(Largest, Value) : Largest;
  }
  TGAFitness Total = 0;
  for (TGAFitness& Value : Values) {
    if (!IsShare(Value)) {
      Value = std::numeric_limits<TGAFitness>::quiet_NaN();
      continue;
    }
    if (std::isinf(Largest)) {
      Value = Value == Largest ? 1 : 0;
    } else if (Largest > 0) {
      Value /= Largest;
    }
    Total += Value;
  }
  return Total;
}

// The share of each number when they are all equal; otherwise 0.
TGAFitness EqualShare(const TGAFitnessArray& Values) {
  TFitnessStatistics Statistics;
  for (const TGAFitness Value : Values) {
    Statistics.Add(Value);
  }
  return Statistics.Min == Statistics.Max ? TGAFitness{1} / std::max(Statistics.Numbers, 1) : 0;
}

// Turns values into their shares of the total, added up; one that is not a number gets none. The result is
// the place of the last one whose share is above 0, or -1.
int AccumulateShares(TGAFitnessArray& Values, TGAFitness Total, bool EqualWithoutTotal) {
  if (!std::isfinite(Total)) {
    Total = MakeSummable(Values);
  }
  const TGAFitness WithoutTotal = Total == 0 && EqualWithoutTotal ? EqualShare(Values) : 0;
  TGAFitness Sum = 0;
  int Last = -1;
  for (std::size_t I = 0; I < Values.size(); ++I) {
    if (!std::isnan(Values[I])) {
      const TGAFitness Share = Total == 0 ? WithoutTotal : Values[I] / Total;
      Sum += Share;
      Last = Share > 0 ? static_cast<int>(I) : Last;
    }
    Values[I] = Sum;
  }
  return Last;
}

} // namespace

void TQXCustomGeneticComponent::SetSelectionMethod(TGASelectionMethod Value) {
  if (CheckedEnum(Value, "SelectionMethod") != FSettings.SelectionMethod) {
    FSettings.SelectionMethod = Value;
    BindSelection();
    ForgetSelection();
  }
}

void TQXCustomGeneticComponent::ForgetSelection() {
  FCumulativeFitnesses.clear();
  FElite.reset();
}

// The bound handlers go through the sender's virtual operations, so that an override is what runs.
void TQXCustomGeneticComponent::BindSelection() {
  using TSender = TQXCustomGeneticComponent;
  using TMethod = void (TSender::*)(TSender&, TQXPopulation&, TQXIndividual*&);
  static constexpr TMethod Methods[] = {&TSender::SelectRoulette, &TSender::SelectRandom,
                                        &TSender::SelectTournament, &TSender::SelectStochasticTournament,
                                        &TSender::SelectElitist};
  if (FSettings.SelectionMethod == smCustom) {
    OnSelection.Unbind();
    return;
  }
  OnSelection.Bind([Method = Methods[FSettings.SelectionMethod]](TSender& Sender, TQXPopulation& Population,
                                                                 TQXIndividual*& Parent) {
    (Sender.*Method)(Sender, Population, Parent);
  });
}

void TQXCustomGeneticComponent::SelectionHandlerChanged(bool /*WasAssigned*/) {
  if (OnSelection) {
    FSettings.SelectionMethod = smCustom;
  } else {
    SetSelectionMethod(smRoulette);
  }
}

TQXIndividual& TQXCustomGeneticComponent::SelectParent(TQXPopulation& Population) {
  const TUse Use(*this);
  TQXIndividual* Parent = nullptr;
  if (OnSelection) {
    OnSelection(*this, Population, Parent);
  } else {
    Parent = DoSelectParent(Population);
  }
  if (Parent == nullptr) {
    throw std::logic_error("The handler of OnSelection left no parent");
  }
  return *Parent;
}

TQXIndividual* TQXCustomGeneticComponent::DoSelectParent(TQXPopulation& /*Population*/) {
  throw EGAException(std::string(SNoSelectionFunction));
}

void TQXCustomGeneticComponent::SelectRandom(TQXCustomGeneticComponent& /*Sender*/, TQXPopulation& Population,
                                             TQXIndividual*& Parent) {
  Parent = &Population[Random(Population.Count())];
}

bool TQXCustomGeneticComponent::AllFitnessesEqual() const {
  const TFitnessStatistics& Fitnesses = UsesWeightedFitness() ? FWeightedFitnesses : FFitnesses;
  return Fitnesses.Min == Fitnesses.Max && (Fitnesses.NotNumbers == 0 || Fitnesses.Numbers == 0);
}

void TQXCustomGeneticComponent::SelectRoulette(TQXCustomGeneticComponent& Sender, TQXPopulation& Population,
                                               TQXIndividual*& Parent) {
  if (AllFitnessesEqual()) {
    SelectRandom(Sender, Population, Parent);
    return;
  }
  const double Draw = Random();
  if (FCumulativeFitnesses.empty()) {
    CalculateCumulativeNormalizedFitnesses();
  }
  const int Length = static_cast<int>(FCumulativeFitnesses.size());
  int Low = 0;
  int High = Length;
  while (High >= Low) {
    const int Middle = Low + (High - Low) / 2;
    if (Middle == Length || FCumulativeFitnesses[static_cast<std::size_t>(Middle)] > Draw) {
      High = Middle - 1;
    } else {
      Low = Middle + 1;
    }
  }
  if (Low == Length) { // no entry exceeds the draw
    Low = FLastShare >= 0 ? FLastShare : static_cast<int>(Draw * Population.Count());
  }
  if (Low >= Population.Count()) { // the shares are those of a larger one, by a handler's doing
    Low = static_cast<int>(Draw * Population.Count());
  }
  FSelectionCursor = Low;
  Parent = &Population[Low];
}

void TQXCustomGeneticComponent::SelectTournament(TQXCustomGeneticComponent& Sender, TQXPopulation& Population,
                                                 TQXIndividual*& Parent) {
  SelectRandom(Sender, Population, Parent);
  for (int I = 1; I < FSettings.TournamentField; ++I) {
    TQXIndividual* Challenger = nullptr;
    SelectRandom(Sender, Population, Challenger);
    Parent = &Fittest(*Parent, *Challenger, false);
  }
}

void TQXCustomGeneticComponent::SelectStochasticTournament(TQXCustomGeneticComponent& Sender,
                                                           TQXPopulation& Population,
                                                           TQXIndividual*& Parent) {
  SelectRandom(Sender, Population, Parent);
  for (int I = 1; I < FSettings.TournamentField; ++I) {
    TQXIndividual* Challenger = nullptr;
    SelectRoulette(Sender, Population, Challenger);
    Parent = &Fittest(*Parent, *Challenger, false);
  }
}

void TQXCustomGeneticComponent::SelectElitist(TQXCustomGeneticComponent& Sender, TQXPopulation& Population,
                                              TQXIndividual*& Parent) {
  if (AllFitnessesEqual()) {
    SelectRandom(Sender, Population, Parent);
    return;
  }
  ++FSelectionCursor;
  if (FSelectionCursor > std::nearbyint(Population.Count() * FSettings.ElitistPct)) {
    FSelectionCursor = 0;
  }
  if (FElite == nullptr) {
    PrioritizePopulation();
  }
  if (FElite == nullptr || FElite->Count() == 0) {
    throw std::out_of_range("Elitist selection from a population that has no ranked individual");
  }
  if (FSelectionCursor >= FElite->Count()) {
    FSelectionCursor = 0;
  }
  Parent = &(*FElite)[FSelectionCursor];
}

void TQXCustomGeneticComponent::DoSelectionPreparation() {
  if (FSettings.SelectionMethod == smRoulette || FSettings.SelectionMethod == smStochasticTournament) {
    CalculateCumulativeNormalizedFitnesses();
  } else if (FSettings.SelectionMethod == smElitist) {
    PrioritizePopulation();
  }
}

void TQXCustomGeneticComponent::CalculateCumulativeNormalizedFitnesses() {
  const bool Weighted = UsesWeightedFitness();
  const TFitnessStatistics& Fitnesses = Weighted ? FWeightedFitnesses : FFitnesses;
  TQXPopulation& Judged = JudgedPopulation();
  // Reading fitnesses calls handlers, which may change the method of selection; so this is stored when whole.
  TGAFitnessArray Shares = std::move(FCumulativeFitnesses);
  Shares.clear();
  TGAFitness Total = 0;
  for (int I = 0; I < Judged.Count(); ++I) {
    const TGAFitness Fitness = Weighted ? Judged[I].WeightedFitness() : Judged[I].Fitness();
    const TGAFitness Value = Maximizing() ? Fitness : Fitnesses.Max - Fitness;
    Shares.push_back(Value);
    Total += std::isnan(Value) ? 0 : Value;
  }
  FLastShare = AccumulateShares(Shares, Maximizing() ? Fitnesses.Sum : Total, !Maximizing());
  FCumulativeFitnesses = std::move(Shares);
}

void TQXCustomGeneticComponent::PrioritizePopulation() {
  std::unique_ptr<TElite> Elite = FElite != nullptr ? std::move(FElite) : std::make_unique<TElite>();
  Elite->Clear();
  Elite->SetHighestFirst(Maximizing());
  TQXPopulation& Judged = JudgedPopulation();
  for (int I = 0; I < Judged.Count(); ++I) {
    TQXIndividual& Individual = Judged[I];
    const TGAFitness Key = UsesWeightedFitness() ? Individual.WeightedFitness() : Individual.Fitness();
    Elite->Push(Individual, static_cast<float>(Key));
  }
  FElite = std::move(Elite);
}

} // namespace qx
