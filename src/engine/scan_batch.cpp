// scan_batch.cpp -- successive steps of the diagonal recurrence, a batch at a time, a tile of starts at a time.
#include "engine/scan_batch.h"

#include <algorithm>
#include <cmath>

#include "engine/scan.h"

namespace trelvane {

namespace {

// Rows of a batch together stay within this many floats (about 1 MiB, the
// level-2 cache), and a batch takes at least two steps and at most 16.
constexpr int64_t kBatchFloats = int64_t{1} << 18;
constexpr int kMostSteps = 16;
// Without kept rows a batch costs no more memory for more steps.
constexpr int kMostStepsBestOnly = 32;
// Floats after each row: whole 64-byte lines.
constexpr int64_t kRowPad = 16;

}  // namespace

RowBatch::RowBatch(const ScanKernel& kernel, int64_t lastshort, Keep keep)
    : kernel_(kernel), lastshort_(lastshort), blocks_(scanBlockCount(lastshort)), keep_(keep) {
  const int64_t rowFloats = (std::max<int64_t>(lastshort, 0) + 1 + kRowPad + 15) / 16 * 16;
  // Kept rows take a row a step; best only, four rows do: the one before,
  // the last, and two that the steps between take in turn.
  steps_ = keep == Keep::kBestOnly
               ? kMostStepsBestOnly
               : static_cast<int>(std::clamp<int64_t>(kBatchFloats / rowFloats, 2, kMostSteps));
  const int rows = keep == Keep::kRows ? steps_ + 1 : 4;
  storage_.assign(static_cast<std::size_t>(rowFloats * rows), 0.0f);
  for (int k = 0; k < rows; ++k) rows_.push_back(storage_.data() + k * rowFloats);
  blockmaxStride_ = static_cast<std::size_t>((blocks_ + 1) * kBlockMaxLanes);
  blockmax_.assign(blockmaxStride_ * static_cast<std::size_t>(steps_), -INFINITY);
  halo_.assign(static_cast<std::size_t>(steps_), 0.0f);
}

void RowBatch::advance(int n, const float* const* leave, const float* const* enter, const float* start) {
  if (keep_ == Keep::kRows) advanceKeepingRows(n, leave, enter, start, nullptr);
  else advanceBestOnly(n, leave, enter, start);
}

void RowBatch::advanceUpTo(int n, const float* const* leave, const float* const* enter, const float* start,
                           const int64_t* upTo) {
  advanceKeepingRows(n, leave, enter, start, upTo);
}

void RowBatch::advanceKeepingRows(int n, const float* const* leave, const float* const* enter,
                                  const float* start, const int64_t* upTo) {
  // The last row of the batch before becomes the row before this one.
  std::swap(rows_[0], rows_[last_]);
  last_ = static_cast<std::size_t>(n);
  for (int k = 0; k < n; ++k) rows_[static_cast<std::size_t>(k) + 1][0] = start[k];
  // Tiles rising: a tile's step k reads its lowest start's neighbour from
  // the tile below, which has done every step already, or from start[k - 1].
  for (int64_t lo = 1; lo <= lastshort_; lo = (lo / kTile + 1) * kTile) {
    const int64_t hi = std::min((lo / kTile + 1) * kTile - 1, lastshort_);
    for (int k = 0; k < n; ++k) {
      if (upTo && lo > upTo[k]) continue;
      kernel_.advanceSpan(rows_[static_cast<std::size_t>(k)], rows_[static_cast<std::size_t>(k) + 1], lo, hi,
                          leave[k], enter[k], blockmaxOf(k));
    }
  }
}

void RowBatch::advanceBestOnly(int n, const float* const* leave, const float* const* enter,
                               const float* start) {
  // rows_[0] the row before, rows_[1] the last; steps 0 to n - 2 write into
  // rows_[2] and rows_[3] in turn, a tile at a time.
  if (last_ != 0) std::swap(rows_[0], rows_[last_]);
  last_ = 1;
  float* before = rows_[0];
  float* after = rows_[1];
  float* turn[2] = {rows_[2], rows_[3]};
  after[0] = start[n - 1];
  // Below the first tile, each step's score is its start.
  for (int k = 0; k < n; ++k) halo_[static_cast<std::size_t>(k)] = start[k];
  for (int64_t lo = 1; lo <= lastshort_; lo = (lo / kBestOnlyTile + 1) * kBestOnlyTile) {
    const int64_t hi = std::min((lo / kBestOnlyTile + 1) * kBestOnlyTile - 1, lastshort_);
    for (int k = 0; k < n; ++k) {
      const float* prev = k == 0 ? before : turn[(k - 1) & 1];
      if (k == n - 1) {
        kernel_.advanceSpan(prev, after, lo, hi, leave[k], enter[k], blockmaxOf(k));
        break;
      }
      // The tile below left its step k's top score in the halo; a later
      // step of it wrote over that cell, which step k + 1 here reads.
      float* next = turn[k & 1];
      next[lo - 1] = halo_[static_cast<std::size_t>(k)];
      kernel_.advanceSpan(prev, next, lo, hi, leave[k], enter[k], blockmaxOf(k));
      halo_[static_cast<std::size_t>(k)] = next[hi];
    }
  }
}

namespace {

// Four chains of additions side by side; each is rounded as its own.
template <bool FromZero>
void startScores(const uint8_t* m1, const uint8_t* const* wins, int n, int32_t W, const CellTable& cells,
                 float* out) {
  int k = 0;
  for (; k + 4 <= n; k += 4) {
    const uint8_t *w0 = wins[k], *w1 = wins[k + 1], *w2 = wins[k + 2], *w3 = wins[k + 3];
    float s0, s1, s2, s3;
    int32_t t = 0;
    if (FromZero) {
      s0 = s1 = s2 = s3 = 0.0f;
    } else {
      s0 = cells.cell(m1[0], w0[0]);
      s1 = cells.cell(m1[0], w1[0]);
      s2 = cells.cell(m1[0], w2[0]);
      s3 = cells.cell(m1[0], w3[0]);
      t = 1;
    }
    for (; t < W; ++t) {
      const uint8_t s = m1[t];
      s0 = s0 + cells.cell(s, w0[t]);
      s1 = s1 + cells.cell(s, w1[t]);
      s2 = s2 + cells.cell(s, w2[t]);
      s3 = s3 + cells.cell(s, w3[t]);
    }
    out[k] = s0;
    out[k + 1] = s1;
    out[k + 2] = s2;
    out[k + 3] = s3;
  }
  for (; k < n; ++k)
    out[k] = FromZero ? fullScoreFromZero(m1, wins[k], W, cells) : fullScoreFromFirst(m1, wins[k], W, cells);
}

}  // namespace

void startScoresFromFirst(const uint8_t* m1, const uint8_t* const* wins, int n, int32_t W,
                          const CellTable& cells, float* out) {
  startScores<false>(m1, wins, n, W, cells, out);
}

void startScoresFromZero(const uint8_t* m1, const uint8_t* const* wins, int n, int32_t W,
                         const CellTable& cells, float* out) {
  startScores<true>(m1, wins, n, W, cells, out);
}

}  // namespace trelvane
