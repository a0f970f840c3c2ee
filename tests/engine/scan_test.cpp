// scan_test.cpp -- the substitution scan: scores, ties, N windows, clamping, range and guards.
#include <gtest/gtest.h>

#include <random>

#include "engine_test_util.h"
#include "platform/numtext.h"

namespace trelvane {
namespace {

using testing::linesOf;
using testing::RecordingHost;
using testing::rowsOf;

// Runs with the clipboard on and returns the rows of the clipboard.
std::string runRows(ComparisonState& st, RunSettings s, RunOutcome* outcome = nullptr) {
  s.CBClipboard = true;
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);
  if (outcome) *outcome = out;
  return rowsOf(host.clipboard);
}

std::string randomBases(std::mt19937& gen, int n) {
  std::string out;
  for (int k = 0; k < n; ++k) out += "ACGT"[gen() % 4];
  return out;
}

void setMatrix(ComparisonState& st, const float (&cells)[4][4]) {
  for (int s = 1; s <= 4; ++s)
    for (int l = 1; l <= 4; ++l) st.matrice[s][l] = cells[s - 1][l - 1];
}

// A matrix whose cells are no binary fractions, so that sums round.
const float kModel[4][4] = {{0.91f, 0.03f, 0.05f, 0.01f},
                            {0.07f, 0.83f, 0.01f, 0.09f},
                            {0.02f, 0.11f, 0.77f, 0.1f},
                            {0.013f, 0.047f, 0.19f, 0.75f}};

// The expected rows of positions firstpos..lastpos, by the definition: the
// first position and every start 0 in full from the first cell, every other
// score from its diagonal predecessor at the previous position (a whole
// table, no row updated in place), each step rounded to Single.
std::vector<std::string> expectedRows(const ComparisonState& st, const std::string& lg,
                                      const std::string& sh, int W, int firstpos, int lastpos) {
  auto code = [](char c) { return testing::codeOf(c); };
  auto cell = [&](char s, char l) { return st.matrice[code(s)][code(l)]; };
  const int lastshort = static_cast<int>(sh.size()) - W;
  std::vector<std::vector<float>> table;
  std::vector<std::string> rows;
  for (int i = firstpos; i <= lastpos; ++i) {
    std::vector<float> row(static_cast<std::size_t>(lastshort) + 1);
    for (int j = 0; j <= lastshort; ++j) {
      if (i == firstpos || j == 0) {
        float s = cell(sh[j], lg[i]);
        for (int k = 1; k < W; ++k) s += cell(sh[j + k], lg[i + k]);
        row[j] = s;
      } else {
        float s = table.back()[j - 1] - cell(sh[j - 1], lg[i - 1]);
        row[j] = s + cell(sh[j + W - 1], lg[i + W - 1]);
      }
    }
    table.push_back(row);
    std::string line = Str(static_cast<int32_t>(i + 1)) + "\t" + lg[i] + "\t";
    if (lg.substr(i, W).find('N') != std::string::npos) {
      rows.push_back(line + "0\t0");
      continue;
    }
    float best = 0;
    for (float s : row) best = s > best ? s : best;
    std::vector<int> order;
    if (i == firstpos) {
      for (int j = 0; j <= lastshort; ++j) order.push_back(j);
    } else {
      for (int j = lastshort; j >= 1; --j) order.push_back(j);
      order.push_back(0);
    }
    std::string ties;
    for (int j : order)
      if (row[j] == best) ties += (ties.empty() ? "" : "\t") + std::to_string(j + 1);
    rows.push_back(line + Str(best) + "\t" + ties);
  }
  return rows;
}

TEST(Scan, ModelScoresAccumulateInSingleAlongDiagonals) {
  std::mt19937 gen(11);
  std::string sh = randomBases(gen, 60);
  std::string lg = randomBases(gen, 150) + sh.substr(10, 30) + randomBases(gen, 10) + "NNN" +
                   randomBases(gen, 100);
  ComparisonState st;
  testing::openWith(st, lg, sh);
  setMatrix(st, kModel);
  RunSettings s;
  s.EFWS = "25";
  s.EFSD = "3";
  s.EFIdentities = "100";
  std::vector<std::string> rows = linesOf(runRows(st, s));
  const int lastlong = static_cast<int>(lg.size()) - 25;
  std::vector<std::string> want = expectedRows(st, lg, sh, 25, 0, lastlong);
  ASSERT_EQ(rows.size(), want.size() + 24);  // 24 tail rows
  for (std::size_t k = 0; k < want.size(); ++k) ASSERT_EQ(rows[k], want[k]) << "position " << k + 1;

  // The rounding along the diagonals shows: at some scored position a full
  // sum from the first cell gives a different best score.
  int differing = 0;
  for (int i = 1; i <= lastlong; ++i) {
    if (lg.substr(i, 25).find('N') != std::string::npos) continue;
    float best = 0;
    for (int j = 0; j + 25 <= 60; ++j) {
      float sum = st.matrice[testing::codeOf(sh[j])][testing::codeOf(lg[i])];
      for (int k = 1; k < 25; ++k) sum += st.matrice[testing::codeOf(sh[j + k])][testing::codeOf(lg[i + k])];
      best = sum > best ? sum : best;
    }
    if (rows[i].find("\t" + Str(best) + "\t") == std::string::npos) ++differing;
  }
  EXPECT_GT(differing, 0);
}

TEST(Scan, NStretchKeepsTheDiagonalsUpToDate) {
  // Identity matrix: every score is exact. The short sequence appears after
  // an N stretch; the scores there must be those of the whole windows.
  std::string sh = "ACGTTGCAAGCT";
  std::string lg = "ACGTTGCANNNNACGTTGCAAGCTAAAA";
  ComparisonState st;
  testing::openWith(st, lg, sh);
  RunSettings s;
  s.EFWS = "6";
  s.EFSD = "2";
  std::vector<std::string> rows = linesOf(runRows(st, s));
  EXPECT_EQ(rows[0], "1\tA\t6\t1");  // ACGTTG
  EXPECT_EQ(rows[2], "3\tG\t6\t3");  // GTTGCA, the last clean window before the Ns
  for (int k = 3; k <= 11; ++k) EXPECT_EQ(rows[k].substr(rows[k].size() - 4), "\t0\t0") << k;
  EXPECT_EQ(rows[3], "4\tT\t0\t0");
  EXPECT_EQ(rows[11], "12\tN\t0\t0");
  EXPECT_EQ(rows[12], "13\tA\t6\t1");  // ACGTTG again, after the Ns
  EXPECT_EQ(rows[14], "15\tG\t6\t3");
  EXPECT_EQ(rows[18], "19\tC\t6\t7");  // CAAGCT
  EXPECT_EQ(st.m2.get(3), 1);
  EXPECT_EQ(st.m2.get(12), 5);
}

TEST(Scan, TiesRiseAtTheFirstPositionAndFallAfter) {
  // ACG stands at starts 1, 4, 7 of the short sequence; CGA at 2, 5.
  ComparisonState st;
  testing::openWith(st, "ACGACGTT", "ACGACGACG");
  RunSettings s;
  s.EFWS = "3";
  s.EFSD = "1";
  s.EFIdentities = "3";
  s.CBClipboard = true;
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);
  std::vector<std::string> rows = linesOf(rowsOf(host.clipboard));
  EXPECT_EQ(rows[0], "1\tA\t3\t1\t4\t7");
  EXPECT_EQ(rows[1], "2\tC\t3\t5\t2");
  EXPECT_EQ(rows[3], "4\tA\t3\t7\t4\t1");  // start 1 (j = 0) is tested last
  // The alignments follow the same order: ascending first, then descending.
  std::string firstTwo = "0\t0\nACG\nACG\n+++\n\n3\t0\nACG\nACG\n+++\n\n";
  EXPECT_EQ(out.report.substr(0, firstTwo.size()), firstTwo);
  EXPECT_NE(out.report.find("6\t3\nACG\nACG\n+++\n\n3\t3\nACG\nACG\n+++\n\n0\t3\n"), std::string::npos);
}

