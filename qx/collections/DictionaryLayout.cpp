#include <qx/collections/QXGenerics.Collections.h>

#include <atomic>

namespace qx::generics {

std::uint64_t detail::NewDictionaryLayout() {
  static constinit std::atomic<std::uint64_t> Last = 0;
  return ++Last;
}

} // namespace qx::generics
