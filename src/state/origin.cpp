// origin.cpp -- record coordinates of run positions.
#include "state/origin.h"

#include <filesystem>

namespace trelvane {

std::optional<int64_t> recordPosition(const SequenceOrigin& o, int64_t runPos) {
  if (runPos < 1) return std::nullopt;
  int64_t skipped = 0;
  for (const RemovedRun& r : o.removed) {
    if (r.runPos > runPos) break;
    skipped += r.length;
  }
  const int64_t offset = runPos - 1 + skipped;  // bases of the record before this one
  if (!o.reverse) {
    const int64_t pos = o.from + offset;
    if (o.to > 0 && pos > o.to) return std::nullopt;
    return pos;
  }
  const int64_t pos = o.to - offset;
  if (pos < o.from) return std::nullopt;
  return pos;
}

std::string recordNameOf(std::string_view title) {
  if (!title.empty() && (title[0] == '>' || title[0] == '%')) title.remove_prefix(1);
  const auto begin = title.find_first_not_of(" \t");
  if (begin == std::string_view::npos) return "";
  const auto end = title.find_first_of(" \t\r", begin);
  return std::string(title.substr(begin, end == std::string_view::npos ? end : end - begin));
}

std::string originLabel(const SequenceOrigin& o) {
  std::string name = o.record;
  if (name.empty()) name = std::filesystem::path(o.path).filename().string();
  if (o.wholeFile || (o.from == 1 && o.to == o.recordLength)) return name;
  return name + ":" + std::to_string(o.from) + "-" + std::to_string(o.to);
}

}  // namespace trelvane
