#include <qx/platform/StackGuard.h>

#include <pthread.h>
#include <string>

namespace qx {

namespace {

detail::TStackRange RangeOfThread() {
  detail::TStackRange Range;
  pthread_attr_t Attributes;
  if (pthread_getattr_np(pthread_self(), &Attributes) != 0) {
    return Range;
  }
  void* Low = nullptr;
  std::size_t Size = 0;
  if (pthread_attr_getstack(&Attributes, &Low, &Size) == 0) {
    Range = {reinterpret_cast<std::uintptr_t>(Low), Size};
  }
  pthread_attr_destroy(&Attributes);
  return Range;
}

} // namespace

constinit thread_local detail::TStackRange detail::StackRange = {};

void detail::CheckStack(std::uintptr_t Frame) {
  if (StackRange.Size == 0) {
    StackRange = RangeOfThread();
  }
  const std::uintptr_t Left = Frame - StackRange.Low;
  if (Left < qx::StackReserve() && Left <= StackRange.Size) {
    throw EStackError("The recursion is too deep for a stack of " + std::to_string(StackRange.Size) +
                      " bytes: no more than the reserve of " + std::to_string(qx::StackReserve()) +
                      " bytes is left");
  }
}

} // namespace qx
