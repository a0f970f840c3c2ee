// scan_tester.cpp -- the tests of successive positions of the scan along the longest sequence, and parts of it on threads of their own.
#include "engine/scan_tester.h"

#include <algorithm>

#include "engine/scan.h"

namespace trelvane {

namespace {

// Stretches a part keeps ready beyond this many bytes wait until the scan
// takes them: a part far ahead holds no more than this.
constexpr std::size_t kMostReadyBytes = std::size_t{64} << 20;

}  // namespace

PositionTester::PositionTester(const RunContext& c, int64_t last)
    : c_(c), last_(last), batch_(*c.kernel, c.lastshort),
      candidates_(static_cast<std::size_t>(scanBlockCount(c.lastshort) / 64 + 1)),
      scratch_(static_cast<std::size_t>(c.W) + 2, 0) {
  const std::size_t steps = static_cast<std::size_t>(batch_.steps());
  leave_.resize(steps);
  enter_.resize(steps);
  wins_.resize(steps);
  starts_.resize(steps);
  winCopies_.resize(steps * (static_cast<std::size_t>(c.W) + 1));
}

const uint8_t* PositionTester::window(int64_t i) { return RunContext::windowIn(c_.st.m0, i, c_.W + 1, scratch_); }

int PositionTester::nextBatch(int64_t i, int64_t last) {
  const MemoryBlock& m0 = c_.st.m0;
  const int32_t W = c_.W;
  const ScanColumns& cols = *c_.columns;
  const int n = static_cast<int>(std::min<int64_t>(batch_.steps(), last - i + 1));
  for (int k = 0; k < n; ++k) {
    const int64_t p = i + k;
    leave_[k] = cols.leave(m0.get(p - 1));
    enter_[k] = cols.enter(m0.get(p + W - 1));
    const uint8_t* win = window(p);
    if (win == scratch_.data()) {
      // a window outside m0's padding: kept apart, the scratch is reused
      uint8_t* copy = winCopies_.data() + static_cast<std::size_t>(k) * (static_cast<std::size_t>(W) + 1);
      std::copy(win, win + W + 1, copy);
      win = copy;
    }
    wins_[k] = win;
  }
  startScoresFromFirst(c_.m1->data(), wins_.data(), n, W, c_.cells, starts_.data());
  batch_.advance(n, leave_.data(), enter_.data(), starts_.data());
  return n;
}

void PositionTester::warmUp(int64_t from, int64_t to) {
  for (int64_t i = from; i <= to; i += nextBatch(i, to)) {
  }
  step_ = batched_ = 0;
}

void PositionTester::test(int64_t i, Found& found) {
  if (step_ == batched_) {
    batched_ = nextBatch(i, last_);
    step_ = 0;
  }
  const ScanKernel& kernel = *c_.kernel;
  const int64_t lastshort = c_.lastshort;
  const int64_t blocks = scanBlockCount(lastshort);
  const float* row = batch_.row(step_);
  const float* blockmax = batch_.blockmax(step_);
  const float best = batch_.best(step_);
  ++step_;
  const uint8_t* win = window(i);
  const std::size_t firstStart = found.starts.size();
  // Records position i; its window is copied where it does not lie in m0.
  auto record = [&](float maxscore, bool n) {
    PositionFound p{i, maxscore, n, static_cast<uint32_t>(found.starts.size() - firstStart), -1, win};
    if (win == scratch_.data()) {
      p.winAt = static_cast<int64_t>(found.windows.size());
      found.windows.insert(found.windows.end(), win, win + c_.W + 1);
    }
    found.positions.push_back(p);
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
  if (row[0] > maxscore) maxscore = row[0];
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
  record(maxscore, false);
}

PartTester::PartTester(const RunContext& c, int64_t from, int64_t to)
    : c_(c), from_(from), to_(to), thread_([this] { body(); }) {}

PartTester::~PartTester() {
  giveUp();
  if (thread_.joinable()) thread_.join();
}

void PartTester::giveUp() {
  giveUp_ = true;
  cv_.notify_all();
}

void PartTester::body() {
  PositionTester tester(c_, to_);
  // A diagonal tested at position from_ or later started at j = 0 no more
  // than lastshort positions before: from warmFrom + 1 on, the row holds what
  // the whole scan has, whatever it held at warmFrom (zeros). A part starts
  // far enough after the first position for warmFrom to lie beyond it.
  const int64_t warmFrom = from_ - (c_.lastshort + 1);
  tester.warmUp(warmFrom + 1, from_ - 1);
  Found f;
  for (int64_t i = from_; i <= to_; ++i) {
    if (f.positions.empty() && giveUp_) break;
    tester.test(i, f);
    if (f.positions.size() >= kStretch) publish(f);
  }
  if (!f.positions.empty()) publish(f);
  {
    std::lock_guard lock(mutex_);
    ended_ = true;
  }
  cv_.notify_all();
}

void PartTester::publish(Found& f) {
  std::unique_lock lock(mutex_);
  cv_.wait(lock, [&] { return readyBytes_ < kMostReadyBytes || giveUp_; });
  readyBytes_ += f.bytes();
  ready_.push_back(std::move(f));
  lock.unlock();
  cv_.notify_all();
  f = Found{};
}

bool PartTester::take(Found& f) {
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

}  // namespace trelvane
