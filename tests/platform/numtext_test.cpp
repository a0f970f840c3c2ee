// numtext_test.cpp -- number texts: Str, CStr, Format, Val, CDbl, toInt, and the letter-case tests.
#include "platform/numtext.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <vector>

using namespace trelvane;

TEST(Str, IntegersPlainSinglesSevenDigitsDoublesFifteenNonFiniteByName) {
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  const std::pair<std::string, std::string> rows[] = {
      {Str(int32_t{0}), "0"},           {Str(int32_t{-42}), "-42"},   {CStr(int32_t{73308}), "73308"},
      {Str(27.238941f), "27.23894"},    {Str(30.0f), "30"},           {CStr(0.95138407f), "0.9513841"},
      {Str(1.0e20f), "1e+20"},          {Str(0.1f), "0.1"},           {CStr(22068.0 / 73308.0), "0.30103126534621"},
      {CStr(0.9), "0.9"},               {Str(2.0), "2"},              {Str(int64_t{-5000000000}), "-5000000000"},
      {Str(nan), "NaN"},                {CStr(float(-nan)), "NaN"},   {CStr(inf), "Infinity"},
      {CStr(float(-inf)), "-Infinity"}, {Format(nan, "###.###"), "NaN"}, {Format(-inf, "#.#"), "-Infinity"}};
  for (const auto& [got, want] : rows) EXPECT_EQ(got, want);
}

// The integer part shows at least one digit, half away from zero on the
// exact value (2.675 is stored just below it), optional zeros and a point
// with nothing behind it dropped.
TEST(Format, MaskRulesAndRounding) {
  const struct { double x; const char *mask, *want; } rows[] = {
      {0.5, "#.#", "0.5"},      {1, "#.#", "1"},          {0, "#.###", "0"},          {2, "0.0", "2.0"},
      {123, "#", "123"},        {27.238941, "###.###", "27.239"}, {1234.5, "#.#", "1234.5"},
      {0.333333, "#.###", "0.333"}, {0.5, "#", "1"},      {2.5, "#", "3"},            {-2.5, "#", "-3"},
      {0.125, "#.##", "0.13"},  {2.675, "#.##", "2.67"},  {9.9996, "#.###", "10"},    {-0.0001, "#.###", "0"}};
  for (const auto& r : rows) EXPECT_EQ(Format(r.x, r.mask), r.want) << r.x << " " << r.mask;
}

// The longest leading number: blanks, sign, fraction, exponent, &h &b &o; 0
// where none. CDbl reads the same and also every text CStr writes.
TEST(Val, LongestLeadingNumberAndCDblReadsBackCStr) {
  const std::pair<const char*, double> rows[] = {
      {"30", 30},   {"  12abc", 12}, {"max", 0},    {"", 0},      {"-.5", -0.5},    {"1e3x", 1000},
      {"1e", 1},    {"2.5e-1", 0.25}, {".", 0},     {"+7", 7},    {"&hFF", 255},    {"&b101", 5},
      {"&o17", 15}, {"NaN", 0},       {"\t4", 4},   {"1.5.5", 1.5}, {"--3", 0},    {"&h", 0}};
  for (const auto& [text, want] : rows) {
    EXPECT_EQ(Val(text), want) << text;
    if (text != std::string("NaN")) {
      EXPECT_EQ(CDbl(text), want) << text;
    }
  }
  EXPECT_TRUE(std::isinf(Val("1e999")));
  EXPECT_TRUE(std::isnan(CDbl("NaN")));
  EXPECT_EQ(CDbl("Infinity"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(CDbl("-Infinity"), -std::numeric_limits<double>::infinity());
  for (float v : {27.238941f, 0.95138407f, 1e-30f, 3.4e38f, -7.25f})  // seven digits: within Single precision
    EXPECT_NEAR(CDbl(CStr(v)), v, std::fabs(v) * 1e-6) << CStr(v);
  for (double v : {0.30103126534621, 1.0 / 3.0, 123456.789}) EXPECT_NEAR(CDbl(CStr(v)), v, std::fabs(v) * 1e-14);
}

TEST(ToInt, TruncatesTowardsZeroGuardsNonFiniteAndComparesWithoutCase) {
  EXPECT_EQ(toInt(2.9), 2);
  EXPECT_EQ(toInt(-2.9), -2);
  for (double x : {NAN, INFINITY, -INFINITY}) EXPECT_EQ(toInt(x) + toInt64(x), 0) << x;
  EXPECT_EQ(toInt(1e12), std::numeric_limits<int32_t>::max());
  EXPECT_EQ(toInt(-1e12), std::numeric_limits<int32_t>::min());
  EXPECT_EQ(toInt64(-3e9), -3000000000);
  EXPECT_TRUE(equalsNoCase("MAX", "max"));
  EXPECT_FALSE(equalsNoCase("max ", "max"));
  EXPECT_TRUE(startsWithNoCase("trelvane COMPARISON of x", "Trelvane comparison"));
  EXPECT_FALSE(startsWithNoCase("Trelvane", "Trelvane comparison"));
}

// The text printf gives a Single with %.7g: what Str and CStr must write,
// over a sweep of every binade (subnormals included), around the change to
// the exponent form, the neighbours of powers of ten, and sums as a scan makes them.
TEST(StrSingle, SameBytesAsPrintf) {
  std::vector<float> values = {0.0f, -0.0f, 1e7f, 9999999.0f, 9.9999e-5f, 1.0f / 3.0f, 0x1p24f, 8589934592.0f,
                               1e-45f, 3.4028235e38f, 999999.94f, 9999999.5f};
  for (uint64_t bits = 0; bits <= 0xFFFFFFFFu; bits += 1999) {
    const uint32_t b = static_cast<uint32_t>(bits);
    float v;
    std::memcpy(&v, &b, sizeof v);
    if (std::isfinite(v)) values.push_back(v);
  }
  for (float x = 8388600.0f; x <= 8388620.0f; x = std::nextafter(x, INFINITY)) values.push_back(x);
  for (float x = 9999990.0f; x <= 10000010.0f; x = std::nextafter(x, INFINITY)) values.push_back(x);
  for (int p = -40; p <= 38; ++p)
    for (float lo = std::pow(10.0f, float(p)), hi = lo, k = 0; k < 40; ++k)
      values.push_back(lo = std::nextafter(lo, 0.0f)), values.push_back(hi = std::nextafter(hi, INFINITY));
  for (float step : {0.25f, 0.1f, 1.0f / 3.0f, 0.95138407f})
    for (float s = 0.0f, k = 0; k < 3000; ++k) values.push_back(s = s + step);
  char buf[64];
  for (float v : values)
    for (float x : {v, -v}) {
      std::snprintf(buf, sizeof buf, "%.7g", static_cast<double>(x));
      ASSERT_EQ(Str(x), buf) << std::hexfloat << x;
      ASSERT_EQ(CStr(x), buf) << std::hexfloat << x;
    }
}
