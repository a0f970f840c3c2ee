// httpmodule_test.cpp -- the string primitives and HTTPModule's four helpers.
#include "http/httpmodule.h"
#include "http/httptext.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

using namespace trelvane::http;

using Texts = std::pair<std::string, std::string>;

TEST(HTTPText, InStrCountsFromOneAndIgnoresCase) {
  const std::pair<Texts, int> rows[] = {{{"abcABC", "BC"}, 2}, {{"Content-LENGTH", "length"}, 9}, {{"abc", "x"}, 0},
                                        {{"a", "abc"}, 0},     {{"abc", ""}, 0},  {{"x\r\n\r\ny", "\r\n\r\n"}, 2}};
  for (const auto& [in, want] : rows) EXPECT_EQ(InStr(in.first, in.second), want) << in.first << "/" << in.second;
}

// Fields are cut at every separator, which ignores case too.
TEST(HTTPText, FieldsMidLeftRightStayInsideTheText) {
  const std::pair<const char*, int> counts[] = {{"a;b;;c", 4}, {"abc", 1}, {"", 0}, {"a;", 2}};
  for (const auto& [text, n] : counts) EXPECT_EQ(CountFields(text, ";"), n) << text;
  const std::pair<int, std::string> fields[] = {{3, ""}, {4, "c"}, {5, ""}, {0, ""}};
  for (const auto& [n, want] : fields) EXPECT_EQ(NthField("a;b;;c", ";", n), want) << n;
  EXPECT_EQ(NthField("L1\r\nL2\r\n", "\r\n", 2), "L2");
  EXPECT_EQ(NthField("aXbxc", "x", 3), "c");
  const std::pair<std::string, std::string> cuts[] = {
      {Mid("abcdef", 3), "cdef"}, {Mid("abcdef", 3, 2), "cd"}, {Mid("abc", 5), ""},   {Mid("abc", 0, 2), "ab"},
      {Mid("abc", 2, -1), ""},    {Mid("abc", 2, 99), "bc"},   {Left("abc", 5), "abc"}, {Left("abc", -1), ""},
      {Right("abc", 2), "bc"},    {Right("abc", 9), "abc"},    {Right("abc", 0), ""}};
  for (const auto& [got, want] : cuts) EXPECT_EQ(got, want);
}

TEST(HTTPText, TrimReplaceAndHex) {
  const std::pair<std::string, std::string> rows[] = {
      {Trim(" \t a b \r\n"), "a b"}, {LTrim("  a "), "a "}, {RTrim("  a "), "  a"}, {Trim("   "), ""},
      {Replace("www.WWW.x", "WWW", ""), ".WWW.x"}, {ReplaceAll("aXax", "x", "-"), "a-a-"},
      {ReplaceAll("\r\r", "\r", "\r\n"), "\r\n\r\n"}, {ReplaceAll("abc", "", "-"), "abc"},
      {Hex(0) + " " + Hex(10) + " " + Hex(255) + " " + Hex(0x1F40), "0 A FF 1F40"}};
  for (const auto& [got, want] : rows) EXPECT_EQ(got, want);
}

TEST(HTTPModule, GetBeforeGetAfterAndUnquote) {
  const std::pair<std::string, std::string> rows[] = {
      {GetAfter("a=b=c", "="), "b=c"}, {GetBefore("a=b=c", "="), "a"}, {GetAfter("secure", "="), ""},
      {GetBefore("secure", "="), ""},  {GetAfter("x=", "="), ""},      {GetBefore("=x", "="), ""},
      {GetAfter("HTTP/1.1 200 OK\r\nA: 1", "\r\n"), "A: 1"},
      // a quote is needed at both ends
      {Unquote("\"abc\""), "abc"}, {Unquote("\"\""), ""}, {Unquote("\""), ""}, {Unquote("\"abc"), "\"abc"},
      {Unquote("abc\""), "abc\""}, {Unquote("a\"b\"c"), "a\"b\"c"}, {Unquote(""), ""}};
  for (const auto& [got, want] : rows) EXPECT_EQ(got, want);
}

// The inverted reading is kept: any field reading as a number other than 0
// makes the answer false (Val reads the 2 of "2x").
TEST(HTTPModule, IsIPKeepsItsInvertedReading) {
  for (const char* text : {"0.0.0.0", "a.b.c.d", "www.example.co.uk", "00.x.0.y", "..."})
    EXPECT_TRUE(IsIP(text)) << text;
  for (const char* text : {"192.168.0.1", "127.0.0.1", "a.b.c.1", "a.b.c.2x", "a.b.c", "a.b.c.d.e", ""})
    EXPECT_FALSE(IsIP(text)) << text;
}
