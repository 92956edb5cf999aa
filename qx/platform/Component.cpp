#include <qx/platform/Component.h>
#include <qx/platform/Filer.h>
#include <qx/platform/Text.h>

#include <algorithm>
#include <stdexcept>

namespace qx {

TComponent::TComponent(TComponent* Owner) : FOwner(Owner) {
  if (FOwner != nullptr) {
    FOwner->FComponents.push_back(this);
  }
}

TComponent::~TComponent() {
  for (TComponent* Component : FComponents) {
    Component->FOwner = nullptr;
  }
  if (FOwner != nullptr) {
    std::erase(FOwner->FComponents, this);
  }
}

void TComponent::SetName(std::string_view Value) {
  if (FOwner != nullptr) {
    FOwner->RequireFreeName(Value, this);
  }
  FName = Value;
}

TComponent& TComponent::Components(int Index) const {
  if (Index < 0 || Index >= ComponentCount()) {
    throw std::out_of_range("Component index " + std::to_string(Index) + " is not below the count of " +
                            std::to_string(ComponentCount()));
  }
  return *FComponents[static_cast<std::size_t>(Index)];
}

TComponent* TComponent::FindComponent(std::string_view Name) const {
  const auto Found = std::find_if(FComponents.begin(), FComponents.end(), [&](const TComponent* Component) {
    return !Name.empty() && SameText(Component->FName, Name);
  });
  return Found == FComponents.end() ? nullptr : *Found;
}

void TComponent::DefineProperties(TFiler& Filer) {
  TPersistent::DefineProperties(Filer);
  Filer.Property("Name", FName, !FName.empty(), [this](const std::string& Value) { SetName(Value); });
}

void TComponent::Loading(TAction Load) {
  const std::string Before = FName;
  try {
    Load();
  } catch (...) {
    FName = Before;
    throw;
  }
}

void TComponent::RequireAdoptable(const TComponent* Component) const {
  if (Component == nullptr) {
    throw std::invalid_argument("No component to adopt");
  }
  for (const TComponent* Ancestor = this; Ancestor != nullptr; Ancestor = Ancestor->FOwner) {
    if (Ancestor == Component) {
      throw std::invalid_argument("Component \"" + Ancestor->FName + "\" cannot be owned by itself");
    }
  }
  RequireFreeName(Component->FName, Component);
}

void TComponent::TakeOver(std::unique_ptr<TComponent> Component) {
  TComponent& Adopted = *Component;
  FAdopted.push_back(std::move(Component));
  if (Adopted.FOwner != this) {
    FComponents.push_back(&Adopted);
    if (Adopted.FOwner != nullptr) {
      std::erase(Adopted.FOwner->FComponents, &Adopted);
    }
    Adopted.FOwner = this;
  }
}

void TComponent::RequireFreeName(std::string_view Name, const TComponent* Except) const {
  if (Name.empty()) {
    return;
  }
  for (const TComponent* Component : FComponents) {
    if (Component != Except && SameText(Component->FName, Name)) {
      throw std::invalid_argument("A component named \"" + std::string(Name) + "\" already exists");
    }
  }
}

} // namespace qx
