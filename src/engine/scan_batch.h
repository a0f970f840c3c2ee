// scan_batch.h -- successive steps of the diagonal recurrence, a batch at a time, a tile of starts at a time.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/kernels/scan_kernels.h"
#include "platform/memoryblock.h"

namespace trelvane {

// The rows of up to steps() successive positions (or resamplings), in the
// lanes of the kernel, each computed out of place from the one before:
//   row(k)[j] = (row(k - 1)[j - 1] - leave[k][j - 1]) + enter[k][j]
// with row(k)[0] = start[k]. A batch runs a tile of starts through all of its
// steps before the next tile, so that the tile's rows and the matrix columns
// stay in the level-1 cache; every cell sees the operations of the step by
// step recurrence, in the same order.
class RowBatch {
 public:
  // Starts tiled together, whole blocks, for Singles: where every row is kept
  // whole, and where the steps between run in two rows in turn (best only,
  // candidates), so that only those rows' tiles and the columns need the
  // level-1 cache and a wider tile spends less on each step's call. Narrower
  // lanes tile as many bytes: more starts.
  static constexpr int64_t kTile = 4 * kScanBlock;
  static constexpr int64_t kWideTile = 8 * kScanBlock;

  // What a batch keeps of its steps besides the last row and the block
  // maxima of each.
  enum class Keep {
    kRows,        // every step's whole row
    kBestOnly,    // no more: the rows between stay within the tile being
                  // computed (the random expectation needs no more)
    kCandidates,  // of each step's row, the blocks that a test of it looks
                  // into (see row())
  };
  // threshold: the listing threshold, for kCandidates.
  RowBatch(const ScanKernel& kernel, int64_t lastshort, Keep keep = Keep::kRows, float threshold = 0.0f);

  // The most steps a batch takes.
  int steps() const { return steps_; }
  // Fills the row the next batch starts from (the last row of the batch
  // before) with scores[0 .. lastshort].
  void setBefore(const float* scores);
  // The row of step k of the last batch (where rows are kept), and the
  // greatest scores of its blocks. With kCandidates, the row holds start 0
  // and every block whose greatest score reaches the lower of the threshold
  // and the step's maxscore (the greatest of 0, start 0 and best(k)), as the
  // tests look into no other; its other scores may not be the step's.
  const void* row(int k) const { return rows_[static_cast<std::size_t>(k) + 1]; }
  const void* blockmax(int k) const { return blockmax_.data() + static_cast<std::size_t>(k) * blockmaxStride_; }
  // The greatest score of the starts 1 to lastshort of step k (-infinity for
  // none; never a not-a-number), after advance(): the greatest of its spans'
  // as the kernel returned them, which are those of its blocks.
  float best(int k) const { return best_[static_cast<std::size_t>(k)]; }

  // Runs n steps (1 to steps()): step k with the columns leave[k] and
  // enter[k], and start[k] for its start 0.
  void advance(int n, const void* const* leave, const void* const* enter, const float* start);
  // advance() where only the starts up to upTo[k] of step k are needed
  // later (a part's repeat of the positions before it): tiles of starts
  // wholly above are not computed, and their scores are left as they were.
  // Rows are kept whole (not with kBestOnly).
  void advanceUpTo(int n, const void* const* leave, const void* const* enter, const float* start,
                   const int64_t* upTo);

 private:
  void advanceKeepingRows(int n, const void* const* leave, const void* const* enter, const float* start,
                          const int64_t* upTo);
  void advanceBestOnly(int n, const void* const* leave, const void* const* enter, const float* start);
  void advanceKeepingCandidates(int n, const void* const* leave, const void* const* enter, const float* start);
  std::byte* blockmaxOf(int k) { return blockmax_.data() + static_cast<std::size_t>(k) * blockmaxStride_; }
  // Score j of a row, and one score put there.
  std::byte* at(std::byte* row, int64_t j) const { return row + j * kernel_.scoreBytes; }
  float scoreAt(const std::byte* row, int64_t j) const { return kernel_.scoreAt(row, j); }
  // One span of step k, its greatest score kept for best(k).
  float span(int k, const std::byte* prev, std::byte* next, int64_t lo, int64_t hi, const void* leave,
             const void* enter) {
    // The random expectation reads only the best: no block maxima.
    const float b =
        kernel_.advanceSpan(prev, next, lo, hi, leave, enter, keep_ == Keep::kBestOnly ? nullptr : blockmaxOf(k));
    float& kept = best_[static_cast<std::size_t>(k)];
    kept = b > kept ? b : kept;
    return b;
  }
  void put(std::byte* row, int64_t j, float score) const { kernel_.putScores(&score, 1, at(row, j)); }

  const ScanKernel& kernel_;
  int64_t lastshort_;
  int64_t blocks_;
  int64_t tile_, wideTile_;  // kTile and kWideTile in the kernel's lanes
  int steps_;
  Keep keep_;
  float threshold_;
  std::vector<float> halo_;     // without whole rows: each step's score just below the tile
  std::vector<float> reached_;  // kCandidates: each step's maxscore over the tiles so far
  std::vector<float> best_;     // each step's greatest score over the tiles so far
  int wholeRowBatches_ = 0;     // kCandidates: batches left to keep whole rows
  bool rowsFit_ = false;        // kCandidates: every batch keeps whole rows
  std::byte* turn_[2] = {};     // without whole rows: the rows the steps between take in turn
  std::size_t blockmaxStride_;  // bytes
  LaneStorage storage_;
  std::vector<std::byte*> rows_;  // rows_[0] the row before, rows_[k + 1] that of step k
  std::size_t last_ = 0;          // rows_[last_]: the last row of the last batch
  LaneStorage blockmax_;
};

// Whether the kernel scores start 0 in its lanes (ScanKernel::startScores)
// for the windows from text[at] on: it reads text[at .. at + W + 31], which
// must lie in the block or its padding. A window of 0 keeps the Single sums,
// which take the first cell even so.
inline bool startScoresInLanes(const ScanKernel& kernel, int32_t W, const MemoryBlock& text, int64_t at) {
  return kernel.startScores && W >= 1 && text.data() && at >= -MemoryBlock::kPad &&
         at + W + 32 <= text.size() + MemoryBlock::kPad;
}

// The scores at start 0 of n windows of the longest side against the first
// window of the shortest, a few at a time so that their chains of additions
// overlap: out[k] is fullScoreFromFirst(m1, wins[k], W, cells), bit for bit.
void startScoresFromFirst(const uint8_t* m1, const uint8_t* const* wins, int n, int32_t W,
                          const CellTable& cells, float* out);
// The same from 0.0, as fullScoreFromZero adds them.
void startScoresFromZero(const uint8_t* m1, const uint8_t* const* wins, int n, int32_t W,
                         const CellTable& cells, float* out);

}  // namespace trelvane
