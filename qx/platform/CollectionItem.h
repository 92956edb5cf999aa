#pragma once

#include <qx/platform/Persistent.h>

#include <string>

namespace qx {

class TOwnedCollection;

/// A persistent object that lives in at most one collection, knows its place there, and tells the collection
/// when it changes.
class TCollectionItem : public TPersistent {
public:
  /// The collection that owns the item, or nullptr.
  TOwnedCollection* Collection() const { return FCollection; }
  /// Moves the item, with its ownership, to the end of another collection; it gets a new ID there. Raises
  /// std::logic_error when it is in no collection (hand it over with `TOwnedCollection::Insert`), and
  /// std::invalid_argument, before it leaves, when the other does not hold items of its class.
  void SetCollection(TOwnedCollection& Value);

  /// Number that the collection gave to the item and gives to no other; -1 outside any collection.
  int ID() const { return FID; }
  /// Place in the collection; -1 outside any.
  int Index() const { return FIndex; }
  /// Moves the item within its collection. Raises std::out_of_range, and std::logic_error outside any.
  void SetIndex(int Value);

  /// What the item is called in front of people: the class name, unless a descendant knows better.
  std::string DisplayName() const { return GetDisplayName(); }

protected:
  virtual std::string GetDisplayName() const;
  /// Reports a change: of this item, or with `AllItems` of the list as a whole (order, membership). Defined
  /// beside the collection, in Collection.h.
  void Changed(bool AllItems);
  /// Called after the item has come into a collection or, with nullptr, left it.
  virtual void CollectionChanged(TOwnedCollection* Value);

private:
  friend class TOwnedCollection;
  friend class TSetAsideItems;

  TOwnedCollection* FCollection = nullptr;
  int FID = -1;
  int FIndex = -1;
};

} // namespace qx
