#include <qx/engine/GeneticComponent.h>
#include <qx/engine/LoadScope.h>

#include <stdexcept>
#include <unordered_map>

namespace qx {

TLoadScope::TLoadScope(TQXCustomGeneticComponent* Component) : FComponent(Component), FOutermost(this) {
  if (Component != nullptr) {
    Component->RequireNoUse("A load");
  }
  if (Component != nullptr && Component->FLoad != nullptr) {
    FOutermost = Component->FLoad;
  }
  FUndoMark = FOutermost->FUndo.size();
  FWarningMark = FOutermost->FWarnings.size();
  if (Component != nullptr) {
    Component->Remember(*this);
    Component->FLoad = FOutermost;
  }
}

TLoadScope::~TLoadScope() {
  if (!FDone) {
    UndoToMark();
  }
  if (FComponent != nullptr && FOutermost == this) {
    FComponent->FLoad = nullptr;
  }
}

TSetAsideItems& TLoadScope::SetAside(TOwnedCollection& Items) {
  const auto Aside = std::make_shared<TSetAsideItems>(Items);
  OnFailure([Aside] { Aside->Restore(); });
  Aside->TakeOut();
  if (FComponent != nullptr) {
    FComponent->FStatisticsDue = true;
  }
  return *Aside;
}

void TLoadScope::RememberFitnesses(TQXPopulation& Population) {
  struct TFormer {
    TGAFitness Fitness;
    bool NeedFitness;
  };
  std::unordered_map<const TQXIndividual*, TFormer> Formers;
  for (const TQXIndividual& Individual : Population) {
    Formers[&Individual] = {Individual.FFitness, Individual.FNeedFitness};
  }
  OnFailure([&Population, Formers = std::move(Formers)] {
    for (TQXIndividual& Individual : Population) {
      if (const auto Former = Formers.find(&Individual); Former != Formers.end()) {
        Individual.FFitness = Former->second.Fitness;
        Individual.FNeedFitness = Former->second.NeedFitness;
      }
    }
  });
}

void TLoadScope::WarnUnknown(std::string_view Element, const std::string& Name, std::string_view Present) {
  Warn(std::string(Element) + ": \"" + Name + "\" names no value; " + std::string(Present) + " stays");
}

void TLoadScope::Done() {
  FDone = true;
  if (FOutermost == this && FComponent != nullptr) {
    FComponent->FLoadWarnings = std::move(FWarnings);
  }
}

void TLoadScope::UndoToMark() {
  if (FComponent != nullptr) {
    FComponent->FRestoring = true;
  }
  auto& Steps = FOutermost->FUndo;
  while (Steps.size() > FUndoMark) {
    const std::function<void()> Undo = std::move(Steps.back());
    Steps.pop_back();
    try {
      Undo();
    } catch (...) { // The load's own exception is the one that tells what went wrong.
    }
  }
  FOutermost->FWarnings.resize(FWarningMark);
  if (FComponent != nullptr) {
    FComponent->FRestoring = false;
  }
}

} // namespace qx
