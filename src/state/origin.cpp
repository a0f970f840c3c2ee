// origin.cpp -- record coordinates of run positions.
#include "state/origin.h"

#include <charconv>
#include <filesystem>

namespace trelvane {

std::optional<int64_t> recordPosition(const SequenceOrigin& o, int64_t runPos) {
  if (runPos < 1) return std::nullopt;
  int64_t skipped = 0;
  for (const RemovedRun& r : o.removed) {
    if (r.runPos > runPos) break;
    skipped += r.length;
  }
  if (runPos <= o.gap) return std::nullopt;
  const int64_t offset = runPos - 1 - o.gap + skipped;  // letters of the record before this one
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

namespace {

bool number(std::string_view text, int64_t& v) {
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
  return ec == std::errc() && end == text.data() + text.size();
}

// The next TAB-separated field of text.
std::string_view field(std::string_view& text) {
  const std::size_t tab = text.find('\t');
  const std::string_view f = text.substr(0, tab);
  text = tab == std::string_view::npos ? std::string_view() : text.substr(tab + 1);
  return f;
}

}  // namespace

// RECORD:FROM-TO, record length, strand options, gap, removed stretches
// (RUNPOS+LENGTH,...), then the file's path, which may hold anything.
std::string originText(const SequenceOrigin& o) {
  std::string strand;
  for (const auto& [on, name] : {std::pair{o.complement, "complement"}, std::pair{o.reverse, "reverse"},
                                 std::pair{o.removeN, "remove-n"}})
    if (on) strand += (strand.empty() ? "" : ",") + std::string(name);
  std::string removed;
  for (const RemovedRun& r : o.removed)
    removed += (removed.empty() ? "" : ",") + std::to_string(r.runPos) + "+" + std::to_string(r.length);
  return o.record + ":" + std::to_string(o.from) + "-" + std::to_string(o.to) + "\t" +
         std::to_string(o.recordLength) + "\t" + (strand.empty() ? "forward" : strand) + "\t" +
         std::to_string(o.gap) + "\t" + (removed.empty() ? "-" : removed) + "\t" + o.path;
}

bool parseOriginText(std::string_view text, SequenceOrigin& out) {
  SequenceOrigin o;
  o.wholeFile = false;
  const std::string_view range = field(text);
  const std::size_t colon = range.rfind(':');
  if (colon == std::string_view::npos) return false;
  const std::string_view span = range.substr(colon + 1);
  const std::size_t dash = span.find('-');
  if (dash == std::string_view::npos || !number(span.substr(0, dash), o.from) ||
      !number(span.substr(dash + 1), o.to))
    return false;
  o.record = std::string(range.substr(0, colon));
  if (!number(field(text), o.recordLength)) return false;
  const std::string_view strand = field(text);
  o.complement = strand.find("complement") != std::string_view::npos;
  o.reverse = strand.find("reverse") != std::string_view::npos;
  o.removeN = strand.find("remove-n") != std::string_view::npos;
  if (!number(field(text), o.gap)) return false;
  std::string_view removed = field(text);
  while (removed != "-" && !removed.empty()) {
    const std::size_t comma = removed.find(',');
    const std::string_view run = removed.substr(0, comma);
    removed = comma == std::string_view::npos ? std::string_view() : removed.substr(comma + 1);
    const std::size_t plus = run.find('+');
    RemovedRun r;
    if (plus == std::string_view::npos || !number(run.substr(0, plus), r.runPos) ||
        !number(run.substr(plus + 1), r.length))
      return false;
    o.removed.push_back(r);
  }
  o.path = std::string(text);
  if (o.path.empty()) return false;
  out = std::move(o);
  return true;
}

}  // namespace trelvane
