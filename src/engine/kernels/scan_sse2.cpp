// scan_sse2.cpp -- the row kernels with SSE2, four starts a vector: every x86-64 processor has them.
#include <emmintrin.h>

#include <cmath>

#include "engine/kernels/row_kernels.h"

namespace trelvane::kernels {

namespace {

struct Sse2Ops : FloatLanes<4, 4> {
  static Vec edgeLane(float x) { return _mm_setr_ps(x, -INFINITY, -INFINITY, -INFINITY); }
  // max_ps gives its second operand where either is not a number.
  static Vec max(Vec s, Vec acc) { return _mm_max_ps(s, acc); }
  static float greatest(Vec v) {
    v = _mm_max_ps(v, _mm_movehl_ps(v, v));
    v = _mm_max_ss(v, _mm_shuffle_ps(v, v, 1));
    return _mm_cvtss_f32(v);
  }
  // prev[j-1 .. j+2] in one load from the word's place, one start back: it
  // costs less than joining two aligned words with two shuffles (a batch
  // of 16 steps over 2,000 starts, BM_KernelBatch keep:1 on Zen 3: 12.0 us
  // against 13.5 us).
  static const float* prevLoad(const float* prev, int64_t j) { return prev + j; }
  static Vec shiftIn(const float* upper, const float*) { return _mm_loadu_ps(upper - 1); }
  // cmpge and cmpeq are false where either side is not a number.
  static uint32_t atLeast(Vec v, Vec l) { return _mm_movemask_ps(_mm_cmpge_ps(v, l)); }
  static uint32_t equal(Vec v, Vec m) { return _mm_movemask_ps(_mm_cmpeq_ps(v, m)); }
};

}  // namespace

constinit const ScanKernel kSse2Kernel = kernelTable<Sse2Ops>("sse2", "sse2", ScoreLanes::kFloat);

}  // namespace trelvane::kernels
