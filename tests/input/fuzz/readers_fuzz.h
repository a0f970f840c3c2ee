// readers_fuzz.h -- one input of bytes through the sequence reader and the result reader.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace trelvane::fuzz {

// Reads the bytes as a sequence file (options from the first byte) and as a
// result file, and checks what the state must hold afterwards. Returns the
// first broken rule, or "" when all hold.
std::string readBoth(const uint8_t* data, std::size_t size);

}  // namespace trelvane::fuzz
