#pragma once

#include <qx/foundation/FitnessOrder.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace qx {

/// Ranks objects by a key in single precision, the best at position 0. Equal keys keep the order in which
/// they were pushed. Objects are referred to, never owned.
///
/// Pushing and removing are O(1); the first read after either sorts, so that filling, emptying and ranking n
/// objects costs O(n log n) in all. Memory is kept for the next filling.
template <class TObject>
class TFloatPriorityQueue {
public:
  void Clear() {
    FEntries.clear();
    FRemoved.clear();
    FSorted = true;
  }

  /// Whether the best key is the highest one; the lowest is, unless told otherwise.
  bool HighestFirst() const { return FHighestFirst; }
  void SetHighestFirst(bool Value) {
    FHighestFirst = Value;
    FSorted = false;
  }

  void Push(TObject& Object, float Key) {
    DropRemoved();
    FEntries.push_back({Key, FPushes++, &Object});
    FSorted = false;
  }

  /// Takes all entries of the object out, if there are any.
  void Remove(const TObject& Object) {
    FRemoved.push_back(&Object);
    if (FRemoved.size() > FEntries.size()) {
      DropRemoved();
    }
  }

  int Count() {
    DropRemoved();
    return static_cast<int>(FEntries.size());
  }

  /// The object at a position, 0 to Count - 1.
  TObject& operator[](int Position) {
    DropRemoved();
    Sort();
    return *FEntries[static_cast<std::size_t>(Position)].Object;
  }

private:
  struct TEntry {
    float Key;
    std::size_t Sequence;
    TObject* Object;
  };

  void DropRemoved() {
    if (FRemoved.empty()) {
      return;
    }
    std::sort(FRemoved.begin(), FRemoved.end(), std::less<>());
    std::erase_if(FEntries, [this](const TEntry& Entry) {
      return std::binary_search(FRemoved.begin(), FRemoved.end(), Entry.Object, std::less<>());
    });
    FRemoved.clear();
  }

  void Sort() {
    if (!FSorted) {
      std::sort(FEntries.begin(), FEntries.end(), [this](const TEntry& Left, const TEntry& Right) {
        const int Order = CompareFitnesses(Left.Key, Right.Key, FHighestFirst);
        return Order != 0 ? Order < 0 : Left.Sequence < Right.Sequence;
      });
      FSorted = true;
    }
  }

  std::vector<TEntry> FEntries;
  std::size_t FPushes = 0;
  std::vector<const TObject*> FRemoved;
  bool FHighestFirst = false;
  bool FSorted = true;
};

} // namespace qx
