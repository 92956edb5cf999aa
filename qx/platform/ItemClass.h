#pragma once

#include <qx/platform/ClassName.h>

#include <concepts>
#include <memory>
#include <string>
#include <typeinfo>

namespace qx {

class TCollectionItem;

/// A class as a value: it makes whole items of one class derived from `TBase`, and knows what that is called.
/// `ItemClassOf<T>()` makes the value; any default-constructible class will do.
template <class TBase>
class TItemClass {
public:
  /// A class of `TDerived` items serves wherever `TBase` items are wanted.
  template <class TDerived>
  requires std::derived_from<TDerived, TBase> TItemClass(TItemClass<TDerived> Derived)
      : FMake(Derived.FMake), FType(Derived.FType) {}

  std::unique_ptr<TBase> Make() const { return std::unique_ptr<TBase>(static_cast<TBase*>(FMake())); }
  std::string Name() const { return ClassNameOf(*FType); }

  friend bool operator==(TItemClass Left, TItemClass Right) { return *Left.FType == *Right.FType; }

private:
  template <class>
  friend class TItemClass;
  template <class T>
  friend TItemClass<T> ItemClassOf();
  template <class, class>
  friend class TTypedCollection;

  TItemClass(TCollectionItem* (*MakeItem)(), const std::type_info& Type) : FMake(MakeItem), FType(&Type) {}

  // Only for who knows that the class makes `TBase` items.
  static TItemClass Narrowed(TItemClass<TCollectionItem> Class) {
    return TItemClass(Class.FMake, *Class.FType);
  }

  TCollectionItem* (*FMake)();
  const std::type_info* FType;
};

/// The item class that makes `T` items.
template <class T>
TItemClass<T> ItemClassOf() {
  return TItemClass<T>([]() -> TCollectionItem* { return new T(); }, typeid(T));
}

} // namespace qx
