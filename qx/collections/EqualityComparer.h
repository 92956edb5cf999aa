#pragma once

#include <concepts>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string_view>
#include <type_traits>

namespace qx::generics {

namespace detail {

// Spreads the bits of a word so that the low ones of the result depend on all of them.
constexpr std::uint64_t MixedWord(std::uint64_t Word) {
  __extension__ using TWide = unsigned __int128;
  const TWide Product = static_cast<TWide>(Word) * 0x9e3779b97f4a7c15;
  return static_cast<std::uint64_t>(Product) ^ static_cast<std::uint64_t>(Product >> 64);
}

template <class TWord>
std::uint64_t WordAt(const char* Place) {
  TWord Word;
  std::memcpy(&Word, Place, sizeof Word);
  return Word;
}

// Up to seven bytes as one word, read in overlapping pieces.
inline std::uint64_t ShortWord(std::string_view Text) {
  const char* const First = Text.data();
  const char* const End = First + Text.size();
  if (Text.size() >= sizeof(std::uint32_t)) {
    return WordAt<std::uint32_t>(First) << 32 | WordAt<std::uint32_t>(End - sizeof(std::uint32_t));
  }
  if (Text.empty()) {
    return 0;
  }
  const auto Byte = [First](std::size_t Place) {
    return static_cast<std::uint64_t>(static_cast<unsigned char>(First[Place]));
  };
  return Byte(0) << 16 | Byte(Text.size() / 2) << 8 | Byte(Text.size() - 1);
}

inline std::uint64_t HashedText(std::string_view Text) {
  constexpr std::size_t Length = sizeof(std::uint64_t);
  std::uint64_t Hash = Text.size();
  if (Text.size() < Length) {
    return MixedWord(Hash << 56 ^ ShortWord(Text));
  }
  for (std::size_t Place = 0; Place + Length < Text.size(); Place += Length) {
    Hash = MixedWord((Hash << 7 | Hash >> 57) ^ WordAt<std::uint64_t>(Text.data() + Place));
  }
  return MixedWord((Hash << 7 | Hash >> 57) ^ WordAt<std::uint64_t>(Text.data() + Text.size() - Length));
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
