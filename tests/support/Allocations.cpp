#include "Allocations.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

// Tests of threads are in the same programs.
std::atomic<long> Count = 0;
std::atomic<std::size_t> Bytes = 0;

void* Counted(std::size_t Size) {
  Count.fetch_add(1, std::memory_order_relaxed);
  Bytes.fetch_add(Size, std::memory_order_relaxed);
  return std::malloc(Size > 0 ? Size : 1);
}

void* CountedOrRaise(std::size_t Size) {
  if (void* const Memory = Counted(Size)) {
    return Memory;
  }
  throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t Size) { return CountedOrRaise(Size); }
void* operator new[](std::size_t Size) { return CountedOrRaise(Size); }
void* operator new(std::size_t Size, const std::nothrow_t&) noexcept { return Counted(Size); }
void* operator new[](std::size_t Size, const std::nothrow_t&) noexcept { return Counted(Size); }
void operator delete(void* Memory) noexcept { std::free(Memory); }
void operator delete[](void* Memory) noexcept { std::free(Memory); }
void operator delete(void* Memory, std::size_t) noexcept { std::free(Memory); }
void operator delete[](void* Memory, std::size_t) noexcept { std::free(Memory); }

namespace qx::tests {

long Allocations() { return Count; }

std::size_t AllocatedBytes() { return Bytes; }

} // namespace qx::tests
