// result_reader_test.cpp -- litprevious on hand-made and stored result files.
#include "input/result_reader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>

#include "temp_files.h"

using namespace trelvane;
using trelvane::testing::TempDir;

namespace {

const std::string kHead =
    "Trelvane comparison\n"
    "Window size=30\n"
    "Max=28\n"
    "Mean=21.5\n"
    "SD=2.25\n"
    "Mean H0=17.75\n"
    "SD H0=0.5\n"
    "Max H0=20\n"
    "SD low=1.5\n"
    "SD up=3.5\n"
    "Bases=1000\n"
    "Bases1=400\n"
    "0\t0\n"
    "Longest sequence\n"
    "N\t0\t0\n";

std::string profile(std::size_t n, unsigned char first = 200) {
  std::string bytes;
  for (std::size_t i = 0; i < n; ++i) bytes.push_back(static_cast<char>(first + i % 40));
  return bytes;
}

std::string readAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

class ResultReader : public ::testing::Test {
 protected:
  ResultReader() { st.open(); }

  void read(const std::string& bytes, const std::string& name = "run.txt") {
    litprevious(st, form, dir.write(name, bytes), [this] {
      ++graphs;
      messageAtGraph = form.Message;
    });
  }
  void expectHeadValues() {
    EXPECT_EQ(st.windgraph, 30);
    EXPECT_EQ(st.maxgraph, 28.0f);
    EXPECT_EQ(st.meangraph, 21.5f);
    EXPECT_EQ(st.sdgraph, 2.25f);
    EXPECT_EQ(st.omeangraph, 17.75f);
    EXPECT_EQ(st.osdgraph, 0.5f);
    EXPECT_EQ(st.omaxgraph, 20.0f);
    EXPECT_EQ(st.sumu2bas, 1.5f);
    EXPECT_EQ(st.sumu2up, 3.5f);
    EXPECT_EQ(st.nbbases, 1000);
    EXPECT_EQ(st.nbbases1, 400);
  }
  // A profile of an earlier run, to see whether it stays.
  void earlierProfile() {
    st.m2 = MemoryBlock(20);
    st.m2.set(0, 77);
  }

  TempDir dir;
  ComparisonState st;
  Form form;
  int graphs = 0;
  std::string messageAtGraph;
};

}  // namespace

TEST_F(ResultReader, ReadsTheHeadAndTheProfileAndDraws) {
  read(kHead + "#\n" + profile(1000));
  expectHeadValues();
  ASSERT_EQ(st.m2.size(), 1410);
  const std::string want = profile(1000);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(st.m2.data()), 1000), want);
  for (int i = 1000; i < 1410; ++i) ASSERT_EQ(st.m2.get(i), 0) << i;
  EXPECT_EQ(graphs, 1);
  EXPECT_EQ(messageAtGraph, "Plot the graph...");
  EXPECT_EQ(form.Message, "End...");
}

TEST_F(ResultReader, KeysInAnyOrderAndCase) {
  read("TRELVANE COMPARISON\n"
       "bases1=400\nBASES=1000\nsd UP=3.5\nSD LOW=1.5\nmax h0=20\nsd h0=0.5\nmean h0=17.75\n"
       "sd=2.25\nmean=21.5\nmax=28\nwindow SIZE=30\n#\n");
  expectHeadValues();
}

TEST_F(ResultReader, LaterValuesWinAndMissingKeysLeaveTheirProperty) {
  st.sdgraph = 9.0f;
  st.nbbases1 = 77;
  read("Trelvane comparison\nWindow size=30\nMax=5\nWindow size=12\nMax=6\n#\n");
  EXPECT_EQ(st.windgraph, 12);
  EXPECT_EQ(st.maxgraph, 6.0f);
  EXPECT_EQ(st.sdgraph, 9.0f);
  EXPECT_EQ(st.nbbases1, 77);
}

