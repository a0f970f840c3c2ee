// scan_found.h -- what the tests of the positions found, and its writing into rows and the listing, in order.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace trelvane {

struct RunContext;

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
  // The positions' rows, one line each, where the tests wrote them (a
  // tester on a thread beside others does); empty where they are left to
  // writeFound.
  std::string rows;

  void clear() {
    positions.clear();
    starts.clear();
    windows.clear();
    rows.clear();
  }
  // Keeps the first `keep` positions only.
  void truncate(std::size_t keep);
  // The memory the stretch holds, about.
  std::size_t bytes() const {
    return positions.size() * sizeof(PositionFound) + starts.size() * sizeof(int64_t) + windows.size() +
           rows.size();
  }
};

// Positions a stretch holds before it goes to be written.
inline constexpr std::size_t kStretch = 256;

// Writes the rows, the tie lists and the alignment listing of a stretch of
// positions, in their order: what the scan would have written at once.
void writeFound(RunContext& c, const Found& f);

// The rows and the report written on a thread of their own while the scan
// goes on: the scan hands over stretches of positions, the writer takes them
// in their order. Nothing else touches the rows, the report, the tie list,
// m2 or the profile sums until finish() returns.
class FoundWriter {
 public:
  explicit FoundWriter(RunContext& c) : c_(c), thread_([this] { body(); }) {}
  ~FoundWriter() { finish(); }

  // Hands over a stretch; f comes back empty, for the next one.
  void handOver(Found& f);
  // Waits until every stretch is written.
  void finish();

 private:
  void body();

  // The writer is woken once this many stretches wait: each wake takes a
  // core from a scan for a while, so fewer, longer turns cost less.
  static constexpr std::size_t kWakeAt = 8;

  RunContext& c_;
  std::mutex mutex_;
  std::condition_variable cv_;
  std::deque<Found> queue_;
  std::vector<Found> spare_;
  bool done_ = false;
  std::thread thread_;  // last: it starts when all the above stands
};

}  // namespace trelvane
