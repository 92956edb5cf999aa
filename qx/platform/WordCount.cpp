#include <qx/platform/WordCount.h>

#include <bit>

namespace qx {

namespace {

[[gnu::always_inline]] inline std::size_t Sum(std::span<const std::uint64_t> Words) {
  std::size_t Ones = 0;
  for (const std::uint64_t Word : Words) {
    Ones += static_cast<std::size_t>(std::popcount(Word));
  }
  return Ones;
}

std::size_t SumPlain(std::span<const std::uint64_t> Words) { return Sum(Words); }

#if defined(__x86_64__) && defined(__GNUC__)
__attribute__((target("popcnt"))) std::size_t SumPopcnt(std::span<const std::uint64_t> Words) {
  return Sum(Words);
}

auto ChooseSum() {
  __builtin_cpu_init();
  return __builtin_cpu_supports("popcnt") ? SumPopcnt : SumPlain;
}
#else
auto ChooseSum() { return SumPlain; }
#endif

} // namespace

std::size_t CountOnes(std::span<const std::uint64_t> Words) {
  static const auto Chosen = ChooseSum();
  return Chosen(Words);
}

} // namespace qx
