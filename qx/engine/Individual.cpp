#include <qx/engine/GeneticComponent.h>
#include <qx/engine/Individual.h>
#include <qx/engine/Population.h>
#include <qx/platform/Filer.h>

#include <stdexcept>

namespace qx {

void TQXIndividual::Assign(const TPersistent& Source) {
  if (const auto* Individual = SourceAs<TQXIndividual>(Source)) {
    AssignIndividual(*Individual);
  } else {
    TCollectionItem::Assign(Source);
  }
}

// By a handler that may reach the own component, which frees nothing meanwhile.
void TQXIndividual::EvaluateSource(const TQXIndividual& Source) const {
  if (Source.FNeedFitness) {
    const TUseScope Use(*this);
    static_cast<void>(Source.Fitness());
  }
}

void TQXIndividual::AssignIndividual(const TQXIndividual& Source) {
  EvaluateSource(Source);
  FFitness = Source.FFitness;
  FNeedFitness = Source.FNeedFitness;
  if (!FName.empty() || !Source.FName.empty()) {
    FName = Source.FName;
  }
  Changed(false);
}

TQXIndividual& TQXIndividual::Clone() const {
  TQXPopulation* const Population = Collection();
  if (Population == nullptr) {
    throw std::logic_error("The " + ClassName() + " is in no population that its clone could join");
  }
  TQXIndividual& Copy = Population->Add();
  Copy.Assign(*this);
  return Copy;
}

void TQXIndividual::SetName(std::string_view Value) {
  if (FName != Value) {
    FName = Value;
    Modified();
  }
}

TQXPopulation* TQXIndividual::Collection() const {
  return dynamic_cast<TQXPopulation*>(TCollectionItem::Collection());
}

void TQXIndividual::SetCollection(TQXPopulation& Value) { TCollectionItem::SetCollection(Value); }

TGAFitness TQXIndividual::AdjustedFitness() const {
  return FOwner != nullptr ? FOwner->GetAdjustedFitness(Fitness()) : 0;
}

// Evaluation hands the individual to the host, which may look at all of it; to the caller of a fitness it is
// a read.
TGAFitness TQXIndividual::WeightedFitness() const {
  return FOwner != nullptr ? FOwner->EvaluateFitness(const_cast<TQXIndividual&>(*this), true) : 0;
}

TGAFitness TQXIndividual::NormalizedFitness() const {
  return FOwner != nullptr ? FOwner->GetNormalizedFitness(Fitness()) : 0;
}

TGAFitness TQXIndividual::NormalizedWeigthedFitness() const {
  return FOwner != nullptr ? FOwner->GetNormalizedWeightedFitness(WeightedFitness()) : 0;
}

void TQXIndividual::EvaluateFitness() const {
  if (FOwner == nullptr) {
    FFitness = 0;
    return;
  }
  FFitness = FOwner->EvaluateFitness(const_cast<TQXIndividual&>(*this), false);
  FNeedFitness = false;
}

void TQXIndividual::Modified() {
  FNeedFitness = true;
  Changed(false);
}

void TQXIndividual::LoadFromXML(const TXMLNode& /*Node*/) {}

void TQXIndividual::SaveToXML(const TXMLNode& /*Node*/) {}

void TQXIndividual::DefineProperties(TFiler& Filer) {
  TCollectionItem::DefineProperties(Filer);
  Filer.Property("Name", FName, !FName.empty(), [this](const std::string& Value) { SetName(Value); });
}

void TQXIndividual::DefineState(TFiler& Filer) {
  TCollectionItem::DefineState(Filer);
  Filer.Field("Fitness", FFitness);
  Filer.Field("NeedFitness", FNeedFitness);
}

std::string TQXIndividual::GetDisplayName() const {
  return FName.empty() ? TCollectionItem::GetDisplayName() : FName;
}

void TQXIndividual::CollectionChanged(TOwnedCollection* Value) {
  const auto* Population = dynamic_cast<TQXPopulation*>(Value);
  FOwner = Population != nullptr ? Population->Owner() : nullptr;
}

} // namespace qx
