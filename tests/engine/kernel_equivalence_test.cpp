// kernel_equivalence_test.cpp -- every row kernel and thread count against the scalar scan, byte for byte.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <random>

#include "engine/scan.h"
#include "engine/scan_batch.h"
#include "engine/kernels/scan_kernels.h"
#include "engine/scan_tail.h"
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
  int threads = 1;
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
  seen.threads = threads;
  return seen;
}

void expectSame(const Seen& a, const Seen& b, const std::string& what) {
  EXPECT_EQ(a.report, b.report) << what;
  EXPECT_EQ(a.clipboard, b.clipboard) << what;
  EXPECT_EQ(a.result, b.result) << what;
  EXPECT_EQ(a.m2, b.m2) << what;
  EXPECT_EQ(a.messages, b.messages) << what;
  EXPECT_EQ(a.efAnaTo, b.efAnaTo) << what;
  if (a.threads == 1 && b.threads == 1) {
    EXPECT_EQ(a.progress, b.progress) << what;
  } else {
    // Beside the scan, the resamplings done on the other thread add to the
    // bar: as many updates and, where the range is a forward one (the
    // one-thread bar rises from 0), none below the one-thread value and
    // never back.
    ASSERT_EQ(a.progress.size(), b.progress.size()) << what;
    const bool rising = b.threads == 1 && std::is_sorted(b.progress.begin(), b.progress.end()) &&
                        (b.progress.empty() || b.progress.front() >= 0);
    for (std::size_t k = 0; rising && k < a.progress.size(); ++k) {
      EXPECT_GE(a.progress[k], b.progress[k]) << what << " update " << k;
      if (k > 0) EXPECT_GE(a.progress[k], a.progress[k - 1]) << what << " update " << k;
    }
  }
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
  EXPECT_EQ(findScanKernel("neon"), nullptr);
  EXPECT_EQ(findScanKernel(""), nullptr);
#if defined(__x86_64__)
  EXPECT_NE(findScanKernel("sse2"), nullptr);
  EXPECT_EQ(findScanKernel("avx2") != nullptr, static_cast<bool>(__builtin_cpu_supports("avx2")));
  EXPECT_EQ(findScanKernel("avx512") != nullptr, __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq"));
#endif
}

// A matrix with negative, infinite and not-a-number cells, mostly finite.
struct OddCells {
  float matrice[5][5] = {{0, 0, 0, 0, 0},
                         {0, 1.0f, -0.5f, 0.25f, INFINITY},
                         {0, 0.07f, std::nanf(""), 0.01f, 0.09f},
                         {0, 0.02f, 0.11f, 0.77f, -0.1f},
                         {0, 0.013f, 0.047f, -INFINITY, 0.75f}};
};

// A shortest sequence mostly of the finite cells' bases, now and then one
// that gives an infinite or not-a-number score.
std::vector<uint8_t> shortBases(std::mt19937& gen, int64_t nshort) {
  std::vector<uint8_t> m1(static_cast<std::size_t>(nshort) + 100, 0);
  for (int64_t j = 0; j < nshort; ++j) m1[j] = static_cast<uint8_t>(gen() % 16 == 0 ? 2 : 1 + gen() % 2 * 2);
  return m1;
}

ScoreRow randomRow(std::mt19937& gen, int64_t lastshort) {
  ScoreRow row(static_cast<std::size_t>(lastshort) + 1);
  for (float& v : row) v = static_cast<float>(static_cast<int>(gen() % 2000) - 500) / 64.0f;
  return row;
}

bool sameBits(float a, float b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// Each kernel's step over whole blocks against the reference on every row
// length around the groups and blocks: the scores, each block's best (as
// its candidate test sees it) and the greatest of all.
TEST(KernelEquivalence, SpanStepMatchesReferenceOnEveryLength) {
  std::mt19937 gen(11);
  OddCells odd;
  CellTable cells(odd.matrice);
  int lengths = 0;
  for (int W : {0, 1, 7, 30}) {
    for (int64_t lastshort = 0; lastshort <= 700; lastshort += lastshort < 140 ? 1 : 1 + lastshort / 9) {
      ++lengths;
      const int64_t nshort = lastshort + W;
      std::vector<uint8_t> m1 = shortBases(gen, nshort);
      ScanColumns cols(cells, m1.data(), nshort, W);
      const ScoreRow start = randomRow(gen, lastshort);
      const uint8_t out = static_cast<uint8_t>(1 + gen() % 4), in = static_cast<uint8_t>(1 + gen() % 4);
      ScoreRow expected = start;
      advanceRow(expected.data(), m1.data(), lastshort, W, cells.column(out), cells.column(in));
      const int64_t blocks = scanBlockCount(lastshort);
      std::vector<float> blockBest(static_cast<std::size_t>(blocks), -INFINITY);
      for (int64_t j = 1; j <= lastshort; ++j) {
        float& b = blockBest[static_cast<std::size_t>(j / kScanBlock)];
        if (expected[j] > b) b = expected[j];
      }
      float bestExpected = -INFINITY;
      for (float b : blockBest) bestExpected = b > bestExpected ? b : bestExpected;
      for (const ScanKernel& k : scanKernels()) {
        if (k.isScalar() || lastshort < 1) continue;
        ScoreRow next(start.size() + 16, 7.0f);
        std::vector<float> blockmax(static_cast<std::size_t>((blocks + 1) * kBlockMaxLanes), 7.0f);
        // two calls, split where a block begins, as the tiles of a batch do;
        // each returns the best of its own blocks
        const int64_t split = blocks > 2 ? 2 * kScanBlock : lastshort + 1;
        const float below =
            k.advanceSpan(start.data(), next.data(), 1, split - 1, cols.leave(out), cols.enter(in), blockmax.data());
        float above = -INFINITY;
        if (split <= lastshort)
          above = k.advanceSpan(start.data(), next.data(), split, lastshort, cols.leave(out), cols.enter(in),
                                blockmax.data());
        const auto splitBlock = split > lastshort ? blockBest.end() : blockBest.begin() + split / kScanBlock;
        const auto greatest = [](auto from, auto to) {
          float m = -INFINITY;
          for (; from != to; ++from) m = *from > m ? *from : m;
          return m;
        };
        EXPECT_TRUE(sameBits(below, greatest(blockBest.begin(), splitBlock))) << k.name << " W=" << W;
        EXPECT_TRUE(sameBits(above, greatest(splitBlock, blockBest.end()))) << k.name << " W=" << W;
        for (int64_t j = 1; j <= lastshort; ++j)
          ASSERT_TRUE(sameBits(next[j], expected[j])) << k.name << " W=" << W << " j=" << j;
        EXPECT_EQ(next[0], 7.0f) << k.name;  // start 0 is the caller's
        EXPECT_EQ(next[lastshort + 1], 7.0f) << k.name;
        EXPECT_TRUE(sameBits(k.blocksMax(blockmax.data(), blocks), bestExpected)) << k.name;
        // Each block is a candidate for its own best score, and not for the
        // next Single above it.
        for (int64_t b = 0; b < blocks; ++b) {
          const float best = blockBest[static_cast<std::size_t>(b)];
          if (best == -INFINITY) continue;
          uint64_t bits[16] = {};
          k.blockCandidates(blockmax.data(), blocks, best, bits);
          EXPECT_TRUE((bits[b / 64] >> (b % 64)) & 1) << k.name << " block " << b;
          if (best == INFINITY) continue;
          k.blockCandidates(blockmax.data(), blocks, std::nextafter(best, INFINITY), bits);
          EXPECT_FALSE((bits[b / 64] >> (b % 64)) & 1) << k.name << " block " << b;
        }
      }
    }
  }
  EXPECT_GT(lengths, 200);
}

// The matches of a span of starts, whole (the fast path) or short: a tie is
// an equal score, a listed start one at or above the threshold, and a
// not-a-number on either side is neither.
TEST(KernelEquivalence, BlockMatchFindsTiesAndListedStarts) {
  std::mt19937 gen(41);
  const float values[] = {0.0f, 1.0f, 2.0f, 2.5f, NAN, INFINITY, -INFINITY};
  std::vector<float> row(400);
  int spans = 0;
  for (int round = 0; round < 40; ++round) {
    for (float& v : row) v = values[gen() % 7];
    const float maxscore = values[gen() % 7], threshold = values[gen() % 7];
    for (int64_t lo : {0, 1, 7, 64, 131, 300})
      for (int64_t count = 1; count <= kMatchSpan; ++count) {
        uint64_t tiesExpected = 0, listedExpected = 0;
        for (int64_t k = 0; k < count; ++k) {
          tiesExpected |= static_cast<uint64_t>(row[lo + k] == maxscore) << k;
          listedExpected |= static_cast<uint64_t>(threshold <= row[lo + k]) << k;
        }
        for (const ScanKernel& kernel : scanKernels()) {
          if (kernel.isScalar()) continue;
          uint64_t ties = ~uint64_t{0}, listed = ~uint64_t{0};
          kernel.blockMatch(row.data(), lo, count, maxscore, threshold, &ties, &listed);
          ASSERT_EQ(ties, tiesExpected) << kernel.name << " lo " << lo << " count " << count;
          ASSERT_EQ(listed, listedExpected) << kernel.name << " lo " << lo << " count " << count;
        }
        ++spans;
      }
  }
  EXPECT_EQ(spans, 40 * 6 * 64);
}

// A batch of steps, tile by tile, against as many reference steps one after
// the other, over several batches (the last row of one is the first of the
// next) and rows longer than a tile.
TEST(KernelEquivalence, BatchOfStepsMatchesReferenceSteps) {
  std::mt19937 gen(23);
  OddCells odd;
  CellTable cells(odd.matrice);
  for (int W : {0, 8, 30}) {
    for (int64_t lastshort : {int64_t{1}, int64_t{7}, int64_t{8}, int64_t{127}, int64_t{128}, int64_t{300},
                              RowBatch::kTile - 1, RowBatch::kTile, RowBatch::kTile + 9, RowBatch::kWideTile + 1,
                              3 * RowBatch::kTile + 200, 2 * RowBatch::kWideTile + 130}) {
      const int64_t nshort = lastshort + W;
      std::vector<uint8_t> m1 = shortBases(gen, nshort);
      ScanColumns cols(cells, m1.data(), nshort, W);
      const ScoreRow first = randomRow(gen, lastshort);
      for (const ScanKernel& k : scanKernels()) {
        if (k.isScalar()) continue;
        RowBatch batch(k, lastshort);
        // the same steps keeping only each one's best, as the random expectation does
        RowBatch bestOnly(k, lastshort, RowBatch::Keep::kBestOnly);
        // and keeping only the blocks a test looks into, for a listing
        // threshold from none listed to every score
        const float threshold = std::array{NAN, INFINITY, 1.5f, 0.0f, -INFINITY}[(lastshort + W) % 5];
        RowBatch candidates(k, lastshort, RowBatch::Keep::kCandidates, threshold);
        ASSERT_GE(batch.steps(), 2);
        ASSERT_GE(bestOnly.steps(), batch.steps());
        ASSERT_EQ(candidates.steps(), batch.steps());
        std::copy(first.begin(), first.end(), batch.before());
        std::copy(first.begin(), first.end(), bestOnly.before());
        std::copy(first.begin(), first.end(), candidates.before());
        ScoreRow expected = first;
        std::mt19937 bases(static_cast<uint32_t>(lastshort * 7 + W));
        // batches of every size from 1 up to the most, and the most twice
        std::vector<int> sizes;
        for (int n = 1; n <= batch.steps(); ++n) sizes.push_back(n);
        sizes.push_back(batch.steps());
        for (int n : sizes) {
          std::vector<const float*> leave, enter;
          std::vector<float> starts;
          std::vector<ScoreRow> rows;
          std::vector<float> bests;
          for (int q = 0; q < n; ++q) {
            const uint8_t out = static_cast<uint8_t>(bases() % 5), in = static_cast<uint8_t>(bases() % 5);
            leave.push_back(cols.leave(out));
            enter.push_back(cols.enter(in));
            advanceRow(expected.data(), m1.data(), lastshort, W, cells.column(out), cells.column(in));
            float best = -INFINITY;
            for (int64_t j = 1; j <= lastshort; ++j) best = expected[j] > best ? expected[j] : best;
            bests.push_back(best);
            expected[0] = static_cast<float>(static_cast<int>(bases() % 400) - 100) / 8.0f;
            starts.push_back(expected[0]);
            rows.push_back(expected);
          }
          batch.advance(n, leave.data(), enter.data(), starts.data());
          bestOnly.advance(n, leave.data(), enter.data(), starts.data());
          candidates.advance(n, leave.data(), enter.data(), starts.data());
          for (int q = 0; q < n; ++q) {
            ASSERT_EQ(std::memcmp(batch.row(q), rows[q].data(), rows[q].size() * sizeof(float)), 0)
                << k.name << " W=" << W << " lastshort=" << lastshort << " batch of " << n << " step " << q;
            EXPECT_TRUE(sameBits(batch.best(q), bests[q])) << k.name << " step " << q;
            EXPECT_TRUE(sameBits(bestOnly.best(q), bests[q])) << k.name << " best only, step " << q;
            EXPECT_TRUE(sameBits(candidates.best(q), bests[q])) << k.name << " candidates, step " << q;
            // every block holding a score at the lower of the threshold and
            // the maxscore is kept whole, with start 0
            float maxscore = 0.0f;
            if (bests[q] > maxscore) maxscore = bests[q];
            if (starts[q] > maxscore) maxscore = starts[q];
            const float lower = threshold < maxscore ? threshold : maxscore;
            const float* kept = candidates.row(q);
            ASSERT_TRUE(sameBits(kept[0], starts[q]));
            for (int64_t b = 0; b < scanBlockCount(lastshort); ++b) {
              const int64_t from = scanBlockLo(b), to = scanBlockHi(b, lastshort);
              if (std::none_of(rows[q].begin() + from, rows[q].begin() + to + 1, [&](float x) { return x >= lower; }))
                continue;
              ASSERT_EQ(std::memcmp(kept + from, rows[q].data() + from, (to - from + 1) * sizeof(float)), 0)
                  << k.name << " candidates, W=" << W << " lastshort=" << lastshort << " batch of " << n << " step "
                  << q << " block " << b;
            }
          }
          ASSERT_EQ(std::memcmp(candidates.before(), expected.data(), expected.size() * sizeof(float)), 0)
              << k.name << " candidates, W=" << W << " lastshort=" << lastshort << " batch of " << n;
          ASSERT_EQ(std::memcmp(bestOnly.before(), expected.data(), expected.size() * sizeof(float)), 0)
              << k.name << " best only, W=" << W << " lastshort=" << lastshort << " batch of " << n;
        }
      }
    }
  }
}

// The start scores of a batch, side by side, against the one-by-one sums.
TEST(KernelEquivalence, StartScoresMatchTheOneByOneSums) {
  std::mt19937 gen(5);
  OddCells odd;
  odd.matrice[2][2] = 0.07f;  // not-a-number cells stay in a third of the windows
  CellTable cells(odd.matrice);
  CellTable withNaN(OddCells{}.matrice);
  for (int W : {0, 1, 2, 5, 30, 255}) {
    std::vector<uint8_t> m1 = shortBases(gen, W + 1);
    std::vector<std::vector<uint8_t>> windows;
    for (int q = 0; q < 11; ++q) {
      std::vector<uint8_t> w(static_cast<std::size_t>(W) + 1);
      for (uint8_t& b : w) b = static_cast<uint8_t>(gen() % 6);  // with N and a byte above 4
      windows.push_back(w);
    }
    std::vector<const uint8_t*> wins;
    for (const auto& w : windows) wins.push_back(w.data());
    for (const CellTable* t : {&cells, &withNaN}) {
      for (int n = 0; n <= 11; ++n) {
        std::vector<float> first(static_cast<std::size_t>(n) + 1, 9.0f), zero(first);
        startScoresFromFirst(m1.data(), wins.data(), n, W, *t, first.data());
        startScoresFromZero(m1.data(), wins.data(), n, W, *t, zero.data());
        for (int q = 0; q < n; ++q) {
          EXPECT_TRUE(sameBits(first[q], fullScoreFromFirst(m1.data(), wins[q], W, *t))) << "W=" << W << " q=" << q;
          EXPECT_TRUE(sameBits(zero[q], fullScoreFromZero(m1.data(), wins[q], W, *t))) << "W=" << W << " q=" << q;
        }
        EXPECT_EQ(first[n], 9.0f);
      }
    }
  }
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

// An analysis range, as the fields give it.
struct Range {
  const char* from;
  const char* to;
};

// The fields of a run that lists its alignments and writes every output.
void listingSettings(Case& k, const char* W, const char* resamplings, const char* identities, uint64_t seed) {
  k.s.EFWS = W;
  k.s.EFSD = resamplings;
  k.s.EFIdentities = identities;
  k.s.CBClipboard = true;
  k.s.CBFile = true;
  k.s.seed = seed;
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
  listingSettings(k, "20", "50", "12", 9);
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

// Long enough for the scan along the longest sequence to go in parts on
// threads of their own: each part repeats the positions before it until its
// diagonals hold what the whole scan has. Every thread count, stops before,
// at and after the part boundaries and in the middle of a stretch, ranges
// outside the sequence, N runs, bytes above 4 and a matrix whose sums round.
TEST(KernelEquivalence, PartsOnThreadsOfTheirOwnGiveTheScalarBytes) {
  std::mt19937 gen(77);
  Case k;
  k.lg = randomLetters(gen, 13000, 1);
  // The last window of the shortest sequence at the first position of each
  // part (of the whole range, in 2, 3 and 4 parts): the top start, whose
  // diagonal the repeat reaches last, holds the best score there.
  const std::string motif = randomLetters(gen, 21, 0);
  for (int at : {3245, 4327, 6490, 8653, 9735}) k.lg.replace(at, motif.size(), motif);
  k.sh = randomLetters(gen, 150, 1) + k.lg.substr(6400, 60) + motif;
  k.oddBytes = {{9000, 7}, {-40, 200}};
  std::uniform_real_distribution<float> any(-0.3f, 1.0f);
  for (int a = 1; a <= 4; ++a)
    for (int b = 1; b <= 4; ++b) k.matrice[a][b] = a == b ? 0.9f + any(gen) / 10 : any(gen) / 3;
  listingSettings(k, "21", "900", "12.5", 12);
  int parted = 0;
  for (Range r : {Range{"1", "max"}, Range{"-3000", "9000"}, Range{"200", "14500"}}) {
    k.s.EFAnaFrom = r.from;
    k.s.EFAnaTo = r.to;
    for (int stop : {-1, 300, 4330, 4331, 6500, 8700, 12000}) {
      k.stopAfter = stop;
      const Seen reference = runCase(k, "scalar", 1);
      for (int threads : {2, 3, 4, 5}) {
        expectSame(runCase(k, "auto", threads), reference,
                   std::string(r.from) + " stop " + std::to_string(stop) + " threads " + std::to_string(threads));
        if (::testing::Test::HasFailure()) return;
        ++parted;
      }
    }
  }
  EXPECT_EQ(parted, 84);
}

// The random expectation's thread takes half of what is left of the scan,
// counting its repeat, and only where that leaves the repeat after what the
// scan has committed to; too little left, or a run given up, takes nothing.
TEST(KernelEquivalence, ScanTailSharesWhatIsLeftAfterTheRepeat) {
  int64_t from = 0, to = 0;
  {
    ScanTail tail(10000);
    tail.arm(0);
    EXPECT_EQ(tail.commit(1, 16), 16);
    ASSERT_TRUE(tail.steal(from, to, 3000));
    // 9984 left: the scan keeps (9984 + 3000 / 2) / 2 of them
    EXPECT_EQ(from, 17 + 5742);
    EXPECT_EQ(to, 10000);
    EXPECT_GT(from - 3000, 16);
    EXPECT_TRUE(tail.stolen());
    // the scan's tester stops before the stolen part
    EXPECT_EQ(tail.commit(from - 8, 16), 8);
    EXPECT_EQ(tail.commit(from, 16), 0);
  }
  {
    // twice the repeat and one more each left: taken, the repeat clear
    ScanTail tail(5000);
    tail.arm(0);
    ASSERT_TRUE(tail.steal(from, to, 2499));
    EXPECT_EQ(from, 1 + 3124);
    EXPECT_EQ(from - 2499, 626);
    ScanTail less(4999);
    less.arm(0);
    EXPECT_FALSE(less.steal(from, to, 2499));
    EXPECT_FALSE(less.stolen());
  }
  {
    // a short repeat: at least 2048 left all the same
    ScanTail tail(2047);
    tail.arm(0);
    EXPECT_FALSE(tail.steal(from, to, 10));
    ScanTail given(100000);
    given.giveUp();
    EXPECT_FALSE(given.steal(from, to, 10));
  }
}

// A shortest sequence a quarter of the longest: what is left of the scan
// when the few resamplings are done is under four times the repeat, and the
// stolen tail still gives the scalar bytes.
TEST(KernelEquivalence, TailStolenWithALongRepeatGivesTheScalarBytes) {
  std::mt19937 gen(31);
  Case k;
  k.lg = randomLetters(gen, 2750, 1);
  k.sh = randomLetters(gen, 650, 1) + k.lg.substr(2650, 50);
  listingSettings(k, "20", "2", "14", 6);
  for (int a = 1; a <= 4; ++a) k.matrice[a][a] = 1.0f;
  const Seen reference = runCase(k, "scalar", 1);
  for (int round = 0; round < 4; ++round) expectSame(runCase(k, "auto", 2), reference, "round " + std::to_string(round));
}

// Runs of one base tie every start: rows of thousands of bytes, made in
// pieces, on every variant and on the writer's thread.
TEST(KernelEquivalence, EveryStartTiedGivesTheScalarRows) {
  Case k;
  k.lg = std::string(1500, 'A') + std::string(40, 'C') + std::string(900, 'A');
  k.sh = std::string(650, 'A');
  listingSettings(k, "20", "30", "25", 3);
  for (int a = 1; a <= 4; ++a) k.matrice[a][a] = 1.0f;
  const Seen reference = runCase(k, "scalar", 1);
  EXPECT_NE(reference.clipboard.find(std::string("\t631\t")), std::string::npos);
  for (const ScanKernel& kernel : scanKernels())
    for (int threads : {1, 2}) expectSame(runCase(k, kernel.name, threads), reference, kernel.name);
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
