// scan_avx512.cpp -- the row kernels with AVX-512, sixteen starts a vector (compiled with AVX-512 F and DQ; no products).
#include "engine/kernels/avx512_intrinsics.h"

#include <cmath>

#include "engine/kernels/row_kernels.h"

namespace trelvane::kernels {

namespace {

// A block in blockmax: the two halves of its lanes folded, lane x the
// greater of lanes x and x + 8.
struct Avx512Ops : FloatLanes<16, 8> {
  static Vec edgeLane(float x) { return _mm512_mask_mov_ps(_mm512_set1_ps(-INFINITY), 1, _mm512_set1_ps(x)); }
  // A group's column and row lie on whole 64-byte lines (the rows start on
  // 64-byte boundaries and ScanColumns places its columns so).
  static Vec load(const float* p) { return _mm512_load_ps(p); }
  static Vec loadFirst(const float* p, int64_t n) {
    return _mm512_mask_loadu_ps(_mm512_set1_ps(NAN), static_cast<__mmask16>((1u << n) - 1), p);
  }
  static void store(float* p, Vec v) { _mm512_store_ps(p, v); }
  static void storeBlock(float* p, Vec v) {
    _mm256_storeu_ps(p, _mm256_max_ps(_mm512_castps512_ps256(v), _mm512_extractf32x8_ps(v, 1)));
  }
  // max_ps gives its second operand where either is not a number.
  static Vec max(Vec s, Vec acc) { return _mm512_max_ps(s, acc); }
  static float greatest(Vec v) { return _mm512_reduce_max_ps(v); }
  // prev[j .. j+15], on a 64-byte boundary.
  static Vec prevLoad(const float* prev, int64_t j) { return _mm512_load_ps(prev + j); }
  // prev[j-1 .. j+14]: lane 0 is the top lane of the lower word.
  static Vec shiftIn(Vec upper, Vec lower) {
    return _mm512_castsi512_ps(_mm512_alignr_epi32(_mm512_castps_si512(upper), _mm512_castps_si512(lower), 15));
  }
  static uint32_t atLeast(Vec v, Vec l) { return _mm512_cmp_ps_mask(v, l, _CMP_GE_OQ); }
  static uint32_t equal(Vec v, Vec m) { return _mm512_cmp_ps_mask(v, m, _CMP_EQ_OQ); }
};

}  // namespace

constinit const ScanKernel kAvx512Kernel = kernelTable<Avx512Ops>("avx512", "avx512", ScoreLanes::kFloat);

}  // namespace trelvane::kernels