TEST(Scan, FirstPositionWithoutPositiveScoreKeepsTheFillingText) {
  // Off-diagonal cells of -0.5: every score of AAAA against C is negative.
  ComparisonState st;
  testing::openWith(st, "AAAAAA", "CCCCC");
  for (int a = 1; a <= 4; ++a)
    for (int b = 1; b <= 4; ++b)
      if (a != b) st.matrice[a][b] = -0.5f;
  RunSettings s;
  s.EFWS = "4";
  s.EFSD = "1";
  std::vector<std::string> rows = linesOf(runRows(st, s));
  // 200 bytes of code 2 with no tie behind them, less the last character.
  EXPECT_EQ(rows[0], "1\tA\t0\t" + std::string(199, '\x02'));
  // Later positions start from an empty list: the last field stays empty.
  EXPECT_EQ(rows[1], "2\tA\t0\t");
  EXPECT_EQ(st.m2.get(0), 255);
  EXPECT_EQ(st.m2.get(1), 255);
}

TEST(Scan, ZeroScoresAtTheFirstPositionStandBehindTheFillingText) {
  ComparisonState st;
  testing::openWith(st, "AAAAAA", "CCCCC");  // identity: all scores 0
  RunSettings s;
  s.EFWS = "4";
  s.EFSD = "1";
  std::vector<std::string> rows = linesOf(runRows(st, s));
  EXPECT_EQ(rows[0], "1\tA\t0\t" + std::string(200, '\x02') + "1\t2");
  EXPECT_EQ(rows[1], "2\tA\t0\t2\t1");
}

