// scan_fast.cpp -- the substitution scan with a fast row kernel, in parts on every core the run may use.
#include <algorithm>
#include <memory>
#include <new>
#include <system_error>
#include <vector>

#include "engine/scan.h"
#include "engine/scan_found.h"
#include "engine/scan_tail.h"
#include "engine/scan_tester.h"
#include "platform/numtext.h"

namespace trelvane {

int64_t shortestScanPart(const RunContext& c) { return std::max<int64_t>(4 * (c.lastshort + 1), 2048); }

namespace {

// The parts of the scan: the first on this thread, the later ones on
// threads of their own (one thread of the run is the random
// expectation's). None where the positions are too few, or where a thread
// cannot be had. Sets the last position of the first part, and the tail of
// the last part that the random expectation's thread may take (nullptr for
// none).
std::vector<std::unique_ptr<PartTester>> startParts(RunContext& c, int64_t& firstPartLast, ScanTail*& tail) {
  std::vector<std::unique_ptr<PartTester>> parts;
  const int64_t count = c.lastpos - c.firstpos;  // positions after the first
  int64_t n = std::min<int64_t>(c.threads - 1, 64);
  while (n > 1 && count / n < shortestScanPart(c)) --n;
  auto partStart = [&](int64_t k) { return c.firstpos + 1 + count * k / std::max<int64_t>(n, 1); };
  tail = c.scanTail.get();
  try {
    for (int64_t k = 1; k < n; ++k) {
      // armed before the part's tester can commit
      if (tail && k == n - 1) tail->arm(partStart(k) - 1);
      parts.push_back(std::make_unique<PartTester>(c, partStart(k), partStart(k + 1) - 1, k == n - 1 ? tail : nullptr));
    }
  } catch (const std::system_error&) {
    // The whole scan on this thread, then; a tail already taken is not used.
    parts.clear();
    if (tail) tail->giveUp();
    tail = nullptr;
  }
  if (tail && parts.empty()) tail->arm(c.firstpos);
  firstPartLast = parts.empty() ? c.lastpos : partStart(1) - 1;
  return parts;
}

}  // namespace

void substitutionScanColumns(RunContext& c) {
  // The rows of the positions ahead, about kRowBytes each, up to 64 MB.
  constexpr int64_t kRowBytes = 24, kMostReserved = int64_t{64} << 20;
  const int64_t rowsAhead = std::max<int64_t>(c.lastpos - c.firstpos + c.W, 0);
  try {
    c.rows.reserve(static_cast<std::size_t>(std::min(rowsAhead, kMostReserved / kRowBytes) * kRowBytes));
  } catch (const std::bad_alloc&) {
    // the rows grow as they come, then
  }
  scoreFirstPosition(c);

  // The rows and alignments of the first part are written here as its
  // stretches fill; those of the parts on other threads are written there,
  // into their stretches, and only joined here, in their order.
  Found found;
  auto flush = [&] {
    writeFound(c, found);
    found.clear();
  };

  // The first part here; the later ones, where there are, go on beside it
  // and are taken in their order, each position after its own yield.
  int64_t firstPartLast;
  ScanTail* tail;
  std::vector<std::unique_ptr<PartTester>> parts = startParts(c, firstPartLast, tail);
  auto giveUp = [&] {
    for (auto& part : parts) part->queue().giveUp();
    if (tail) tail->giveUp();
  };
  const int32_t span = wrap32(c.lastpos - c.firstpos);
  const int32_t total = wrap32(static_cast<int64_t>(span) + c.nresample);
  const int32_t progressstep = toInt(span / 100.0);
  int32_t counter = 0;
  int64_t i = c.firstpos + 1;
  {
    PositionTester tester(c, firstPartLast, parts.empty() ? tail : nullptr, false);
    tester.setBefore(c.scorerow.data());
    for (; tester.ready(i); ++i) {
      if (yieldAndTestStop(c, counter, progressstep, scanUnits(c, i), total)) {
        giveUp();
        flush();
        return;
      }
      tester.test(i, found);
      if (found.full()) flush();
    }
  }
  flush();
  std::vector<PartQueue*> queues;
  for (auto& part : parts) queues.push_back(&part->queue());
  // Once the last part has ended, the positions taken from its end (where
  // taken) follow it.
  std::size_t taken = 0;  // positions of `found` past their yield
  bool tailJoined = false;
  for (std::size_t q = 0;; ++q) {
    if (q == queues.size()) {
      PartQueue* tailQueue = tailJoined || !tail ? nullptr : tail->takenQueue();
      if (!tailQueue) break;
      queues.push_back(tailQueue);
      tailJoined = true;
    }
    for (;;) {
      if (taken == found.positions.size()) {
        if (taken > 0) flush();
        taken = 0;
        if (!queues[q]->take(found)) break;
      }
      if (yieldAndTestStop(c, counter, progressstep, scanUnits(c, i), total)) {
        giveUp();
        found.truncate(taken);
        flush();
        return;
      }
      ++taken;
      ++i;
    }
  }
}

}  // namespace trelvane
