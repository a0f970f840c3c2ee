// scan_tester.h -- the tests of successive positions of the scan along the longest sequence, and parts of it on threads of their own.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "engine/scan_batch.h"
#include "engine/scan_found.h"
#include "engine/scan.h"

namespace trelvane {

struct RunContext;
class ScanTail;

// The tests of successive positions up to `last`: the rows of a batch of
// positions, then for each position its best score, its tied starts and its
// listed ones, into a Found. It reads the run and writes only its own, so
// that parts of the scan can be tested on threads of their own. Where it
// tests the last part, the tail may end it earlier.
class PositionTester {
 public:
  // writeTexts: the positions' rows and alignments are written into the
  // stretches (a tester on a thread of its own), else left to writeFound.
  PositionTester(const RunContext& c, int64_t last, ScanTail* tail, bool writeTexts);

  // Fills the row the first batch starts from with scores[0 .. lastshort].
  void setBefore(const float* scores) { batch_.setBefore(scores); }
  // The rows of the positions from to to, computed and not tested.
  void warmUp(int64_t from, int64_t to);
  // Whether position i, the one after the last tested or warmed up, is this
  // tester's: its row is then computed.
  bool ready(int64_t i);
  // Tests position i, once ready.
  void test(int64_t i, Found& found);

 private:
  // The rows of the positions from i to i + n - 1; where warmFrom is given,
  // only the starts up to p - warmFrom of each position p.
  void computeBatch(int64_t i, int n, const int64_t* warmFrom = nullptr);
  const uint8_t* window(int64_t i);

  const RunContext& c_;
  int64_t last_;
  ScanTail* tail_;
  RowBatch batch_;
  int step_ = 0, batched_ = 0;  // the step of the batch for the next position, of batched_
  std::vector<uint64_t> candidates_;
  std::vector<uint8_t> scratch_;
  std::vector<const void*> leave_, enter_;
  std::vector<const uint8_t*> wins_;
  std::vector<float> starts_;
  std::vector<int64_t> upTo_;
  std::vector<uint8_t> winCopies_;
  bool writeTexts_;
  ScoreTexts texts_;
};

// The stretches of a part tested on another thread, handed over in their
// order.
class PartQueue {
 public:
  // For the part's thread: hands a stretch over (f comes back empty),
  // waiting while too much waits already; marks the part ended.
  void publish(Found& f);
  void end();
  bool givenUp() const { return giveUp_; }
  // For the scan: the next stretch, waiting for it; false once the part
  // has ended (or was given up) and every stretch is taken.
  bool take(Found& f);
  // The part's thread ends at its next stretch.
  void giveUp();

 private:
  std::atomic<bool> giveUp_{false};
  std::mutex mutex_;
  std::condition_variable cv_;
  std::deque<Found> ready_;
  std::size_t readyBytes_ = 0;
  bool ended_ = false;
};

// Tests the positions from to to on the calling thread into queue, after the
// lastshort + 1 positions before them (from zeros), so that every diagonal it
// tests has seen the operations of the whole scan. A part starts far enough
// after the first position for those to lie after it. Ends the queue.
void testPart(const RunContext& c, int64_t from, int64_t to, ScanTail* tail, PartQueue& queue);

// A later part of the scan, from to to, tested on a thread of its own.
class PartTester {
 public:
  PartTester(const RunContext& c, int64_t from, int64_t to, ScanTail* tail);
  ~PartTester();
  PartQueue& queue() { return queue_; }

 private:
  PartQueue queue_;
  std::thread thread_;  // last: it starts when all the above stands
};

}  // namespace trelvane
