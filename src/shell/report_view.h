// report_view.h -- what the window keeps of a run's texts: their bound from memory, and the part of the report shown.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace trelvane::shell {

// The most bytes Results shows: a text field lays out its whole text at once,
// some tenths of a second for this much, seconds for ten times more.
inline constexpr std::size_t kResultsShown = std::size_t{4} << 20;

// The bound of a run's report and rows in the window: a sixteenth of the
// memory the process may use (the texts double as they grow, and other
// windows may run too).
uint64_t runTextLimit();

// The report as Results shows it: whole up to `most` bytes; beyond, the
// start of its listing (cut at a line end), a line that says how much of the
// listing is left out, and everything from listingEnd on (the result block
// and the closing lines).
std::string reportShown(std::string report, std::size_t listingEnd, std::size_t most);

}  // namespace trelvane::shell
