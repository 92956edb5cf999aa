#pragma once

#include <qx/platform/Action.h>
#include <qx/platform/Persistent.h>

#include <concepts>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qx {

/// A persistent object that a host places: it has a name and may belong to an owner component.
///
/// The owner knows its components by name. It frees only those that were handed to it with `Adopt`; a
/// component that lives elsewhere merely leaves the list when it dies, and loses its owner when that dies.
class TComponent : public TPersistent {
public:
  explicit TComponent(TComponent* Owner = nullptr);
  ~TComponent() override;

  TComponent* Owner() const { return FOwner; }

  const std::string& Name() const { return FName; }
  /// Raises std::invalid_argument when another component of the same owner has the name already (compared
  /// without case); the empty name is never taken.
  void SetName(std::string_view Value);

  int ComponentCount() const { return static_cast<int>(FComponents.size()); }
  /// Raises std::out_of_range.
  TComponent& Components(int Index) const;
  /// The owned component of that name, compared without case, or nullptr. Nobody has the empty name.
  TComponent* FindComponent(std::string_view Name) const;

  /// Takes over the component: this one becomes its owner and frees it. Raises std::invalid_argument, and
  /// leaves everything as it was, when there is none, its name is taken, or it would come to own itself.
  template <std::derived_from<TComponent> T>
  T& Adopt(std::unique_ptr<T>&& Component) {
    RequireAdoptable(Component.get());
    T& Adopted = *Component;
    TakeOver(std::move(Component));
    return Adopted;
  }

protected:
  void DefineProperties(TFiler& Filer) override;
  /// Runs `Load`, which reads the component's properties from a stream, and puts the name back when that
  /// raises. A component that can put more back overrides this.
  virtual void Loading(TAction Load);

private:
  friend void ReadComponent(std::istream& Stream, TComponent& Component);
  friend void ReadState(std::istream& Stream, TComponent& Component);

  void RequireAdoptable(const TComponent* Component) const;
  void TakeOver(std::unique_ptr<TComponent> Component);
  void RequireFreeName(std::string_view Name, const TComponent* Except) const;

  TComponent* FOwner;
  std::string FName;
  std::vector<TComponent*> FComponents;
  std::vector<std::unique_ptr<TComponent>> FAdopted;
};

} // namespace qx
