// sequence_reader.h -- sequence text files into base codes: formatseq, litlongue, litshort.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "state/form.h"
#include "state/state.h"

namespace trelvane {

class LineReader;

// The most bases one side may hold, so that every count stays a 32-bit
// integer, also a profile block of nbbases + 410 bytes.
inline constexpr int64_t kMaxBases = 2147483647 - 410;

// The line cleaned by cara: a title line (">" or "%" first) gives "", any
// other line the cara entry of each of its bytes, in order.
std::string formatseq(const ComparisonState& st, std::string_view line);

// Reads the file of f[0] into m0, nbbases and basesfreq[.][0] with the
// options Comp0, Reverse0 and CBRemoveN0; sets EFSD and Message. Returns why
// the file could not be read ("" when it was; the length check is no read
// failure: it clears f[0]), so that each front end words it its own way.
std::string litlongue(ComparisonState& st, Form& form);
// Reads the file of f[1] into m1, nbbases1 and basesfreq[.][1] with the
// options Comp1, Reverse1 and CBRemoveN1; may clip EFWS; sets Message.
// Returns as litlongue does.
std::string litshort(ComparisonState& st, Form& form);

// "Cannot read NAME: WHY", the text of every file that cannot be opened.
std::string cannotReadText(const std::string& path, const std::string& why);

namespace detail {

// Where the two passes of a reading get their lines: open() starts a pass
// on a reader, or returns false with the reason in why.
struct SequenceSource {
  std::string path;
  std::function<bool(LineReader& in, std::string& why)> open;
  // Why the pass just read broke off (a truncated compressed file); "" or
  // no function where it did not.
  std::function<std::string()> broken = nullptr;
};

// The reader of one side (0 longest, 1 shortest). A source that cannot be
// opened, or that holds more than maxTotal characters in its first pass, is
// refused with a message before anything else changes. A source that gives
// more characters in the second pass than in the first is cut at the size of
// the first, so the fill never leaves its block.
std::string readSequence(ComparisonState& st, Form& form, int side,
                         const SequenceSource& source, int64_t maxTotal = kMaxBases);

// The reader of one side for a record or region of a FASTA file (plain,
// gzip or BGZF; region as in Region0): the letters htslib gives pass the
// same table as a plain file's. An unknown record, a range past its end, an
// empty record or a file that is no DNA FASTA is refused with a message
// naming them, and nothing changes.
std::string readRegion(ComparisonState& st, Form& form, int side, const std::string& path,
                       const std::string& region);

}  // namespace detail
}  // namespace trelvane
