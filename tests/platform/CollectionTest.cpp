#include <qx/platform/Collection.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace qx {
namespace {

class TItem : public TCollectionItem {
public:
  int Value = 0;
  void SetValue(int NewValue) {
    Value = NewValue;
    Changed(false);
  }
  void Assign(const TPersistent& Source) override {
    if (const auto* Item = SourceAs<TItem>(Source)) {
      if (Item->Value == 13) {
        throw std::runtime_error("13 cannot be copied");
      }
      SetValue(Item->Value);
    } else {
      TCollectionItem::Assign(Source);
    }
  }
};

struct TSpecialItem : TItem {};

class TList : public TTypedCollection<TItem, TOwnedCollection> {
public:
  explicit TList(TItemClass<TItem> ItemClass = ItemClassOf<TItem>()) : TTypedCollection(nullptr, ItemClass) {}
  std::string Log;

protected:
  void Notify(TCollectionItem& Item, TCollectionNotification Action) override {
    static const char* const Names[] = {"added", "extracted", "deleted"};
    Log += std::string(Names[Action]) + std::to_string(Item.Index()) + "/" + std::to_string(Count()) + " ";
  }
  void Update(TCollectionItem* Item) override {
    Log += Item == nullptr ? "all " : "item" + std::to_string(Item->Index()) + " ";
  }
};

void Fill(TList& List, int Count) {
  for (int I = 0; I < Count; ++I) {
    List.Add().Value = I;
  }
  List.Log.clear();
}

std::string Values(const TList& List) {
  std::string Text;
  for (const TItem& Item : List) {
    EXPECT_EQ(&List[Item.Index()], &Item);
    Text += std::to_string(Item.Value) + " ";
  }
  return Text;
}

TEST(Collection, ItemsAreMadeInPlaceAndReportedOnceWhole) {
  TList List;
  TItem& Item = List.Add();
  EXPECT_EQ(List.Log, "added0/1 all ");
  EXPECT_EQ(Item.Collection(), &List);
  EXPECT_EQ(Item.ID(), 0);
  List.Insert(0);
  EXPECT_EQ(Item.Index(), 1);
  EXPECT_EQ(List[0].ID(), 1);
}

TEST(Collection, AnIDIsNeverGivenTwice) {
  TList List;
  Fill(List, 3);
  List.Delete(2);
  EXPECT_EQ(List.Add().ID(), 3);
  EXPECT_EQ(List.FindItemID(1), &List[1]);
  EXPECT_EQ(List.FindItemID(2), nullptr);
}

TEST(Collection, AnItemThatGoesIsReportedWhileItIsInItsPlace) {
  TList List;
  Fill(List, 3);
  List.Delete(1);
  EXPECT_EQ(List.Log, "deleted1/3 all ");
  EXPECT_EQ(Values(List), "0 2 ");
  List.Log.clear();
  const std::unique_ptr<TItem> Extracted = List.Extract(List[0]);
  EXPECT_EQ(List.Log, "extracted0/2 all ");
  EXPECT_EQ(Extracted->Collection(), nullptr);
  EXPECT_EQ(Extracted->Index(), -1);
  EXPECT_EQ(Extracted->ID(), -1);
  EXPECT_THROW(List.Extract(*Extracted), std::invalid_argument);
}

TEST(Collection, ClearReportsTheLastItemFirstAndUpdatesOnce) {
  TList List;
  Fill(List, 3);
  List.Clear();
  EXPECT_EQ(List.Log, "deleted2/3 deleted1/2 deleted0/1 all ");
  List.Log.clear();
  List.Clear();
  EXPECT_EQ(List.Log, "");
}

TEST(Collection, ChangesAreHeldBackDuringAnUpdateAndNotificationsAreNot) {
  TList List;
  Fill(List, 2);
  List.BeginUpdate();
  List.BeginUpdate();
  List[0].SetValue(5);
  List.Add();
  List.EndUpdate();
  EXPECT_TRUE(List.Updating());
  EXPECT_EQ(List.Log, "added2/3 ");
  List.EndUpdate();
  EXPECT_EQ(List.Log, "added2/3 all ");
  EXPECT_THROW(List.EndUpdate(), std::logic_error);
  List.Log.clear();
  List[1].SetValue(6);
  EXPECT_EQ(List.Log, "item1 ");
}

TEST(Collection, AnUpdateScopeEndsWhenAnExceptionLeavesIt) {
  TList List;
  try {
    TUpdateScope Update(List);
    throw std::runtime_error("inside");
  } catch (const std::runtime_error&) {
  }
  EXPECT_FALSE(List.Updating());
}

TEST(Collection, ItemsMoveWithinTheirCollection) {
  TList List;
  Fill(List, 5);
  List[0].SetIndex(3);
  EXPECT_EQ(Values(List), "1 2 3 0 4 ");
  EXPECT_EQ(List.Log, "all ");
  List.Move(4, 0);
  EXPECT_EQ(Values(List), "4 1 2 3 0 ");
  List.Log.clear();
  List.Move(2, 2);
  EXPECT_EQ(List.Log, "");
  EXPECT_THROW(List.Move(0, 5), std::out_of_range);
}

TEST(Collection, ItemsMoveToAnotherCollectionWithTheirOwnership) {
  TList First;
  TList Second;
  Fill(First, 2);
  TItem& Item = First[0];
  Item.SetCollection(Second);
  EXPECT_EQ(Values(First), "1 ");
  EXPECT_EQ(&Second[0], &Item);
  EXPECT_EQ(First.Log, "extracted0/2 all ");
  EXPECT_EQ(Second.Log, "added0/1 all ");
  Item.SetCollection(Second);
  EXPECT_EQ(Second.Count(), 1);
}

TEST(Collection, AnItemStaysWhereItIsWhenTheOtherCollectionRefusesIt) {
  TList First;
  TList Second(ItemClassOf<TSpecialItem>());
  struct TStrict : TTypedCollection<TSpecialItem, TOwnedCollection> {
    TStrict() : TTypedCollection(nullptr, ItemClassOf<TSpecialItem>()) {}
  } Strict;
  Fill(First, 2);
  TItem& Item = First[0];
  EXPECT_THROW(static_cast<TCollectionItem&>(Item).SetCollection(Strict), std::invalid_argument);
  EXPECT_EQ(Item.Collection(), &First);
  EXPECT_EQ(Values(First), "0 1 ");
  Item.SetCollection(Second); // holds any TItem, whatever it makes itself
  EXPECT_EQ(Item.Collection(), &Second);
}

TEST(Collection, AFreeItemHasNoPlaceToGo) {
  TItem Item;
  TList List;
  EXPECT_THROW(Item.SetCollection(List), std::logic_error);
  EXPECT_THROW(Item.SetIndex(0), std::logic_error);
  Item.SetValue(3); // nobody to tell
}

TEST(Collection, AWholeItemIsTakenOver) {
  TList List;
  auto Item = std::make_unique<TSpecialItem>();
  Item->Value = 9;
  const TSpecialItem& Inserted = List.Insert(0, std::move(Item));
  EXPECT_EQ(&List[0], &Inserted);
  EXPECT_THROW(List.Insert(0, std::unique_ptr<TItem>()), std::invalid_argument);
  EXPECT_THROW(List.Insert(5, std::make_unique<TItem>()), std::out_of_range);
}

TEST(Collection, AnItemOfAForeignClassIsRefused) {
  TList List;
  TOwnedCollection& Base = List;
  EXPECT_THROW(Base.Insert(0, std::make_unique<TCollectionItem>()), std::invalid_argument);
  EXPECT_EQ(List.Count(), 0);
}

TEST(Collection, ItemClassesMakeItemsAndKnowTheirName) {
  TList List(ItemClassOf<TSpecialItem>());
  EXPECT_NE(dynamic_cast<TSpecialItem*>(&List.Add()), nullptr);
  EXPECT_EQ(List.ItemClass().Name(), "TSpecialItem");
  EXPECT_TRUE(List.ItemClass() == TItemClass<TItem>(ItemClassOf<TSpecialItem>()));
  EXPECT_FALSE(List.ItemClass() == ItemClassOf<TItem>());
  EXPECT_EQ(List[0].DisplayName(), "TSpecialItem");
}

TEST(Collection, AssignCopiesTheItemsInOneUpdate) {
  TList Source;
  Fill(Source, 3);
  TList List;
  Fill(List, 1);
  List.Assign(Source);
  EXPECT_EQ(Values(List), "0 1 2 ");
  EXPECT_EQ(List.Log, "deleted0/1 added0/1 added1/2 added2/3 all ");
  List.Log.clear();
  List.Assign(List);
  EXPECT_EQ(Values(List), "0 1 2 ");
  EXPECT_EQ(List.Log, "");
}

TEST(Collection, AnItemThatRaisesDuringAssignLeavesTheUpdateClosed) {
  TList Source;
  Fill(Source, 2);
  Source[1].Value = 13;
  TList List;
  EXPECT_THROW(List.Assign(Source), std::runtime_error);
  EXPECT_FALSE(List.Updating());
}

TEST(Collection, AnIndexOutsideRaisesAndNamesItself) {
  TList List;
  Fill(List, 2);
  EXPECT_THROW(List[2], std::out_of_range);
  EXPECT_THROW(List[-1], std::out_of_range);
  EXPECT_THROW(List.Insert(3), std::out_of_range);
  EXPECT_THROW(List.Delete(2), std::out_of_range);
  try {
    List[2];
  } catch (const std::out_of_range& Error) {
    EXPECT_STREQ(Error.what(), "Index 2 is outside the TList of 2 items");
  }
}

TEST(Collection, AReceiverMayTakeTheItemOutItself) {
  struct TSelfClearing : TTypedCollection<TItem, TOwnedCollection> {
    TSelfClearing() : TTypedCollection(nullptr, ItemClassOf<TItem>()) {}
    int Freed = 0;
    void Notify(TCollectionItem& Item, TCollectionNotification Action) override {
      if (Action == cnDeleted) {
        Extract(static_cast<TItem&>(Item)).reset();
        ++Freed;
      }
    }
  } List;
  List.Add();
  List.Add().Value = 4;
  List.Delete(0);
  EXPECT_EQ(List.Freed, 1);
  ASSERT_EQ(List.Count(), 1);
  EXPECT_EQ(List[0].Value, 4);
}

TEST(SetAsideItems, ComeBackAsTheyWereInPlaceOfTheOthers) {
  TList List;
  Fill(List, 3);
  TItem* const Second = &List[1];
  TSetAsideItems Aside(List);
  Aside.TakeOut();
  EXPECT_EQ(List.Log, "extracted2/3 extracted1/2 extracted0/1 all ");
  EXPECT_EQ(List.Count(), 0);
  EXPECT_EQ(Second->Collection(), nullptr);
  List.Add().Value = 7;
  EXPECT_EQ(Aside.BringBack(1), Second); // one of the former items comes back, in another place
  List.Move(1, 0);
  List.Log.clear();
  Aside.Restore();
  EXPECT_EQ(List.Log, "deleted1/2 extracted0/1 added0/1 added1/2 added2/3 all ");
  EXPECT_EQ(Values(List), "0 1 2 ");
  EXPECT_EQ(&List[1], Second);
  EXPECT_EQ(List[2].ID(), 2);
  EXPECT_EQ(List.Add().ID(), 3);
}

TEST(SetAsideItems, AreFreedWithTheObjectUnlessTheyWereBroughtBack) {
  TList List;
  Fill(List, 2);
  {
    TSetAsideItems Aside(List);
    Aside.TakeOut();
    EXPECT_NE(Aside.BringBack(1), nullptr);
    EXPECT_NE(Aside.Items(0), nullptr);
    EXPECT_EQ(Aside.Items(1), nullptr);
  }
  EXPECT_EQ(Values(List), "1 ");
}

TEST(SetAsideItems, ComeBackThoughAReceiverFreesOrRefusesThoseInTheirPlace) {
  class TDeleting : public TList {
  public:
    bool Deletes = false;
    bool Raises = false;

  protected:
    void Notify(TCollectionItem& Item, TCollectionNotification Action) override {
      if (Action == cnDeleted && Deletes) {
        Deletes = false;
        Delete(Item.Index());
      }
      if (Raises) {
        throw std::runtime_error("receiver");
      }
    }
  };
  for (const bool Deletes : {true, false}) {
    TDeleting List;
    Fill(List, 3);
    TSetAsideItems Aside(List);
    Aside.TakeOut();
    List.Add().Value = 7;
    List.Add().Value = 8;
    List.Deletes = Deletes;
    List.Raises = !Deletes;
    Aside.Restore();
    EXPECT_EQ(Values(List), "0 1 2 ");
  }
}

} // namespace
} // namespace qx
