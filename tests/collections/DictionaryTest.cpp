#include <qx/collections/QXGenerics.Collections.h>

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <stdexcept>
#include <string>

namespace qx::generics {
namespace {

/// Puts every key where a test wants it: the hash code of a key is the key itself, less the 1 that is added.
struct TPlaced {
  bool Equals(int Left, int Right) const { return Left == Right; }
  std::int32_t GetHashCode(int Key) const { return Key - 1; }
};

using TNumbers = TQXDictionary<int, int, TPlaced>;
using TNames = TQXDictionary<std::string, int>;

template <class TDictionary>
std::string Listed(const TDictionary& Dictionary) {
  std::string Text;
  for (const auto& [Key, Value] : Dictionary) {
    Text += std::to_string(Key) + "=" + std::to_string(Value) + " ";
  }
  return Text;
}

struct TLogged : TNumbers {
  explicit TLogged(int Capacity = 0) : TNumbers(Capacity) {
    OnKeyNotify = [this](TNumbers& Sender, const int& Key, TDictionaryNotification Action) {
      EXPECT_EQ(&Sender, this);
      Log += "k" + std::to_string(Key) + ":" + std::to_string(Action) + "/" + std::to_string(Count()) + " ";
    };
    OnValueNotify = [this](TNumbers&, const int& Value, TDictionaryNotification Action) {
      Log += "v" + std::to_string(Value) + ":" + std::to_string(Action) + " ";
    };
  }
  std::string Log;
};

TEST(Dictionary, GrowsFromNothingToFourAndAtThreeQuartersToEight) {
  TNames Names;
  EXPECT_EQ(Names.Capacity(), 0);
  Names.Add("a", 1);
  EXPECT_EQ(Names.Capacity(), 4);
  Names.Add("b", 2);
  Names.Add("c", 3);
  EXPECT_EQ(Names.Capacity(), 4);
  Names.Add("d", 4);
  EXPECT_EQ(Names.Capacity(), 8);
  EXPECT_EQ(Names.Count(), 4);
}

TEST(Dictionary, CapacityIsAPowerOfTwoNotBelowFour) {
  TNames Names;
  for (const auto& [Asked, Given] :
       std::map<int, int>{{0, 0}, {1, 4}, {4, 4}, {5, 8}, {8, 8}, {1000, 1024}}) {
    Names.SetCapacity(Asked);
    EXPECT_EQ(Names.Capacity(), Given) << Asked;
  }
  Names.Add("a", 1);
  Names.Add("b", 1);
  EXPECT_THROW(Names.SetCapacity(1), std::out_of_range);
  EXPECT_THROW(TNames(-1), std::out_of_range);
  EXPECT_THROW(Names.SetCapacity((1 << 30) + 1), std::length_error);
  Names.TrimExcess();
  EXPECT_EQ(Names.Capacity(), 4);
  EXPECT_EQ(Names["a"] + Names["b"], 2);
}

TEST(Dictionary, AddRefusesAKeyThatIsPresent) {
  TNames Names;
  Names.Add("a", 1);
  EXPECT_THROW(Names.Add("a", 2), std::invalid_argument);
  EXPECT_EQ(Names["a"], 1);
  EXPECT_EQ(Names.Count(), 1);
}

TEST(Dictionary, GrowthComesBeforeTheKeyIsLookedFor) {
  TNumbers Numbers;
  for (int Key = 0; Key < 3; ++Key) {
    Numbers.Add(Key, Key);
  }
  EXPECT_EQ(Numbers.Capacity(), 4);
  Numbers.AddOrSetValue(0, 5);
  EXPECT_EQ(Numbers.Capacity(), 8);
  for (int Key = 3; Key < 6; ++Key) {
    Numbers.Add(Key, Key);
  }
  EXPECT_THROW(Numbers.Add(0, 1), std::invalid_argument);
  EXPECT_EQ(Numbers.Capacity(), 16);
}

TEST(Dictionary, ItemsReadAndReplaceAndRefuseAMissingKey) {
  TNames Names;
  Names.AddOrSetValue("a", 1);
  Names.SetItems("a", 2);
  EXPECT_EQ(Names.Items("a"), 2);
  EXPECT_THROW(Names.Items("b"), std::invalid_argument);
  EXPECT_THROW(Names.SetItems("b", 1), std::invalid_argument);
  int Value = 9;
  EXPECT_FALSE(Names.TryGetValue("b", Value));
  EXPECT_EQ(Value, 0);
  EXPECT_TRUE(Names.TryGetValue("a", Value));
  EXPECT_EQ(Value, 2);
  EXPECT_TRUE(Names.ContainsKey("a"));
  EXPECT_TRUE(Names.ContainsValue(2));
  EXPECT_FALSE(Names.ContainsValue(1));
}

TEST(Dictionary, AMissingKeyIsNoErrorToRemoveOrExtract) {
  TLogged Numbers;
  Numbers.Remove(3);
  const TPair<int, int> Pair = Numbers.ExtractPair(4);
  EXPECT_EQ(Pair, (TPair<int, int>{4, 0}));
  EXPECT_EQ(Numbers.Log, "");
}

TEST(Dictionary, NotificationsTellKeyThenValueAfterTheChange) {
  TLogged Numbers;
  Numbers.Add(1, 10);
  EXPECT_EQ(Numbers.Log, "k1:0/1 v10:0 ");
  Numbers.Log.clear();
  Numbers.AddOrSetValue(1, 11);
  Numbers.SetItems(1, 12);
  EXPECT_EQ(Numbers.Log, "v10:1 v11:0 v11:1 v12:0 ");
  Numbers.Log.clear();
  Numbers.Add(2, 20);
  Numbers.Log.clear();
  Numbers.Remove(1);
  EXPECT_EQ(Numbers.Log, "k1:1/1 v12:1 ");
  Numbers.Log.clear();
  EXPECT_EQ(Numbers.ExtractPair(2), (TPair<int, int>{2, 20}));
  EXPECT_EQ(Numbers.Log, "k2:2/0 v20:2 ");
}

TEST(Dictionary, ClearNotifiesEachKeyAndValueOnceInTableOrder) {
  TLogged Numbers;
  Numbers.Add(2, 20);
  Numbers.Add(1, 10);
  Numbers.Log.clear();
  Numbers.Clear();
  EXPECT_EQ(Numbers.Log, "k1:1/0 v10:1 k2:1/0 v20:1 ");
  EXPECT_EQ(Numbers.Capacity(), 0);
  Numbers.Add(1, 1);
  EXPECT_EQ(Numbers.Capacity(), 4);
}

TEST(Dictionary, RehashingNotifiesNobody) {
  TLogged Numbers;
  Numbers.Add(1, 10);
  Numbers.Log.clear();
  Numbers.SetCapacity(100);
  Numbers.TrimExcess();
  EXPECT_EQ(Numbers.Log, "");
}

TEST(Dictionary, EnumerationFollowsTheTableWhichProbesAndWraps) {
  TNumbers Numbers(8);
  Numbers.Add(6, 1);
  Numbers.Add(14, 2); // home 6 too: goes to 7
  Numbers.Add(22, 3); // wraps to 0
  Numbers.Add(0, 4);  // pushed to 1
  EXPECT_EQ(Listed(Numbers), "22=3 0=4 6=1 14=2 ");
  Numbers.Remove(6); // 14 and 22 move back, 0 comes home
  EXPECT_EQ(Listed(Numbers), "0=4 14=2 22=3 ");
}

TEST(Dictionary, RemovalFromTheMiddleOfAChainKeepsTheOthersFindable) {
  for (int Removed = 0; Removed < 5; ++Removed) {
    TNumbers Numbers(8);
    for (int I = 0; I < 5; ++I) {
      Numbers.Add(5 + 8 * I, I);
    }
    Numbers.Remove(5 + 8 * Removed);
    for (int I = 0; I < 5; ++I) {
      EXPECT_EQ(Numbers.ContainsKey(5 + 8 * I), I != Removed);
    }
  }
}

TEST(Dictionary, AFullTableStillEndsASearch) {
  TNumbers Numbers;
  for (int Key = 0; Key < 4; ++Key) {
    Numbers.Add(Key, Key);
  }
  Numbers.SetCapacity(4);
  EXPECT_EQ(Numbers.Capacity(), 4);
  EXPECT_FALSE(Numbers.ContainsKey(9));
  Numbers.Remove(9);
  Numbers.Remove(2);
  EXPECT_EQ(Listed(Numbers), "0=0 1=1 3=3 ");
  Numbers.SetCapacity(3);
  Numbers.Add(2, 2);
  EXPECT_EQ(Numbers.Capacity(), 8);
}

TEST(Dictionary, ArgumentsMayReferIntoTheTable) {
  TNames Names;
  Names.Add("first", 1);
  Names.Add("second", 2);
  Names.Add("third", 3);
  const std::string& Inside = *Names.Keys().begin();
  const std::string Copy = Inside;
  EXPECT_THROW(Names.Add(Inside, 1), std::invalid_argument); // grows first
  EXPECT_EQ(Names.ExtractPair(*Names.Keys().begin()).Key.size() > 0, true);
  EXPECT_EQ(Names.Count(), 2);
  Names.Remove(*Names.Keys().begin());
  EXPECT_EQ(Names.Count(), 1);
  Names.AddOrSetValue("fourth", Names[*Names.Keys().begin()]);
  EXPECT_EQ(Names.Count(), 2);
  EXPECT_FALSE(Copy.empty());
}

TEST(Dictionary, IsMadeFromAnyEnumerableOfPairs) {
  TNames Source;
  Source.Add("a", 1);
  Source.Add("b", 2);
  const TQXEnumerable<TPair<std::string, int>>& Pairs = Source;
  const TNames FromPairs(Pairs);
  const TNames Copy(Source);
  EXPECT_EQ(FromPairs.ToArray(), Source.ToArray());
  EXPECT_EQ(Copy.Count(), 2);
  const auto Enumerator = Pairs.GetEnumerator();
  int Sum = 0;
  while (Enumerator->MoveNext()) {
    Sum += Enumerator->Current().Value;
  }
  EXPECT_EQ(Sum, 3);
  EXPECT_EQ(Pairs.ToArray().size(), 2U);
}

TEST(Dictionary, AssignReplacesTheContentAndSurvivesItself) {
  TNames Source;
  Source.Add("a", 1);
  TNames Names;
  Names.Add("b", 2);
  Names.Assign(Source);
  EXPECT_EQ(Names.ToArray(), Source.ToArray());
  Names.Assign(Names);
  EXPECT_EQ(Names.Count(), 1);
}

TEST(Dictionary, KeysAndValuesAreViews) {
  TNumbers Numbers(8);
  const auto Keys = Numbers.Keys();
  Numbers.Add(3, 30);
  Numbers.Add(1, 10);
  EXPECT_EQ(Keys.Count(), 2);
  EXPECT_EQ(Keys.ToArray(), (std::vector<int>{1, 3}));
  EXPECT_EQ(Numbers.Values().ToArray(), (std::vector<int>{10, 30}));
}

TEST(Dictionary, DescendantsMayOverrideEveryStep) {
  struct TDescendant : TNumbers {
    void DoAdd(std::int32_t HashCode, int Index, int Key, int Value) override {
      Log += "add" + std::to_string(HashCode) + "@" + std::to_string(Index) + " ";
      TNumbers::DoAdd(HashCode, Index, Key, Value);
    }
    void DoSetValue(int Index, int Value) override {
      Log += "set@" + std::to_string(Index) + " ";
      TNumbers::DoSetValue(Index, Value);
    }
    int DoRemove(const int& Key, std::int32_t HashCode, TDictionaryNotification Notification) override {
      Log += "remove" + std::to_string(Notification) + " ";
      return TNumbers::DoRemove(Key, HashCode, Notification);
    }
    void KeyNotify(const int&, TDictionaryNotification) override { Log += "key "; }
    std::string Log;
  } Numbers;
  Numbers.Add(5, 1);
  Numbers.AddOrSetValue(5, 2);
  Numbers.Remove(5);
  Numbers.ExtractPair(5);
  EXPECT_EQ(Numbers.Log, "add5@1 key set@1 remove1 key remove2 ");
}

TEST(Dictionary, HashCodesAreNeverNegative) {
  struct TExtreme {
    bool Equals(int Left, int Right) const { return Left == Right; }
    std::int32_t GetHashCode(int) const { return -1; } // all bits: 0x7fffffff + 1 has the sign bit cleared: 0
  };
  TQXDictionary<int, int, TExtreme> Numbers(4);
  Numbers.Add(7, 1);
  EXPECT_EQ(Numbers[7], 1);
}

TEST(Dictionary, ACircularRangeLeavesOutItsBottom) {
  EXPECT_TRUE(InCircularRange(1, 2, 3));
  EXPECT_TRUE(InCircularRange(1, 3, 3));
  EXPECT_FALSE(InCircularRange(1, 1, 3));
  EXPECT_FALSE(InCircularRange(1, 4, 3));
  EXPECT_TRUE(InCircularRange(6, 7, 2));
  EXPECT_TRUE(InCircularRange(6, 2, 2));
  EXPECT_FALSE(InCircularRange(6, 6, 2));
  EXPECT_FALSE(InCircularRange(6, 3, 2));
  EXPECT_FALSE(InCircularRange(5, 5, 5));
}

TEST(Dictionary, EqualsAMapOverRandomOperations) {
  std::mt19937 Choices(1);
  TQXDictionary<int, int> Numbers;
  std::map<int, int> Model;
  std::map<int, TDictionaryHint> Hints;
  for (int Step = 0; Step < 100000; ++Step) {
    const int Key = static_cast<int>(Choices() % 200);
    const int Value = static_cast<int>(Choices() % 1000);
    switch (Choices() % 5) {
    case 0:
    case 1:
      Numbers.AddOrSetValue(Key, Value);
      Model[Key] = Value;
      break;
    case 2:
      Numbers.Remove(Key);
      Model.erase(Key);
      break;
    case 3:
      if (Choices() % 50 == 0) {
        Numbers.SetCapacity(Numbers.Count() + static_cast<int>(Choices() % 3));
      }
      break;
    default:
      const int* const Found = Numbers.Find(Key, Hints[Key]);
      ASSERT_EQ(Found != nullptr, Model.contains(Key));
      ASSERT_TRUE(Found == nullptr || *Found == Model[Key]);
      ASSERT_EQ(Numbers.ContainsKey(Key), Model.contains(Key));
      if (Model.contains(Key)) {
        ASSERT_EQ(Numbers[Key], Model[Key]);
      }
    }
    ASSERT_EQ(Numbers.Count(), static_cast<int>(Model.size()));
  }
  std::map<int, int> Read;
  for (const auto& [Key, Value] : Numbers) {
    Read[Key] = Value;
  }
  EXPECT_EQ(Read, Model);
}

TEST(Dictionary, AHintFindsAKeyWhileKeysComeAndGo) {
  TQXDictionary<std::string, int> Numbers;
  TDictionaryHint Hint;
  EXPECT_EQ(Numbers.Find("x", Hint), nullptr);
  Numbers.Add("x", 1);
  ASSERT_NE(Numbers.Find("x", Hint), nullptr);
  EXPECT_EQ(*Numbers.Find("x", Hint), 1);
  Numbers.SetItems("x", 2);
  EXPECT_EQ(*Numbers.Find("x", Hint), 2);
  for (int I = 0; I < 100; ++I) {
    Numbers.Add(std::to_string(I), I);
    EXPECT_EQ(*Numbers.Find("x", Hint), 2);
  }
  Numbers.Remove("x");
  EXPECT_EQ(Numbers.Find("x", Hint), nullptr);
  Numbers.Add("x", 3);
  EXPECT_EQ(*Numbers.Find("x", Hint), 3);
  Numbers.TrimExcess();
  EXPECT_EQ(*Numbers.Find("x", Hint), 3);
  Numbers.Clear();
  EXPECT_EQ(Numbers.Find("x", Hint), nullptr);
}

TEST(Dictionary, AHintReplacesValuesAsTheKeyDoes) {
  TQXDictionary<std::string, int> Numbers;
  TDictionaryHint Hint;
  EXPECT_THROW(Numbers.SetItems("x", 1, Hint), std::invalid_argument);
  Numbers.Add("x", 1);
  Numbers.SetItems("x", 2, Hint);
  EXPECT_EQ(Numbers["x"], 2);
  for (int I = 0; I < 100; ++I) {
    Numbers.Add("k" + std::to_string(I), I);
    Numbers.SetItems("x", -I, Hint);
    ASSERT_EQ(Numbers["x"], -I);
    ASSERT_EQ(Numbers["k" + std::to_string(I)], I);
  }
  Numbers.Remove("x");
  EXPECT_THROW(Numbers.SetItems("x", 1, Hint), std::invalid_argument);
}

TEST(Dictionary, AHintTellsDictionariesApart) {
  TDictionaryHint Hint;
  for (int I = 0; I < 10; ++I) { // each likely at the place of the former one
    TQXDictionary<std::string, int> Numbers;
    if (I % 2 == 0) {
      Numbers.Add("x", I);
    }
    const int* const Found = Numbers.Find("x", Hint);
    EXPECT_EQ(Found != nullptr, I % 2 == 0);
    EXPECT_TRUE(Found == nullptr || *Found == I);
    const TQXDictionary<std::string, int> Copy(Numbers);
    Numbers.AddOrSetValue("x", -1);
    EXPECT_EQ(*Numbers.Find("x", Hint), -1);
    EXPECT_EQ(Copy.Find("x", Hint) != nullptr, I % 2 == 0);
  }
}

TEST(Dictionary, AHintNeitherHashesNorComparesWhileKeysStay) {
  static int Looks;
  struct TCounting {
    bool Equals(int Left, int Right) const { return ++Looks, Left == Right; }
    std::int32_t GetHashCode(int Key) const { return ++Looks, Key; }
  };
  TQXDictionary<int, int, TCounting> Numbers;
  Numbers.Add(7, 1);
  TDictionaryHint Hint;
  EXPECT_NE(Numbers.Find(7, Hint), nullptr);
  Looks = 0;
  for (int I = 0; I < 10; ++I) {
    Numbers.SetItems(7, I);
    Looks = 0;
    EXPECT_EQ(*Numbers.Find(7, Hint), I);
    EXPECT_EQ(Looks, 0);
  }
}

} // namespace
} // namespace qx::generics
