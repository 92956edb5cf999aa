#pragma once

// The library's own hash dictionary, and the enumerable base that it descends from.

#include <qx/collections/EqualityComparer.h>
#include <qx/platform/Event.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace qx::generics {

/// What happens to a key or a value of a dictionary.
enum TDictionaryNotification : std::uint8_t { dnAdded, dnRemoved, dnExtracted };

template <class K, class V>
struct TPair {
  K Key;
  V Value;

  bool operator==(const TPair&) const = default;
};

/// Steps through the elements of an enumerable; it stands before the first one until `MoveNext` is called.
template <class T>
class TQXEnumerator {
public:
  virtual ~TQXEnumerator() = default;
  virtual bool MoveNext() = 0;
  virtual const T& Current() const = 0;
};

/// Anything whose elements can be stepped through.
template <class T>
class TQXEnumerable {
public:
  virtual ~TQXEnumerable() = default;
  virtual std::unique_ptr<TQXEnumerator<T>> GetEnumerator() const = 0;
  /// All elements, in the order of enumeration.
  virtual std::vector<T> ToArray() const;
};

/// Where a key was found, or found missing, by `TQXDictionary::Find`. It belongs to one key.
struct TDictionaryHint {
  std::uint64_t Layout = ~std::uint64_t{0};
  int Index = -1;
  std::int32_t HashCode = -1;
};

namespace detail {

/// A number that no other call returns, never 0 and never that of a new hint.
std::uint64_t NewDictionaryLayout();

} // namespace detail

/// Whether `Item` lies on a ring of indexes behind `Bottom` and up to `TopInc`, which is included.
constexpr bool InCircularRange(int Bottom, int Item, int TopInc) {
  return Bottom <= TopInc ? Bottom < Item && Item <= TopInc : Item > Bottom || Item <= TopInc;
}

/// A hash map with open addressing, linear probing and backward-shift deletion (Knuth, The Art of Computer
/// Programming 3, section 6.4, algorithm R): no markers are left behind, so chains stay short.
///
/// The table is a power of two and grows when it is three quarters full. Enumeration follows the table, so
/// its order depends on the hash codes and on the history of the table. Keys that are looked up and values
/// that are replaced may refer into the table itself. `TComparer` supplies `Equals` and `GetHashCode`.
template <class K, class V, class TComparer = TQXEqualityComparer<K>>
class TQXDictionary : public TQXEnumerable<TPair<K, V>> {
  struct TBucket {
    static constexpr std::int32_t EmptyHash = -1;

    std::int32_t HashCode = EmptyHash;
    TPair<K, V> Pair{};
  };

public:
  using TElement = TPair<K, V>;

  /// Raises std::out_of_range for a negative capacity.
  explicit TQXDictionary(int ACapacity = 0, TComparer Comparer = {});
  explicit TQXDictionary(TComparer Comparer) : TQXDictionary(0, std::move(Comparer)) {}
  /// Adds every pair, in the order of enumeration. Raises std::invalid_argument for a key that comes twice.
  explicit TQXDictionary(const TQXEnumerable<TElement>& Source, TComparer Comparer = {});
  /// Takes the pairs and the comparer, as from any other enumerable; handlers are not taken.
  TQXDictionary(const TQXDictionary& Source)
      : TQXDictionary(static_cast<const TQXEnumerable<TElement>&>(Source), Source.FComparer) {}
  TQXDictionary& operator=(const TQXDictionary&) = delete;

  int Count() const { return FCount; }
  /// Length of the table: 0, or a power of two not below 4.
  int Capacity() const { return static_cast<int>(FItems.size()); }
  /// Rebuilds the table so that it has room for `Value` pairs without growth of the table itself. Raises
  /// std::out_of_range for less than `Count` and std::length_error for more than 2^30.
  void SetCapacity(int Value);
  void TrimExcess() { SetCapacity(FCount + 1); }

