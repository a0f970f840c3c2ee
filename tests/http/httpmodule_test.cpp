// httpmodule_test.cpp -- the string primitives and HTTPModule's four helpers.
#include "http/httpmodule.h"
#include "http/httptext.h"

#include <gtest/gtest.h>

using namespace trelvane::http;

TEST(HTTPText, InStrCountsFromOneAndIgnoresCase) {
  EXPECT_EQ(InStr("abcABC", "BC"), 2);
  EXPECT_EQ(InStr("Content-LENGTH", "length"), 9);
  EXPECT_EQ(InStr("abc", "x"), 0);
  EXPECT_EQ(InStr("a", "abc"), 0);
  EXPECT_EQ(InStr("abc", ""), 0);
  EXPECT_EQ(InStr("x\r\n\r\ny", "\r\n\r\n"), 2);
}

TEST(HTTPText, FieldsAreCutAtEverySeparator) {
  EXPECT_EQ(CountFields("a;b;;c", ";"), 4);
  EXPECT_EQ(NthField("a;b;;c", ";", 3), "");
  EXPECT_EQ(NthField("a;b;;c", ";", 4), "c");
  EXPECT_EQ(NthField("a;b;;c", ";", 5), "");
  EXPECT_EQ(NthField("a;b", ";", 0), "");
  EXPECT_EQ(CountFields("abc", ";"), 1);
  EXPECT_EQ(CountFields("", ";"), 0);
  EXPECT_EQ(CountFields("a;", ";"), 2);
  EXPECT_EQ(NthField("L1\r\nL2\r\n", "\r\n", 2), "L2");
  EXPECT_EQ(NthField("aXbxc", "x", 3), "c");  // separators ignore case too
}

TEST(HTTPText, MidLeftRightStayInsideTheText) {
  EXPECT_EQ(Mid("abcdef", 3), "cdef");
  EXPECT_EQ(Mid("abcdef", 3, 2), "cd");
  EXPECT_EQ(Mid("abc", 5), "");
  EXPECT_EQ(Mid("abc", 0, 2), "ab");
  EXPECT_EQ(Mid("abc", 2, -1), "");
  EXPECT_EQ(Mid("abc", 2, 99), "bc");
  EXPECT_EQ(Left("abc", 5), "abc");
  EXPECT_EQ(Left("abc", -1), "");
  EXPECT_EQ(Right("abc", 2), "bc");
  EXPECT_EQ(Right("abc", 9), "abc");
  EXPECT_EQ(Right("abc", 0), "");
}

TEST(HTTPText, TrimReplaceAndHex) {
  EXPECT_EQ(Trim(" \t a b \r\n"), "a b");
  EXPECT_EQ(LTrim("  a "), "a ");
  EXPECT_EQ(RTrim("  a "), "  a");
  EXPECT_EQ(Trim("   "), "");
  EXPECT_EQ(Replace("www.WWW.x", "WWW", ""), ".WWW.x");
  EXPECT_EQ(ReplaceAll("aXax", "x", "-"), "a-a-");
  EXPECT_EQ(ReplaceAll("\r\r", "\r", "\r\n"), "\r\n\r\n");
  EXPECT_EQ(ReplaceAll("abc", "", "-"), "abc");
  EXPECT_EQ(Hex(0), "0");
  EXPECT_EQ(Hex(10), "A");
  EXPECT_EQ(Hex(255), "FF");
  EXPECT_EQ(Hex(0x1F40), "1F40");
}

TEST(HTTPModule, GetBeforeAndGetAfterGiveEmptyWithoutTheSeparator) {
  EXPECT_EQ(GetAfter("a=b=c", "="), "b=c");
  EXPECT_EQ(GetBefore("a=b=c", "="), "a");
  EXPECT_EQ(GetAfter("secure", "="), "");
  EXPECT_EQ(GetBefore("secure", "="), "");
  EXPECT_EQ(GetAfter("x=", "="), "");
  EXPECT_EQ(GetBefore("=x", "="), "");
  EXPECT_EQ(GetAfter("HTTP/1.1 200 OK\r\nA: 1", "\r\n"), "A: 1");
}

TEST(HTTPModule, UnquoteNeedsAQuoteAtBothEnds) {
  EXPECT_EQ(Unquote("\"abc\""), "abc");
  EXPECT_EQ(Unquote("\"\""), "");
  EXPECT_EQ(Unquote("\""), "");
  EXPECT_EQ(Unquote("\"abc"), "\"abc");
  EXPECT_EQ(Unquote("abc\""), "abc\"");
  EXPECT_EQ(Unquote("a\"b\"c"), "a\"b\"c");
  EXPECT_EQ(Unquote(""), "");
}

// The inverted reading is kept: any field reading as a number other than 0
// makes the answer false.
TEST(HTTPModule, IsIPKeepsItsInvertedReading) {
  EXPECT_FALSE(IsIP("192.168.0.1"));
  EXPECT_FALSE(IsIP("127.0.0.1"));
  EXPECT_TRUE(IsIP("0.0.0.0"));
  EXPECT_TRUE(IsIP("a.b.c.d"));
  EXPECT_TRUE(IsIP("www.example.co.uk"));
  EXPECT_TRUE(IsIP("00.x.0.y"));
  EXPECT_FALSE(IsIP("a.b.c.1"));
  EXPECT_FALSE(IsIP("a.b.c.2x"));  // Val reads the leading 2
  EXPECT_FALSE(IsIP("a.b.c"));
  EXPECT_FALSE(IsIP("a.b.c.d.e"));
  EXPECT_FALSE(IsIP(""));
  EXPECT_TRUE(IsIP("..."));
}
