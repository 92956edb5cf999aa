// Fields that always decode to a value of their gene.

#include <qx/genetic_algorithm/QXGeneticAlgorithm.h>
#include <qx/platform/Random.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <support/SmallAlgorithm.h>
#include <support/Streams.h>
#include <utility>
#include <vector>

namespace qx {
namespace {

TQXGAGene& AddEnumeration(TQXGAGenes& Genes, int Texts) {
  TQXGAGene& Gene = Genes.Add();
  Gene.SetGeneType(gtEnumeration);
  for (int I = 0; I < Texts; ++I) {
    Gene.Enumerations().Add("t" + std::to_string(I));
  }
  return Gene;
}

class TCode : public TQXGABits {
public:
  TCode(int Size, std::uint64_t Code) {
    SetSize(Size);
    SetAsInt64(0, std::min(Size, 64), static_cast<std::int64_t>(Code));
  }
};

TEST(Decoding, IsStrictUnlessToldOtherwise) {
  TQXGAGenes Genes(nullptr);
  EXPECT_EQ(Genes.Decoding(), gdStrict);
  TQXGAGene& Gene = AddEnumeration(Genes, 4);
  EXPECT_EQ(Gene.Size(), 3);
  const TCode Bits(3, 5);
  EXPECT_THROW(static_cast<void>(Gene.GeneAsEnumeration(Bits)), EGAException);
  Genes.SetDecoding(gdAlwaysValid);
  EXPECT_EQ(Genes.Decoding(), gdAlwaysValid);
  EXPECT_THROW(Genes.SetDecoding(static_cast<TGADecoding>(2)), std::out_of_range);
}

TEST(Decoding, GivesEachCodeATextInSharesAsEqualAsCanBe) {
  for (int Texts = 1; Texts <= 20; ++Texts) {
    TQXGAGenes Genes(nullptr);
    Genes.SetDecoding(gdAlwaysValid);
    const TQXGAGene& Gene = AddEnumeration(Genes, Texts);
    std::map<std::string, int> Codes;
    for (std::uint64_t Code = 0; Code < std::uint64_t{1} << Gene.Size(); ++Code) {
      const TCode Bits(Gene.Size(), Code);
      const std::string Text = Gene.GeneAsEnumeration(Bits);
      EXPECT_EQ(Text, "t" + std::to_string(Code * static_cast<std::uint64_t>(Texts) >> Gene.Size()));
      EXPECT_EQ(Gene.AsString(Bits), Text);
      ++Codes[Text];
    }
    EXPECT_EQ(std::ssize(Codes), Texts);
    const int Least = (1 << Gene.Size()) / Texts;
    for (const auto& [Text, Count] : Codes) {
      EXPECT_TRUE(Count == Least || Count == Least + 1) << Text;
    }
  }
}

TEST(Decoding, ReadsBackWhatIsWritten) {
  TQXGAGenes Genes(nullptr);
  Genes.SetDecoding(gdAlwaysValid);
  TQXGAGene& Choice = AddEnumeration(Genes, 5);
  TQXGAGene& Whole = Genes.Add();
  Whole.SetGeneType(gtInteger);
  Whole.SetPreserveSignBit(true);
  Whole.SetSize(6);
  Whole.SetMaxValue(17);
  Whole.SetMinValue(-9);
  ASSERT_EQ(Whole.MaxValue(), 17);
  TCode Bits(Genes.Size(), 0);
  for (int I = 0; I < 5; ++I) {
    Choice.SetGeneAsEnumeration(Bits, "t" + std::to_string(I));
    EXPECT_EQ(Choice.GeneAsEnumeration(Bits), "t" + std::to_string(I));
  }
  for (int Value = -9; Value <= 17; ++Value) {
    Whole.SetGeneAsInteger(Bits, Value);
    EXPECT_EQ(Whole.GeneAsInteger(Bits), Value);
    Whole.SetGeneAsInt64(Bits, Value);
    EXPECT_EQ(Whole.GeneAsInt64(Bits), Value);
  }
  Whole.SetGeneAsInteger(Bits, 100);
  EXPECT_EQ(Whole.GeneAsInteger(Bits), 17);
  EXPECT_EQ(Choice.GeneAsEnumeration(Bits), "t4") << "each writes its own field alone";
}

TEST(Decoding, KeepsIntegersWithinTheirLimitsForEveryCode) {
  TQXGAGenes Genes(nullptr);
  Genes.SetDecoding(gdAlwaysValid);
  TQXGAGene& Gene = Genes.Add();
  Gene.SetGeneType(gtInteger);
  Gene.SetSize(8);
  Gene.SetMaxValue(60);
  Gene.SetMinValue(11);
  ASSERT_EQ(Gene.MaxValue(), 60);
  std::map<int, int> Codes;
  for (std::uint64_t Code = 0; Code < 256; ++Code) {
    const TCode Bits(8, Code);
    ++Codes[Gene.GeneAsInteger(Bits)];
  }
  EXPECT_EQ(Codes.size(), 50u);
  EXPECT_EQ(Codes.begin()->first, 11);
  EXPECT_EQ(Codes.rbegin()->first, 60);
}

TEST(Decoding, CoversTheWholeRangeOfWideFields) {
  for (const int Size : {63, 64, 65, 200}) {
    TQXGAGenes Genes(nullptr);
    Genes.SetDecoding(gdAlwaysValid);
    TQXGAGene& Gene = Genes.Add();
    Gene.SetGeneType(gtInteger);
    Gene.SetPreserveSignBit(true);
    Gene.SetSize(Size);
    TCode Bits(Size, 0);
    for (const std::int64_t Value :
         {std::int64_t{0}, std::int64_t{-1}, std::int64_t{1} << 40, -(std::int64_t{1} << 61)}) {
      Gene.SetGeneAsInt64(Bits, Value);
      EXPECT_EQ(Gene.GeneAsInt64(Bits), Value) << Size;
    }
  }
}

TEST(Decoding, SpreadsRealValuesFromLimitToLimit) {
  for (const int Size : {1, 10, 32, 64}) {
    TQXGAGenes Genes(nullptr);
    Genes.SetDecoding(gdAlwaysValid);
    TQXGAGene& Gene = Genes.Add();
    Gene.SetGeneType(gtFloat);
    Gene.SetPreserveSignBit(true);
    Gene.SetSize(Size);
    const double Min = Gene.MinValue(); // about -2^(Size - 1) to 2^(Size - 1)
    const double Max = Gene.MaxValue();
    ASSERT_LE(Min, -1);
    const TCode Least(Size, 0);
    const TCode Largest(Size, ~std::uint64_t{0} >> (64 - Size));
    EXPECT_EQ(Gene.GeneAsDouble(Least), Min);
    EXPECT_EQ(Gene.GeneAsDouble(Largest), Max);
    TCode Bits(Size, 0);
    const double Step = (Max - Min) / (std::ldexp(1.0, Size) - 1);
    for (const double Share : {0.0, 0.25, 0.5, 0.9, 1.0}) {
      const double Value = Min + Share * (Max - Min);
      Gene.SetGeneAsDouble(Bits, Value);
      const double Rounding = (Max - Min) * 1e-15; // of doubles of that size
      EXPECT_NEAR(Gene.GeneAsDouble(Bits), Value, Step * 0.51 + Rounding) << Size;
      Gene.SetGeneAsFloat(Bits, static_cast<float>(Value));
      EXPECT_NEAR(static_cast<double>(Gene.GeneAsFloat(Bits)), Value, Step * 0.51 + (Max - Min) * 1e-7)
          << Size;
    }
  }
}

TEST(Decoding, HoldsForReadsInTheGenesOwnTypeOnly) {
  TQXGAGenes Genes(nullptr);
  Genes.SetDecoding(gdAlwaysValid);
  const TQXGAGene& Gene = AddEnumeration(Genes, 4);
  const TCode Bits(3, 5);
  EXPECT_EQ(Gene.GeneAsEnumeration(Bits), "t2");
  EXPECT_EQ(Gene.GeneAsInteger(Bits), 5);
  EXPECT_EQ(Gene.GeneAsDouble(Bits), 5);
}

// Random values of every count of texts can be saved, and come back.
TEST(Decoding, LetsEveryRandomPopulationBeSavedAndLoaded) {
  SeedRandom(4);
  for (const int Texts : {2, 3, 4, 5}) {
    TQXGeneticAlgorithm Algorithm;
    Algorithm.Genes().SetDecoding(gdAlwaysValid);
    AddEnumeration(Algorithm.Genes(), Texts).SetName("choice");
    TQXGAGene& Whole = Algorithm.Genes().Add();
    Whole.SetName("whole");
    Whole.SetGeneType(gtInteger);
    Whole.SetSize(7);
    Whole.SetMaxValue(30);
    Whole.SetMinValue(20);
    Algorithm.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = 1; };
    Algorithm.Initialize();
    const std::string Text = tests::Saved(Algorithm);
    EXPECT_NE(Text.find("Decoding=\"gdAlwaysValid\""), std::string::npos);
    TQXGeneticAlgorithm Copy;
    Copy.OnEvaluateFitness = [](auto&, auto&, double& Fitness) { Fitness = 1; };
    tests::Load(Copy, Text);
    EXPECT_EQ(Copy.Genes().Decoding(), gdAlwaysValid);
    EXPECT_EQ(Copy.Genes()[1].MinValue(), 20);
    EXPECT_EQ(Copy.Genes()[1].MaxValue(), 30);
    for (int I = 0; I < Copy.Population().Count(); ++I) {
      EXPECT_EQ(Copy.Genes()[0].AsEnumeration(I), Algorithm.Genes()[0].AsEnumeration(I));
      EXPECT_EQ(Copy.Genes()[1].AsInteger(I), Algorithm.Genes()[1].AsInteger(I));
      EXPECT_GE(Copy.Genes()[1].AsInteger(I), 20);
      EXPECT_LE(Copy.Genes()[1].AsInteger(I), 30);
    }
  }
}

TEST(Decoding, IsWrittenOnlyWhenItIsOn) {
  tests::TSmallAlgorithm Algorithm;
  EXPECT_EQ(tests::Saved(Algorithm).find("Decoding"), std::string::npos);
  EXPECT_EQ(tests::Written(Algorithm).find("Decoding"), std::string::npos);
  Algorithm.Genes().SetDecoding(gdAlwaysValid);
  const std::string Text = tests::Written(Algorithm);
  EXPECT_NE(Text.find("Decoding = gdAlwaysValid"), std::string::npos);
  tests::TSmallAlgorithm Copy;
  std::istringstream Stream(Text);
  ReadComponent(Stream, Copy);
  EXPECT_EQ(Copy.Genes().Decoding(), gdAlwaysValid);
  tests::TSmallAlgorithm Assigned;
  Assigned.Genes().Assign(Algorithm.Genes());
  EXPECT_EQ(Assigned.Genes().Decoding(), gdAlwaysValid);
  tests::Load(Copy, tests::Saved(Assigned));
  EXPECT_EQ(Copy.Genes().Decoding(), gdAlwaysValid);
}

TEST(Decoding, OfADocumentWithoutItIsStrictAndComesBackWhenTheLoadFails) {
  tests::TSmallAlgorithm Strict;
  const std::string Text = tests::Saved(Strict);
  tests::TSmallAlgorithm Algorithm;
  Algorithm.Genes().SetDecoding(gdAlwaysValid);
  std::string Bad = Text;
  Bad.replace(Bad.rfind("</Domain>"), 9, "<Chromosomes/></Domai>");
  EXPECT_ANY_THROW(tests::Load(Algorithm, Bad));
  EXPECT_EQ(Algorithm.Genes().Decoding(), gdAlwaysValid);
  tests::Load(Algorithm, Text);
  EXPECT_EQ(Algorithm.Genes().Decoding(), gdStrict);
}

TEST(ConstReading, OfGenesLeavesTheBitsAlone) {
  TQXGAGenes Genes(nullptr);
  TQXGAGene& Gene = Genes.Add();
  Gene.SetGeneType(gtInteger);
  Gene.SetPreserveSignBit(true);
  Gene.SetSize(4);
  TCode Bits(4, 0xF);
  const TQXGABits& Read = Bits;
  EXPECT_EQ(Gene.GeneAsInteger(Read), -1);
  EXPECT_EQ(Gene.GeneAsInt64(Read, 0), -1);
  EXPECT_EQ(Gene.GeneAsDouble(Read), -1);
  EXPECT_EQ(Gene.GeneAsFloat(Read, 0), -1);
  EXPECT_EQ(Gene.AsString(Read), "-1");
  EXPECT_TRUE(Gene.GeneAsBoolean(Read));
  EXPECT_FALSE(Read.PreserveSignBit());
  EXPECT_EQ(Gene.GeneAsInteger(Bits), -1);
  EXPECT_TRUE(Read.PreserveSignBit());
}

TEST(ConstReading, OfAComponentNeedsNoOtherOne) {
  tests::TSmallAlgorithm Algorithm;
  Algorithm.Evolve(1);
  const TQXGeneticAlgorithm& Read = Algorithm;
  EXPECT_EQ(&Read.Population(), &Algorithm.Population());
  EXPECT_EQ(Read.PreviousGeneration(), Algorithm.PreviousGeneration());
  EXPECT_EQ(Read.FittestIndividual(), Algorithm.FittestIndividual());
  EXPECT_EQ(&Read.Genes(), &Algorithm.Genes());
}

TEST(Decoding, WhatWasReadIsWrittenAsItWas) {
  for (const int Size : {1, 14, 20, 52, 53, 63, 64, 2000}) {
    for (const auto& [Min, Max] : {std::pair{0.0, 7.0}, {-1e18, -0.9e18}, {-3.5, 1e-3}, {-1e308, 1e308}}) {
      TQXGAGenes Genes(nullptr);
      Genes.SetDecoding(gdAlwaysValid);
      TQXGAGene& Gene = Genes.Add();
      Gene.SetGeneType(gtFloat);
      Gene.SetPreserveSignBit(true);
      Gene.SetSize(Size);
      Gene.SetMinValue(Min);
      Gene.SetMaxValue(Max);
      for (std::uint64_t Code = 0x0123456789abcdef, I = 0; I < 50;
           ++I, Code = Code * 0x9e3779b97f4a7c15 + 1) {
        TCode Bits(Size, Code >> (64 - std::min(Size, 64)));
        const double Read = Gene.GeneAsDouble(Bits);
        ASSERT_GE(Read, Gene.MinValue());
        ASSERT_LE(Read, Gene.MaxValue());
        Gene.SetGeneAsDouble(Bits, Read);
        ASSERT_EQ(Gene.GeneAsDouble(Bits), Read) << Size << " bits from " << Min << " to " << Max;
      }
    }
  }
}

TEST(Decoding, LimitsThatAreHardlyNumbersGiveNumbers) {
  TQXGAGenes Genes(nullptr);
  Genes.SetDecoding(gdAlwaysValid);
  TQXGAGene& Gene = Genes.Add();
  Gene.SetGeneType(gtFloat);
  Gene.SetSize(2000);
  const TCode Least(2000, 0);
  EXPECT_EQ(Gene.GeneAsDouble(Least), Gene.MinValue());
  Gene.SetPreserveSignBit(true);
  Gene.SetSize(8);
  Gene.SetMinValue(-1e300);
  Gene.SetMaxValue(1e300);
  const TCode Most(8, 255);
  EXPECT_EQ(Gene.GeneAsFloat(Most), std::numeric_limits<float>::max());
  Gene.SetMinValue(-std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isfinite(Gene.GeneAsDouble(Most)));
}

TEST(Decoding, ALimitThatIsAPowerOfTwoIsReached) {
  TQXGAGenes Genes(nullptr);
  Genes.SetDecoding(gdAlwaysValid);
  TQXGAGene& Gene = Genes.Add();
  Gene.SetGeneType(gtInteger);
  Gene.SetPreserveSignBit(true);
  Gene.SetSize(61);
  Gene.SetMinValue(-1e18);
  Gene.SetMaxValue(std::ldexp(1.0, 60));
  TCode Bits(61, 0);
  Gene.SetGeneAsInt64(Bits, std::int64_t{1} << 60);
  EXPECT_EQ(Gene.GeneAsInt64(Bits), std::int64_t{1} << 60);
}

TEST(Decoding, ATextThatHasNoCodeIsRefused) {
  TQXGAGenes Genes(nullptr);
  Genes.SetDecoding(gdAlwaysValid);
  TQXGAGene& Gene = AddEnumeration(Genes, 4);
  Gene.SetSize(1);
  TCode Bits(1, 1);
  EXPECT_EQ(Gene.GeneAsEnumeration(Bits), "t2");
  EXPECT_THROW(Gene.SetGeneAsEnumeration(Bits, "t3"), std::out_of_range);
  EXPECT_EQ(Gene.GeneAsEnumeration(Bits), "t2");
  EXPECT_NO_THROW(Gene.SetGeneAsEnumeration(Bits, "t0"));
}

} // namespace
} // namespace qx
