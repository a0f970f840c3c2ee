// scan_generic.cpp -- the row kernels in plain C++ over the matrix columns: the portable variant.
#include <algorithm>
#include <cmath>

#include "engine/scan_cells.h"
#include "engine/scan_kernels.h"

namespace trelvane {

float advanceSpanGeneric(const float* prev, float* next, int64_t lo, int64_t hi, const float* leave,
                         const float* enter, float* blockmax) {
  float best = -INFINITY;
  for (int64_t b = lo / kScanBlock; b <= hi / kScanBlock; ++b) {
    float m = -INFINITY;
    cells::stepCells(prev, next, scanBlockLo(b), scanBlockHi(b, hi), leave, enter, m);
    blockmax[b] = m;
    best = m > best ? m : best;
  }
  return best;
}

float blocksMaxGeneric(const float* blockmax, int64_t blocks) {
  float best = -INFINITY;
  for (int64_t b = 0; b < blocks; ++b) best = blockmax[b] > best ? blockmax[b] : best;
  return best;
}

void blockCandidatesGeneric(const float* blockmax, int64_t blocks, float lower, uint64_t* bits) {
  for (int64_t w = 0; w * 64 < blocks; ++w) {
    uint64_t word = 0;  // built in a register and stored once
    for (int64_t b = w * 64, end = std::min(blocks, b + 64); b < end; ++b)
      word |= static_cast<uint64_t>(blockmax[b] >= lower) << (b % 64);
    bits[w] = word;
  }
}

void blockMatchGeneric(const float* row, int64_t lo, int64_t count, float maxscore, float threshold,
                       uint64_t* ties, uint64_t* listed) {
  uint64_t t = 0, l = 0;
  cells::matchCells(row, lo, 0, count, maxscore, threshold, t, l);
  *ties = t;
  *listed = l;
}

}  // namespace trelvane
