// scan_dispatch.cpp -- the table of row kernel variants, the choice of the fastest one, the matrix columns.
#include <algorithm>

#include "engine/scan.h"
#include "engine/scan_kernels.h"

namespace trelvane {

namespace {

std::vector<ScanKernel> buildTable() {
  std::vector<ScanKernel> table;
  table.push_back({"scalar", 1, nullptr, nullptr, nullptr, nullptr, nullptr});
  table.push_back({"generic", 1, advanceBlocksGeneric, advanceMaxGeneric, blockCandidatesGeneric,
                   blockMatchGeneric, nullptr});
#if defined(__x86_64__)
  table.push_back({"sse2", 4, advanceBlocksSse2, advanceMaxSse2, blockCandidatesSse2, blockMatchSse2,
                   nullptr});
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx2"))
    table.push_back({"avx2", 8, advanceBlocksAvx2, advanceMaxAvx2, blockCandidatesAvx2, blockMatchAvx2,
                     advanceMaxPairAvx2});
#endif
  return table;
}

}  // namespace

const std::vector<ScanKernel>& scanKernels() {
  static const std::vector<ScanKernel> table = buildTable();
  return table;
}

const std::vector<std::string_view>& scanKernelNames() {
  static const std::vector<std::string_view> names = {"auto", "scalar", "generic", "sse2", "avx2"};
  return names;
}

const ScanKernel* findScanKernel(std::string_view name) {
  const std::vector<ScanKernel>& table = scanKernels();
  // The last entry is the widest the processor has.
  if (name == "auto") return &table.back();
  auto it = std::find_if(table.begin(), table.end(), [&](const ScanKernel& k) { return name == k.name; });
  return it == table.end() ? nullptr : &*it;
}

ScanColumns::ScanColumns(const CellTable& cells, const uint8_t* m1, int64_t nshort, int32_t W) {
  if (nshort < 0) nshort = 0;
  // Each copy: kPad zero cells, the column, kPad zero cells, on 64-byte
  // boundaries (the storage's and the stride's). A group of starts j0 (a
  // multiple of 8) reads leave from j0 - 1 and enter from j0, that is the
  // column from j0 + W - 1: the first copy sits one cell late, the second
  // W - 1 cells early, modulo 8.
  // The copies for the first of two steps sit one cell later still.
  const int64_t stride = (nshort + 2 * kPad + 15) / 16 * 16;
  storage_.assign(static_cast<std::size_t>(stride * 20), 0.0f);
  const int64_t enterShift = ((static_cast<int64_t>(W) - 1) % 8 + 8) % 8;
  for (int l = 0; l < 5; ++l) {
    const float* cellsOfL = cells.column(static_cast<uint8_t>(l));
    float* lv = storage_.data() + (4 * l) * stride + kPad + 1;
    float* en = storage_.data() + (4 * l + 1) * stride + kPad - enterShift;
    float* lvBack = storage_.data() + (4 * l + 2) * stride + kPad + 2;
    float* enBack = storage_.data() + (4 * l + 3) * stride + kPad - enterShift + 1;
    for (int64_t j = 0; j < nshort; ++j) lv[j] = en[j] = lvBack[j] = enBack[j] = cellsOfL[m1[j]];
    leave_[l] = lv;
    enter_[l] = en + (static_cast<int64_t>(W) - 1);
    leaveBack_[l] = lvBack;
    enterBack_[l] = enBack + (static_cast<int64_t>(W) - 1);
  }
}

}  // namespace trelvane
