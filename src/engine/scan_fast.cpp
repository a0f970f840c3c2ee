// scan_fast.cpp -- the substitution scan with a fast row kernel: the maximum first, ties and alignments after.
#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>

#include "engine/scan.h"
#include "engine/scan_batch.h"
#include "platform/numtext.h"

namespace trelvane {

namespace {

// What the tests of one position found: enough to write its row and its
// alignments later, in the order the scan found them.
struct PositionFound {
  int64_t i;
  float maxscore;
  bool n;             // a window with an N: an N row
  uint32_t starts;    // its entries in Found::starts
  int64_t winAt;      // its window in Found::windows, or -1: the window lies in m0
  const uint8_t* win; // the window where it lies in m0
};

// The positions of a stretch of the scan. A start is entered as j + 1 for a
// tie, -(j + 1) for an alignment, in the order of the tests.
struct Found {
  std::vector<PositionFound> positions;
  std::vector<int64_t> starts;
  std::vector<uint8_t> windows;  // copies of windows that lie outside m0's padding

  void clear() {
    positions.clear();
    starts.clear();
    windows.clear();
  }
};

// Writes the rows, the tie lists and the alignment listing of a stretch of
// positions, in their order: what the scan would have written at once.
void writeFound(RunContext& c, const Found& f) {
  std::size_t next = 0;
  for (const PositionFound& p : f.positions) {
    const uint8_t* win = p.winAt >= 0 ? f.windows.data() + p.winAt : p.win;
    c.tielist.clear();
    for (uint32_t k = 0; k < p.starts; ++k) {
      const int64_t e = f.starts[next++];
      if (e > 0) appendStart(c.tielist, e - 1);
      else listAlignment(c, -e - 1, p.i, win);
    }
    if (p.n) nRow(c, p.i, win[0]);
    else scoredRow(c, p.i, win[0], p.maxscore);
  }
}

// The rows and the report written on a thread of their own while the scan
// goes on: the scan hands over stretches of positions, the writer takes them
// in their order. Nothing else touches the rows, the report, the tie list,
// m2 or the profile sums until finish() returns.
class FoundWriter {
 public:
  explicit FoundWriter(RunContext& c) : c_(c), thread_([this] { body(); }) {}
  ~FoundWriter() { finish(); }

  // Hands over a stretch; f comes back empty, for the next one.
  void handOver(Found& f) {
    {
      std::lock_guard lock(mutex_);
      queue_.push_back(std::move(f));
      if (!spare_.empty()) {
        f = std::move(spare_.back());
        spare_.pop_back();
      } else {
        f = Found{};
      }
    }
    cv_.notify_all();
    f.clear();
  }
  // Waits until every stretch is written.
  void finish() {
    {
      std::lock_guard lock(mutex_);
      done_ = true;
    }
    cv_.notify_all();
    if (thread_.joinable()) thread_.join();
  }

 private:
  void body() {
    std::unique_lock lock(mutex_);
    for (;;) {
      cv_.wait(lock, [&] { return done_ || !queue_.empty(); });
      if (queue_.empty()) return;
      Found f = std::move(queue_.front());
      queue_.pop_front();
      lock.unlock();
      writeFound(c_, f);
      f.clear();
      lock.lock();
      spare_.push_back(std::move(f));
    }
  }

