// scan_generic_int.cpp -- the row kernels in plain C++ over whole-number scores: one byte or 16 bits a start, one start a lane.
#include "engine/kernels/row_kernels.h"

namespace trelvane::kernels {

namespace {

// Scores of type T, one a lane. Additions and subtractions wrap modulo T's
// width: a run takes these lanes only where every window score lies in T's
// range, so the diagonals it tests end exact whatever lies between.
template <class T>
struct GenericIntOps {
  using Score = T;
  using Vec = T;
  static constexpr int kLanes = 1;
  static constexpr int kBlockLanes = 1;

  static T splat(T x) { return x; }
  static T edgeLane(T x) { return x; }
  static T load(const T* p) { return *p; }
  static T loadAny(const T* p) { return *p; }
  static void store(T* p, T v) { *p = v; }
  static void storeBlock(T* p, T v) { *p = v; }
  static T add(T a, T b) { return static_cast<T>(a + b); }
  static T sub(T a, T b) { return static_cast<T>(a - b); }
  static T max(T s, T acc) { return s > acc ? s : acc; }
  static T greatest(T v) { return v; }
  // A word is one start: the shift takes the lower word whole.
  static T prevLoad(const T* prev, int64_t j) { return prev[j]; }
  static T shiftIn(T, T lower) { return lower; }
  static uint32_t atLeast(T v, T l) { return v >= l; }
  static uint32_t equal(T v, T m) { return v == m; }
};

}  // namespace

constinit const ScanKernel kGenericU8Kernel =
    kernelTable<GenericIntOps<uint8_t>>("generic-u8", "generic", ScoreLanes::kUint8);
constinit const ScanKernel kGenericI16Kernel =
    kernelTable<GenericIntOps<int16_t>>("generic-i16", "generic", ScoreLanes::kInt16);

}  // namespace trelvane::kernels
