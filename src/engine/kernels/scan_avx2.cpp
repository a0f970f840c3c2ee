// scan_avx2.cpp -- the row kernels with AVX2, eight starts a vector (compiled with -mavx2, no FMA).
#include <immintrin.h>

#include <cmath>

#include "engine/kernels/row_kernels.h"

namespace trelvane::kernels {

namespace {

struct Avx2Ops : FloatLanes<8, 8> {
  static Vec edgeLane(float x) {
    const float none = -INFINITY;
    return _mm256_setr_ps(x, none, none, none, none, none, none, none);
  }
  // max_ps gives its second operand where either is not a number.
  static Vec max(Vec s, Vec acc) { return _mm256_max_ps(s, acc); }
  static float greatest(Vec v) {
    __m128 h = _mm_max_ps(_mm256_castps256_ps128(v), _mm256_extractf128_ps(v, 1));
    h = _mm_max_ps(h, _mm_movehl_ps(h, h));
    h = _mm_max_ss(h, _mm_shuffle_ps(h, h, 1));
    return _mm_cvtss_f32(h);
  }
  // prev's word from j turned by one lane: prev[j+7], prev[j .. j+6].
  static Vec prevLoad(const float* prev, int64_t j) {
    return _mm256_permutevar8x32_ps(_mm256_loadu_ps(prev + j), _mm256_setr_epi32(7, 0, 1, 2, 3, 4, 5, 6));
  }
  // prev[j-1 .. j+6]: lane 0 from the lower word, lanes 1 to 7 from the upper.
  static Vec shiftIn(Vec upper, Vec lower) { return _mm256_blend_ps(upper, lower, 0x01); }
  static uint32_t atLeast(Vec v, Vec l) { return _mm256_movemask_ps(_mm256_cmp_ps(v, l, _CMP_GE_OQ)); }
  static uint32_t equal(Vec v, Vec m) { return _mm256_movemask_ps(_mm256_cmp_ps(v, m, _CMP_EQ_OQ)); }
};

}  // namespace

constinit const ScanKernel kAvx2Kernel = kernelTable<Avx2Ops>("avx2", "avx2", ScoreLanes::kFloat);

}  // namespace trelvane::kernels
