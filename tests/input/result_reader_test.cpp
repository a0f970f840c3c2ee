// result_reader_test.cpp -- litprevious on hand-made and stored result files.
#include "input/result_reader.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "platform/numtext.h"
#include "temp_files.h"

using namespace trelvane;
using trelvane::testing::TempDir;

namespace {

const std::string kHead =
    "Trelvane comparison\nWindow size=30\nMax=28\nMean=21.5\nSD=2.25\nMean H0=17.75\nSD H0=0.5\n"
    "Max H0=20\nSD low=1.5\nSD up=3.5\nBases=1000\nBases1=400\n0\t0\nLongest sequence\nN\t0\t0\n";
const std::string kHeadValues = "30 28 21.5 2.25 17.75 0.5 20 1.5 3.5 1000 400";

// The properties that a head sets, in the order of kHeadValues.
std::string head(const ComparisonState& st) {
  return Str(st.windgraph) + " " + Str(st.maxgraph) + " " + Str(st.meangraph) + " " +
         Str(st.sdgraph) + " " + Str(st.omeangraph) + " " + Str(st.osdgraph) + " " +
         Str(st.omaxgraph) + " " + Str(st.sumu2bas) + " " + Str(st.sumu2up) + " " +
         Str(st.nbbases) + " " + Str(st.nbbases1);
}
std::string bytes(const MemoryBlock& m, std::ptrdiff_t from, std::ptrdiff_t to) {
  std::string out;
  for (std::ptrdiff_t i = from; i < to; ++i) out.push_back(static_cast<char>(m.get(i)));
  return out;
}
std::string profile(std::size_t n) {
  std::string out;
  for (std::size_t i = 0; i < n; ++i) out.push_back(static_cast<char>(200 + i % 40));
  return out;
}

class ResultReader : public ::testing::Test {
 protected:
  ResultReader() {
    st.open();
    st.m2 = MemoryBlock(20);  // the profile of an earlier run
    st.m2.set(0, 77);
  }
  void read(const std::string& text) {
    litprevious(st, form, dir.write("run.txt", text), [this] { ++graphs, messageAtGraph = form.Message; });
  }

  TempDir dir;
  ComparisonState st;
  Form form;
  int graphs = 0;
  std::string messageAtGraph;
};

TEST_F(ResultReader, ReadsTheHeadAndTheProfileAndDraws) {
  read(kHead + "#\n" + profile(1000));
  EXPECT_EQ(head(st), kHeadValues);
  ASSERT_EQ(st.m2.size(), 1410);
  EXPECT_EQ(bytes(st.m2, 0, 1410), profile(1000) + std::string(410, '\0'));
  EXPECT_EQ(graphs, 1);
  EXPECT_EQ(messageAtGraph, "Plot the graph...");
  EXPECT_EQ(form.Message, "End...");
}

TEST_F(ResultReader, HeadKeysAndValues) {
  const std::pair<std::string, std::string> rows[] = {
      // any order and case; later values win; missing keys leave their property
      {"TRELVANE COMPARISON\nbases1=400\nBASES=1000\nsd UP=3.5\nSD LOW=1.5\nmax h0=20\nsd h0=0.5\n"
       "mean h0=17.75\nsd=2.25\nmean=21.5\nmax=28\nwindow SIZE=30\n#\n", kHeadValues},
      {"Trelvane comparison\nWindow size=30\nMax=5\nWindow size=12\nMax=6\n#\n", "12 6 0 9 0 0 0 0 0 0 77"},
      // Max= and Max H0= go through Val, which reads no NaN or Infinity; the others through CDbl
      {"Trelvane comparison\nMax=NaN\nMax H0=Infinity\nMean=NaN\nMean H0=-Infinity\nSD=Infinity\n"
       "SD H0=1e-3\nSD low=abc\nSD up= 2.5x\nWindow size=29.9\nBases=-0.7\nBases1=&h10\n#\n",
       "29 0 NaN Infinity -Infinity 0.001 0 0 2.5 0 16"},
      {"Trelvane comparison\nWindow si", "0 0 0 9 0 0 0 0 0 0 77"},  // truncated
      {std::string("Trelvane comparison\nWindow size=\x01\xff\nBases=\x80\n#\n\0\0\x05", 48),
       "0 0 0 9 0 0 0 0 0 0 77"},
  };
  for (const auto& [text, want] : rows) {
    ComparisonState fresh;
    fresh.open();
    fresh.sdgraph = 9.0f, fresh.nbbases1 = 77;
    litprevious(fresh, form, dir.write("run.txt", text), [] {});
    EXPECT_EQ(head(fresh), want) << text;
  }
}

// The profile starts right behind the "#" line, whatever its first byte; a
// short profile leaves the fill of code 1, which follows the count of bases.
TEST_F(ResultReader, ProfileBytesAndTheirFill) {
  const struct {
    const char* name;
    std::string text;
    std::ptrdiff_t size, from, to;
    std::string want;
  } rows[] = {
      {"short profile", kHead + "#\n" + profile(300), 1410, 299, 1410,
       profile(300).substr(299) + std::string(100, 1) + std::string(1010, 0)},
      {"fill to 800", "Trelvane comparison\nBases=100000\n#\nA", 100410, 998, 1001, {1, 1, 0}},
      {"count 0", "Trelvane comparison\nBases=0\n#\nAB", 410, 0, 401, std::string(400, 1) + '\0'},
      {"extra bytes unread", "Trelvane comparison\nBases=5\n#\n" + std::string(50, 7), 415, 4, 6, "\7\1"},
      {"garbage", std::string("Trelvane comparison\nBases=\x80\n#\n\0\0\x05", 33), 410, 0, 1, "\1"},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.name);
    read(r.text);
    ASSERT_EQ(st.m2.size(), r.size);
    EXPECT_EQ(bytes(st.m2, r.from, r.to), r.want);
  }
  for (const std::string end : {"\n", "\r\n"})
    for (const char first : {'\n', '\r'}) {
      read("Trelvane comparison\r\nBases=4" + end + "#" + end + first + "\r\n\xC8");
      ASSERT_EQ(st.m2.size(), 414);
      const std::string want{first, '\r', '\n', '\xC8', '\1'};
      EXPECT_EQ(bytes(st.m2, 0, 5), want) << end.size() << int(first);
    }
}

