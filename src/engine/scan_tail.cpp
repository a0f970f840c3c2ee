// scan_tail.cpp -- the end of the scan along the longest sequence, taken over by the random expectation's thread.
#include "engine/scan_tail.h"

#include <algorithm>

#include "engine/scan.h"

namespace trelvane {

namespace {

// The fewest positions the random expectation's thread takes over: fewer
// are not worth a thread's start and its stretches.
constexpr int64_t kLeastStolen = 1024;

}  // namespace

void openScanTail(RunContext& c) {
  if (!c.kernel->isScalar()) c.scanTail.reset(new ScanTail(c.lastpos));
}

void takeScanTail(const RunContext& c) {
  int64_t from, to;
  if (c.scanTail && c.scanTail->steal(from, to, c.lastshort)) testPart(c, from, to, nullptr, c.scanTail->queue());
}

void ScanTail::arm(int64_t before) {
  {
    std::lock_guard lock(mutex_);
    committed_ = before;
    armed_ = true;
  }
  cv_.notify_all();
}

int ScanTail::commit(int64_t i, int n) {
  std::lock_guard lock(mutex_);
  const int64_t allowed = std::min<int64_t>(n, limit_ - i + 1);
  if (allowed <= 0) return 0;
  committed_ = i + allowed - 1;
  return static_cast<int>(allowed);
}

bool ScanTail::steal(int64_t& from, int64_t& to, int64_t repeat) {
  std::unique_lock lock(mutex_);
  cv_.wait(lock, [&] { return armed_ || givenUp_; });
  if (givenUp_) return false;
  // The tester goes on from committed_ + 1; the thief repeats `repeat`
  // positions before its own, untested and each on fewer starts, about half
  // the work of as many tested ones, and tests a position in about 1.2 times
  // the tester's time (measured at 4 kb and 10 kb: the thief's stretches wait
  // in new memory until the tester has joined its own): the tester keeps
  // 6 / 11 of left + repeat / 2, and both end about together. Worth it where
  // that ends the scan well before the tester alone would: with at least
  // twice the repeat left.
  const int64_t left = limit_ - committed_;
  if (left < 2 * (repeat + 1) || left < 2 * kLeastStolen) return false;
  from = committed_ + 1 + 6 * (left + repeat / 2) / 11;
  to = limit_;
  limit_ = from - 1;
  return true;
}

bool ScanTail::stolen() const {
  std::lock_guard lock(mutex_);
  return limit_ < lastpos_;
}

void ScanTail::giveUp() {
  {
    std::lock_guard lock(mutex_);
    givenUp_ = true;
  }
  cv_.notify_all();
  queue_.giveUp();
}

void ScanTailEnd::operator()(ScanTail* t) const { delete t; }

}  // namespace trelvane
