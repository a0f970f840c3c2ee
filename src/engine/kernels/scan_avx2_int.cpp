// scan_avx2_int.cpp -- the row kernels with AVX2 over whole-number scores: 32 starts a vector in bytes, 16 in 16 bits.
#include <immintrin.h>

#include "engine/kernels/row_kernels.h"

namespace trelvane::kernels {

namespace {

// What both lane widths share: whole vectors loaded and stored anywhere (the
// rows and columns lie on 32-byte words all the same), the previous row one
// start back in one load, as SSE2 takes it, and a block's greatest scores in
// eight lanes: the candidates and the blocks' maximum then read a quarter
// (a half) of the bytes, for a fold or two a block.
template <class T>
struct Avx2IntLanes {
  using Score = T;
  using Vec = __m256i;
  static constexpr int kLanes = 32 / sizeof(T);
  static constexpr int kBlockLanes = 8;
  static constexpr T kLeast = std::numeric_limits<T>::lowest();

  static Vec loadAny(const T* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
  static Vec load(const T* p) { return loadAny(p); }
  // The lanes past n hold the lowest value, whose bits the kernels drop.
  static Vec loadFirst(const T* p, int64_t n) {
    T lanes[kLanes];
    std::fill(lanes, lanes + kLanes, kLeast);
    std::memcpy(lanes, p, static_cast<std::size_t>(n) * sizeof(T));
    return loadAny(lanes);
  }
  static void store(T* p, Vec v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
  static const T* prevLoad(const T* prev, int64_t j) { return prev + j; }
  // prev[j-1 .. j+kLanes-2]
  static Vec shiftIn(const T* upper, const T*) { return loadAny(upper - 1); }
  // Striped rows: below's high half and v's low half, then each half of v
  // joined one lane on with the half under it (alignr works within halves).
  static Vec shiftUp(Vec v, Vec below) {
    return _mm256_alignr_epi8(v, _mm256_permute2x128_si256(v, below, 0x03), 16 - sizeof(T));
  }
};

// Scores 0 to 255 in unsigned bytes; the sums wrap modulo 256, exact on
// every diagonal that a test reads. 0 stands for none: no score lies below.
struct Avx2U8Ops : Avx2IntLanes<uint8_t> {
  static Vec splat(uint8_t x) { return _mm256_set1_epi8(static_cast<char>(x)); }
  static Vec edgeLane(uint8_t x) { return _mm256_set_m128i(_mm_setzero_si128(), _mm_cvtsi32_si128(x)); }
  static Vec add(Vec a, Vec b) { return _mm256_add_epi8(a, b); }
  static Vec sub(Vec a, Vec b) { return _mm256_sub_epi8(a, b); }
  static Vec max(Vec s, Vec acc) { return _mm256_max_epu8(s, acc); }
  static Vec min(Vec a, Vec b) { return _mm256_min_epu8(a, b); }
  // lane x: the greatest of lanes x, x + 8, x + 16 and x + 24
  static void storeBlock(uint8_t* p, Vec v) {
    const __m128i h = _mm_max_epu8(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_max_epu8(h, _mm_srli_si128(h, 8)));
  }
  static uint8_t greatest(Vec v) {
    __m128i h = _mm_max_epu8(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
    h = _mm_max_epu8(h, _mm_srli_si128(h, 8));
    h = _mm_max_epu8(h, _mm_srli_si128(h, 4));
    h = _mm_max_epu8(h, _mm_srli_si128(h, 2));
    h = _mm_max_epu8(h, _mm_srli_si128(h, 1));
    return static_cast<uint8_t>(_mm_cvtsi128_si32(h));
  }
  // v >= l unsigned: the greater of the two is v
  static uint32_t atLeast(Vec v, Vec l) {
    return static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(_mm256_max_epu8(v, l), v)));
  }
  static uint32_t equal(Vec v, Vec m) { return static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(v, m))); }
  // A block is a 64-bit lane: one with no byte at least l is zero after the
  // compare.
  static uint32_t blocksAtLeast(Vec v, Vec l) {
    const Vec none = _mm256_cmpeq_epi64(_mm256_cmpeq_epi8(_mm256_max_epu8(v, l), v), _mm256_setzero_si256());
    return ~static_cast<uint32_t>(_mm256_movemask_pd(_mm256_castsi256_pd(none))) & 0xFu;
  }
};

// Scores in signed 16 bits; the sums wrap modulo 65,536. -32,768 stands for
// none: the run's scores lie within +-32,767.
struct Avx2I16Ops : Avx2IntLanes<int16_t> {
  static Vec splat(int16_t x) { return _mm256_set1_epi16(x); }
  static Vec edgeLane(int16_t x) { return _mm256_insert_epi16(_mm256_set1_epi16(INT16_MIN), x, 0); }
  static Vec add(Vec a, Vec b) { return _mm256_add_epi16(a, b); }
  static Vec sub(Vec a, Vec b) { return _mm256_sub_epi16(a, b); }
  static Vec max(Vec s, Vec acc) { return _mm256_max_epi16(s, acc); }
  static Vec min(Vec a, Vec b) { return _mm256_min_epi16(a, b); }
  // lane x: the greater of lanes x and x + 8
  static void storeBlock(int16_t* p, Vec v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p),
                     _mm_max_epi16(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1)));
  }
  static int16_t greatest(Vec v) {
    __m128i h = _mm_max_epi16(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
    h = _mm_max_epi16(h, _mm_srli_si128(h, 8));
    h = _mm_max_epi16(h, _mm_srli_si128(h, 4));
    h = _mm_max_epi16(h, _mm_srli_si128(h, 2));
    return static_cast<int16_t>(_mm_cvtsi128_si32(h));
  }
  // One bit a lane: the 16-bit masks packed to bytes, in their order.
  static uint32_t laneBits(Vec mask) {
    return static_cast<uint32_t>(
        _mm_movemask_epi8(_mm_packs_epi16(_mm256_castsi256_si128(mask), _mm256_extracti128_si256(mask, 1))));
  }
  static uint32_t atLeast(Vec v, Vec l) { return ~laneBits(_mm256_cmpgt_epi16(l, v)) & 0xFFFFu; }
  static uint32_t equal(Vec v, Vec m) { return laneBits(_mm256_cmpeq_epi16(v, m)); }
  // A block is a 128-bit half: one whose lanes all lie below l gives 16 set
  // bits.
  static uint32_t blocksAtLeast(Vec v, Vec l) {
    const auto below = static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpgt_epi16(l, v)));
    return static_cast<uint32_t>((below & 0xFFFFu) != 0xFFFFu) | static_cast<uint32_t>(below >> 16 != 0xFFFFu) << 1;
  }
};

// 32 positions a vector: each t adds the cells its shuffle looks up.
void startScoresU8(const uint8_t* lut, const uint8_t* text, int n, int32_t W, float* out) {
  const __m256i five = _mm256_set1_epi8(5);
  __m256i sum = _mm256_setzero_si256();
  for (int32_t t = 0; t < W; ++t) {
    const __m256i cells = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(lut + 16 * t)));
    const __m256i bytes = _mm256_min_epu8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(text + t)), five);
    sum = _mm256_add_epi8(sum, _mm256_shuffle_epi8(cells, bytes));
  }
  alignas(32) uint8_t sums[32];
  _mm256_store_si256(reinterpret_cast<__m256i*>(sums), sum);
  for (int q = 0; q < n; ++q) out[q] = static_cast<float>(sums[q]);
}

}  // namespace

constinit const ScanKernel kAvx2U8Kernel =
    kernelTable<Avx2U8Ops>("avx2-u8", "avx2", ScoreLanes::kUint8, &startScoresU8);
constinit const ScanKernel kAvx2I16Kernel = kernelTable<Avx2I16Ops>("avx2-i16", "avx2", ScoreLanes::kInt16);

}  // namespace trelvane::kernels
