#pragma once

#include <qx/foundation/QXEncodedBits.h>
#include <qx/foundation/QXGAConsts.h>
#include <qx/platform/CollectionItem.h>
#include <qx/platform/Strings.h>

#include <concepts>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace qx {

class TQXGAGenes;
namespace detail {
struct TGeneContent;
} // namespace detail
class TQXGAIndividual;

/// Bits needed to write `Value` in base two; 0 for 0.
int BitsRequired(std::uint32_t Value);

/// A gene: a named field of the chromosome, read and written as a typed value within limits.
///
/// A host sets `GeneType` and `Size` (an enumerated gene takes its size from its list when the type is set
/// first), which sets the limits to what the field can hold; then it may narrow them. Values outside the
/// limits are moved to the nearer one when they are written; a value that is not a number raises
/// std::invalid_argument. The type does not restrict access: any gene reads and writes in any form.
class TQXGAGene : public TCollectionItem {
public:
  TQXGAGenes* Collection() const;
  void SetCollection(TQXGAGenes& Value);

  const std::string& Name() const { return FName; }
  void SetName(std::string_view Value);
  /// How the bits are read. A new type recalculates the limits.
  TGeneType GeneType() const { return FGeneType; }
  void SetGeneType(TGeneType Value);
  /// Length in bits. A new size recalculates the limits and moves the genes behind. Raises std::out_of_range
  /// for a negative one and std::length_error for one that makes the genotype too long.
  int Size() const { return FSize; }
  void SetSize(int Value);
  /// First bit in the chromosome; kept by the collection.
  int Offset() const { return FOffset; }
  void SetOffset(int Value);
  /// Whether one bit of `Size` is the sign. A new setting recalculates the limits.
  bool PreserveSignBit() const { return FPreserveSignBit; }
  void SetPreserveSignBit(bool Value);

  /// Upper limit. A new one that leaves the range of an integer or floating-point gene shorter than twice
  /// 2^Size moves `MinValue` to 2^Size below it; an unsigned gene's `MinValue` is raised to 0 then. Raises
  /// std::invalid_argument for NaN, as `SetMinValue`.
  double MaxValue() const { return FMaxValue; }
  void SetMaxValue(double Value);
  /// Lower limit. A new one that makes the range longer than 2^Size - 1, or empty, moves `MaxValue` to that
  /// length above it.
  double MinValue() const { return FMinValue; }
  void SetMinValue(double Value);

  /// The texts of an enumerated gene. While the type is gtEnumeration every change sets `Size` to what the
  /// number of texts needs.
  TStrings& Enumerations();
  void SetEnumerations(const TStrings& Value) { Enumerations().Assign(Value); }
  bool IsEnumeration() const { return FGeneType == gtEnumeration; }

  /// Copies everything but the offset, exactly as it is stored.
  void Assign(const TPersistent& Source) override;

  // --- Values in a chromosome, at the gene's own offset or at a given one -------------------------------
  // A field outside the chromosome raises std::out_of_range.

  // A number that is read from bits that are not const leaves its sign setting there, as one that is written.

  bool GeneAsBoolean(const TQXEncodedBits& Bits) const { return GeneAsBoolean(Bits, FOffset); }
  bool GeneAsBoolean(const TQXEncodedBits& Bits, int Offset) const;
  template <std::derived_from<TQXEncodedBits> TBits>
  std::int32_t GeneAsInteger(TBits& Bits) const {
    return GeneAsInteger(Bits, FOffset);
  }
  template <std::derived_from<TQXEncodedBits> TBits>
  std::int32_t GeneAsInteger(TBits& Bits, int Offset) const {
    return static_cast<std::int32_t>(ReadInt64(WithSign(Bits), Offset));
  }
  template <std::derived_from<TQXEncodedBits> TBits>
  std::int64_t GeneAsInt64(TBits& Bits) const {
    return GeneAsInt64(Bits, FOffset);
  }
  template <std::derived_from<TQXEncodedBits> TBits>
  std::int64_t GeneAsInt64(TBits& Bits, int Offset) const {
    return ReadInt64(WithSign(Bits), Offset);
  }
  template <std::derived_from<TQXEncodedBits> TBits>
  float GeneAsFloat(TBits& Bits) const {
    return GeneAsFloat(Bits, FOffset);
  }
  template <std::derived_from<TQXEncodedBits> TBits>
  float GeneAsFloat(TBits& Bits, int Offset) const {
    return ReadFloat(WithSign(Bits), Offset);
  }
  template <std::derived_from<TQXEncodedBits> TBits>
  double GeneAsDouble(TBits& Bits) const {
    return GeneAsDouble(Bits, FOffset);
  }
  template <std::derived_from<TQXEncodedBits> TBits>
  double GeneAsDouble(TBits& Bits, int Offset) const {
    return ReadDouble(WithSign(Bits), Offset);
  }
  /// Raises EGAException when the field holds no index of the list.
  template <std::derived_from<TQXEncodedBits> TBits>
  const std::string& GeneAsEnumeration(TBits& Bits) const {
    return GeneAsEnumeration(Bits, FOffset);
  }
  template <std::derived_from<TQXEncodedBits> TBits>
  const std::string& GeneAsEnumeration(TBits& Bits, int Offset) const {
    return ReadEnumeration(WithSign(Bits), Offset);
  }

