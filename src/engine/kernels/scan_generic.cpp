// scan_generic.cpp -- the row kernels in plain C++, one start a lane: the portable variant.
#include "engine/kernels/row_kernels.h"

namespace trelvane::kernels {

namespace {

struct GenericOps : FloatLanes<1, 1> {
  static float edgeLane(float x) { return x; }
  static float max(float s, float acc) { return s > acc ? s : acc; }
  static float greatest(float v) { return v; }
  // A word is one start: the shift takes the lower word whole.
  static float prevLoad(const float* prev, int64_t j) { return prev[j]; }
  static float shiftIn(float, float lower) { return lower; }
  static uint32_t atLeast(float v, float l) { return v >= l; }
  static uint32_t equal(float v, float m) { return v == m; }
};

}  // namespace

constinit const ScanKernel kGenericKernel = kernelTable<GenericOps>("generic", "generic", ScoreLanes::kFloat);

}  // namespace trelvane::kernels
