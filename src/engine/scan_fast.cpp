// scan_fast.cpp -- the substitution scan with a fast row kernel, in parts on every core the run may use.
#include <algorithm>
#include <memory>
#include <system_error>
#include <vector>

#include "engine/scan.h"
#include "engine/scan_found.h"
#include "engine/scan_tester.h"
#include "platform/numtext.h"

namespace trelvane {

namespace {

// A part of the scan on a thread of its own repeats the lastshort + 1
// positions before it: a part takes at least four times as many (so that
// the repeat always begins after the first position, too).
int64_t shortestPart(const RunContext& c) { return std::max<int64_t>(4 * (c.lastshort + 1), 2048); }

// The later parts of the scan on threads of their own: none where the
// positions are too few, or where a thread cannot be had.
std::vector<std::unique_ptr<PartTester>> startParts(const RunContext& c, int64_t& firstPartLast) {
  std::vector<std::unique_ptr<PartTester>> parts;
  const int64_t count = c.lastpos - c.firstpos;  // positions after the first
  int64_t n = std::min<int64_t>(c.threads, 64);
  while (n > 1 && count / n < shortestPart(c)) --n;
  firstPartLast = c.lastpos;
  if (n <= 1) return parts;
  auto partStart = [&](int64_t k) { return c.firstpos + 1 + count * k / n; };
  try {
    for (int64_t k = 1; k < n; ++k)
      parts.push_back(std::make_unique<PartTester>(c, partStart(k), partStart(k + 1) - 1));
  } catch (const std::system_error&) {
    parts.clear();  // the whole scan on this thread, then
    return parts;
  }
  firstPartLast = partStart(1) - 1;
  return parts;
}

}  // namespace

void substitutionScanColumns(RunContext& c) {
  scoreFirstPosition(c);

  // With a second core the rows and the alignments are written beside the
  // scan; without one (or without a thread to be had) each stretch is
  // written as soon as it is found.
  std::unique_ptr<FoundWriter> writer;
  if (c.threads >= 2) {
    try {
      writer = std::make_unique<FoundWriter>(c);
    } catch (const std::system_error&) {
      writer.reset();
    }
  }
  Found found;
  auto flush = [&] {
    if (writer) writer->handOver(found);
    else {
      writeFound(c, found);
      found.clear();
    }
  };

  // The first part here; the later ones, where there are, go on beside it
  // and are taken in their order, each position after its own yield.
  int64_t firstPartLast;
  std::vector<std::unique_ptr<PartTester>> parts = startParts(c, firstPartLast);
  const int32_t span = wrap32(c.lastpos - c.firstpos);
  const int32_t total = wrap32(static_cast<int64_t>(span) + c.nresample);
  const int32_t progressstep = toInt(span / 100.0);
  int32_t counter = 0;
  {
    PositionTester tester(c, firstPartLast);
    std::copy(c.scorerow.begin(), c.scorerow.begin() + std::max<int64_t>(c.lastshort, 0) + 1, tester.before());
    for (int64_t i = c.firstpos + 1; i <= firstPartLast; ++i) {
      if (yieldAndTestStop(c, counter, progressstep, wrap32(i - c.firstpos), total)) {
        flush();
        return;  // the parts are given up as they go
      }
      tester.test(i, found);
      if (found.positions.size() >= kStretch) flush();
    }
  }
  flush();
  std::size_t taken = 0;  // positions of `found` past their yield
  int64_t i = firstPartLast + 1;
  for (const auto& part : parts) {
    for (;;) {
      if (taken == found.positions.size()) {
        if (taken > 0) flush();
        taken = 0;
        if (!part->take(found)) break;
      }
      if (yieldAndTestStop(c, counter, progressstep, wrap32(i - c.firstpos), total)) {
        found.truncate(taken);
        flush();
        return;
      }
      ++taken;
      ++i;
    }
  }
  if (writer) writer->finish();
}

}  // namespace trelvane
