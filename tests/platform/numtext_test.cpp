// numtext_test.cpp -- number texts: Str, CStr, Format, Val, CDbl, toInt.
#include "platform/numtext.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace trelvane;

TEST(Str, IntegersPlainSingleSevenDigitsDoubleFifteen) {
  EXPECT_EQ(Str(int32_t{0}), "0");
  EXPECT_EQ(Str(int32_t{-42}), "-42");
  EXPECT_EQ(CStr(int32_t{73308}), "73308");
  EXPECT_EQ(Str(27.238941f), "27.23894");
  EXPECT_EQ(Str(30.0f), "30");
  EXPECT_EQ(CStr(0.95138407f), "0.9513841");
  EXPECT_EQ(Str(1.0e20f), "1e+20");
  EXPECT_EQ(Str(0.1f), "0.1");
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

// Masks: the integer part shows at least one digit, half away from zero
// on the exact value (2.675 is stored just below it), optional zeros and
// a point with nothing behind it dropped.
TEST(Format, MaskRulesAndRounding) {
  const struct { double x; const char *mask, *want; } rows[] = {
      {0.5, "#.#", "0.5"},      {1, "#.#", "1"},          {0, "#.###", "0"},          {2, "0.0", "2.0"},
      {123, "#", "123"},        {27.238941, "###.###", "27.239"}, {1234.5, "#.#", "1234.5"},
      {0.333333, "#.###", "0.333"}, {0.5, "#", "1"},      {2.5, "#", "3"},            {-2.5, "#", "-3"},
      {0.125, "#.##", "0.13"},  {2.675, "#.##", "2.67"},  {9.9996, "#.###", "10"},    {-0.0001, "#.###", "0"}};
  for (const auto& r : rows) EXPECT_EQ(Format(r.x, r.mask), r.want) << r.x << " " << r.mask;
}

// The longest leading number: blanks, sign, fraction, exponent, &h &b &o; 0 where none.
TEST(Val, LongestLeadingNumber) {
  const std::pair<const char*, double> rows[] = {
      {"30", 30},   {"  12abc", 12}, {"max", 0},    {"", 0},      {"-.5", -0.5},    {"1e3x", 1000},
      {"1e", 1},    {"2.5e-1", 0.25}, {".", 0},     {"+7", 7},    {"&hFF", 255},    {"&b101", 5},
      {"&o17", 15}, {"NaN", 0}};
  for (const auto& [text, want] : rows) EXPECT_EQ(Val(text), want) << text;
  EXPECT_TRUE(std::isinf(Val("1e999")));
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

TEST(ToInt, TruncatesTowardsZeroGuardsNonFiniteAndComparesWithoutCase) {
  EXPECT_EQ(toInt(2.9), 2);
  EXPECT_EQ(toInt(-2.9), -2);
  for (double x : {NAN, INFINITY, -INFINITY}) EXPECT_EQ(toInt(x), 0) << x;
  EXPECT_EQ(toInt(1e12), std::numeric_limits<int32_t>::max());
  // letter case
  EXPECT_TRUE(equalsNoCase("MAX", "max"));
  EXPECT_FALSE(equalsNoCase("max ", "max"));
  EXPECT_TRUE(startsWithNoCase("trelvane COMPARISON of x", "Trelvane comparison"));
  EXPECT_FALSE(startsWithNoCase("Trelvane", "Trelvane comparison"));
}

#include <cstdio>
#include <cstring>
#include <vector>

namespace {

// The text printf gives a Single with %.7g: what Str and CStr must write.
std::string printfSevenDigits(float v) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.7g", static_cast<double>(v));
  return buf;
}

}  // namespace

TEST(StrSingle, SameBytesAsPrintfOverASweepOfEverySingle) {
  // Every 1999th bit pattern covers each binade, subnormals included;
  // not-a-numbers and infinities have texts of their own.
  int checked = 0;
  for (uint64_t bits = 0; bits <= 0xFFFFFFFFu; bits += 1999) {
    uint32_t b = static_cast<uint32_t>(bits);
    float v;
    std::memcpy(&v, &b, sizeof v);
    if (!std::isfinite(v)) continue;
    ASSERT_EQ(Str(v), printfSevenDigits(v)) << "bits " << b;
    ++checked;
  }
  EXPECT_GT(checked, 2000000);
}

TEST(StrSingle, SameBytesAsPrintfAtRoundingAndNotationEdges) {
  std::vector<float> values = {0.0f, -0.0f, 1e7f, -1e7f, 9999999.0f, 1e-4f, 9.9999e-5f, 0.5f, 0.1f,
                               1.0f / 3.0f, 2.0f / 3.0f, 27.238941f, 0x1p23f, 0x1p24f, 0x1p33f,
                               8589934592.0f, 1e-45f, 3.4028235e38f, 999999.94f, 9999999.5f};
  // every Single where they turn whole, around the change to the exponent
  // form, and the neighbours of powers of ten, where 7 digits carry
  for (float x = 8388600.0f; x <= 8388620.0f; x = std::nextafter(x, INFINITY)) values.push_back(x);
  for (float x = 9999990.0f; x <= 10000010.0f; x = std::nextafter(x, INFINITY)) values.push_back(x);
  for (int p = -40; p <= 38; ++p) {
    float t = std::pow(10.0f, static_cast<float>(p));
    float lo = t, hi = t;
    for (int k = 0; k < 40; ++k) {
      lo = std::nextafter(lo, 0.0f);
      hi = std::nextafter(hi, INFINITY);
      values.push_back(lo);
      values.push_back(hi);
    }
  }
  // window scores: sums of quarters, tenths and thirds as a scan makes them
  for (float step : {0.25f, 0.1f, 1.0f / 3.0f, 0.95138407f, -0.3f}) {
    float s = 0.0f;
    for (int k = 0; k < 3000; ++k) values.push_back(s = s + step);
  }
  for (float v : values) {
    EXPECT_EQ(Str(v), printfSevenDigits(v)) << std::hexfloat << v;
    EXPECT_EQ(CStr(v), Str(v));
    EXPECT_EQ(Str(-v), printfSevenDigits(-v)) << std::hexfloat << -v;
  }
}