TEST(Scan, WindowLongerThanShortIsClampedWithANote) {
  ComparisonState st;
  testing::openWith(st, "ACGTACGTACGTACGTACGT", "ACGTACGTACGT");
  RunSettings s;
  s.EFWS = "30";
  s.EFSD = "2";
  s.display0 = true;
  s.EFIdentities = "100";
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);
  std::string head = "First sequence\n20\nACGTACGTACGTACGTACGT\n"
                     "Window size resizes to 12\n\nTrelvane comparison\n";
  EXPECT_EQ(out.report.substr(0, head.size()), head);
  EXPECT_NE(out.report.find("Window size=12\n"), std::string::npos);
  // Bins 0 to 12, from a histogram sized for the asked 30.
  EXPECT_NE(out.report.find("\n12\t"), std::string::npos);
  EXPECT_EQ(out.report.find("\n13\t"), std::string::npos);
  EXPECT_EQ(out.windgraph, 12);
}

TEST(Scan, WindowEqualToShortGivesOneScorePerPosition) {
  ComparisonState st;
  testing::openWith(st, "ACGTTACGTA", "ACGT");
  RunSettings s;
  s.EFWS = "4";
  s.EFSD = "1";
  std::vector<std::string> rows = linesOf(runRows(st, s));
  ASSERT_EQ(rows.size(), 10u);
  EXPECT_EQ(rows[0], "1\tA\t4\t1");
  EXPECT_EQ(rows[1], "2\tC\t1\t1");  // CGTT
  EXPECT_EQ(rows[2], "3\tG\t0\t1");  // GTTA: the 0 of start 1 ties with maxscore 0
  EXPECT_EQ(rows[5], "6\tA\t4\t1");
  EXPECT_EQ(rows[7], "8\tG\t");  // tail
}

TEST(Scan, RangeFromOneToHundredCoversHundredAndOneWindows) {
  std::string lg;
  for (int k = 0; k < 300; ++k) lg += "ACGT"[(k * 5 + k / 4) % 4];
  ComparisonState st;
  testing::openWith(st, lg, lg.substr(0, 20));
  RunSettings s;
  s.EFWS = "10";
  s.EFAnaTo = "100";
  s.EFSD = "2";
  s.CBClipboard = true;
  RecordingHost host(st);
  rumcompute(st, s, host);
  std::vector<std::string> rows = linesOf(rowsOf(host.clipboard));
  ASSERT_EQ(rows.size(), 101u + 9u);
  EXPECT_EQ(rows[100].substr(0, 4), "101\t");
  EXPECT_EQ(rows[101], std::string("292\t") + lg[291] + "\t");  // then the tail
  EXPECT_TRUE(host.efAnaTo.empty());  // "100" is kept
  EXPECT_EQ(st.m2.get(100) > 2, true);
  EXPECT_EQ(st.m2.get(101), 2);  // filled start, not reached
}

