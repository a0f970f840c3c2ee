// scan_avx512_int.cpp -- the row kernels with AVX-512 BW over whole-number scores: 64 starts a vector in bytes, 32 in 16 bits.
#include "engine/kernels/avx512_intrinsics.h"

#include "engine/kernels/row_kernels.h"

namespace trelvane::kernels {

namespace {

// What both lane widths share: a block in blockmax is its lanes' two halves
// folded (32 bytes), the previous row one start back in one load.
template <class T>
struct Avx512IntLanes {
  using Score = T;
  using Vec = __m512i;
  static constexpr int kLanes = 64 / sizeof(T);
  static constexpr int kBlockLanes = kLanes / 2;

  static Vec loadAny(const T* p) { return _mm512_loadu_si512(p); }
  static Vec load(const T* p) { return _mm512_loadu_si512(p); }
  static void store(T* p, Vec v) { _mm512_storeu_si512(p, v); }
  static const T* prevLoad(const T* prev, int64_t j) { return prev + j; }
  // prev[j-1 .. j+kLanes-2]
  static Vec shiftIn(const T* upper, const T*) { return _mm512_loadu_si512(upper - 1); }
};

// Scores 0 to 255 in unsigned bytes; the sums wrap modulo 256. 0 stands for
// none, and fills the lanes past a part load.
struct Avx512U8Ops : Avx512IntLanes<uint8_t> {
  static Vec splat(uint8_t x) { return _mm512_set1_epi8(static_cast<char>(x)); }
  static Vec edgeLane(uint8_t x) { return _mm512_maskz_set1_epi8(1, static_cast<char>(x)); }
  static Vec loadFirst(const uint8_t* p, int64_t n) {
    return _mm512_maskz_loadu_epi8((uint64_t{1} << n) - 1, p);
  }
  static void storeBlock(uint8_t* p, Vec v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p),
                        _mm256_max_epu8(_mm512_castsi512_si256(v), _mm512_extracti64x4_epi64(v, 1)));
  }
  static Vec add(Vec a, Vec b) { return _mm512_add_epi8(a, b); }
  static Vec sub(Vec a, Vec b) { return _mm512_sub_epi8(a, b); }
  static Vec max(Vec s, Vec acc) { return _mm512_max_epu8(s, acc); }
  static uint8_t greatest(Vec v) {
    const __m256i q = _mm256_max_epu8(_mm512_castsi512_si256(v), _mm512_extracti64x4_epi64(v, 1));
    __m128i h = _mm_max_epu8(_mm256_castsi256_si128(q), _mm256_extracti128_si256(q, 1));
    h = _mm_max_epu8(h, _mm_srli_si128(h, 8));
    h = _mm_max_epu8(h, _mm_srli_si128(h, 4));
    h = _mm_max_epu8(h, _mm_srli_si128(h, 2));
    h = _mm_max_epu8(h, _mm_srli_si128(h, 1));
    return static_cast<uint8_t>(_mm_cvtsi128_si32(h));
  }
  static uint64_t atLeast(Vec v, Vec l) { return _mm512_cmpge_epu8_mask(v, l); }
  static uint64_t equal(Vec v, Vec m) { return _mm512_cmpeq_epu8_mask(v, m); }
};

// Scores in signed 16 bits; the sums wrap modulo 65,536. -32,768 stands for
// none, and fills the lanes past a part load.
struct Avx512I16Ops : Avx512IntLanes<int16_t> {
  static Vec splat(int16_t x) { return _mm512_set1_epi16(x); }
  static Vec edgeLane(int16_t x) { return _mm512_mask_set1_epi16(_mm512_set1_epi16(INT16_MIN), 1, x); }
  static Vec loadFirst(const int16_t* p, int64_t n) {
    return _mm512_mask_loadu_epi16(_mm512_set1_epi16(INT16_MIN), static_cast<__mmask32>((uint64_t{1} << n) - 1), p);
  }
  static void storeBlock(int16_t* p, Vec v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p),
                        _mm256_max_epi16(_mm512_castsi512_si256(v), _mm512_extracti64x4_epi64(v, 1)));
  }
  static Vec add(Vec a, Vec b) { return _mm512_add_epi16(a, b); }
  static Vec sub(Vec a, Vec b) { return _mm512_sub_epi16(a, b); }
  static Vec max(Vec s, Vec acc) { return _mm512_max_epi16(s, acc); }
  static int16_t greatest(Vec v) {
    const __m256i q = _mm256_max_epi16(_mm512_castsi512_si256(v), _mm512_extracti64x4_epi64(v, 1));
    __m128i h = _mm_max_epi16(_mm256_castsi256_si128(q), _mm256_extracti128_si256(q, 1));
    h = _mm_max_epi16(h, _mm_srli_si128(h, 8));
    h = _mm_max_epi16(h, _mm_srli_si128(h, 4));
    h = _mm_max_epi16(h, _mm_srli_si128(h, 2));
    return static_cast<int16_t>(_mm_cvtsi128_si32(h));
  }
  static uint32_t atLeast(Vec v, Vec l) { return _mm512_cmpge_epi16_mask(v, l); }
  static uint32_t equal(Vec v, Vec m) { return _mm512_cmpeq_epi16_mask(v, m); }
};

}  // namespace

constinit const ScanKernel kAvx512U8Kernel = kernelTable<Avx512U8Ops>("avx512-u8", "avx512", ScoreLanes::kUint8);
constinit const ScanKernel kAvx512I16Kernel = kernelTable<Avx512I16Ops>("avx512-i16", "avx512", ScoreLanes::kInt16);

}  // namespace trelvane::kernels