TEST_F(ResultReader, ValAndCDblAsPairedByKey) {
  // Max= and Max H0= go through Val, which reads no NaN or Infinity; the
  // other statistics go through CDbl.
  read("Trelvane comparison\nMax=NaN\nMax H0=Infinity\nMean=NaN\nMean H0=-Infinity\n"
       "SD=Infinity\nSD H0=1e-3\nSD low=abc\nSD up= 2.5x\nWindow size=29.9\nBases=-0.7\n"
       "Bases1=&h10\n#\n");
  EXPECT_EQ(st.maxgraph, 0.0f);
  EXPECT_EQ(st.omaxgraph, 0.0f);
  EXPECT_TRUE(std::isnan(st.meangraph));
  EXPECT_EQ(st.omeangraph, -INFINITY);
  EXPECT_EQ(st.sdgraph, INFINITY);
  EXPECT_EQ(st.osdgraph, 0.001f);
  EXPECT_EQ(st.sumu2bas, 0.0f);
  EXPECT_EQ(st.sumu2up, 2.5f);
  EXPECT_EQ(st.windgraph, 29);
  EXPECT_EQ(st.nbbases, 0);
  EXPECT_EQ(st.nbbases1, 16);
}

TEST_F(ResultReader, ShortProfileKeepsTheFillOfCodeOne) {
  read(kHead + "#\n" + profile(300));
  ASSERT_EQ(st.m2.size(), 1410);
  EXPECT_EQ(st.m2.get(299), static_cast<unsigned char>(profile(300)[299]));
  for (int i = 300; i < 400; ++i) ASSERT_EQ(st.m2.get(i), 1) << i;
  for (int i = 400; i < 1410; ++i) ASSERT_EQ(st.m2.get(i), 0) << i;
}

TEST_F(ResultReader, FillFollowsTheCount) {
  // Floor(100000 / 200 + 300) = 800: writes at 0 to 800, bytes 0 to 999.
  read("Trelvane comparison\nBases=100000\n#\nA");
  ASSERT_EQ(st.m2.size(), 100410);
  EXPECT_EQ(st.m2.get(999), 1);
  EXPECT_EQ(st.m2.get(1000), 0);
  // At a count of 0 the last write, at 200, leaves its zero at 400.
  read("Trelvane comparison\nBases=0\n#\nAB");
  ASSERT_EQ(st.m2.size(), 410);
  EXPECT_EQ(st.m2.get(0), 1);
  EXPECT_EQ(st.m2.get(399), 1);
  EXPECT_EQ(st.m2.get(400), 0);
}

TEST_F(ResultReader, ExtraProfileBytesAreNotRead) {
  read("Trelvane comparison\nBases=5\n#\n" + std::string(50, '\x07'));
  ASSERT_EQ(st.m2.size(), 415);
  EXPECT_EQ(st.m2.get(4), 7);
  EXPECT_EQ(st.m2.get(5), 1);
}

TEST_F(ResultReader, ProfileStartsRightBehindTheHashLineWhateverItsFirstByte) {
  for (const std::string& end : {std::string("\n"), std::string("\r\n")}) {
    for (char first : {'\n', '\r'}) {
      SCOPED_TRACE(std::to_string(end.size()) + " " + std::to_string(first));
      const std::string bytes = std::string(1, first) + "\r\n\xC8";
      read("Trelvane comparison\r\nBases=4" + end + "#" + end + bytes);
      ASSERT_EQ(st.m2.size(), 414);
      EXPECT_EQ(st.m2.get(0), static_cast<unsigned char>(first));
      EXPECT_EQ(st.m2.get(1), 13);
      EXPECT_EQ(st.m2.get(2), 10);
      EXPECT_EQ(st.m2.get(3), 200);
      EXPECT_EQ(st.m2.get(4), 1);
    }
  }
}

TEST_F(ResultReader, NoProfileSectionKeepsTheEarlierProfile) {
  for (const std::string& tail : {std::string("\n"), std::string("#\n"), std::string("#")}) {
    SCOPED_TRACE(tail);
    earlierProfile();
    graphs = 0;
    read(kHead + tail);
    expectHeadValues();
    EXPECT_EQ(st.m2.size(), 20);
    EXPECT_EQ(st.m2.get(0), 77);
    EXPECT_EQ(graphs, 1);
  }
}

