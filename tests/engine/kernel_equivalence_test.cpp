// kernel_equivalence_test.cpp -- every row kernel and thread count against the scalar scan, byte for byte.
#include <gtest/gtest.h>

#include <random>

#include "engine/kernels/scan_kernels.h"
#include "run_transcript.h"

namespace trelvane::testing {
namespace {

// A run's transcript on one kernel and thread count.
std::string on(RunInput in, const std::string& kernel, int threads) {
  in.s.kernel = kernel;
  in.s.threads = threads;
  return runTranscript(in, false);
}

std::string randomLetters(std::mt19937& gen, int n, int nRunChance) {
  std::string out;
  while (static_cast<int>(out.size()) < n) {
    if (static_cast<int>(gen() % 100) < nRunChance) out.append(1 + gen() % 12, 'N');
    else out += "ACGT"[gen() % 4];
  }
  return out.substr(0, static_cast<std::size_t>(n));
}

// Cells that tie often (eighths), that round (odd decimals), negative ones,
// and now and then a not-a-number or an infinite cell.
void randomMatrix(std::mt19937& gen, float (&m)[5][5]) {
  const int kind = static_cast<int>(gen() % 4);
  std::uniform_real_distribution<float> any(-1.0f, 1.0f);
  for (int a = 0; a < 5; ++a)
    for (int b = 0; b < 5; ++b) {
      const bool edge = a == 0 || b == 0;
      float v = kind == 0   ? (!edge && a == b ? 1.0f : 0.0f)
                : kind == 1 ? (edge ? 0.0f : static_cast<float>(static_cast<int>(gen() % 17) - 4) / 8.0f)
                            : (edge && gen() % 3 != 0 ? 0.0f : any(gen));
      if (kind == 3 && gen() % 12 == 0) v = std::nanf("");
      if (kind == 3 && gen() % 40 == 0) v = gen() % 2 ? INFINITY : -INFINITY;
      m[a][b] = v;
    }
}

// Lengths around the blocks (128 starts) and tiles (512, 1024) now and then,
// every window size, ranges in and around the sequence, stops anywhere.
RunInput randomRun(std::mt19937& gen) {
  RunInput k;
  const int nlong = 1 + static_cast<int>(gen() % 260);
  const int nshort = 1 + static_cast<int>(gen() % 9 == 0 ? 2300 : gen() % 5 == 0 ? 300 : 140);
  const int nChance = gen() % 3 == 0 ? 4 : 0;
  k.lg = randomLetters(gen, nlong, nChance);
  if (k.lg.find_first_not_of('N') == std::string::npos) k.lg[0] = 'A';
  k.sh = randomLetters(gen, nshort, nChance);
  for (int side : {0, 1})
    if (gen() % 10 == 0) k.pokes.emplace_back(side, gen() % 300, 5 + gen() % 250);  // no base codes
  randomMatrix(gen, k.matrice);
  RunSettings& s = k.s;
  const int W = gen() % 6 == 0 ? static_cast<int>(gen() % 256) : static_cast<int>(gen() % 40);
  s.EFWS = gen() % 25 == 0 ? std::string() : std::to_string(W);
  s.EFAnaFrom = gen() % 15 == 0 ? std::string() : std::to_string(static_cast<int>(gen() % (nlong + 8)) - 2);
  s.EFAnaTo = gen() % 2 ? std::string("max") : std::to_string(static_cast<int>(gen() % (nlong + 10)) - 2);
  s.EFSD = gen() % 15 == 0 ? std::string() : std::to_string(gen() % 300);
  // mostly a threshold that lists a few windows, now and then none or many
  const double wFor = W > 0 ? W : 1;
  const unsigned pick = gen() % 6;
  s.EFIdentities = pick == 0 ? "NaN" : std::to_string(wFor * (pick == 1 ? 0.5 : 0.7 + 0.05 * (gen() % 8)));
  s.display0 = gen() % 4 == 0;
  s.Display1 = gen() % 4 == 0;
  s.CBCPG = gen() % 8 == 0;
  s.CBClipboard = s.CBFile = true;
  s.CBFreqIB = gen() % 2;
  s.seed = gen();
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

// Whole runs: every kernel on one and two threads gives the scalar run's
// report, rows, result file, m2, stage texts, progress, yields and figures.
// Every kernel on one and two threads against the scalar run of count
// random inputs made by make.
template <class Make>
void expectScalarBytes(uint32_t seed, int count, Make make) {
  std::mt19937 gen(seed);
  for (int n = 0; n < count; ++n) {
    const RunInput k = make(gen);
    const std::string reference = on(k, "scalar", 1);
    for (const ScanKernel& kernel : scanKernels())
      for (int threads : {1, 2}) {
        if (kernel.isScalar() && threads == 1) continue;
        ASSERT_EQ(on(k, kernel.name, threads), reference)
            << "case " << n << " kernel " << kernel.name << " threads " << threads << " W=" << k.s.EFWS << " from "
            << k.s.EFAnaFrom << " to " << k.s.EFAnaTo << " sd=" << k.s.EFSD << " id=" << k.s.EFIdentities
            << " long " << k.lg.size() << " short " << k.sh.size() << " stop " << k.stopAfter;
      }
  }
}

TEST(KernelEquivalence, RandomRunsGiveTheScalarBytes) {
  expectScalarBytes(2024, 1500, [](std::mt19937& gen) { return randomRun(gen); });
}

// Whole-number matrices, which the integer lanes take: cells of 0 and 1,
// small whole numbers of both signs, and cells whose greatest magnitude times
// W is 255, 256, 32,767 or 32,768 (the edges of the byte and 16-bit lanes),
// with a run of that cell's bases in both sequences so that the extreme
// score occurs. Thresholds between whole numbers, on them, below every score
// and none.
RunInput randomIntegralRun(std::mt19937& gen) {
  RunInput k = randomRun(gen);
  const int kind = static_cast<int>(gen() % 5);
  struct Edge {
    int W, cell;
  };
  static constexpr Edge kEdges[] = {{255, 1}, {15, 17}, {85, 3}, {128, 2},    {16, 16},
                                    {2, 128}, {151, 217}, {217, 151}, {128, 256}, {64, 512}};
  const Edge edge = kEdges[gen() % std::size(kEdges)];
  const int W = kind < 2 ? static_cast<int>(gen() % 6 == 0 ? gen() % 256 : gen() % 40) : edge.W;
  const int most = kind < 2 ? 1 : edge.cell;
  const bool negative = kind == 4;
  for (int a = 0; a < 5; ++a)
    for (int b = 0; b < 5; ++b) {
      const bool nEdge = a == 0 || b == 0;
      int v = kind == 0   ? (nEdge ? (gen() % 8 == 0) : (a == b ? 1 : static_cast<int>(gen() % 5 == 0)))
              : kind == 1 ? static_cast<int>(gen() % 7) - 3
                          : static_cast<int>(gen() % (most + 1));
      if (negative && gen() % 2) v = -v;
      k.matrice[a][b] = static_cast<float>(v);
    }
  if (kind >= 2) {
    // the extreme cell, and a run of its bases longer than the window on both sides
    const int base = 1 + static_cast<int>(gen() % 4);
    k.matrice[base][base] = static_cast<float>(negative ? -most : most);
    const std::string run(static_cast<std::size_t>(W) + gen() % 8, kLetters[base]);
    k.lg.insert(gen() % (k.lg.size() + 1), run);
    k.sh.insert(gen() % (k.sh.size() + 1), run);
  }
  k.s.EFWS = std::to_string(W);
  const double top = static_cast<double>(W) * most;
  // every window pair listed only where the pairs are few
  const bool few = k.lg.size() * k.sh.size() * static_cast<std::size_t>(W) < 3000000;
  const unsigned pick = gen() % 6;
  k.s.EFIdentities = pick == 0   ? std::string("NaN")
                     : pick == 1 && few ? std::to_string(-top - 0.5)
                     : pick == 2 ? std::to_string(static_cast<int>(top * 0.6))
                                 : std::to_string(top * (0.55 + 0.05 * (gen() % 8)) + 0.25);
  return k;
}

TEST(KernelEquivalence, RandomWholeNumberRunsGiveTheScalarBytes) {
  expectScalarBytes(2026, 300, [](std::mt19937& gen) { return randomIntegralRun(gen); });
}

// Long runs whose rows and alignments are written beside the scan a stretch
// at a time, whose scan goes in parts on threads of their own (each part
// repeating the positions before it until its diagonals hold what the whole
// scan has), whose tail the random expectation's thread takes over, whose
// rows are thousands of bytes: stops before, at and after the stretches and
// part boundaries, ranges outside the sequence, N runs, bytes above 4.
struct LongRun {
  const char* name;
  RunInput in;
  std::vector<std::pair<const char*, const char*>> ranges;  // from, to
  std::vector<int> stops;
  std::vector<std::string> kernels;  // none: every kernel
  std::vector<int> threads;
  const char* seen;  // what the scalar run shows, so that the case tests what it is meant to
};

std::vector<LongRun> longRuns() {
  std::mt19937 gen(41);
  auto listing = [](RunInput in, const char* W, const char* sd, const char* id, uint64_t seed, float diag, float off) {
    in.s = {.EFWS = W, .EFIdentities = id, .EFSD = sd, .CBFile = true, .CBClipboard = true, .seed = seed};
    for (int a = 1; a <= 4; ++a)
      for (int b = 1; b <= 4; ++b) in.matrice[a][b] = a == b ? diag : off;
    return in;
  };
  std::vector<LongRun> runs;
  RunInput in;
  in.lg = randomLetters(gen, 1400, 2);
  in.sh = in.lg.substr(300, 90) + randomLetters(gen, 60, 0);
  runs.push_back({"stretches", listing(in, "20", "50", "12", 9, 1, 0),
                  {{"1", "max"}, {"-1500", "-600"}, {"-700", "300"}, {"1300", "max"}},
                  {-1, 1, 255, 256, 257, 700, 1100}, {}, {2}, ""});
  // The last window of the shortest sequence at the first position of each
  // part (of the whole range, in 2, 3 and 4 parts): the top start, whose
  // diagonal the repeat reaches last, holds the best score there.
  in.lg = randomLetters(gen, 13000, 1);
  const std::string motif = randomLetters(gen, 21, 0);
  for (int at : {3245, 4327, 6490, 8653, 9735}) in.lg.replace(at, motif.size(), motif);
  in.sh = randomLetters(gen, 150, 1) + in.lg.substr(6400, 60) + motif;
  in.pokes = {{0, 9000, 7}, {1, 40, 200}};
  runs.push_back({"parts", listing(in, "21", "900", "12.5", 12, 0.9f, 0.3f),
                  {{"1", "max"}, {"-3000", "9000"}, {"200", "14500"}},
                  {-1, 300, 4330, 4331, 6500, 8700, 12000}, {"auto"}, {2, 3, 4, 5}, ""});
  std::uniform_real_distribution<float> any(-0.3f, 1.0f);
  for (int a = 1; a <= 4; ++a)
    for (int b = 1; b <= 4; ++b) runs.back().in.matrice[a][b] = a == b ? 0.9f + any(gen) / 10 : any(gen) / 3;
  // a shortest sequence a quarter of the longest: the tail left is under
  // four times the repeat, and is still taken
  in.pokes.clear();
  in.lg = randomLetters(gen, 2750, 1);
  in.sh = randomLetters(gen, 650, 1) + in.lg.substr(2650, 50);
  runs.push_back({"stolen tail", listing(in, "20", "2", "14", 6, 1, 0), {{"1", "max"}}, {-1}, {"auto"}, {2, 2, 2, 2},
                  "stopped=0"});
  in.lg = std::string(1500, 'A') + std::string(40, 'C') + std::string(900, 'A');
  in.sh = std::string(650, 'A');
  runs.push_back({"every start tied", listing(in, "20", "30", "25", 3, 1, 0), {{"1", "max"}}, {-1}, {}, {1, 2},
                  "\t631\t"});
  in.lg = readBytes(TRELVANE_EXAMPLES "/HUMHBB.fa").substr(30000, 6000);
  in.sh = readBytes(TRELVANE_EXAMPLES "/V00508.fa");
  for (std::string* s : {&in.lg, &in.sh}) std::erase_if(*s = s->substr(s->find('\n')), [](char c) { return c < 'A'; });
  runs.push_back({"example", listing(in, "25", "700", "20", 5, 0.9f, 0.033f), {{"1", "max"}}, {-1}, {}, {1, 2},
                  "+++++"});
  // stopped in the first scan on two threads: the random expectation that
  // ran ahead on its thread shows nothing, the host sees resampling 1's yield
  in.lg = randomLetters(gen, 3000, 0);
  in.sh = randomLetters(gen, 400, 0);
  runs.push_back({"stop ahead", listing(in, "20", "3000", "20", 4, 1, 0), {{"1", "max"}}, {2000}, {}, {2},
                  "stopped=1 noRows=0 written=0 yields=2001"});
  // a shortest sequence whose batches of byte rows pass the level-2 cache:
  // the scan keeps only its candidate blocks in every lane width
  in.lg = randomLetters(gen, 13600, 0);
  in.sh = randomLetters(gen, 13000, 1) + in.lg.substr(5100, 40);
  runs.push_back({"candidate blocks", listing(in, "20", "40", "13.5", 8, 1, 0), {{"4900", "5200"}, {"5090", "5400"}},
                  {-1}, {}, {1, 2}, "++++++++++++++++++++\n"});
  return runs;
}

TEST(KernelEquivalence, LongRunsGiveTheScalarBytes) {
  for (LongRun& r : longRuns())
    for (auto [from, to] : r.ranges)
      for (int stop : r.stops) {
        r.in.s.EFAnaFrom = from, r.in.s.EFAnaTo = to, r.in.stopAfter = stop;
        const std::string reference = on(r.in, "scalar", 1);
        EXPECT_NE(reference.find(r.seen), std::string::npos) << r.name;
        if (r.kernels.empty())
          for (const ScanKernel& kernel : scanKernels()) r.kernels.push_back(kernel.name);
        for (const std::string& kernel : r.kernels)
          for (int threads : r.threads)
            ASSERT_EQ(on(r.in, kernel, threads), reference)
                << r.name << " kernel " << kernel << " threads " << threads << " from " << from << " stop " << stop;
      }
}

TEST(KernelEquivalence, UnknownKernelNameRunsTheFastestOne) {
  RunInput k;
  k.lg = "ACGTTGCAACGTAGGCTAGCTAGGATCCATGCA";
  k.sh = "ACGTAGGCTAGC";
  k.s = {.EFWS = "5", .CBClipboard = true, .seed = 1};
  EXPECT_EQ(on(k, "no-such-kernel", 1), on(k, "scalar", 1));
}

}  // namespace
}  // namespace trelvane::testing
