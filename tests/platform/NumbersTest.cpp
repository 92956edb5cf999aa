#include "support/Locales.h"
#include <qx/platform/Numbers.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace qx {
namespace {

TEST(Numbers, ADoubleIsTheShortestTextThatReadsBack) {
  EXPECT_EQ(NumberText(0.1), "0.1");
  EXPECT_EQ(NumberText(1.0 / 3), "0.3333333333333333");
  EXPECT_EQ(NumberText(-0.0), "-0");
  EXPECT_EQ(NumberText(1e15), "1e+15");
  EXPECT_EQ(NumberText(0.00001), "1e-05");
  std::mt19937_64 Choices(1);
  for (int I = 0; I < 20000; ++I) {
    const auto Value = std::bit_cast<double>(Choices());
    if (std::isfinite(Value)) {
      ASSERT_EQ(ParseReal(NumberText(Value)), Value);
    }
  }
}

TEST(Numbers, WhatIsNoFiniteNumberHasANameThatReadsBack) {
  constexpr double Infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(NumberText(Infinity), "INF");
  EXPECT_EQ(NumberText(-Infinity), "-INF");
  EXPECT_EQ(NumberText(std::numeric_limits<double>::quiet_NaN()), "NaN");
  EXPECT_EQ(ParseReal("INF"), Infinity);
  EXPECT_EQ(ParseReal("-inf"), -Infinity);
  EXPECT_TRUE(std::isnan(ParseReal("nan").value_or(0)));
}

TEST(Numbers, ASingleHasAtMostSevenDigits) {
  EXPECT_EQ(SingleText(0.98), "0.98");
  EXPECT_EQ(SingleText(0.1), "0.1");
  EXPECT_EQ(SingleText(1.0 / 3), "0.3333333");
  EXPECT_EQ(SingleText(16777216), "16777220"); // eight digits would be needed
  EXPECT_EQ(SingleText(123456789), "123456800");
  EXPECT_EQ(SingleText(1e300), "INF");
  EXPECT_EQ(SingleText(-1e300), "-INF");
  EXPECT_EQ(SingleText(std::numeric_limits<double>::quiet_NaN()), "NaN");
  EXPECT_EQ(SingleText(std::numeric_limits<float>::max()), "3.402823e+38");
  EXPECT_EQ(SingleText(1e-45), "1e-45");
}

TEST(Numbers, ASingleThatWasReadIsWrittenAsBefore) {
  std::mt19937 Choices(2);
  for (int I = 0; I < 200000; ++I) {
    const auto Value = static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(Choices())));
    if (std::isfinite(Value)) {
      const std::string Text = SingleText(Value);
      ASSERT_EQ(SingleText(ParseReal(Text).value()), Text);
      ASSERT_NEAR(ParseReal(Text).value(), Value, std::fabs(Value) * 5.1e-7 + 1e-45);
    }
  }
}

TEST(Numbers, OnlyAWholeTextIsANumber) {
  EXPECT_EQ(ParseInteger(" 42\n"), 42);
  EXPECT_EQ(ParseInteger("+7"), 7);
  EXPECT_EQ(ParseReal("+1.5"), 1.5);
  EXPECT_EQ(ParseReal("1E3"), 1000.0);
  for (const char* const Text :
       {"", " ", "x", "1x", "1 2", "+-1", "++1", "0x10", "1,5", "9223372036854775808"}) {
    EXPECT_FALSE(ParseInteger(Text)) << Text;
  }
  for (const char* const Text : {"", "x", "1.5x", "1,5", "1.5.2", "+-1"}) {
    EXPECT_FALSE(ParseReal(Text)) << Text;
  }
}

TEST(Numbers, ARealBeyondTheRangeOfADoubleIsInfiniteOrZero) {
  EXPECT_EQ(ParseReal("1e400"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(ParseReal("-1e999"), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(ParseReal("1e-400"), 0.0);
  EXPECT_EQ(ParseReal("5e-324"), 5e-324);
}

TEST(Numbers, AreTheSameUnderEveryLocale) {
  const tests::TGermanLocale German;
  EXPECT_EQ(NumberText(1234567.5), "1234567.5");
  EXPECT_EQ(SingleText(0.5), "0.5");
  EXPECT_EQ(ParseReal("0.5"), 0.5);
  EXPECT_FALSE(ParseReal("0,5"));
}

} // namespace
} // namespace qx
