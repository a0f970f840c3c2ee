// responsefeed.h -- plays arbitrary bytes as a server's stream into BasicHTTP (fuzzing and its corpus replay).
#pragma once

#include <cstddef>
#include <cstdint>

namespace trelvane::http::testing {

struct FeedOutcome {
  int connections = 0;  // connections the client opened
  int deliveries = 0;   // PageReceived and FileReceived together
  std::size_t buffered = 0;  // Buffer's size at the end
};

// The first byte chooses the piece size (its value + 1) and, by its lowest
// bit, Get or Grab into no file; the rest is the peer's stream, handed over
// piece by piece and continued on every new connection the client opens,
// and the peer closes at the end. Redirects are followed four times, and
// credentials are given once.
FeedOutcome feedResponse(const uint8_t* data, std::size_t size);

}  // namespace trelvane::http::testing
