// scan_cells.h -- the cell-by-cell pieces that every row kernel shares: the edges that no vector covers.
#pragma once

#include <cstdint>

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

}  // namespace trelvane::cells
