// cpg_test.cpp -- the CpG scan: counts per window, raw base rows, N rows, the empty H0.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "engine_test_util.h"

namespace trelvane {
namespace {

using testing::RowCase;
using testing::TestRun;

RunSettings cpg(const char* W, const char* from = "1") {
  return {.EFWS = W, .EFAnaFrom = from, .CBCPG = true, .CBClipboard = true, .seed = 1};
}

// The second field of a scored row is the raw base code: A 1, T 2, C 3, G 4.
const RowCase kCases[] = {
    // Windows of 4, a pair counting inside and across the window's end.
    {"PairsCountInsideAndAcrossTheWindowEnd", "CGCGTAACGCGT", "", cpg("4"),
     {{0, "1\t\x03\t2"},    // CGCG|T
      {1, "2\t\x04\t1"},    // GCGT|A
      {3, "4\t\x04\t0"},    // GTAA|C
      {5, "6\t\x01\t1"},    // AACG|C: CG inside, no pair at the end
      {6, "7\t\x01\t2"},    // ACGC|G: one inside, one across the end
      {8, "9\t\x04\t1"},    // GCGT, the last window: the byte behind is 0
      {9, "10\tC\t"}},      // tail rows carry letters
     12, {{0, 130}}},       // 255 - 2 * 62.5
    {"LastWindowCountsOnlyThePairsInsideIt", "TTTCGTTTTC", "", cpg("4"),
     {{0, "1\t\x02\t1"}, {6, "7\t\x02\t0"}}},
    {"WindowWithNGetsAnNRowOfThreeFields", "ACGNACGTCG", "", cpg("3"),
     {{0, "1\t\x01\t1"}, {1, "2\tC\t0"}, {3, "4\tN\t0"}, {4, "5\t\x01\t1"}}, -1, {{1, 1}, {3, 1}}},
    {"NoCpgGivesByte255AndAZeroMaximum", "ATATGCATTAGC", "", cpg("5"), {}, -1,
     {{0, 255}, {1, 255}, {2, 255}, {3, 255}, {4, 255}, {5, 255}, {6, 255}, {7, 255}}, {"Max=0\nMean=0\nSD=0\n"}},
    // W = 0: nothing is counted and 0 times 250 / 0 is no number: byte 0.
    // Position 6 reads the zero byte behind the sequence as its raw base, so
    // the clipboard text ends right there.
    {"WindowLongerThanTheSequenceTakesTheShortLengthOfZero", "ACGCGT", "", cpg("10"),
     {{0, "1\t\x01\t0"}, {6, "7\t"}}, 7, {{0, 0}}, {"Window size resizes to 0\n\n"}},
    // Only the tail rows, which come whatever the range.
    {"StartPastTheEndDoesNoPosition", "ACGCGTACGT", "", cpg("4", "20"), {{0, "8\tC\t"}}, 3},
};

TEST(Cpg, HandCheckedRuns) {
  for (const RowCase& c : kCases) testing::expectCase(c);
  TestRun r("ACGCGTACGT");
  EXPECT_EQ(r.run(cpg("4", "20")).host.doEventsCalls, 0);
  EXPECT_EQ(TestRun("ATATGCATTAGC").run(cpg("5")).out.EF_MaxX, "0.1");
  EXPECT_EQ(TestRun("CGCGTAACGCGT").run(cpg("4")).out.maxgraph, 2.0f);
}

TEST(Cpg, H0ValuesAreZeroOverZeroAndTheShortSideIsEmpty) {
  TestRun r("ACGTTCGAACGT");
  const std::string& rep = r.run(cpg("4")).out.report;
  EXPECT_NE(rep.find("Mean H0=NaN\nSD H0=NaN\nMax H0=0\n"), std::string::npos);
  EXPECT_NE(rep.find("Bases=12\nBases1=0\n0\t0\n1\t0\n2\t0\n3\t0\n4\t0\nLongest sequence\n"), std::string::npos);
  EXPECT_NE(rep.find("Shortest sequence\nN\t0\tNaN\nA\t0\tNaN\nT\t0\tNaN\nC\t0\tNaN\nG\t0\tNaN\n"),
            std::string::npos);
  for (const std::string& m : r.host.messages) EXPECT_NE(m, "Estimate of SD");
  EXPECT_TRUE(std::isnan(r.out.omeangraph));
  EXPECT_TRUE(std::isnan(r.out.osdgraph));
}

TEST(Cpg, NoRowAtAllTouchesNeitherClipboardNorFile) {
  // W = 1 has no tail: with the start past the end the rows stay empty.
  RunSettings s = cpg("1", "20");
  s.CBFile = true;
  std::filesystem::path path = std::filesystem::temp_directory_path() / "trelvane_cpg_no_rows.txt";
  std::filesystem::remove(path);
  s.resultPath = path.string();
  TestRun r("ACGCGTACGT");
  r.run(s);
  EXPECT_EQ(r.host.clipboardCalls, 0);
  EXPECT_FALSE(r.out.resultWritten);
  EXPECT_FALSE(std::filesystem::exists(path));
  // The report's lines depend on the check boxes alone.
  std::string tail = "Result is copied into the clipboard\nResult is saved\n";
  EXPECT_EQ(r.out.report.substr(r.out.report.size() - tail.size()), tail);
}

}  // namespace
}  // namespace trelvane
