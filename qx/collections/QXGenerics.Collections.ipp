#pragma once

// Definitions of QXGenerics.Collections.h.

#include <qx/collections/QXGenerics.Collections.h>

#include <iterator>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

namespace qx::generics {

template <class T>
std::vector<T> TQXEnumerable<T>::ToArray() const {
  std::vector<T> Elements;
  const auto Enumerator = GetEnumerator();
  while (Enumerator->MoveNext()) {
    Elements.push_back(Enumerator->Current());
  }
  return Elements;
}

template <class K, class V, class TComparer>
template <auto Part>
class TQXDictionary<K, V, TComparer>::TIterator {
public:
  using iterator_category = std::forward_iterator_tag;
  using reference = decltype(Part(std::declval<const TBucket&>()));
  using value_type = std::remove_cvref_t<reference>;
  using pointer = const value_type*;
  using difference_type = std::ptrdiff_t;

  TIterator() = default;
  TIterator(const TBucket* Bucket, const TBucket* End) : FBucket(Bucket), FEnd(End) { SkipEmpty(); }

  reference operator*() const { return Part(*FBucket); }
  pointer operator->() const { return &Part(*FBucket); }
  TIterator& operator++() {
    ++FBucket;
    SkipEmpty();
    return *this;
  }
  TIterator operator++(int) {
    TIterator Before = *this;
    ++*this;
    return Before;
  }
  bool operator==(const TIterator&) const = default;

private:
  void SkipEmpty() {
    while (FBucket != FEnd && FBucket->HashCode == TBucket::EmptyHash) {
      ++FBucket;
    }
  }

  const TBucket* FBucket = nullptr;
  const TBucket* FEnd = nullptr;
};

template <class K, class V, class TComparer>
template <auto Part>
class TQXDictionary<K, V, TComparer>::TView {
public:
  explicit TView(const TQXDictionary& Dictionary) : FDictionary(&Dictionary) {}

