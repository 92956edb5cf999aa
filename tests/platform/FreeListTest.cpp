#include <qx/platform/FreeList.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <support/Allocations.h>
#include <support/Sanitizers.h>
#include <thread>
#include <vector>

namespace qx {
namespace {

constexpr std::size_t Bytes = 72;

TEST(FreeListTest, BlocksAreApartAlignedAndWritable) {
  std::vector<void*> Blocks;
  for (const std::size_t Size : {1U, 16U, 17U, 72U, 256U, 257U, 5000U}) {
    for (int I = 0; I < 1000; ++I) {
      void* const Block = TakeBlock(Size);
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(Block) % FreeListAlignment, 0U);
      std::memset(Block, I, Size);
      Blocks.push_back(Block);
    }
    EXPECT_EQ(std::set<void*>(Blocks.begin(), Blocks.end()).size(), Blocks.size());
    while (!Blocks.empty()) {
      FreeBlock(Blocks.back(), Size);
      Blocks.pop_back();
    }
  }
}

#if !QX_ADDRESS_SANITIZER
TEST(FreeListTest, AFreedBlockIsHandedOutAgainWithoutTheHeap) {
  void* const First = TakeBlock(Bytes);
  FreeBlock(First, Bytes);
  EXPECT_EQ(TakeBlock(Bytes), First);
  FreeBlock(First, Bytes);
  const long Before = tests::Allocations();
  for (int I = 0; I < 1000; ++I) {
    FreeBlock(TakeBlock(Bytes), Bytes);
  }
  EXPECT_EQ(tests::Allocations(), Before);
}
#endif

#if !QX_ADDRESS_SANITIZER
// Takes and frees a block when its thread has given its own away already.
struct TLate {
  bool Wanted = false;
  std::size_t* Told = nullptr;
  ~TLate() {
    if (Wanted) {
      const std::size_t Before = tests::AllocatedBytes();
      void* const Block = TakeBlock(Bytes);
      *Told = tests::AllocatedBytes() - Before;
      FreeBlock(Block, Bytes);
    }
  }
};
thread_local TLate Late;

TEST(FreeListTest, ABlockTakenWhileAThreadEndsIsAsLargeAsItsList) {
  std::size_t Taken = 0;
  std::thread([&] {
    Late.Wanted = true; // before the thread's list, and so destroyed after it
    Late.Told = &Taken;
    FreeBlock(TakeBlock(Bytes), Bytes);
  }).join();
  EXPECT_EQ(Taken, 80U);
}
#endif

TEST(FreeListTest, BlocksGoFromThreadToThread) {
  std::vector<void*> Blocks;
  std::thread([&] {
    for (int I = 0; I < 10'000; ++I) {
      Blocks.push_back(TakeBlock(Bytes));
    }
  }).join();
  std::thread([&] {
    for (void* const Block : Blocks) {
      FreeBlock(Block, Bytes);
    }
  }).join();
  std::set<void*> Freed(Blocks.begin(), Blocks.end());
  std::vector<void*> Again;
  std::thread([&] {
    for (int I = 0; I < 10'000; ++I) {
      Again.push_back(TakeBlock(Bytes));
      std::memset(Again.back(), I, Bytes);
    }
  }).join();
  EXPECT_EQ(std::set<void*>(Again.begin(), Again.end()).size(), Again.size());
  for (void* const Block : Again) {
    FreeBlock(Block, Bytes);
  }
}

} // namespace
} // namespace qx
