// cpg_test.cpp -- the CpG scan: counts per window, raw base rows, N rows, the empty H0.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>

#include "engine_test_util.h"

namespace trelvane {
namespace {

using testing::linesOf;
using testing::RecordingHost;
using testing::rowsOf;

RunSettings cpgSettings(const char* W) {
  RunSettings s;
  s.CBCPG = true;
  s.EFWS = W;
  s.CBClipboard = true;
  s.seed = 1;
  return s;
}

struct CpgRun {
  RunOutcome out;
  std::vector<std::string> rows;
  RecordingHost host;
};

void runCpg(ComparisonState& st, const RunSettings& s, CpgRun& r) {
  r.out = rumcompute(st, s, r.host);
  r.rows = linesOf(rowsOf(r.host.clipboard));
}

TEST(Cpg, PairsCountInsideAndAcrossTheWindowEnd) {
  // Windows of 4: CGCG (then T) counts 2; GCGT 1; CGTA 1; ACGC followed by G 2.
  ComparisonState st;
  st.open();
  testing::setLong(st, "CGCGTAACGCGT");
  CpgRun r{{}, {}, RecordingHost(st)};
  runCpg(st, cpgSettings("4"), r);
  // The second field is the raw base code: C is 3, G 4, A 1, T 2.
  EXPECT_EQ(r.rows[0], "1\t\x03\t2");  // CGCG|T
  EXPECT_EQ(r.rows[1], "2\t\x04\t1");  // GCGT|A
  EXPECT_EQ(r.rows[3], "4\t\x04\t0");  // GTAA|C
  EXPECT_EQ(r.rows[5], "6\t\x01\t1");  // AACG|C: CG inside, no pair at the end
  EXPECT_EQ(r.rows[6], "7\t\x01\t2");  // ACGC|G: one inside, one across the end
  EXPECT_EQ(r.rows[8], "9\t\x04\t1");  // GCGT, the last window: the byte behind is 0
  EXPECT_EQ(r.rows[9], "10\tC\t");     // tail rows carry letters
  EXPECT_EQ(r.rows.size(), 12u);
  EXPECT_EQ(st.m2.get(0), 130);  // 255 - 2 * 62.5
  EXPECT_EQ(r.out.maxgraph, 2.0f);
}

TEST(Cpg, LastWindowCountsOnlyThePairsInsideIt) {
  ComparisonState st;
  st.open();
  testing::setLong(st, "TTTCGTTTTC");
  CpgRun r{{}, {}, RecordingHost(st)};
  runCpg(st, cpgSettings("4"), r);
  EXPECT_EQ(r.rows[6], "7\t\x02\t0");  // TTTC, and behind it the zero byte
  EXPECT_EQ(r.rows[0], "1\t\x02\t1");  // TTTC|G counts across the end
}

TEST(Cpg, WindowWithNGetsAnNRowOfThreeFields) {
  ComparisonState st;
  st.open();
  testing::setLong(st, "ACGNACGTCG");
  CpgRun r{{}, {}, RecordingHost(st)};
  runCpg(st, cpgSettings("3"), r);
  EXPECT_EQ(r.rows[0], "1\t\x01\t1");
  EXPECT_EQ(r.rows[1], "2\tC\t0");
  EXPECT_EQ(r.rows[3], "4\tN\t0");
  EXPECT_EQ(r.rows[4], "5\t\x01\t1");
  EXPECT_EQ(st.m2.get(1), 1);
  EXPECT_EQ(st.m2.get(3), 1);
}

TEST(Cpg, H0ValuesAreZeroOverZeroAndTheShortSideIsEmpty) {
  ComparisonState st;
  st.open();
  testing::setLong(st, "ACGTTCGAACGT");
  CpgRun r{{}, {}, RecordingHost(st)};
  runCpg(st, cpgSettings("4"), r);
  const std::string& rep = r.out.report;
  EXPECT_NE(rep.find("Mean H0=NaN\nSD H0=NaN\nMax H0=0\n"), std::string::npos);
  EXPECT_NE(rep.find("Bases=12\nBases1=0\n0\t0\n1\t0\n2\t0\n3\t0\n4\t0\nLongest sequence\n"), std::string::npos);
  EXPECT_NE(rep.find("Shortest sequence\nN\t0\tNaN\nA\t0\tNaN\nT\t0\tNaN\nC\t0\tNaN\nG\t0\tNaN\n"),
            std::string::npos);
  for (const std::string& m : r.host.messages) EXPECT_NE(m, "Estimate of SD");
  EXPECT_TRUE(std::isnan(r.out.omeangraph));
  EXPECT_TRUE(std::isnan(r.out.osdgraph));
}

TEST(Cpg, NoCpgGivesByte255AndAZeroMaximum) {
  ComparisonState st;
  st.open();
  testing::setLong(st, "ATATGCATTAGC");
  CpgRun r{{}, {}, RecordingHost(st)};
  runCpg(st, cpgSettings("5"), r);
  for (int i = 0; i <= 7; ++i) EXPECT_EQ(st.m2.get(i), 255) << i;
  EXPECT_NE(r.out.report.find("Max=0\nMean=0\nSD=0\n"), std::string::npos);
  EXPECT_EQ(r.out.EF_MaxX, "0.1");
}

TEST(Cpg, WindowLongerThanTheSequenceTakesTheShortLengthOfZero) {
  ComparisonState st;
  st.open();
  testing::setLong(st, "ACGCGT");
  CpgRun r{{}, {}, RecordingHost(st)};
  runCpg(st, cpgSettings("10"), r);
  EXPECT_EQ(r.out.report.substr(0, 26), "Window size resizes to 0\n\n");
  // W = 0: nothing is counted, and 0 times 250 / 0 is no number: byte 0.
  // Position 6 reads the zero byte behind the sequence as its raw base, so
  // the clipboard text ends right there.
  ASSERT_EQ(r.rows.size(), 7u);
  EXPECT_EQ(r.rows[0], "1\t\x01\t0");
  EXPECT_EQ(r.rows[6], "7\t");
  EXPECT_EQ(st.m2.get(0), 0);
}

TEST(Cpg, StartPastTheEndDoesNoPosition) {
  ComparisonState st;
  st.open();
  testing::setLong(st, "ACGCGTACGT");
  RunSettings s = cpgSettings("4");
  s.EFAnaFrom = "20";
  CpgRun r{{}, {}, RecordingHost(st)};
  runCpg(st, s, r);
  // Only the tail rows, which come whatever the range.
  ASSERT_EQ(r.rows.size(), 3u);
  EXPECT_EQ(r.rows[0], "8\tC\t");
  EXPECT_EQ(r.host.doEventsCalls, 0);
}

TEST(Cpg, NoRowAtAllTouchesNeitherClipboardNorFile) {
  // W = 1 has no tail: with the start past the end the rows stay empty.
  ComparisonState st;
  st.open();
  testing::setLong(st, "ACGCGTACGT");
  RunSettings s = cpgSettings("1");
  s.EFAnaFrom = "20";
  s.CBFile = true;
  std::filesystem::path path = std::filesystem::temp_directory_path() / "trelvane_cpg_no_rows.txt";
  std::filesystem::remove(path);
  s.resultPath = path.string();
  CpgRun r{{}, {}, RecordingHost(st)};
  runCpg(st, s, r);
  EXPECT_EQ(r.host.clipboardCalls, 0);
  EXPECT_FALSE(r.out.resultWritten);
  EXPECT_FALSE(std::filesystem::exists(path));
  // The report's lines depend on the check boxes alone.
  std::string tail = "Result is copied into the clipboard\nResult is saved\n";
  EXPECT_EQ(r.out.report.substr(r.out.report.size() - tail.size()), tail);
}

}  // namespace
}  // namespace trelvane
