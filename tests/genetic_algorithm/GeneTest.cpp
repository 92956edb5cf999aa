#include <qx/genetic_algorithm/QXGeneticAlgorithm.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

namespace qx {
namespace {

TQXGAGene& Made(TQXGAGene& Gene, TGeneType Type, int Size, bool Signed = false) {
  Gene.SetGeneType(Type);
  Gene.SetSize(Size);
  Gene.SetPreserveSignBit(Signed);
  return Gene;
}

void ExpectLimits(const TQXGAGene& Gene, double Min, double Max) {
  EXPECT_EQ(Gene.MinValue(), Min);
  EXPECT_EQ(Gene.MaxValue(), Max);
}

struct TChromosome : TQXGABits {
  explicit TChromosome(int Size) { SetSize(Size); }
};

TEST(Gene, BitsRequiredIsThePlaceOfTheHighestBit) {
  EXPECT_EQ(BitsRequired(0), 0);
  EXPECT_EQ(BitsRequired(1), 1);
  EXPECT_EQ(BitsRequired(2), 2);
  EXPECT_EQ(BitsRequired(3), 2);
  EXPECT_EQ(BitsRequired(4), 3);
  EXPECT_EQ(BitsRequired(255), 8);
  EXPECT_EQ(BitsRequired(256), 9);
  EXPECT_EQ(BitsRequired(0xffffffff), 32);
}

TEST(Gene, StartsEmpty) {
  TQXGAGene Gene;
  EXPECT_EQ(Gene.GeneType(), gtUnknown);
  EXPECT_EQ(Gene.Size(), 0);
  EXPECT_EQ(Gene.Offset(), 0);
  ExpectLimits(Gene, 0, 0);
  EXPECT_FALSE(Gene.PreserveSignBit());
  EXPECT_EQ(Gene.Enumerations().Count(), 0);
  EXPECT_EQ(Gene.DisplayName(), "TQXGAGene");
  Gene.SetName("x");
  EXPECT_EQ(Gene.DisplayName(), "x");
}

TEST(GeneLimits, FollowTypeSizeAndSign) {
  for (const auto Type : {gtInteger, gtFloat}) {
    TQXGAGene Gene;
    ExpectLimits(Made(Gene, Type, 8), 0, 255);
    Gene.SetPreserveSignBit(true);
    ExpectLimits(Gene, -128, 127);
    Gene.SetSize(4);
    ExpectLimits(Gene, -8, 7);
    Gene.SetGeneType(gtBoolean);
    ExpectLimits(Gene, -8, 7); // left as they are
    Gene.SetSize(5);
    ExpectLimits(Gene, -8, 7);
  }
}

TEST(GeneLimits, OfLongGenesComeFromTheExponent) {
  TQXGAGene Gene;
  ExpectLimits(Made(Gene, gtFloat, 100), 0, 0x1p100);
  Gene.SetPreserveSignBit(true);
  ExpectLimits(Gene, -0x1p99, 0x1p99);
  Gene.SetSize(5000);
  EXPECT_EQ(Gene.MaxValue(), std::numeric_limits<double>::infinity());
}

TEST(GeneLimits, ANewMaximumOnlyEverMovesTheMinimum) {
  TQXGAGene Gene;
  Made(Gene, gtInteger, 8).SetMaxValue(100); // to 100 - 256, and back to 0 without a sign
  ExpectLimits(Gene, 0, 100);
  Made(Gene, gtInteger, 8, true);
  ExpectLimits(Gene, -128, 127);
  Gene.SetMaxValue(100);
  ExpectLimits(Gene, -156, 100);
  Gene.SetMaxValue(100);
  ExpectLimits(Gene, -156, 100);
  Gene.SetMaxValue(356); // 512 above the minimum
  ExpectLimits(Gene, -156, 356);
  Gene.SetMaxValue(355);
  ExpectLimits(Gene, 99, 355);
}

TEST(GeneLimits, ANewMinimumMovesTheMaximumWhenTheRangeIsTooLongOrEmpty) {
  TQXGAGene Gene;
  Made(Gene, gtInteger, 8).SetMinValue(10);
  ExpectLimits(Gene, 10, 255);
  Gene.SetMinValue(-10);
  ExpectLimits(Gene, -10, 245); // no sign check follows
  Gene.SetMinValue(300);
  ExpectLimits(Gene, 300, 555);
}

TEST(GeneLimits, OfEnumerationsFollowTheirCount) {
  TQXGAGene Gene;
  Gene.SetGeneType(gtEnumeration);
  Gene.SetEnumerations({"A", "B", "C", "D"});
  ExpectLimits(Gene, 0, 3);
  Gene.SetMinValue(2);
  ExpectLimits(Gene, 2, 5);
  Gene.SetMaxValue(6); // 4 is not above the count
  ExpectLimits(Gene, 2, 6);
  Gene.SetMaxValue(20);
  ExpectLimits(Gene, 2, 20);
  Gene.SetMaxValue(1);
  ExpectLimits(Gene, 0, 1); // to -3, and back to 0 without a sign
}

TEST(GeneLimits, OfABooleanAreStoredAsGiven) {
  TQXGAGene Gene;
  Made(Gene, gtBoolean, 1).SetMinValue(-5);
  Gene.SetMaxValue(3);
  ExpectLimits(Gene, -5, 3);
  Gene.SetGeneType(gtUnknown);
  Gene.SetMaxValue(4);
  ExpectLimits(Gene, 0, 4);
}

TEST(GeneLimits, NotANumberIsRefusedByTheGenesName) {
  TQXGAGene Gene;
  Gene.SetName("x");
  try {
    Gene.SetMaxValue(NAN);
    FAIL();
  } catch (const std::invalid_argument& Error) {
    EXPECT_STREQ(Error.what(), "Gene \"x\": MaxValue must be a number, not NaN");
  }
  EXPECT_THROW(Gene.SetMinValue(NAN), std::invalid_argument);
}

TEST(Gene, ANegativeSizeOrForeignTypeIsRefused) {
  TQXGAGene Gene;
  EXPECT_THROW(Gene.SetSize(-1), std::out_of_range);
  EXPECT_THROW(Gene.SetGeneType(static_cast<TGeneType>(9)), std::out_of_range);
  EXPECT_EQ(Gene.Size(), 0);
}

TEST(GeneValue, NumbersAreMovedToTheNearerLimit) {
  TChromosome Bits(40);
  TQXGAGene Gene;
  Made(Gene, gtInteger, 8);
  Gene.SetGeneAsInteger(Bits, 300);
  EXPECT_EQ(Gene.GeneAsInteger(Bits), 255);
  Gene.SetGeneAsInteger(Bits, -5);
  EXPECT_EQ(Gene.GeneAsInteger(Bits), 0);
  Gene.SetPreserveSignBit(true);
  Gene.SetGeneAsInt64(Bits, -1000000000000);
  EXPECT_EQ(Gene.GeneAsInt64(Bits), -128);
  Gene.SetGeneAsDouble(Bits, 1e300);
  EXPECT_EQ(Gene.GeneAsDouble(Bits), 127);
  Gene.SetGeneAsFloat(Bits, -1e30F);
  EXPECT_EQ(Gene.GeneAsFloat(Bits), -128);
  EXPECT_TRUE(Bits.PreserveSignBit());
}

TEST(GeneValue, LimitsOfIntegersAreRoundedHalfToEven) {
  TChromosome Bits(16);
  TQXGAGene Gene;
  Made(Gene, gtInteger, 8, true).SetMaxValue(2.5);
  Gene.SetGeneAsInteger(Bits, 3);
  EXPECT_EQ(Gene.GeneAsInteger(Bits), 2);
  Gene.SetMaxValue(3.5);
  Gene.SetGeneAsInt64(Bits, 9);
  EXPECT_EQ(Gene.GeneAsInt64(Bits), 4);
  Gene.SetMinValue(1.5);
  Gene.SetGeneAsInteger(Bits, -7);
  EXPECT_EQ(Gene.GeneAsInteger(Bits), 2);
}

TEST(GeneValue, WritingAboveTheLimitOfALongGeneGivesItsLargestValue) {
  for (int Size = 20; Size <= 70; ++Size) {
    if (Size == 32 || Size == 64) {
      continue; // images
    }
    for (const bool Signed : {false, true}) {
      TChromosome Bits(80);
      TQXGAGene Gene;
      Made(Gene, gtFloat, Size, Signed).SetOffset(3);
      const int Ones = std::min(Size, 64) - static_cast<int>(Signed);
      Gene.SetGeneAsFloat(Bits, 1e37F);
      EXPECT_EQ(Bits.CountOnes(), Ones) << Size;
      Gene.SetGeneAsDouble(Bits, 1e300);
      EXPECT_EQ(Bits.CountOnes(), Ones) << Size;
      Gene.SetGeneAsInt64(Bits, std::numeric_limits<std::int64_t>::max());
      EXPECT_EQ(Bits.CountOnes(), std::min(Ones, 63)) << Size;
      Gene.SetGeneAsInteger(Bits, std::numeric_limits<std::int32_t>::max());
      EXPECT_EQ(Bits.CountOnes(), std::min(Ones, 31)) << Size;
    }
  }
}

TEST(GeneValue, NotANumberIsRefused) {
  TChromosome Bits(16);
  TQXGAGene Gene;
  Made(Gene, gtFloat, 8).SetGeneAsInteger(Bits, 7);
  EXPECT_THROW(Gene.SetGeneAsDouble(Bits, NAN), std::invalid_argument);
  EXPECT_THROW(Gene.SetGeneAsFloat(Bits, NAN), std::invalid_argument);
  EXPECT_EQ(Gene.GeneAsInteger(Bits), 7);
}

TEST(GeneValue, AnyGeneReadsAndWritesInAnyForm) {
  TChromosome Bits(16);
  TQXGAGene Gene;
  Made(Gene, gtInteger, 8);
  Gene.SetGeneAsBoolean(Bits, true);
  EXPECT_TRUE(Gene.GeneAsBoolean(Bits));
  EXPECT_EQ(Gene.GeneAsInteger(Bits), 1);
  EXPECT_THROW(Gene.GeneAsEnumeration(Bits), EGAException);
}

TEST(GeneValue, ABooleanReadLeavesTheSignSettingAlone) {
  TChromosome Bits(16);
  Bits.SetPreserveSignBit(true);
  TQXGAGene Gene;
  Made(Gene, gtBoolean, 1);
  Gene.SetGeneAsBoolean(Bits, true);
  EXPECT_TRUE(Gene.GeneAsBoolean(Bits));
  EXPECT_TRUE(Bits.PreserveSignBit());
}

TEST(GeneValue, StandsAtTheGenesOffsetOrAtAGivenOne) {
  TChromosome Bits(16);
  TQXGAGene Gene;
  Made(Gene, gtInteger, 4).SetOffset(2);
  Gene.SetGeneAsInteger(Bits, 15);
  EXPECT_EQ(Bits.ToString(), "0011110000000000");
  Gene.SetGeneAsInteger(Bits, 10, 5);
  EXPECT_EQ(Gene.GeneAsInteger(Bits, 10), 5);
  EXPECT_EQ(Gene.GeneAsInteger(Bits), 15);
  EXPECT_THROW(Gene.SetGeneAsInteger(Bits, 13, 1), std::out_of_range);
}

TEST(GeneValue, TheShortFormsCallTheLongOnes) {
  struct TDoubling : TQXGAGene {
    using TQXGAGene::SetGeneAsInteger;
    void SetGeneAsInteger(TQXEncodedBits& Bits, int Offset, std::int32_t Value) override {
      TQXGAGene::SetGeneAsInteger(Bits, Offset, 2 * Value);
    }
  } Gene;
  TChromosome Bits(16);
  Made(Gene, gtInteger, 8);
  static_cast<TQXGAGene&>(Gene).SetGeneAsInteger(Bits, 5);
  EXPECT_EQ(Gene.GeneAsInteger(Bits), 10);
}

TEST(GeneText, TellsTheValueByItsType) {
  TChromosome Bits(40);
  TQXGAGene Gene;
  Made(Gene, gtBoolean, 1);
  EXPECT_EQ(Gene.AsString(Bits), "False");
  Gene.SetGeneAsBoolean(Bits, true);
  EXPECT_EQ(Gene.AsString(Bits), "True");
  Made(Gene, gtInteger, 8, true).SetGeneAsInteger(Bits, -7);
  EXPECT_EQ(Gene.AsString(Bits), "-7");
  Made(Gene, gtFloat, 32, true).SetGeneAsFloat(Bits, 2.5F);
  EXPECT_EQ(Gene.AsString(Bits), "2.5");
  Made(Gene, gtUnknown, 4);
  Bits.SetAsBitString(0, 4, "0110");
  EXPECT_EQ(Gene.AsString(Bits), "0110");
  Gene.SetGeneType(gtEnumeration);
  Gene.SetEnumerations({"x", "y"});
  Gene.SetGeneAsEnumeration(Bits, "y");
  EXPECT_EQ(Gene.AsString(Bits), "y");
}

TEST(GeneEnumeration, FourTextsTakeThreeBits) {
  TChromosome Bits(8);
  TQXGAGene Gene;
  Gene.SetGeneType(gtEnumeration);
  Gene.SetEnumerations({"A", "B", "C", "D"});
  EXPECT_EQ(Gene.Size(), 3);
  EXPECT_TRUE(Gene.IsEnumeration());
  Gene.SetGeneAsEnumeration(Bits, "D");
  EXPECT_EQ(Gene.GeneAsEnumeration(Bits), "D");
  EXPECT_FALSE(Bits.PreserveSignBit());
  try {
    Gene.SetGeneAsEnumeration(Bits, "E");
    FAIL();
  } catch (const EGAException& Error) {
    EXPECT_STREQ(Error.what(), "\"E\" is not a valid enumerated value");
  }
  EXPECT_EQ(Gene.GeneAsEnumeration(Bits), "D");
  Bits.SetAsInteger(0, 3, 5);
  try {
    Gene.GeneAsEnumeration(Bits);
    FAIL();
  } catch (const EGAException& Error) {
    EXPECT_STREQ(Error.what(), "No enumerated value found in chromosome");
  }
}

TEST(GeneEnumeration, ANegativeIndexIsNoText) {
  TChromosome Bits(8);
  TQXGAGene Gene;
  Gene.SetGeneType(gtEnumeration);
  Gene.SetEnumerations({"A", "B", "C", "D", "E"});
  Gene.SetPreserveSignBit(true);
  Bits.SetAsInteger(0, 3, 7);
  EXPECT_THROW(Gene.GeneAsEnumeration(Bits), EGAException);
}

TEST(GeneEnumeration, TheSizeFollowsTheListOnlyWhileTheTypeIsSet) {
  TQXGAGene Gene;
  Gene.SetEnumerations({"A", "B", "C"});
  EXPECT_EQ(Gene.Size(), 0);
  Gene.SetGeneType(gtEnumeration);
  EXPECT_EQ(Gene.Size(), 0);
  ExpectLimits(Gene, 0, 2);
  Gene.Enumerations().Clear();
  EXPECT_EQ(Gene.Size(), 0);
}

TEST(GeneEnumeration, FiveTextsAtOnceLeaveFourAndAddedSinglyThree) {
  TQXGAGene AtOnce;
  AtOnce.SetGeneType(gtEnumeration);
  AtOnce.SetEnumerations({"A", "B", "C", "D", "E"});
  EXPECT_EQ(AtOnce.Size(), 3);
  EXPECT_EQ(AtOnce.MaxValue(), 4);
  AtOnce.Enumerations().Add("F");
  EXPECT_EQ(AtOnce.Size(), 3);
  EXPECT_EQ(AtOnce.MaxValue(), 4) << "the size did not change";
  TQXGAGene Singly;
  Singly.SetGeneType(gtEnumeration);
  for (const char* const Text : {"A", "B", "C", "D", "E"}) {
    Singly.Enumerations().Add(Text);
  }
  EXPECT_EQ(Singly.Size(), 3);
  EXPECT_EQ(Singly.MaxValue(), 3);
}

TEST(GeneAssign, CopiesWhatIsStoredAndNoMore) {
  TQXGAGene Source;
  Source.SetName("e");
  Source.SetGeneType(gtEnumeration);
  Source.SetEnumerations({"A", "B", "C", "D"});
  Source.SetSize(7);
  Source.SetPreserveSignBit(true);
  Source.SetMaxValue(50);
  Source.SetOffset(12);
  TQXGAGene Gene;
  Gene.Assign(Source);
  EXPECT_EQ(Gene.Name(), "e");
  EXPECT_EQ(Gene.GeneType(), gtEnumeration);
  EXPECT_EQ(Gene.Size(), 7) << "the list does not set it";
  EXPECT_EQ(Gene.Enumerations().Text(), "A\nB\nC\nD\n");
  ExpectLimits(Gene, Source.MinValue(), 50);
  EXPECT_TRUE(Gene.PreserveSignBit());
  EXPECT_EQ(Gene.Offset(), 0);
  Gene.Enumerations().Add("E");
  EXPECT_EQ(Gene.Size(), 3) << "its own list is alive";
  TQXGAGene Plain;
  Made(Plain, gtInteger, 5);
  Gene.Assign(Plain);
  EXPECT_EQ(Gene.Enumerations().Count(), 0);
  EXPECT_EQ(Gene.Size(), 5);
  Gene.Assign(Gene);
  EXPECT_EQ(Gene.Size(), 5);
  EXPECT_THROW(Gene.Assign(TStrings()), std::invalid_argument);
}

class GeneOfIndividual : public testing::Test {
protected:
  GeneOfIndividual() {
    Gene.SetGeneType(gtInteger);
    Gene.SetSize(8);
    Algorithm.Population().Add();
    Algorithm.Population().Add();
    Algorithm.OnEvaluateFitness = [this](auto&, auto& Item, double& Fitness) {
      Fitness = Gene.GeneAsInteger(Item.Bits());
    };
  }

