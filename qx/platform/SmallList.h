#pragma once

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

namespace qx {

/// A list that grows and shrinks at its end, for walks without recursion: the first `Room` items need no
/// heap.
template <class TItem, std::size_t Room>
class TSmallList {
public:
  bool Empty() const { return FCount == 0; }
  std::size_t Count() const { return FCount; }
  TItem& operator[](std::size_t Index) { return Index < Room ? FFirst[Index] : FRest[Index - Room]; }

  void Push(TItem Item) {
    if (FCount < Room) {
      FFirst[FCount] = std::move(Item);
    } else {
      FRest.push_back(std::move(Item));
    }
    ++FCount;
  }
  TItem Pop() {
    --FCount;
    if (FCount < Room) {
      return std::move(FFirst[FCount]);
    }
    TItem Item = std::move(FRest.back());
    FRest.pop_back();
    return Item;
  }
  TItem& Last() { return (*this)[FCount - 1]; }

private:
  std::size_t FCount = 0;
  std::array<TItem, Room> FFirst; // left as it comes until pushed
  std::vector<TItem> FRest;
};

} // namespace qx
