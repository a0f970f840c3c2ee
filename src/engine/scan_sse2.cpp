// scan_sse2.cpp -- the row kernels with SSE2, four starts a vector: every x86-64 processor has them.
#include <emmintrin.h>

#include <cmath>

#include "engine/scan_cells.h"
#include "engine/scan_kernels.h"

namespace trelvane {

namespace {

// Starts j0 to j0 + 3, j0 a multiple of 4. Done before the group below, so
// row[j0 - 1] still holds the previous position.
inline __m128 step4(float* row, const float* leave, const float* enter, int64_t j0) {
  __m128 prev = _mm_loadu_ps(row + j0 - 1);     // row[j0-1 .. j0+2], previous position
  __m128 out = _mm_loadu_ps(leave + j0 - 1);    // cells of m1[j0-1 .. j0+2], leaving base
  __m128 in = _mm_loadu_ps(enter + j0);         // cells of m1[j0+W-1 .. j0+W+2], entering base
  __m128 s = _mm_add_ps(_mm_sub_ps(prev, out), in);
  _mm_storeu_ps(row + j0, s);                   // row[j0 .. j0+3], this position
  return s;
}

// The greatest lane; acc holds no not-a-number.
inline float lanesMax(__m128 m) {
  m = _mm_max_ps(m, _mm_movehl_ps(m, m));
  m = _mm_max_ss(m, _mm_shuffle_ps(m, m, 1));
  return _mm_cvtss_f32(m);
}

// Starts hi down to lo: the groups of 4 lie on whole vectors of the row
// (the row starts on a 64-byte boundary); the starts above and below them are
// done one by one (their greatest in *edge). Returns the greatest score of
// each lane.
[[gnu::always_inline]] inline __m128 advanceSpan(float* row, int64_t lo, int64_t hi, const float* leave, const float* enter,
                         float* edge) {
  const int64_t first = (lo + 3) & ~int64_t{3};
  const int64_t groups = hi + 1 >= first ? (hi + 1 - first) / 4 : 0;
  const int64_t end = first + groups * 4;  // first start above the groups
  float m = -INFINITY;
  cells::stepCells(row, hi, end > lo ? end : lo, leave, enter, m);
  // max_ps(s, acc) gives acc where s is not a number: such a score is never
  // the greatest. Two maxima, for odd and even groups, so that the next max
  // need not wait for the one before.
  __m128 acc = _mm_set1_ps(-INFINITY), acc2 = acc;
  int64_t g = groups - 1;
  for (; g >= 1; g -= 2) {
    acc = _mm_max_ps(step4(row, leave, enter, first + g * 4), acc);
    acc2 = _mm_max_ps(step4(row, leave, enter, first + (g - 1) * 4), acc2);
  }
  if (g == 0) acc = _mm_max_ps(step4(row, leave, enter, first), acc);
  cells::stepCells(row, first - 1 < hi ? first - 1 : hi, lo, leave, enter, m);
  *edge = m;
  return _mm_max_ps(acc, acc2);
}

}  // namespace

float advanceBlocksSse2(float* row, int64_t lastshort, const float* leave, const float* enter,
                        float* blockmax) {
  // blockmax[b * 4 ..] holds the greatest score of each lane of block b;
  // the starts outside whole groups (at the top and the bottom) go into
  // lane 0 of their block.
  const int64_t blocks = scanBlockCount(lastshort);
  __m128 best = _mm_set1_ps(-INFINITY);
  for (int64_t b = blocks - 1; b >= 0; --b) {
    float edge;
    __m128 lanes = advanceSpan(row, scanBlockLo(b), scanBlockHi(b, lastshort), leave, enter, &edge);
    lanes = _mm_max_ps(lanes, _mm_setr_ps(edge, -INFINITY, -INFINITY, -INFINITY));
    _mm_storeu_ps(blockmax + b * 4, lanes);
    best = _mm_max_ps(lanes, best);
  }
  return lanesMax(best);
}

void blockCandidatesSse2(const float* blockmax, int64_t blocks, float lower, uint64_t* bits) {
  const __m128 l = _mm_set1_ps(lower);
  for (int64_t w = 0; w * 64 < blocks; ++w) bits[w] = 0;
  for (int64_t b = 0; b < blocks; ++b) {
    __m128 v = _mm_loadu_ps(blockmax + b * 4);  // the lanes' greatest scores of block b
    // ordered: false where a lane is not a number (-infinity stands for none)
    const uint64_t any = _mm_movemask_ps(_mm_cmpge_ps(v, l)) != 0;
    bits[b / 64] |= any << (b % 64);
  }
}

float advanceMaxSse2(float* row, int64_t lastshort, const float* leave, const float* enter) {
  if (lastshort < 1) return -INFINITY;
  float edge;
  float v = lanesMax(advanceSpan(row, 1, lastshort, leave, enter, &edge));
  return edge > v ? edge : v;
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
