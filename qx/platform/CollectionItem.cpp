#include <qx/platform/Collection.h>
#include <qx/platform/CollectionItem.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>

namespace qx {

void TCollectionItem::SetCollection(TOwnedCollection& Value) {
  if (&Value == FCollection) {
    return;
  }
  if (FCollection == nullptr) {
    throw std::logic_error("The " + ClassName() + " is in no collection: hand it over with Insert");
  }
  Value.RequireAccepted(*this);
  TOwnedCollection& Former = *FCollection;
  const int Place = FIndex;
  std::unique_ptr<TCollectionItem> Self = Former.Extract(*this);
  try {
    Value.Take(Value.Count(), Self);
  } catch (...) {
    if (Self != nullptr) { // it stays where it was
      Former.Insert(std::min(Place, Former.Count()), std::move(Self));
    }
    throw;
  }
}

void TCollectionItem::SetIndex(int Value) {
  if (FCollection == nullptr) {
    throw std::logic_error("The " + ClassName() + " is in no collection and has no index to set");
  }
  FCollection->Move(FIndex, Value);
}

std::string TCollectionItem::GetDisplayName() const { return ClassName(); }

void TCollectionItem::CollectionChanged(TOwnedCollection* /*Value*/) {}

} // namespace qx
