// scan_dispatch.cpp -- the table of row kernel variants, and the choice of the fastest one.
#include <algorithm>

#include "engine/kernels/row_kernels.h"
#include "engine/kernels/scan_kernels.h"

namespace trelvane {

namespace {

std::vector<ScanKernel> buildTable() {
  std::vector<ScanKernel> table;
  table.push_back(
      {"scalar", "scalar", ScoreLanes::kFloat, 1, 1, 4, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr});
  table.push_back(kernels::kGenericU8Kernel);
  table.push_back(kernels::kGenericI16Kernel);
  table.push_back(kernels::kGenericKernel);
#if defined(__x86_64__)
  table.push_back(kernels::kSse2Kernel);
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx2")) {
    table.push_back(kernels::kAvx2U8Kernel);
    table.push_back(kernels::kAvx2I16Kernel);
    table.push_back(kernels::kAvx2Kernel);
  }
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq")) {
    if (__builtin_cpu_supports("avx512bw")) {
      table.push_back(kernels::kAvx512U8Kernel);
      table.push_back(kernels::kAvx512I16Kernel);
    }
    table.push_back(kernels::kAvx512Kernel);
  }
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

const std::vector<std::string_view>& integerScanKernelNames() {
  static const std::vector<std::string_view> names = {"generic-u8", "generic-i16", "avx2-u8",
                                                      "avx2-i16",   "avx512-u8",   "avx512-i16"};
  return names;
}

const ScanKernel* findScanKernel(std::string_view name) {
  const std::vector<ScanKernel>& table = scanKernels();
  // The last entry is the widest Single one the processor has, chosen once.
  if (name == "auto") return &table.back();
  auto it = std::find_if(table.begin(), table.end(), [&](const ScanKernel& k) { return name == k.name; });
  return it == table.end() ? nullptr : &*it;
}

}  // namespace trelvane
