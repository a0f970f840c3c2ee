// h0_scan.cpp -- the random expectation: the resampled sequence and the scan of it, inline or beside the first scan.
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

#include "engine/scan.h"
#include "engine/scan_batch.h"
#include "engine/scan_tail.h"
#include "engine/striped_batch.h"
#include "platform/numtext.h"
#include "platform/rnd.h"

namespace trelvane {

void drawResampled(const RunContext& c, MemoryBlock& resampled) {
  // Bases drawn with replacement from all of m0; an N is drawn again. The run
  // is refused before this point when m0 holds no base, so the loop ends.
  Rnd rnd(c.s.seed);
  const MemoryBlock& m0 = c.st.m0;
  const int64_t last = static_cast<int64_t>(c.nresample) + c.askedW;
  for (int64_t off = 0; off <= last; ++off) {
    uint8_t base;
    do {
      int32_t p = toInt(rnd() * c.nlong);
      base = m0.get(p);
    } while (base == 0);
    resampled.set(off, base);
  }
}

namespace {

// The greater of the best so far and a score; a not-a-number score (from a
// not-a-number cell) never becomes the greater.
inline float greater(float a, float b) { return b > a ? b : a; }

// The arithmetic of the random expectation, apart from the host: resampling 0
// in full, then one resampling a step, each recorded in its own sums and
// histogram. It reads the run's inputs and writes nothing of the run, so it
// can run on a thread of its own. The fast kernels take the steps a batch at
// a time; each step's best score waits to be recorded in its turn.
class H0Scanner {
 public:
  explicit H0Scanner(const RunContext& c)
      : c_(c), row_(static_cast<std::size_t>(c.lastshort) + 1, 0.0f),
        histogram_(c.histogram.size(), 0.0f) {
    if (c.kernel->advanceStriped)
      striped_.emplace(*c.kernel, c.cells, c.m1->data(), c.nshort, c.W, c.lastshort);
    else if (!c.kernel->isScalar())
      batch_.emplace(*c.kernel, c.lastshort, RowBatch::Keep::kBestOnly);
    const std::size_t steps = static_cast<std::size_t>(batchSteps());
    pending_.resize(steps);
    leave_.resize(steps);
    enter_.resize(steps);
    wins_.resize(steps);
    starts_.resize(steps);
  }

  void first() {
    const uint8_t* m1 = c_.m1->data();
    const uint8_t* res = c_.resampled.data();
    float maxscore = 0.0f;
    for (int64_t j = 0; j <= c_.lastshort; ++j) {
      row_[j] = fullScoreFromZero(m1 + j, res, c_.W, c_.cells);
      maxscore = greater(maxscore, row_[j]);
    }
    if (batch_) batch_->setBefore(row_.data());
    if (striped_) striped_->setBefore(row_.data());
    record(maxscore);
  }

  // The most resamplings that compute() takes at once.
  int batchSteps() const { return striped_ ? striped_->steps() : batch_ ? batch_->steps() : 1; }
  // The resamplings whose best scores wait to be recorded.
  int pending() const { return pendingCount_ - pendingNext_; }

  // Resamplings r to r + n - 1, n at most batchSteps(), none pending.
  void compute(int64_t r, int n) {
    const uint8_t* m1 = c_.m1->data();
    const uint8_t* res = c_.resampled.data();
    const int32_t W = c_.W;
    pendingCount_ = n;
    pendingNext_ = 0;
    if (!batch_ && !striped_) {
      // The start of the diagonal first, then the row; the start goes into
      // the row after, which still needs the previous scorerow[0].
      const float start = fullScoreFromZero(m1, res + r, W, c_.cells);
      float* row = row_.data();
      advanceRow(row, m1, c_.lastshort, W, c_.cells.column(res[r - 1]), c_.cells.column(res[r + W - 1]));
      float maxscore = 0.0f;
      for (int64_t j = c_.lastshort; j >= 1; --j) maxscore = greater(maxscore, row[j]);
      row[0] = start;
      pending_[0] = greater(maxscore, start);
      return;
    }
    const ScanColumns& cols = *c_.columns;
    for (int k = 0; k < n; ++k) wins_[k] = res + r + k;
    // start 0 in the lanes 32 steps at a time
    for (int q = 0; q < n; q += 32) {
      const int part = std::min(32, n - q);
      if (startScoresInLanes(*c_.kernel, W, c_.resampled, r + q))
        c_.kernel->startScores(cols.startLut(), res + r + q, part, W, starts_.data() + q);
      else
        startScoresFromZero(m1, wins_.data() + q, part, W, c_.cells, starts_.data() + q);
    }
    if (striped_) {
      striped_->advance(n, res + r - 1, res + r + W - 1, starts_.data());
      for (int k = 0; k < n; ++k) pending_[k] = greater(greater(0.0f, striped_->best(k)), starts_[k]);
      return;
    }
    for (int k = 0; k < n; ++k) {
      const StepColumns step = cols.forStep(res[r + k - 1], res[r + k + W - 1]);
      leave_[k] = step.leave;
      enter_[k] = step.enter;
    }
    batch_->advance(n, leave_.data(), enter_.data(), starts_.data());
    for (int k = 0; k < n; ++k) pending_[k] = greater(greater(0.0f, batch_->best(k)), starts_[k]);
  }
  // Records the next pending resampling.
  void recordNext() { record(pending_[static_cast<std::size_t>(pendingNext_++)]); }

  // Hands the sums and the histogram to the run.
  void handOver(RunContext& c) {
    c.h0 = sums_;
    c.histogram = std::move(histogram_);
  }

