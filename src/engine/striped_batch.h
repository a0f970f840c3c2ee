// striped_batch.h -- the random expectation's steps in striped rows, for the kernels of integer lanes.
#pragma once

#include <cstdint>

#include "engine/kernels/scan_kernels.h"

namespace trelvane {

// What RowBatch does with Keep::kBestOnly, for a kernel with advanceStriped:
// successive steps of the diagonal recurrence, of which only each step's
// greatest score is kept. The row stays in the kernel's striped form
// (stripedIndex) from one batch to the next, and no row is written between
// the steps of a batch. Integer lanes add exactly in any order, so the scores
// are those of the step by step recurrence.
class StripedBatch {
 public:
  StripedBatch(const ScanKernel& kernel, const CellTable& cells, const uint8_t* m1, int64_t nshort, int32_t W,
               int64_t lastshort);

  // The most steps a batch takes.
  static constexpr int steps() { return kMostStripedSteps; }
  // Fills the row the next batch starts from with scores[0 .. lastshort].
  void setBefore(const float* scores);
  // Runs n steps (1 to steps()): in step k the longest side's byte
  // leaving[k] leaves the window and entering[k] enters it, and start[k] is
  // its start 0.
  void advance(int n, const uint8_t* leaving, const uint8_t* entering, const float* start);
  // The greatest score of the starts 1 to lastshort of step k of the last
  // batch (as RowBatch::best gives it).
  float best(int k) const { return best_[k]; }

 private:
  const ScanKernel& kernel_;
  int64_t lastshort_;
  StripedPairs pairs_;
  LaneStorage row_;
  LaneStorage start0Lanes_;
  float before0_ = 0.0f;  // start 0 of the row the next batch starts from
  const void* stepPairs_[kMostStripedSteps] = {};
  float start0_[kMostStripedSteps] = {};  // start 0 before each step
  float best_[kMostStripedSteps] = {};
};

}  // namespace trelvane
