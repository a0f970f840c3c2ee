// scan_columns.cpp -- the matrix as the kernels read it: by columns, and by start on the shortest sequence.
#include "engine/kernels/scan_kernels.h"

namespace trelvane {

CellTable::CellTable(const float (&matrice)[5][5]) {
  for (int l = 0; l < 5; ++l)
    for (int s = 0; s < 5; ++s) byLong[l][s] = matrice[s][l];
}

ScanColumns::ScanColumns(const CellTable& cells, const uint8_t* m1, int64_t nshort, int32_t W) {
  if (nshort < 0) nshort = 0;
  // Each copy: kPad zero cells, the column, kPad zero cells, on 64-byte
  // boundaries (the storage's and the stride's). A group of starts j0 (a
  // multiple of 16) reads leave from j0 - 1 and enter from j0, that is the
  // column from j0 + W - 1: the first copy sits one cell late, the second
  // W - 1 cells early, modulo 16 (and so modulo 8 for the narrower kernels).
  const int64_t stride = (nshort + 2 * kPad + 15) / 16 * 16;
  storage_.assign(static_cast<std::size_t>(stride * 10), 0.0f);
  const int64_t enterShift = ((static_cast<int64_t>(W) - 1) % 16 + 16) % 16;
  for (int l = 0; l < 5; ++l) {
    const float* cellsOfL = cells.column(static_cast<uint8_t>(l));
    float* lv = storage_.data() + (2 * l) * stride + kPad + 1;
    float* en = storage_.data() + (2 * l + 1) * stride + kPad - enterShift;
    for (int64_t j = 0; j < nshort; ++j) lv[j] = en[j] = cellsOfL[m1[j]];
    leave_[l] = lv;
    enter_[l] = en + (static_cast<int64_t>(W) - 1);
  }
}

}  // namespace trelvane
