// scan_tail.h -- the end of the scan along the longest sequence, taken over by the random expectation's thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "engine/scan_tester.h"

namespace trelvane {

struct RunContext;

// With two threads or more, the random expectation runs beside the scan
// along the longest sequence, on a thread of its own (h0_scan.cpp). Its
// resamplings are usually done first; the thread then takes over the end of
// the scan's last part, so that both end about together. The scan's last
// part is tested by a PositionTester (on the scan's own thread where there is
// one part, else on a thread of its own); the tail is what they share, in
// this order:
//
//   open    rumcompute, before either starts: openScanTail gives the run a
//           tail where the scan has a fast kernel.
//   arm     the scan, once, before the tester of its last part can commit:
//           arm(before), the part goes from before + 1 to lastpos.
//   commit  the tester of the last part, before computing each batch:
//           commit(i, n) tells how many of the n positions from i it may
//           test. What it has committed to is never taken; where it is
//           given fewer than n, its part ends there.
//   steal   the random expectation's thread, its own work done:
//           takeScanTail waits for the arm, takes about half of what the
//           tester has not committed to (its repeat of the positions before
//           counted, see steal), ends the part before it, and tests the
//           positions taken into queue() as a part on its own thread does.
//           Where too little is left, it takes nothing.
//   join    the scan, once the last part has ended: takenQueue() is the
//           queue of the positions taken (nullptr where none were), whose
//           stretches follow the last part's, in the positions' order.
//   giveUp  whoever ends the run early (the scan at a stop or out of memory,
//           a part that cannot be given a thread, the random expectation's
//           worker as it ends) ends a wait in steal and the taking thread at
//           its next stretch.
//
// All of it is under one lock: the tester takes it once a batch.
class ScanTail {
 public:
  explicit ScanTail(int64_t lastpos) : limit_(lastpos), lastpos_(lastpos) {}

  void arm(int64_t before);
  // How many of the n positions from i the tester may test; 0 where the
  // part ends before i.
  int commit(int64_t i, int n);
  // The positions taken, waiting until the scan has armed the tail; false
  // where too few are left to gain from sharing them after a repeat of
  // `repeat` positions, or the run was given up. Called once.
  bool steal(int64_t& from, int64_t& to, int64_t repeat);
  // Whether positions were taken (once the last part has ended).
  bool stolen() const;
  PartQueue& queue() { return queue_; }
  PartQueue* takenQueue() { return stolen() ? &queue_ : nullptr; }
  void giveUp();

 private:
  mutable std::mutex mutex_;
  std::condition_variable cv_;
  bool armed_ = false, givenUp_ = false;
  int64_t limit_;         // the last position of the last part
  int64_t committed_ = 0; // the last position its tester committed to
  const int64_t lastpos_;
  PartQueue queue_;
};

// open: a tail for the run where its scan has a fast kernel (the scalar scan
// runs whole on its own thread). Called before the random expectation's
// thread starts.
void openScanTail(RunContext& c);
// steal: on the random expectation's thread, once its resamplings are done,
// the positions at the end of the scan where enough are left, tested into
// the tail's queue.
void takeScanTail(const RunContext& c);

}  // namespace trelvane
