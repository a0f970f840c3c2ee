// scan_found.cpp -- what the tests of the positions found, and its writing into rows and the listing, in order.
#include "engine/scan_found.h"

#include "engine/scan.h"
#include "platform/numtext.h"

namespace trelvane {

void Found::truncate(std::size_t keep) {
  if (keep >= positions.size()) return;
  std::size_t entries = 0;
  for (std::size_t k = 0; k < keep; ++k) entries += positions[k].starts;
  positions.resize(keep);
  starts.resize(entries);
  // a row holds no line end but its last byte
  static_assert(EndOfLine.size() == 1);
  std::size_t end = 0;
  for (std::size_t k = 0; k < keep && end < rows.size(); ++k) end = rows.find(EndOfLine[0], end) + 1;
  if (!rows.empty()) rows.resize(end);
}

void writeFound(RunContext& c, const Found& f) {
  const bool rowsWritten = !f.rows.empty();
  std::size_t next = 0;
  for (const PositionFound& p : f.positions) {
    const uint8_t* win = p.winAt >= 0 ? f.windows.data() + p.winAt : p.win;
    const int64_t* entries = f.starts.data() + next;
    next += p.starts;
    // the alignments into the report, then the row with its ties
    for (uint32_t k = 0; k < p.starts; ++k)
      if (entries[k] < 0) listAlignment(c, -entries[k] - 1, p.i, win);
    if (rowsWritten) {
      if (p.n) nProfile(c, p.i);
      else scoredProfile(c, p.i, p.maxscore);
    } else if (p.n) {
      nRow(c, p.i, win[0]);
    } else {
      scoredRowOfEntries(c, p.i, win[0], p.maxscore, entries, p.starts);
    }
  }
  if (rowsWritten) c.rows.appendRows(f.rows);
}

void FoundWriter::handOver(Found& f) {
  bool wake;
  {
    std::lock_guard lock(mutex_);
    queue_.push_back(std::move(f));
    wake = queue_.size() >= kWakeAt;
    if (!spare_.empty()) {
      f = std::move(spare_.back());
      spare_.pop_back();
    } else {
      f = Found{};
    }
  }
  if (wake) cv_.notify_all();
  f.clear();
}

void FoundWriter::finish() {
  {
    std::lock_guard lock(mutex_);
    done_ = true;
  }
  cv_.notify_all();
  if (thread_.joinable()) thread_.join();
}

void FoundWriter::body() {
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

}  // namespace trelvane
