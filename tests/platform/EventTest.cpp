#include <qx/platform/Event.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>

namespace qx {
namespace {

struct TBase {
  virtual ~TBase() = default;
};
struct TDerived : TBase {
  int Value = 7;
};

using TEvent = TQXEvent<void(int& Count)>;
using TBaseEvent = TQXEvent<void(TBase& Item, TBase*& Result)>;
using TTypedView = TQXTypedEvent<void(TDerived&, TDerived*&), TBaseEvent::TSignature>;

TEST(Event, AnEmptySlotDoesNothing) {
  const TEvent Event;
  int Count = 0;
  Event(Count);
  EXPECT_EQ(Count, 0);
  EXPECT_FALSE(Event);
  EXPECT_TRUE(Event == nullptr);
}

void Increment(int& Count) { ++Count; }

TEST(Event, TakesAnyCallableAndIsClearedByNullptr) {
  TEvent Event;
  int Count = 0;
  Event = Increment;
  Event(Count);
  Event = [](auto& Value) { Value += 10; };
  Event(Count);
  Event = std::function<void(int&)>(Increment);
  Event(Count);
  EXPECT_EQ(Count, 12);
  auto Owned = std::make_unique<int>(5);
  Event = [Owned = std::move(Owned)](int& Value) { Value = *Owned; };
  Event(Count);
  EXPECT_EQ(Count, 5);
  Event = nullptr;
  Event(Count);
  EXPECT_EQ(Count, 5);
}

TEST(Event, AnEmptyCallableLeavesTheSlotEmpty) {
  TEvent Event;
  Event = std::function<void(int&)>();
  EXPECT_FALSE(Event);
  void (*None)(int&) = nullptr;
  Event = None;
  EXPECT_FALSE(Event);
}

TEST(Event, AHandlerMayReplaceItselfWhileItRuns) {
  TEvent Event;
  auto Token = std::make_shared<int>(3);
  const std::weak_ptr<int> Alive = Token;
  Event = [&Event, Token = std::move(Token)](int& Count) {
    Event = [](int& Value) { Value += 100; };
    Event = [](int& Value) { Value += 1000; };
    Count += *Token; // still there
  };
  int Count = 0;
  Event(Count);
  EXPECT_EQ(Count, 3);
  EXPECT_TRUE(Alive.expired());
  Event(Count);
  EXPECT_EQ(Count, 1003);
}

TEST(Event, AHandlerMayClearItselfAndFireAgain) {
  TEvent Event;
  auto Token = std::make_shared<int>(3);
  const std::weak_ptr<int> Alive = Token;
  Event = [&Event, Token = std::move(Token)](int& Count) {
    if (++Count < 3) {
      Event(Count);
    } else {
      Event = nullptr;
    }
    Count += *Token;
  };
  int Count = 0;
  Event(Count);
  EXPECT_EQ(Count, 12);
  EXPECT_FALSE(Event);
  EXPECT_TRUE(Alive.expired());
}

TEST(Event, AnExceptionOfAHandlerReachesTheCallerAndFreesWhatWasReplaced) {
  TEvent Event;
  auto Token = std::make_shared<int>(3);
  const std::weak_ptr<int> Alive = Token;
  Event = [&Event, Token = std::move(Token)](int&) {
    Event = Increment;
    throw std::runtime_error("handler");
  };
  int Count = 0;
  EXPECT_THROW(Event(Count), std::runtime_error);
  EXPECT_TRUE(Alive.expired());
  Event(Count);
  EXPECT_EQ(Count, 1);
}

TEST(Event, AssigningASlotSharesItsHandler) {
  TEvent First;
  int Calls = 0;
  First = [&Calls](int&) { ++Calls; };
  TEvent Second;
  Second = First;
  First = nullptr;
  int Count = 0;
  Second(Count);
  EXPECT_EQ(Calls, 1);
}

TEST(TypedEvent, TheHandlerGetsDerivedTypesAndItsResultIsCarriedBack) {
  TBaseEvent Slot;
  TTypedView View(Slot);
  View = [](TDerived& Item, TDerived*& Result) {
    EXPECT_EQ(Result, nullptr);
    EXPECT_EQ(Item.Value, 7);
    Result = &Item;
  };
  TDerived Item;
  TBase* Result = nullptr;
  Slot(Item, Result);
  EXPECT_EQ(Result, &Item);
  Result = nullptr;
  View(Item, Result);
  EXPECT_EQ(Result, &Item);
}

TEST(TypedEvent, TakesHandlersOfTheBaseTypesToo) {
  TBaseEvent Slot;
  TTypedView View(Slot);
  int Calls = 0;
  View = [&](TBase&, auto&) { ++Calls; };
  TDerived Item;
  TBase* Result = nullptr;
  Slot(Item, Result);
  TBaseEvent Other;
  Other = [&](TBase&, TBase*&) { Calls += 10; };
  View = Other;
  Slot(Item, Result);
  EXPECT_EQ(Calls, 11);
}

TEST(TypedEvent, ClearsAndTestsTheSlotBehindIt) {
  TBaseEvent Slot;
  TTypedView View(Slot);
  EXPECT_FALSE(View);
  Slot = [](TBase&, TBase*&) {};
  EXPECT_TRUE(View);
  View = nullptr;
  EXPECT_FALSE(Slot);
  View = std::function<void(TDerived&, TDerived*&)>();
  EXPECT_TRUE(View == nullptr);
}

TEST(Event, TakesACallableThatCanBeMadeFromAPointer) {
  struct TCallable {
    TCallable(int* Target) : FTarget(Target) {}
    void operator()(int&) const { ++*FTarget; }
    int* FTarget;
  };
  int Calls = 0;
  TEvent Event;
  Event = TCallable(&Calls);
  int Count = 0;
  Event(Count);
  EXPECT_EQ(Calls, 1);
}

TEST(TypedEvent, AHandlerOfTheSlotsOwnTypesServesToo) {
  TBaseEvent Slot;
  TTypedView View(Slot);
  View = [](TBase& Item, TBase*& Result) { Result = &Item; };
  TDerived Item;
  TBase* Result = nullptr;
  View(Item, Result);
  EXPECT_EQ(Result, &Item);
}

TEST(TypedEvent, APlainSlotTakesTheHandlerOfAView) {
  TBaseEvent Slot;
  TTypedView View(Slot);
  int Calls = 0;
  View = [&](auto&, auto&) { ++Calls; };
  TBaseEvent Other;
  Other = View;
  TDerived Item;
  TBase* Result = nullptr;
  Other(Item, Result);
  EXPECT_EQ(Calls, 1);
}

TEST(TypedEvent, AssigningAViewSharesTheHandlerOfItsSlot) {
  TBaseEvent Slot;
  TTypedView View(Slot);
  TBaseEvent OtherSlot;
  TTypedView OtherView(OtherSlot);
  int Calls = 0;
  View = [&](auto&, auto&) { ++Calls; };
  OtherView = View;
  TDerived Item;
  TBase* Result = nullptr;
  OtherSlot(Item, Result);
  EXPECT_EQ(Calls, 1);
}

} // namespace
} // namespace qx
