// striped_batch_test.cpp -- the random expectation's striped steps against the scalar step, around the groups' edges.
#include "engine/striped_batch.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "engine/scan.h"

namespace trelvane {
namespace {

struct StripedCase {
  int32_t W;
  int most;       // cells from -most (signed) or 0 to most
  bool negative;  // cells of both signs: 16-bit lanes only
  bool oneBase;   // both sides one base: every score W * most, the lanes' edge
};

// Every kernel with striped steps, on rows of starts around its groups (the
// last one whole, cut, or of one start), against advanceRow step by step: the
// greatest score of each step, over batches of every length, with N and
// bytes above 4 on both sides.
TEST(StripedBatch, GivesEachStepTheScalarBest) {
  const StripedCase cases[] = {{30, 1, false, false}, {1, 3, false, false},  {85, 3, false, true},
                               {2, 1, false, false},  {255, 1, false, true}, {151, 217, true, true},
                               {7, 3, true, false}};
  std::mt19937 gen(77);
  int tried = 0;
  for (const ScanKernel& kernel : scanKernels()) {
    if (!kernel.advanceStriped) continue;
    const int64_t group = int64_t{kStripeVectors} * kernel.lanes;
    for (const StripedCase& sc : cases) {
      float matrice[5][5] = {};
      for (int a = 0; a < 5; ++a)
        for (int b = 0; b < 5; ++b) {
          const int v = static_cast<int>(gen() % static_cast<unsigned>(sc.most + 1));
          matrice[a][b] = static_cast<float>(sc.negative && gen() % 2 ? -v : v);
        }
      matrice[2][2] = static_cast<float>(sc.negative ? -sc.most : sc.most);
      if (exactScoreLanes(matrice, sc.W) > kernel.scores) continue;  // lanes too narrow
      const CellTable cells(matrice);
      for (int64_t lastshort :
           {int64_t{0}, int64_t{1}, int64_t{kStripeVectors}, group - 1, group, group + 1, 2 * group, 3 * group + 5}) {
        const int64_t nshort = lastshort + sc.W;
        std::vector<uint8_t> m1(static_cast<std::size_t>(nshort));
        for (uint8_t& b : m1) b = sc.oneBase ? 2 : gen() % 16 == 0 ? 0 : static_cast<uint8_t>(1 + gen() % 4);
        const int steps = 240;
        std::vector<uint8_t> res(static_cast<std::size_t>(steps + sc.W + 1));
        for (uint8_t& b : res) b = sc.oneBase ? 2 : gen() % 20 == 0 ? 7 : static_cast<uint8_t>(1 + gen() % 4);

        // resampling 0 in full, as the random expectation starts
        std::vector<float> row(static_cast<std::size_t>(lastshort) + 1);
        for (int64_t j = 0; j <= lastshort; ++j) row[j] = fullScoreFromZero(m1.data() + j, res.data(), sc.W, cells);
        StripedBatch batch(kernel, cells, m1.data(), nshort, sc.W, lastshort);
        batch.setBefore(row.data());
        for (int r = 1; r + kMostStripedSteps <= steps;) {
          const int n = std::array{1, 7, 8, 9, kMostStripedSteps, 17, 40}[static_cast<std::size_t>(r % 7)];
          std::vector<float> start(static_cast<std::size_t>(n));
          for (int k = 0; k < n; ++k) start[k] = fullScoreFromZero(m1.data(), res.data() + r + k, sc.W, cells);
          batch.advance(n, res.data() + r - 1, res.data() + r + sc.W - 1, start.data());
          for (int k = 0; k < n; ++k, ++r) {
            advanceRow(row.data(), m1.data(), lastshort, sc.W, cells.column(res[r - 1]),
                       cells.column(res[r + sc.W - 1]));
            row[0] = start[k];
            float best = -INFINITY;
            for (int64_t j = 1; j <= lastshort; ++j) best = row[j] > best ? row[j] : best;
            ASSERT_EQ(batch.best(k), best) << kernel.name << " W=" << sc.W << " lastshort=" << lastshort << " step "
                                           << r << " of a batch of " << n;
          }
        }
        ++tried;
      }
    }
  }
  // every integer variant of the portable set at least
  EXPECT_GE(tried, 2 * 8);
}

}  // namespace
}  // namespace trelvane
