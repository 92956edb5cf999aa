#pragma once

#include <qx/foundation/QXEncodedBits.h>

namespace qx {

class TQXGAIndividual;

/// The chromosome of an individual: a bit vector with the bit-level genetic operators. Every operator that
/// changes bits marks the owner's fitness as stale, and tells the owner's collection nothing.
class TQXGABits : public TQXEncodedBits {
public:
  /// @param Owner  the individual whose chromosome this is, or nullptr for one that stands alone.
  explicit TQXGABits(TQXGAIndividual* Owner = nullptr) : FOwner(Owner) {}

  TQXGAIndividual* Owner() const { return FOwner; }

  /// Sets all bits to 0 and keeps the size.
  void Clear();

  /// One-point crossover (Holland 1975) at `Random(Source1.Size)`: one integer draw. Returns this chromosome.
  TQXGABits& CrossOver(const TQXGABits& Source1, const TQXGABits& Source2);
  /// One-point crossover into this chromosome: the bits up to and including `CrossBit` come from the first
  /// source, those behind it from the second. Where the first source is too short the second one supplies the
  /// bits from there on; where that is too short as well, the bits stay as they are. A `CrossBit` below 0
  /// takes nothing from the first source. Either source may be this chromosome. Returns this chromosome.
  TQXGABits& CrossOver(const TQXGABits& Source1, const TQXGABits& Source2, int CrossBit);

  /// Complements `Len` + 1 bits from `Offset` on, up to the end of the chromosome. An offset of -1 is drawn
  /// as `Random(Size)`, then a length of -1 as `Random(Size - Offset)`; no other value draws. Nothing is
  /// complemented for any other negative length. Raises std::out_of_range, before a draw is made, for an
  /// offset below -1 where there is something to complement.
  void Invert(int Offset, int Len);

  /// Complements each bit with the given probability: one real draw a bit, in order of positions. Returns
  /// whether any bit was complemented; the owner is marked as stale in any case.
  bool Mutate(double MutationProbability);

  /// Draws every bit: one integer draw of `Random(2)` a bit, in order of positions.
  void Randomize();

private:
  void Changed();

  TQXGAIndividual* FOwner;
};

} // namespace qx
