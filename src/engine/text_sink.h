// text_sink.h -- where a run's long texts go as they are made, instead of staying in memory.
#pragma once

#include <string>
#include <string_view>

namespace trelvane {

// The next bytes of a text, in their order: the CLI's output files take the
// rows and the report this way, so that a long scan holds neither. A sink
// keeps the first failure to write and drops what comes after it.
class TextSink {
 public:
  virtual ~TextSink() = default;
  virtual void write(std::string_view bytes) = 0;
  // Why a write failed; empty while none did.
  virtual const std::string& failure() const = 0;
};

// The bytes a text gathers in memory before they go to its sink.
inline constexpr std::size_t kSpillBytes = std::size_t{1} << 20;

}  // namespace trelvane
