#include <qx/foundation/QXEncodedBits.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <support/NonFinite.h>
#include <vector>

namespace qx {
namespace {

using tests::Infinity;

TQXEncodedBits& Sized(TQXEncodedBits& Bits, int Size, bool Signed = false) {
  Bits.SetSize(Size);
  Bits.SetPreserveSignBit(Signed);
  return Bits;
}

TEST(EncodedBits, EveryUnsignedValueOfAFieldReadsBack) {
  TQXEncodedBits Bits;
  Sized(Bits, 100);
  for (int Length = 1; Length <= 12; ++Length) {
    for (int Value = 0; Value < 1 << Length; ++Value) {
      Bits.SetAsInteger(60, Length, Value);
      ASSERT_EQ(Bits.GetAsInteger(60, Length), Value);
      Bits.SetAsInt64(60, Length, Value);
      ASSERT_EQ(Bits.GetAsInt64(60, Length), Value);
    }
  }
}

TEST(EncodedBits, EverySignedValueOfAFieldReadsBack) {
  TQXEncodedBits Bits;
  Sized(Bits, 100, true);
  for (int Length = 1; Length <= 12; ++Length) {
    for (int Value = -(1 << (Length - 1)); Value < 1 << (Length - 1); ++Value) {
      Bits.SetAsInteger(60, Length, Value);
      ASSERT_EQ(Bits.GetAsInteger(60, Length), Value);
      Bits.SetAsDouble(60, Length, Value);
      ASSERT_EQ(Bits.GetAsDouble(60, Length), Value);
    }
  }
}

TEST(EncodedBits, ThreeBitsHoldSevenOrMinusFour) {
  TQXEncodedBits Bits;
  Sized(Bits, 3);
  Bits.SetAsInteger(0, 3, 7);
  EXPECT_EQ(Bits.GetAsInteger(0, 3), 7);
  Bits.SetPreserveSignBit(true);
  Bits.SetAsInteger(0, 3, -4);
  EXPECT_EQ(Bits.GetAsInteger(0, 3), -4);
}

TEST(EncodedBits, NeighbouringFieldsAreIndependent) {
  TQXEncodedBits Bits;
  Sized(Bits, 70);
  Bits.SetAsInteger(0, 60, 123456);
  Bits.SetAsInteger(60, 8, 255);
  EXPECT_EQ(Bits.GetAsInteger(0, 60), 123456);
  Bits.SetAsInteger(0, 60, 0);
  EXPECT_EQ(Bits.GetAsInteger(60, 8), 255);
  EXPECT_EQ(Bits.GetAsInteger(68, 2), 0);
}

TEST(EncodedBits, TheLeastSignificantBitComesFirst) {
  TQXEncodedBits Bits;
  Sized(Bits, 8);
  Bits.SetAsInteger(2, 4, 1);
  EXPECT_EQ(Bits.ToBitString(), "00100000");
  Bits.SetAsInteger(2, 4, 12);
  EXPECT_EQ(Bits.ToString(), "00001100");
}

TEST(EncodedBits, AWideFieldIsFilledWithTheSignAndANarrowOneKeepsTheLowBits) {
  TQXEncodedBits Bits;
  Sized(Bits, 100, true);
  Bits.SetAsInteger(0, 100, -1);
  EXPECT_EQ(Bits.ToBitString(), std::string(100, '1'));
  Bits.SetPreserveSignBit(false);
  Bits.SetAsInteger(0, 100, -1);
  EXPECT_EQ(Bits.ToBitString(), std::string(32, '1') + std::string(68, '0'));
  Bits.SetAsInt64(0, 100, -1);
  EXPECT_EQ(Bits.ToBitString(), std::string(64, '1') + std::string(36, '0'));
  Bits.SetAsInteger(0, 4, 0x57);
  EXPECT_EQ(Bits.GetAsInteger(0, 4), 7);
  EXPECT_EQ(Bits.GetAsInteger(0, 40), -9) << "the low 32 bits of a wider field";
}

TEST(EncodedBits, ABooleanReadsWhatWasWrittenInAnyLength) {
  TQXEncodedBits Bits;
  Sized(Bits, 200);
  for (const int Length : {1, 2, 63, 64, 65, 130}) {
    Bits.SetAsBoolean(5, Length, true);
    EXPECT_TRUE(Bits.GetAsBoolean(5, Length));
    Bits.SetAsBoolean(5, Length, false);
    EXPECT_FALSE(Bits.GetAsBoolean(5, Length));
    EXPECT_EQ(Bits.CountOnes(), 0);
  }
  Bits.SetBits(129, true);
  EXPECT_TRUE(Bits.GetAsBoolean(0, 130)) << "any bit of the field counts";
}

TEST(EncodedBits, ThirtyTwoAndSixtyFourBitsHoldImages) {
  TQXEncodedBits Bits;
  Sized(Bits, 130, true);
  for (const double Value : {0.1, -2.5, 1e300, -1e-300, 0.0}) {
    Bits.SetAsDouble(1, 64, Value);
    EXPECT_EQ(Bits.GetAsDouble(1, 64), Value);
    Bits.SetAsFloat(70, 32, static_cast<float>(Value / 1e270));
    EXPECT_EQ(Bits.GetAsFloat(70, 32), static_cast<float>(Value / 1e270));
  }
  Bits.SetAsDouble(1, 32, 0.1);
  EXPECT_EQ(Bits.GetAsDouble(1, 32), static_cast<double>(0.1F));
  Bits.SetAsDouble(1, 32, 1e300);
  EXPECT_EQ(Bits.GetAsFloat(1, 32), std::numeric_limits<float>::max());
  Bits.SetAsDouble(1, 64, -1e300);
  EXPECT_EQ(Bits.GetAsFloat(1, 64), std::numeric_limits<float>::lowest());
}

TEST(EncodedBits, AnImageThatIsNoFiniteNumberReadsZero) {
  TQXEncodedBits Bits;
  Sized(Bits, 64, true);
  for (const double Value : {Infinity, -Infinity, std::nan("")}) {
    Bits.SetAsDouble(0, 64, Value);
    EXPECT_EQ(Bits.GetAsDouble(0, 64), 0);
    Bits.SetAsFloat(0, 32, static_cast<float>(Value));
    EXPECT_EQ(Bits.GetAsFloat(0, 32), 0);
  }
}

TEST(EncodedBits, AnUnsignedFieldIgnoresTheSignOfAnImage) {
  TQXEncodedBits Bits;
  Sized(Bits, 64);
  Bits.SetAsDouble(0, 64, -2.5);
  EXPECT_EQ(Bits.GetAsDouble(0, 64), 2.5);
  Bits.SetAsFloat(0, 32, -2.5F);
  EXPECT_EQ(Bits.GetAsFloat(0, 32), 2.5F);
}

TEST(EncodedBits, OtherLengthsHoldTheNearestIntegerHalvesToEven) {
  TQXEncodedBits Bits;
  Sized(Bits, 100, true);
  const auto Held = [&Bits](int Length, double Value) {
    Bits.SetAsDouble(3, Length, Value);
    return Bits.GetAsDouble(3, Length);
  };
  EXPECT_EQ(Held(16, 2.5), 2);
  EXPECT_EQ(Held(16, 3.5), 4);
  EXPECT_EQ(Held(16, -2.5), -2);
  EXPECT_EQ(Held(16, -3.4), -3);
  EXPECT_EQ(Held(16, std::nan("")), 0);
  EXPECT_EQ(Held(80, -5), -5);
  EXPECT_EQ(Held(80, -0.25), 0);
  EXPECT_EQ(Bits.CountOnes(), 0) << "a value that rounds to 0 has no sign";
  Bits.SetPreserveSignBit(false);
  EXPECT_EQ(Held(16, 65535), 65535);
}

TEST(EncodedBits, ARealBeyondItsFieldBecomesTheNearestThatTheFieldHolds) {
  TQXEncodedBits Bits;
  Sized(Bits, 120);
  for (int Length = 1; Length <= 110; ++Length) {
    if (Length == 32 || Length == 64) {
      continue;
    }
    const int Whole = std::min(Length, 64);
    Bits.SetPreserveSignBit(false);
    for (const double Value : {1e37, Infinity, std::ldexp(1.0, Whole)}) {
      Bits.SetAsDouble(5, Length, Value);
      EXPECT_EQ(Bits.CountOnes(), Whole) << Length;
    }
    Bits.SetAsDouble(5, Length, -3);
    EXPECT_EQ(Bits.CountOnes(), 0);
    Bits.SetPreserveSignBit(true);
    Bits.SetAsDouble(5, Length, 1e37);
    EXPECT_EQ(Bits.CountOnes(), Whole - 1) << Length;
    EXPECT_GE(Bits.GetAsDouble(5, Length), 0);
    Bits.SetAsDouble(5, Length, -1e37);
    EXPECT_EQ(Bits.GetAsDouble(5, Length), -std::ldexp(1.0, Whole - 1)) << Length;
  }
}

TEST(EncodedBits, BitTextIsReadAndWrittenInOrderOfPositions) {
  TQXEncodedBits Bits;
  Sized(Bits, 150);
  std::string Text(150, '0');
  for (std::size_t I = 0; I < Text.size(); I += 7) {
    Text[I] = '1';
  }
  Bits.SetAsBitString(0, 150, Text);
  EXPECT_EQ(Bits.ToBitString(), Text);
  EXPECT_EQ(Bits.GetAsBitString(5, 70), Text.substr(5, 70));
  Bits.SetAsBitString(0, Bits.Size(), Bits.ToBitString());
  EXPECT_EQ(Bits.ToBitString(), Text);
}

TEST(EncodedBits, ShortBitTextLeavesTheRestZeroAndLongTextIsCut) {
  TQXEncodedBits Bits;
  Sized(Bits, 6);
  Bits.SetAsBitString(0, 6, "111111");
  Bits.SetAsBitString(1, 4, "01");
  EXPECT_EQ(Bits.ToBitString(), "101001");
  Bits.SetAsBitString(0, 2, "0011111");
  EXPECT_EQ(Bits.ToBitString(), "001001");
}

TEST(EncodedBits, OtherCharactersAreRefusedAndNothingChanges) {
  TQXEncodedBits Bits;
  Sized(Bits, 6);
  Bits.SetAsBitString(0, 6, "101010");
  EXPECT_THROW(Bits.SetAsBitString(0, 6, "0101 1"), std::invalid_argument);
  EXPECT_EQ(Bits.ToBitString(), "101010");
}

TEST(EncodedBits, AFieldOfLengthZeroReadsZeroAndWritesNothing) {
  TQXEncodedBits Bits;
  Sized(Bits, 64, true);
  Bits.SetAsInteger(64, 0, 5);
  Bits.SetAsDouble(64, 0, 5);
  Bits.SetAsBoolean(64, 0, true);
  EXPECT_EQ(Bits.CountOnes(), 0);
  EXPECT_EQ(Bits.GetAsInteger(64, 0), 0);
  EXPECT_EQ(Bits.GetAsDouble(64, 0), 0);
  EXPECT_FALSE(Bits.GetAsBoolean(0, 0));
  EXPECT_EQ(Bits.GetAsBitString(64, 0), "");
}

TEST(EncodedBits, AFieldOutsideRaisesBeforeAnythingChanges) {
  TQXEncodedBits Bits;
  Sized(Bits, 8);
  EXPECT_THROW(Bits.SetAsInteger(4, 5, 31), std::out_of_range);
  EXPECT_THROW(Bits.SetAsBitString(4, 5, "11111"), std::out_of_range);
  EXPECT_THROW(Bits.SetAsInteger(-1, 4, 1), std::out_of_range);
  EXPECT_THROW(Bits.SetAsDouble(0, -1, 1), std::out_of_range);
  EXPECT_THROW(Bits.GetAsInt64(std::numeric_limits<int>::max(), 1), std::out_of_range);
  EXPECT_THROW(Bits.GetAsFloat(0, std::numeric_limits<int>::max()), std::out_of_range);
  EXPECT_EQ(Bits.CountOnes(), 0);
}

TEST(EncodedBits, BytesMoveInAndOut) {
  TQXEncodedBits Bits;
  Sized(Bits, 40);
  const std::vector<std::uint8_t> Bytes{0x0f, 0xa5};
  Bits.Encode(3, 12, Bytes);
  EXPECT_EQ(Bits.GetAsInteger(3, 12), 0x50f);
  std::vector<std::uint8_t> Read(3, 0xff);
  Bits.Decode(3, 12, Read);
  EXPECT_EQ(Read, (std::vector<std::uint8_t>{0x0f, 0x05, 0x00}));
  Bits.Encode(3, 20, Bytes);
  EXPECT_EQ(Bits.GetAsInteger(3, 20), 0xa50f);
  std::vector<std::uint8_t> Short(1);
  EXPECT_THROW(Bits.Decode(3, 12, Short), std::invalid_argument);
}

TEST(EncodedBits, TheSignSettingStaysUntilItIsSet) {
  TQXEncodedBits Bits;
  EXPECT_FALSE(Bits.PreserveSignBit());
  Bits.SetPreserveSignBit(true);
  Bits.SetSize(8);
  Bits.SetAsInteger(0, 8, -3);
  TQXEncodedBits Other;
  Other.SetSize(4);
  Bits.Assign(Other);
  EXPECT_TRUE(Bits.PreserveSignBit());
}

// The codec against a model that goes bit by bit.
TEST(EncodedBits, IntegersEqualABitwiseModelAtRandomPlaces) {
  std::mt19937_64 Choices(1);
  TQXEncodedBits Bits;
  Bits.SetSize(300);
  std::string Model(300, '0');
  for (int Step = 0; Step < 20000; ++Step) {
    const int Length = static_cast<int>(Choices() % 120);
    const int Offset = static_cast<int>(Choices() % static_cast<std::uint64_t>(301 - Length));
    const auto Value = static_cast<std::int64_t>(Choices() >> Choices() % 64);
    const bool Signed = Choices() % 2 == 0;
    Bits.SetPreserveSignBit(Signed);
    Bits.SetAsInt64(Offset, Length, Value);
    for (int I = 0; I < Length; ++I) {
      const bool Bit = I < 64 ? (static_cast<std::uint64_t>(Value) >> I & 1) != 0 : Signed && Value < 0;
      Model[static_cast<std::size_t>(Offset + I)] = Bit ? '1' : '0';
    }
    ASSERT_EQ(Bits.ToBitString(), Model);
    std::int64_t Expected = 0;
    for (int I = 0; I < 64; ++I) {
      const int Place = I < Length ? I : Length - 1;
      const bool Bit =
          Length > 0 && (I < Length || Signed) && Model[static_cast<std::size_t>(Offset + Place)] == '1';
      Expected |= static_cast<std::int64_t>(static_cast<std::uint64_t>(Bit) << I);
    }
    ASSERT_EQ(Bits.GetAsInt64(Offset, Length), Expected);
  }
}

} // namespace
} // namespace qx
