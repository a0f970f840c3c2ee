// httpheaders_test.cpp -- HTTPHeaders: order, duplicates, lookup and the parse of a received header.
#include "http/httpheaders.h"

#include <gtest/gtest.h>

using namespace trelvane::http;

TEST(HTTPHeaders, AddTrimsAndKeepsDuplicatesInOrder) {
  HTTPHeaders h;
  EXPECT_EQ(h.UBound(), 0);
  EXPECT_EQ(h.Data(), "");
  h.Add("  Accept ", " text/html\t");
  h.Add("X-A", "1");
  h.Add("x-a", "2");
  EXPECT_EQ(h.UBound(), 3);
  EXPECT_EQ(h.Field[0], "");
  EXPECT_EQ(h.Data(), "Accept: text/html\r\nX-A: 1\r\nx-a: 2\r\n");
  EXPECT_EQ(h.Get("X-A"), "1");
  EXPECT_EQ(h.Get("ACCEPT"), "text/html");
}

TEST(HTTPHeaders, GetDoesNotTellMissingFromEmpty) {
  HTTPHeaders h;
  EXPECT_EQ(h.Get("Range"), "");
  h.Add("Range", "");
  EXPECT_EQ(h.UBound(), 1);
  EXPECT_EQ(h.Get("Range"), "");
  EXPECT_EQ(h.Data(), "Range: \r\n");
}

TEST(HTTPHeaders, RemoveTakesOnlyTheFirstOfAName) {
  HTTPHeaders h;
  h.Add("Range", "bytes=1-");
  h.Add("A", "a");
  h.Add("range", "bytes=2-");
  h.Remove("RANGE");
  EXPECT_EQ(h.Data(), "A: a\r\nrange: bytes=2-\r\n");
  h.Remove("missing");
  EXPECT_EQ(h.UBound(), 2);
  h.Clear();
  EXPECT_EQ(h.UBound(), 0);
  EXPECT_EQ(h.Value.size(), 1u);
}

TEST(HTTPHeaders, CombineAppendsEverythingUnchanged) {
  HTTPHeaders a, b;
  a.Add("A", "1");
  b.Add("A", "2");
  b.Add("B", "3");
  a.Combine(b);
  EXPECT_EQ(a.Data(), "A: 1\r\nA: 2\r\nB: 3\r\n");
  a.Combine(a);
  EXPECT_EQ(a.UBound(), 6);
  EXPECT_EQ(a.Field[6], "B");
}

TEST(HTTPHeaders, ParseSplitsNamesAndValues) {
  HTTPHeaders h;
  h.Parse("Location: http://example.com:8080/a\r\nNoColon\r\n\r\nContent-Type : text/html\r\nX:  v  ", "\r\n");
  ASSERT_EQ(h.UBound(), 5);
  EXPECT_EQ(h.Get("Location"), "http://example.com:8080/a");  // the value keeps its colons
  EXPECT_EQ(h.Field[2], "NoColon");
  EXPECT_EQ(h.Value[2], "");
  EXPECT_EQ(h.Field[3], "");  // an empty line is an entry too
  EXPECT_EQ(h.Value[3], "");
  EXPECT_EQ(h.Field[4], "Content-Type ");  // the name is not trimmed
  EXPECT_EQ(h.Get("Content-Type"), "");
  EXPECT_EQ(h.Get("X"), "v");
}

TEST(HTTPHeaders, ParseCutsAtTheLineEndGiven) {
  HTTPHeaders h;
  h.Parse("A: 1\nB: 2\r", "\n");
  EXPECT_EQ(h.Get("A"), "1");
  EXPECT_EQ(h.Get("B"), "2");  // the stray CR goes with the trim
  HTTPHeaders none;
  none.Parse("", "\r\n");
  EXPECT_EQ(none.UBound(), 0);
}

// A continuation extends the entry before the last, and with one entry the
// unused element 0, where it vanishes. Kept on purpose.
TEST(HTTPHeaders, ContinuationKeepsItsOffByOne) {
  HTTPHeaders h;
  h.Parse("A: 1\r\nB: 2\r\n   more \r\n\tand more", "\r\n");
  ASSERT_EQ(h.UBound(), 2);
  EXPECT_EQ(h.Get("A"), "1 more and more");
  EXPECT_EQ(h.Get("B"), "2");

  HTTPHeaders one;
  one.Parse("A: 1\r\n more", "\r\n");
  EXPECT_EQ(one.UBound(), 1);
  EXPECT_EQ(one.Get("A"), "1");
  EXPECT_EQ(one.Data(), "A: 1\r\n");

  HTTPHeaders first;
  first.Parse(" lost\r\nA: 1", "\r\n");
  EXPECT_EQ(first.Data(), "A: 1\r\n");
}
