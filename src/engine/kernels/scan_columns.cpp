// scan_columns.cpp -- the matrix as the kernels read it: by columns, and by start on the shortest sequence.
#include <algorithm>
#include <cstring>
#include <limits>

#include "engine/kernels/scan_kernels.h"

namespace trelvane {

CellTable::CellTable(const float (&matrice)[5][5]) {
  for (int l = 0; l < 5; ++l)
    for (int s = 0; s < 5; ++s) byLong[l][s] = matrice[s][l];
}

namespace {

// The columns in lanes of type T: each copy is pad zero cells, the column,
// pad zero cells, on 64-byte boundaries (the storage's and the stride's). A
// group of starts j0 (a multiple of the cells of a line) reads leave from
// j0 - 1 and enter from j0, that is the column from j0 + W - 1: the first copy
// sits one cell late, the second W - 1 cells early, modulo a line's cells.
template <class T>
void layOut(LaneStorage& storage, const void** leave, const void** enter, const CellTable& cells,
            const uint8_t* m1, int64_t nshort, int32_t W) {
  constexpr int64_t kLine = 64 / static_cast<int64_t>(sizeof(T));
  constexpr int64_t kPad = 2 * kLine;
  const int64_t stride = (nshort + 2 * kPad + kLine - 1) / kLine * kLine;
  storage.assign(static_cast<std::size_t>(stride * 10) * sizeof(T), std::byte{0});
  T* base = reinterpret_cast<T*>(storage.data());
  const int64_t enterShift = ((static_cast<int64_t>(W) - 1) % kLine + kLine) % kLine;
  for (int l = 0; l < 5; ++l) {
    const float* cellsOfL = cells.column(static_cast<uint8_t>(l));
    T* lv = base + (2 * l) * stride + kPad + 1;
    T* en = base + (2 * l + 1) * stride + kPad - enterShift;
    // whole numbers within T's range, where T is an integer (exactScoreLanes)
    for (int64_t j = 0; j < nshort; ++j) lv[j] = en[j] = static_cast<T>(cellsOfL[m1[j]]);
    leave[l] = lv;
    enter[l] = en + (static_cast<int64_t>(W) - 1);
  }
}

// The cell of m1[j + W - 1] against e less that of m1[j - 1] against l, a
// cell outside m1 0: the pair column of a step at start j.
int64_t pairCell(const CellTable& cells, const uint8_t* m1, int64_t nshort, int32_t W, int l, int e, int64_t j) {
  auto cellAt = [&](int64_t at, int b) -> int64_t {
    return at >= 0 && at < nshort ? static_cast<int64_t>(cells.column(static_cast<uint8_t>(b))[m1[at]]) : 0;
  };
  return cellAt(j + W - 1, e) - cellAt(j - 1, l);
}

// The 25 pair columns of integer lanes, pad cells either side and on
// 64-byte boundaries: pair(l, e)[j] = cell of m1[j + W - 1] against e less
// the cell of m1[j - 1] against l, a cell outside m1 being 0. A group of
// starts j0 reads the column from j0, on a whole line.
template <class T>
void layOutPairs(LaneStorage& storage, const void* (&pair)[5][5], const CellTable& cells, const uint8_t* m1,
                 int64_t nshort, int32_t W) {
  constexpr int64_t kLine = 64 / static_cast<int64_t>(sizeof(T));
  constexpr int64_t kPad = 2 * kLine;
  const int64_t stride = (nshort + 2 * kPad + kLine - 1) / kLine * kLine;
  storage.assign(static_cast<std::size_t>(stride * 25) * sizeof(T), std::byte{0});
  T* base = reinterpret_cast<T*>(storage.data());
  for (int l = 0; l < 5; ++l)
    for (int e = 0; e < 5; ++e) {
      T* col = base + (5 * l + e) * stride + kPad;
      // the sum of whole numbers within the lanes' range, reached by wrapping
      for (int64_t j = -kPad; j < stride - kPad; ++j) col[j] = static_cast<T>(pairCell(cells, m1, nshort, W, l, e, j));
      pair[l][e] = col;
    }
}

// StripedPairs in lanes of T.
template <class T>
void layOutStriped(LaneStorage& storage, LaneStorage& clip, const void* (&pair)[5][5], const CellTable& cells,
                   const uint8_t* m1, int64_t nshort, int32_t W, int64_t lastshort, int lanes, int64_t rowScores) {
  storage.assign(static_cast<std::size_t>(rowScores * 25) * sizeof(T), std::byte{0});
  T* base = reinterpret_cast<T*>(storage.data());
  for (int l = 0; l < 5; ++l)
    for (int e = 0; e < 5; ++e) {
      T* col = base + (5 * l + e) * rowScores;
      for (int64_t j = 1; j <= lastshort; ++j)
        col[stripedIndex(j, lanes)] = static_cast<T>(pairCell(cells, m1, nshort, W, l, e, j));
      pair[l][e] = col;
    }
  const int64_t group = int64_t{kStripeVectors} * lanes, lastGroup = rowScores - group;
  clip.assign(static_cast<std::size_t>(group) * sizeof(T), std::byte{0});
  T* c = reinterpret_cast<T*>(clip.data());
  std::fill(c, c + group, std::numeric_limits<T>::lowest());
  for (int64_t j = lastGroup + 1; j <= lastshort; ++j)
    c[stripedIndex(j, lanes) - lastGroup] = std::numeric_limits<T>::max();
}

}  // namespace

StripedPairs::StripedPairs(const CellTable& cells, const uint8_t* m1, int64_t nshort, int32_t W, int64_t lastshort,
                           const ScanKernel& kernel)
    : groups_(lastshort > 0 ? (lastshort - 1) / (int64_t{kStripeVectors} * kernel.lanes) + 1 : 0),
      lanes_(kernel.lanes) {
  if (groups_ == 0) return;
  nshort = std::max<int64_t>(nshort, 0);
  if (kernel.scores == ScoreLanes::kUint8)
    layOutStriped<uint8_t>(storage_, clip_, pair_, cells, m1, nshort, W, lastshort, lanes_, rowScores());
  else
    layOutStriped<int16_t>(storage_, clip_, pair_, cells, m1, nshort, W, lastshort, lanes_, rowScores());
}

ScanColumns::ScanColumns(const CellTable& cells, const uint8_t* m1, int64_t nshort, int32_t W, ScoreLanes lanes) {
  nshort = std::max<int64_t>(nshort, 0);
  paired_ = lanes != ScoreLanes::kFloat;
  switch (lanes) {
    case ScoreLanes::kUint8:
      layOutPairs<uint8_t>(storage_, pair_, cells, m1, nshort, W);
      // whole numbers of 0 to 255 (exactScoreLanes)
      startLut_.assign(static_cast<std::size_t>(std::max(W, 0)) * 16, 0);
      for (int32_t t = 0; t < W && t < nshort; ++t)
        for (int x = 0; x < 16; ++x)
          startLut_[static_cast<std::size_t>(t) * 16 + static_cast<std::size_t>(x)] =
              static_cast<uint8_t>(cells.cell(m1[t], static_cast<uint8_t>(x)));
      break;
    case ScoreLanes::kInt16: layOutPairs<int16_t>(storage_, pair_, cells, m1, nshort, W); break;
    case ScoreLanes::kFloat: layOut<float>(storage_, leave_, enter_, cells, m1, nshort, W); break;
  }
}

}  // namespace trelvane