TEST(Scan, EndPastTheLastWindowBecomesMax) {
  ComparisonState st;
  testing::openWith(st, "ACGTACGTAC", "ACGTA");
  RunSettings s;
  s.EFWS = "5";
  s.EFAnaTo = "6";  // lastlong is 5
  s.EFSD = "1";
  RecordingHost host(st);
  rumcompute(st, s, host);
  ASSERT_EQ(host.efAnaTo.size(), 1u);
  EXPECT_EQ(host.efAnaTo[0], "max");
  ComparisonState st2;
  testing::openWith(st2, "ACGTACGTAC", "ACGTA");
  s.EFAnaTo = "5";
  RecordingHost host2(st2);
  rumcompute(st2, s, host2);
  EXPECT_TRUE(host2.efAnaTo.empty());
}

TEST(Scan, EmptyStartReadsOnePositionBeforeTheSequence) {
  ComparisonState st;
  testing::openWith(st, "ACGTACGT", "ACGT");
  RunSettings s;
  s.EFWS = "4";
  s.EFAnaFrom = "";
  s.EFSD = "1";
  std::vector<std::string> rows = linesOf(runRows(st, s));
  // Offset -1 holds no base: an N row at position 0, then the recurrence
  // carries on from there.
  EXPECT_EQ(rows[0], "0\tN\t0\t0");
  EXPECT_EQ(rows[1], "1\tA\t4\t1");
  EXPECT_EQ(rows[5], "5\tA\t4\t1");
  EXPECT_EQ(rows.size(), 9u);
}

TEST(Scan, StartPastTheLastWindowScoresOnlyThatPosition) {
  ComparisonState st;
  testing::openWith(st, "ACGTACGTACGTACGTACGT", "ACGTACGT");
  RunSettings s;
  s.EFWS = "8";
  s.EFAnaFrom = "18";  // the window runs over the end, into the zero bytes
  s.EFSD = "1";
  s.EFIdentities = "0";
  RunOutcome out;
  std::vector<std::string> rows = linesOf(runRows(st, s, &out));
  ASSERT_EQ(rows.size(), 8u);
  EXPECT_EQ(rows[0], "18\tC\t0\t0");  // scored in full, then an N row
  EXPECT_EQ(rows[1], "14\tC\t");      // the tail
  // The tests come first: the alignments of that window are listed.
  EXPECT_NE(out.report.find("0\t17\nACGTACGT\nCGT"), std::string::npos);

  // Far beyond the block and its padding, the window reads as zeros.
  s.EFAnaFrom = "100000";
  rows = linesOf(runRows(st, s));
  EXPECT_EQ(rows[0], "100000\tN\t0\t0");
  s.EFAnaFrom = "-5000";
  s.EFAnaTo = "-4998";
  rows = linesOf(runRows(st, s));
  ASSERT_EQ(rows.size(), 4u + 7u);
  EXPECT_EQ(rows[0], "-5000\tN\t0\t0");
  EXPECT_EQ(rows[3], "-4997\tN\t0\t0");
  EXPECT_EQ(rows[4], "14\tC\t");
}

TEST(Scan, EmptyWindowSizeRunsWithWindowZero) {
  ComparisonState st;
  testing::openWith(st, "ACGTAC", "ACGT");
  RunSettings s;
  s.EFWS = "";
  s.EFSD = "1";
  RunOutcome out;
  std::vector<std::string> rows = linesOf(runRows(st, s, &out));
  EXPECT_FALSE(out.refused);
  EXPECT_NE(out.report.find("Window size=0\n"), std::string::npos);
  // Positions 0 to 6 (lastlong = 6), no tail; each score is the one cell
  // taken before the loop over the window.
  ASSERT_EQ(rows.size(), 7u);
  EXPECT_EQ(rows[0], "1\tA\t1\t1");
  // With W = 0 each step leaves and enters the same cell: the row shifts,
  // so start j holds the cell of offset i - j. At offset 6 (a zero byte,
  // the letter N) that is the A at offset 4, start 3.
  EXPECT_EQ(rows[6], "7\tN\t1\t3");
  // 250 / 0 is an infinity: every byte converts a non-finite value to 0.
  EXPECT_EQ(st.m2.get(0), 0);
}

