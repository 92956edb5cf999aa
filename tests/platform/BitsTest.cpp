#include <qx/platform/Bits.h>

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>
#include <vector>

namespace qx {
namespace {

TEST(Bits, StartEmpty) {
  const TBits Bits;
  EXPECT_EQ(Bits.Size(), 0);
  EXPECT_TRUE(Bits.Words().empty());
}

TEST(Bits, NewSizeKeepsTheBitsThatStayAndFillsWithZero) {
  std::mt19937 Choices(1);
  TBits Bits;
  std::vector<bool> Model;
  for (int Step = 0; Step < 2000; ++Step) {
    const int Size = static_cast<int>(Choices() % 300);
    Bits.SetSize(Size);
    Model.resize(static_cast<std::size_t>(Size));
    for (int I = 0; I < Size; ++I) {
      ASSERT_EQ(Bits[I], Model[static_cast<std::size_t>(I)]);
    }
    for (int I = 0; I < 20 && Size > 0; ++I) {
      const int Place = static_cast<int>(Choices()) & 0x7fffffff;
      Bits.SetBits(Place % Size, true);
      Model[static_cast<std::size_t>(Place % Size)] = true;
    }
    ASSERT_EQ(Bits.CountOnes(), std::count(Model.begin(), Model.end(), true));
  }
}

TEST(Bits, SizeZeroEmptiesTheVector) {
  TBits Bits;
  Bits.SetSize(8);
  Bits.SetBits(3, true);
  Bits.SetSize(0);
  Bits.SetSize(8);
  EXPECT_EQ(Bits.CountOnes(), 0);
}

TEST(Bits, AnIndexOutsideRaisesAndNamesItself) {
  TBits Bits;
  Bits.SetSize(8);
  EXPECT_THROW(Bits.Bits(8), std::out_of_range);
  EXPECT_THROW(Bits.SetBits(-1, true), std::out_of_range);
  try {
    Bits.Bits(8);
  } catch (const std::out_of_range& Error) {
    EXPECT_STREQ(Error.what(), "Bit 8 is outside the vector of 8 bits");
  }
}

TEST(Bits, ANegativeSizeRaisesAndChangesNothing) {
  TBits Bits;
  Bits.SetSize(8);
  EXPECT_THROW(Bits.SetSize(-1), std::out_of_range);
  EXPECT_THROW(Bits.SetSize(0x7fffffff), std::length_error);
  EXPECT_EQ(Bits.Size(), 8);
}

TEST(Bits, AssignCopiesSizeAndBitsOfLongAndShortVectors) {
  for (const int Size : {0, 1, 63, 64, 65, 1000}) {
    TBits Source;
    Source.SetSize(Size);
    for (int I = 0; I < Size; I += 3) {
      Source.SetBits(I, true);
    }
    for (const int Before : {0, 5, 64, 200, 2000}) {
      TBits Copy;
      Copy.SetSize(Before);
      for (int I = 0; I < Before; ++I) {
        Copy.SetBits(I, true);
      }
      Copy.Assign(static_cast<const TPersistent&>(Source));
      ASSERT_EQ(Copy.Size(), Size);
      for (int I = 0; I < Size; ++I) {
        ASSERT_EQ(Copy[I], I % 3 == 0);
      }
      Copy.SetSize(Size + 70);
      ASSERT_EQ(Copy.CountOnes(), Source.CountOnes()) << "stale bits behind the end";
    }
  }
}

TEST(Bits, AssignToItselfChangesNothing) {
  TBits Bits;
  Bits.SetSize(100);
  Bits.SetBits(70, true);
  Bits.Assign(static_cast<const TBits&>(Bits));
  EXPECT_EQ(Bits.Size(), 100);
  EXPECT_TRUE(Bits[70]);
}

} // namespace
} // namespace qx
