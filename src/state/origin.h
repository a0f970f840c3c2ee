// origin.h -- where a side's sequence came from (file, record, range, strand options), and
// the record coordinates of the run's positions.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace trelvane {

// A stretch of the record's letters that gave no base (Ns that Remove Ns
// took out; in a record read by name, any letter the reader drops as well):
// `length` letters stood just before the base that became run position
// `runPos` (1-based, in the run's order, which is down the record when reversed).
struct RemovedRun {
  int64_t runPos = 0;
  int64_t length = 0;
};

// The origin of the bases of one side. A plain file read whole has no record
// range of its own: its record is the first word of its first title line (""
// without one), from is 1 and to is the count of bases read.
struct SequenceOrigin {
  std::string path;            // the file as the user named it; "" when nothing was read
  std::string record;          // the record's name: the first word of its title line
  int64_t recordLength = 0;    // bases in the whole record (0 when unknown)
  int64_t from = 1;            // first base of the region in the record, 1-based
  int64_t to = 0;              // last base of the region, inclusive
  bool wholeFile = true;       // every record of the file joined, as the plain reader does
  bool complement = false, reverse = false, removeN = false;
  std::vector<RemovedRun> removed;  // sorted by runPos; empty unless letters gave no base
  // Run positions 1 to gap hold no base of the record: with Reverse and
  // Remove Ns together the reader leaves the zeros of the Ns it counted
  // ahead of the reversed sequence.
  int64_t gap = 0;

  bool known() const { return !path.empty(); }
};

// The record's 1-based coordinate of run position runPos (1-based along the
// side's buffer), or none where that position holds no base of the record.
// Forward: from + runPos - 1 plus the Ns removed before it; reversed: counted
// down from `to`.
std::optional<int64_t> recordPosition(const SequenceOrigin& origin, int64_t runPos);

// The record name a title line gives: its first word after ">" or "%".
std::string recordNameOf(std::string_view titleLine);

// "NAME:FROM-TO" with the record's own numbers, "NAME" for a whole record,
// the file's name for a whole file without a title.
std::string originLabel(const SequenceOrigin& origin);

// The keys of the result head's lines that carry each side's origin.
inline constexpr std::string_view kLongOriginKey = "Long origin=";
inline constexpr std::string_view kShortOriginKey = "Short origin=";

// The origin as one line's value of a result file's head, and back; the
// reading gives false on a text that is no such value.
std::string originText(const SequenceOrigin& origin);
bool parseOriginText(std::string_view text, SequenceOrigin& origin);

}  // namespace trelvane