TEST(Scan, RowsGrowPastThirtyBytesPerBase) {
  // Every window ties with every other: 199 starts a row.
  ComparisonState st;
  testing::openWith(st, std::string(40, 'A'), std::string(200, 'A'));
  RunSettings s;
  s.EFWS = "2";
  s.EFSD = "1";
  s.EFIdentities = "100";
  std::string rows = runRows(st, s);
  EXPECT_GT(rows.size(), 40u * 30u);
  std::vector<std::string> lines = linesOf(rows);
  ASSERT_EQ(lines.size(), 40u);
  EXPECT_EQ(lines[38].substr(0, 10), "39\tA\t2\t199");
  EXPECT_EQ(lines[38].substr(lines[38].size() - 2), "\t1");
  EXPECT_EQ(lines[39], "40\tA\t");
}

TEST(ScanGuard, ShortLengthBeyondItsBlockReadsZeros) {
  // A stored result rewrites nbbases1 without touching m1.
  ComparisonState st;
  testing::openWith(st, "ACGTACGTACGTAAAAAAAA", "ACGT");
  st.nbbases1 = 300;
  RunSettings s;
  s.EFWS = "4";
  s.EFSD = "3";
  std::vector<std::string> rows = linesOf(runRows(st, s));
  EXPECT_EQ(rows[0], "1\tA\t4\t1");
  EXPECT_EQ(rows[12], "13\tA\t1\t1");  // AAAA against ACGT, the rest being zeros

  st.m1 = MemoryBlock();  // nil: no short sequence was ever read
  st.nbbases1 = 10;
  rows = linesOf(runRows(st, s));
  EXPECT_EQ(rows[1], "2\tC\t0\t7\t6\t5\t4\t3\t2\t1");
}

TEST(ScanGuard, BytesAboveFourScoreNothingAndReadAsN) {
  ComparisonState st;
  testing::openWith(st, "ACGTACGT", "ACGT");
  st.m0.set(1, 200);
  st.m1.set(2, 9);
  RunSettings s;
  s.EFWS = "4";
  s.EFSD = "2";
  s.EFIdentities = "1";
  RunOutcome out;
  std::vector<std::string> rows = linesOf(runRows(st, s, &out));
  EXPECT_EQ(rows[0], "1\tA\t2\t1");  // A?GT against AC?T
  EXPECT_EQ(rows[1], "2\tN\t0\t1");
  EXPECT_NE(out.report.find("0\t0\nACNT\nANGT\n+  +\n"), std::string::npos);
}

TEST(ScanGuard, NegativeWindowSizeIsTakenAsZero) {
  ComparisonState st;
  testing::openWith(st, "ACGTAC", "ACGT");
  RunSettings s;
  s.EFWS = "-40";
  s.EFSD = "2";
  RunOutcome out;
  std::vector<std::string> rows = linesOf(runRows(st, s, &out));
  EXPECT_NE(out.report.find("Window size=0\n"), std::string::npos);
  EXPECT_EQ(rows.size(), 7u);
}

TEST(ScanGuard, NegativeResamplingFieldKeepsOneWholeRandomWindow) {
  ComparisonState st;
  testing::openWith(st, "ACGTACGTACGTACGT", "ACGTAC");
  RunSettings s;
  s.EFWS = "6";
  s.EFSD = "-50";  // nresample -51: no base is drawn
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);
  // Resampling 0 reads an undrawn window of zero bytes: a best score of 0.
  EXPECT_NE(out.report.find("Mean H0=0\nSD H0=0\nMax H0=0\n"), std::string::npos);
  EXPECT_NE(out.report.find("Bases1=6\n0\t1\n1\t0\n"), std::string::npos);
}

}  // namespace
}  // namespace trelvane
