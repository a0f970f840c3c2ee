// scan.h -- the working state of one run, shared by its set-up, its scans and its report.
#pragma once

#include <cstdint>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/kernels/scan_kernels.h"
#include "engine/rowbuffer.h"
#include "engine/run.h"
#include "engine/scan_texts.h"
#include "state/state.h"
#include "platform/memoryblock.h"

namespace trelvane {

inline constexpr std::string_view EndOfLine = "\n";
inline constexpr char TAB = '\t';

// The letter of a base code; a byte above 4 is no base and reads as N.
inline char letterOf(uint8_t code) { return code <= 4 ? kLetters[code] : 'N'; }

// Running sums of a series of best scores, every step in Single.
struct ScoreSums {
  float sum = 0, sumsq = 0, count = 0, highest = 0;

  void add(float s) {
    highest = s > highest ? s : highest;
    sum = sum + s;
    float square = s * s;
    sumsq = sumsq + square;
    count = count + 1.0f;
  }
};

// An Integer result: 32-bit wrap-around, as the product of two Integers gives.
inline int32_t wrap32(int64_t v) { return static_cast<int32_t>(static_cast<uint32_t>(v)); }

class H0Worker;
class ScanTail;
// Frees a tail (defined where the tail is).
struct ScanTailEnd {
  void operator()(ScanTail* t) const;
};
// Ends the worker's thread and frees it (defined where the worker is).
struct H0WorkerEnd {
  void operator()(H0Worker* w) const;
};

// Everything one run of rumcompute holds between its stages.
struct RunContext {
  RunContext(ComparisonState& st, const RunSettings& s, RunHost& host)
      : st(st), s(s), host(host), cells(st.matrice) {}

  ComparisonState& st;
  const RunSettings& s;
  RunHost& host;

  // parameters
  int32_t nlong = 0, nshort = 0;
  int32_t askedW = 0;  // W as read, before clamping: sizes of histogram and resampled
  int32_t W = 0;       // W after clamping
  int32_t nresample = 0;
  int64_t firstpos = 0, lastpos = 0;
  int64_t lastlong = 0, lastshort = 0;
  float idthreshold = 0;
  CellTable cells;

  // The shortest sequence as the scan reads it: m1 itself, or a zero-padded
  // copy where m1 is nil or shorter than nbbases1 says (after a stored result).
  const MemoryBlock* m1 = nullptr;
  MemoryBlock m1copy;

  // buffers
  ScoreRow scorerow;
  std::string tielist;
  MemoryBlock resampled;
  std::vector<float> histogram;
  std::vector<uint8_t> scratch;  // a window that lies outside a block's padding
  ScoreSums h0;

  // What the scan's own thread changes while parts of the scan run on
  // other threads, on cache lines of its own: those threads read the fields
  // around it at every position, and a line shared with these would go back
  // and forth.
  alignas(64) RowBuffer rows;
  std::string report;
  std::size_t reportSpilled = 0;  // bytes of the report gone to its sink
  // reportSpilled and the rows' bytes gone to their sink when the sinks'
  // failures were last looked at: a sink fails only in a write
  std::size_t spilledWhenChecked = SIZE_MAX;
  ScoreSums profile;
  // the texts of the best scores written into rows
  ScoreTexts scoreTexts;

  // Why the run ends early (see fail), and the resamplings the random
  // expectation's thread has done (for the bar): written by any thread.
  mutable std::mutex failMutex;
  mutable std::string failureText;
  mutable std::atomic<int64_t> h0done{0};

  // kernels: the variant, the matrix columns of the fast ones, and the
  // random expectation running beside the scan on a thread of its own
  alignas(64) const ScanKernel* kernel = nullptr;
  std::optional<ScanColumns> columns;
  // the end of the scan along the longest sequence, which the random
  // expectation's thread takes over once its own work is done (scan_tail.h)
  std::unique_ptr<ScanTail, ScanTailEnd> scanTail;
  std::unique_ptr<H0Worker, H0WorkerEnd> h0worker;  // last: it ends before what it reads goes

  int threads = 1;  // the threads the run may use

