// numtext_test.cpp -- number texts: Str, CStr, Format, Val, CDbl, toInt.
#include "platform/numtext.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace trelvane;

TEST(Str, IntegersArePlainDigits) {
  EXPECT_EQ(Str(int32_t{0}), "0");
  EXPECT_EQ(Str(int32_t{-42}), "-42");
  EXPECT_EQ(CStr(int32_t{73308}), "73308");
}

TEST(Str, SingleHasSevenSignificantDigits) {
  EXPECT_EQ(Str(27.238941f), "27.23894");
  EXPECT_EQ(Str(30.0f), "30");
  EXPECT_EQ(CStr(0.95138407f), "0.9513841");
  EXPECT_EQ(Str(1.0e20f), "1e+20");
  EXPECT_EQ(Str(0.1f), "0.1");
}

TEST(Str, DoubleHasFifteenSignificantDigits) {
  EXPECT_EQ(CStr(22068.0 / 73308.0), "0.30103126534621");
  EXPECT_EQ(CStr(0.9), "0.9");
  EXPECT_EQ(Str(2.0), "2");
}

TEST(Str, NonFiniteValues) {
  double nan = std::numeric_limits<double>::quiet_NaN();
  double inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(Str(nan), "NaN");
  EXPECT_EQ(CStr(static_cast<float>(-nan)), "NaN");
  EXPECT_EQ(CStr(inf), "Infinity");
  EXPECT_EQ(CStr(static_cast<float>(-inf)), "-Infinity");
  EXPECT_EQ(Format(nan, "###.###"), "NaN");
  EXPECT_EQ(Format(-inf, "#.#"), "-Infinity");
}

TEST(Format, MaskRules) {
  EXPECT_EQ(Format(0.5, "#.#"), "0.5");
  EXPECT_EQ(Format(1, "#.#"), "1");
  EXPECT_EQ(Format(0, "#.###"), "0");
  EXPECT_EQ(Format(2, "0.0"), "2.0");
  EXPECT_EQ(Format(123, "#"), "123");
  EXPECT_EQ(Format(27.238941, "###.###"), "27.239");
  EXPECT_EQ(Format(1234.5, "#.#"), "1234.5");
  EXPECT_EQ(Format(0.333333, "#.###"), "0.333");
}

TEST(Format, RoundsHalfAwayFromZeroOnTheExactValue) {
  EXPECT_EQ(Format(0.5, "#"), "1");
  EXPECT_EQ(Format(2.5, "#"), "3");
  EXPECT_EQ(Format(-2.5, "#"), "-3");
  EXPECT_EQ(Format(0.125, "#.##"), "0.13");
  // 2.675 is stored just below 2.675, so it rounds down.
  EXPECT_EQ(Format(2.675, "#.##"), "2.67");
  EXPECT_EQ(Format(9.9996, "#.###"), "10");
  EXPECT_EQ(Format(-0.0001, "#.###"), "0");
}

TEST(Val, LongestLeadingNumber) {
  EXPECT_EQ(Val("30"), 30);
  EXPECT_EQ(Val("  12abc"), 12);
  EXPECT_EQ(Val("max"), 0);
  EXPECT_EQ(Val(""), 0);
  EXPECT_EQ(Val("-.5"), -0.5);
  EXPECT_EQ(Val("1e3x"), 1000);
  EXPECT_EQ(Val("1e"), 1);
  EXPECT_EQ(Val("2.5e-1"), 0.25);
  EXPECT_EQ(Val("."), 0);
  EXPECT_EQ(Val("+7"), 7);
  EXPECT_EQ(Val("&hFF"), 255);
  EXPECT_EQ(Val("&b101"), 5);
  EXPECT_EQ(Val("&o17"), 15);
  EXPECT_TRUE(std::isinf(Val("1e999")));
  EXPECT_EQ(Val("NaN"), 0);
}

TEST(CDbl, ReadsBackEveryCStrText) {
  EXPECT_TRUE(std::isnan(CDbl("NaN")));
  EXPECT_EQ(CDbl("Infinity"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(CDbl("-Infinity"), -std::numeric_limits<double>::infinity());
  for (float v : {27.238941f, 0.95138407f, 1e-30f, 3.4e38f, -7.25f}) {
    // Seven digits read back within Single precision, not always to the same bits.
    EXPECT_NEAR(CDbl(CStr(v)), v, std::fabs(v) * 1e-6) << CStr(v);
  }
  for (double v : {0.30103126534621, 1.0 / 3.0, 123456.789}) {
    EXPECT_NEAR(CDbl(CStr(v)), v, std::fabs(v) * 1e-14);
  }
  EXPECT_EQ(CDbl("12.5 apples"), 12.5);
}

TEST(ToInt, TruncatesTowardsZeroAndGuardsNonFinite) {
  EXPECT_EQ(toInt(2.9), 2);
  EXPECT_EQ(toInt(-2.9), -2);
  EXPECT_EQ(toInt(std::numeric_limits<double>::quiet_NaN()), 0);
  EXPECT_EQ(toInt(std::numeric_limits<double>::infinity()), 0);
  EXPECT_EQ(toInt(-std::numeric_limits<double>::infinity()), 0);
  EXPECT_EQ(toInt(1e12), std::numeric_limits<int32_t>::max());
}

TEST(NoCase, ComparesAsciiLettersWithoutCase) {
  EXPECT_TRUE(equalsNoCase("MAX", "max"));
  EXPECT_FALSE(equalsNoCase("max ", "max"));
  EXPECT_TRUE(startsWithNoCase("trelvane COMPARISON of x", "Trelvane comparison"));
  EXPECT_FALSE(startsWithNoCase("Trelvane", "Trelvane comparison"));
}
