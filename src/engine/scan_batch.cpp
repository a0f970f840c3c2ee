// scan_batch.cpp -- successive steps of the diagonal recurrence, a batch at a time, a tile of starts at a time.
#include "engine/scan_batch.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "engine/scan.h"

namespace trelvane {

namespace {

// Rows of a batch together stay within this many bytes (the level-2 cache),
// and a batch takes at least two steps and at most 16.
constexpr int64_t kBatchBytes = int64_t{1} << 20;
constexpr int kMostSteps = 16;
// Without kept rows a batch costs no more memory for more steps.
constexpr int kMostStepsBestOnly = 32;
// Scores after each row, at least: whole 64-byte lines.
constexpr int64_t kRowPad = 16;
// With candidates, a batch that copied out more than half of its later
// tiles' blocks (a listing threshold that most scores reach) is followed by
// this many batches that keep whole rows, which cost less then.
constexpr int kWholeRowBatches = 15;
// With candidates, integer rows of a batch that take no more than this many
// bytes together are kept whole: they stay in the level-2 cache, and writing
// them costs less than choosing the blocks to keep (byte lanes,
// BM_KernelBatch on Zen 3: 5.4 us against 6.0 us for 16 steps over 10,000
// starts). Singles keep their candidates: equal at 2,000 starts, and the
// random comparisons of the tests go through that path.
constexpr int64_t kWholeRowsBytes = int64_t{192} << 10;
// A tile's candidate blocks fit one word.
static_assert(RowBatch::kWideTile * 4 / kScanBlock <= 64);

}  // namespace

RowBatch::RowBatch(const ScanKernel& kernel, int64_t lastshort, Keep keep, float threshold)
    : kernel_(kernel), lastshort_(lastshort), blocks_(scanBlockCount(lastshort)),
      tile_(kTile * 4 / kernel.scoreBytes), wideTile_(kWideTile * 4 / kernel.scoreBytes), keep_(keep),
      threshold_(threshold) {
  // Rows of bytes, words or Singles: the rows of the scan and of the random
  // expectation in bytes at 10 kb starts take 10 kB, a quarter of Singles'.
  const int64_t rowBytes = ((std::max<int64_t>(lastshort, 0) + 1 + kRowPad) * kernel.scoreBytes + 63) / 64 * 64;
  // Kept rows take a row a step; best only, four rows do: the one before,
  // the last, and two that the steps between take in turn. Candidates take
  // both: a row a step, and two for the steps between.
  steps_ = keep == Keep::kBestOnly
               ? kMostStepsBestOnly
               : static_cast<int>(std::clamp<int64_t>(kBatchBytes / rowBytes, 2, kMostSteps));
  const int rows = keep == Keep::kRows ? steps_ + 1 : keep == Keep::kBestOnly ? 4 : steps_ + 3;
  rowsFit_ = keep == Keep::kCandidates && kernel.scores != ScoreLanes::kFloat && steps_ * rowBytes <= kWholeRowsBytes;
  storage_.assign(static_cast<std::size_t>(rowBytes * rows), std::byte{0});
  for (int k = 0; k < rows; ++k) rows_.push_back(storage_.data() + k * rowBytes);
  if (keep == Keep::kCandidates) {
    turn_[0] = rows_[static_cast<std::size_t>(steps_) + 1];
    turn_[1] = rows_[static_cast<std::size_t>(steps_) + 2];
    rows_.resize(static_cast<std::size_t>(steps_) + 1);
  } else if (keep == Keep::kBestOnly) {
    turn_[0] = rows_[2];
    turn_[1] = rows_[3];
    rows_.resize(2);
  }
  blockmaxStride_ = static_cast<std::size_t>((blocks_ + 1) * kBlockMaxBytes);
  blockmax_.assign(blockmaxStride_ * static_cast<std::size_t>(steps_), std::byte{0});
  halo_.assign(static_cast<std::size_t>(steps_), 0.0f);
  reached_.assign(static_cast<std::size_t>(steps_), 0.0f);
  best_.assign(static_cast<std::size_t>(steps_), -INFINITY);
}

void RowBatch::setBefore(const float* scores) {
  kernel_.putScores(scores, std::max<int64_t>(lastshort_, 0) + 1, rows_[last_]);
}

void RowBatch::advance(int n, const void* const* leave, const void* const* enter, const float* start) {
  std::fill(best_.begin(), best_.begin() + n, -INFINITY);
  switch (keep_) {
    case Keep::kRows: advanceKeepingRows(n, leave, enter, start, nullptr); break;
    case Keep::kBestOnly: advanceBestOnly(n, leave, enter, start); break;
    case Keep::kCandidates:
      if (rowsFit_ || wholeRowBatches_ > 0) {
        if (!rowsFit_) --wholeRowBatches_;
        advanceKeepingRows(n, leave, enter, start, nullptr);
      } else {
        advanceKeepingCandidates(n, leave, enter, start);
      }
      break;
  }
}

void RowBatch::advanceUpTo(int n, const void* const* leave, const void* const* enter, const float* start,
                           const int64_t* upTo) {
  advanceKeepingRows(n, leave, enter, start, upTo);
}

void RowBatch::advanceKeepingRows(int n, const void* const* leave, const void* const* enter,
                                  const float* start, const int64_t* upTo) {
  // The last row of the batch before becomes the row before this one.
  std::swap(rows_[0], rows_[last_]);
  last_ = static_cast<std::size_t>(n);
  for (int k = 0; k < n; ++k) put(rows_[static_cast<std::size_t>(k) + 1], 0, start[k]);
  // Tiles rising: a tile's step k reads its lowest start's neighbour from
  // the tile below, which has done every step already, or from start[k - 1].
  for (int64_t lo = 1; lo <= lastshort_; lo = (lo / tile_ + 1) * tile_) {
    const int64_t hi = std::min((lo / tile_ + 1) * tile_ - 1, lastshort_);
    for (int k = 0; k < n; ++k) {
      if (upTo && lo > upTo[k]) continue;
      span(k, rows_[static_cast<std::size_t>(k)], rows_[static_cast<std::size_t>(k) + 1], lo, hi, leave[k],
           enter[k]);
    }
  }
}

void RowBatch::advanceBestOnly(int n, const void* const* leave, const void* const* enter,
                               const float* start) {
  // rows_[0] the row before, rows_[1] the last; steps 0 to n - 2 write into
  // the turn rows in turn, a tile at a time.
  if (last_ != 0) std::swap(rows_[0], rows_[last_]);
  last_ = 1;
  std::byte* before = rows_[0];
  std::byte* after = rows_[1];
  put(after, 0, start[n - 1]);
  // Below the first tile, each step's score is its start.
  for (int k = 0; k < n; ++k) halo_[static_cast<std::size_t>(k)] = start[k];
  for (int64_t lo = 1; lo <= lastshort_; lo = (lo / wideTile_ + 1) * wideTile_) {
    const int64_t hi = std::min((lo / wideTile_ + 1) * wideTile_ - 1, lastshort_);
    for (int k = 0; k < n; ++k) {
      const std::byte* prev = k == 0 ? before : turn_[(k - 1) & 1];
      if (k == n - 1) {
        span(k, prev, after, lo, hi, leave[k], enter[k]);
        break;
      }
      // The tile below left its step k's top score in the halo; a later
      // step of it wrote over that cell, which step k + 1 here reads.
      std::byte* next = turn_[k & 1];
      put(next, lo - 1, halo_[static_cast<std::size_t>(k)]);
      span(k, prev, next, lo, hi, leave[k], enter[k]);
      halo_[static_cast<std::size_t>(k)] = scoreAt(next, hi);
    }
  }
}

void RowBatch::advanceKeepingCandidates(int n, const void* const* leave, const void* const* enter,
                                        const float* start) {
  // The first tile of every step is written into the step's own row, which
  // gives each step a maxscore to start from. The tiles after it run as
  // without kept rows, in the turn rows (the last step into its own row);
  // after each, the blocks that a test may look into are copied out to the
  // step's row while they are in the level-1 cache: those reaching the lower
  // of the threshold and the maxscore of the tiles so far. One that does not
  // never will, as the maxscore only grows. The maxscore is taken as the test
  // takes it: from 0, then start 0.
  std::swap(rows_[0], rows_[last_]);
  last_ = static_cast<std::size_t>(n);
  const std::byte* before = rows_[0];
  for (int k = 0; k < n; ++k) {
    const std::size_t sk = static_cast<std::size_t>(k);
    put(rows_[sk + 1], 0, start[k]);
    reached_[sk] = start[k] > 0.0f ? start[k] : 0.0f;
  }
  int64_t laterBlocks = 0, copied = 0;
  for (int64_t lo = 1; lo <= lastshort_; lo = (lo / wideTile_ + 1) * wideTile_) {
    const int64_t hi = std::min((lo / wideTile_ + 1) * wideTile_ - 1, lastshort_);
    const int64_t firstBlock = lo / kScanBlock, tileBlocks = hi / kScanBlock - firstBlock + 1;
    const bool firstTile = lo == 1;
    for (int k = 0; k < n; ++k) {
      const std::size_t sk = static_cast<std::size_t>(k);
      const std::byte* prev = k == 0 ? before : firstTile ? rows_[sk] : turn_[(k - 1) & 1];
      if (k == n - 1) {
        span(k, prev, rows_[sk + 1], lo, hi, leave[k], enter[k]);
        break;
      }
      std::byte* next = firstTile ? rows_[sk + 1] : turn_[k & 1];
      // The tile below left its step k's top score in the halo; a later
      // step of it wrote over that cell, which step k + 1 here reads.
      if (!firstTile) put(next, lo - 1, halo_[sk]);
      const float best = span(k, prev, next, lo, hi, leave[k], enter[k]);
      halo_[sk] = scoreAt(next, hi);
      float& reached = reached_[sk];
      if (firstTile) {
        if (best > reached) reached = best;
        continue;
      }
      // A tile whose best reaches neither the threshold nor the maxscore so
      // far holds no block that a test looks into, and leaves the maxscore.
      laterBlocks += tileBlocks;
      if (!(best >= (threshold_ < reached ? threshold_ : reached))) continue;
      if (best > reached) reached = best;
      uint64_t bits = 0;
      kernel_.blockCandidates(blockmaxOf(k) + firstBlock * kernel_.blockBytes(), tileBlocks,
                              threshold_ < reached ? threshold_ : reached, &bits);
      for (; bits != 0; bits &= bits - 1) {
        const int64_t b = firstBlock + __builtin_ctzll(bits);
        const int64_t from = scanBlockLo(b), to = scanBlockHi(b, lastshort_);
        std::memcpy(at(rows_[sk + 1], from), at(next, from),
                    static_cast<std::size_t>((to - from + 1) * kernel_.scoreBytes));
        ++copied;
      }
    }
  }
  if (2 * copied > laterBlocks) wholeRowBatches_ = kWholeRowBatches;
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
