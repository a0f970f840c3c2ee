// rumcompute.cpp -- one comparison run: set-up, the scans in their order, and the end of the run.
#include <new>
#include <thread>

#include "state/profile.h"
#include "engine/run.h"
#include "engine/scan.h"
#include "engine/scan_tail.h"
#include "platform/memory.h"
#include "platform/numtext.h"
#include "platform/rnd.h"

namespace trelvane {

namespace {

constexpr const char* kNoBaseText =
    "The longest sequence holds no base (A, T, C or G): the run is refused";

bool hasBase(const MemoryBlock& m0, int32_t n) {
  for (int32_t k = 0; k < n; ++k)
    if (m0.get(k) != 0) return true;
  return false;
}

// The threads a run may use: RunSettings::threads, or every core for 0.
int runThreads(const RunSettings& s) {
  if (s.threads > 0) return s.threads;
  unsigned cores = std::thread::hardware_concurrency();
  return cores > 0 ? static_cast<int>(cores) : 1;
}

// The remedy of a listing that holds too much, with the threshold of the run.
std::string remedy(const RunSettings& s) {
  return "raise the listing's identities threshold (now " + s.EFIdentities +
         ") or narrow the analysis range";
}

}  // namespace

void RunContext::fail(const std::string& why) const {
  {
    std::lock_guard lock(failMutex);
    if (failureText.empty()) failureText = why;
  }
  st.askclose = true;
}

std::string RunContext::failure() const {
  std::lock_guard lock(failMutex);
  return failureText;
}

void RunContext::failTextLimit() const {
  fail("The listing and rows outgrew " + bytesText(s.textLimit) +
       ", the most this machine's memory allows: " + remedy(s));
}

void RunContext::spillTextsNow(bool all) {
  if (s.reportSink && (all || report.size() >= kSpillBytes)) {
    s.reportSink->write(report);
    reportSpilled += report.size();
    report.clear();
  }
  // Nothing written since the last look: no sink can have failed since.
  const std::size_t spilled = reportSpilled + rows.spilled();
  if (!all && spilled == spilledWhenChecked) return;
  spilledWhenChecked = spilled;
  for (const TextSink* sink : {s.rowsSink, s.reportSink})
    if (sink && !sink->failure().empty()) {
      fail(sink->failure());
      return;
    }
}

void showProgress(RunContext& c, int32_t units, int32_t total) {
  int32_t done = wrap32(static_cast<int64_t>(c.s.progressWidth) * units);
  c.host.progress(toInt(static_cast<double>(done) / static_cast<double>(total)), c.s.progressWidth);
}

std::string outOfMemoryText(const RunSettings& s) {
  return "Out of memory: " + remedy(s);
}

RunSettings RunSettings::fromForm(const Form& form) {
  RunSettings s;
  s.EFWS = form.EFWS;
  s.EFAnaFrom = form.EFAnaFrom;
  s.EFAnaTo = form.EFAnaTo;
  s.EFIdentities = form.EFIdentities;
  s.EFSD = form.EFSD;
  s.display0 = form.display0;
  s.Display1 = form.Display1;
  s.CBCPG = form.CBCPG;
  s.CBFile = form.CBFile;
  s.CBClipboard = form.CBClipboard;
  s.CBFreqIB = form.CBFreqIB;
  s.seed = Rnd::clockSeed();
  return s;
}

RunOutcome rumcompute(ComparisonState& st, const RunSettings& s, RunHost& host) {
  RunOutcome out;
  // The random draw takes bases from m0 until it finds one: without any
  // base it would never end.
  if (!hasBase(st.m0, st.nbbases)) {
    out.refused = true;
    out.refusal = kNoBaseText;
    host.message(kNoBaseText);
    return out;
  }
  RunContext c(st, s, host);
  if (s.CBClipboard) c.rows.streamTo(s.rowsSink);

  // 1-2: flags; tielist holds the filling text of m2 and is not cleared
  st.changegraph = true;
  st.running = true;
  c.tielist.assign(200, static_cast<char>(kProfileNoScore));

  // 3: lengths and the row of scores
  c.nlong = st.nbbases;
  c.nshort = st.nbbases1;
  c.scorerow.assign(static_cast<std::size_t>(c.nshort) + 1, 0.0f);
  if (st.m1.isNil() || st.m1.size() < static_cast<std::ptrdiff_t>(c.nshort) + 100) {
    c.m1copy = MemoryBlock(static_cast<std::ptrdiff_t>(c.nshort) + 100);
    for (std::ptrdiff_t k = 0; k < st.m1.size() && k < c.m1copy.size(); ++k) c.m1copy.set(k, st.m1.get(k));
    c.m1 = &c.m1copy;
  } else {
    c.m1 = &st.m1;
  }

  // 4: window size and resamplings. The field's mask takes digits only; a
  // negative size from elsewhere is taken as 0.
  c.askedW = toInt(Val(s.EFWS));
  if (c.askedW < 0) c.askedW = 0;
  c.W = c.askedW;
  c.histogram.assign(static_cast<std::size_t>(c.askedW) + 1, 0.0f);
  c.nresample = toInt(Val(s.EFSD) - 1.0);

  // 5: buffers, the filled start of m2, the random sequence (W as asked).
  // resampled keeps room for one whole window even where EFSD is negative;
  // its bases are drawn where the random expectation starts (drawResampled),
  // as nothing before reads them.
  c.report.clear();
  st.m2 = MemoryBlock(static_cast<std::ptrdiff_t>(c.nlong) + 410);
  int64_t resampledSize = static_cast<int64_t>(c.nresample) + c.askedW + 10;
  if (resampledSize < static_cast<int64_t>(c.askedW) + 10) resampledSize = static_cast<int64_t>(c.askedW) + 10;
  c.resampled = MemoryBlock(resampledSize);
  fillProfileStart(st.m2, c.nlong, kProfileNoScore);

  // 6: the text of the sequences
  host.message("Show sequences");
  if (s.display0) appendSequenceText(c.report, "First sequence", st.m0, c.nlong);
  if (s.Display1) appendSequenceText(c.report, "Second sequence", *c.m1, c.nshort);

  // 7: clamp the window
  if (c.nlong < c.W || (c.nshort < c.W && !s.CBCPG)) {
    c.W = c.nshort < c.nlong ? c.nshort : c.nlong;
    c.report += "Window size resizes to ";
    c.report += Str(c.W);
    c.report += EndOfLine;
    c.report += EndOfLine;
  }
  c.scratch.assign(static_cast<std::size_t>(c.W) + 2, 0);

  // 8: sums, the last window starts
  c.profile = ScoreSums{};
  c.h0 = ScoreSums{};
  host.message("Computing...");
  c.lastlong = static_cast<int64_t>(c.nlong) - c.W;
  c.lastshort = static_cast<int64_t>(c.nshort) - c.W;

  // 9: analysis range. EFAnaFrom is a 1-based position, EFAnaTo acts as a
  // 0-based one: 1 to 100 covers the offsets 0 to 100.
  c.firstpos = toInt(Val(s.EFAnaFrom) - 1.0);
  double to = Val(s.EFAnaTo);
  if (equalsNoCase(s.EFAnaTo, "max") || to > static_cast<double>(c.lastlong)) {
    c.lastpos = c.lastlong;
    host.setEFAnaTo("max");
  } else {
    c.lastpos = toInt(to);
  }

  // 10: progress bar, identity threshold
  host.progress(0, s.progressWidth);
  c.idthreshold = toSingle(CDbl(s.EFIdentities));

  // 11: the scans. The random expectation needs nothing of the scan along
  // the longest sequence, so with a second core it runs beside it.
  c.kernel = &kernelForRun(s.kernel, c.st.matrice, c.W);
  // A stage out of memory fails the run: the parts of the scan and the
  // random expectation end at the stop that fail sets.
  auto stage = [&](void (*scan)(RunContext&)) {
    try {
      scan(c);
    } catch (const std::bad_alloc&) {
      c.fail(outOfMemoryText(s));
      // The scan left without its stop steps: the tail it would have taken
      // is given up here, or its thread waits for a taker for ever.
      if (c.scanTail) c.scanTail->giveUp();
    }
  };
  if (s.CBCPG) {
    stage(cpgScan);
  } else {
    if (!c.kernel->isScalar()) c.columns.emplace(c.cells, c.m1->data(), c.nshort, c.W, c.kernel->scores);
    c.threads = runThreads(s);
    if (c.threads >= 2) {
      openScanTail(c);
      startH0(c);
    }
    stage(c.kernel->isScalar() ? substitutionScan : substitutionScanColumns);
    stage(h0Scan);
  }

  out.listingEnd = c.reportSpilled + c.report.size();
  if (!st.askclose) {
    try {
      finishRun(c, out);
    } catch (const std::bad_alloc&) {
      out.stopped = true;
      out.failure = outOfMemoryText(s);
    }
    // The last bytes into the sinks: a write that fails there fails the run.
    c.spillTexts(true);
  }
  if (st.askclose) {
    out.stopped = true;
    if (out.failure.empty()) out.failure = c.failure();
  }
  if (!s.reportSink) out.report = std::move(c.report);
  return out;
}

void endOfRun(ComparisonState& st, Form& form, const RunOutcome& out, RunHost& host,
              const std::function<void()>& graph) {
  if (out.refused) return;
  if (!out.stopped) {
    st.maxgraph = out.maxgraph;
    form.EF_MaxX = out.EF_MaxX;
    st.windgraph = out.windgraph;
    st.meangraph = out.meangraph;
    st.sdgraph = out.sdgraph;
    st.omeangraph = out.omeangraph;
    st.osdgraph = out.osdgraph;
    st.omaxgraph = out.omaxgraph;
    st.sumu2bas = out.sumu2bas;
    st.sumu2up = out.sumu2up;
    if (graph) graph();
  }
  // A run that failed says why in place of its last text.
  const std::string last = out.failure.empty() ? "End..." : out.failure;
  form.Message = last;
  host.message(last);
  form.Results = out.report;
  host.beep();
}

}  // namespace trelvane