  void SetGeneAsBoolean(TQXEncodedBits& Bits, bool Value) { SetGeneAsBoolean(Bits, FOffset, Value); }
  virtual void SetGeneAsBoolean(TQXEncodedBits& Bits, int Offset, bool Value);
  void SetGeneAsDouble(TQXEncodedBits& Bits, double Value) { SetGeneAsDouble(Bits, FOffset, Value); }
  virtual void SetGeneAsDouble(TQXEncodedBits& Bits, int Offset, double Value);
  void SetGeneAsEnumeration(TQXEncodedBits& Bits, std::string_view Value) {
    SetGeneAsEnumeration(Bits, FOffset, Value);
  }
  /// Raises EGAException, and leaves the chromosome alone, when the list does not hold the text.
  virtual void SetGeneAsEnumeration(TQXEncodedBits& Bits, int Offset, std::string_view Value);
  void SetGeneAsFloat(TQXEncodedBits& Bits, float Value) { SetGeneAsFloat(Bits, FOffset, Value); }
  virtual void SetGeneAsFloat(TQXEncodedBits& Bits, int Offset, float Value);
  void SetGeneAsInt64(TQXEncodedBits& Bits, std::int64_t Value) { SetGeneAsInt64(Bits, FOffset, Value); }
  virtual void SetGeneAsInt64(TQXEncodedBits& Bits, int Offset, std::int64_t Value);
  void SetGeneAsInteger(TQXEncodedBits& Bits, std::int32_t Value) { SetGeneAsInteger(Bits, FOffset, Value); }
  virtual void SetGeneAsInteger(TQXEncodedBits& Bits, int Offset, std::int32_t Value);

  /// The value as text for people.
  template <std::derived_from<TQXEncodedBits> TBits>
  std::string AsString(TBits& Bits) const {
    return ReadText(IsNumeric() ? WithSign(Bits) : Bits);
  }

  // --- Values of an individual of the component's population, by its index there ------------------------
  // Writing marks the individual as modified. Outside a genetic algorithm: std::logic_error.

  bool AsBoolean(int Index) const;
  void SetAsBoolean(int Index, bool Value);
  std::int32_t AsInteger(int Index) const;
  void SetAsInteger(int Index, std::int32_t Value);
  std::int64_t AsInt64(int Index) const;
  void SetAsInt64(int Index, std::int64_t Value);
  float AsFloat(int Index) const;
  void SetAsFloat(int Index, float Value);
  double AsDouble(int Index) const;
  void SetAsDouble(int Index, double Value);
  const std::string& AsEnumeration(int Index) const;
  void SetAsEnumeration(int Index, std::string_view Value);
  std::string AsString(int Index) const;

protected:
  void DefineProperties(TFiler& Filer) override;
  std::string GetDisplayName() const override;
  /// Copies all fields as they are and tells nobody; for loads that are undone. A derived class adds its own
  /// fields.
  virtual void Store(const TQXGAGene& Source);
  /// Called when `Size` has a new value.
  virtual void SizeChange();
  /// Called when the list of texts has changed.
  void EnumerationsChange();

private:
  friend class TQXGAGenes;
  friend struct detail::TGeneContent;

  const TQXEncodedBits& WithSign(TQXEncodedBits& Bits) const {
    Bits.SetPreserveSignBit(FPreserveSignBit);
    return Bits;
  }
  const TQXEncodedBits& WithSign(const TQXEncodedBits& Bits) const { return Bits; }
  std::int64_t ReadInt64(const TQXEncodedBits& Bits, int Offset) const;
  float ReadFloat(const TQXEncodedBits& Bits, int Offset) const;
  double ReadDouble(const TQXEncodedBits& Bits, int Offset) const;
  const std::string& ReadEnumeration(const TQXEncodedBits& Bits, int Offset) const;
  std::string ReadText(const TQXEncodedBits& Bits) const;
  bool IsNumeric() const { return FGeneType >= gtInteger; }

  bool AlwaysDecodes(TGeneType Type) const;
  void ChangeSize(int Value);
  void StoreSize(int Value);
  void RecalcMinMax();
  void RequireNumber(double Value, std::string_view What) const;
  template <class T>
  T Clamped(T Value) const;
  TQXGAIndividual& Individual(int Index) const;

  int FSize = 0;
  int FOffset = 0;
  TGeneType FGeneType = gtUnknown;
  bool FPreserveSignBit = false;
  double FMaxValue = 0;
  double FMinValue = 0;
  std::string FName;
  std::unique_ptr<TStrings> FEnumerations;
};

} // namespace qx