  int Count() const { return FDictionary->Count(); }
  auto begin() const {
    const auto& Items = FDictionary->FItems;
    return TIterator<Part>(Items.data(), Items.data() + Items.size());
  }
  auto end() const {
    const auto& Items = FDictionary->FItems;
    return TIterator<Part>(Items.data() + Items.size(), Items.data() + Items.size());
  }
  auto ToArray() const { return std::vector(begin(), end()); }

private:
  const TQXDictionary* FDictionary;
};

template <class K, class V, class TComparer>
TQXDictionary<K, V, TComparer>::TQXDictionary(int ACapacity, TComparer Comparer)
    : FComparer(std::move(Comparer)) {
  SetCapacity(ACapacity);
}

template <class K, class V, class TComparer>
TQXDictionary<K, V, TComparer>::TQXDictionary(const TQXEnumerable<TElement>& Source, TComparer Comparer)
    : FComparer(std::move(Comparer)) {
  const auto Enumerator = Source.GetEnumerator();
  while (Enumerator->MoveNext()) {
    Add(Enumerator->Current().Key, Enumerator->Current().Value);
  }
}

template <class K, class V, class TComparer>
void TQXDictionary<K, V, TComparer>::SetCapacity(int Value) {
  constexpr int Smallest = 4;
  if (Value < FCount) {
    throw std::out_of_range("Capacity " + std::to_string(Value) + " is below the count of " +
                            std::to_string(FCount));
  }
  std::int64_t NewCapacity = Value == 0 ? 0 : Smallest;
  while (NewCapacity < Value) {
    NewCapacity *= 2;
  }
  Rehash(NewCapacity);
}

template <class K, class V, class TComparer>
void TQXDictionary<K, V, TComparer>::Add(K Key, V Value) {
  GrowWhenDue();
  const std::int32_t HashCode = Hash(Key);
  const int Index = GetBucketIndex(Key, HashCode);
  if (Index >= 0) {
    throw std::invalid_argument("Duplicates not allowed: the key is present already");
  }
  DoAdd(HashCode, ~Index, std::move(Key), std::move(Value));
}

template <class K, class V, class TComparer>
void TQXDictionary<K, V, TComparer>::AddOrSetValue(K Key, V Value) {
  GrowWhenDue();
  const std::int32_t HashCode = Hash(Key);
  const int Index = GetBucketIndex(Key, HashCode);
  if (Index >= 0) {
    DoSetValue(Index, std::move(Value));
  } else {
    DoAdd(HashCode, ~Index, std::move(Key), std::move(Value));
  }
}

template <class K, class V, class TComparer>
const V& TQXDictionary<K, V, TComparer>::Items(const K& Key) const {
  return Bucket(ExistingBucket(Key)).Pair.Value;
}

template <class K, class V, class TComparer>
void TQXDictionary<K, V, TComparer>::SetItems(const K& Key, V Value) {
  DoSetValue(ExistingBucket(Key), std::move(Value));
}

template <class K, class V, class TComparer>
void TQXDictionary<K, V, TComparer>::SetItems(const K& Key, V Value, TDictionaryHint& Hint) {
  const bool IsPresent = Find(Key, Hint) != nullptr;
  DoSetValue(IsPresent ? Hint.Index : ExistingBucket(Key), std::move(Value));
}

template <class K, class V, class TComparer>
bool TQXDictionary<K, V, TComparer>::TryGetValue(const K& Key, V& Value) const {
  const int Index = GetBucketIndex(Key, Hash(Key));
  Value = Index >= 0 ? Bucket(Index).Pair.Value : V();
  return Index >= 0;
}

template <class K, class V, class TComparer>
void TQXDictionary<K, V, TComparer>::FindAnew(const K& Key, TDictionaryHint& Hint) const {
  if (Hint.HashCode < 0 || !std::is_empty_v<TComparer>) { // comparers with a state may not agree
    Hint.HashCode = Hash(Key);
  }
  if (FLayout == 0) {
    FLayout = detail::NewDictionaryLayout();
  }
  Hint.Index = GetBucketIndex(Key, Hint.HashCode);
  Hint.Layout = FLayout;
}

template <class K, class V, class TComparer>
bool TQXDictionary<K, V, TComparer>::ContainsValue(const V& Value) const {
  const TQXEqualityComparer<V> Comparer;
  for (const V& Present : Values()) {
    if (Comparer.Equals(Present, Value)) {
      return true;
    }
  }
  return false;
}

template <class K, class V, class TComparer>
TPair<K, V> TQXDictionary<K, V, TComparer>::ExtractPair(const K& Key) {
  TElement Pair{Key, V()};
  Pair.Value = DoRemove(Pair.Key, Hash(Pair.Key), dnExtracted);
  return Pair;
}

template <class K, class V, class TComparer>
void TQXDictionary<K, V, TComparer>::Clear() {
  const std::vector<TBucket> Former = std::exchange(FItems, {});
  FCount = 0;
  FGrowThreshold = 0;
  FLayout = 0;
  for (const TBucket& Bucket : Former) {
    if (Bucket.HashCode != TBucket::EmptyHash) {
      KeyNotify(Bucket.Pair.Key, dnRemoved);
      ValueNotify(Bucket.Pair.Value, dnRemoved);
    }
  }
}

template <class K, class V, class TComparer>
void TQXDictionary<K, V, TComparer>::Assign(const TQXDictionary& Source) {
  if (&Source == this) {
    return;
  }
  const std::vector<TElement> Pairs = Source.ToArray(); // a handler of Clear may change the source
  Clear();
  for (const TElement& Pair : Pairs) {
    AddOrSetValue(Pair.Key, Pair.Value);
  }
}

template <class K, class V, class TComparer>
std::unique_ptr<TQXEnumerator<TPair<K, V>>> TQXDictionary<K, V, TComparer>::GetEnumerator() const {
  class TEnumerator final : public TQXEnumerator<TElement> {
  public:
    explicit TEnumerator(const TQXDictionary& Dictionary)
        : FNext(Dictionary.begin()), FEnd(Dictionary.end()) {}
    bool MoveNext() override {
      if (FNext == FEnd) {
        return false;
      }
      FCurrent = &*FNext++;
      return true;
    }
    const TElement& Current() const override { return *FCurrent; }

  private:
    decltype(std::declval<const TQXDictionary&>().begin()) FNext;
    decltype(FNext) FEnd;
    const TElement* FCurrent = nullptr;
  };
  return std::make_unique<TEnumerator>(*this);
}

template <class K, class V, class TComparer>
std::vector<TPair<K, V>> TQXDictionary<K, V, TComparer>::ToArray() const {
  return std::vector<TElement>(begin(), end());
}

template <class K, class V, class TComparer>
void TQXDictionary<K, V, TComparer>::DoAdd(std::int32_t HashCode, int Index, K Key, V Value) {
  TBucket& Free = Bucket(Index);
  Free.Pair.Key = Key;
  Free.Pair.Value = Value;
  Free.HashCode = HashCode;
  ++FCount;
  FLayout = 0;
  // The handlers get the arguments: they may change the table under the bucket.
  KeyNotify(Key, dnAdded);
  ValueNotify(Value, dnAdded);
}

template <class K, class V, class TComparer>
void TQXDictionary<K, V, TComparer>::DoSetValue(int Index, V Value) {
  V Former = std::exchange(Bucket(Index).Pair.Value, Value);
  ValueNotify(Former, dnRemoved);
  ValueNotify(Value, dnAdded);
}

template <class K, class V, class TComparer>
V TQXDictionary<K, V, TComparer>::DoRemove(const K& Key, std::int32_t HashCode,
                                           TDictionaryNotification Notification) {
  int Gap = GetBucketIndex(Key, HashCode);
  if (Gap < 0) {
    return V();
  }
  FLayout = 0;
  TElement Removed = std::move(Bucket(Gap).Pair);
  Bucket(Gap).HashCode = TBucket::EmptyHash;
  for (int I = Next(Gap); Bucket(I).HashCode != TBucket::EmptyHash; I = Next(I)) {
    if (!InCircularRange(Gap, Home(Bucket(I).HashCode), I)) {
      Bucket(Gap) = std::move(Bucket(I));
      Bucket(I).HashCode = TBucket::EmptyHash;
      Gap = I;
    }
  }
  Bucket(Gap) = TBucket();
  --FCount;
  KeyNotify(Removed.Key, Notification);
  ValueNotify(Removed.Value, Notification);
  return std::move(Removed.Value);
}

template <class K, class V, class TComparer>
std::int32_t TQXDictionary<K, V, TComparer>::Hash(const K& Key) const {
  constexpr std::uint32_t Positive = 0x7fffffff;
  return static_cast<std::int32_t>(((static_cast<std::uint32_t>(FComparer.GetHashCode(Key)) & Positive) + 1) &
                                   Positive);
}

template <class K, class V, class TComparer>
int TQXDictionary<K, V, TComparer>::GetBucketIndex(const K& Key, std::int32_t HashCode) const {
  if (FItems.empty()) {
    return NoFreeBucket;
  }
  const int First = Home(HashCode);
  int Index = First;
  while (Bucket(Index).HashCode != TBucket::EmptyHash) {
    if (Bucket(Index).HashCode == HashCode && FComparer.Equals(Bucket(Index).Pair.Key, Key)) {
      return Index;
    }
    Index = Next(Index);
    if (Index == First) { // a full table
      return NoFreeBucket;
    }
  }
  return ~Index;
}

template <class K, class V, class TComparer>
void TQXDictionary<K, V, TComparer>::GrowWhenDue() {
  if (FCount >= FGrowThreshold) {
    Rehash(FItems.empty() ? 4 : std::int64_t{2} * Capacity());
  }
}

template <class K, class V, class TComparer>
void TQXDictionary<K, V, TComparer>::Rehash(std::int64_t NewCapacity) {
  constexpr std::int64_t Largest = std::int64_t{1} << 30;
  if (NewCapacity == Capacity()) {
    return;
  }
  if (NewCapacity > Largest) {
    throw std::length_error("A dictionary cannot have a capacity of " + std::to_string(NewCapacity));
  }
  std::vector<TBucket> Former =
      std::exchange(FItems, std::vector<TBucket>(static_cast<std::size_t>(NewCapacity)));
  FLayout = 0;
  FGrowThreshold = static_cast<int>(NewCapacity / 2 + NewCapacity / 4);
  for (TBucket& Moved : Former) {
    if (Moved.HashCode != TBucket::EmptyHash) {
      int Index = Home(Moved.HashCode);
      while (Bucket(Index).HashCode != TBucket::EmptyHash) {
        Index = Next(Index);
      }
      Bucket(Index) = std::move(Moved);
    }
  }
}

template <class K, class V, class TComparer>
int TQXDictionary<K, V, TComparer>::ExistingBucket(const K& Key) const {
  const int Index = GetBucketIndex(Key, Hash(Key));
  if (Index < 0) {
    throw std::invalid_argument("Item not found: no such key");
  }
  return Index;
}

} // namespace qx::generics