  /// Raises std::invalid_argument, and changes nothing but the capacity, when the key is present.
  void Add(K Key, V Value);
  void AddOrSetValue(K Key, V Value);
  /// The value of a key. Raises std::invalid_argument when the key is missing, as `SetItems`.
  const V& Items(const K& Key) const;
  const V& operator[](const K& Key) const { return Items(Key); }
  /// Replaces the value of a key that is present.
  void SetItems(const K& Key, V Value);
  /// The same with a hint, for one key that gets many values; see `Find`.
  void SetItems(const K& Key, V Value, TDictionaryHint& Hint);
  /// Gives the value of a key, or the default value and false.
  bool TryGetValue(const K& Key, V& Value) const;
  bool ContainsKey(const K& Key) const { return GetBucketIndex(Key, Hash(Key)) >= 0; }
  /// The value of a key, or nullptr; it stays there until the dictionary changes. A hint spares the next
  /// look-up of the same key, in this dictionary or another of its kind, the hash code, and also the search
  /// while keys have neither come nor gone.
  const V* Find(const K& Key, TDictionaryHint& Hint) const {
    if (Hint.Layout != FLayout) [[unlikely]] {
      FindAnew(Key, Hint);
    }
    return Hint.Index >= 0 ? &Bucket(Hint.Index).Pair.Value : nullptr;
  }
  /// Looks at every value.
  bool ContainsValue(const V& Value) const;
  /// Removes a key with its value; a missing key is no error.
  void Remove(const K& Key) { DoRemove(Key, Hash(Key), dnRemoved); }
  /// Removes a key and returns it with its value; a missing key comes with the default value.
  TElement ExtractPair(const K& Key);
  /// Empties the table, then reports each key and value as removed.
  void Clear();

  /// Replaces the content by the pairs of another dictionary; assigning to itself does nothing.
  void Assign(const TQXDictionary& Source);

  std::unique_ptr<TQXEnumerator<TElement>> GetEnumerator() const override;
  std::vector<TElement> ToArray() const override;

  /// Walks the occupied buckets and shows one part of each: the pair, the key or the value.
  template <auto Part>
  class TIterator;
  template <auto Part>
  class TView;

  auto begin() const { return TIterator<&PairOf>(FItems.data(), FItems.data() + FItems.size()); }
  auto end() const {
    return TIterator<&PairOf>(FItems.data() + FItems.size(), FItems.data() + FItems.size());
  }
  /// All keys, to be iterated over, counted or copied.
  auto Keys() const { return TView<&KeyOf>(*this); }
  /// All values, likewise.
  auto Values() const { return TView<&ValueOf>(*this); }

  TQXEvent<void(TQXDictionary& Sender, const K& Item, TDictionaryNotification Action)> OnKeyNotify;
  TQXEvent<void(TQXDictionary& Sender, const V& Item, TDictionaryNotification Action)> OnValueNotify;

protected:
  static constexpr int NoFreeBucket = INT32_MIN;

  /// Stores a pair in a free bucket, then reports the key and the value as added.
  virtual void DoAdd(std::int32_t HashCode, int Index, K Key, V Value);
  /// Replaces a value, then reports the old one as removed and the new one as added.
  virtual void DoSetValue(int Index, V Value);
  /// Removes a key, reports it and its value, and returns the value; the default value when it is missing.
  virtual V DoRemove(const K& Key, std::int32_t HashCode, TDictionaryNotification Notification);
  virtual void KeyNotify(const K& Key, TDictionaryNotification Action) { OnKeyNotify(*this, Key, Action); }
  virtual void ValueNotify(const V& Value, TDictionaryNotification Action) {
    OnValueNotify(*this, Value, Action);
  }

  std::int32_t Hash(const K& Key) const;
  /// Index of the key's bucket; otherwise the complement of the free one where it would go, or
  /// `NoFreeBucket`.
  int GetBucketIndex(const K& Key, std::int32_t HashCode) const;

private:
  static const TElement& PairOf(const TBucket& Bucket) { return Bucket.Pair; }
  static const K& KeyOf(const TBucket& Bucket) { return Bucket.Pair.Key; }
  static const V& ValueOf(const TBucket& Bucket) { return Bucket.Pair.Value; }

  void FindAnew(const K& Key, TDictionaryHint& Hint) const;
  void GrowWhenDue();
  void Rehash(std::int64_t NewCapacity);
  int ExistingBucket(const K& Key) const;
  TBucket& Bucket(int Index) { return FItems[static_cast<std::size_t>(Index)]; }
  const TBucket& Bucket(int Index) const { return FItems[static_cast<std::size_t>(Index)]; }
  int Home(std::int32_t HashCode) const { return HashCode & (Capacity() - 1); }
  int Next(int Index) const { return (Index + 1) & (Capacity() - 1); }

  int FCount = 0;
  TComparer FComparer;
  int FGrowThreshold = 0;
  std::vector<TBucket> FItems;
  // Tells this arrangement of keys from all others of all dictionaries; 0 until a hint wants to know it.
  mutable std::uint64_t FLayout = 0;
};

} // namespace qx::generics

#include <qx/collections/QXGenerics.Collections.ipp>
