// scan_benchmark.cpp -- cell updates per second of the scans, by kernel and thread count, on random sequences.
//
// Run: build/bench/scan_benchmark   (cells_per_second is positions x window
// starts of the shortest sequence, both scans together, per wall second).
// fast:0 is the scalar kernel, fast:1 the widest Single kernel, fast:2
// "auto", which takes byte lanes for the identity model; model:0 the identity
// model, model:1 a TS/TV model (its cells are no whole numbers: Single lanes).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <charconv>

#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "engine/run.h"
#include "engine/scan.h"
#include "engine/scan_batch.h"
#include "engine/striped_batch.h"
#include "state/state.h"
#include "platform/numtext.h"

namespace trelvane {
namespace {

// A host that does nothing: the scans' own cost only.
class QuietHost : public RunHost {
 public:
  void message(const std::string&) override {}
  void progress(int, int) override {}
  void setEFAnaTo(const std::string&) override {}
  void setClipboard(std::string text) override { benchmark::DoNotOptimize(text.data()); }
};

void fillRandom(MemoryBlock& m, int32_t& n, int32_t bases, std::mt19937_64& gen) {
  m = MemoryBlock(static_cast<std::ptrdiff_t>(bases) + 100);
  for (int32_t k = 0; k < bases; ++k) m.set(k, static_cast<uint8_t>(1 + gen() % 4));
  n = bases;
}

// The two sequences of one size, made once and shared by every benchmark of it.
ComparisonState& stateFor(int32_t nlong, int32_t nshort) {
  static std::map<std::pair<int32_t, int32_t>, std::unique_ptr<ComparisonState>> states;
  auto& slot = states[{nlong, nshort}];
  if (!slot) {
    slot = std::make_unique<ComparisonState>();
    slot->open();
    std::mt19937_64 gen(static_cast<uint64_t>(nlong) * 31 + static_cast<uint64_t>(nshort));
    fillRandom(slot->m0, slot->nbbases, nlong, gen);
    fillRandom(slot->m1, slot->nbbases1, nshort, gen);
    for (int side = 0; side < 2; ++side)
      for (int b = 0; b < 5; ++b) slot->basesfreq[b][side] = 0;
  }
  return *slot;
}

const char* kernelName(int64_t index) {
  return index == 0 ? "scalar" : index == 1 ? scanKernels().back().name : "auto";
}

// The identity model, or a TS/TV model as estimated from a pair of related
// sequences: transitions (A-G, C-T) score more than transversions.
void setModel(ComparisonState& st, int64_t model) {
  for (int a = 1; a <= 4; ++a)
    for (int b = 1; b <= 4; ++b) {
      const bool transition =
          (a == kA && b == kG) || (a == kG && b == kA) || (a == kC && b == kT) || (a == kT && b == kC);
      st.matrice[a][b] = model == 0 ? (a == b ? 1.0f : 0.0f) : a == b ? 0.9f : transition ? 0.06f : 0.02f;
    }
}

// The kernel that a run of these settings takes, for the label.
std::string kernelLabel(const ComparisonState& st, const RunSettings& s, int32_t W) {
  return kernelForRun(s.kernel, st.matrice, W).name;
}

// A whole run of W = 30 with ties, alignments from 20 identities up, rows on
// the clipboard; the scalar kernel analyses at most 50,000 positions of the
// long sequence (and as many resamplings), the fast ones all.
void BM_Run(benchmark::State& state) {
  const int32_t nlong = static_cast<int32_t>(state.range(0));
  const int32_t nshort = static_cast<int32_t>(state.range(1));
  const int32_t W = 30;
  ComparisonState& st = stateFor(nlong, nshort);
  setModel(st, state.range(5));
  RunSettings s;
  s.EFWS = std::to_string(W);
  s.kernel = kernelName(state.range(2));
  s.threads = static_cast<int>(state.range(3));
  s.CBClipboard = true;
  s.seed = 7;
  int64_t positions = static_cast<int64_t>(nlong) - W + 1;
  if (state.range(2) == 0 && positions > 50000) {
    positions = 50000;
    s.EFAnaTo = std::to_string(positions - 1);
  }
  // scan only, random expectation only, or both (as many resamplings as positions)
  const int64_t mode = state.range(4);
  int64_t resamplings = positions;
  if (mode == 1) resamplings = 1;
  if (mode == 2) s.EFAnaTo = "0";
  s.EFSD = std::to_string(resamplings);
  const int64_t scanned = mode == 2 ? 1 : positions;
  const double cells = static_cast<double>(scanned + resamplings) * (nshort - W + 1);
  QuietHost host;
  for (auto _ : state) {
    RunOutcome out = rumcompute(st, s, host);
    benchmark::DoNotOptimize(out.meangraph);
  }
  state.counters["cells_per_second"] =
      benchmark::Counter(cells, benchmark::Counter::kIsIterationInvariantRate);
  state.SetLabel(std::string(state.range(5) == 0 ? "identity " : "TS/TV ") + kernelLabel(st, s, W) +
                 (mode == 0 ? " both scans" : mode == 1 ? " scan" : " H0"));
}

void runArgs(benchmark::internal::Benchmark* b) {
  b->ArgNames({"long", "short", "fast", "threads", "mode", "model"});
  for (auto [nlong, nshort] : {std::pair{50000, 2000}, {200000, 10000}, {1000000, 10000}})
    for (int model : {0, 1})
      for (int fast : {0, 1, 2})
        for (int threads : {1, 2})
          for (int mode : {0, 1, 2}) {
            if (mode != 0 && threads == 2) continue;  // a single scan uses one thread
            if (model == 1 && fast == 2) continue;    // TS/TV: auto is the Single kernel
            if (model == 1 && fast == 0 && mode != 0) continue;
            b->Args({nlong, nshort, fast, threads, mode, model});
          }
}
BENCHMARK(BM_Run)->Apply(runArgs)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(0.5);

// The bundled example, HUMHBB against V00508 with the window's defaults, as
// trelvane-cli compare runs it.
std::string lettersOf(const std::string& path) {
  std::ifstream in(path);
  std::string line, out;
  while (std::getline(in, line))
    if (!line.empty() && line[0] != '>') out += line;
  return out;
}

void fillLetters(MemoryBlock& m, int32_t& n, const std::string& letters) {
  m = MemoryBlock(static_cast<std::ptrdiff_t>(letters.size()) + 100);
  for (std::size_t k = 0; k < letters.size(); ++k) {
    char c = letters[k];
    m.set(static_cast<std::ptrdiff_t>(k), c == 'A' ? kA : c == 'T' ? kT : c == 'C' ? kC : c == 'G' ? kG : kN);
  }
  n = static_cast<int32_t>(letters.size());
}

void BM_Example(benchmark::State& state) {
  static ComparisonState st;
  if (st.nbbases == 0) {
    st.open();
    fillLetters(st.m0, st.nbbases, lettersOf(std::string(TRELVANE_EXAMPLES) + "/HUMHBB.fa"));
    fillLetters(st.m1, st.nbbases1, lettersOf(std::string(TRELVANE_EXAMPLES) + "/V00508.fa"));
    setModel(st, 0);
  }
  RunSettings s;
  s.kernel = kernelName(state.range(0));
  s.threads = static_cast<int>(state.range(1));
  s.EFSD = std::to_string(st.nbbases - 30 + 1);
  s.CBClipboard = true;
  s.seed = 1;
  QuietHost host;
  for (auto _ : state) {
    RunOutcome out = rumcompute(st, s, host);
    benchmark::DoNotOptimize(out.meangraph);
  }
  const double cells = 2.0 * (st.nbbases - 30 + 1) * (st.nbbases1 - 30 + 1);
  state.counters["cells_per_second"] =
      benchmark::Counter(cells, benchmark::Counter::kIsIterationInvariantRate);
  state.SetLabel(std::string("HUMHBB x V00508 ") + kernelLabel(st, s, 30));
}
BENCHMARK(BM_Example)
    ->ArgNames({"fast", "threads"})
    ->Args({0, 1})
    ->Args({1, 1})
    ->Args({1, 2})
    ->Args({2, 1})
    ->Args({2, 2})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The row kernels alone, every variant this processor has (the CLI's
// --kernel names), on random sequences scored with the identity matrix as a
// run scores them: W = 30, the rows of successive positions of a longest
// sequence of 4,096 bases (then again from its first position).
struct KernelInputs {
  static constexpr int32_t W = 30;
  static constexpr int64_t kPositions = 4096;

  KernelInputs(int64_t lastshort, const ScanKernel& k)
      : lastshort(lastshort), cells(identity()), m1(static_cast<std::size_t>(lastshort + W) + 100, 0),
        m0(static_cast<std::size_t>(kPositions + W) + 100, 0),
        cols(fill(m1, lastshort + W, m0), m1.data(), lastshort + W, W, k.scores),
        first(static_cast<std::size_t>(lastshort) + 1), firstLanes(static_cast<std::size_t>((lastshort + 17) * 4)) {
    for (int64_t j = 0; j <= lastshort; ++j) first[j] = fullScoreFromFirst(m1.data() + j, m0.data(), W, cells);
    k.putScores(first.data(), lastshort + 1, firstLanes.data());
    for (int64_t i = 0; i < kPositions; ++i) {
      const StepColumns step = cols.forStep(m0[i], m0[i + W]);
      leave.push_back(step.leave);
      enter.push_back(step.enter);
      starts.push_back(fullScoreFromFirst(m1.data(), m0.data() + i + 1, W, cells));
    }
  }
  // Random bases into both sequences; the identity model's cells.
  CellTable& fill(std::vector<uint8_t>& shortest, int64_t nshort, std::vector<uint8_t>& longest) {
    std::mt19937_64 gen(static_cast<uint64_t>(lastshort));
    for (int64_t j = 0; j < nshort; ++j) shortest[j] = static_cast<uint8_t>(1 + gen() % 4);
    for (int64_t i = 0; i < kPositions + W; ++i) longest[i] = static_cast<uint8_t>(1 + gen() % 4);
    return cells;
  }
  static CellTable identity() {
    float matrice[5][5] = {};
    for (int b = 1; b < 5; ++b) matrice[b][b] = 1.0f;
    return CellTable(matrice);
  }

  int64_t lastshort;
  CellTable cells;
  std::vector<uint8_t> m1, m0;
  ScanColumns cols;
  ScoreRow first;          // the scores at position 0
  LaneStorage firstLanes;  // the same in the kernel's lanes
  // position i + 1: its columns and its score at start 0
  std::vector<const void*> leave, enter;
  std::vector<float> starts;
};

// One step over a row of starts (in the level-1 cache), as one call.
void BM_KernelSpan(benchmark::State& state, const ScanKernel* k) {
  const KernelInputs in(state.range(0), *k);
  LaneStorage a = in.firstLanes, b = in.firstLanes;
  LaneStorage blockmax(static_cast<std::size_t>((scanBlockCount(in.lastshort) + 1) * kBlockMaxBytes));
  int64_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        k->advanceSpan(a.data(), b.data(), 1, in.lastshort, in.leave[i], in.enter[i], blockmax.data()));
    std::swap(a, b);
    if (++i == KernelInputs::kPositions) i = 0;
  }
  state.counters["cells_per_second"] = benchmark::Counter(static_cast<double>(in.lastshort),
                                                          benchmark::Counter::kIsIterationInvariantRate);
}

// Batches of steps over the positions of `in`, from position 0 again when
// they run out: advance(i, n) runs positions i to i + n - 1.
template <class Batch, class Advance>
void runBatches(benchmark::State& state, const KernelInputs& in, Batch& batch, Advance advance) {
  const int n = batch.steps();
  int64_t i = KernelInputs::kPositions;
  float best = 0;
  for (auto _ : state) {
    if (i + n > KernelInputs::kPositions) {
      batch.setBefore(in.first.data());
      i = 0;
    }
    advance(i, n);
    best = batch.best(n - 1) > best ? batch.best(n - 1) : best;
    i += n;
  }
  benchmark::DoNotOptimize(best);
  state.counters["cells_per_second"] = benchmark::Counter(static_cast<double>(in.lastshort) * n,
                                                          benchmark::Counter::kIsIterationInvariantRate);
}

// The steps of a batch as the scans take them: keep:0 every row, keep:1 the
// best only (the random expectation), keep:2 the candidates of a listing
// from 20 identities up (the scan with ties).
void BM_KernelBatch(benchmark::State& state, const ScanKernel* k) {
  const KernelInputs in(state.range(1), *k);
  const auto keep = std::array{RowBatch::Keep::kRows, RowBatch::Keep::kBestOnly,
                               RowBatch::Keep::kCandidates}[static_cast<std::size_t>(state.range(0))];
  RowBatch batch(*k, in.lastshort, keep, 20.0f);
  runBatches(state, in, batch, [&](int64_t i, int n) {
    batch.advance(n, in.leave.data() + i, in.enter.data() + i, in.starts.data() + i);
  });
}

// The random expectation's steps in striped rows (integer lanes): what
// keep:1 of BM_KernelBatch does, in the variant's own form.
void BM_StripedBatch(benchmark::State& state, const ScanKernel* k) {
  const KernelInputs in(state.range(0), *k);
  StripedBatch batch(*k, in.cells, in.m1.data(), in.lastshort + KernelInputs::W, KernelInputs::W, in.lastshort);
  runBatches(state, in, batch, [&](int64_t i, int n) {
    batch.advance(n, in.m0.data() + i, in.m0.data() + i + KernelInputs::W, in.starts.data() + i);
  });
}

// The tests' kernels over the row of position 1 (blocks of 128 starts):
// test:0 the greatest score of its blocks, test:1 the blocks that reach 20
// identities, test:2 the ties and listed starts of every span of kMatchSpan
// starts.
void BM_KernelTests(benchmark::State& state, const ScanKernel* k) {
  const KernelInputs in(state.range(1), *k);
  LaneStorage next = in.firstLanes;
  const int64_t blocks = scanBlockCount(in.lastshort);
  LaneStorage blockmax(static_cast<std::size_t>((blocks + 1) * kBlockMaxBytes));
  const float best =
      k->advanceSpan(in.firstLanes.data(), next.data(), 1, in.lastshort, in.leave[0], in.enter[0], blockmax.data());
  std::vector<uint64_t> bits(static_cast<std::size_t>(blocks / 64 + 1));
  uint64_t seen = 0;
  const int64_t test = state.range(0);
  for (auto _ : state) {
    if (test == 0) {
      benchmark::DoNotOptimize(k->blocksMax(blockmax.data(), blocks));
    } else if (test == 1) {
      k->blockCandidates(blockmax.data(), blocks, 20.0f, bits.data());
      seen += bits[0];
    } else {
      for (int64_t lo = 1; lo <= in.lastshort; lo += kMatchSpan) {
        uint64_t ties, listed;
        k->blockMatch(next.data(), lo, std::min(kMatchSpan, in.lastshort - lo + 1), best, 20.0f, &ties, &listed);
        seen += ties ^ listed;
      }
    }
  }
  benchmark::DoNotOptimize(seen);
  state.counters["starts_per_second"] = benchmark::Counter(static_cast<double>(in.lastshort),
                                                           benchmark::Counter::kIsIterationInvariantRate);
}

const bool kernelBenchmarks = [] {
  for (const ScanKernel& k : scanKernels()) {
    if (k.isScalar()) continue;
    const std::string name = k.name;
    benchmark::RegisterBenchmark(("BM_KernelSpan/" + name).c_str(), BM_KernelSpan, &k)
        ->ArgName("short")
        ->Arg(1000)
        ->Arg(4000);
    benchmark::RegisterBenchmark(("BM_KernelBatch/" + name).c_str(), BM_KernelBatch, &k)
        ->ArgNames({"keep", "short"})
        ->ArgsProduct({{0, 1, 2}, {2000, 10000}});
    if (k.advanceStriped)
      benchmark::RegisterBenchmark(("BM_StripedBatch/" + name).c_str(), BM_StripedBatch, &k)
          ->ArgName("short")
          ->Arg(2000)
          ->Arg(10000);
    benchmark::RegisterBenchmark(("BM_KernelTests/" + name).c_str(), BM_KernelTests, &k)
        ->ArgNames({"test", "short"})
        ->ArgsProduct({{0, 1, 2}, {2000, 10000}});
  }
  return true;
}();

// The text of a Single as the rows write their best scores: Str against the
// exact 7-digit conversion that it falls back to, into a string as Str gives
// (text:0 the conversion, text:1 Str).
void BM_SingleText(benchmark::State& state) {
  std::vector<float> scores;
  std::mt19937_64 gen(3);
  for (int k = 0; k < 4096; ++k) {
    const int kind = k % 3;
    if (kind == 0) scores.push_back(static_cast<float>(gen() % 31));                      // identity model
    else if (kind == 1) scores.push_back(static_cast<float>(gen() % 3000) * 0.01f);       // tenths and hundredths
    else scores.push_back(static_cast<float>(gen() % 100000) / 3000.0f);                  // any Single
  }
  std::size_t bytes = 0;
  for (auto _ : state) {
    for (float v : scores) {
      if (state.range(0) == 1) {
        bytes += Str(v).size();
      } else {
        char buf[64];
        auto r = std::to_chars(buf, buf + sizeof buf, static_cast<double>(v), std::chars_format::general, 7);
        bytes += std::string(buf, r.ptr).size();
      }
    }
  }
  benchmark::DoNotOptimize(bytes);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(scores.size()));
}
BENCHMARK(BM_SingleText)->ArgName("text")->Arg(0)->Arg(1);

}  // namespace
}  // namespace trelvane

BENCHMARK_MAIN();
