// kernel_equivalence_test.cpp -- every row kernel and thread count against the scalar scan, byte for byte.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <random>

#include "engine/scan.h"
#include "engine/scan_kernels.h"
#include "engine_test_util.h"

namespace trelvane {
namespace {

using testing::readBytes;
using testing::RecordingHost;

// One random comparison: the window's state and the fields of a run.
struct Case {
  std::string lg, sh;
  std::vector<std::pair<int, uint8_t>> oddBytes;  // bytes above 4 poked into m0 (first) or m1
  float matrice[5][5] = {};
  RunSettings s;
  int stopAfter = -1;
};

// Everything a run leaves that anyone can see.
struct Seen {
  std::string report, clipboard, result, m2;
  std::vector<std::string> messages, efAnaTo;
  std::vector<int> progress;
  int doEvents = 0, clipboardCalls = 0;
  bool stopped = false, written = false;
  std::string figures;  // the result properties, bit for bit
};

std::string bitsOf(const RunOutcome& o) {
  const float f[] = {o.maxgraph, o.meangraph, o.sdgraph, o.omeangraph, o.osdgraph, o.omaxgraph,
                     o.sumu2bas, o.sumu2up};
  std::string out(reinterpret_cast<const char*>(f), sizeof f);
  out += std::to_string(o.windgraph) + "|" + o.EF_MaxX;
  return out;
}

Seen runCase(const Case& k, const std::string& kernel, int threads) {
  ComparisonState st;
  testing::openWith(st, k.lg, k.sh);
  for (auto [at, b] : k.oddBytes) {
    if (at >= 0) st.m0.set(at % (static_cast<int>(k.lg.size()) + 1), b);
    else st.m1.set((-at) % (static_cast<int>(k.sh.size()) + 1), b);
  }
  std::memcpy(st.matrice, k.matrice, sizeof st.matrice);
  RunSettings s = k.s;
  s.kernel = kernel;
  s.threads = threads;
  // One file a process: ctest may run the tests of this file side by side.
  std::filesystem::path path = std::filesystem::temp_directory_path() /
                               ("trelvane_kernels_" + std::to_string(::getpid()) + "_" + kernel +
                                std::to_string(threads));
  std::filesystem::remove(path);
  s.resultPath = path.string();
  RecordingHost host(st, k.stopAfter);
  RunOutcome out = rumcompute(st, s, host);
  Seen seen;
  seen.report = out.report;
  seen.clipboard = host.clipboard;
  seen.result = std::filesystem::exists(path) ? readBytes(path.string()) : "(none)";
  std::filesystem::remove(path);
  seen.m2.assign(reinterpret_cast<const char*>(st.m2.data()), static_cast<std::size_t>(st.m2.size()));
  seen.messages = host.messages;
  seen.efAnaTo = host.efAnaTo;
  seen.progress = host.progressValues;
  seen.doEvents = host.doEventsCalls;
  seen.clipboardCalls = host.clipboardCalls;
  seen.stopped = out.stopped;
  seen.written = out.resultWritten;
  seen.figures = bitsOf(out);
  return seen;
}

void expectSame(const Seen& a, const Seen& b, const std::string& what) {
  EXPECT_EQ(a.report, b.report) << what;
  EXPECT_EQ(a.clipboard, b.clipboard) << what;
  EXPECT_EQ(a.result, b.result) << what;
  EXPECT_EQ(a.m2, b.m2) << what;
  EXPECT_EQ(a.messages, b.messages) << what;
  EXPECT_EQ(a.efAnaTo, b.efAnaTo) << what;
  EXPECT_EQ(a.progress, b.progress) << what;
  EXPECT_EQ(a.doEvents, b.doEvents) << what;
  EXPECT_EQ(a.clipboardCalls, b.clipboardCalls) << what;
  EXPECT_EQ(a.stopped, b.stopped) << what;
  EXPECT_EQ(a.written, b.written) << what;
  EXPECT_EQ(a.figures, b.figures) << what;
}

std::string randomLetters(std::mt19937& gen, int n, int nRunChance) {
  std::string out;
  while (static_cast<int>(out.size()) < n) {
    if (static_cast<int>(gen() % 100) < nRunChance) out.append(1 + gen() % 12, 'N');
    else out += "ACGT"[gen() % 4];
  }
  out.resize(static_cast<std::size_t>(n));
  return out;
}

// Cells that tie often (eighths), that round (odd decimals), negative ones,
// and now and then a not-a-number or an infinite cell.
void randomMatrix(std::mt19937& gen, float (&m)[5][5]) {
  const int kind = static_cast<int>(gen() % 4);
  std::uniform_real_distribution<float> any(-1.0f, 1.0f);
  for (int a = 0; a < 5; ++a)
    for (int b = 0; b < 5; ++b) {
      bool edge = a == 0 || b == 0;
      float v;
      if (kind == 0) v = (!edge && a == b) ? 1.0f : 0.0f;  // identity
      else if (kind == 1) v = edge ? 0.0f : static_cast<float>(static_cast<int>(gen() % 17) - 4) / 8.0f;
      else v = (edge && gen() % 3 != 0) ? 0.0f : any(gen);
      if (kind == 3 && gen() % 12 == 0) v = std::nanf("");
      if (kind == 3 && gen() % 40 == 0) v = gen() % 2 ? INFINITY : -INFINITY;
      m[a][b] = v;
    }
}

Case randomCase(std::mt19937& gen) {
  Case k;
  const int nlong = 1 + static_cast<int>(gen() % 260);
  const int nshort = 1 + static_cast<int>(gen() % (gen() % 5 == 0 ? 300 : 140));
  const int nChance = gen() % 3 == 0 ? 4 : 0;
  k.lg = randomLetters(gen, nlong, nChance);
  if (k.lg.find_first_not_of('N') == std::string::npos) k.lg[0] = 'A';
  k.sh = randomLetters(gen, nshort, nChance);
  auto oddByte = [&] { return static_cast<uint8_t>(5 + gen() % 250); };
  if (gen() % 10 == 0) k.oddBytes.push_back({static_cast<int>(gen() % 300), oddByte()});
  if (gen() % 10 == 0) k.oddBytes.push_back({-static_cast<int>(gen() % 300), oddByte()});
  randomMatrix(gen, k.matrice);

  RunSettings& s = k.s;
  const int W = gen() % 6 == 0 ? static_cast<int>(gen() % 256) : static_cast<int>(gen() % 40);
  s.EFWS = gen() % 25 == 0 ? std::string() : std::to_string(W);
  const int from = static_cast<int>(gen() % (nlong + 8)) - 2;
  s.EFAnaFrom = gen() % 15 == 0 ? std::string() : std::to_string(from);
  s.EFAnaTo = gen() % 2 ? std::string("max") : std::to_string(static_cast<int>(gen() % (nlong + 10)) - 2);
  s.EFSD = gen() % 15 == 0 ? std::string() : std::to_string(gen() % 300);
  // Mostly a threshold that lists a few windows, now and then one that lists
  // none (not a number) or many.
  const double wFor = W > 0 ? W : 1;
  switch (gen() % 6) {
    case 0: s.EFIdentities = "NaN"; break;
    case 1: s.EFIdentities = std::to_string(wFor * 0.5); break;
    default: s.EFIdentities = std::to_string(wFor * (0.7 + 0.05 * (gen() % 8))); break;
  }
  s.display0 = gen() % 4 == 0;
  s.Display1 = gen() % 4 == 0;
  s.CBCPG = gen() % 8 == 0;
  s.CBClipboard = true;
  s.CBFile = true;
  s.CBFreqIB = gen() % 2;
  s.seed = gen();
  s.progressWidth = 262;
  if (gen() % 6 == 0) k.stopAfter = static_cast<int>(gen() % (nlong + 50));
  return k;
}

TEST(KernelEquivalence, TableHoldsScalarAndThePortableKernels) {
  const auto& table = scanKernels();
  ASSERT_GE(table.size(), 2u);
  EXPECT_STREQ(table.front().name, "scalar");
  EXPECT_TRUE(table.front().isScalar());
  ASSERT_NE(findScanKernel("generic"), nullptr);
  EXPECT_FALSE(findScanKernel("generic")->isScalar());
  EXPECT_EQ(findScanKernel("auto"), &table.back());
  EXPECT_EQ(findScanKernel("avx512"), nullptr);
  EXPECT_EQ(findScanKernel(""), nullptr);
#if defined(__x86_64__)
  EXPECT_NE(findScanKernel("sse2"), nullptr);
  EXPECT_EQ(findScanKernel("avx2") != nullptr, static_cast<bool>(__builtin_cpu_supports("avx2")));
#endif
}

// Each kernel against the reference on one row step, including the tail
// starts that no whole vector covers and scores that are not numbers.
TEST(KernelEquivalence, RowStepMatchesReferenceOnEveryLength) {
  std::mt19937 gen(11);
  const float matrice[5][5] = {{0, 0, 0, 0, 0},
                               {0, 0.91f, 0.03f, -0.05f, 0.01f},
                               {0, 0.07f, std::nanf(""), 0.01f, 0.09f},
                               {0, 0.02f, 0.11f, 0.77f, -0.1f},
                               {0, 0.013f, 0.047f, 0.19f, 0.75f}};
  CellTable cells(matrice);
  for (int W : {0, 1, 7, 30}) {
    for (int64_t lastshort = 0; lastshort <= 300; lastshort += 1 + lastshort / 9) {
      const int64_t nshort = lastshort + W;
      std::vector<uint8_t> m1(static_cast<std::size_t>(nshort) + 100, 0);
      for (int64_t j = 0; j < nshort; ++j) m1[j] = static_cast<uint8_t>(1 + gen() % 4);
      ScanColumns cols(cells, m1.data(), nshort, W);
      ScoreRow start(static_cast<std::size_t>(lastshort) + 1);
      for (float& v : start) v = static_cast<float>(static_cast<int>(gen() % 2000) - 500) / 64.0f;
      const uint8_t out = static_cast<uint8_t>(1 + gen() % 4), in = static_cast<uint8_t>(1 + gen() % 4);
      ScoreRow expected = start;
      advanceRow(expected.data(), m1.data(), lastshort, W, cells.column(out), cells.column(in));
      for (const ScanKernel& k : scanKernels()) {
        if (k.isScalar()) continue;
        ScoreRow row = start;
        std::vector<float> blocks(static_cast<std::size_t>(scanBlockCount(lastshort) * kBlockMaxLanes) + 1, 7.0f);
        float best = k.advanceBlocks(row.data(), lastshort, cols.leave(out), cols.enter(in),
                                     blocks.data());
        float bestExpected = -INFINITY;
        std::vector<float> blockBest(static_cast<std::size_t>(scanBlockCount(lastshort)), -INFINITY);
        for (int64_t j = 1; j <= lastshort; ++j) {
          ASSERT_EQ(std::memcmp(&row[j], &expected[j], sizeof(float)), 0) << k.name << " j=" << j;
          if (expected[j] > bestExpected) bestExpected = expected[j];
          float& b = blockBest[static_cast<std::size_t>(j / kScanBlock)];
          if (expected[j] > b) b = expected[j];
        }
        // Each block is a candidate for its own best score, and not for the
        // next Single above it.
        for (std::size_t b = 0; b < blockBest.size(); ++b) {
          if (blockBest[b] == -INFINITY) continue;
          uint64_t bits[8] = {};
          k.blockCandidates(blocks.data(), static_cast<int64_t>(blockBest.size()), blockBest[b], bits);
          EXPECT_TRUE((bits[b / 64] >> (b % 64)) & 1) << k.name << " block " << b;
          k.blockCandidates(blocks.data(), static_cast<int64_t>(blockBest.size()),
                            std::nextafter(blockBest[b], INFINITY), bits);
          EXPECT_FALSE((bits[b / 64] >> (b % 64)) & 1) << k.name << " block " << b;
        }
        EXPECT_EQ(best, bestExpected) << k.name;
        ScoreRow row2 = start;
        EXPECT_EQ(k.advanceMax(row2.data(), lastshort, cols.leave(out), cols.enter(in)),
                  bestExpected) << k.name;
        EXPECT_EQ(std::memcmp(row2.data(), row.data(), row.size() * sizeof(float)), 0) << k.name;
      }
    }
  }
}

// Two steps a pass against two reference steps, on every length around the
// groups of 8 and the edges above and below them.
TEST(KernelEquivalence, PairStepMatchesTwoReferenceSteps) {
  std::mt19937 gen(23);
  const float matrice[5][5] = {{0, 0, 0, 0, 0},
                               {0, 1.0f, -0.5f, 0.25f, INFINITY},
                               {0, 0.07f, std::nanf(""), 0.01f, 0.09f},
                               {0, 0.02f, 0.11f, 0.77f, -0.1f},
                               {0, 0.013f, 0.047f, -INFINITY, 0.75f}};
  CellTable cells(matrice);
  int pairs = 0, lengths = 0;
  for (int W : {0, 1, 8, 30}) {
    for (int64_t lastshort = 0; lastshort <= 400; lastshort += lastshort < 140 ? 1 : 7) {
      ++lengths;
      const int64_t nshort = lastshort + W;
      std::vector<uint8_t> m1(static_cast<std::size_t>(nshort) + 100, 0);
      // mostly the finite cells, now and then an infinite or not-a-number one
      for (int64_t j = 0; j < nshort; ++j) m1[j] = static_cast<uint8_t>(gen() % 16 == 0 ? 2 : 1 + gen() % 2 * 2);
      // a not-a-number cell where the groups meet the starts done one by one
      if (nshort > 8 + W && gen() % 3 == 0) m1[static_cast<std::size_t>(6 + W)] = 2;
      ScanColumns cols(cells, m1.data(), nshort, W);
      ScoreRow start(static_cast<std::size_t>(lastshort) + 1);
      for (float& v : start) v = static_cast<float>(static_cast<int>(gen() % 2000) - 500) / 64.0f;
      uint8_t base[4];
      for (uint8_t& b : base) b = static_cast<uint8_t>(1 + gen() % 4);
      const float start1 = static_cast<float>(static_cast<int>(gen() % 400) - 100) / 8.0f;
      ScoreRow expected = start;
      advanceRow(expected.data(), m1.data(), lastshort, W, cells.column(base[0]), cells.column(base[1]));
      float best1 = -INFINITY, best2 = -INFINITY;
      for (int64_t j = 1; j <= lastshort; ++j) best1 = expected[j] > best1 ? expected[j] : best1;
      expected[0] = start1;
      advanceRow(expected.data(), m1.data(), lastshort, W, cells.column(base[2]), cells.column(base[3]));
      for (int64_t j = 1; j <= lastshort; ++j) best2 = expected[j] > best2 ? expected[j] : best2;
      for (const ScanKernel& k : scanKernels()) {
        if (!k.advanceMaxPair) continue;
        ScoreRow row = start;
        float max1 = 7.0f, max2 = 7.0f;
        // the first step from the copies placed for it, half the time
        const bool back = lastshort % 2 == 0;
        k.advanceMaxPair(row.data(), lastshort, back ? cols.leaveBack(base[0]) : cols.leave(base[0]),
                         back ? cols.enterBack(base[1]) : cols.enter(base[1]), start1,
                         cols.leave(base[2]), cols.enter(base[3]), &max1, &max2);
        row[0] = expected[0];
        ASSERT_EQ(std::memcmp(row.data(), expected.data(), row.size() * sizeof(float)), 0)
            << k.name << " W=" << W << " lastshort=" << lastshort;
        EXPECT_EQ(std::memcmp(&max1, &best1, sizeof max1), 0) << k.name << " lastshort=" << lastshort;
        EXPECT_EQ(std::memcmp(&max2, &best2, sizeof max2), 0) << k.name << " lastshort=" << lastshort;
        ++pairs;
      }
    }
  }
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2")) {
    EXPECT_EQ(pairs, lengths);
  }
#endif
}

// Whole runs: every kernel on one and two threads gives the scalar run's
// report, rows, result file, m2, stage texts, progress and yields.
TEST(KernelEquivalence, RandomRunsGiveTheScalarBytes) {
  std::mt19937 gen(2024);
  for (int n = 0; n < 1500; ++n) {
    Case k = randomCase(gen);
    const Seen reference = runCase(k, "scalar", 1);
    for (const ScanKernel& kernel : scanKernels()) {
      for (int threads : {1, 2}) {
        if (kernel.isScalar() && threads == 1) continue;
        std::string what = "case " + std::to_string(n) + " kernel " + kernel.name + " threads " +
                           std::to_string(threads) + " W=" + k.s.EFWS + " from=" + k.s.EFAnaFrom +
                           " to=" + k.s.EFAnaTo + " sd=" + k.s.EFSD + " id=" + k.s.EFIdentities;
        expectSame(runCase(k, kernel.name, threads), reference, what);
        if (::testing::Test::HasFailure()) return;
      }
    }
  }
}

// With two threads the rows and the alignments are written beside the scan,
// a stretch of positions at a time: stops anywhere in it, and windows far
// outside m0 (copied, as the scan reuses their buffer), give the same bytes.
TEST(KernelEquivalence, RowsWrittenBesideTheScanMatchAcrossStretchesAndStops) {
  std::mt19937 gen(41);
  Case k;
  k.lg = randomLetters(gen, 1400, 2);
  k.sh = k.lg.substr(300, 90) + randomLetters(gen, 60, 0);
  for (int a = 1; a <= 4; ++a)
    for (int b = 1; b <= 4; ++b) k.matrice[a][b] = a == b ? 1.0f : 0.0f;
  k.s.EFWS = "20";
  k.s.EFSD = "50";
  k.s.EFIdentities = "12";
  k.s.CBClipboard = true;
  k.s.CBFile = true;
  k.s.seed = 9;
  struct Range {
    const char* from;
    const char* to;
  };
  for (Range r : {Range{"1", "max"}, Range{"-1500", "-600"}, Range{"-700", "300"}, Range{"1300", "max"}}) {
    k.s.EFAnaFrom = r.from;
    k.s.EFAnaTo = r.to;
    for (int stop : {-1, 1, 255, 256, 257, 700, 1100}) {
      k.stopAfter = stop;
      const Seen reference = runCase(k, "scalar", 1);
      for (const ScanKernel& kernel : scanKernels()) {
        if (kernel.isScalar()) continue;
        expectSame(runCase(k, kernel.name, 2), reference,
                   std::string(kernel.name) + " from " + r.from + " stop " + std::to_string(stop));
        if (::testing::Test::HasFailure()) return;
      }
    }
  }
}

// The bundled example with long ties and many listed alignments.
TEST(KernelEquivalence, ExampleRunWithListingGivesTheScalarBytes) {
  Case k;
  k.lg = testing::readFasta(std::string(TRELVANE_EXAMPLES) + "/HUMHBB.fa").substr(30000, 6000);
  k.sh = testing::readFasta(std::string(TRELVANE_EXAMPLES) + "/V00508.fa");
  for (int a = 1; a <= 4; ++a)
    for (int b = 1; b <= 4; ++b) k.matrice[a][b] = a == b ? 0.9f : 0.033f;
  k.s.EFWS = "25";
  k.s.EFSD = "700";
  k.s.EFIdentities = "20";
  k.s.CBClipboard = true;
  k.s.CBFile = true;
  k.s.seed = 5;
  const Seen reference = runCase(k, "scalar", 1);
  EXPECT_NE(reference.report.find("+++++"), std::string::npos);
  for (const ScanKernel& kernel : scanKernels())
    for (int threads : {1, 2}) expectSame(runCase(k, kernel.name, threads), reference, kernel.name);
}

// A stop during the first scan on two threads: the random expectation that
// ran ahead on its thread shows nothing, and the host sees resampling 1's
// yield only, as on one thread.
TEST(KernelEquivalence, StopWhileTheRandomExpectationRunsAhead) {
  Case k;
  std::mt19937 gen(9);
  k.lg = randomLetters(gen, 3000, 0);
  k.sh = randomLetters(gen, 400, 0);
  for (int a = 1; a <= 4; ++a) k.matrice[a][a] = 1.0f;
  k.s.EFWS = "20";
  k.s.EFSD = "3000";
  k.s.seed = 4;
  k.stopAfter = 2000;
  const Seen reference = runCase(k, "scalar", 1);
  EXPECT_TRUE(reference.stopped);
  EXPECT_EQ(reference.doEvents, 2001);
  EXPECT_EQ(reference.messages.back(), "Estimate of SD");
  for (const ScanKernel& kernel : scanKernels()) expectSame(runCase(k, kernel.name, 2), reference, kernel.name);
}

TEST(KernelEquivalence, UnknownKernelNameRunsTheFastestOne) {
  Case k;
  k.lg = "ACGTTGCAACGTAGGCTAGCTAGGATCCATGCA";
  k.sh = "ACGTAGGCTAGC";
  for (int a = 1; a <= 4; ++a) k.matrice[a][a] = 1.0f;
  k.s.EFWS = "5";
  k.s.CBClipboard = true;
  k.s.seed = 1;
  expectSame(runCase(k, "no-such-kernel", 1), runCase(k, "scalar", 1), "unknown name");
}

}  // namespace
}  // namespace trelvane
