// h0_scan.cpp -- the random expectation: the resampled sequence and the scan of it.
#include "engine/scan.h"
#include "platform/numtext.h"
#include "platform/rnd.h"

namespace trelvane {

void drawResampled(RunContext& c, uint64_t seed) {
  // Bases drawn with replacement from all of m0; an N is drawn again. The run
  // is refused before this point when m0 holds no base, so the loop ends.
  Rnd rnd(seed);
  const MemoryBlock& m0 = c.st.m0;
  const int64_t last = static_cast<int64_t>(c.nresample) + c.askedW;
  for (int64_t off = 0; off <= last; ++off) {
    uint8_t base;
    do {
      int32_t p = toInt(rnd() * c.nlong);
      base = m0.get(p);
    } while (base == 0);
    c.resampled.set(off, base);
  }
}

namespace {

// The greater of the best so far and a score; a not-a-number score (from a
// not-a-number cell) never becomes the greater.
inline float greater(float a, float b) { return b > a ? b : a; }

void record(RunContext& c, float maxscore) {
  int32_t bin = toInt(maxscore);
  // A cell above 1 could lift a score past W: such a bin is not kept.
  if (bin >= 0 && static_cast<std::size_t>(bin) < c.histogram.size()) c.histogram[bin] += 1.0f;
  c.h0.add(maxscore);
}

}  // namespace

void h0Scan(RunContext& c) {
  c.host.message("Estimate of SD");
  const uint8_t* m1 = c.m1->data();
  const uint8_t* res = c.resampled.data();
  const int32_t W = c.W;
  const int64_t lastshort = c.lastshort;
  float* scorerow = c.scorerow.data();
  c.h0 = ScoreSums{};

  const int32_t span = wrap32(c.lastpos - c.firstpos);
  const int32_t total = wrap32(static_cast<int64_t>(span) + c.nresample);
  const int32_t progressstep = toInt(c.nresample / 100.0);
  int32_t counter = 0;

  // resampling 0, every window pair in full
  float maxscore = 0.0f;
  for (int64_t j = 0; j <= lastshort; ++j) {
    scorerow[j] = fullScoreFromZero(m1 + j, res, W, c.cells);
    maxscore = greater(maxscore, scorerow[j]);
  }
  record(c, maxscore);

  // each further resampling is the next offset of the random sequence
  for (int64_t r = 1; r <= c.nresample; ++r) {
    c.host.doEvents();
    if (++counter >= progressstep) {
      int32_t done = wrap32(static_cast<int64_t>(c.s.progressWidth) * wrap32(span + r));
      c.host.progress(toInt(static_cast<double>(done) / static_cast<double>(total)), c.s.progressWidth);
      counter = 0;
    }
    if (c.stopAsked()) break;

    maxscore = 0.0f;
    advanceRow(scorerow, m1, lastshort, W, c.cells.column(res[r - 1]), c.cells.column(res[r + W - 1]));
    for (int64_t j = lastshort; j >= 1; --j) maxscore = greater(maxscore, scorerow[j]);
    scorerow[0] = fullScoreFromZero(m1, res + r, W, c.cells);
    maxscore = greater(maxscore, scorerow[0]);
    record(c, maxscore);
  }
}

}  // namespace trelvane
