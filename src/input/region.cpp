// region.cpp -- region texts in samtools' convention, and a file named with its region.
#include "input/region.h"

#include <sys/stat.h>

#include <vector>

namespace trelvane {
namespace {

// A position: digits, with commas anywhere between them.
std::optional<int64_t> position(std::string_view text) {
  int64_t v = 0;
  bool digit = false;
  for (char c : text) {
    if (c == ',') continue;
    if (c < '0' || c > '9') return std::nullopt;
    if (v > (INT64_MAX - 9) / 10) return std::nullopt;
    v = v * 10 + (c - '0');
    digit = true;
  }
  if (!digit) return std::nullopt;
  return v;
}

bool isFile(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0 && !S_ISDIR(st.st_mode);
}

}  // namespace

std::optional<Region> parseRegion(std::string_view text,
                                  const std::function<bool(const std::string&)>& isRecord,
                                  std::string& why) {
  const std::string all(text);
  if (all.empty()) {
    why = "the region is empty";
    return std::nullopt;
  }
  if (isRecord && isRecord(all)) return Region{all, 1, std::nullopt};
  const std::size_t colon = all.rfind(':');
  if (colon == std::string::npos) return Region{all, 1, std::nullopt};
  Region r{all.substr(0, colon), 1, std::nullopt};
  const std::string_view range = std::string_view(all).substr(colon + 1);
  const std::size_t dash = range.find('-');
  const std::optional<int64_t> from = position(range.substr(0, dash));
  std::optional<int64_t> to;
  if (dash != std::string_view::npos && dash + 1 < range.size()) to = position(range.substr(dash + 1));
  if (r.record.empty() || !from || (dash != std::string_view::npos && dash + 1 < range.size() && !to)) {
    why = "'" + all + "' is no region: expected NAME, NAME:FROM or NAME:FROM-TO";
    return std::nullopt;
  }
  if (*from < 1) {
    why = "'" + all + "': positions count from 1";
    return std::nullopt;
  }
  if (to && *to < *from) {
    why = "'" + all + "': the range ends before it starts";
    return std::nullopt;
  }
  r.from = *from;
  r.to = to;
  return r;
}

bool splitFileRegion(const std::string& text, std::string& file, std::string& region,
                     std::string& why) {
  file = text;
  region.clear();
  std::vector<std::size_t> splits;
  for (std::size_t at = text.find(':'); at != std::string::npos; at = text.find(':', at + 1))
    if (at > 0 && at + 1 < text.size() && isFile(text.substr(0, at))) splits.push_back(at);
  if (splits.empty()) return true;
  if (isFile(text) || splits.size() > 1) {
    why = "'" + text + "' is ambiguous: it names a file '" + text.substr(0, splits[0]) +
          "' with a region and another file; give the region with --long-region or --short-region";
    return false;
  }
  file = text.substr(0, splits[0]);
  region = text.substr(splits[0] + 1);
  return true;
}

}  // namespace trelvane
