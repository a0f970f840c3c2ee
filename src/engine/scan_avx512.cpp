// scan_avx512.cpp -- the row kernels with AVX-512, sixteen starts a vector (compiled with AVX-512 F and DQ; no products).
// GCC 12 takes the undefined vectors inside some AVX-512 intrinsics for
// uninitialized ones.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

#include <algorithm>
#include <cmath>

#include "engine/scan_cells.h"
#include "engine/scan_kernels.h"

namespace trelvane {

namespace {

// Starts j0 to j0 + 15, j0 a multiple of 16: next[j0 ..] from shifted =
// prev[j0-1 .. j0+14]. next, leave and enter are read and written on whole
// 64-byte lines (the rows start on 64-byte boundaries and ScanColumns places
// its columns so).
[[gnu::always_inline]] inline __m512 step16(__m512 shifted, float* next, const float* leave, const float* enter,
                                            int64_t j0) {
  __m512 out = _mm512_load_ps(leave + j0 - 1);  // cells of m1[j0-1 .. j0+14], leaving base
  __m512 in = _mm512_load_ps(enter + j0);       // cells of m1[j0+W-1 .. j0+W+14], entering base
  __m512 s = _mm512_add_ps(_mm512_sub_ps(shifted, out), in);
  _mm512_store_ps(next + j0, s);
  return s;
}

// prev[j0-1 .. j0+14] from the aligned words at j0 - 16 (lower) and j0
// (upper): lane 0 is the top lane of the lower one.
[[gnu::always_inline]] inline __m512 shifted(__m512 upper, __m512 lower) {
  return _mm512_castsi512_ps(_mm512_alignr_epi32(_mm512_castps_si512(upper), _mm512_castps_si512(lower), 15));
}

// blockmax[b * 8 ..] holds the greatest score of each lane modulo 8 of block
// b (the two halves of a vector folded); edge, the greatest of the starts
// outside whole groups, goes into lane 0.
// Returns what it stored.
[[gnu::always_inline]] inline __m256 storeBlockMax(float* blockmax, int64_t b, __m512 acc, float edge) {
  __m256 halves = _mm256_max_ps(_mm512_castps512_ps256(acc), _mm512_extractf32x8_ps(acc, 1));
  halves = _mm256_max_ps(halves, _mm256_setr_ps(edge, -INFINITY, -INFINITY, -INFINITY, -INFINITY, -INFINITY,
                                                -INFINITY, -INFINITY));
  _mm256_storeu_ps(blockmax + b * 8, halves);
  return halves;
}

// The eight groups of a whole block from j0 (a multiple of kScanBlock, never
// 0): the greatest score of each lane. max_ps(s, acc) gives acc where s is
// not a number: such a score is never the greatest. Two maxima, so that the
// next max need not wait for the one before; each word of prev is loaded
// once, for its own group and the next.
[[gnu::always_inline]] inline __m512 wholeBlock(const float* prev, float* next, const float* leave,
                                                const float* enter, int64_t j0) {
  __m512 lower = _mm512_load_ps(prev + j0 - 16);
  __m512 acc = _mm512_set1_ps(-INFINITY), acc2 = acc;
  for (int64_t j = j0; j < j0 + kScanBlock; j += 32) {
    const __m512 upper = _mm512_load_ps(prev + j), upper2 = _mm512_load_ps(prev + j + 16);
    acc = _mm512_max_ps(step16(shifted(upper, lower), next, leave, enter, j), acc);
    acc2 = _mm512_max_ps(step16(shifted(upper2, upper), next, leave, enter, j + 16), acc2);
    lower = upper2;
  }
  return _mm512_max_ps(acc, acc2);
}

// The starts lo to hi of block b, where the block is cut at either end (block
// 0 starts at 1; the last ends at lastshort): the starts outside whole groups
// one by one.
__m256 partOfBlock(const float* prev, float* next, int64_t lo, int64_t hi, const float* leave, const float* enter,
                   float* blockmax, int64_t b) {
  float edge = -INFINITY;
  const int64_t firstGroup = (lo + 15) & ~int64_t{15};
  cells::stepCells(prev, next, lo, (firstGroup - 1 < hi ? firstGroup - 1 : hi), leave, enter, edge);
  __m512 acc = _mm512_set1_ps(-INFINITY);
  int64_t j = firstGroup;
  for (; j + 15 <= hi; j += 16)
    acc = _mm512_max_ps(step16(shifted(_mm512_load_ps(prev + j), _mm512_load_ps(prev + j - 16)), next, leave,
                               enter, j),
                        acc);
  cells::stepCells(prev, next, j, hi, leave, enter, edge);
  return storeBlockMax(blockmax, b, acc, edge);
}

}  // namespace

float advanceSpanAvx512(const float* prev, float* next, int64_t lo, int64_t hi, const float* leave,
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

float blocksMaxAvx512(const float* blockmax, int64_t blocks) {
  // Two blocks a vector, two maxima side by side.
  const __m512 none = _mm512_set1_ps(-INFINITY);
  __m512 a = none, a2 = none;
  int64_t b = 0;
  for (; b + 4 <= blocks; b += 4) {
    a = _mm512_max_ps(_mm512_loadu_ps(blockmax + b * 8), a);
    a2 = _mm512_max_ps(_mm512_loadu_ps(blockmax + b * 8 + 16), a2);
  }
  for (; b < blocks; b += 2) {
    const __mmask16 in = blocks - b >= 2 ? __mmask16{0xffff} : __mmask16{0x00ff};
    a = _mm512_max_ps(_mm512_mask_loadu_ps(none, in, blockmax + b * 8), a);
  }
  // no lane holds a not-a-number
  return _mm512_reduce_max_ps(_mm512_max_ps(a, a2));
}

void blockCandidatesAvx512(const float* blockmax, int64_t blocks, float lower, uint64_t* bits) {
  const __m512 l = _mm512_set1_ps(lower);
  for (int64_t w = 0; w * 64 < blocks; ++w) {
    const int64_t end = std::min(blocks, w * 64 + 64);
    uint64_t word = 0;
    for (int64_t b = w * 64; b < end; b += 8) {
      // Eight blocks, two a vector: byte k of lanes holds the lanes of
      // block b + k that reach lower (ordered: false for a not-a-number).
      uint64_t lanes = 0;
      for (int v = 0; v < 4 && b + 2 * v < end; ++v) {
        const __mmask16 in = end - (b + 2 * v) >= 2 ? __mmask16{0xffff} : __mmask16{0x00ff};
        const __m512 x = _mm512_maskz_loadu_ps(in, blockmax + (b + 2 * v) * 8);
        lanes |= static_cast<uint64_t>(_mm512_mask_cmp_ps_mask(in, x, l, _CMP_GE_OQ)) << (16 * v);
      }
      // a bit for each byte with one: folded to the byte's low bit, then the
      // eight low bits gathered in the top byte of the product
      lanes |= lanes >> 4;
      lanes |= lanes >> 2;
      lanes |= lanes >> 1;
      lanes &= 0x0101010101010101ULL;
      word |= ((lanes * 0x0102040810204080ULL) >> 56) << (b % 64);
    }
    bits[w] = word;
  }
}

void blockMatchAvx512(const float* row, int64_t lo, int64_t count, float maxscore, float threshold,
                      uint64_t* ties, uint64_t* listed) {
  const __m512 m = _mm512_set1_ps(maxscore);
  const __m512 th = _mm512_set1_ps(threshold);
  // Ordered comparisons: false where either side is not a number. A span
  // shorter than kMatchSpan reads only its own starts.
  uint64_t t = 0, l = 0;
  for (int64_t k = 0; k < count; k += 16) {
    const __mmask16 in = count - k >= 16 ? __mmask16{0xffff} : static_cast<__mmask16>((1u << (count - k)) - 1);
    const __m512 s = _mm512_maskz_loadu_ps(in, row + lo + k);  // scores of starts lo+k .. lo+k+15
    t |= static_cast<uint64_t>(_mm512_mask_cmp_ps_mask(in, s, m, _CMP_EQ_OQ)) << k;
    l |= static_cast<uint64_t>(_mm512_mask_cmp_ps_mask(in, th, s, _CMP_LE_OQ)) << k;
  }
  *ties = t;
  *listed = l;
}

}  // namespace trelvane
