// scan_generic.cpp -- the row kernels in plain C++ over the matrix columns: the portable variant.
#include <cmath>

#include "engine/scan_cells.h"
#include "engine/scan_kernels.h"

namespace trelvane {

namespace {

// Starts hi down to lo of one block; returns their greatest score.
inline float advanceSpan(float* row, int64_t lo, int64_t hi, const float* leave, const float* enter) {
  float m = -INFINITY;
  cells::stepCells(row, hi, lo, leave, enter, m);
  return m;
}

}  // namespace

float advanceBlocksGeneric(float* row, int64_t lastshort, const float* leave, const float* enter,
                           float* blockmax) {
  float best = -INFINITY;
  for (int64_t b = scanBlockCount(lastshort) - 1; b >= 0; --b) {
    int64_t lo = scanBlockLo(b), hi = scanBlockHi(b, lastshort);
    float m = advanceSpan(row, lo, hi, leave, enter);
    blockmax[b] = m;
    best = m > best ? m : best;
  }
  return best;
}

float advanceMaxGeneric(float* row, int64_t lastshort, const float* leave, const float* enter) {
  return lastshort >= 1 ? advanceSpan(row, 1, lastshort, leave, enter) : -INFINITY;
}

void blockCandidatesGeneric(const float* blockmax, int64_t blocks, float lower, uint64_t* bits) {
  for (int64_t w = 0; w * 64 < blocks; ++w) bits[w] = 0;
  for (int64_t b = 0; b < blocks; ++b)
    bits[b / 64] |= static_cast<uint64_t>(blockmax[b] >= lower) << (b % 64);
}

void blockMatchGeneric(const float* row, int64_t lo, int64_t count, float maxscore, float threshold,
                       uint64_t* ties, uint64_t* listed) {
  uint64_t t = 0, l = 0;
  cells::matchCells(row, lo, 0, count, maxscore, threshold, t, l);
  *ties = t;
  *listed = l;
}

}  // namespace trelvane
