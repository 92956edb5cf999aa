#include "Allocations.h"

#include <cstdlib>
#include <new>

namespace {

long Count = 0;
std::size_t Bytes = 0;

void* Counted(std::size_t Size) {
  ++Count;
  Bytes += Size;
  if (void* const Memory = std::malloc(Size > 0 ? Size : 1)) {
    return Memory;
  }
  throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t Size) { return Counted(Size); }
void* operator new[](std::size_t Size) { return Counted(Size); }
void operator delete(void* Memory) noexcept { std::free(Memory); }
void operator delete[](void* Memory) noexcept { std::free(Memory); }
void operator delete(void* Memory, std::size_t) noexcept { std::free(Memory); }
void operator delete[](void* Memory, std::size_t) noexcept { std::free(Memory); }

namespace qx::tests {

long Allocations() { return Count; }

std::size_t AllocatedBytes() { return Bytes; }

} // namespace qx::tests
