#include <qx/platform/Variant.h>

#include <gtest/gtest.h>

#include <cmath>
#include <concepts>
#include <cstddef>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <support/Locales.h>

namespace qx {
namespace {

template <class TError, class TCall>
std::string MessageOf(TCall Call) {
  try {
    Call();
  } catch (const TError& Error) {
    return Error.what();
  }
  return "nothing raised";
}

TEST(VariantTest, HoldsWhatItWasMadeFrom) {
  EXPECT_EQ(Variant().Kind(), vkEmpty);
  EXPECT_TRUE(Variant().IsEmpty());
  EXPECT_EQ(Variant(true).Kind(), vkBoolean);
  EXPECT_EQ(Variant(3).Kind(), vkInteger);
  EXPECT_EQ(Variant(3U).Kind(), vkInteger);
  EXPECT_EQ(Variant('a').AsText(), "a");
  EXPECT_EQ(Variant(2.5F).Kind(), vkReal);
  EXPECT_EQ(Variant("a").Kind(), vkText);
  EXPECT_EQ(Variant(std::string_view("a")).Kind(), vkText);
  EXPECT_EQ(Variant(std::numeric_limits<std::uint64_t>::max()).AsReal(), 0x1p64);
  EXPECT_EQ(Variant(std::numeric_limits<std::uint64_t>::max()).Kind(), vkReal);
}

template <class T>
concept MakesVariant = std::constructible_from<Variant, T>;
enum TUnscoped { uvOne };
static_assert(MakesVariant<const char*> && MakesVariant<std::size_t> && MakesVariant<long double>);
static_assert(!MakesVariant<void*> && !MakesVariant<const int*> && !MakesVariant<std::nullptr_t>);
static_assert(!MakesVariant<int (*)()> && !MakesVariant<TUnscoped>);
static_assert(!MakesVariant<wchar_t> && !MakesVariant<char8_t>);

TEST(VariantTest, ANullPointerIsNoText) {
  const char* const Null = nullptr;
  EXPECT_THROW(static_cast<void>(Variant(Null)), std::invalid_argument);
}

TEST(VariantTest, NothingIsZeroFalseAndTheEmptyText) {
  EXPECT_EQ(Variant().AsReal(), 0);
  EXPECT_EQ(Variant().AsInteger(), 0);
  EXPECT_FALSE(Variant().AsBoolean());
  EXPECT_EQ(Variant().AsText(), "");
}

TEST(VariantTest, ConvertsToReal) {
  EXPECT_EQ(Variant(true).AsReal(), 1);
  EXPECT_EQ(Variant(-3).AsReal(), -3);
  EXPECT_EQ(Variant(" 2.5 ").AsReal(), 2.5);
  EXPECT_TRUE(std::isnan(Variant("NaN").AsReal()));
}

TEST(VariantTest, ConvertsToAWholeNumberRoundingHalvesToEven) {
  EXPECT_EQ(Variant(2.5).AsInteger(), 2);
  EXPECT_EQ(Variant(3.5).AsInteger(), 4);
  EXPECT_EQ(Variant(-2.5).AsInteger(), -2);
  EXPECT_EQ(Variant("3.5").AsInteger(), 4);
  EXPECT_EQ(Variant("9223372036854775807").AsInteger(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(Variant(-0x1p63).AsInteger(), std::numeric_limits<std::int64_t>::min());
}

TEST(VariantTest, ConvertsToBoolean) {
  EXPECT_TRUE(Variant(2).AsBoolean());
  EXPECT_FALSE(Variant(0.0).AsBoolean());
  EXPECT_TRUE(Variant(" TRUE").AsBoolean());
  EXPECT_FALSE(Variant("False").AsBoolean());
  EXPECT_TRUE(Variant("0.5").AsBoolean());
  EXPECT_FALSE(Variant("0").AsBoolean());
}

TEST(VariantTest, ConvertsToTextThatReadsBack) {
  const tests::TGermanLocale Comma;
  EXPECT_EQ(Variant(true).AsText(), "true");
  EXPECT_EQ(Variant(-12).AsText(), "-12");
  EXPECT_EQ(Variant(0.1).AsText(), "0.1");
  EXPECT_EQ(Variant(1.0 / 3).AsText(), "0.3333333333333333");
  EXPECT_EQ(Variant(Variant(1.0 / 3).AsText()).AsReal(), 1.0 / 3);
  EXPECT_EQ(Variant("a").AsText(), "a");
  std::ostringstream Stream;
  Stream << Variant(2.5);
  EXPECT_EQ(Stream.str(), "2.5");
}

TEST(VariantTest, AConversionErrorNamesValueAndTarget) {
  EXPECT_EQ(MessageOf<std::invalid_argument>([] { static_cast<void>(Variant("abc").AsReal()); }),
            "\"abc\" cannot be converted to a real number");
  EXPECT_EQ(MessageOf<std::invalid_argument>([] { static_cast<void>(Variant("").AsInteger()); }),
            "\"\" cannot be converted to a whole number");
  EXPECT_EQ(MessageOf<std::invalid_argument>([] { static_cast<void>(Variant("maybe").AsBoolean()); }),
            "\"maybe\" cannot be converted to a Boolean");
  EXPECT_EQ(MessageOf<std::out_of_range>([] { static_cast<void>(Variant(1e19).AsInteger()); }),
            "1e+19 cannot be converted to a whole number of 64 bits");
  EXPECT_THROW(static_cast<void>(Variant(std::nan("")).AsInteger()), std::out_of_range);
  EXPECT_THROW(static_cast<void>(Variant(0x1p63).AsInteger()), std::out_of_range);
}

TEST(VariantTest, WholeNumbersRemainWholeUntilTheyOverflow) {
  constexpr auto Largest = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ((Variant(2) + 3).Kind(), vkInteger);
  EXPECT_EQ((Variant(2) - 3).AsInteger(), -1);
  EXPECT_EQ((Variant(2) * 3).AsInteger(), 6);
  EXPECT_EQ((Variant(7) / 2).AsReal(), 3.5);
  EXPECT_EQ((Variant(4) / 2).Kind(), vkReal);
  EXPECT_EQ((Variant(Largest) + 1).Kind(), vkReal);
  EXPECT_EQ((Variant(Largest) * Largest).AsReal(), 0x1p126);
  EXPECT_EQ((Variant(-2) - Largest).AsReal(), -0x1p63);
  EXPECT_EQ((-Variant(std::numeric_limits<std::int64_t>::min())).AsReal(), 0x1p63);
  EXPECT_EQ((-Variant(5)).AsInteger(), -5);
  EXPECT_EQ((Variant(true) + true).AsInteger(), 2);
  EXPECT_EQ((Variant() + 2).AsInteger(), 2);
  EXPECT_EQ((Variant(2) + 0.5).AsReal(), 2.5);
}

TEST(VariantTest, DivisionByZero) {
  EXPECT_EQ((Variant(1) / 0).AsReal(), std::numeric_limits<double>::infinity());
  EXPECT_EQ((Variant(7) % 3).AsInteger(), 1);
  EXPECT_EQ((Variant(-7) % 3).AsInteger(), -1);
  EXPECT_EQ((Variant(std::numeric_limits<std::int64_t>::min()) % -1).AsInteger(), 0);
  EXPECT_EQ(MessageOf<std::domain_error>([] { static_cast<void>(Variant(7) % Variant("0")); }),
            "7 % \"0\": the remainder of a division by 0");
}

TEST(VariantTest, TextsAreJoinedAndOtherwiseCountAsNumbers) {
  EXPECT_EQ((Variant("1") + "2").AsText(), "12");
  EXPECT_EQ((Variant("a") + Variant()).AsText(), "a");
  EXPECT_EQ((Variant("1") + 2).AsInteger(), 3);
  EXPECT_EQ((Variant("1") * "2.5").AsReal(), 2.5);
  EXPECT_THROW(Variant("a") + 2, std::invalid_argument);
  Variant Sum = 1;
  Sum += 2;
  Sum *= 4;
  Sum -= 1;
  Sum /= 2;
  EXPECT_EQ(Sum.AsReal(), 5.5);
  Sum %= 4;
  EXPECT_EQ(Sum.AsInteger(), 2);
}

TEST(VariantTest, NumbersCompareExactlyWhateverTheirKind) {
  EXPECT_EQ(Variant(2), 2.0);
  EXPECT_EQ(Variant(true), 1);
  EXPECT_LT(Variant(2), 2.5);
  EXPECT_GT(Variant(-2), -2.5);
  constexpr std::int64_t Large = (std::int64_t{1} << 53) + 1; // no double
  EXPECT_NE(Variant(Large), 0x1p53);
  EXPECT_GT(Variant(Large), 0x1p53);
  EXPECT_LT(Variant(0x1p53), Large);
  EXPECT_LT(Variant(std::numeric_limits<std::int64_t>::max()), 0x1p63);
  EXPECT_GT(Variant(std::numeric_limits<std::int64_t>::min()), -1e300);
  EXPECT_GT(Variant(std::numeric_limits<double>::infinity()), 5);
  const Variant NaN = std::nan("");
  EXPECT_NE(NaN, NaN);
  EXPECT_FALSE(NaN < Variant(1));
  EXPECT_FALSE(Variant(1) < NaN);
}

TEST(VariantTest, TextsCompareByBytesAndBesideNumbersAsNumbers) {
  EXPECT_LT(Variant("10"), "9");
  EXPECT_GT(Variant("10"), 9);
  EXPECT_EQ(Variant("2.0"), 2);
  EXPECT_EQ(Variant("true"), true);
  EXPECT_NE(Variant("a"), 0);
  EXPECT_FALSE(Variant("a") < 0);
  EXPECT_FALSE(Variant("a") > 0);
}

TEST(VariantTest, NothingEqualsNothingZeroAndTheEmptyText) {
  EXPECT_EQ(Variant(), Variant());
  EXPECT_EQ(Variant(), 0);
  EXPECT_EQ(Variant(), "");
  EXPECT_EQ(Variant(), false);
  EXPECT_LT(Variant(), 1);
  EXPECT_LT(Variant(), "a");
}

} // namespace
} // namespace qx
