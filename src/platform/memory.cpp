// memory.cpp -- the memory this process may use, from the machine, its limits and its control group.
#include "platform/memory.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>

namespace trelvane {

namespace {

void lowerTo(uint64_t& least, uint64_t candidate) {
  if (candidate > 0 && (least == 0 || candidate < least)) least = candidate;
}

uint64_t rlimitOf(int resource) {
  rlimit r{};
  if (getrlimit(resource, &r) != 0 || r.rlim_cur == RLIM_INFINITY) return 0;
  return static_cast<uint64_t>(r.rlim_cur);
}

// cgroup v2: the memory.max of the process's own group ("max" for none).
uint64_t cgroupLimit() {
  std::ifstream self("/proc/self/cgroup");
  std::string line, group;
  while (std::getline(self, line))
    if (line.rfind("0::", 0) == 0) group = line.substr(3);
  if (group.empty()) return 0;
  std::ifstream max("/sys/fs/cgroup" + group + "/memory.max");
  std::string text;
  if (!(max >> text) || text == "max") return 0;
  try {
    return std::stoull(text);
  } catch (...) {
    return 0;
  }
}

}  // namespace

uint64_t usableMemory() {
  uint64_t least = 0;
  const long pages = sysconf(_SC_PHYS_PAGES), pageSize = sysconf(_SC_PAGE_SIZE);
  if (pages > 0 && pageSize > 0) lowerTo(least, static_cast<uint64_t>(pages) * static_cast<uint64_t>(pageSize));
  lowerTo(least, rlimitOf(RLIMIT_AS));
  lowerTo(least, rlimitOf(RLIMIT_DATA));
  lowerTo(least, cgroupLimit());
  return least;
}

std::string bytesText(uint64_t bytes) {
  char text[32];
  if (bytes < 1024) {
    std::snprintf(text, sizeof text, "%llu bytes", static_cast<unsigned long long>(bytes));
    return text;
  }
  const char* units[] = {"kB", "MB", "GB", "TB"};
  double v = static_cast<double>(bytes) / 1024.0;
  int u = 0;
  while (v >= 1024.0 && u < 3) {
    v /= 1024.0;
    ++u;
  }
  std::snprintf(text, sizeof text, v < 10 ? "%.1f %s" : "%.0f %s", v, units[u]);
  return text;
}

}  // namespace trelvane
