#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace qx {

/// Calls `Do(Thread, Index)` for each index below `Count`, on so many threads, of which the caller's is
/// number 0. Which thread takes which index is left open. The first exception ends the work and reaches the
/// caller.
template <class TDo>
void ParallelFor(std::size_t Count, std::size_t Threads, TDo Do) {
  std::atomic<std::size_t> Next{0};
  std::exception_ptr Error;
  std::mutex ErrorMutex;
  const auto Work = [&](std::size_t Thread) {
    try {
      for (std::size_t Index = Next++; Index < Count; Index = Next++) {
        Do(Thread, Index);
      }
    } catch (...) {
      const std::lock_guard Lock(ErrorMutex);
      if (Error == nullptr) {
        Error = std::current_exception();
      }
      Next = Count;
    }
  };
  {
    std::vector<std::jthread> Others;
    for (std::size_t Thread = 1; Thread < std::min(Threads, Count); ++Thread) {
      Others.emplace_back(Work, Thread);
    }
    Work(0);
  }
  if (Error != nullptr) {
    std::rethrow_exception(Error);
  }
}

} // namespace qx
