#pragma once

#include <cstddef>
#include <new>
#include <vector>

namespace qx {

/// Memory that begins at a line of the cache, as block kernels want it.
template <class T>
struct TAlignedAllocator {
  using value_type = T;
  static constexpr std::align_val_t Alignment{64};

  TAlignedAllocator() = default;
  template <class TOther>
  TAlignedAllocator(const TAlignedAllocator<TOther>& /*Other*/) {}

  T* allocate(std::size_t Count) {
    if (Count > static_cast<std::size_t>(-1) / sizeof(T)) {
      throw std::bad_array_new_length();
    }
    return static_cast<T*>(::operator new(Count * sizeof(T), Alignment));
  }
  void deallocate(T* Values, std::size_t /*Count*/) noexcept { ::operator delete(Values, Alignment); }

  friend bool operator==(const TAlignedAllocator& /*A*/, const TAlignedAllocator& /*B*/) { return true; }
};

template <class T>
using TAlignedVector = std::vector<T, TAlignedAllocator<T>>;

} // namespace qx
