// memory.h -- how much memory this process may use: the machine's, or less where a limit says so.
#pragma once

#include <cstdint>
#include <string>

namespace trelvane {

// The least of the machine's physical memory, the process's address-space
// and data limits (ulimit -v, -d) and its control group's memory.max; 0
// where none of them can be read.
uint64_t usableMemory();

// A byte count as a person reads it: "950 bytes", "12 MB", "1.5 GB".
std::string bytesText(uint64_t bytes);

}  // namespace trelvane
