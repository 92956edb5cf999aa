#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace qx {

/// A recursion that would have used up the thread's stack.
class EStackError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

namespace detail {

// The addresses that a thread's stack may take; nothing as long as they were not asked for.
struct TStackRange {
  std::uintptr_t Low = 0;
  std::uintptr_t Size = 0;
};
extern constinit thread_local TStackRange StackRange;
inline constinit std::atomic<std::size_t> StackReserve{64 << 10};

void CheckStack(std::uintptr_t Frame);

} // namespace detail

/// How many bytes of a thread's stack a recursion through `RequireStack` leaves for what is called at its
/// end; 64 KiB unless a host sets it. A host whose own code below such a recursion needs more sets more.
inline std::size_t StackReserve() { return detail::StackReserve.load(std::memory_order_relaxed); }
inline void SetStackReserve(std::size_t Bytes) {
  detail::StackReserve.store(Bytes, std::memory_order_relaxed);
}

/// To be called at each level of a recursion whose depth is not known. Raises EStackError, at a time when the
/// stack still has its reserve. Costs a few instructions; a stack of the host's own making (a coroutine
/// library's, say) is not known and not checked. The limits of a stack are those of the thread's first call.
inline void RequireStack() {
  const auto Frame = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  const std::uintptr_t Left = Frame - detail::StackRange.Low;
  if (Left < StackReserve() || Left > detail::StackRange.Size) [[unlikely]] {
    detail::CheckStack(Frame);
  }
}

} // namespace qx
