// scan_sse2.cpp -- the row kernels with SSE2, four starts a vector: every x86-64 processor has them.
#include <emmintrin.h>

#include <algorithm>
#include <cmath>

#include "engine/scan_cells.h"
#include "engine/scan_kernels.h"

namespace trelvane {

namespace {

// Starts j0 to j0 + 3, j0 a multiple of 4: next[j0 ..] from prev[j0-1 ..].
[[gnu::always_inline]] inline __m128 step4(const float* prev, float* next, const float* leave,
                                           const float* enter, int64_t j0) {
  __m128 out = _mm_loadu_ps(leave + j0 - 1);  // cells of m1[j0-1 .. j0+2], leaving base
  __m128 in = _mm_loadu_ps(enter + j0);       // cells of m1[j0+W-1 .. j0+W+2], entering base
  __m128 s = _mm_add_ps(_mm_sub_ps(_mm_loadu_ps(prev + j0 - 1), out), in);
  _mm_storeu_ps(next + j0, s);
  return s;
}

// The greatest lane; m holds no not-a-number.
inline float lanesMax(__m128 m) {
  m = _mm_max_ps(m, _mm_movehl_ps(m, m));
  m = _mm_max_ss(m, _mm_shuffle_ps(m, m, 1));
  return _mm_cvtss_f32(m);
}

}  // namespace

float advanceSpanSse2(const float* prev, float* next, int64_t lo, int64_t hi, const float* leave,
                      const float* enter, float* blockmax) {
  // blockmax[b * 4 ..] holds the greatest score of each lane of block b; the
  // starts outside whole groups go into lane 0 of their block.
  const float none = -INFINITY;
  float edge = none;
  const int64_t firstGroup = (lo + 3) & ~int64_t{3};
  cells::stepCells(prev, next, lo, (firstGroup - 1 < hi ? firstGroup - 1 : hi), leave, enter, edge);
  int64_t j = firstGroup;
  __m128 span = _mm_set1_ps(none);
  for (int64_t b = lo / kScanBlock; b <= hi / kScanBlock; ++b) {
    const int64_t blockEnd = (b + 1) * kScanBlock - 1 < hi ? (b + 1) * kScanBlock - 1 : hi;
    // max_ps(s, acc) gives acc where s is not a number: such a score is never
    // the greatest.
    __m128 acc = _mm_set1_ps(none), acc2 = acc;
    for (; j + 7 <= blockEnd; j += 8) {
      acc = _mm_max_ps(step4(prev, next, leave, enter, j), acc);
      acc2 = _mm_max_ps(step4(prev, next, leave, enter, j + 4), acc2);
    }
    if (j + 3 <= blockEnd) {
      acc = _mm_max_ps(step4(prev, next, leave, enter, j), acc);
      j += 4;
    }
    cells::stepCells(prev, next, j, blockEnd, leave, enter, edge);
    j = blockEnd + 1;
    acc = _mm_max_ps(_mm_max_ps(acc, acc2), _mm_setr_ps(edge, none, none, none));
    _mm_storeu_ps(blockmax + b * 4, acc);
    span = _mm_max_ps(acc, span);
    edge = none;
  }
  return lanesMax(span);
}

float blocksMaxSse2(const float* blockmax, int64_t blocks) {
  __m128 best = _mm_set1_ps(-INFINITY);
  for (int64_t b = 0; b < blocks; ++b) best = _mm_max_ps(_mm_loadu_ps(blockmax + b * 4), best);
  return lanesMax(best);
}

void blockCandidatesSse2(const float* blockmax, int64_t blocks, float lower, uint64_t* bits) {
  const __m128 l = _mm_set1_ps(lower);
  for (int64_t w = 0; w * 64 < blocks; ++w) {
    // each word built in a register and stored once
    uint64_t word = 0;
    for (int64_t b = w * 64, end = std::min(blocks, b + 64); b < end; ++b) {
      __m128 v = _mm_loadu_ps(blockmax + b * 4);  // the lanes' greatest scores of block b
      // ordered: false where a lane is not a number (-infinity stands for none)
      const uint64_t any = _mm_movemask_ps(_mm_cmpge_ps(v, l)) != 0;
      word |= any << (b % 64);
    }
    bits[w] = word;
  }
}

void blockMatchSse2(const float* row, int64_t lo, int64_t count, float maxscore, float threshold,
                    uint64_t* ties, uint64_t* listed) {
  const __m128 m = _mm_set1_ps(maxscore);
  const __m128 th = _mm_set1_ps(threshold);
  uint64_t t = 0, l = 0;
  int64_t k = 0;
  for (; k + 4 <= count; k += 4) {
    __m128 s = _mm_loadu_ps(row + lo + k);  // scores of starts lo+k .. lo+k+3
    // cmpeq and cmple are false where either side is not a number.
    t |= static_cast<uint64_t>(_mm_movemask_ps(_mm_cmpeq_ps(s, m))) << k;
    l |= static_cast<uint64_t>(_mm_movemask_ps(_mm_cmple_ps(th, s))) << k;
  }
  cells::matchCells(row, lo, k, count, maxscore, threshold, t, l);
  *ties = t;
  *listed = l;
}

}  // namespace trelvane
