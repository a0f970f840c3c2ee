// scan_dispatch.cpp -- the table of row kernel variants, the choice of the fastest one, the matrix columns.
#include <algorithm>

#include "engine/scan.h"
#include "engine/scan_kernels.h"

namespace trelvane {

namespace {

std::vector<ScanKernel> buildTable() {
  std::vector<ScanKernel> table;
  table.push_back({"scalar", 1, 1, nullptr, nullptr, nullptr, nullptr});
  table.push_back({"generic", 1, 1, advanceSpanGeneric, blocksMaxGeneric, blockCandidatesGeneric, blockMatchGeneric});
#if defined(__x86_64__)
  table.push_back({"sse2", 4, 4, advanceSpanSse2, blocksMaxSse2, blockCandidatesSse2, blockMatchSse2});
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx2"))
    table.push_back({"avx2", 8, 8, advanceSpanAvx2, blocksMaxAvx2, blockCandidatesAvx2, blockMatchAvx2});
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq"))
    table.push_back({"avx512", 16, 8, advanceSpanAvx512, blocksMaxAvx512, blockCandidatesAvx512, blockMatchAvx512});
#endif
  return table;
}

}  // namespace

const std::vector<ScanKernel>& scanKernels() {
  static const std::vector<ScanKernel> table = buildTable();
  return table;
}

const std::vector<std::string_view>& scanKernelNames() {
  static const std::vector<std::string_view> names = {"auto", "scalar", "generic", "sse2", "avx2", "avx512"};
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