TEST_F(ResultReader, NoProfileSectionKeepsTheEarlierProfile) {
  for (const std::string tail : {"\n", "#\n", "#"}) {
    read(kHead + tail);
    EXPECT_EQ(head(st), kHeadValues);
    EXPECT_EQ(bytes(st.m2, 0, 21), '\x4d' + std::string(20, 0));
  }
  EXPECT_EQ(graphs, 3);
}

TEST_F(ResultReader, CountsOutOfRangeRefuseTheFile) {
  st.windgraph = 3;
  for (const std::string bases : {"-1", "99999999999", "2147483238"}) {
    read("Trelvane comparison\nWindow size=30\nBases=" + bases + "\n#\nAB");
    EXPECT_EQ(form.Message, "Cannot read run.txt: Bases=" + bases + " is no count of bases");
    EXPECT_EQ(st.windgraph, 3);
    EXPECT_EQ(st.m2.size(), 20);
  }
  EXPECT_EQ(graphs, 0);
}

TEST_F(ResultReader, OtherFirstLineOnlyDraws) {
  read("Trelvane comparisoN of something\nWindow size=30\n#\nAB");
  EXPECT_EQ(st.windgraph, 30);  // only the first 19 characters count
  read("Trelvane compariso\nWindow size=12\n#\nAB");
  EXPECT_EQ(st.windgraph, 30);
  EXPECT_EQ(st.m2.size(), 410);
  EXPECT_EQ(graphs, 2);
  EXPECT_EQ(form.Message, "End...");
}

TEST_F(ResultReader, NilOrUnreadableFileIsNotRead) {
  litprevious(st, form, std::nullopt, [this] { ++graphs; });
  EXPECT_EQ(form.Message, "Message");
  litprevious(st, form, (dir.path() / "gone.txt").string(), [this] { ++graphs; });
  EXPECT_EQ(form.Message, "Cannot read gone.txt: the file does not exist");
  EXPECT_EQ(graphs, 0);
}

TEST_F(ResultReader, StoredResults) {
  litprevious(st, form, TRELVANE_TEST_DATA "/golden/S2.result", [] {});
  EXPECT_EQ(head(st), "100 17 6.410326 3.011521 NaN NaN 0 2.893305 3.136421 48502 0");
  std::ifstream in(TRELVANE_TEST_DATA "/golden/S2.result", std::ios::binary);
  std::ostringstream file;
  file << in.rdbuf();
  const std::string profileBytes = file.str().substr(file.str().find("\n#\n") + 3);
  ASSERT_EQ(profileBytes.size(), 48502u);
  ASSERT_EQ(st.m2.size(), 48912);
  EXPECT_EQ(bytes(st.m2, 0, 48503), profileBytes + '\0');
  // fewer bytes than bases: the run's filled start of 2s, then the reader's own fill ends
  litprevious(st, form, TRELVANE_TEST_DATA "/golden/S1.result", [] {});
  EXPECT_EQ(st.windgraph, 30);
  EXPECT_EQ(st.nbbases, 73308);
  EXPECT_EQ(st.nbbases1, 3919);
  ASSERT_EQ(st.m2.size(), 73718);
  EXPECT_EQ(bytes(st.m2, 0, 802), std::string(800, 2) + std::string(2, 0));
}

}  // namespace
