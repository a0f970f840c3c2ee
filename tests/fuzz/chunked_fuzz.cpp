// chunked_fuzz.cpp -- libFuzzer target: ParseChunked on any body, and on well-formed chunks.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "check.h"
#include "http/basichttp.h"
#include "http/fake_socket.h"

using trelvane::http::testing::FakeSocket;
using trelvane::http::BasicHTTP;

namespace {

// The payload cut into chunks whose sizes come from its own bytes, each with
// a size line in upper or lower case, some with an extension, and the last
// chunk of size 0 with or without trailers.
std::string chunked(const std::string& payload, uint8_t style) {
  std::string body;
  std::size_t at = 0;
  while (at < payload.size()) {
    std::size_t n = std::min<std::size_t>(payload.size() - at,
                                          1 + static_cast<unsigned char>(payload[at]) % 37);
    char line[32];
    std::snprintf(line, sizeof line, (style & 1) ? "%zx" : "%zX", n);
    body += line;
    if (style & 2) body += " ; name=value";
    body += "\r\n";
    body += payload.substr(at, n);
    body += "\r\n";
    at += n;
  }
  body += "0\r\n";
  if (style & 4) body += "Trailer: x\r\n";
  body += "\r\n";
  return body;
}

}  // namespace

// The first byte chooses: an even byte feeds the rest as a body as it came;
// an odd one encodes the rest as chunks first, which must decode to it.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  BasicHTTP http{std::make_unique<FakeSocket>(true)};
  const std::string rest(reinterpret_cast<const char*>(data + 1), size - 1);
  if ((data[0] & 1) == 0) {
    const std::string page = http.ParseChunked(rest);
    FUZZ_CHECK(page.size() <= rest.size(), "a page is never longer than its body");
  } else {
    FUZZ_CHECK(http.ParseChunked(chunked(rest, data[0] >> 1)) == rest, "chunks decode to their payload");
  }
  return 0;
}