  RunContext& c_;
  std::mutex mutex_;
  std::condition_variable cv_;
  std::deque<Found> queue_;
  std::vector<Found> spare_;
  bool done_ = false;
  std::thread thread_;  // last: it starts when all the above stands
};

// Positions a stretch holds before it goes to the writer.
constexpr std::size_t kStretch = 256;

}  // namespace

void substitutionScanColumns(RunContext& c) {
  const MemoryBlock& m0 = c.st.m0;
  const uint8_t* m1 = c.m1->data();
  const int32_t W = c.W;
  const int64_t lastshort = c.lastshort;
  const ScanColumns& cols = *c.columns;
  const ScanKernel& kernel = *c.kernel;
  const int64_t blocks = scanBlockCount(lastshort);
  std::vector<uint64_t> candidates(static_cast<std::size_t>(blocks / 64 + 1));
  scoreFirstPosition(c);
  RowBatch batch(kernel, lastshort);
  std::copy(c.scorerow.begin(), c.scorerow.begin() + (lastshort > 0 ? lastshort : 0) + 1, batch.before());

  // The rows of the next positions, a batch at a time, from position i on.
  const int steps = batch.steps();
  std::vector<const float*> leave(static_cast<std::size_t>(steps)), enter(leave);
  std::vector<const uint8_t*> wins(static_cast<std::size_t>(steps));
  std::vector<float> starts(static_cast<std::size_t>(steps));
  std::vector<uint8_t> winCopies(static_cast<std::size_t>(steps) * (static_cast<std::size_t>(W) + 1));
  auto nextBatch = [&](int64_t i) {
    const int n = static_cast<int>(std::min<int64_t>(steps, c.lastpos - i + 1));
    for (int k = 0; k < n; ++k) {
      const int64_t p = i + k;
      leave[k] = cols.leave(m0.get(p - 1));
      enter[k] = cols.enter(m0.get(p + W - 1));
      const uint8_t* win = c.window(m0, p, W + 1);
      if (win == c.scratch.data()) {
        // a window outside m0's padding: kept apart, the scratch is reused
        uint8_t* copy = winCopies.data() + static_cast<std::size_t>(k) * (static_cast<std::size_t>(W) + 1);
        std::copy(win, win + W + 1, copy);
        win = copy;
      }
      wins[k] = win;
    }
    startScoresFromFirst(m1, wins.data(), n, W, c.cells, starts.data());
    batch.advance(n, leave.data(), enter.data(), starts.data());
    return n;
  };

  // With a second core the rows and the alignments are written beside the
  // scan; without one (or without a thread to be had) each stretch is
  // written as soon as it is found.
  std::unique_ptr<FoundWriter> writer;
  if (c.threads >= 2) {
    try {
      writer = std::make_unique<FoundWriter>(c);
    } catch (const std::system_error&) {
      writer.reset();
    }
  }
  Found found;
  auto flush = [&] {
    if (writer) writer->handOver(found);
    else {
      writeFound(c, found);
      found.clear();
    }
  };
  // Records position i; its window is copied where it does not lie in m0.
  auto record = [&](int64_t i, float maxscore, bool n, const uint8_t* win, std::size_t firstStart) {
    PositionFound p{i, maxscore, n, static_cast<uint32_t>(found.starts.size() - firstStart), -1, win};
    if (win == c.scratch.data()) {
      p.winAt = static_cast<int64_t>(found.windows.size());
      found.windows.insert(found.windows.end(), win, win + W + 1);
    }
    found.positions.push_back(p);
    if (found.positions.size() >= kStretch) flush();
  };

  const int32_t span = wrap32(c.lastpos - c.firstpos);
  const int32_t total = wrap32(static_cast<int64_t>(span) + c.nresample);
  const int32_t progressstep = toInt(span / 100.0);
  int32_t counter = 0;
  int step = 0, batched = 0;  // step of the batch that holds position i, of batched
  for (int64_t i = c.firstpos + 1; i <= c.lastpos; ++i) {
    if (yieldAndTestStop(c, counter, progressstep, wrap32(i - c.firstpos), total)) break;

    if (step == batched) {
      batched = nextBatch(i);
      step = 0;
    }
    const float* row = batch.row(step);
    const float* blockmax = batch.blockmax(step);
    const float best = batch.best(step);
    ++step;
    const uint8_t* win = c.window(m0, i, W + 1);
    const std::size_t firstStart = found.starts.size();
    if (hasN(win, W)) {
      // The row of scores is kept up to date across the N, untested.
      record(i, 0.0f, true, win, firstStart);
      continue;
    }

    // The tests of the scores, descending from lastshort to 1 and then j = 0,
    // leave maxscore at the greatest score when one is above 0, else at 0;
    // ties are then every start whose score equals it, in that order (a
    // not-a-number score equals nothing).
    float maxscore = 0.0f;
    if (best > maxscore) maxscore = best;
    if (row[0] > maxscore) maxscore = row[0];
    // A block is looked into when its best reaches maxscore or the
    // threshold, whichever is lower (a not-a-number threshold lists nothing).
    const float threshold = c.idthreshold;
    const float lower = threshold < maxscore ? threshold : maxscore;
    kernel.blockCandidates(blockmax, blocks, lower, candidates.data());
    for (int64_t w = (blocks + 63) / 64 - 1; w >= 0; --w) {
      // the blocks of this word, descending
      for (uint64_t leftBlocks = candidates[static_cast<std::size_t>(w)]; leftBlocks != 0;) {
        const int64_t b = w * 64 + 63 - __builtin_clzll(leftBlocks);
        leftBlocks &= ~(uint64_t{1} << (b % 64));
        const int64_t blockLo = scanBlockLo(b), blockHi = scanBlockHi(b, lastshort);
        // the starts of the block, descending, kMatchSpan at a time
        for (int64_t hi = blockHi; hi >= blockLo; hi -= kMatchSpan) {
          const int64_t lo = hi - kMatchSpan + 1 > blockLo ? hi - kMatchSpan + 1 : blockLo;
          uint64_t ties = 0, listed = 0;
          kernel.blockMatch(row, lo, hi - lo + 1, maxscore, threshold, &ties, &listed);
          for (uint64_t left = ties | listed; left != 0;) {
            const int k = 63 - __builtin_clzll(left);
            left &= ~(uint64_t{1} << k);
            if ((ties >> k) & 1) found.starts.push_back(lo + k + 1);
            if ((listed >> k) & 1) found.starts.push_back(-(lo + k + 1));
          }
        }
      }
    }
    if (row[0] == maxscore) found.starts.push_back(1);
    if (threshold <= row[0]) found.starts.push_back(-1);
    record(i, maxscore, false, win, firstStart);
  }
  if (writer) {
    writer->handOver(found);
    writer->finish();
  } else {
    writeFound(c, found);
  }
}

}  // namespace trelvane
