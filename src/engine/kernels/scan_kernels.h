// scan_kernels.h -- the row kernels of the diagonal recurrence: their table by instruction set, the layout they read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>
#include <vector>

namespace trelvane {

// Storage on 64-byte boundaries, so that the kernels' groups of starts fall
// on whole vectors: a row of scores is one.
template <class T>
struct AlignedAllocator {
  using value_type = T;
  static constexpr std::align_val_t kAlign{64};
  AlignedAllocator() = default;
  template <class U>
  AlignedAllocator(const AlignedAllocator<U>&) {}
  T* allocate(std::size_t n) { return static_cast<T*>(::operator new(n * sizeof(T), kAlign)); }
  void deallocate(T* p, std::size_t) { ::operator delete(p, kAlign); }
  template <class U>
  bool operator==(const AlignedAllocator<U>&) const { return true; }
};
using ScoreRow = std::vector<float, AlignedAllocator<float>>;
// The same for rows of any kernel's lanes.
using LaneStorage = std::vector<std::byte, AlignedAllocator<std::byte>>;

// The starts j of a row are grouped in blocks of kScanBlock: block b holds the
// starts b * kScanBlock to (b + 1) * kScanBlock - 1, from 1 on (j = 0 stands
// apart, it is scored in full at every position).
inline constexpr int64_t kScanBlock = 128;
// The room a block takes in the blockmax of AdvanceSpanFn.
inline constexpr int64_t kBlockMaxBytes = 32;
// The starts a BlockMatchFn looks at in one call.
inline constexpr int64_t kMatchSpan = 64;

inline int64_t scanBlockCount(int64_t lastshort) { return lastshort > 0 ? lastshort / kScanBlock + 1 : 0; }
// The first and the last start of block b.
inline int64_t scanBlockLo(int64_t b) { return b > 0 ? b * kScanBlock : 1; }
inline int64_t scanBlockHi(int64_t b, int64_t lastshort) {
  return (b + 1) * kScanBlock - 1 < lastshort ? (b + 1) * kScanBlock - 1 : lastshort;
}

// What a kernel's lanes hold: Singles, or whole numbers in 16 signed bits or
// in one unsigned byte, where every window score of the run is one of them
// (see exactScoreLanes). Narrower lanes sort first.
enum class ScoreLanes : uint8_t { kUint8, kInt16, kFloat };

// Rows, columns and block maxima hold scores of the kernel's lanes, one
// after the other (4, 2 or 1 bytes a score); the scans pass them through
// untyped, and write and read single scores with PutScoresFn and ScoreAtFn.

// One step along the diagonals of the starts lo to hi, out of place:
//   next[j] = (prev[j - 1] - leave[j - 1]) + enter[j]
// each step rounded to Single, in this order (whole numbers: exact in any
// order). leave is the matrix column of the longest side's base that leaves
// the window, laid out by start (leave[j] is the cell of m1[j]); enter the
// column of the entering base, shifted so that enter[j] is the cell of
// m1[j + W - 1]. Integer lanes take the pair column of ScanColumns in
// leave instead, next[j] = prev[j - 1] + leave[j], and enter is null. lo is
// the first start of a block and hi the last start of a block (or
// lastshort); prev and next are rows that start on a 64-byte boundary. The
// greatest new score of each block b goes into the blockLanes * scoreBytes
// bytes of blockmax from b times that (at most kBlockMaxBytes), in a form
// of the kernel's own, for its BlocksMaxFn and BlockCandidatesFn; a
// not-a-number score is never the greatest, and
// -infinity means none (byte lanes: 0, which no score lies below); a null
// blockmax keeps none, for a scan that needs only the best score. Returns
// the greatest new score of the span, in the same terms (taken in
// registers, where reading blockmax back would wait on its stores).
using AdvanceSpanFn = float (*)(const void* prev, void* next, int64_t lo, int64_t hi, const void* leave,
                                const void* enter, void* blockmax);
// The greatest score that blockmax holds for the blocks 0 to blocks - 1
// (-infinity for none).
using BlocksMaxFn = float (*)(const void* blockmax, int64_t blocks);
// Sets bit b % 64 of bits[b / 64] for each of the blocks whose greatest score
// (from the kernel's AdvanceSpanFn) is at least lower, clears the others.
using BlockCandidatesFn = void (*)(const void* blockmax, int64_t blocks, float lower, uint64_t* bits);

// The starts lo to lo + count - 1 (count at most kScanBlock, a block in one
// call) whose score equals maxscore (bit k of ties[w] for start lo +
// w * kMatchSpan + k) and those whose score is at least threshold (listed);
// the words of the starts given alone are written. A not-a-number score is
// in neither.
using BlockMatchFn = void (*)(const void* row, int64_t lo, int64_t count, float maxscore, float threshold,
                              uint64_t* ties, uint64_t* listed);
// scores[0 .. n - 1] into row[0 .. n - 1], in the kernel's lanes (whole
// numbers within their range, where the lanes are integers).
using PutScoresFn = void (*)(const float* scores, int64_t n, void* row);
// row[j] as a Single.
using ScoreAtFn = float (*)(const void* row, int64_t j);

// The full scores at start 0 of n (1 to 32) successive positions, in byte
// lanes: out[q] = the sum over t < W of lut[16 t + min(text[q + t], 5)],
// where lut holds, for each t, the cells of m1[t] against the bytes 0 to 5
// (ScanColumns::startLut). In byte lanes every cell is a whole number and
// every window score lies within 0 to 255, so the sum is exact, the Single
// sums of either order (from the first cell or from 0) for W of 1 or more.
// Reads text[0 .. W + 31].
using StartScoresFn = void (*)(const uint8_t* lut, const uint8_t* text, int n, int32_t W, float* out);

// Striped rows, for the random expectation in integer lanes: the starts 1 to
// lastshort of a row go in groups of kStripeVectors vectors of the kernel's
// lanes, start 1 + g * G + x * kStripeVectors + v (G the starts of a group)
// in lane x of vector v of group g. The start below a start is then the same
// lane of the vector before, and only vector 0 shifts its lanes: a group runs
// all the steps of a batch in registers, and no row is written between them.
inline constexpr int kStripeVectors = 8;
// The most steps of one AdvanceStripedFn call.
inline constexpr int kMostStripedSteps = 64;
// The place of start j (1 to lastshort) in a striped row of kernel lanes.
inline int64_t stripedIndex(int64_t j, int lanes) {
  const int64_t group = static_cast<int64_t>(kStripeVectors) * lanes, at = (j - 1) % group;
  return (j - 1) - at + (at % kStripeVectors) * lanes + at / kStripeVectors;
}

// Steps 0 to n - 1 (n at most kMostStripedSteps) of a striped row of
// `groups` groups, in place and in the kernel's lanes, each
//   row[j] = row[j - 1] before the step + pair[k][j]
// with pair[k] the pair column of step k striped as the row (StripedPairs).
// start0[k] holds the score of start 0 before step k (that of the row before
// the batch, then step k - 1's start 0). clip: kStripeVectors vectors for
// the last group, lanes of a start at most lastshort the lanes' greatest
// value, the others their least, so that the starts past lastshort are
// never the greatest. best[k]: the greatest score of step k, in
// AdvanceSpanFn's terms.
using AdvanceStripedFn = void (*)(void* row, int64_t groups, int n, const void* const* pair, const void* clip,
                                  const void* start0, float* best);

// A variant of the row kernels. The scalar one has no functions: the scans
// then run the reference kernels of scan_scalar.cpp, cell by cell.
struct ScanKernel {
  const char* name;
  const char* family;  // the instruction set: "scalar", "generic", "sse2", "avx2", "avx512"
  ScoreLanes scores;
  int lanes;
  int blockLanes;  // the scores a block takes in blockmax
  int scoreBytes;  // the bytes of a score in rows, columns and blockmax
  AdvanceSpanFn advanceSpan;
  BlocksMaxFn blocksMax;
  BlockCandidatesFn blockCandidates;
  BlockMatchFn blockMatch;
  PutScoresFn putScores;
  ScoreAtFn scoreAt;
  // Byte lanes only, elsewhere null: the start scores in the lanes, in place
  // of the Single sums' chains (startScoresFromFirst, startScoresFromZero).
  StartScoresFn startScores = nullptr;
  // Integer lanes, where the variant has them: the random expectation's
  // steps in striped rows.
  AdvanceStripedFn advanceStriped = nullptr;

