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

namespace trelvane {

struct RunContext;

// The tests of successive positions up to `last`: the rows of a batch of
// positions, then for each position its best score, its tied starts and its
// listed ones, into a Found. It reads the run and writes only its own, so
// that parts of the scan can be tested on threads of their own.
class PositionTester {
 public:
  PositionTester(const RunContext& c, int64_t last);

  // The row the first batch starts from.
  float* before() { return batch_.before(); }
  // The rows of the positions from to to, computed and not tested.
  void warmUp(int64_t from, int64_t to);
  // Tests position i, the one after the last tested or warmed up.
  void test(int64_t i, Found& found);

 private:
  // The rows of the positions from i on, as many as a batch takes up to
  // last; returns how many.
  int nextBatch(int64_t i, int64_t last);
  const uint8_t* window(int64_t i);

  const RunContext& c_;
  int64_t last_;
  RowBatch batch_;
  int step_ = 0, batched_ = 0;  // the step of the batch for the next position, of batched_
  std::vector<uint64_t> candidates_;
  std::vector<uint8_t> scratch_;
  std::vector<const float*> leave_, enter_;
  std::vector<const uint8_t*> wins_;
  std::vector<float> starts_;
  std::vector<uint8_t> winCopies_;
};

// A later part of the scan, from to to, tested on a thread of its own. It
// starts lastshort + 1 positions early (or at the first position, from its
// row), so that every diagonal it tests has seen the operations of the whole
// scan, and hands its stretches over in their order.
class PartTester {
 public:
  PartTester(const RunContext& c, int64_t from, int64_t to);
  ~PartTester();

  // The next stretch of the part, waiting for it; false once the part has
  // ended or been given up.
  bool take(Found& f);
  // Gives the part up: the thread ends at its next stretch.
  void giveUp();

 private:
  void body();
  void publish(Found& f);

  const RunContext& c_;
  const int64_t from_, to_;
  std::atomic<bool> giveUp_{false};
  std::mutex mutex_;
  std::condition_variable cv_;
  std::deque<Found> ready_;
  std::size_t readyBytes_ = 0;
  bool ended_ = false;
  std::thread thread_;  // last: it starts when all the above stands
};

}  // namespace trelvane
