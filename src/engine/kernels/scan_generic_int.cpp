// scan_generic_int.cpp -- the row kernels in plain C++ over whole-number scores: 16 bytes of lanes, in bytes or in 16 bits.
#include <algorithm>
#include <bit>
#include <utility>

#include "engine/kernels/row_kernels.h"

namespace trelvane::kernels {

namespace {

// Scores of type T in the compiler's vectors of 16 bytes, on which + and -
// wrap modulo T's width and comparisons give a lane of all ones where they
// hold. A run takes these lanes only where every window score lies in T's
// range, so the diagonals it tests end exact whatever lies between.
template <class T>
struct GenericIntOps {
  static constexpr int kLanes = 16 / sizeof(T);
  static constexpr int kBlockLanes = kLanes;
  using Score = T;
  typedef T Vec __attribute__((vector_size(16), may_alias));

  static Vec splat(T x) { return Vec{} + x; }
  static Vec edgeLane(T x) {
    Vec v = splat(std::numeric_limits<T>::lowest());
    v[0] = x;
    return v;
  }
  static Vec loadAny(const T* p) {
    Vec v;
    std::memcpy(&v, p, sizeof v);
    return v;
  }
  static Vec load(const T* p) { return loadAny(p); }
  static void store(T* p, Vec v) { std::memcpy(p, &v, sizeof v); }
  static void storeBlock(T* p, Vec v) { store(p, v); }
  static Vec add(Vec a, Vec b) { return a + b; }
  static Vec sub(Vec a, Vec b) { return a - b; }
  static Vec max(Vec s, Vec acc) { return s > acc ? s : acc; }
  static Vec min(Vec a, Vec b) { return a < b ? a : b; }
  // Lane 0 below's last lane, lane x lane x - 1 of v. On a little-endian
  // machine each 64-bit word of v moves up a lane and takes the top lane of
  // the word under it (compilers lower a shuffle of byte lanes poorly without
  // a byte shuffle instruction); elsewhere, lane by lane.
  static Vec shiftUp(Vec v, Vec below) {
    if constexpr (std::endian::native == std::endian::little) {
      typedef uint64_t Words __attribute__((vector_size(16), may_alias));
      constexpr int kBits = 8 * sizeof(T);
      Words w, b;
      std::memcpy(&w, &v, sizeof w);
      std::memcpy(&b, &below, sizeof b);
      const Words under = __builtin_shufflevector(b, w, 1, 2);
      const Words moved = (w << kBits) | (under >> (64 - kBits));
      Vec out;
      std::memcpy(&out, &moved, sizeof out);
      return out;
    } else {
      return shiftedUp(v, below, std::make_index_sequence<kLanes - 1>{});
    }
  }
  template <std::size_t... x>
  static Vec shiftedUp(Vec v, Vec below, std::index_sequence<x...>) {
    return __builtin_shufflevector(below, v, kLanes - 1, (kLanes + static_cast<int>(x))...);
  }
  static T greatest(Vec v) {
    T g = v[0];
    for (int k = 1; k < kLanes; ++k) g = v[k] > g ? v[k] : g;
    return g;
  }
  // prev[j-1 .. j+kLanes-2] in one load, one start back.
  static const T* prevLoad(const T* prev, int64_t j) { return prev + j; }
  static Vec shiftIn(const T* upper, const T*) { return loadAny(upper - 1); }
  // One bit a lane, from a comparison's lanes of all ones or none: on a
  // little-endian machine, the low bit of each lane of a 64-bit half
  // multiplied into its top bits (lane k's to bit k there, no other term
  // reaching them), else lane by lane.
  template <class Mask>
  static uint32_t bits(Mask m) {
    if constexpr (std::endian::native == std::endian::little) {
      uint64_t half[2];
      std::memcpy(half, &m, sizeof half);
      if constexpr (sizeof(T) == 1) {
        constexpr uint64_t kLow = 0x0101010101010101ULL, kGather = 0x0102040810204080ULL;
        return static_cast<uint32_t>(((half[0] & kLow) * kGather) >> 56 | ((half[1] & kLow) * kGather) >> 56 << 8);
      } else {
        constexpr uint64_t kLow = 0x0001000100010001ULL, kGather = 0x0001000200040008ULL;
        return static_cast<uint32_t>(((half[0] & kLow) * kGather) >> 48 | ((half[1] & kLow) * kGather) >> 48 << 4);
      }
    } else {
      uint32_t out = 0;
      for (int k = 0; k < kLanes; ++k) out |= static_cast<uint32_t>(m[k] & 1) << k;
      return out;
    }
  }
  static uint32_t atLeast(Vec v, Vec l) { return bits(v >= l); }
  static uint32_t equal(Vec v, Vec m) { return bits(v == m); }
};

// Whole numbers: the sums in any order, as integers.
void startScoresU8(const uint8_t* lut, const uint8_t* text, int n, int32_t W, float* out) {
  for (int q = 0; q < n; ++q) {
    uint32_t sum = 0;
    for (int32_t t = 0; t < W; ++t) sum += lut[16 * t + std::min<uint8_t>(text[q + t], 5)];
    out[q] = static_cast<float>(sum);
  }
}

}  // namespace

constinit const ScanKernel kGenericU8Kernel =
    kernelTable<GenericIntOps<uint8_t>>("generic-u8", "generic", ScoreLanes::kUint8, &startScoresU8);
constinit const ScanKernel kGenericI16Kernel =
    kernelTable<GenericIntOps<int16_t>>("generic-i16", "generic", ScoreLanes::kInt16);

}  // namespace trelvane::kernels
