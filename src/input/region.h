// region.h -- a region in genome coordinates (NAME, NAME:FROM, NAME:FROM-TO), and FILE:REGION.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace trelvane {

// A stretch of one record, 1-based and inclusive as samtools counts; to is
// none for "up to the record's end".
struct Region {
  std::string record;
  int64_t from = 1;
  std::optional<int64_t> to;
  bool whole() const { return from == 1 && !to; }
};

// Reads "NAME", "NAME:FROM" or "NAME:FROM-TO" (commas allowed in numbers).
// A text that names a record whole (isRecord) is that record, also where it
// holds a ":"; otherwise it splits at its last ":". None with a sentence in
// why on a text that is no region.
std::optional<Region> parseRegion(std::string_view text,
                                  const std::function<bool(const std::string&)>& isRecord,
                                  std::string& why);

// "FILE:REGION" where FILE exists and the whole text names no file; the
// text as a file name otherwise. False with why where two readings exist.
bool splitFileRegion(const std::string& text, std::string& file, std::string& region,
                     std::string& why);

}  // namespace trelvane
