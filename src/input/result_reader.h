// result_reader.h -- litprevious: a stored result file back into the numbers and m2.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "state/form.h"
#include "state/state.h"

namespace trelvane {

// Reads the result file at path: the statistics of its keys (before the "#"
// line, in any order and case, later values winning), then nbbases profile
// bytes into a new m2 of nbbases + 410 bytes, and calls graph. A nil path
// does nothing. A file that cannot be opened, or whose "Bases=" is negative
// or above kMaxBases, is refused with a message in Message; nothing else
// changes and graph is not called. Returns why the file was refused, "" when
// it was read.
std::string litprevious(ComparisonState& st, Form& form, const std::optional<std::string>& path,
                        const std::function<void()>& graph);

class LineReader;

namespace detail {

// litprevious on a stream already open at its first byte; path names the
// file in messages. A "Bases=" above maxBases is refused like a negative one.
std::string readResult(ComparisonState& st, Form& form, LineReader& in, const std::string& path,
                       const std::function<void()>& graph, int64_t maxBases);

}  // namespace detail

}  // namespace trelvane
