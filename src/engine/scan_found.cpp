// scan_found.cpp -- what the tests of the positions found, and its writing into rows and the listing, in order.
#include "engine/scan_found.h"

#include "engine/scan.h"

namespace trelvane {

void Found::truncate(std::size_t keep) {
  if (keep >= positions.size()) return;
  std::size_t entries = 0;
  for (std::size_t k = 0; k < keep; ++k) entries += positions[k].starts;
  if (!rows.empty()) {
    rows.resize(keep > 0 ? positions[keep - 1].rowsEnd : 0);
    listing.resize(keep > 0 ? positions[keep - 1].listingEnd : 0);
  }
  positions.resize(keep);
  starts.resize(entries);
}

void writeFound(RunContext& c, const Found& f) {
  if (!f.rows.empty()) {
    for (const PositionFound& p : f.positions) {
      if (p.n) nProfile(c, p.i);
      else scoredProfile(c, p.i, p.maxscore);
    }
    c.report += f.listing;
    c.rows.appendRows(f.rows);
    return;
  }
  std::size_t next = 0;
  for (const PositionFound& p : f.positions) {
    const uint8_t* win = p.winAt >= 0 ? f.windows.data() + p.winAt : p.win;
    const int64_t* entries = f.starts.data() + next;
    next += p.starts;
    // the alignments into the report, then the row with its ties
    for (uint32_t k = 0; k < p.starts; ++k)
      if (entries[k] < 0) listAlignment(c, -entries[k] - 1, p.i, win);
    if (p.n) nRow(c, p.i, win[0]);
    else scoredRowOfEntries(c, p.i, win[0], p.maxscore, entries, p.starts);
  }
}

}  // namespace trelvane