  bool stopAsked() const { return st.askclose.load(); }
  // Ends the run early from any of its threads, as a stop does, and keeps
  // the first reason given.
  void fail(const std::string& why) const;
  std::string failure() const;
  void failTextLimit() const;
  void spillTextsNow(bool all);
  // Fails the run once its texts pass the bound of the settings.
  void testTextLimit() const {
    if (s.textLimit != 0 && report.size() + rows.rowpos() > s.textLimit) failTextLimit();
  }
  // The report into its sink once it holds kSpillBytes (all of it with
  // `all`); a sink that failed to write fails the run. Both are asked at
  // every position and resampling, and all but a few find nothing to do.
  void spillTexts(bool all = false) {
    if (all || (s.reportSink && report.size() >= kSpillBytes) ||
        reportSpilled + rows.spilled() != spilledWhenChecked)
      spillTextsNow(all);
  }

  // The len bytes of a block from off, for reading: a pointer into the block
  // (or its zero padding), or a copy read through get() when the window lies
  // further out, as an unchecked EFAnaFrom can ask.
  const uint8_t* window(const MemoryBlock& b, int64_t off, int64_t len) { return windowIn(b, off, len, scratch); }

  // The same with a scratch buffer of the caller's (at least len bytes).
  static const uint8_t* windowIn(const MemoryBlock& b, int64_t off, int64_t len, std::vector<uint8_t>& scratch) {
    if (b.data() && off >= -MemoryBlock::kPad && off + len <= b.size() + MemoryBlock::kPad)
      return b.data() + off;
    for (int64_t k = 0; k < len; ++k) scratch[static_cast<std::size_t>(k)] = b.get(off + k);
    return scratch.data();
  }
};

// True where the W bytes from win hold a byte 0 (an N, or no base).
bool hasN(const uint8_t* win, int32_t W);

// The scalar kernels, the reference of every faster variant.
// A window pair in full, starting from its first cell, the W - 1 others
// added one by one and rounded to Single (the scan of the longest sequence).
float fullScoreFromFirst(const uint8_t* shortWin, const uint8_t* longWin, int32_t W,
                         const CellTable& cells);
// A window pair in full from 0.0, W cells added (the random expectation).
float fullScoreFromZero(const uint8_t* shortWin, const uint8_t* longWin, int32_t W,
                        const CellTable& cells);
// One step along every diagonal, for j from lastshort down to 1:
// scorerow[j] = (scorerow[j - 1] - leaving[m1[j - 1]]) + entering[m1[j + W - 1]],
// each step rounded to Single. leaving and entering are the matrix columns of
// the longest side's base that leaves the window and the one that enters.
void advanceRow(float* scorerow, const uint8_t* m1, int64_t lastshort, int32_t W,
                const float* leaving, const float* entering);

// The first position: every window pair scored in full, tested in rising order.
void scoreFirstPosition(RunContext& c);
// The progress step and the stop test of a position or a resampling: the
// yield, then the bar at units / total of its width when the counter reaches
// progressstep; true on a stop.
void showProgress(RunContext& c, int32_t units, int32_t total);
inline bool yieldAndTestStop(RunContext& c, int32_t& counter, int32_t progressstep, int32_t units, int32_t total) {
  c.host.doEvents();
  if (++counter >= progressstep) {
    showProgress(c, units, total);
    counter = 0;
  }
  c.spillTexts();
  c.testTextLimit();
  return c.stopAsked();
}
// The bar's units at position i of the scan along the longest sequence: its
// positions done, and the resamplings done beside it where the random
// expectation runs on a thread of its own, so that the bar shows the work of
// both as it is done.
inline int32_t scanUnits(const RunContext& c, int64_t i) {
  return wrap32(i - c.firstpos + c.h0done.load(std::memory_order_relaxed));
}

// The stages of rumcompute, in their order.
void appendSequenceText(std::string& report, std::string_view title, const MemoryBlock& m, int32_t n);
// Fills resampled from c's longest sequence and the run's seed. Called where
// the random expectation starts: on its own thread it overlaps the first scan.
void drawResampled(const RunContext& c, MemoryBlock& resampled);
// The substitution scan with the scalar kernel: the reference (scan_scalar.cpp).
void substitutionScan(RunContext& c);
// The substitution scan with a fast row kernel over c.columns.
void substitutionScanColumns(RunContext& c);
// The fewest positions a part of the scan on a thread of its own takes.
int64_t shortestScanPart(const RunContext& c);
// Starts the random expectation on a thread of its own, beside the scan
// along the longest sequence; h0Scan then reports it to the host as if it ran
// after that scan.
void startH0(RunContext& c);
void h0Scan(RunContext& c);
void cpgScan(RunContext& c);
void finishRun(RunContext& c, RunOutcome& out);

}  // namespace trelvane
