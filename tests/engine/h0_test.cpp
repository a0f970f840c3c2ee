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

// The report's lines that start with key, without the key.
std::string valueOf(const std::string& report, const std::string& key) {
  for (const std::string& l : linesOf(report))
    if (l.rfind(key, 0) == 0) return l.substr(key.size());
  return "(missing)";
}

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
  ComparisonState st;
  testing::openWith(st, lg, sh);
  const float model[4][4] = {{0.9f, 0.03f, 0.05f, 0.02f},
                             {0.07f, 0.8f, 0.01f, 0.12f},
                             {0.02f, 0.11f, 0.77f, 0.1f},
                             {0.01f, 0.05f, 0.19f, 0.75f}};
  for (int s = 1; s <= 4; ++s)
    for (int l = 1; l <= 4; ++l) st.matrice[s][l] = model[s - 1][l - 1];
  RunSettings s;
  s.EFWS = "8";
  s.EFSD = "41";
  s.EFIdentities = "100";
  s.seed = 77;
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);

  // The random sequence: bases of the long sequence drawn with replacement.
  Rnd rnd(77);
  std::vector<uint8_t> res;
  for (int off = 0; off <= nresample + W; ++off) {
    uint8_t b = 0;
    while (b == 0) b = testing::codeOf(lg[static_cast<std::size_t>(rnd() * lg.size())]);
    res.push_back(b);
  }
  // Its windows scored as the long sequence's, in a whole table.
  const int lastshort = static_cast<int>(sh.size()) - W;
  auto cell = [&](int j, uint8_t r) { return st.matrice[testing::codeOf(sh[j])][r]; };
  std::vector<float> prev, best;
  for (int r = 0; r <= nresample; ++r) {
    std::vector<float> row(static_cast<std::size_t>(lastshort) + 1);
    for (int j = 0; j <= lastshort; ++j) {
      if (r == 0 || j == 0) {
        float sum = 0.0f;
        for (int k = 0; k < W; ++k) sum += cell(j + k, res[r + k]);
        row[j] = sum;
      } else {
        float v = prev[j - 1] - cell(j - 1, res[r - 1]);
        row[j] = v + cell(j + W - 1, res[r + W - 1]);
      }
    }
    float m = 0;
    for (float v : row) m = std::max(m, v);
    best.push_back(m);
    prev = row;
  }
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
  ComparisonState st;
  testing::openWith(st, lg, lg.substr(33, 50));
  RunSettings s;
  s.EFWS = "12";
  s.EFSD = "150";
  s.seed = 3;
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);
  std::map<int, double> bins = histogramOf(out.report);
  ASSERT_EQ(bins.size(), 13u);
  double total = 0;
  for (auto& [b, n] : bins) total += n;
  EXPECT_EQ(total, 150.0);
  int maxBin = static_cast<int>(out.omaxgraph);
  for (auto& [b, n] : bins) {
    if (b > maxBin) {
      EXPECT_EQ(n, 0.0) << b;
    }
  }
  EXPECT_GT(bins[maxBin], 0.0);
}

TEST(H0, OneOrNoResamplingFieldStillScansResamplingZero) {
  ComparisonState st;
  testing::openWith(st, "ACGTTGCAACGTAGGCATCG", "TTGCAACG");
  for (const char* efsd : {"1", "", "0"}) {
    RunSettings s;
    s.EFWS = "5";
    s.EFSD = efsd;
    s.seed = 4;
    RecordingHost host(st);
    RunOutcome out = rumcompute(st, s, host);
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
  ComparisonState st;
  testing::openWith(st, "AAAAAAAAAAAAAAAAAAAA", "AAAAAA");
  for (int b = 1; b <= 4; ++b) st.matrice[b][b] = 2.0f;
  RunSettings s;
  s.EFWS = "5";
  s.EFSD = "10";
  s.EFIdentities = "100";
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);
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
    RunSettings s;
    s.EFWS = "4";
    s.CBClipboard = true;
    RecordingHost host(st);
    RunOutcome out = rumcompute(st, s, host);
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
  ComparisonState st;
  st.open();
  testing::setLong(st, "NNNN");
  RunSettings s;
  s.CBCPG = true;
  RecordingHost host(st);
  EXPECT_TRUE(rumcompute(st, s, host).refused);
}

}  // namespace
}  // namespace trelvane
