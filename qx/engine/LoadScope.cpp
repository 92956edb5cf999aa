#include <qx/engine/GeneticComponent.h>
#include <qx/engine/LoadScope.h>
#include <qx/platform/Numbers.h>

namespace qx {

TLoadScope::TLoadScope(TQXCustomGeneticComponent* Component) : FComponent(Component), FOutermost(this) {
  if (Component == nullptr) {
    return;
  }
  if (Component->FLoad != nullptr) {
    FOutermost = Component->FLoad;
    return;
  }
  RememberComponent();
  Component->FLoad = this;
}

TLoadScope::~TLoadScope() {
  if (FOutermost != this) {
    return;
  }
  if (!FDone) {
    UndoAll();
  }
  if (FComponent != nullptr) {
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

void TLoadScope::WarnIfMoved(std::string_view Element, double Wanted, double Stored) {
  if (Wanted != Stored) {
    Warn(std::string(Element) + ": " + NumberText(Wanted) + " became " + NumberText(Stored));
  }
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

void TLoadScope::RememberComponent() {
  TQXCustomGeneticComponent& C = *FComponent;
  OnFailure([&C, Settings = C.FSettings, Fitnesses = C.FFitnesses, Weighted = C.FWeightedFitnesses,
             Fittest = C.FFittestIndividual, Due = C.FStatisticsDue, Cursor = C.FSelectionCursor,
             Selection = TQXSelectionEvent(C.OnSelection), HadPrevious = C.FPreviousGeneration != nullptr] {
    if (!HadPrevious) {
      C.FPreviousGeneration.reset();
    }
    C.OnSelection.BindTo(Selection);
    C.ForgetSelection();
    C.FSettings = Settings;
    C.FFitnesses = Fitnesses;
    C.FWeightedFitnesses = Weighted;
    C.FFittestIndividual = Fittest;
    C.FStatisticsDue = Due;
    C.FSelectionCursor = Cursor;
  });
}

void TLoadScope::UndoAll() {
  if (FComponent != nullptr) {
    FComponent->FRestoring = true;
  }
  while (!FUndo.empty()) {
    const std::function<void()> Undo = std::move(FUndo.back());
    FUndo.pop_back();
    try {
      Undo();
    } catch (...) { // The load's own exception is the one that tells what went wrong.
    }
  }
  if (FComponent != nullptr) {
    FComponent->FRestoring = false;
  }
}

} // namespace qx
