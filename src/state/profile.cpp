// profile.cpp -- the result file's signature, the profile bytes' encoding and decoding, and the filling of m2's start.
#include "state/profile.h"

#include <cmath>
#include <string>

#include "platform/numtext.h"

namespace trelvane {

uint8_t profileByte(float s, int32_t W) {
  double step = 250.0 / static_cast<double>(W);
  double product = static_cast<double>(s) * step;
  double value = 255.0 - product;
  return static_cast<uint8_t>(toInt(value) & 0xFF);
}

bool isResultHead(std::string_view firstLine) { return startsWithNoCase(firstLine, kResultSignature); }

double profileScore(uint8_t b, int32_t W) {
  // An Integer product: it wraps as a 32-bit value would.
  int64_t product = static_cast<int64_t>(255 - b) * W;
  return static_cast<double>(static_cast<int32_t>(static_cast<uint32_t>(product))) / 250.0;
}

void fillProfileStart(MemoryBlock& m2, int32_t nbbases, uint8_t code) {
  std::string text(200, static_cast<char>(code));
  text.push_back('\0');
  double last = std::floor(static_cast<double>(nbbases) / 200.0 + 300.0);
  for (int64_t off = 0; static_cast<double>(off) <= last; off += 200) m2.setBytes(off, text);
}

}  // namespace trelvane
