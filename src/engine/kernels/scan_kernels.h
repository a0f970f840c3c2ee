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

// The starts j of a row are grouped in blocks of kScanBlock: block b holds the
// starts b * kScanBlock to (b + 1) * kScanBlock - 1, from 1 on (j = 0 stands
// apart, it is scored in full at every position).
inline constexpr int64_t kScanBlock = 128;
// The room a block takes in the blockmax of AdvanceSpanFn.
inline constexpr int64_t kBlockMaxLanes = 8;
// The starts a BlockMatchFn looks at in one call.
inline constexpr int64_t kMatchSpan = 64;

inline int64_t scanBlockCount(int64_t lastshort) { return lastshort > 0 ? lastshort / kScanBlock + 1 : 0; }
// The first and the last start of block b.
inline int64_t scanBlockLo(int64_t b) { return b > 0 ? b * kScanBlock : 1; }
inline int64_t scanBlockHi(int64_t b, int64_t lastshort) {
  return (b + 1) * kScanBlock - 1 < lastshort ? (b + 1) * kScanBlock - 1 : lastshort;
}

// One step along the diagonals of the starts lo to hi, out of place:
//   next[j] = (prev[j - 1] - leave[j - 1]) + enter[j]
// each step rounded to Single, in this order. leave is the matrix column of the
// longest side's base that leaves the window, laid out by start (leave[j] is
// the cell of m1[j]); enter the column of the entering base, shifted so that
// enter[j] is the cell of m1[j + W - 1]. lo is the first start of a block and
// hi the last start of a block (or lastshort); prev and next are rows that
// start on a 64-byte boundary. The greatest new score of each block b goes
// into blockmax[b * blockLanes ..] (the kernel's blockLanes, at most
// kBlockMaxLanes), in a form of the kernel's own, for its BlocksMaxFn and
// BlockCandidatesFn; a not-a-number score is never the greatest, and
// -infinity means none. Returns the greatest new score of the span, in the
// same terms (taken in registers, where reading blockmax back would wait on
// its stores).
using AdvanceSpanFn = float (*)(const float* prev, float* next, int64_t lo, int64_t hi, const float* leave,
                                const float* enter, float* blockmax);
// The greatest score that blockmax holds for the blocks 0 to blocks - 1
// (-infinity for none).
using BlocksMaxFn = float (*)(const float* blockmax, int64_t blocks);
// Sets bit b % 64 of bits[b / 64] for each of the blocks whose greatest score
// (from the kernel's AdvanceSpanFn) is at least lower, clears the others.
using BlockCandidatesFn = void (*)(const float* blockmax, int64_t blocks, float lower, uint64_t* bits);

// The starts lo to lo + count - 1 (count at most kMatchSpan) whose score equals
// maxscore (bit k of *ties for start lo + k) and those whose score is at least
// threshold (*listed). A not-a-number score is in neither.
using BlockMatchFn = void (*)(const float* row, int64_t lo, int64_t count, float maxscore,
                              float threshold, uint64_t* ties, uint64_t* listed);

// A variant of the row kernels. The scalar one has no functions: the scans
// then run the reference kernels of scan_scalar.cpp, cell by cell.
struct ScanKernel {
  const char* name;
  int lanes;
  int blockLanes;  // the floats a block takes in blockmax
  AdvanceSpanFn advanceSpan;
  BlocksMaxFn blocksMax;
  BlockCandidatesFn blockCandidates;
  BlockMatchFn blockMatch;

  bool isScalar() const { return advanceSpan == nullptr; }
};

// Every variant this processor can run, the scalar one first.
const std::vector<ScanKernel>& scanKernels();
// The variant of that name ("scalar", "generic", "sse2", "avx2", "avx512"),
// or "auto" for the fastest one this processor has (chosen once); nullptr
// when the name is unknown or the processor lacks it.
const ScanKernel* findScanKernel(std::string_view name);
// Every name findScanKernel may know, whether or not this processor runs it.
const std::vector<std::string_view>& scanKernelNames();

// matrice by columns: byLong[l][s] is the cell of shortest base s against
// longest base l. A column has 256 entries so that any byte indexes it, and
// bytes above 4 score 0 on either side, as N does.
struct CellTable {
  explicit CellTable(const float (&matrice)[5][5]);
  const float* column(uint8_t l) const { return byLong[l <= 4 ? l : 0]; }
  float cell(uint8_t s, uint8_t l) const { return column(l)[s]; }

  float byLong[5][256] = {};
};

// The matrix columns laid out by start on the shortest sequence: for each
// longest-side base l, leave(l)[j] = matrice[m1[j]][l] for j from 0 to
// nshort - 1, with zero cells around them, so that the row kernels read
// without gathers; enter(l) is the same column shifted by W - 1, so that
// enter(l)[j] is the cell of m1[j + W - 1]. Each is a copy of its own, placed
// so that the vectors a kernel reads for a group of starts from a multiple of
// 16 lie on whole 64-byte lines (and so those of 8 on whole 32-byte words).
// Built once a run.
class ScanColumns {
 public:
  static constexpr int64_t kPad = 32;
  ScanColumns(const CellTable& cells, const uint8_t* m1, int64_t nshort, int32_t W);
  // The columns of a longest-side byte; bytes above 4 are no base, as N.
  const float* leave(uint8_t l) const { return leave_[l <= 4 ? l : 0]; }
  const float* enter(uint8_t l) const { return enter_[l <= 4 ? l : 0]; }

 private:
  ScoreRow storage_;
  const float* leave_[5] = {};
  const float* enter_[5] = {};
};

}  // namespace trelvane
