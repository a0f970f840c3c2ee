// striped_batch.cpp -- the random expectation's steps in striped rows, for the kernels of integer lanes.
#include "engine/striped_batch.h"

#include <cmath>
#include <vector>

namespace trelvane {

StripedBatch::StripedBatch(const ScanKernel& kernel, const CellTable& cells, const uint8_t* m1, int64_t nshort,
                           int32_t W, int64_t lastshort)
    : kernel_(kernel), lastshort_(lastshort), pairs_(cells, m1, nshort, W, lastshort, kernel) {
  row_.assign(static_cast<std::size_t>(pairs_.rowScores() * kernel.scoreBytes), std::byte{0});
  start0Lanes_.assign(static_cast<std::size_t>(kMostStripedSteps * kernel.scoreBytes), std::byte{0});
  for (float& b : best_) b = -INFINITY;
}

void StripedBatch::setBefore(const float* scores) {
  before0_ = scores[0];
  std::vector<float> striped(static_cast<std::size_t>(pairs_.rowScores()), 0.0f);
  for (int64_t j = 1; j <= lastshort_; ++j)
    striped[static_cast<std::size_t>(stripedIndex(j, kernel_.lanes))] = scores[j];
  kernel_.putScores(striped.data(), pairs_.rowScores(), row_.data());
}

void StripedBatch::advance(int n, const uint8_t* leaving, const uint8_t* entering, const float* start) {
  start0_[0] = before0_;
  for (int k = 0; k < n; ++k) {
    stepPairs_[k] = pairs_.forStep(leaving[k], entering[k]);
    if (k + 1 < n) start0_[k + 1] = start[k];
  }
  before0_ = start[n - 1];
  if (pairs_.groups() == 0) {
    for (int k = 0; k < n; ++k) best_[k] = -INFINITY;
    return;
  }
  kernel_.putScores(start0_, n, start0Lanes_.data());
  kernel_.advanceStriped(row_.data(), pairs_.groups(), n, stepPairs_, pairs_.clip(), start0Lanes_.data(), best_);
}

}  // namespace trelvane
