#pragma once

#include <qx/platform/CollectionItem.h>
#include <qx/platform/ItemClass.h>
#include <qx/platform/Persistent.h>

#include <concepts>
#include <cstddef>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace qx {

/// What happens to an item of a collection: it has come in, it is about to be handed out alive, or it is
/// about to be freed.
enum TCollectionNotification { cnAdded, cnExtracted, cnDeleted };

/// Iterates over a collection's items as `TItem&`.
template <class TItem>
class TCollectionIterator {
public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = std::remove_const_t<TItem>;
  using difference_type = std::ptrdiff_t;
  using pointer = TItem*;
  using reference = TItem&;

  TCollectionIterator() = default;
  explicit TCollectionIterator(const std::unique_ptr<TCollectionItem>* Slot) : FSlot(Slot) {}

  TItem& operator*() const { return static_cast<TItem&>(**FSlot); }
  TItem* operator->() const { return &**this; }
  TCollectionIterator& operator++() {
    ++FSlot;
    return *this;
  }
  TCollectionIterator operator++(int) {
    TCollectionIterator Before = *this;
    ++FSlot;
    return Before;
  }
  bool operator==(const TCollectionIterator&) const = default;

private:
  const std::unique_ptr<TCollectionItem>* FSlot = nullptr;
};

/// An ordered list that owns its items, all made from one item class, and that belongs to an owner object.
///
/// A derived collection hears of every single item through `Notify` and of changes through `Update`.
/// `Update(&Item)` tells that one item changed its content, `Update(nullptr)` that the list as a whole did.
/// Between `BeginUpdate` and the matching `EndUpdate` changes are held back; the outermost `EndUpdate` sends
/// one `Update(nullptr)` for all of them. `Notify` is never held back. Clearing n items costs O(n), a
/// notification O(1).
class TOwnedCollection : public TPersistent {
public:
  /// @param Owner      the object that the collection belongs to, or nullptr; not owned.
  /// @param ItemClass  makes the items.
  TOwnedCollection(TPersistent* Owner, TItemClass<TCollectionItem> ItemClass)
      : FOwner(Owner), FItemClass(ItemClass) {}
  ~TOwnedCollection() override;

  TPersistent* Owner() const { return FOwner; }
  TItemClass<TCollectionItem> ItemClass() const { return FItemClass; }

  int Count() const { return static_cast<int>(FItems.size()); }
  /// Raises std::out_of_range, as every operation here that takes an index.
  TCollectionItem& Items(int Index) { return *FItems[CheckedIndex(Index)]; }
  const TCollectionItem& Items(int Index) const { return *FItems[CheckedIndex(Index)]; }
  /// The item of that ID, or nullptr.
  TCollectionItem* FindItemID(int ID) const;

  /// Makes an item and appends it.
  TCollectionItem& Add() { return Insert(Count()); }
  /// Makes an item and inserts it at `Index`, 0 to `Count`. When those that hear of it raise, it goes again.
  TCollectionItem& Insert(int Index);
  /// Takes over a whole item that belongs to no collection. Raises std::invalid_argument for nullptr and for
  /// an item of a class that the collection does not hold.
  TCollectionItem& Insert(int Index, std::unique_ptr<TCollectionItem> Item);
  /// Hands the item over to the caller. Raises std::invalid_argument when it is not in this collection.
  std::unique_ptr<TCollectionItem> Extract(TCollectionItem& Item);
  void Delete(int Index);
  /// Frees all items, the last one first.
  void Clear();
  /// Moves the item at `From` so that it stands at `To` afterwards.
  virtual void Move(int From, int To);

  /// Replaces the items by copies of the items of another collection; assigning to itself does nothing.
  void Assign(const TPersistent& Source) override;

  void BeginUpdate() { ++FUpdateCount; }
  /// Raises std::logic_error without a matching `BeginUpdate`.
  void EndUpdate();
  bool Updating() const { return FUpdateCount > 0; }
  /// Whether the update that has ended last held changes back.
  bool HasEndedChanges() const { return FHasEndedChanges; }

protected:
  /// Whether an item handed to `Insert` is of a class that this collection holds.
  virtual bool Accepts(const TCollectionItem& Item) const;
  /// Called before an item comes, and before items are taken out or freed with the name of the call: an
  /// override raises to refuse it.
  virtual void RequireInsertable() const {}
  virtual void RequireRemovable(const char* /*Call*/) const {}
  /// Called once for each item that comes (it is in its place already) or goes (it still is in its place).
  virtual void Notify(TCollectionItem& Item, TCollectionNotification Action);
  /// Called when an item changed, or with nullptr when the whole list did.
  virtual void Update(TCollectionItem* Item);

  /// Sends `Update(nullptr)` unless an update is open.
  void Changed();
  const std::unique_ptr<TCollectionItem>* Slots() const { return FItems.data(); }

private:
  friend class TCollectionItem;
  friend class TSetAsideItems;

  std::size_t CheckedIndex(int Index) const {
    const auto Place = static_cast<std::size_t>(Index);
    if (Place >= FItems.size()) [[unlikely]] { // a negative index is a huge one here
      RaiseIndexError(Index);
    }
    return Place;
  }
  [[noreturn]] void RaiseIndexError(int Index) const;
  void CheckInsertIndex(int Index) const;
  void RequireAccepted(const TCollectionItem& Item) const;
  TCollectionItem& Take(int Index, std::unique_ptr<TCollectionItem>& Item);
  TCollectionItem& Place(int Index, std::unique_ptr<TCollectionItem> Item, int ID);
  std::unique_ptr<TCollectionItem> Reject(TCollectionItem& Item);
  void Renumber(std::size_t From, std::size_t To);
  std::unique_ptr<TCollectionItem> Remove(TCollectionItem& Item, TCollectionNotification Action);
  std::unique_ptr<TCollectionItem> Unlink(TCollectionItem& Item, int Index);
  void ItemChanged(TCollectionItem& Item) {
    if (FUpdateCount == 0) {
      Update(&Item);
    } else {
      FHoldsChanges = true;
    }
  }

