#include <qx/genetic_algorithm/FieldDecoding.h>
#include <qx/genetic_algorithm/GAGene.h>
#include <qx/genetic_algorithm/GAGenes.h>
#include <qx/genetic_algorithm/GeneticAlgorithm.h>
#include <qx/platform/Text.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <concepts>
#include <limits>
#include <stdexcept>

namespace qx {

namespace {

// 2 to the power of a gene's size; beyond the range of the type it is infinite.
double PowerOfTwo(int Exponent) { return std::ldexp(1.0, Exponent); }

// A limit as a value of another type: integers are rounded half to even, and what is too large for the type
// becomes its largest value.
template <class T>
T LimitAs(double Limit) {
  if constexpr (std::integral<T>) {
    const double Whole = std::nearbyint(Limit);
    const double Beyond = PowerOfTwo(std::numeric_limits<T>::digits);
    if (Whole >= Beyond) {
      return std::numeric_limits<T>::max();
    }
    if (Whole < -Beyond) {
      return std::numeric_limits<T>::min();
    }
    return static_cast<T>(Whole);
  } else {
    return static_cast<T>(Limit);
  }
}

} // namespace

int BitsRequired(std::uint32_t Value) { return static_cast<int>(std::bit_width(Value)); }

TQXGAGenes* TQXGAGene::Collection() const { return dynamic_cast<TQXGAGenes*>(TCollectionItem::Collection()); }

void TQXGAGene::SetCollection(TQXGAGenes& Value) { TCollectionItem::SetCollection(Value); }

void TQXGAGene::SetName(std::string_view Value) {
  if (FName != Value) {
    FName = Value;
    Changed(false);
  }
}

void TQXGAGene::SetGeneType(TGeneType Value) {
  if (CheckedEnum(Value, "GeneType") != FGeneType) {
    FGeneType = Value;
    RecalcMinMax();
    Changed(false);
  }
}

void TQXGAGene::SetSize(int Value) {
  if (Value < 0) {
    throw std::out_of_range("Gene \"" + DisplayName() + "\": Size must not be negative (" +
                            std::to_string(Value) + ")");
  }
  if (Value != FSize) {
    ChangeSize(Value);
  }
}

// When the chromosomes cannot become as long as that, the gene has the former size and limits.
void TQXGAGene::ChangeSize(int Value) {
  const int Size = FSize;
  const double Min = FMinValue;
  const double Max = FMaxValue;
  try {
    StoreSize(Value);
    SizeChange();
  } catch (...) {
    if (FSize != Size) {
      StoreSize(Size);
      FMinValue = Min;
      FMaxValue = Max;
      if (TQXGAGenes* const Genes = Collection()) {
        Genes->UpdateOffsets(Index() + 1);
      }
    }
    throw;
  }
}

void TQXGAGene::SetOffset(int Value) {
  FOffset = Value;
  if (TQXGAGenes* const Genes = Collection()) {
    Genes->OffsetsUnknownFrom(Index());
  }
}

void TQXGAGene::SetPreserveSignBit(bool Value) {
  if (Value != FPreserveSignBit) {
    FPreserveSignBit = Value;
    RecalcMinMax();
  }
}

// The two limit rules differ on purpose: a new maximum only ever moves the minimum, and only here is a
// negative minimum of an unsigned gene raised.
void TQXGAGene::SetMaxValue(double Value) {
  RequireNumber(Value, "MaxValue");
  if (Value == FMaxValue) {
    return;
  }
  FMaxValue = Value;
  if (FGeneType == gtInteger || FGeneType == gtFloat) {
    if (FMaxValue - FMinValue < PowerOfTwo(FSize) * 2) {
      FMinValue = FMaxValue - PowerOfTwo(FSize);
    }
  } else if (FGeneType == gtEnumeration) {
    if (FMaxValue - FMinValue <= Enumerations().Count()) {
      FMinValue = FMaxValue - Enumerations().Count();
    }
  }
  if (FGeneType != gtBoolean && !FPreserveSignBit && FMinValue < 0) {
    FMinValue = 0;
  }
}

void TQXGAGene::SetMinValue(double Value) {
  RequireNumber(Value, "MinValue");
  if (Value == FMinValue) {
    return;
  }
  FMinValue = Value;
  if (FGeneType == gtInteger || FGeneType == gtFloat) {
    if (FMaxValue - FMinValue > PowerOfTwo(FSize) - 1 || FMaxValue < FMinValue) {
      FMaxValue = FMinValue + PowerOfTwo(FSize) - 1;
    }
  } else if (FGeneType == gtEnumeration) {
    FMaxValue = FMinValue + Enumerations().Count() - 1;
  }
}

TStrings& TQXGAGene::Enumerations() {
  if (FEnumerations == nullptr) {
    FEnumerations = std::make_unique<TStrings>();
    FEnumerations->OnChange = [this](TStrings&) { EnumerationsChange(); };
  }
  return *FEnumerations;
}

void TQXGAGene::Assign(const TPersistent& Source) {
  const auto* Gene = SourceAs<TQXGAGene>(Source);
  if (Gene == nullptr) {
    TCollectionItem::Assign(Source);
    return;
  }
  if (Gene == this) {
    return;
  }
  StoreSize(Gene->FSize);
  FName = Gene->FName;
  if (Gene->IsEnumeration() && Gene->FEnumerations != nullptr) {
    FGeneType = gtUnknown; // the list shall not set the size
    Enumerations().Assign(*Gene->FEnumerations);
  } else {
    FEnumerations.reset();
  }
  FGeneType = Gene->FGeneType;
  FMaxValue = Gene->FMaxValue;
  FMinValue = Gene->FMinValue;
  FPreserveSignBit = Gene->FPreserveSignBit;
  Changed(false);
}

bool TQXGAGene::GeneAsBoolean(const TQXEncodedBits& Bits, int Offset) const {
  return Bits.GetAsBoolean(Offset, FSize);
}

bool TQXGAGene::AlwaysDecodes(TGeneType Type) const {
  const TQXGAGenes* const Genes = FGeneType == Type ? Collection() : nullptr;
  return Genes != nullptr && Genes->Decoding() == gdAlwaysValid;
}

std::int64_t TQXGAGene::ReadInt64(const TQXEncodedBits& Bits, int Offset) const {
  return AlwaysDecodes(gtInteger)
             ? detail::DecodeInteger(Bits, Offset, FSize, LimitAs<std::int64_t>(FMinValue),
                                     LimitAs<std::int64_t>(FMaxValue))
             : Bits.GetAsInt64(Offset, FSize, FPreserveSignBit);
}

float TQXGAGene::ReadFloat(const TQXEncodedBits& Bits, int Offset) const {
  constexpr double Largest = std::numeric_limits<float>::max();
  return AlwaysDecodes(gtFloat) ? static_cast<float>(std::clamp(ReadDouble(Bits, Offset), -Largest, Largest))
                                : Bits.GetAsFloat(Offset, FSize, FPreserveSignBit);
}

double TQXGAGene::ReadDouble(const TQXEncodedBits& Bits, int Offset) const {
  return AlwaysDecodes(gtFloat) ? detail::DecodeReal(Bits, Offset, FSize, FMinValue, FMaxValue)
                                : Bits.GetAsDouble(Offset, FSize, FPreserveSignBit);
}

const std::string& TQXGAGene::ReadEnumeration(const TQXEncodedBits& Bits, int Offset) const {
  const int Count = FEnumerations != nullptr ? FEnumerations->Count() : 0;
  const std::int64_t Place = AlwaysDecodes(gtEnumeration)
                                 ? detail::DecodeInteger(Bits, Offset, FSize, 0, std::max(Count - 1, 0))
                                 : Bits.GetAsInteger(Offset, FSize, FPreserveSignBit);
  if (Place < 0 || Place >= Count) {
    throw EGAException(std::string(SNoEnumerationFound));
  }
  return FEnumerations->Strings(static_cast<int>(Place));
}

void TQXGAGene::SetGeneAsBoolean(TQXEncodedBits& Bits, int Offset, bool Value) {
  Bits.SetAsBoolean(Offset, FSize, Value);
}

void TQXGAGene::SetGeneAsDouble(TQXEncodedBits& Bits, int Offset, double Value) {
  const double Held = Clamped(Value);
  if (AlwaysDecodes(gtFloat)) {
    detail::EncodeReal(Bits, Offset, FSize, FMinValue, FMaxValue, Held);
    return;
  }
  Bits.SetPreserveSignBit(FPreserveSignBit);
  Bits.SetAsDouble(Offset, FSize, Held);
}

void TQXGAGene::SetGeneAsEnumeration(TQXEncodedBits& Bits, int Offset, std::string_view Value) {
  const int Place = FEnumerations != nullptr ? FEnumerations->IndexOf(Value) : -1;
  if (Place < 0) {
    throw EGAException(FormatText(SValueNotEnumeration, {Value}));
  }
  const bool Decodes = AlwaysDecodes(gtEnumeration);
  if (Decodes && !detail::HasCode(FSize, 0, FEnumerations->Count() - 1, Place)) {
    throw std::out_of_range("Gene \"" + DisplayName() + "\": " + std::to_string(FSize) +
                            " bits have no code for \"" + std::string(Value) + "\"");
  }
  Bits.SetPreserveSignBit(false);
  if (Decodes) {
    detail::EncodeInteger(Bits, Offset, FSize, 0, FEnumerations->Count() - 1, Place);
    return;
  }
  Bits.SetAsInteger(Offset, FSize, Place);
}

void TQXGAGene::SetGeneAsFloat(TQXEncodedBits& Bits, int Offset, float Value) {
  if (AlwaysDecodes(gtFloat)) {
    SetGeneAsDouble(Bits, Offset, static_cast<double>(Value));
    return;
  }
  const float Held = Clamped(Value);
  Bits.SetPreserveSignBit(FPreserveSignBit);
  Bits.SetAsFloat(Offset, FSize, Held);
}

void TQXGAGene::SetGeneAsInt64(TQXEncodedBits& Bits, int Offset, std::int64_t Value) {
  if (AlwaysDecodes(gtInteger)) {
    const auto Low = LimitAs<std::int64_t>(FMinValue);
    const auto High = std::max(Low, LimitAs<std::int64_t>(FMaxValue));
    detail::EncodeInteger(Bits, Offset, FSize, Low, High, std::clamp(Value, Low, High));
    return;
  }
  const std::int64_t Held = Clamped(Value);
  Bits.SetPreserveSignBit(FPreserveSignBit);
  Bits.SetAsInt64(Offset, FSize, Held);
}

void TQXGAGene::SetGeneAsInteger(TQXEncodedBits& Bits, int Offset, std::int32_t Value) {
  if (AlwaysDecodes(gtInteger)) {
    SetGeneAsInt64(Bits, Offset, Value);
    return;
  }
  const std::int32_t Held = Clamped(Value);
  Bits.SetPreserveSignBit(FPreserveSignBit);
  Bits.SetAsInteger(Offset, FSize, Held);
}

std::string TQXGAGene::ReadText(const TQXEncodedBits& Bits) const {
  switch (FGeneType) {
  case gtBoolean:
    return GeneAsBoolean(Bits) ? "True" : "False";
  case gtInteger:
    return std::to_string(GeneAsInteger(Bits));
  case gtFloat:
    return GeneralText(GeneAsFloat(Bits));
  case gtEnumeration:
    return GeneAsEnumeration(Bits);
  case gtUnknown:
    break;
  }
  return Bits.GetAsBitString(FOffset, FSize);
}

bool TQXGAGene::AsBoolean(int Index) const { return GeneAsBoolean(Individual(Index).Bits()); }

void TQXGAGene::SetAsBoolean(int Index, bool Value) {
  TQXGAIndividual& Written = Individual(Index);
  SetGeneAsBoolean(Written.Bits(), Value);
  Written.Modified();
}

std::int32_t TQXGAGene::AsInteger(int Index) const { return GeneAsInteger(Individual(Index).Bits()); }

void TQXGAGene::SetAsInteger(int Index, std::int32_t Value) {
  TQXGAIndividual& Written = Individual(Index);
  SetGeneAsInteger(Written.Bits(), Value);
  Written.Modified();
}

std::int64_t TQXGAGene::AsInt64(int Index) const { return GeneAsInt64(Individual(Index).Bits()); }

void TQXGAGene::SetAsInt64(int Index, std::int64_t Value) {
  TQXGAIndividual& Written = Individual(Index);
  SetGeneAsInt64(Written.Bits(), Value);
  Written.Modified();
}

float TQXGAGene::AsFloat(int Index) const { return GeneAsFloat(Individual(Index).Bits()); }

void TQXGAGene::SetAsFloat(int Index, float Value) {
  TQXGAIndividual& Written = Individual(Index);
  SetGeneAsFloat(Written.Bits(), Value);
  Written.Modified();
}

double TQXGAGene::AsDouble(int Index) const { return GeneAsDouble(Individual(Index).Bits()); }

void TQXGAGene::SetAsDouble(int Index, double Value) {
  TQXGAIndividual& Written = Individual(Index);
  SetGeneAsDouble(Written.Bits(), Value);
  Written.Modified();
}

const std::string& TQXGAGene::AsEnumeration(int Index) const {
  return GeneAsEnumeration(Individual(Index).Bits());
}

void TQXGAGene::SetAsEnumeration(int Index, std::string_view Value) {
  TQXGAIndividual& Written = Individual(Index);
  SetGeneAsEnumeration(Written.Bits(), Value);
  Written.Modified();
}

std::string TQXGAGene::AsString(int Index) const { return AsString(Individual(Index).Bits()); }

std::string TQXGAGene::GetDisplayName() const {
  return FName.empty() ? TCollectionItem::GetDisplayName() : FName;
}

void TQXGAGene::SizeChange() {
  RecalcMinMax();
  if (TQXGAGenes* const Genes = Collection()) {
    Genes->SizeChange(Index());
  }
}

// The size follows the number of texts, not the largest index: four texts take three bits.
void TQXGAGene::EnumerationsChange() {
  if (FGeneType == gtEnumeration) {
    SetSize(BitsRequired(static_cast<std::uint32_t>(Enumerations().Count())));
  }
}

void TQXGAGene::StoreSize(int Value) {
  if (TQXGAGenes* const Genes = Collection()) {
    Genes->CheckGrowth(*this, FSize, Value);
    Genes->OffsetsUnknownFrom(Index() + 1);
  }
  FSize = Value;
}

void TQXGAGene::RecalcMinMax() {
  const int ValueBits = FPreserveSignBit ? FSize - 1 : FSize;
  if (FGeneType == gtInteger || FGeneType == gtFloat) {
    FMinValue = FPreserveSignBit ? -PowerOfTwo(ValueBits) : 0;
    FMaxValue = PowerOfTwo(ValueBits) - 1;
  } else if (FGeneType == gtEnumeration) {
    FMinValue = 0;
    FMaxValue = Enumerations().Count() - 1;
  }
}

void TQXGAGene::RequireNumber(double Value, std::string_view What) const {
  if (std::isnan(Value)) {
    throw std::invalid_argument("Gene \"" + DisplayName() + "\": " + std::string(What) +
                                " must be a number, not NaN");
  }
}

template <class T>
T TQXGAGene::Clamped(T Value) const {
  if constexpr (!std::integral<T>) {
    RequireNumber(Value, "Value");
  }
  const T Low = LimitAs<T>(FMinValue);
  if (Value < Low) {
    return Low;
  }
  T High = LimitAs<T>(FMaxValue);
  if constexpr (std::integral<T>) {
    // Of the limit 2^n - 1 a double knows but 2^n when n is large.
    const int ValueBits = FPreserveSignBit ? FSize - 1 : FSize;
    if (ValueBits < std::numeric_limits<T>::digits && FMaxValue == PowerOfTwo(ValueBits) &&
        FMaxValue - 1 == FMaxValue) {
      --High;
    }
  }
  return Value > High ? High : Value;
}

TQXGAIndividual& TQXGAGene::Individual(int Index) const {
  TQXGAGenes* const Genes = Collection();
  if (Genes == nullptr || Genes->Owner() == nullptr) {
    throw std::logic_error("Gene \"" + DisplayName() +
                           "\" belongs to no genetic algorithm whose individuals it could read");
  }
  return Genes->Owner()->Population()[Index];
}

} // namespace qx