 private:
  void record(float maxscore) {
    int32_t bin = toInt(maxscore);
    // A cell above 1 could lift a score past W: such a bin is not kept.
    if (bin >= 0 && static_cast<std::size_t>(bin) < histogram_.size()) histogram_[bin] += 1.0f;
    sums_.add(maxscore);
  }

  const RunContext& c_;
  ScoreRow row_;  // the scalar kernel's row, and resampling 0's
  std::optional<RowBatch> batch_;      // Single lanes
  std::optional<StripedBatch> striped_;  // integer lanes
  std::vector<float> pending_;
  int pendingCount_ = 0, pendingNext_ = 0;
  std::vector<const void*> leave_, enter_;
  std::vector<const uint8_t*> wins_;
  std::vector<float> starts_;
  std::vector<float> histogram_;
  ScoreSums sums_;
};

}  // namespace

// The random expectation on a thread of its own. It counts the resamplings
// done, so that the host can be told of them in their order afterwards, and
// ends early when the run is stopped or given up.
class H0Worker {
 public:
  // resampled is the run's, drawn here first and read by the scanner only.
  H0Worker(const RunContext& c, MemoryBlock& resampled) : scanner_(c), c_(c), resampled_(resampled) {
    thread_ = std::thread([this] { body(); });
  }
  ~H0Worker() {
    abort_ = true;
    if (c_.scanTail) c_.scanTail->giveUp();
    if (thread_.joinable()) thread_.join();
  }

  // Waits until resampling r is done, or the thread has ended; the last
  // resampling known to be done.
  int64_t waitFor(int64_t r) {
    std::unique_lock lock(mutex_);
    cv_.wait(lock, [&] { return done_ >= r; });
    return done_;
  }
  void join() {
    if (thread_.joinable()) thread_.join();
  }
  void handOver(RunContext& c) { scanner_.handOver(c); }

 private:
  static constexpr int64_t kReportEvery = 64;

  void body() {
    try {
      resample();
    } catch (const std::bad_alloc&) {
      // The run ends, not the process.
      c_.fail(outOfMemoryText(c_.s));
    }
    publish(std::numeric_limits<int64_t>::max());
    // Then the end of the scan along the longest sequence, where enough of
    // it is left.
    if (!abort_) takeScanTail(c_);
  }
  void resample() {
    drawResampled(c_, resampled_);
    scanner_.first();
    for (int64_t r = 1; r <= c_.nresample;) {
      if (abort_ || c_.st.askclose) break;
      const int n = static_cast<int>(std::min<int64_t>(scanner_.batchSteps(), c_.nresample - r + 1));
      scanner_.compute(r, n);
      while (scanner_.pending() > 0) scanner_.recordNext();
      // told every kReportEvery resamplings, not at every batch
      if ((r - 1) / kReportEvery != (r + n - 1) / kReportEvery) {
        c_.h0done.store(r + n - 1, std::memory_order_relaxed);
        publish(r + n - 1);
      }
      r += n;
    }
    c_.h0done.store(std::max<int64_t>(c_.nresample, 0), std::memory_order_relaxed);
  }
  void publish(int64_t r) {
    {
      std::lock_guard lock(mutex_);
      done_ = r;
    }
    cv_.notify_all();
  }

  H0Scanner scanner_;
  const RunContext& c_;
  MemoryBlock& resampled_;
  std::atomic<bool> abort_{false};
  std::mutex mutex_;
  std::condition_variable cv_;
  int64_t done_ = 0;
  std::thread thread_;  // last: it starts when all the above stands
};

void H0WorkerEnd::operator()(H0Worker* w) const { delete w; }

void startH0(RunContext& c) {
  try {
    c.h0worker.reset(new H0Worker(c, c.resampled));
  } catch (const std::system_error&) {
    // No thread to be had: h0Scan does the work itself, after the scan.
    c.h0worker.reset();
  }
}

void h0Scan(RunContext& c) {
  c.host.message("Estimate of SD");
  const int32_t span = wrap32(c.lastpos - c.firstpos);
  const int32_t total = wrap32(static_cast<int64_t>(span) + c.nresample);
  const int32_t progressstep = toInt(c.nresample / 100.0);
  int32_t counter = 0;

  if (c.h0worker) {
    // The resamplings run on the worker; the host sees them as if they ran
    // here, each yield when the one before it is done (asked of the worker
    // only beyond what it told last).
    int64_t done = 0;
    for (int64_t r = 1; r <= c.nresample; ++r) {
      if (r - 1 > done) done = c.h0worker->waitFor(r - 1);
      // The bar has shown the resamplings done beside the scan already.
      const int64_t shown = std::max<int64_t>(r, c.h0done.load(std::memory_order_relaxed));
      if (yieldAndTestStop(c, counter, progressstep, wrap32(span + shown), total)) break;
    }
    c.h0worker->join();
    c.h0worker->handOver(c);
    c.h0worker.reset();
    return;
  }

  // resampling 0, every window pair in full; each further resampling is the
  // next offset of the random sequence, computed a batch at a time and
  // recorded after its own yield: a stop there drops it and the rest
  drawResampled(c, c.resampled);
  H0Scanner scanner(c);
  scanner.first();
  for (int64_t r = 1; r <= c.nresample; ++r) {
    if (yieldAndTestStop(c, counter, progressstep, wrap32(span + r), total)) break;
    if (scanner.pending() == 0)
      scanner.compute(r, static_cast<int>(std::min<int64_t>(scanner.batchSteps(), c.nresample - r + 1)));
    scanner.recordNext();
  }
  scanner.handOver(c);
}

}  // namespace trelvane
