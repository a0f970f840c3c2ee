// scan_scalar.cpp -- the reference scan: the scalar kernels, and the scan along the longest sequence cell by cell.
//
// Every faster path (the row kernels of kernels/, the batches of steps, the
// parts of the scan on threads of their own) gives what this file gives,
// byte for byte: the kernel equivalence test holds each of them to it, and
// `--kernel scalar` runs it.
#include <cstring>

#include "state/profile.h"
#include "engine/scan.h"
#include "platform/numtext.h"

namespace trelvane {

// -- the scalar kernels --

bool hasN(const uint8_t* win, int32_t W) {
  return W > 0 && std::memchr(win, 0, static_cast<std::size_t>(W)) != nullptr;
}

float fullScoreFromFirst(const uint8_t* shortWin, const uint8_t* longWin, int32_t W,
                         const CellTable& cells) {
  float s = cells.cell(shortWin[0], longWin[0]);
  for (int32_t k = 1; k < W; ++k) s = s + cells.cell(shortWin[k], longWin[k]);
  return s;
}

float fullScoreFromZero(const uint8_t* shortWin, const uint8_t* longWin, int32_t W,
                        const CellTable& cells) {
  float s = 0.0f;
  for (int32_t k = 0; k < W; ++k) s = s + cells.cell(shortWin[k], longWin[k]);
  return s;
}

void advanceRow(float* scorerow, const uint8_t* m1, int64_t lastshort, int32_t W,
                const float* leaving, const float* entering) {
  // Descending, so that scorerow[j - 1] still holds the previous position.
  for (int64_t j = lastshort; j >= 1; --j) {
    float s = scorerow[j - 1] - leaving[m1[j - 1]];
    s = s + entering[m1[j + W - 1]];
    scorerow[j] = s;
  }
}

// -- the tests of a score --

namespace {

// Testing a score s at start j: ties, a new best, the alignment listing.
inline void testScore(RunContext& c, float s, int64_t j, int64_t i, const uint8_t* longWin,
                      float& maxscore) {
  if (s == maxscore) appendStart(c.tielist, j);
  if (s > maxscore) {
    maxscore = s;
    c.tielist.clear();
    appendStart(c.tielist, j);
  }
  if (c.idthreshold <= s) listAlignment(c, j, i, longWin);
}

}  // namespace

// -- the scan --

void scoreFirstPosition(RunContext& c) {
  const uint8_t* m1 = c.m1->data();
  const int64_t i = c.firstpos;
  float maxscore = 0.0f;  // tielist still holds the 200 filling characters
  const uint8_t* win = c.window(c.st.m0, i, c.W + 1);
  for (int64_t j = 0; j <= c.lastshort; ++j) {
    c.scorerow[j] = fullScoreFromFirst(m1 + j, win, c.W, c.cells);
    testScore(c, c.scorerow[j], j, i, win, maxscore);
  }
  if (hasN(win, c.W)) nRow(c, i, win[0]);
  else scoredRow(c, i, win[0], maxscore);
}

void substitutionScan(RunContext& c) {
  const MemoryBlock& m0 = c.st.m0;
  const uint8_t* m1 = c.m1->data();
  const int32_t W = c.W;
  const int64_t lastshort = c.lastshort;
  float* scorerow = c.scorerow.data();
  scoreFirstPosition(c);

  // every further position, by the diagonal recurrence: the row moves one
  // step along its diagonals in place, start 0 is scored in full, and the
  // starts are tested from lastshort down to 0
  const int32_t span = wrap32(c.lastpos - c.firstpos);
  const int32_t total = wrap32(static_cast<int64_t>(span) + c.nresample);
  const int32_t progressstep = toInt(span / 100.0);
  int32_t counter = 0;
  for (int64_t i = c.firstpos + 1; i <= c.lastpos; ++i) {
    if (yieldAndTestStop(c, counter, progressstep, scanUnits(c, i), total)) break;

    c.tielist.clear();
    const uint8_t* win = c.window(m0, i, W + 1);
    advanceRow(scorerow, m1, lastshort, W, c.cells.column(m0.get(i - 1)), c.cells.column(m0.get(i + W - 1)));
    scorerow[0] = fullScoreFromFirst(m1, win, W, c.cells);

    if (hasN(win, W)) {
      // The row of scores is kept up to date across the N, untested.
      nRow(c, i, win[0]);
      continue;
    }
    float maxscore = 0.0f;
    for (int64_t j = lastshort; j >= 1; --j) testScore(c, scorerow[j], j, i, win, maxscore);
    testScore(c, scorerow[0], 0, i, win, maxscore);
    scoredRow(c, i, win[0], maxscore);
  }
}

}  // namespace trelvane
