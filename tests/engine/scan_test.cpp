// scan_test.cpp -- the substitution scan: scores, ties, N windows, clamping, range and guards.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "engine/scan_found.h"
#include "engine_test_util.h"
#include "platform/numtext.h"

namespace trelvane {
namespace {

using testing::linesOf;
using testing::RowCase;
using testing::TestRun;

std::string runRows(ComparisonState& st, const RunSettings& s) {
  testing::RecordingHost host(st);
  rumcompute(st, s, host);
  return testing::rowsOf(host.clipboard);
}

std::string randomBases(std::mt19937& gen, int n) {
  std::string out;
  for (int k = 0; k < n; ++k) out += "ACGT"[gen() % 4];
  return out;
}

// The expected rows of positions firstpos..lastpos: ties listed ascending at
// the first position, then descending with start 1 (j = 0) last.
std::vector<std::string> expectedRows(const ComparisonState& st, const std::string& lg, const std::string& sh, int W,
                                      int firstpos, int lastpos) {
  const auto table = testing::scoreTable(st, testing::codesOf(sh), testing::codesOf(lg), W, firstpos, lastpos);
  const int lastshort = static_cast<int>(sh.size()) - W;
  std::vector<std::string> rows;
  for (int i = firstpos; i <= lastpos; ++i) {
    const std::vector<float>& row = table[i - firstpos];
    std::string line = Str(static_cast<int32_t>(i + 1)) + "\t" + lg[i] + "\t";
    if (lg.substr(i, W).find('N') != std::string::npos) {
      rows.push_back(line + "0\t0");
      continue;
    }
    float best = 0;
    for (float s : row) best = s > best ? s : best;
    std::vector<int> order;
    for (int j = 0; j <= lastshort; ++j) order.push_back(i == firstpos ? j : lastshort - j);
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
  std::string lg = randomBases(gen, 150) + sh.substr(10, 30) + randomBases(gen, 10) + "NNN" + randomBases(gen, 100);
  ComparisonState st;
  testing::openWith(st, lg, sh);
  testing::setModel(st);
  std::vector<std::string> rows =
      linesOf(runRows(st, {.EFWS = "25", .EFIdentities = "100", .EFSD = "3", .CBClipboard = true}));
  const int lastlong = static_cast<int>(lg.size()) - 25;
  std::vector<std::string> want = expectedRows(st, lg, sh, 25, 0, lastlong);
  ASSERT_EQ(rows.size(), want.size() + 24);  // 24 tail rows
  for (std::size_t k = 0; k < want.size(); ++k) ASSERT_EQ(rows[k], want[k]) << "position " << k + 1;

  // The rounding along the diagonals shows: at some scored position a full
  // sum from the first cell gives a different best score.
  int differing = 0;
  for (int i = 1; i <= lastlong; ++i) {
    if (lg.substr(i, 25).find('N') != std::string::npos) continue;
    const auto full = testing::scoreTable(st, testing::codesOf(sh), testing::codesOf(lg), 25, i, i);
    const float best = std::max(0.0f, *std::max_element(full[0].begin(), full[0].end()));
    if (rows[i].find("\t" + Str(best) + "\t") == std::string::npos) ++differing;
  }
  EXPECT_GT(differing, 0);
}

// Hand-checked runs, each isolating one rule of the scan; identity matrix
// unless offDiagonal is set.
const RowCase kCases[] = {
    // The short sequence appears again after an N stretch: the diagonals
    // must hold the scores of the whole windows there.
    {"NStretchKeepsTheDiagonalsUpToDate", "ACGTTGCANNNNACGTTGCAAGCTAAAA", "ACGTTGCAAGCT",
     {.EFWS = "6", .EFSD = "2"},
     {{0, "1\tA\t6\t1"}, {2, "3\tG\t6\t3"}, {3, "4\tT\t0\t0"}, {7, "8\tA\t0\t0"}, {11, "12\tN\t0\t0"},
      {12, "13\tA\t6\t1"}, {14, "15\tG\t6\t3"}, {18, "19\tC\t6\t7"}},
     -1, {{3, 1}, {12, 5}}},
    // No positive score at the first position: 200 bytes of code 2 less the
    // last character, and later positions start from an empty list.
    {"FirstPositionWithoutPositiveScoreKeepsTheFillingText", "AAAAAA", "CCCCC", {.EFWS = "4", .EFSD = "1"},
     {{0, "1\tA\t0\t" + std::string(199, '\x02')}, {1, "2\tA\t0\t"}}, -1, {{0, 255}, {1, 255}}, {}, -0.5f},
    {"ZeroScoresAtTheFirstPositionStandBehindTheFillingText", "AAAAAA", "CCCCC", {.EFWS = "4", .EFSD = "1"},
     {{0, "1\tA\t0\t" + std::string(200, '\x02') + "1\t2"}, {1, "2\tA\t0\t2\t1"}}},
    // GTTA: the 0 of start 1 ties with maxscore 0; row 8 is a tail row.
    {"WindowEqualToShortGivesOneScorePerPosition", "ACGTTACGTA", "ACGT", {.EFWS = "4", .EFSD = "1"},
     {{0, "1\tA\t4\t1"}, {1, "2\tC\t1\t1"}, {2, "3\tG\t0\t1"}, {5, "6\tA\t4\t1"}, {7, "8\tG\t"}}, 10},
    // Offset -1 holds no base: an N row at position 0, then the recurrence goes on.
    {"EmptyStartReadsOnePositionBeforeTheSequence", "ACGTACGT", "ACGT", {.EFWS = "4", .EFAnaFrom = "", .EFSD = "1"},
     {{0, "0\tN\t0\t0"}, {1, "1\tA\t4\t1"}, {5, "5\tA\t4\t1"}}, 9},
    // The window runs over the end into the zero bytes: scored in full, then
    // an N row; the alignments of that window are listed.
    {"StartPastTheLastWindowScoresOnlyThatPosition", "ACGTACGTACGTACGTACGT", "ACGTACGT",
     {.EFWS = "8", .EFAnaFrom = "18", .EFIdentities = "0", .EFSD = "1"},
     {{0, "18\tC\t0\t0"}, {1, "14\tC\t"}}, 8, {}, {"0\t17\nACGTACGT\nCGT"}},
    // Far beyond the block and its padding, the window reads as zeros.
    {"StartFarPastTheBlockReadsZeros", "ACGTACGTACGTACGTACGT", "ACGTACGT",
     {.EFWS = "8", .EFAnaFrom = "100000", .EFSD = "1"}, {{0, "100000\tN\t0\t0"}}},
    {"NegativeRangeReadsZeros", "ACGTACGTACGTACGTACGT", "ACGTACGT",
     {.EFWS = "8", .EFAnaFrom = "-5000", .EFAnaTo = "-4998", .EFSD = "1"},
     {{0, "-5000\tN\t0\t0"}, {3, "-4997\tN\t0\t0"}, {4, "14\tC\t"}}, 11},
    // W = 0: positions 0 to 6, no tail; each step leaves and enters the same
    // cell, so start j holds the cell of offset i - j (at offset 6, the A at 4).
    // 250 / 0 is an infinity: every byte converts a non-finite value to 0.
    {"EmptyWindowSizeRunsWithWindowZero", "ACGTAC", "ACGT", {.EFWS = "", .EFSD = "1"},
     {{0, "1\tA\t1\t1"}, {6, "7\tN\t1\t3"}}, 7, {{0, 0}}, {"Window size=0\n"}},
    {"NegativeWindowSizeIsTakenAsZero", "ACGTAC", "ACGT", {.EFWS = "-40", .EFSD = "2"}, {}, 7, {},
     {"Window size=0\n"}},
    // nresample -51 draws no base: resampling 0 reads an undrawn window of zeros.
    {"NegativeResamplingFieldKeepsOneWholeRandomWindow", "ACGTACGTACGTACGT", "ACGTAC", {.EFWS = "6", .EFSD = "-50"},
     {}, -1, {}, {"Mean H0=0\nSD H0=0\nMax H0=0\n", "Bases1=6\n0\t1\n1\t0\n"}},
};

TEST(Scan, HandCheckedRuns) {
  for (const RowCase& c : kCases) testing::expectCase(c);
}

TEST(Scan, TiesRiseAtTheFirstPositionAndFallAfter) {
  // ACG stands at starts 1, 4, 7 of the short sequence; CGA at 2, 5.
  TestRun r("ACGACGTT", "ACGACGACG");
  r.run({.EFWS = "3", .EFIdentities = "3", .EFSD = "1", .CBClipboard = true});
  EXPECT_EQ(r.rows[0], "1\tA\t3\t1\t4\t7");
  EXPECT_EQ(r.rows[1], "2\tC\t3\t5\t2");
  EXPECT_EQ(r.rows[3], "4\tA\t3\t7\t4\t1");  // start 1 (j = 0) is tested last
  // The alignments follow the same order: ascending first, then descending.
  EXPECT_EQ(r.out.report.rfind("0\t0\nACG\nACG\n+++\n\n3\t0\nACG\nACG\n+++\n\n", 0), 0u);
  EXPECT_NE(r.out.report.find("6\t3\nACG\nACG\n+++\n\n3\t3\nACG\nACG\n+++\n\n0\t3\n"), std::string::npos);
}

TEST(Scan, WindowLongerThanShortIsClampedWithANote) {
  TestRun r("ACGTACGTACGTACGTACGT", "ACGTACGTACGT");
  r.run({.EFWS = "30", .EFIdentities = "100", .EFSD = "2", .display0 = true});
  EXPECT_EQ(r.out.report.rfind("First sequence\n20\nACGTACGTACGTACGTACGT\n"
                               "Window size resizes to 12\n\nTrelvane comparison\n", 0), 0u);
  EXPECT_NE(r.out.report.find("Window size=12\n"), std::string::npos);
  // Bins 0 to 12, from a histogram sized for the asked 30.
  EXPECT_NE(r.out.report.find("\n12\t"), std::string::npos);
  EXPECT_EQ(r.out.report.find("\n13\t"), std::string::npos);
  EXPECT_EQ(r.out.windgraph, 12);
}

TEST(Scan, RangeEndsAndTheMaxRewrite) {
  std::string lg;
  for (int k = 0; k < 300; ++k) lg += "ACGT"[(k * 5 + k / 4) % 4];
  TestRun r(lg, lg.substr(0, 20));
  r.run({.EFWS = "10", .EFAnaTo = "100", .EFSD = "2", .CBClipboard = true});
  ASSERT_EQ(r.rows.size(), 101u + 9u);  // positions 0 to 100, then the tail
  EXPECT_EQ(r.rows[100].substr(0, 4), "101\t");
  EXPECT_EQ(r.rows[101], std::string("292\t") + lg[291] + "\t");
  EXPECT_TRUE(r.host.efAnaTo.empty());  // "100" is kept
  EXPECT_GT(r.st.m2.get(100), 2);
  EXPECT_EQ(r.st.m2.get(101), 2);  // filled start, not reached
  // An end past the last window (lastlong 5) becomes "max"; the last window itself stays.
  for (auto [to, rewrites] : {std::pair{"6", 1u}, std::pair{"5", 0u}}) {
    TestRun e("ACGTACGTAC", "ACGTA");
    e.run({.EFWS = "5", .EFAnaTo = to, .EFSD = "1"});
    EXPECT_EQ(e.host.efAnaTo, std::vector<std::string>(rewrites, "max")) << to;
  }
}

TEST(Scan, RowsGrowPastThirtyBytesPerBase) {
  // Every window ties with every other: 199 starts a row.
  TestRun r(std::string(40, 'A'), std::string(200, 'A'));
  r.run({.EFWS = "2", .EFIdentities = "100", .EFSD = "1", .CBClipboard = true});
  EXPECT_GT(testing::rowsOf(r.host.clipboard).size(), 40u * 30u);
  ASSERT_EQ(r.rows.size(), 40u);
  std::string ties;
  for (int j = 199; j >= 1; --j) ties += "\t" + std::to_string(j);
  EXPECT_EQ(r.rows[38], "39\tA\t2" + ties);
  EXPECT_EQ(r.rows[39], "40\tA\t");
}

// A stretch cut back to its first positions (a stop while stretches are
// taken) keeps their entries, and their rows and alignments where its tester
// wrote them.
TEST(Scan, StretchCutBackKeepsItsFirstPositionsEntriesAndTexts) {
  Found f;
  const uint8_t win[4] = {1, 2, 3, 4};
  const std::vector<std::vector<int64_t>> entries = {{3, -3}, {}, {7, 5, -2, -9}, {9, -1}};
  for (std::size_t k = 0; k < entries.size(); ++k) {
    f.starts.insert(f.starts.end(), entries[k].begin(), entries[k].end());
    f.rows += std::to_string(k + 1) + "\tA\t1.5\n";
    for (int64_t e : entries[k])
      if (e < 0) f.listing += std::to_string(-e) + " " + std::to_string(k) + "\n";
    f.positions.push_back({static_cast<int64_t>(k), 1.5f, k == 1, static_cast<uint32_t>(entries[k].size()), -1,
                           win, f.rows.size(), f.listing.size()});
  }
  Found unwritten = f;
  unwritten.rows.clear();
  unwritten.listing.clear();

  f.truncate(3);
  ASSERT_EQ(f.positions.size(), 3u);
  EXPECT_EQ(f.starts, (std::vector<int64_t>{3, -3, 7, 5, -2, -9}));
  EXPECT_EQ(f.rows, "1\tA\t1.5\n2\tA\t1.5\n3\tA\t1.5\n");
  EXPECT_EQ(f.listing, "3 0\n2 2\n9 2\n");
  f.truncate(5);  // beyond its positions: nothing changes
  EXPECT_EQ(f.positions.size(), 3u);
  f.truncate(0);
  EXPECT_TRUE(f.positions.empty() && f.starts.empty() && f.rows.empty() && f.listing.empty());

  unwritten.truncate(1);
  EXPECT_EQ(unwritten.starts, (std::vector<int64_t>{3, -3}));
  EXPECT_TRUE(unwritten.rows.empty() && unwritten.listing.empty());
}

TEST(ScanGuard, ShortLengthBeyondItsBlockReadsZeros) {
  // A stored result rewrites nbbases1 without touching m1.
  ComparisonState st;
  testing::openWith(st, "ACGTACGTACGTAAAAAAAA", "ACGT");
  st.nbbases1 = 300;
  RunSettings s{.EFWS = "4", .EFSD = "3", .CBClipboard = true};
  std::vector<std::string> rows = linesOf(runRows(st, s));
  EXPECT_EQ(rows[0], "1\tA\t4\t1");
  EXPECT_EQ(rows[12], "13\tA\t1\t1");  // AAAA against ACGT, the rest being zeros

  st.m1 = MemoryBlock();  // nil: no short sequence was ever read
  st.nbbases1 = 10;
  rows = linesOf(runRows(st, s));
  EXPECT_EQ(rows[1], "2\tC\t0\t7\t6\t5\t4\t3\t2\t1");
}

TEST(ScanGuard, BytesAboveFourScoreNothingAndReadAsN) {
  TestRun r("ACGTACGT", "ACGT");
  r.st.m0.set(1, 200);
  r.st.m1.set(2, 9);
  r.run({.EFWS = "4", .EFIdentities = "1", .EFSD = "2", .CBClipboard = true});
  EXPECT_EQ(r.rows[0], "1\tA\t2\t1");  // A?GT against AC?T
  EXPECT_EQ(r.rows[1], "2\tN\t0\t1");
  EXPECT_NE(r.out.report.find("0\t0\nACNT\nANGT\n+  +\n"), std::string::npos);
}

}  // namespace
}  // namespace trelvane
