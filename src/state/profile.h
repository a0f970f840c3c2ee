// profile.h -- the result file's codec: its signature line, the profile bytes of m2 (a score encoded and decoded), the fill of the block's start.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/memoryblock.h"

namespace trelvane {

// The first line of a result file; a reader looks at its first 19
// characters only, in any case ("Trelvane comparison of x" is one too).
inline constexpr std::string_view kResultSignature = "Trelvane comparison";
bool isResultHead(std::string_view firstLine);

// Profile byte values below the scores.
inline constexpr uint8_t kProfileUnwritten = 0;  // never written, or the end of the profile
inline constexpr uint8_t kProfileN = 1;          // the window holds a base of code 0
inline constexpr uint8_t kProfileNoScore = 2;    // filled start, or a tail position

// 255 - s * (250 / W), each step in Double, truncated, low 8 bits kept.
// A higher score is a smaller byte: 0 gives 255, W gives 5.
uint8_t profileByte(float s, int32_t W);

// (255 - b) * W as an integer product, divided by 250.0: the score a byte
// stands for, a multiple of W / 250. Only bytes above 2 hold a score.
double profileScore(uint8_t b, int32_t W);

// Writes 200 bytes of code, each followed by a zero byte, at the offsets 0,
// 200, 400, ... as long as the offset is not above Floor(nbbases / 200 + 300).
// Each write's zero byte is overwritten by the next write. A run fills with
// code 2, a stored result with code 1.
void fillProfileStart(MemoryBlock& m2, int32_t nbbases, uint8_t code);

}  // namespace trelvane
