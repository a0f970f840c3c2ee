// scan_avx2.cpp -- the row kernels with AVX2, eight starts a vector (compiled with -mavx2, no FMA).
#include <immintrin.h>

#include <cmath>

#include "engine/scan_cells.h"
#include "engine/scan_kernels.h"

namespace trelvane {

namespace {

// Starts j0 to j0 + 7, j0 a multiple of 8, from prev = row[j0-1 .. j0+6] of
// the previous position. The row, leave and enter are read on whole 32-byte
// words: the row starts on a 64-byte boundary and ScanColumns places its
// columns so (the unaligned forms cost nothing there, and keep any row safe).
inline __m256 step8(float* row, __m256 prev, const float* leave, const float* enter, int64_t j0) {
  __m256 out = _mm256_loadu_ps(leave + j0 - 1);     // cells of m1[j0-1 .. j0+6], leaving base
  __m256 in = _mm256_loadu_ps(enter + j0);          // cells of m1[j0+W-1 .. j0+W+6], entering base
  __m256 s = _mm256_add_ps(_mm256_sub_ps(prev, out), in);
  _mm256_storeu_ps(row + j0, s);                    // row[j0 .. j0+7], this position
  return s;
}

// The previous position's row[j0-1 .. j0+6] from its two whole words:
// rotatedLower = row[j0-8 .. j0-1] turned by one lane, rotatedUpper likewise
// row[j0 .. j0+7]; lane 0 from the lower word, lanes 1 to 7 from the upper.
inline __m256 shiftedIn(__m256 rotatedUpper, __m256 rotatedLower) {
  return _mm256_blend_ps(rotatedUpper, rotatedLower, 0x01);
}

// The greatest lane; acc holds no not-a-number.
inline float lanesMax(__m256 acc) {
  __m128 m = _mm_max_ps(_mm256_castps256_ps128(acc), _mm256_extractf128_ps(acc, 1));
  m = _mm_max_ps(m, _mm_movehl_ps(m, m));
  m = _mm_max_ss(m, _mm_shuffle_ps(m, m, 1));
  return _mm_cvtss_f32(m);
}

// Starts hi down to lo: the groups of 8 lie on whole vectors of the row
// (the row starts on a 64-byte boundary); the starts above and below them are
// done one by one (their greatest in *edge). Returns the greatest score of
// each lane.
[[gnu::always_inline]] inline __m256 advanceSpan(float* row, int64_t lo, int64_t hi, const float* leave, const float* enter,
                         float* edge) {
  const int64_t first = (lo + 7) & ~int64_t{7};
  const int64_t groups = hi + 1 >= first ? (hi + 1 - first) / 8 : 0;
  const int64_t end = first + groups * 8;  // first start above the groups
  float m = -INFINITY;
  cells::stepCells(row, hi, end > lo ? end : lo, leave, enter, m);
  // max_ps(s, acc) gives acc where s is not a number: such a score is never
  // the greatest. Two maxima, for odd and even groups, so that the next max
  // need not wait for the one before. Each word of the row is read once:
  // the word below a group is the next group's own.
  const __m256i turn = _mm256_setr_epi32(7, 0, 1, 2, 3, 4, 5, 6);
  __m256 acc = _mm256_set1_ps(-INFINITY), acc2 = acc;
  if (groups > 0) {
    __m256 upper = _mm256_permutevar8x32_ps(_mm256_loadu_ps(row + first + (groups - 1) * 8), turn);
    int64_t g = groups - 1;
    for (; g >= 1; g -= 2) {
      const int64_t j0 = first + g * 8;
      __m256 lower = _mm256_permutevar8x32_ps(_mm256_loadu_ps(row + j0 - 8), turn);
      __m256 lower2 = _mm256_permutevar8x32_ps(_mm256_loadu_ps(row + j0 - 16), turn);
      acc = _mm256_max_ps(step8(row, shiftedIn(upper, lower), leave, enter, j0), acc);
      acc2 = _mm256_max_ps(step8(row, shiftedIn(lower, lower2), leave, enter, j0 - 8), acc2);
      upper = lower2;
    }
    if (g == 0) {
      __m256 lower = _mm256_permutevar8x32_ps(_mm256_loadu_ps(row + first - 8), turn);
      acc = _mm256_max_ps(step8(row, shiftedIn(upper, lower), leave, enter, first), acc);
    }
  }
  cells::stepCells(row, first - 1 < hi ? first - 1 : hi, lo, leave, enter, m);
  *edge = m;
  return _mm256_max_ps(acc, acc2);
}

}  // namespace

float advanceBlocksAvx2(float* row, int64_t lastshort, const float* leave, const float* enter,
                        float* blockmax) {
  // blockmax[b * 8 ..] holds the greatest score of each lane of block b;
  // the starts outside whole groups (at the top and the bottom) go into
  // lane 0 of their block.
  const int64_t blocks = scanBlockCount(lastshort);
  __m256 best = _mm256_set1_ps(-INFINITY);
  for (int64_t b = blocks - 1; b >= 0; --b) {
    float edge;
    __m256 lanes = advanceSpan(row, scanBlockLo(b), scanBlockHi(b, lastshort), leave, enter, &edge);
    const float none = -INFINITY;
    lanes = _mm256_max_ps(lanes, _mm256_setr_ps(edge, none, none, none, none, none, none, none));
    _mm256_storeu_ps(blockmax + b * 8, lanes);
    best = _mm256_max_ps(lanes, best);
  }
  return lanesMax(best);
}

void blockCandidatesAvx2(const float* blockmax, int64_t blocks, float lower, uint64_t* bits) {
  const __m256 l = _mm256_set1_ps(lower);
  for (int64_t w = 0; w * 64 < blocks; ++w) bits[w] = 0;
  for (int64_t b = 0; b < blocks; ++b) {
    __m256 v = _mm256_loadu_ps(blockmax + b * 8);  // the lanes' greatest scores of block b
    // ordered: false where a lane is not a number (-infinity stands for none)
    const uint64_t any = _mm256_movemask_ps(_mm256_cmp_ps(v, l, _CMP_GE_OQ)) != 0;
    bits[b / 64] |= any << (b % 64);
  }
}

float advanceMaxAvx2(float* row, int64_t lastshort, const float* leave, const float* enter) {
  if (lastshort < 1) return -INFINITY;
  float edge;
  float v = lanesMax(advanceSpan(row, 1, lastshort, leave, enter, &edge));
  return edge > v ? edge : v;
}

void advanceMaxPairAvx2(float* row, int64_t lastshort, const float* leave1, const float* enter1,
                        float start1, const float* leave2, const float* enter2, float* max1,
                        float* max2) {
  // The groups: j0 from 8 up, each writing the second step's row[j0 .. j0+7]
  // from the first step's row[j0-1 .. j0+6], which it makes from the old
  // row[j0-2 .. j0+5]; the first step's starts j0-1 are its lane 0.
  const int64_t first = 8;
  const int64_t groups = lastshort + 1 >= first ? (lastshort + 1 - first) / 8 : 0;
  if (groups == 0) {
    // too short for a group: the two steps one after the other
    *max1 = advanceMaxAvx2(row, lastshort, leave1, enter1);
    row[0] = start1;
    *max2 = advanceMaxAvx2(row, lastshort, leave2, enter2);
    return;
  }
  const int64_t end = first + groups * 8;  // first start above the groups
  float m1 = -INFINITY, m2 = -INFINITY;
  // top: the first step at end-1 .. lastshort (at most 8 starts) from the
  // old row, then the second step at end .. lastshort; top[t] stands for
  // start end - 2 + t
  float top[9];
  const int64_t topHi = lastshort - (end - 2);
  for (int64_t t = 0; t <= topHi; ++t) top[t] = row[end - 2 + t];
  cells::stepCells(top, topHi, 1, leave1 + end - 2, enter1 + end - 2, m1);
  cells::stepCells(top, topHi, 2, leave2 + end - 2, enter2 + end - 2, m2);
  for (int64_t t = 2; t <= topHi; ++t) row[end - 2 + t] = top[t];
  // the groups, descending; each old word of the row is loaded once, before
  // its group overwrites it
  const __m256i turn2 = _mm256_setr_epi32(6, 7, 0, 1, 2, 3, 4, 5);
  __m256 acc1 = _mm256_set1_ps(-INFINITY), acc2 = acc1;
  __m256 upper = _mm256_permutevar8x32_ps(_mm256_loadu_ps(row + end - 8), turn2);
  for (int64_t j0 = end - 8; j0 >= first; j0 -= 8) {
    __m256 lower = _mm256_permutevar8x32_ps(_mm256_loadu_ps(row + j0 - 8), turn2);
    // old row[j0-2 .. j0+5]: lanes 0 and 1 from the lower word
    __m256 old = _mm256_blend_ps(upper, lower, 0x03);
    // first step at j0-1 .. j0+6
    __m256 step1 = _mm256_add_ps(_mm256_sub_ps(old, _mm256_loadu_ps(leave1 + j0 - 2)),
                                 _mm256_loadu_ps(enter1 + j0 - 1));
    // second step at j0 .. j0+7
    __m256 step2 = _mm256_add_ps(_mm256_sub_ps(step1, _mm256_loadu_ps(leave2 + j0 - 1)),
                                 _mm256_loadu_ps(enter2 + j0));
    _mm256_storeu_ps(row + j0, step2);
    acc1 = _mm256_max_ps(step1, acc1);
    acc2 = _mm256_max_ps(step2, acc2);
    upper = lower;
  }
  // bottom: the first step at 1 .. 6 from the old row (the lowest group made
  // it at 7), then the second step at 1 .. 7; low[j] stands for start j
  float low[8];
  for (int64_t j = 0; j <= 6; ++j) low[j] = row[j];
  cells::stepCells(low, 6, 1, leave1, enter1, m1);
  low[0] = start1;
  cells::stepCells(low, 7, 1, leave2, enter2, m2);
  for (int64_t j = 1; j <= 7; ++j) row[j] = low[j];
  const float g1 = lanesMax(acc1), g2 = lanesMax(acc2);
  *max1 = g1 > m1 ? g1 : m1;
  *max2 = g2 > m2 ? g2 : m2;
}

void blockMatchAvx2(const float* row, int64_t lo, int64_t count, float maxscore, float threshold,
                    uint64_t* ties, uint64_t* listed) {
  const __m256 m = _mm256_set1_ps(maxscore);
  const __m256 th = _mm256_set1_ps(threshold);
  uint64_t t = 0, l = 0;
  int64_t k = 0;
  for (; k + 8 <= count; k += 8) {
    __m256 s = _mm256_loadu_ps(row + lo + k);  // scores of starts lo+k .. lo+k+7
    // Ordered comparisons: false where either side is not a number.
    t |= static_cast<uint64_t>(_mm256_movemask_ps(_mm256_cmp_ps(s, m, _CMP_EQ_OQ))) << k;
    l |= static_cast<uint64_t>(_mm256_movemask_ps(_mm256_cmp_ps(th, s, _CMP_LE_OQ))) << k;
  }
  cells::matchCells(row, lo, k, count, maxscore, threshold, t, l);
  *ties = t;
  *listed = l;
}

}  // namespace trelvane
