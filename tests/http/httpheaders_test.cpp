// httpheaders_test.cpp -- HTTPHeaders: order, duplicates, lookup and the parse of a received header.
#include "http/httpheaders.h"

#include <gtest/gtest.h>

using namespace trelvane::http;

TEST(HTTPHeaders, AddTrimsKeepsDuplicatesInOrderAndRemoveTakesTheFirst) {
  HTTPHeaders h;
  EXPECT_EQ(h.UBound(), 0);
  h.Add("  Range ", " bytes=1-\t");
  h.Add("X-A", "");
  h.Add("range", "bytes=2-");
  EXPECT_EQ(h.Field[0], "");  // entries count from 1
  EXPECT_EQ(h.Data(), "Range: bytes=1-\r\nX-A: \r\nrange: bytes=2-\r\n");
  EXPECT_EQ(h.Get("RANGE"), "bytes=1-");
  EXPECT_EQ(h.Get("X-A") + h.Get("missing"), "");  // an empty value reads as a missing one
  h.Remove("RANGE");
  h.Remove("missing");
  EXPECT_EQ(h.Data(), "X-A: \r\nrange: bytes=2-\r\n");
  HTTPHeaders b;
  b.Add("B", "3");
  h.Combine(b);
  h.Combine(h);  // appends everything unchanged, itself included
  EXPECT_EQ(h.UBound(), 6);
  EXPECT_EQ(h.Field[6], "B");
  h.Clear();
  EXPECT_EQ(h.UBound(), 0);
  EXPECT_EQ(h.Value.size(), 1u);
}

TEST(HTTPHeaders, ParseSplitsNamesAndValuesAtTheLineEndGiven) {
  HTTPHeaders h;
  h.Parse("Location: http://example.com:8080/a\r\nNoColon\r\n\r\nContent-Type : text/html\r\nX:  v  ", "\r\n");
  ASSERT_EQ(h.UBound(), 5);
  EXPECT_EQ(h.Get("Location"), "http://example.com:8080/a");  // the value keeps its colons
  EXPECT_EQ(h.Field[2] + "|" + h.Value[2], "NoColon|");
  EXPECT_EQ(h.Field[3] + "|" + h.Value[3], "|");  // an empty line is an entry too
  EXPECT_EQ(h.Field[4], "Content-Type ");         // the name is not trimmed
  EXPECT_EQ(h.Get("Content-Type"), "");
  EXPECT_EQ(h.Get("X"), "v");
  HTTPHeaders lf;
  lf.Parse("A: 1\nB: 2\r", "\n");
  EXPECT_EQ(lf.Get("A") + lf.Get("B"), "12");  // the stray CR goes with the trim
  HTTPHeaders none;
  none.Parse("", "\r\n");
  EXPECT_EQ(none.UBound(), 0);
}

// A continuation extends the entry before the last, and with one entry the
// unused element 0, where it vanishes. Kept on purpose.
TEST(HTTPHeaders, ContinuationKeepsItsOffByOne) {
  const std::pair<const char*, const char*> rows[] = {
      {"A: 1\r\nB: 2\r\n   more \r\n\tand more", "A: 1 more and more\r\nB: 2\r\n"},
      {"A: 1\r\n more", "A: 1\r\n"},
      {" lost\r\nA: 1", "A: 1\r\n"}};
  for (const auto& [text, want] : rows) {
    HTTPHeaders h;
    h.Parse(text, "\r\n");
    EXPECT_EQ(h.Data(), want) << text;
  }
}
