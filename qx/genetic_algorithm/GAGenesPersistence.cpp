// The genotype's documents and streams.

#include <qx/foundation/EnumPropertyText.h>
#include <qx/genetic_algorithm/GenesReload.h>
#include <qx/genetic_algorithm/GeneticAlgorithm.h>
#include <qx/platform/Filer.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <vector>

namespace qx {

namespace {

// The elements of genes, by `TGeneType`; a gene of unknown type has none. Its value's element is called so,
// too, with "Value" behind it.
constexpr std::string_view GeneTags[] = {"", "BooleanGene", "IntegerGene", "FloatGene", "EnumerationGene"};

TGeneType GeneTypeOf(const TXMLNode& Element) {
  const auto Found = std::find(std::begin(GeneTags), std::end(GeneTags), Element.Tag());
  return Found == std::end(GeneTags) ? gtUnknown : static_cast<TGeneType>(Found - std::begin(GeneTags));
}

void SaveNumericGene(const TXMLNumericGeneType& Element, const TQXGAGene& Gene) {
  Element.SetMinValue(Gene.MinValue());
  Element.SetMaxValue(Gene.MaxValue());
  Element.SetPreserveSignBit(Gene.PreserveSignBit());
}

void SaveGene(const TXMLGenoType& GenoType, TQXGAGene& Gene) {
  if (Gene.GeneType() == gtUnknown) {
    return;
  }
  const TXMLGeneType Element(GenoType.AddChild(GeneTags[Gene.GeneType()]));
  Element.SetName(Gene.Name());
  Element.SetSize(Gene.Size());
  if (Gene.GeneType() == gtInteger || Gene.GeneType() == gtFloat) {
    SaveNumericGene(TXMLNumericGeneType(Element), Gene);
  } else if (Gene.GeneType() == gtEnumeration) {
    for (int I = 0; I < Gene.Enumerations().Count(); ++I) {
      Element.AddChild("Enumeration").SetText(Gene.Enumerations()[I]);
    }
  }
}

// The type comes last: its limits are those of the size and the sign, whatever the document says.
void LoadGene(const TXMLGeneType& Element, TGeneType Type, TQXGAGene& Gene) {
  Gene.SetName(Element.Name());
  Gene.SetSize(Element.Size());
  if (Type == gtInteger || Type == gtFloat) {
    const TXMLNumericGeneType Numeric(Element);
    Gene.SetMinValue(Numeric.MinValue());
    Gene.SetMaxValue(Numeric.MaxValue());
    Gene.SetPreserveSignBit(Numeric.PreserveSignBit());
  }
  Gene.SetGeneType(Type);
  if (Type == gtEnumeration) {
    const IXMLString_List Texts = TXMLEnumerationGeneType(Element).Enumeration();
    for (int I = 0; I < Texts.Count(); ++I) {
      Gene.Enumerations().Add(Texts[I]);
    }
  }
}

// How long the chromosomes become at most.
std::int64_t LargestSize(const TXMLGenoType& GenoType) {
  std::int64_t Genes = 0;
  for (TXMLNode Element = GenoType.FirstChild(); Element; Element = Element.NextSibling()) {
    if (GeneTypeOf(Element) != gtUnknown) {
      Genes += std::max(TXMLGeneType(Element).Size(), 0);
    }
  }
  return std::max<std::int64_t>(Genes, GenoType.Size());
}

} // namespace

void TQXGAGenes::SaveToXML(const TXMLGenoType& GenoType) {
  GenoType.Clear();
  for (TQXGAGene& Gene : *this) {
    SaveGene(GenoType, Gene);
  }
  const bool Unused = Size() == 0 && FAlgorithm != nullptr;
  if (FDecoding != gdStrict) {
    GenoType.SetAttribute("Decoding", EnumName(FDecoding));
  }
  GenoType.SetSize(Unused ? FAlgorithm->GeneSize() : Size());
}

void TQXGAGenes::SaveToXML(const TXMLGenes& Genes, TQXGAIndividual& Item) {
  TQXGABits& Bits = Item.Bits();
  for (const TQXGAGene& Gene : *this) {
    if (Gene.GeneType() == gtUnknown) {
      continue;
    }
    const TXMLNode Value = Genes.AddChild(std::string(GeneTags[Gene.GeneType()]) + "Value");
    if (Gene.GeneType() == gtBoolean) {
      Value.SetBoolean(Gene.GeneAsBoolean(Bits));
    } else if (Gene.GeneType() == gtInteger) {
      Value.SetInteger(Gene.GeneAsInteger(Bits));
    } else if (Gene.GeneType() == gtFloat) {
      Value.SetSingle(static_cast<double>(Gene.GeneAsFloat(Bits)));
    } else {
      Value.SetText(Gene.GeneAsEnumeration(Bits));
    }
  }
}

void TQXGAGenes::LoadFromXML(const TXMLGenoType& GenoType) {
  const TXMLReadScope Reading(GenoType);
  TLoadScope Load(FAlgorithm);
  if (FAlgorithm != nullptr) {
    FAlgorithm->RequireRoom(FAlgorithm->Population().Count(), LargestSize(GenoType));
    FAlgorithm->SetGeneSize(GenoType.Size());
  }
  TUpdateScope Update(*this);
  Load.OnFailure([this, Former = FDecoding] { FDecoding = Former; });
  FDecoding = GenoType.HasAttribute("Decoding")
                  ? Load.ValueOr("Decoding", GenoType.Attribute("Decoding"), FDecoding)
                  : gdStrict;
  detail::TGenesReload Genes(*this, Load);
  for (TXMLNode Element = GenoType.FirstChild(); Element; Element = Element.NextSibling()) {
    if (const TGeneType Type = GeneTypeOf(Element); Type != gtUnknown) {
      const TXMLGeneType GeneXML(Element);
      TQXGAGene& Gene = Genes.Add(GeneXML.Name());
      LoadGene(GeneXML, Type, Gene);
      if (FDecoding == gdAlwaysValid && (Type == gtInteger || Type == gtFloat)) { // values depend on them
        Gene.FMinValue = TXMLNumericGeneType(GeneXML).MinValue();
        Gene.FMaxValue = TXMLNumericGeneType(GeneXML).MaxValue();
      }
    }
  }
  Update.End();
  Load.Done();
}

void TQXGAGene::DefineProperties(TFiler& Filer) {
  TCollectionItem::DefineProperties(Filer);
  std::vector<std::string> Texts;
  for (int I = 0; FEnumerations != nullptr && I < FEnumerations->Count(); ++I) {
    Texts.push_back(FEnumerations->Strings(I));
  }
  TQXGAGene Standard; // has the limits that a new gene of this size, sign and type gets
  Standard.Store(*this);
  Standard.FMinValue = 0;
  Standard.FMaxValue = 0;
  Standard.RecalcMinMax();
  const bool Limited = Standard.FMinValue != FMinValue || Standard.FMaxValue != FMaxValue;
  std::optional<double> Max;

  Filer.Property("Name", FName, !FName.empty(), [this](const std::string& Value) { SetName(Value); });
  Filer.Property("Enumerations", Texts, !Texts.empty(), [this](const std::vector<std::string>& Values) {
    TUpdateScope Update(Enumerations());
    Enumerations().Clear();
    for (const std::string& Value : Values) {
      Enumerations().Add(Value);
    }
    Update.End();
  });
  Filer.Property("GeneType", FGeneType, FGeneType != gtUnknown,
                 [this](TGeneType Value) { SetGeneType(Value); });
  Filer.Property("PreserveSignBit", FPreserveSignBit, FPreserveSignBit,
                 [this](bool Value) { SetPreserveSignBit(Value); });
  Filer.Property("Size", FSize, FSize != 0, [this](int Value) { SetSize(Value); });
  Filer.Property("MaxValue", FMaxValue, Limited, [&](double Value) {
    SetMaxValue(Value);
    Max = Value;
  });
  Filer.Property("MinValue", FMinValue, Limited, [&](double Value) {
    SetMinValue(Value);
    // The limits stood beside each other when they were written, though each setter may move the other one.
    FMinValue = Value;
    FMaxValue = Max.value_or(FMaxValue);
  });
}

void TQXGAGene::Store(const TQXGAGene& Source) {
  FSize = Source.FSize;
  FOffset = Source.FOffset;
  FPreserveSignBit = Source.FPreserveSignBit;
  FMaxValue = Source.FMaxValue;
  FMinValue = Source.FMinValue;
  FName = Source.FName;
  FGeneType = gtUnknown; // the list shall not set the size
  if (Source.FEnumerations != nullptr) {
    Enumerations().Assign(*Source.FEnumerations);
  } else if (FEnumerations != nullptr) {
    FEnumerations->Clear();
  }
  FGeneType = Source.FGeneType;
}

} // namespace qx
