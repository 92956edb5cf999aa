#pragma once

#include <concepts>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string_view>
#include <type_traits>

namespace qx::generics {

namespace detail {

// Spreads the bits of a word so that its low half depends on all of them.
constexpr std::uint64_t MixedWord(std::uint64_t Word) {
  Word *= 0x9e3779b97f4a7c15;
  return Word ^ Word >> 32;
}

inline std::uint64_t HashedText(std::string_view Text) {
  std::uint64_t Hash = Text.size();
  while (!Text.empty()) {
    std::uint64_t Word = 0;
    const std::size_t Taken = Text.size() < sizeof Word ? Text.size() : sizeof Word;
    std::memcpy(&Word, Text.data(), Taken);
    Hash = MixedWord((Hash << 7 | Hash >> 57) ^ Word);
    Text.remove_prefix(Taken);
  }
  return Hash;
}

} // namespace detail

/// The default comparer of a key type: `==`, and a hash code that is the same in every run for numbers,
/// enumerations and texts. Other types are hashed by `std::hash`.
template <class K>
struct TQXEqualityComparer {
  bool Equals(const K& Left, const K& Right) const { return Left == Right; }

  std::int32_t GetHashCode(const K& Key) const {
    if constexpr (std::is_integral_v<K> || std::is_enum_v<K>) {
      return static_cast<std::int32_t>(detail::MixedWord(static_cast<std::uint64_t>(Key)));
    } else if constexpr (std::convertible_to<const K&, std::string_view>) {
      return static_cast<std::int32_t>(detail::HashedText(Key));
    } else {
      return static_cast<std::int32_t>(detail::MixedWord(std::hash<K>()(Key)));
    }
  }
};

} // namespace qx::generics