  bool isScalar() const { return advanceSpan == nullptr; }
  // The bytes of blockmax from one block to the next.
  int64_t blockBytes() const { return static_cast<int64_t>(blockLanes) * scoreBytes; }
};

// Every variant this processor can run, the scalar one first and the widest
// Single one last; each instruction set's integer variants come before its
// Single one.
const std::vector<ScanKernel>& scanKernels();
// The variant of that name ("scalar", "generic", "sse2", "avx2", "avx512",
// the integer ones "generic-u8", "avx2-i16" and so on), or "auto" for the
// fastest Single one this processor has (chosen once); nullptr when the name
// is unknown or the processor lacks it.
const ScanKernel* findScanKernel(std::string_view name);
// Every name findScanKernel may know, whether or not this processor runs
// it: "auto" and the Single variants' names, then the integer variants'.
const std::vector<std::string_view>& scanKernelNames();
const std::vector<std::string_view>& integerScanKernelNames();

// The narrowest lanes that hold every window score of W cells of matrice
// exactly, and in which the Single recurrence gives the scores of any exact
// arithmetic (see score_lanes.cpp).
ScoreLanes exactScoreLanes(const float (&matrice)[5][5], int32_t W);
// The variant a run takes: findScanKernel's (an unknown name: "auto"), with
// "auto" narrowed to the lanes of exactScoreLanes where its instruction set
// has them, and an integer variant widened to the lanes of its instruction
// set that hold the scores, where its own do not. Never nullptr.
const ScanKernel& kernelForRun(std::string_view name, const float (&matrice)[5][5], int32_t W);

// matrice by columns: byLong[l][s] is the cell of shortest base s against
// longest base l. A column has 256 entries so that any byte indexes it, and
// bytes above 4 score 0 on either side, as N does.
struct CellTable {
  explicit CellTable(const float (&matrice)[5][5]);
  const float* column(uint8_t l) const { return byLong[l <= 4 ? l : 0]; }
  float cell(uint8_t s, uint8_t l) const { return column(l)[s]; }

