// scan_cells.h -- the pieces that the row kernels share: the edges that no vector covers, the walk of a span by blocks.
#pragma once

#include <cstdint>

#if defined(__AVX__)
#include <immintrin.h>
#endif

#include "engine/scan_kernels.h"

// Included by kernels compiled with different instruction sets: everything
// here is static and always inlined, so that no copy built for one set can
// stand in for another at link time.
namespace trelvane::cells {

// One start of the diagonal step, out of place:
// next[j] = (prev[j-1] - leave[j-1]) + enter[j], rounded to Single after each
// operation. Returns the new score.
[[gnu::always_inline]] static inline float stepCell(const float* prev, float* next, const float* leave,
                                                    const float* enter, int64_t j) {
  float s = prev[j - 1] - leave[j - 1];
  s = s + enter[j];
  next[j] = s;
  return s;
}

// The starts lo to hi, one by one; best becomes the greatest of itself and
// their scores (a not-a-number score is never the greater).
[[gnu::always_inline]] static inline void stepCells(const float* prev, float* next, int64_t lo, int64_t hi,
                                                    const float* leave, const float* enter, float& best) {
  for (int64_t j = lo; j <= hi; ++j) {
    const float s = stepCell(prev, next, leave, enter, j);
    best = s > best ? s : best;
  }
}

// The tie and listing bits of the starts lo + k for k from `from` to count - 1.
[[gnu::always_inline]] static inline void matchCells(const float* row, int64_t lo, int64_t from, int64_t count,
                                                     float maxscore, float threshold, uint64_t& ties,
                                                     uint64_t& listed) {
  for (int64_t k = from; k < count; ++k) {
    ties |= static_cast<uint64_t>(row[lo + k] == maxscore) << k;
    listed |= static_cast<uint64_t>(threshold <= row[lo + k]) << k;
  }
}

// The blocks of the span lo to hi of a row kernel (see AdvanceSpanFn): a
// whole block b goes to whole(b), a block cut at either end (block 0 starts
// at 1; the last may end at lastshort) to part(from, to, b). Each returns its
// block's greatest scores in the kernel's form, which greater(a, b) folds
// into the span's, from none.
template <class V, class Whole, class Part, class Greater>
[[gnu::always_inline]] static inline V spanByBlocks(int64_t lo, int64_t hi, V none, Whole whole, Part part,
                                                    Greater greater) {
  V span = none;
  int64_t b = lo / kScanBlock;
  if (b == 0 || lo != b * kScanBlock) {
    span = part(lo, (b + 1) * kScanBlock - 1 < hi ? (b + 1) * kScanBlock - 1 : hi, b);
    ++b;
  }
  for (const int64_t wholeEnd = (hi + 1) / kScanBlock; b < wholeEnd; ++b) span = greater(whole(b), span);
  if (b * kScanBlock <= hi) span = greater(part(b * kScanBlock, hi, b), span);
  return span;
}

#if defined(__AVX__)
// The greatest of eight lanes, none of them a not-a-number.
[[gnu::always_inline]] static inline float lanesMax(__m256 m) {
  __m128 h = _mm_max_ps(_mm256_castps256_ps128(m), _mm256_extractf128_ps(m, 1));
  h = _mm_max_ps(h, _mm_movehl_ps(h, h));
  h = _mm_max_ss(h, _mm_shuffle_ps(h, h, 1));
  return _mm_cvtss_f32(h);
}
#endif

}  // namespace trelvane::cells
