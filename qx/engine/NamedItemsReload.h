#pragma once

#include <qx/engine/LoadScope.h>
#include <qx/platform/Collection.h>

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace qx {

/// Replaces the items of a collection while it is loaded. An item whose name the collection had before comes
/// back as the same object, so that a host may go on using it and its handlers stay.
///
/// `TContent::Store(Target, Source)` copies what such an item holds, and `TContent::Key(Name)` is what equal
/// names have in common. An item that comes back is first made as a new one, and what the items held comes
/// back with them when the load fails.
template <class TSet, class TItem, class TContent>
class TNamedItemsReload {
public:
  /// Empties the collection.
  TNamedItemsReload(TSet& Items, TLoadScope& Load) : FItems(Items), FFormer(SetAside(Items, Load)) {
    for (int I = 0; I < FFormer.Count(); ++I) {
      if (const auto* Item = dynamic_cast<TItem*>(FFormer.Items(I))) {
        FPlaces[TContent::Key(Item->Name())].push_back(I);
      }
    }
  }

  /// Appends an item that is as a new one.
  TItem& Add(std::string_view Name) {
    const auto Places = FPlaces.find(TContent::Key(Name));
    if (Places == FPlaces.end() || Places->second.empty()) {
      return FItems.Add();
    }
    const int Place = Places->second.front();
    Places->second.pop_front();
    TContent::Store(static_cast<TItem&>(*FFormer.Items(Place)), *FItems.ItemClass().Make());
    TCollectionItem* const Item = FFormer.BringBack(Place);
    return Item != nullptr ? static_cast<TItem&>(*Item) : FItems.Add();
  }

private:
  static TSetAsideItems& SetAside(TSet& Items, TLoadScope& Load) {
    const auto Contents = std::make_shared<std::map<const TItem*, std::unique_ptr<TItem>>>();
    for (const TItem& Item : Items) {
      auto& Content = (*Contents)[&Item] = Items.ItemClass().Make();
      TContent::Store(*Content, Item);
    }
    // Registered first, so undone last: when the items are in their places again.
    Load.OnFailure([&Items, Contents] {
      for (TItem& Item : Items) {
        if (const auto Former = Contents->find(&Item); Former != Contents->end()) {
          TContent::Store(Item, *Former->second);
        }
      }
    });
    return Load.SetAside(Items);
  }

  TSet& FItems;
  TSetAsideItems& FFormer;
  std::map<std::string, std::deque<int>> FPlaces; // of the former items, by name
};

} // namespace qx
