// scan_dispatch.cpp -- the table of row kernel variants, and the choice of the fastest one.
#include <algorithm>

#include "engine/kernels/row_kernels.h"
#include "engine/kernels/scan_kernels.h"

namespace trelvane {

namespace {

std::vector<ScanKernel> buildTable() {
  std::vector<ScanKernel> table;
  table.push_back({"scalar", 1, 1, nullptr, nullptr, nullptr, nullptr});
  table.push_back(kernels::kGenericKernel);
#if defined(__x86_64__)
  table.push_back(kernels::kSse2Kernel);
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx2")) table.push_back(kernels::kAvx2Kernel);
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq")) table.push_back(kernels::kAvx512Kernel);
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
  // The last entry is the widest the processor has, chosen once.
  if (name == "auto") return &table.back();
  auto it = std::find_if(table.begin(), table.end(), [&](const ScanKernel& k) { return name == k.name; });
  return it == table.end() ? nullptr : &*it;
}

}  // namespace trelvane
