#pragma once

#include <concepts>
#include <initializer_list>
#include <stdexcept>
#include <type_traits>

namespace qx {

/// A set of the values of an enumeration, held as bits: bit n stands for the value of ordinal n, 0 to 31. An
/// ordinal beyond that raises std::out_of_range.
template <class TEnum>
requires std::is_enum_v<TEnum>
class TEnumSet {
public:
  constexpr TEnumSet() = default;
  constexpr TEnumSet(std::initializer_list<TEnum> Values) {
    for (const TEnum Value : Values) {
      Include(Value);
    }
  }

  static constexpr TEnumSet FromBits(unsigned Bits) {
    TEnumSet Set;
    Set.FBits = Bits;
    return Set;
  }
  constexpr unsigned Bits() const { return FBits; }

  constexpr bool Contains(TEnum Value) const { return (FBits & Mask(Value)) != 0; }
  constexpr bool Empty() const { return FBits == 0; }
  constexpr void Include(TEnum Value) { FBits |= Mask(Value); }
  constexpr void Exclude(TEnum Value) { FBits &= ~Mask(Value); }

  constexpr bool operator==(const TEnumSet&) const = default;

private:
  static constexpr unsigned Mask(TEnum Value) {
    constexpr unsigned Places = 32;
    if (static_cast<unsigned>(Value) >= Places) {
      throw std::out_of_range("A set of enumeration values cannot hold one of so high an ordinal");
    }
    return 1U << static_cast<unsigned>(Value);
  }

  unsigned FBits = 0;
};

} // namespace qx
