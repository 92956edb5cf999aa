#include <qx/platform/Utf8.h>

#include <gtest/gtest.h>

namespace qx {
namespace {

TEST(Utf8, EveryCodePointReadsBack) {
  for (char32_t CodePoint = 0; CodePoint <= 0x10ffff; CodePoint += 7) {
    if (CodePoint >= 0xd800 && CodePoint <= 0xdfff) {
      continue;
    }
    std::string Text;
    AppendCodePoint(Text, CodePoint);
    std::size_t Offset = 0;
    ASSERT_EQ(NextCodePoint(Text, Offset), CodePoint);
    ASSERT_EQ(Offset, Text.size());
  }
}

TEST(Utf8, WhatIsNoneIsFoundOut) {
  for (const std::string_view Bytes :
       {"\x80", "\xc0\x80", "\xc1\xbf", "\xe0\x80\x80", "\xed\xa0\x80", "\xf0\x80\x80\x80",
        "\xf4\x90\x80\x80", "\xf8\x88\x80\x80\x80", "\xff", "\xc3", "\xe2\x82", "\xc3("}) {
    std::size_t Offset = 0;
    EXPECT_FALSE(NextCodePoint(Bytes, Offset));
    EXPECT_EQ(Offset, 0U);
  }
}

} // namespace
} // namespace qx
