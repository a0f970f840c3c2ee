// h0_test.cpp -- the random expectation: drawn sequence, resampling scan, histogram, refusal.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "engine_test_util.h"
#include "platform/numtext.h"
#include "platform/rnd.h"

namespace trelvane {
namespace {

using testing::linesOf;
using testing::RecordingHost;
using testing::TestRun;
using testing::valueOf;

// The histogram lines "b<TAB>count" of a report, by bin.
std::map<int, double> histogramOf(const std::string& report) {
  std::map<int, double> bins;
  bool in = false;
  for (const std::string& l : linesOf(report)) {
    if (l.rfind("Bases1=", 0) == 0) {
      in = true;
      continue;
    }
    if (l == "Longest sequence") break;
    if (in) bins[std::stoi(l.substr(0, l.find('\t')))] = std::stod(l.substr(l.find('\t') + 1));
  }
  return bins;
}

TEST(H0, MatchesAnIndependentRecomputationWithTheSameSeed) {
  const std::string lg = "ACGTTGCANNACGGGCTTAACGTACCGTAGGCTANNNNTTGCAACGTAGCTAGCTTAGGCAT";
  const std::string sh = "TTGCAACGTAGCTAGGATCCA";
  const int W = 8, nresample = 40;
  TestRun r(lg, sh);
  ComparisonState& st = r.st;
  testing::setModel(st);
  const RunOutcome& out = r.run({.EFWS = "8", .EFIdentities = "100", .EFSD = "41", .seed = 77}).out;

  // The random sequence: bases of the long sequence drawn with replacement.
  Rnd rnd(77);
  std::vector<uint8_t> res;
  for (int off = 0; off <= nresample + W; ++off) {
    uint8_t b = 0;
    while (b == 0) b = testing::codeOf(lg[static_cast<std::size_t>(rnd() * lg.size())]);
    res.push_back(b);
  }
  // Its windows scored as the long sequence's, in a whole table.
  std::vector<float> best;
  for (const std::vector<float>& row : testing::scoreTable(st, testing::codesOf(sh), res, W, 0, nresample))
    best.push_back(std::max(0.0f, *std::max_element(row.begin(), row.end())));
  std::map<int, double> wantBins;
  double sum = 0, sumsq = 0;
  float top = 0;
  for (float m : best) {
    wantBins[static_cast<int>(m)] += 1;
    sum += m;
    sumsq += static_cast<double>(m) * m;
    top = std::max(top, m);
  }
  std::map<int, double> bins = histogramOf(out.report);
  for (int b = 0; b <= W; ++b) EXPECT_EQ(bins[b], wantBins[b]) << "bin " << b;
  EXPECT_EQ(valueOf(out.report, "Max H0="), CStr(top));
  double mean = sum / best.size();
  EXPECT_NEAR(CDbl(valueOf(out.report, "Mean H0=")), mean, 1e-5);
  EXPECT_NEAR(CDbl(valueOf(out.report, "SD H0=")), std::sqrt(sumsq / best.size() - mean * mean), 1e-4);
  EXPECT_EQ(out.omaxgraph, top);
}

TEST(H0, HistogramBinsAddUpToTheResamplings) {
  std::string lg;
  for (int k = 0; k < 400; ++k) lg += "ACGTTGCAGG"[(k * 7 + k / 5) % 10];
  TestRun r(lg, lg.substr(33, 50));
  const RunOutcome& out = r.run({.EFWS = "12", .EFSD = "150", .seed = 3}).out;
  std::map<int, double> bins = histogramOf(out.report);
  ASSERT_EQ(bins.size(), 13u);
  double total = 0;
  for (auto& [b, n] : bins) total += n;
  EXPECT_EQ(total, 150.0);
  int maxBin = static_cast<int>(out.omaxgraph);
  for (auto& [b, n] : bins) EXPECT_TRUE(b <= maxBin || n == 0.0) << b;
  EXPECT_GT(bins[maxBin], 0.0);
}

TEST(H0, OneOrNoResamplingFieldStillScansResamplingZero) {
  for (const char* efsd : {"1", "", "0"}) {
    TestRun r("ACGTTGCAACGTAGGCATCG", "TTGCAACG");
    const RunOutcome& out = r.run({.EFWS = "5", .EFSD = efsd, .seed = 4}).out;
    std::map<int, double> bins = histogramOf(out.report);
    double total = 0;
    for (auto& [b, n] : bins) total += n;
    EXPECT_EQ(total, 1.0) << "EFSD \"" << efsd << "\"";
    // One value: its SD is 0, or not a number where the rounding goes below 0.
    std::string sd = valueOf(out.report, "SD H0=");
    EXPECT_TRUE(sd == "0" || sd == "NaN") << sd;
    EXPECT_EQ(valueOf(out.report, "Mean H0="), valueOf(out.report, "Max H0="));
  }
}

TEST(H0, MaximaPastTheLastBinAreNotKept) {
  // Cells of 2 lift the scores up to 2 W, past the histogram's last bin.
  TestRun r("AAAAAAAAAAAAAAAAAAAA", "AAAAAA");
  for (int b = 1; b <= 4; ++b) r.st.matrice[b][b] = 2.0f;
  const RunOutcome& out = r.run({.EFWS = "5", .EFIdentities = "100", .EFSD = "10"}).out;
  EXPECT_EQ(out.omaxgraph, 10.0f);
  std::map<int, double> bins = histogramOf(out.report);
  ASSERT_EQ(bins.size(), 6u);
  for (auto& [b, n] : bins) EXPECT_EQ(n, 0.0) << b;
  EXPECT_EQ(out.omeangraph, 10.0f);
}

TEST(H0, LongestSequenceWithoutBaseIsRefusedBeforeAnyChange) {
  for (const char* lg : {"NNNNNNNNNN", ""}) {
    ComparisonState st;
    testing::openWith(st, lg, "ACGT");
    st.m2 = MemoryBlock(3);
    st.m2.set(0, 77);
    st.changegraph = false;
    RecordingHost host(st);
    RunOutcome out = rumcompute(st, {.EFWS = "4", .CBClipboard = true}, host);
    EXPECT_TRUE(out.refused);
    ASSERT_EQ(host.messages.size(), 1u);
    EXPECT_EQ(host.messages[0], out.refusal);
    EXPECT_NE(out.refusal.find("no base"), std::string::npos);
    EXPECT_EQ(st.m2.size(), 3);
    EXPECT_EQ(st.m2.get(0), 77);
    EXPECT_FALSE(st.changegraph);
    EXPECT_FALSE(st.running);
    EXPECT_EQ(host.doEventsCalls, 0);
    EXPECT_EQ(host.clipboardCalls, 0);

    Form form;
    form.Results = "before";
    endOfRun(st, form, out, host, [] { FAIL() << "no drawing for a refused run"; });
    EXPECT_EQ(form.Results, "before");
    EXPECT_EQ(host.beeps, 0);
  }
  // CpG mode refuses the same way.
  EXPECT_TRUE(TestRun("NNNN").run({.CBCPG = true}).out.refused);
}

}  // namespace
}  // namespace trelvane
