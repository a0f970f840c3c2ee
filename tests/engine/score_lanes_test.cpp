// score_lanes_test.cpp -- which lanes hold a run's window scores exactly, and the variant a run takes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "engine/kernels/scan_kernels.h"

namespace trelvane {
namespace {

// The proof that these lanes are exact. A window score is a sum of W cells
// (W at most 255; a byte above 4 scores 0). Let every cell be a whole number
// (not -0) of magnitude at most m. Then every score, and every partial sum
// the recurrence forms ((score - leaving cell) is a sum of W - 1 cells), is a
// whole number of magnitude at most W * m. Where W * m <= 32,767 that is far
// below 2^24, so each Single addition and subtraction is exact: the scalar
// kernel holds the true sums. Integer lanes that add and subtract modulo
// 2^16 (or 2^8) hold the true sums modulo 2^16 (2^8) on every diagonal whose
// start was scored in full, and a true sum within the lanes' range is then
// that sum itself. Signed 16 bits take every sum within +-32,767 (-32,768
// stays free to mean no score); unsigned bytes every sum within 0 to 255,
// which non-negative cells with W times the greatest at most 255 give. A
// -0 cell is refused: Single sums of -0 keep its sign, whole numbers do not.
struct LanesCase {
  const char* name;
  float low, high;  // the least and the greatest cell of the matrix
  int32_t W;
  ScoreLanes lanes;
};

TEST(ScoreLanes, RangeOfTheScoresChoosesTheLanes) {
  const float nan = std::nanf(""), inf = INFINITY;
  const LanesCase cases[] = {
      {"identity, widest window", 0, 1, 255, ScoreLanes::kUint8},
      {"W times the greatest is 255", 0, 17, 15, ScoreLanes::kUint8},
      {"W times the greatest is 256", 0, 2, 128, ScoreLanes::kInt16},
      {"one negative cell", -1, 1, 2, ScoreLanes::kInt16},
      {"W times the largest magnitude is 32767", -217, 3, 151, ScoreLanes::kInt16},
      {"a negative cell of magnitude 32768 / W", -256, 1, 128, ScoreLanes::kFloat},
      {"a positive cell of 32768 / W", 0, 256, 128, ScoreLanes::kFloat},
      {"a half", 0, 0.5f, 10, ScoreLanes::kFloat},
      {"TS/TV frequencies", 0.02f, 0.9f, 30, ScoreLanes::kFloat},
      {"minus zero", -0.0f, 1, 30, ScoreLanes::kFloat},
      {"not a number", 0, nan, 30, ScoreLanes::kFloat},
      {"infinite", 0, inf, 30, ScoreLanes::kFloat},
      {"a cell far past 2^24", 0, 3e9f, 1, ScoreLanes::kFloat},
      {"no window", 0, 40000, 0, ScoreLanes::kUint8},
  };
  for (const LanesCase& c : cases) {
    float m[5][5] = {};
    m[1][1] = c.high;
    m[2][3] = c.low;  // cells of N stand among the others
    m[0][4] = c.low;
    EXPECT_EQ(exactScoreLanes(m, c.W), c.lanes) << c.name;
  }
}

TEST(ScoreLanes, RunTakesTheNarrowestLanesOfItsInstructionSet) {
  float identity[5][5] = {}, signedCells[5][5] = {}, tstv[5][5] = {};
  for (int b = 1; b <= 4; ++b) identity[b][b] = signedCells[b][b] = 1, tstv[b][b] = 0.9f;
  signedCells[1][2] = -1;
  const ScanKernel& widest = scanKernels().back();
  const std::string family = widest.family;
  auto named = [](const ScanKernel& k) { return std::string(k.name); };
  // auto: the narrowest lanes of the widest instruction set that has them
  if (family != "sse2") {
    EXPECT_EQ(named(kernelForRun("auto", identity, 30)), family + "-u8");
    EXPECT_EQ(named(kernelForRun("auto", signedCells, 30)), family + "-i16");
    EXPECT_EQ(named(kernelForRun("no-such-kernel", identity, 30)), family + "-u8");
  }
  EXPECT_EQ(named(kernelForRun("auto", tstv, 30)), widest.name);
  // a named Single kernel stays; a named integer one widens as far as needed
  EXPECT_EQ(named(kernelForRun("generic", identity, 30)), "generic");
  EXPECT_EQ(named(kernelForRun("generic-i16", identity, 30)), "generic-i16");
  EXPECT_EQ(named(kernelForRun("generic-u8", signedCells, 30)), "generic-i16");
  EXPECT_EQ(named(kernelForRun("generic-u8", tstv, 30)), "generic");
  EXPECT_EQ(named(kernelForRun("generic-i16", tstv, 30)), "generic");
  EXPECT_EQ(named(kernelForRun("scalar", identity, 30)), "scalar");
#if defined(__x86_64__)
  EXPECT_EQ(named(kernelForRun("sse2", identity, 30)), "sse2");
#endif
}

// Every variant answers to its name; an instruction set with integer
// variants has both widths.
TEST(ScoreLanes, EveryVariantAnswersToItsName) {
  std::vector<std::string_view> names = scanKernelNames();
  names.insert(names.end(), integerScanKernelNames().begin(), integerScanKernelNames().end());
  for (const ScanKernel& k : scanKernels()) {
    EXPECT_NE(std::find(names.begin(), names.end(), k.name), names.end()) << k.name;
    EXPECT_EQ(findScanKernel(k.name), &k);
    if (k.scores != ScoreLanes::kFloat) {
      const std::string family = k.family;
      EXPECT_NE(findScanKernel(family + "-u8"), nullptr) << family;
      EXPECT_NE(findScanKernel(family + "-i16"), nullptr) << family;
      EXPECT_NE(findScanKernel(family), nullptr) << family;
    }
  }
}

}  // namespace
}  // namespace trelvane