  TPersistent* FOwner;
  TItemClass<TCollectionItem> FItemClass;
  std::vector<std::unique_ptr<TCollectionItem>> FItems;
  int FNextID = 0;
  int FUpdateCount = 0;
  bool FHoldsChanges = false;    // since the update began
  bool FHasEndedChanges = false; // of the update that ended last
};

/// Knows which items a collection had when this was made; can take them out, so that others can be loaded,
/// and put them back. Those that are out are freed with this object.
class TSetAsideItems {
public:
  explicit TSetAsideItems(TOwnedCollection& Collection);

  /// Empties the collection. Each item is notified as extracted, the last one first.
  void TakeOut();

  int Count() const { return static_cast<int>(FItems.size()); }
  /// The item, or nullptr when it is not here.
  TCollectionItem* Items(int Index) { return FItems[static_cast<std::size_t>(Index)].get(); }
  /// Appends the item to the collection, where `Restore` looks for it, and returns it; leaves it here, and
  /// returns nullptr, when the collection does not take it as it is now.
  TCollectionItem* BringBack(int Index);

  /// Puts the items back as they were, IDs included, in place of those that the collection holds now; an item
  /// that is not here is found among these. What notifications raise is passed over.
  void Restore();

private:
  struct TPlace {
    const TCollectionItem* Item;
    int ID;
  };

  // The place that an item had, or the count for one that was not there.
  std::size_t PlaceOf(const TCollectionItem& Item);

  TOwnedCollection& FCollection;
  std::vector<std::unique_ptr<TCollectionItem>> FItems;
  std::vector<TPlace> FPlaces;
  std::vector<std::size_t> FPlacesByItem; // made when it is needed
  int FNextID;
};

inline void TCollectionItem::Changed(bool AllItems) {
  if (FCollection == nullptr) {
    return;
  }
  if (AllItems) {
    FCollection->Changed();
  } else {
    FCollection->ItemChanged(*this);
  }
}

/// Holds an update of a collection, string list or the like open for a scope. `End` closes it on the straight
/// way; when an exception leaves the scope the update is closed as well, and the exception that is on its way
/// stays the one that the caller sees.
template <class TUpdatable>
class TUpdateScope {
public:
  explicit TUpdateScope(TUpdatable& Target) : FTarget(&Target) { Target.BeginUpdate(); }
  TUpdateScope(const TUpdateScope&) = delete;
  TUpdateScope& operator=(const TUpdateScope&) = delete;
  ~TUpdateScope() {
    if (FTarget != nullptr) {
      try {
        FTarget->EndUpdate();
      } catch (...) { // The first exception is the one that tells what went wrong.
      }
    }
  }

  void End() { std::exchange(FTarget, nullptr)->EndUpdate(); }

private:
  TUpdatable* FTarget;
};

/// Narrows the item type of a collection: everything that takes or gives an item does so as `TItem`.
template <class TItem, class TBase>
class TTypedCollection : public TBase {
public:
  TTypedCollection(TPersistent* Owner, TItemClass<TItem> ItemClass) : TBase(Owner, ItemClass) {}

  TItemClass<TItem> ItemClass() const { return TItemClass<TItem>::Narrowed(TBase::ItemClass()); }

  TItem& Items(int Index) { return static_cast<TItem&>(TBase::Items(Index)); }
  const TItem& Items(int Index) const { return static_cast<const TItem&>(TBase::Items(Index)); }
  /// Copies the content of `Value` into the item at `Index`.
  void SetItems(int Index, const TItem& Value) { Items(Index).Assign(Value); }
  TItem& operator[](int Index) { return Items(Index); }
  const TItem& operator[](int Index) const { return Items(Index); }

  TItem* FindItemID(int ID) const { return static_cast<TItem*>(TBase::FindItemID(ID)); }

  TItem& Add() { return static_cast<TItem&>(TBase::Add()); }
  TItem& Insert(int Index) { return static_cast<TItem&>(TBase::Insert(Index)); }
  template <std::derived_from<TItem> TWhole>
  TWhole& Insert(int Index, std::unique_ptr<TWhole> Item) {
    return static_cast<TWhole&>(TBase::Insert(Index, std::move(Item)));
  }
  std::unique_ptr<TItem> Extract(TItem& Item) {
    return std::unique_ptr<TItem>(static_cast<TItem*>(TBase::Extract(Item).release()));
  }

  TCollectionIterator<TItem> begin() { return TCollectionIterator<TItem>(this->Slots()); }
  TCollectionIterator<TItem> end() { return TCollectionIterator<TItem>(this->Slots() + this->Count()); }
  TCollectionIterator<const TItem> begin() const { return TCollectionIterator<const TItem>(this->Slots()); }
  TCollectionIterator<const TItem> end() const {
    return TCollectionIterator<const TItem>(this->Slots() + this->Count());
  }

protected:
  bool Accepts(const TCollectionItem& Item) const override {
    return dynamic_cast<const TItem*>(&Item) != nullptr;
  }
};

} // namespace qx
