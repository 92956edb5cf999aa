#pragma once

#include <cstddef>
#include <new>

namespace qx {

/// Every block of a free list is aligned so, and its size rounded up to a multiple of it.
inline constexpr std::size_t FreeListAlignment = 16;

namespace detail {

struct TFreeBlock {
  TFreeBlock* Next;
};

// Blocks above the largest size are the heap's own.
inline constexpr std::size_t LargestFreeBlock = 256;
inline constexpr std::size_t FreeLists = LargestFreeBlock / FreeListAlignment;
// One list for each size.
extern constinit thread_local TFreeBlock* FreeBlocks[FreeLists];

constexpr std::size_t FreeListOf(std::size_t Bytes) { return (Bytes - 1) / FreeListAlignment; }

void* TakeFreshBlock(std::size_t Bytes);
void FreeFirstBlock(void* Block, std::size_t Bytes) noexcept;

} // namespace detail

/// Memory for a small object of a kind that comes and goes in great numbers: from the thread's list of freed
/// blocks of that size, which grows by whole pages of them. A thread that ends leaves its blocks to the
/// others; nothing goes back to the heap, so a thread that only takes what another one only frees makes both
/// grow. Raises std::bad_alloc.
///
/// Built for an address sanitizer, each block comes from the heap, so that the sanitizer sees all of them.
inline void* TakeBlock(std::size_t Bytes) {
  if (Bytes - 1 < detail::LargestFreeBlock) {
    detail::TFreeBlock*& First = detail::FreeBlocks[detail::FreeListOf(Bytes)];
    if (detail::TFreeBlock* const Block = First) [[likely]] {
      First = Block->Next;
      return Block;
    }
  }
  return detail::TakeFreshBlock(Bytes);
}

/// Gives back what `TakeBlock` has returned for the same number of bytes, on this thread or another.
inline void FreeBlock(void* Block, std::size_t Bytes) noexcept {
  if (Bytes - 1 < detail::LargestFreeBlock) {
    detail::TFreeBlock*& First = detail::FreeBlocks[detail::FreeListOf(Bytes)];
    if (First != nullptr) [[likely]] {
      First = new (Block) detail::TFreeBlock{First};
      return;
    }
  }
  detail::FreeFirstBlock(Block, Bytes);
}

} // namespace qx
