// scan_tester.cpp -- the tests of successive positions of the scan along the longest sequence, and parts of it on threads of their own.
#include "engine/scan_tester.h"

#include <algorithm>

#include "engine/scan.h"
#include "engine/scan_tail.h"

namespace trelvane {

namespace {

// Stretches a part keeps ready beyond this many bytes wait until the scan
// takes them: a part far ahead holds no more than this.
constexpr std::size_t kMostReadyBytes = std::size_t{64} << 20;

}  // namespace

PositionTester::PositionTester(const RunContext& c, int64_t last, ScanTail* tail, bool writeTexts)
    : c_(c), last_(last), tail_(tail), batch_(*c.kernel, c.lastshort, RowBatch::Keep::kCandidates, c.idthreshold),
      candidates_(static_cast<std::size_t>(scanBlockCount(c.lastshort) / 64 + 1)),
      scratch_(static_cast<std::size_t>(c.W) + 2, 0), writeTexts_(writeTexts) {
  const std::size_t steps = static_cast<std::size_t>(batch_.steps());
  leave_.resize(steps);
  enter_.resize(steps);
  wins_.resize(steps);
  starts_.resize(steps);
  upTo_.resize(steps);
  winCopies_.resize(steps * (static_cast<std::size_t>(c.W) + 1));
}

const uint8_t* PositionTester::window(int64_t i) { return RunContext::windowIn(c_.st.m0, i, c_.W + 1, scratch_); }

void PositionTester::computeBatch(int64_t i, int n, const int64_t* warmFrom) {
  const MemoryBlock& m0 = c_.st.m0;
  const int32_t W = c_.W;
  const ScanColumns& cols = *c_.columns;
  for (int k = 0; k < n; ++k) {
    const int64_t p = i + k;
    const StepColumns step = cols.forStep(m0.get(p - 1), m0.get(p + W - 1));
    leave_[k] = step.leave;
    enter_[k] = step.enter;
    const uint8_t* win = window(p);
    if (win == scratch_.data()) {
      // a window outside m0's padding: kept apart, the scratch is reused
      uint8_t* copy = winCopies_.data() + static_cast<std::size_t>(k) * (static_cast<std::size_t>(W) + 1);
      std::copy(win, win + W + 1, copy);
      win = copy;
    }
    wins_[k] = win;
  }
  if (startScoresInLanes(*c_.kernel, W, m0, i))
    c_.kernel->startScores(cols.startLut(), m0.data() + i, n, W, starts_.data());
  else
    startScoresFromFirst(c_.m1->data(), wins_.data(), n, W, c_.cells, starts_.data());
  if (!warmFrom) {
    batch_.advance(n, leave_.data(), enter_.data(), starts_.data());
    return;
  }
  for (int k = 0; k < n; ++k) upTo_[k] = i + k - *warmFrom;
  batch_.advanceUpTo(n, leave_.data(), enter_.data(), starts_.data(), upTo_.data());
}

void PositionTester::warmUp(int64_t from, int64_t to) {
  // Start j at a later position p reads start j - 1 at p - 1: the diagonals
  // that reach the first tested position cover, at a position p of the
  // repeat, the starts up to p - from alone.
  for (int64_t i = from; i <= to;) {
    const int n = static_cast<int>(std::min<int64_t>(batch_.steps(), to - i + 1));
    computeBatch(i, n, &from);
    i += n;
  }
  step_ = batched_ = 0;
}

bool PositionTester::ready(int64_t i) {
  if (step_ < batched_) return true;
  int n = static_cast<int>(std::min<int64_t>(batch_.steps(), last_ - i + 1));
  if (tail_ && n > 0) n = tail_->commit(i, n);
  if (n <= 0) return false;
  computeBatch(i, n);
  batched_ = n;
  step_ = 0;
  return true;
}

void PositionTester::test(int64_t i, Found& found) {
  const ScanKernel& kernel = *c_.kernel;
  const int64_t lastshort = c_.lastshort;
  const int64_t blocks = scanBlockCount(lastshort);
  const void* row = batch_.row(step_);
  const void* blockmax = batch_.blockmax(step_);
  const float start0 = kernel.scoreAt(row, 0);
  const float best = batch_.best(step_);
  ++step_;
  const uint8_t* win = window(i);
  const std::size_t firstStart = found.starts.size();
  // Records position i; its window is copied where it does not lie in m0.
  // The fields are stored one by one into the vector: an aggregate built on
  // the stack first is copied out with wide loads that wait on its narrow
  // stores.
  auto record = [&](float maxscore, bool n) {
    const auto count = static_cast<uint32_t>(found.starts.size() - firstStart);
    PositionFound& p = found.positions.emplace_back();
    p.i = i;
    p.maxscore = maxscore;
    p.n = n;
    p.starts = count;
    p.winAt = -1;
    p.win = win;
    if (win == scratch_.data()) {
      p.winAt = static_cast<int64_t>(found.windows.size());
      found.windows.insert(found.windows.end(), win, win + c_.W + 1);
    }
    if (!writeTexts_) return;
    const int64_t* entries = found.starts.data() + firstStart;
    for (uint32_t k = 0; k < count; ++k)
      if (entries[k] < 0) alignmentText(found.listing, c_.m1->data(), c_.W, -entries[k] - 1, i, win);
    if (n) nRowText(found.rows, i, win[0]);
    else scoredRowText(found.rows, texts_, i, win[0], maxscore, entries, count);
    p.rowsEnd = found.rows.size();
    p.listingEnd = found.listing.size();
  };
  if (hasN(win, c_.W)) {
    // The row of scores is kept up to date across the N, untested.
    record(0.0f, true);
    return;
  }

  // The tests of the scores, descending from lastshort to 1 and then j = 0,
  // leave maxscore at the greatest score when one is above 0, else at 0;
  // ties are then every start whose score equals it, in that order (a
  // not-a-number score equals nothing).
  float maxscore = 0.0f;
  if (best > maxscore) maxscore = best;
  if (start0 > maxscore) maxscore = start0;
  // A block is looked into when its best reaches maxscore or the
  // threshold, whichever is lower (a not-a-number threshold lists nothing).
  const float threshold = c_.idthreshold;
  const float lower = threshold < maxscore ? threshold : maxscore;
  kernel.blockCandidates(blockmax, blocks, lower, candidates_.data());
  for (int64_t w = (blocks + 63) / 64 - 1; w >= 0; --w) {
    // the blocks of this word, descending
    for (uint64_t leftBlocks = candidates_[static_cast<std::size_t>(w)]; leftBlocks != 0;) {
      const int64_t b = w * 64 + 63 - __builtin_clzll(leftBlocks);
      leftBlocks &= ~(uint64_t{1} << (b % 64));
      const int64_t blockLo = scanBlockLo(b), blockHi = scanBlockHi(b, lastshort);
      // the whole block in one call; its starts descending, kMatchSpan a word
      uint64_t ties[kScanBlock / kMatchSpan], listed[kScanBlock / kMatchSpan];
      kernel.blockMatch(row, blockLo, blockHi - blockLo + 1, maxscore, threshold, ties, listed);
      for (int64_t s = (blockHi - blockLo) / kMatchSpan; s >= 0; --s) {
        const int64_t lo = blockLo + s * kMatchSpan;
        for (uint64_t left = ties[s] | listed[s]; left != 0;) {
          const int k = 63 - __builtin_clzll(left);
          left &= ~(uint64_t{1} << k);
          if ((ties[s] >> k) & 1) found.starts.push_back(lo + k + 1);
          if ((listed[s] >> k) & 1) found.starts.push_back(-(lo + k + 1));
        }
      }
    }
  }
  if (start0 == maxscore) found.starts.push_back(1);
  if (threshold <= start0) found.starts.push_back(-1);
  record(maxscore, false);
}

void PartQueue::publish(Found& f) {
  std::unique_lock lock(mutex_);
  cv_.wait(lock, [&] { return readyBytes_ < kMostReadyBytes || giveUp_; });
  readyBytes_ += f.bytes();
  ready_.push_back(std::move(f));
  lock.unlock();
  cv_.notify_all();
  f = Found{};
}

void PartQueue::end() {
  {
    std::lock_guard lock(mutex_);
    ended_ = true;
  }
  cv_.notify_all();
}

bool PartQueue::take(Found& f) {
  std::unique_lock lock(mutex_);
  cv_.wait(lock, [&] { return !ready_.empty() || ended_; });
  if (ready_.empty()) return false;
  f = std::move(ready_.front());
  ready_.pop_front();
  readyBytes_ -= f.bytes();
  lock.unlock();
  cv_.notify_all();
  return true;
}

void PartQueue::giveUp() {
  {
    std::lock_guard lock(mutex_);
    giveUp_ = true;
  }
  cv_.notify_all();
}

void testPart(const RunContext& c, int64_t from, int64_t to, ScanTail* tail, PartQueue& queue) {
  try {
    PositionTester tester(c, to, tail, true);
    // A diagonal tested at position from or later started at j = 0 no more
    // than lastshort positions before: from there on the row holds what the
    // whole scan has, whatever it held before (zeros).
    tester.warmUp(from - c.lastshort, from - 1);
    Found f;
    for (int64_t i = from; tester.ready(i); ++i) {
      if (f.positions.empty() && queue.givenUp()) break;
      tester.test(i, f);
      if (f.full()) queue.publish(f);
    }
    if (!f.positions.empty()) queue.publish(f);
  } catch (const std::bad_alloc&) {
    // The run ends, not the process: the scan stops at its next position.
    c.fail(outOfMemoryText(c.s));
  }
  queue.end();
}

PartTester::PartTester(const RunContext& c, int64_t from, int64_t to, ScanTail* tail)
    : thread_([this, &c, from, to, tail] { testPart(c, from, to, tail, queue_); }) {}

PartTester::~PartTester() {
  queue_.giveUp();
  if (thread_.joinable()) thread_.join();
}

}  // namespace trelvane
