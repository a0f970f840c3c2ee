// scan_benchmark.cpp -- cell updates per second of the scans, by kernel and thread count, on random sequences.
//
// Run: build/bench/scan_benchmark   (cells_per_second is positions x window
// starts of the shortest sequence, both scans together, per wall second).
#include <benchmark/benchmark.h>

#include <charconv>

#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <string>

#include "engine/run.h"
#include "engine/scan_kernels.h"
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

const char* kernelName(int64_t index) { return index == 0 ? "scalar" : "auto"; }

// A whole run of W = 30 with ties, alignments from 20 identities up, rows on
// the clipboard; the scalar kernel analyses at most 50,000 positions of the
// long sequence (and as many resamplings), the fast ones all.
void BM_Run(benchmark::State& state) {
  const int32_t nlong = static_cast<int32_t>(state.range(0));
  const int32_t nshort = static_cast<int32_t>(state.range(1));
  const int32_t W = 30;
  ComparisonState& st = stateFor(nlong, nshort);
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
  state.SetLabel(std::string(s.kernel) + (mode == 0 ? " both scans" : mode == 1 ? " scan" : " H0"));
}

void runArgs(benchmark::internal::Benchmark* b) {
  b->ArgNames({"long", "short", "fast", "threads", "mode"});
  for (auto [nlong, nshort] : {std::pair{50000, 2000}, {200000, 10000}, {1000000, 10000}})
    for (int fast : {0, 1})
      for (int threads : {1, 2})
        for (int mode : {0, 1, 2}) {
          if (mode != 0 && threads == 2) continue;  // a single scan uses one thread
          b->Args({nlong, nshort, fast, threads, mode});
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
  state.SetLabel(std::string("HUMHBB x V00508 ") + s.kernel);
}
BENCHMARK(BM_Example)
    ->ArgNames({"fast", "threads"})
    ->Args({0, 1})
    ->Args({1, 1})
    ->Args({1, 2})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

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
