// fuzz_main.cpp -- libFuzzer entry for the sequence and result readers.
#include <cstdlib>

#include "readers_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (!trelvane::fuzz::readBoth(data, size).empty()) std::abort();
  return 0;
}