  float byLong[5][256] = {};
};

// The matrix columns laid out by start on the shortest sequence, in the
// lanes of a kernel, so that the row kernels read without gathers. Single
// lanes: for each longest-side base l, leave(l)[j] = matrice[m1[j]][l] for j
// from 0 to nshort - 1, with zero cells around them; enter(l) is the same
// column shifted by W - 1, so that enter(l)[j] is the cell of m1[j + W - 1].
// Integer lanes add whole numbers exactly in any order, so the two columns of
// a step come as one, for each pair of leaving and entering bases: pair[j] =
// enter(e)[j] - leave(l)[j - 1] (modulo the lanes' width), one load and one
// operation less a vector. Each is a copy of its own, placed so that the
// vectors a kernel reads for a group of starts from a multiple of
// 64 / scoreBytes lie on whole 64-byte lines (and so those of narrower groups
// on whole words). Built once a run.
struct StepColumns {
  const void* leave;
  const void* enter;  // null where leave is the pair column of integer lanes
};
class ScanColumns {
 public:
  ScanColumns(const CellTable& cells, const uint8_t* m1, int64_t nshort, int32_t W, ScoreLanes lanes);
  // The columns of a step where the longest side's byte `leaving` leaves the
  // window and `entering` enters it, as the kernel of these lanes reads them
  // (see AdvanceSpanFn); bytes above 4 are no base, as N.
  StepColumns forStep(uint8_t leaving, uint8_t entering) const {
    const int l = leaving <= 4 ? leaving : 0, e = entering <= 4 ? entering : 0;
    if (paired_) return {pair_[l][e], nullptr};
    return {leave_[l], enter_[e]};
  }
  // Byte lanes: for each t < W, the 16 cells of m1[t] against the longest
  // side's bytes 0 to 15 (above 4 as N), as StartScoresFn reads them; null
  // in other lanes.
  const uint8_t* startLut() const { return startLut_.empty() ? nullptr : startLut_.data(); }

 private:
  LaneStorage storage_;
  bool paired_ = false;
  const void* leave_[5] = {};
  const void* enter_[5] = {};
  const void* pair_[5][5] = {};
  std::vector<uint8_t> startLut_;
};

// The 25 pair columns of ScanColumns in striped rows (see stripedIndex) for
// a kernel of integer lanes, the starts past lastshort 0, and the clip of
// the last group (see AdvanceStripedFn). Built once a run.
class StripedPairs {
 public:
  StripedPairs(const CellTable& cells, const uint8_t* m1, int64_t nshort, int32_t W, int64_t lastshort,
               const ScanKernel& kernel);
  int64_t groups() const { return groups_; }
  // The scores a striped row takes, past lastshort too.
  int64_t rowScores() const { return groups_ * kStripeVectors * lanes_; }
  const void* forStep(uint8_t leaving, uint8_t entering) const {
    return pair_[leaving <= 4 ? leaving : 0][entering <= 4 ? entering : 0];
  }
  const void* clip() const { return clip_.data(); }

 private:
  int64_t groups_;
  int lanes_;
  LaneStorage storage_, clip_;
  const void* pair_[5][5] = {};
};

}  // namespace trelvane