  TQXGeneticAlgorithm Algorithm;
  TQXGAGene& Gene = Algorithm.Genes().Add();
};

TEST_F(GeneOfIndividual, IsReadAndWrittenByItsIndexAndModified) {
  EXPECT_EQ(Algorithm.Population()[1].Fitness(), 0);
  Gene.SetAsInteger(1, 9);
  EXPECT_EQ(Algorithm.Population()[1].Fitness(), 9);
  EXPECT_EQ(Gene.AsInteger(0), 0);
  EXPECT_EQ(Gene.AsString(1), "9");
  Gene.SetAsInt64(1, 10);
  EXPECT_EQ(Gene.AsInt64(1), 10);
  Gene.SetAsFloat(1, 11);
  EXPECT_EQ(Gene.AsFloat(1), 11);
  Gene.SetAsDouble(1, 12);
  EXPECT_EQ(Gene.AsDouble(1), 12);
  Gene.SetAsBoolean(1, true);
  EXPECT_TRUE(Gene.AsBoolean(1));
  Gene.SetGeneType(gtEnumeration);
  Gene.SetEnumerations({"a", "b"});
  Gene.SetAsEnumeration(0, "b");
  EXPECT_EQ(Gene.AsEnumeration(0), "b");
  EXPECT_EQ(Algorithm.Population()[0].Fitness(), 1);
}

TEST_F(GeneOfIndividual, OutsideThePopulationRaises) {
  EXPECT_THROW(Gene.AsInteger(2), std::out_of_range);
  EXPECT_THROW(Gene.SetAsInteger(-1, 0), std::out_of_range);
  TQXGAGene Free;
  EXPECT_THROW(Free.AsInteger(0), std::logic_error);
}

} // namespace
} // namespace qx
