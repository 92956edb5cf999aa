#include <qx/platform/Collection.h>
#include <qx/platform/CollectionItem.h>

#include <stdexcept>

namespace qx {

void TCollectionItem::SetCollection(TOwnedCollection& Value) {
  if (&Value == FCollection) {
    return;
  }
  if (FCollection == nullptr) {
    throw std::logic_error("The " + ClassName() + " is in no collection: hand it over with Insert");
  }
  Value.RequireAccepted(*this);
  Value.Insert(Value.Count(), FCollection->Extract(*this));
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
