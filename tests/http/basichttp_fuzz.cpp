// basichttp_fuzz.cpp -- libFuzzer target: a server's stream, any bytes, into BasicHTTP.
#include <cstddef>
#include <cstdint>

#include "responsefeed.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  trelvane::http::testing::feedResponse(data, size);
  return 0;
}