TEST_F(ResultReader, TruncatedFilesAndGarbageDoNoHarm) {
  earlierProfile();
  read("Trelvane comparison\nWindow si");
  EXPECT_EQ(st.windgraph, 0);
  EXPECT_EQ(st.m2.get(0), 77);

  read(std::string("Trelvane comparison\nWindow size=\x01\xff\nBases=\x80\n#\n\0\0\x05", 48));
  EXPECT_EQ(st.windgraph, 0);
  EXPECT_EQ(st.nbbases, 0);
  ASSERT_EQ(st.m2.size(), 410);
  EXPECT_EQ(st.m2.get(0), 1);
  EXPECT_EQ(graphs, 2);
}

TEST_F(ResultReader, CountsOutOfRangeRefuseTheFile) {
  earlierProfile();
  st.windgraph = 3;
  st.nbbases = 50;
  for (const char* bases : {"-1", "99999999999", "2147483238"}) {
    SCOPED_TRACE(bases);
    read(std::string("Trelvane comparison\nWindow size=30\nBases=") + bases + "\n#\nAB");
    EXPECT_EQ(form.Message,
              std::string("Cannot read run.txt: Bases=") + bases + " is no count of bases");
    EXPECT_EQ(st.windgraph, 3);
    EXPECT_EQ(st.nbbases, 50);
    EXPECT_EQ(st.m2.size(), 20);
    EXPECT_EQ(graphs, 0);
  }
}

TEST_F(ResultReader, OtherFirstLineOnlyDraws) {
  earlierProfile();
  read("Trelvane comparisoN of something\nWindow size=30\n#\nAB");
  EXPECT_EQ(st.windgraph, 30);  // only the first 19 characters count
  EXPECT_EQ(st.m2.size(), 410);

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

TEST_F(ResultReader, StoredCpgResult) {
  const std::string path = std::string(TRELVANE_TEST_DATA) + "/golden/S2.result";
  litprevious(st, form, path, [] {});
  EXPECT_EQ(st.windgraph, 100);
  EXPECT_EQ(st.maxgraph, 17.0f);
  EXPECT_EQ(st.meangraph, 6.410326f);
  EXPECT_EQ(st.sdgraph, 3.011521f);
  EXPECT_TRUE(std::isnan(st.omeangraph));
  EXPECT_TRUE(std::isnan(st.osdgraph));
  EXPECT_EQ(st.omaxgraph, 0.0f);
  EXPECT_EQ(st.sumu2bas, 2.893305f);
  EXPECT_EQ(st.sumu2up, 3.136421f);
  EXPECT_EQ(st.nbbases, 48502);
  EXPECT_EQ(st.nbbases1, 0);
  ASSERT_EQ(st.m2.size(), 48912);
  const std::string file = readAll(path);
  const std::string bytes = file.substr(file.find("\n#\n") + 3);
  ASSERT_EQ(bytes.size(), 48502u);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(st.m2.data()), bytes.size()), bytes);
  EXPECT_EQ(st.m2.get(48502), 0);
}

TEST_F(ResultReader, StoredResultWithFewerBytesThanBases) {
  const std::string path = std::string(TRELVANE_TEST_DATA) + "/golden/S1.result";
  litprevious(st, form, path, [] {});
  EXPECT_EQ(st.windgraph, 30);
  EXPECT_EQ(st.nbbases, 73308);
  EXPECT_EQ(st.nbbases1, 3919);
  ASSERT_EQ(st.m2.size(), 73718);
  // The run's filled start, bytes of 2, then the reader's own fill ends.
  EXPECT_EQ(st.m2.get(0), 2);
  EXPECT_EQ(st.m2.get(799), 2);
  EXPECT_EQ(st.m2.get(800), 0);
  EXPECT_EQ(st.m2.get(801), 0);
}
