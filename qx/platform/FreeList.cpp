#include <qx/platform/FreeList.h>

#include <mutex>
#include <utility>

#if defined(__SANITIZE_ADDRESS__)
#define QX_EACH_BLOCK_FROM_HEAP true
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QX_EACH_BLOCK_FROM_HEAP true
#endif
#endif
#ifndef QX_EACH_BLOCK_FROM_HEAP
#define QX_EACH_BLOCK_FROM_HEAP false
#endif

namespace qx {

namespace {

constexpr bool EachBlockFromHeap = QX_EACH_BLOCK_FROM_HEAP;
constexpr std::size_t PageBytes = 16384;
constexpr std::align_val_t CacheLine{64}; // blocks of its size lie in one

// The blocks of threads that have ended.
struct TLeftBlocks {
  std::mutex Mutex;
  detail::TFreeBlock* Blocks[detail::FreeLists] = {};
};

TLeftBlocks& LeftBlocks() {
  static auto* const Left = new TLeftBlocks; // outlives every thread
  return *Left;
}

void Leave(detail::TFreeBlock* First, std::size_t List) noexcept {
  detail::TFreeBlock* Last = First;
  while (Last->Next != nullptr) {
    Last = Last->Next;
  }
  TLeftBlocks& Left = LeftBlocks();
  const std::lock_guard Lock(Left.Mutex);
  Last->Next = std::exchange(Left.Blocks[List], First);
}

constinit thread_local bool ThreadEnds = false;

// Leaves the thread's blocks to others when the thread ends.
struct TThreadEnd {
  ~TThreadEnd() {
    ThreadEnds = true;
    for (std::size_t List = 0; List < detail::FreeLists; ++List) {
      if (detail::TFreeBlock* const First = std::exchange(detail::FreeBlocks[List], nullptr)) {
        Leave(First, List);
      }
    }
  }
};

void WatchThread() { static thread_local const TThreadEnd End; }

} // namespace

constinit thread_local detail::TFreeBlock* detail::FreeBlocks[FreeLists] = {};

void* detail::TakeFreshBlock(std::size_t Bytes) {
  if (EachBlockFromHeap || Bytes - 1 >= LargestFreeBlock) {
    return ::operator new(Bytes);
  }
  const std::size_t List = FreeListOf(Bytes);
  const std::size_t Size = (List + 1) * FreeListAlignment;
  if (ThreadEnds) { // the list is somebody else's by the time when the block is freed
    return ::operator new(Size);
  }
  WatchThread();
  TFreeBlock*& First = FreeBlocks[List];
  {
    TLeftBlocks& Left = LeftBlocks();
    const std::lock_guard Lock(Left.Mutex);
    First = std::exchange(Left.Blocks[List], nullptr);
  }
  if (First == nullptr) {
    char* const Page = static_cast<char*>(::operator new(PageBytes, CacheLine));
    for (std::size_t Place = PageBytes / Size * Size; Place > 0; Place -= Size) { // handed out in order
      First = new (Page + Place - Size) TFreeBlock{First};
    }
  }
  return std::exchange(First, First->Next);
}

void detail::FreeFirstBlock(void* Block, std::size_t Bytes) noexcept {
  if (EachBlockFromHeap || Bytes - 1 >= LargestFreeBlock) {
    ::operator delete(Block);
    return;
  }
  const std::size_t List = FreeListOf(Bytes);
  if (ThreadEnds) {
    Leave(new (Block) TFreeBlock{nullptr}, List);
    return;
  }
  WatchThread();
  FreeBlocks[List] = new (Block) TFreeBlock{nullptr};
}

} // namespace qx
