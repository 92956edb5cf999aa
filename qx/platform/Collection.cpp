#include <qx/platform/Collection.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>

namespace qx {

TOwnedCollection::~TOwnedCollection() {
  // Nobody hears of items that die with their collection: derived parts of it are gone already.
  while (!FItems.empty()) {
    FItems.pop_back();
  }
}

TCollectionItem* TOwnedCollection::FindItemID(int ID) const {
  const auto Found =
      std::find_if(FItems.begin(), FItems.end(), [ID](const auto& Item) { return Item->FID == ID; });
  return Found == FItems.end() ? nullptr : Found->get();
}

TCollectionItem& TOwnedCollection::Insert(int Index) {
  CheckInsertIndex(Index);
  return Insert(Index, FItemClass.Make());
}

TCollectionItem& TOwnedCollection::Insert(int Index, std::unique_ptr<TCollectionItem> Item) {
  return Take(Index, Item);
}

// When it raises, `Item` still has the item, unless a receiver has taken it out.
TCollectionItem& TOwnedCollection::Take(int Index, std::unique_ptr<TCollectionItem>& Item) {
  CheckInsertIndex(Index);
  if (!Item) {
    throw std::invalid_argument("No item to insert into the " + ClassName());
  }
  RequireAccepted(*Item);
  TCollectionItem& Inserted = Place(Index, std::move(Item), FNextID);
  ++FNextID;
  try {
    Notify(Inserted, cnAdded);
  } catch (...) {
    Item = Reject(Inserted);
    throw;
  }
  Changed();
  return Inserted;
}

TCollectionItem& TOwnedCollection::Place(int Index, std::unique_ptr<TCollectionItem> Item, int ID) {
  TCollectionItem& Placed = *Item;
  FItems.insert(FItems.begin() + Index, std::move(Item));
  Renumber(static_cast<std::size_t>(Index), FItems.size());
  Placed.FCollection = this;
  Placed.FID = ID;
  try {
    Placed.CollectionChanged(this);
  } catch (...) { // an item that does not know where it is cannot be here
    FItems.erase(FItems.begin() + Index);
    Renumber(static_cast<std::size_t>(Index), FItems.size());
    throw;
  }
  return Placed;
}

// Takes an item out again whose coming somebody has refused; who heard of it hears that it goes.
std::unique_ptr<TCollectionItem> TOwnedCollection::Reject(TCollectionItem& Item) {
  const auto Place =
      std::find_if(FItems.begin(), FItems.end(), [&](const auto& Slot) { return Slot.get() == &Item; });
  if (Place == FItems.end()) { // a receiver has taken it out
    return nullptr;
  }
  try {
    return Remove(Item, cnExtracted);
  } catch (...) { // nobody can keep it here
    return Unlink(Item, Count());
  }
}

std::unique_ptr<TCollectionItem> TOwnedCollection::Extract(TCollectionItem& Item) {
  if (Item.FCollection != this) {
    throw std::invalid_argument("The item to extract is not in this " + ClassName());
  }
  RequireRemovable("Extract");
  const int ID = Item.FID;
  const int Index = Item.FIndex;
  std::unique_ptr<TCollectionItem> Extracted = Remove(Item, cnExtracted);
  try {
    Changed();
  } catch (...) { // nobody would own the item: it stays
    if (Extracted != nullptr) {
      Place(std::min(Index, Count()), std::move(Extracted), ID);
    }
    throw;
  }
  return Extracted;
}

void TOwnedCollection::Delete(int Index) {
  TCollectionItem& Item = *FItems[CheckedIndex(Index)];
  RequireRemovable("Delete");
  // The item lives until the list is whole again and its update has been sent.
  const std::unique_ptr<TCollectionItem> Deleted = Remove(Item, cnDeleted);
  Changed();
}

void TOwnedCollection::Clear() {
  if (FItems.empty()) {
    return;
  }
  RequireRemovable("Clear");
  TUpdateScope Update(*this);
  while (!FItems.empty()) {
    Remove(*FItems.back(), cnDeleted);
  }
  Update.End();
}

void TOwnedCollection::Move(int From, int To) {
  const auto First = FItems.begin() + static_cast<std::ptrdiff_t>(CheckedIndex(From));
  const auto Target = FItems.begin() + static_cast<std::ptrdiff_t>(CheckedIndex(To));
  if (First == Target) {
    return;
  }
  if (First < Target) {
    std::rotate(First, First + 1, Target + 1);
  } else {
    std::rotate(Target, First, First + 1);
  }
  Renumber(static_cast<std::size_t>(std::min(From, To)), static_cast<std::size_t>(std::max(From, To)) + 1);
  Changed();
}

void TOwnedCollection::Assign(const TPersistent& Source) {
  if (&Source == this) {
    return;
  }
  const auto* List = SourceAs<TOwnedCollection>(Source);
  if (List == nullptr) {
    TPersistent::Assign(Source);
    return;
  }
  RequireRemovable("Assign");
  TUpdateScope Update(*this);
  Clear();
  FItems.reserve(List->FItems.size());
  for (int I = 0; I < List->Count(); ++I) { // what hears of the copies may change the source
    Add().Assign(List->Items(I));
  }
  Update.End();
}

void TOwnedCollection::EndUpdate() {
  if (FUpdateCount == 0) {
    throw std::logic_error("EndUpdate of a " + ClassName() + " without BeginUpdate");
  }
  if (--FUpdateCount == 0) {
    FHasEndedChanges = std::exchange(FHoldsChanges, false);
    Update(nullptr);
  }
}

bool TOwnedCollection::Accepts(const TCollectionItem& /*Item*/) const { return true; }

void TOwnedCollection::Notify(TCollectionItem& /*Item*/, TCollectionNotification /*Action*/) {}

void TOwnedCollection::Update(TCollectionItem* /*Item*/) {}

void TOwnedCollection::Changed() {
  if (FUpdateCount == 0) {
    Update(nullptr);
  } else {
    FHoldsChanges = true;
  }
}

void TOwnedCollection::RaiseIndexError(int Index) const {
  throw std::out_of_range("Index " + std::to_string(Index) + " is outside the " + ClassName() + " of " +
                          std::to_string(Count()) + " items");
}

void TOwnedCollection::RequireAccepted(const TCollectionItem& Item) const {
  if (!Accepts(Item)) {
    throw std::invalid_argument("A " + ClassName() + " does not hold items of class " + Item.ClassName());
  }
  RequireInsertable();
}

void TOwnedCollection::CheckInsertIndex(int Index) const {
  if (Index < 0 || Index > Count()) {
    RaiseIndexError(Index);
  }
}

void TOwnedCollection::Renumber(std::size_t From, std::size_t To) {
  for (std::size_t I = From; I < To; ++I) {
    FItems[I]->FIndex = static_cast<int>(I);
  }
}

std::unique_ptr<TCollectionItem> TOwnedCollection::Remove(TCollectionItem& Item,
                                                          TCollectionNotification Action) {
  const int Index = Item.FIndex;
  Notify(Item, Action);
  return Unlink(Item, Index);
}

// The result is nullptr when the item is not here: whoever was notified may have taken it out and freed it,
// or moved it from the place where it was.
std::unique_ptr<TCollectionItem> TOwnedCollection::Unlink(TCollectionItem& Item, int Index) {
  auto Place = FItems.begin() + std::min(Index, Count());
  if (Place == FItems.end() || Place->get() != &Item) {
    Place = std::find_if(FItems.begin(), FItems.end(), [&](const auto& Slot) { return Slot.get() == &Item; });
    if (Place == FItems.end()) {
      return nullptr;
    }
  }
  std::unique_ptr<TCollectionItem> Removed = std::move(*Place);
  const auto Next = FItems.erase(Place);
  Renumber(static_cast<std::size_t>(Next - FItems.begin()), FItems.size());
  Item.FCollection = nullptr;
  Item.FID = -1;
  Item.FIndex = -1;
  Item.CollectionChanged(nullptr);
  return Removed;
}

TSetAsideItems::TSetAsideItems(TOwnedCollection& Collection)
    : FCollection(Collection), FItems(Collection.FItems.size()), FNextID(Collection.FNextID) {
  for (const auto& Item : Collection.FItems) {
    FPlaces.push_back({Item.get(), Item->ID()});
  }
}

void TSetAsideItems::TakeOut() {
  TUpdateScope Update(FCollection);
  while (!FCollection.FItems.empty()) {
    TCollectionItem& Item = *FCollection.FItems.back();
    const std::size_t Place = PlaceOf(Item);
    auto Removed = FCollection.Remove(Item, cnExtracted);
    if (Place < FItems.size()) {
      FItems[Place] = std::move(Removed);
    }
  }
  Update.End();
}

TCollectionItem* TSetAsideItems::BringBack(int Index) {
  std::unique_ptr<TCollectionItem>& Item = FItems[static_cast<std::size_t>(Index)];
  if (!FCollection.Accepts(*Item)) {
    return nullptr;
  }
  return &FCollection.Take(FCollection.Count(), Item);
}

void TSetAsideItems::Restore() {
  const auto Quietly = [](auto Call) {
    try {
      Call();
    } catch (...) { // The load's own exception is the one that tells what went wrong.
    }
  };
  auto& Items = FCollection.FItems;
  FCollection.BeginUpdate();
  while (!Items.empty()) {
    const TCollectionItem* const Item = Items.back().get();
    const std::size_t Place = PlaceOf(*Item);
    const bool Former = Place < FItems.size();
    std::unique_ptr<TCollectionItem> Removed;
    Quietly([&] { Removed = FCollection.Remove(*Items.back(), Former ? cnExtracted : cnDeleted); });
    if (!Items.empty() && Items.back().get() == Item) { // a receiver has raised
      Removed = std::move(Items.back());
      Items.pop_back();
    }
    if (Former) {
      FItems[Place] = std::move(Removed);
    }
  }
  FCollection.FNextID = FNextID;
  for (std::size_t I = 0; I < FItems.size(); ++I) {
    if (FItems[I] == nullptr) { // a receiver of notifications has freed it
      continue;
    }
    TCollectionItem& Item = *FItems[I];
    Item.FCollection = &FCollection;
    Item.FIndex = static_cast<int>(Items.size());
    Item.FID = FPlaces[I].ID;
    Items.push_back(std::move(FItems[I]));
    Quietly([&] { Item.CollectionChanged(&FCollection); });
    Quietly([&] { FCollection.Notify(Item, cnAdded); });
  }
  Quietly([&] { FCollection.EndUpdate(); });
}

std::size_t TSetAsideItems::PlaceOf(const TCollectionItem& Item) {
  const auto ItemAt = [this](std::size_t Place) { return FPlaces[Place].Item; };
  if (FPlacesByItem.empty()) {
    FPlacesByItem.resize(FPlaces.size());
    std::iota(FPlacesByItem.begin(), FPlacesByItem.end(), std::size_t{0});
    std::ranges::sort(FPlacesByItem, std::less<>(), ItemAt);
  }
  const auto Found = std::ranges::lower_bound(FPlacesByItem, &Item, std::less<>(), ItemAt);
  return Found == FPlacesByItem.end() || ItemAt(*Found) != &Item ? FItems.size() : *Found;
}

} // namespace qx
