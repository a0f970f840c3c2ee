// scan_found.h -- what the tests of the positions found, and its writing into rows and the listing, in order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
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
  // Where the tests wrote the texts: Found::rows and Found::listing end
  // here once this position's are written.
  std::size_t rowsEnd, listingEnd;
};

// The positions of a stretch of the scan. A start is entered as j + 1 for a
// tie, -(j + 1) for an alignment, in the order of the tests.
struct Found {
  std::vector<PositionFound> positions;
  std::vector<int64_t> starts;
  std::vector<uint8_t> windows;  // copies of windows that lie outside m0's padding
  // The positions' rows, one line each, and their alignments, where the
  // tests wrote them (a tester beside other threads does, so that the
  // writing goes on every core); empty where writeFound writes them.
  std::string rows, listing;

  void clear() {
    positions.clear();
    starts.clear();
    windows.clear();
    rows.clear();
    listing.clear();
  }
  // Keeps the first `keep` positions only.
  void truncate(std::size_t keep);
  // The memory the stretch holds, about.
  std::size_t bytes() const {
    return positions.size() * sizeof(PositionFound) + starts.size() * sizeof(int64_t) + windows.size() +
           rows.size() + listing.size();
  }
  // Whether the stretch should go to be written: kStretch positions, or
  // fewer that hold many alignments.
  bool full() const;
};

// Positions a stretch holds before it goes to be written, and the bytes
// after which it goes with fewer.
inline constexpr std::size_t kStretch = 256;
inline constexpr std::size_t kStretchBytes = std::size_t{4} << 20;

inline bool Found::full() const { return positions.size() >= kStretch || bytes() >= kStretchBytes; }

// Writes the rows, the tie lists and the alignment listing of a stretch of
// positions, in their order: what the scan would have written at once. Where
// the tests wrote the texts, only joins them, with the profile of each
// position (m2 and the sums, in the positions' order).
void writeFound(RunContext& c, const Found& f);

}  // namespace trelvane
