// h0_scan.cpp -- the random expectation: the resampled sequence and the scan of it, inline or beside the first scan.
#include <atomic>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <system_error>
#include <thread>

#include "engine/scan.h"
#include "platform/numtext.h"
#include "platform/rnd.h"

namespace trelvane {

void drawResampled(RunContext& c, uint64_t seed) {
  // Bases drawn with replacement from all of m0; an N is drawn again. The run
  // is refused before this point when m0 holds no base, so the loop ends.
  Rnd rnd(seed);
  const MemoryBlock& m0 = c.st.m0;
  const int64_t last = static_cast<int64_t>(c.nresample) + c.askedW;
  for (int64_t off = 0; off <= last; ++off) {
    uint8_t base;
    do {
      int32_t p = toInt(rnd() * c.nlong);
      base = m0.get(p);
    } while (base == 0);
    c.resampled.set(off, base);
  }
}

namespace {

// The greater of the best so far and a score; a not-a-number score (from a
// not-a-number cell) never becomes the greater.
inline float greater(float a, float b) { return b > a ? b : a; }

// The arithmetic of the random expectation, apart from the host: resampling 0
// in full, then one resampling a step, each recorded in its own sums and
// histogram. It reads the run's inputs and writes nothing of the run, so it
// can run on a thread of its own.
class H0Scanner {
 public:
  explicit H0Scanner(const RunContext& c)
      : c_(c), row_(static_cast<std::size_t>(c.lastshort) + 1, 0.0f),
        histogram_(c.histogram.size(), 0.0f) {}

  void first() {
    const uint8_t* m1 = c_.m1->data();
    const uint8_t* res = c_.resampled.data();
    float maxscore = 0.0f;
    for (int64_t j = 0; j <= c_.lastshort; ++j) {
      row_[j] = fullScoreFromZero(m1 + j, res, c_.W, c_.cells);
      maxscore = greater(maxscore, row_[j]);
    }
    record(maxscore);
  }

  void step(int64_t r) {
    const uint8_t* m1 = c_.m1->data();
    const uint8_t* res = c_.resampled.data();
    const int32_t W = c_.W;
    const int64_t lastshort = c_.lastshort;
    float* row = row_.data();
    float maxscore = 0.0f;
    // The start of the diagonal first, so that its chain of additions
    // overlaps the row; it goes into the row after.
    const float start = fullScoreFromZero(m1, res + r, W, c_.cells);
    if (c_.kernel->isScalar()) {
      advanceRow(row, m1, lastshort, W, c_.cells.column(res[r - 1]), c_.cells.column(res[r + W - 1]));
      for (int64_t j = lastshort; j >= 1; --j) maxscore = greater(maxscore, row[j]);
    } else {
      const ScanColumns& cols = *c_.columns;
      maxscore = greater(maxscore, c_.kernel->advanceMax(row, lastshort, cols.leave(res[r - 1]),
                                                         cols.enter(res[r + W - 1])));
    }
    row[0] = start;
    maxscore = greater(maxscore, row[0]);
    record(maxscore);
  }

  // Resamplings r and r + 1 in one pass over the row where the kernel can;
  // r + 1 is left pending, to be recorded by recordPending().
  void stepPair(int64_t r) {
    const ScanKernel& kernel = *c_.kernel;
    if (kernel.isScalar() || !kernel.advanceMaxPair) {
      step(r);
      pendingRow_ = r + 1;
      return;
    }
    const uint8_t* m1 = c_.m1->data();
    const uint8_t* res = c_.resampled.data();
    const int32_t W = c_.W;
    const ScanColumns& cols = *c_.columns;
    float* row = row_.data();
    const float start1 = fullScoreFromZero(m1, res + r, W, c_.cells);
    const float start2 = fullScoreFromZero(m1, res + r + 1, W, c_.cells);
    float best1, best2;
    kernel.advanceMaxPair(row, c_.lastshort, cols.leaveBack(res[r - 1]), cols.enterBack(res[r + W - 1]), start1,
                          cols.leave(res[r]), cols.enter(res[r + W]), &best1, &best2);
    row[0] = start2;
    record(greater(greater(0.0f, best1), start1));
    pendingRow_ = -1;
    pending_ = greater(greater(0.0f, best2), start2);
  }
  // Records resampling r + 1 of the last stepPair(r).
  void recordPending() {
    if (pendingRow_ >= 0) {
      step(pendingRow_);
      pendingRow_ = -1;
    } else {
      record(pending_);
    }
  }

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
  float pending_ = 0.0f;     // the best score of the second resampling of a pair
  int64_t pendingRow_ = -1;  // or that resampling, where it is still to be done
  ScoreRow row_;
  std::vector<float> histogram_;
  ScoreSums sums_;
};

}  // namespace

// The random expectation on a thread of its own. It counts the resamplings
// done, so that the host can be told of them in their order afterwards, and
// ends early when the run is stopped or given up.
class H0Worker {
 public:
  explicit H0Worker(const RunContext& c) : scanner_(c), c_(c) {
    thread_ = std::thread([this] { body(); });
  }
  ~H0Worker() {
    abort_ = true;
    if (thread_.joinable()) thread_.join();
  }

  // Waits until resampling r is done, or the thread has ended.
  void waitFor(int64_t r) {
    std::unique_lock lock(mutex_);
    cv_.wait(lock, [&] { return done_ >= r; });
  }
  void join() {
    if (thread_.joinable()) thread_.join();
  }
  void handOver(RunContext& c) { scanner_.handOver(c); }

 private:
  static constexpr int64_t kReportEvery = 64;

  void body() {
    scanner_.first();
    // two resamplings a pass over the row, kReportEvery being even
    int64_t r = 1;
    for (; r + 1 <= c_.nresample; r += 2) {
      if (abort_ || c_.st.askclose) break;
      scanner_.stepPair(r);
      scanner_.recordPending();
      if ((r + 1) % kReportEvery == 0) publish(r + 1);
    }
    if (r == c_.nresample && !(abort_ || c_.st.askclose)) scanner_.step(r);
    publish(std::numeric_limits<int64_t>::max());
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
  std::atomic<bool> abort_{false};
  std::mutex mutex_;
  std::condition_variable cv_;
  int64_t done_ = 0;
  std::thread thread_;  // last: it starts when all the above stands
};

void H0WorkerEnd::operator()(H0Worker* w) const { delete w; }

void startH0(RunContext& c) {
  try {
    c.h0worker.reset(new H0Worker(c));
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
    // here, each yield when the one before it is done.
    for (int64_t r = 1; r <= c.nresample; ++r) {
      c.h0worker->waitFor(r - 1);
      if (yieldAndTestStop(c, counter, progressstep, wrap32(span + r), total)) break;
    }
    c.h0worker->join();
    c.h0worker->handOver(c);
    c.h0worker.reset();
    return;
  }

  // resampling 0, every window pair in full; each further resampling is the
  // next offset of the random sequence
  H0Scanner scanner(c);
  scanner.first();
  // two resamplings a pass over the row: the second is recorded after its
  // own yield, and dropped with a stop there
  for (int64_t r = 1; r <= c.nresample; ++r) {
    if (yieldAndTestStop(c, counter, progressstep, wrap32(span + r), total)) break;
    if (r % 2 == 0) scanner.recordPending();
    else if (r + 1 <= c.nresample) scanner.stepPair(r);
    else scanner.step(r);
  }
  scanner.handOver(c);
}

}  // namespace trelvane
