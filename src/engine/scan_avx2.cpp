// scan_avx2.cpp -- the row kernels with AVX2, eight starts a vector (compiled with -mavx2, no FMA).
#include <immintrin.h>

#include <algorithm>
#include <cmath>

#include "engine/scan_cells.h"
#include "engine/scan_kernels.h"

namespace trelvane {

namespace {

// Starts j0 to j0 + 7, j0 a multiple of 8: next[j0 ..] from shifted =
// prev[j0-1 .. j0+6]. next, leave and enter are read and written on whole
// 32-byte words (the rows start on 64-byte boundaries and ScanColumns places
// its columns so).
[[gnu::always_inline]] inline __m256 step8(__m256 shifted, float* next, const float* leave, const float* enter,
                                           int64_t j0) {
  __m256 out = _mm256_loadu_ps(leave + j0 - 1);  // cells of m1[j0-1 .. j0+6], leaving base
  __m256 in = _mm256_loadu_ps(enter + j0);       // cells of m1[j0+W-1 .. j0+W+6], entering base
  __m256 s = _mm256_add_ps(_mm256_sub_ps(shifted, out), in);
  _mm256_storeu_ps(next + j0, s);
  return s;
}

// prev's word from j0 turned by one lane: prev[j0+7], prev[j0 .. j0+6].
[[gnu::always_inline]] inline __m256 turned(const float* prev, int64_t j0) {
  return _mm256_permutevar8x32_ps(_mm256_loadu_ps(prev + j0), _mm256_setr_epi32(7, 0, 1, 2, 3, 4, 5, 6));
}

// prev[j0-1 .. j0+6] from the turned words at j0 - 8 and j0: lane 0 from the
// lower word, lanes 1 to 7 from the upper.
[[gnu::always_inline]] inline __m256 shifted(__m256 upper, __m256 lower) {
  return _mm256_blend_ps(upper, lower, 0x01);
}

// blockmax[b * 8 ..] holds the greatest score of each lane of block b; edge,
// the greatest of the starts outside whole groups, goes into lane 0.
// Returns what it stored.
[[gnu::always_inline]] inline __m256 storeBlockMax(float* blockmax, int64_t b, __m256 acc, float edge) {
  const float none = -INFINITY;
  acc = _mm256_max_ps(acc, _mm256_setr_ps(edge, none, none, none, none, none, none, none));
  _mm256_storeu_ps(blockmax + b * 8, acc);
  return acc;
}

// The sixteen groups of a whole block from j0 (a multiple of kScanBlock,
// never 0): the greatest score of each lane. max_ps(s, acc) gives acc where s
// is not a number: such a score is never the greatest. Two maxima, so that
// the next max need not wait for the one before; each word of prev is loaded
// once, for its own group and the next.
[[gnu::always_inline]] inline __m256 wholeBlock(const float* prev, float* next, const float* leave,
                                                const float* enter, int64_t j0) {
  __m256 lower = turned(prev, j0 - 8);
  __m256 acc = _mm256_set1_ps(-INFINITY), acc2 = acc;
  for (int64_t j = j0; j < j0 + kScanBlock; j += 16) {
    const __m256 upper = turned(prev, j), upper2 = turned(prev, j + 8);
    acc = _mm256_max_ps(step8(shifted(upper, lower), next, leave, enter, j), acc);
    acc2 = _mm256_max_ps(step8(shifted(upper2, upper), next, leave, enter, j + 8), acc2);
    lower = upper2;
  }
  return _mm256_max_ps(acc, acc2);
}

// The starts lo to hi of block b, where the block is cut at either end (block
// 0 starts at 1; the last ends at lastshort): the starts outside whole groups
// one by one.
__m256 partOfBlock(const float* prev, float* next, int64_t lo, int64_t hi, const float* leave, const float* enter,
                   float* blockmax, int64_t b) {
  float edge = -INFINITY;
  const int64_t firstGroup = (lo + 7) & ~int64_t{7};
  cells::stepCells(prev, next, lo, (firstGroup - 1 < hi ? firstGroup - 1 : hi), leave, enter, edge);
  __m256 acc = _mm256_set1_ps(-INFINITY);
  int64_t j = firstGroup;
  for (; j + 7 <= hi; j += 8)
    acc = _mm256_max_ps(step8(shifted(turned(prev, j), turned(prev, j - 8)), next, leave, enter, j), acc);
  cells::stepCells(prev, next, j, hi, leave, enter, edge);
  return storeBlockMax(blockmax, b, acc, edge);
}

}  // namespace

float advanceSpanAvx2(const float* prev, float* next, int64_t lo, int64_t hi, const float* leave,
                      const float* enter, float* blockmax) {
  // Whole blocks take the straight path; a cut block at either end, the
  // general one.
  return cells::lanesMax(cells::spanByBlocks(
      lo, hi, _mm256_set1_ps(-INFINITY),
      [&](int64_t b) {
        return storeBlockMax(blockmax, b, wholeBlock(prev, next, leave, enter, b * kScanBlock), -INFINITY);
      },
      [&](int64_t from, int64_t to, int64_t b) { return partOfBlock(prev, next, from, to, leave, enter, blockmax, b); },
      [](__m256 x, __m256 y) { return _mm256_max_ps(x, y); }));
}

float blocksMaxAvx2(const float* blockmax, int64_t blocks) {
  __m256 best = _mm256_set1_ps(-INFINITY);
  for (int64_t b = 0; b < blocks; ++b) best = _mm256_max_ps(_mm256_loadu_ps(blockmax + b * 8), best);
  return cells::lanesMax(best);
}

void blockCandidatesAvx2(const float* blockmax, int64_t blocks, float lower, uint64_t* bits) {
  const __m256 l = _mm256_set1_ps(lower);
  for (int64_t w = 0; w * 64 < blocks; ++w) {
    // each word built in a register and stored once
    uint64_t word = 0;
    for (int64_t b = w * 64, end = std::min(blocks, b + 64); b < end; ++b) {
      __m256 v = _mm256_loadu_ps(blockmax + b * 8);  // the lanes' greatest scores of block b
      // ordered: false where a lane is not a number (-infinity stands for none)
      const uint64_t any = _mm256_movemask_ps(_mm256_cmp_ps(v, l, _CMP_GE_OQ)) != 0;
      word |= any << (b % 64);
    }
    bits[w] = word;
  }
}

void blockMatchAvx2(const float* row, int64_t lo, int64_t count, float maxscore, float threshold,
                    uint64_t* ties, uint64_t* listed) {
  const __m256 m = _mm256_set1_ps(maxscore);
  const __m256 th = _mm256_set1_ps(threshold);
  if (count == kMatchSpan) {
    // A whole span, the usual case: eight words with their shifts known, so
    // that the masks come together in a tree instead of one long chain.
    uint64_t tw[8], lw[8];
    for (int v = 0; v < 8; ++v) {
      const __m256 s = _mm256_loadu_ps(row + lo + v * 8);
      tw[v] = static_cast<uint64_t>(_mm256_movemask_ps(_mm256_cmp_ps(s, m, _CMP_EQ_OQ))) << (v * 8);
      lw[v] = static_cast<uint64_t>(_mm256_movemask_ps(_mm256_cmp_ps(th, s, _CMP_LE_OQ))) << (v * 8);
    }
    *ties = ((tw[0] | tw[1]) | (tw[2] | tw[3])) | ((tw[4] | tw[5]) | (tw[6] | tw[7]));
    *listed = ((lw[0] | lw[1]) | (lw[2] | lw[3])) | ((lw[4] | lw[5]) | (lw[6] | lw[7]));
    return;
  }
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
