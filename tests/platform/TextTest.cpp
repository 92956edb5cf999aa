#include <qx/platform/ClassName.h>
#include <qx/platform/Text.h>

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <locale>
#include <random>

namespace qx {
namespace {

class TComma final : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
};

TEST(Text, NamesAreComparedWithoutTheCaseOfAsciiLetters) {
  EXPECT_TRUE(SameText("Gene1", "gENE1"));
  EXPECT_TRUE(SameText("", ""));
  EXPECT_FALSE(SameText("Gene", "Gene1"));
  EXPECT_FALSE(SameText("\xc3\x84", "\xc3\xa4")); // letters outside ASCII are compared exactly
  EXPECT_FALSE(SameText("[", "{"));
}

TEST(Text, ASingleIsPlainInTheMiddleAndInExponentFormAtTheEnds) {
  EXPECT_EQ(GeneralText(0.1F), "0.1");
  EXPECT_EQ(GeneralText(100000.0F), "100000");
  EXPECT_EQ(GeneralText(-2.5F), "-2.5");
  EXPECT_EQ(GeneralText(0.0F), "0");
  EXPECT_EQ(GeneralText(1e-4F), "0.0001");
  EXPECT_EQ(GeneralText(1e-5F), "1e-05");
  EXPECT_EQ(GeneralText(1e15F), "1e+15");
  EXPECT_EQ(GeneralText(153197101056.0F), "153197100000"); // no more digits than needed
  EXPECT_EQ(GeneralText(std::numeric_limits<float>::infinity()), "INF");
}

TEST(Text, ASingleReadsBackToItself) {
  std::mt19937 Choices(1);
  for (int I = 0; I < 20000; ++I) {
    const auto Value = std::bit_cast<float>(static_cast<std::uint32_t>(Choices()));
    if (std::isfinite(Value)) {
      const std::string Text = GeneralText(Value);
      float Read = 0;
      ASSERT_EQ(std::from_chars(Text.data(), Text.data() + Text.size(), Read).ptr, Text.data() + Text.size());
      ASSERT_EQ(Read, Value) << Text;
    }
  }
}

TEST(Text, ASingleForPeopleHasTheLocalesPoint) {
  const std::locale Before = std::locale::global(std::locale(std::locale(), new TComma));
  EXPECT_EQ(GeneralText(2.5F), "2,5");
  std::locale::global(Before);
}

TEST(Text, ADoubleForPeopleHasUpToFifteenDigits) {
  EXPECT_EQ(GeneralText(1.0), "1");
  EXPECT_EQ(GeneralText(0.1), "0.1");
  EXPECT_EQ(GeneralText(1.0 / 3), "0.333333333333333");
  EXPECT_EQ(GeneralText(-1e20), "-1e+20");
}

TEST(Text, FixedNotationHasTwoDecimalsButNoMoreThanTwoDigits) {
  EXPECT_EQ(FixedText(98), "98.00");
  EXPECT_EQ(FixedText(0), "0.00");
  EXPECT_EQ(FixedText(1), "1.00");
  EXPECT_EQ(FixedText(5.5), "5.50");
  EXPECT_EQ(FixedText(0.28), "0.28");
  EXPECT_EQ(FixedText(0.283), "0.28");
  EXPECT_EQ(FixedText(0.0625), "0.06");
  EXPECT_EQ(FixedText(0.004), "0.00");
  EXPECT_EQ(FixedText(0.097), "0.10");
  EXPECT_EQ(FixedText(-3.14159), "-3.10");
}

TEST(Text, FixedNotationTakesHalvesToTheEvenDigit) {
  EXPECT_EQ(FixedText(12.5), "12.00");
  EXPECT_EQ(FixedText(13.5), "14.00");
  EXPECT_EQ(FixedText(1.25), "1.20");
  EXPECT_EQ(FixedText(0.125), "0.12");
}

TEST(Text, FixedNotationFallsBackToExponentsFromThreeDigitsOn) {
  EXPECT_EQ(FixedText(100), "1.0E+002");
  EXPECT_EQ(FixedText(99.5), "1.0E+002"); // rounded first
  EXPECT_EQ(FixedText(99.4), "99.00");
  EXPECT_EQ(FixedText(12345), "1.2E+004");
  EXPECT_EQ(FixedText(1e100), "1.0E+100");
}

TEST(Text, TrimmingTakesBlanksFromTheEndsOnly) {
  EXPECT_EQ(Trimmed(" a b\t\r\n"), "a b");
  EXPECT_EQ(Trimmed(" \n"), "");
}

template <class T>
struct TTemplated {};

TEST(ClassName, HasNoNamespacesAndKeepsTemplateArguments) {
  struct TLocal {};
  EXPECT_EQ(ClassNameOf(typeid(std::locale)), "locale");
  EXPECT_EQ(ClassNameOf(typeid(TComma)), "TComma");
  EXPECT_EQ(ClassNameOf(typeid(TTemplated<int>)), "TTemplated<int>");
  EXPECT_EQ(ClassNameOf(typeid(TLocal)), "TLocal");
  EXPECT_EQ(ClassNameOf(typeid(int)), "int");
}

} // namespace
} // namespace qx
