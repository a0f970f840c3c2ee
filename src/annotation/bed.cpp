// bed.cpp -- gene models from BED: one a line, blocks as exons, thickStart-thickEnd as the CDS.
#include <algorithm>
#include <sstream>

#include "annotation/annotation.h"

namespace trelvane::annotation::detail {
namespace {

std::vector<int64_t> numberList(const std::string& s, bool* ok) {
  std::vector<int64_t> out;
  std::stringstream in(s);
  for (std::string item; std::getline(in, item, ',');) {
    if (item.empty()) continue;
    int64_t v = 0;
    *ok = *ok && wholeNumber(item, v);
    out.push_back(v);
  }
  return out;
}

std::vector<std::string> columns(const std::string& line) {
  // BED is tab separated; files written by hand often use blanks.
  std::vector<std::string> f = splitTabs(line);
  if (f.size() >= 3) return f;
  f.clear();
  std::istringstream in(line);
  for (std::string w; in >> w;) f.push_back(w);
  return f;
}

}  // namespace

bool readBed(const std::string& text, const std::string& seqid, std::vector<GeneModel>& models,
             std::vector<std::string>& seqids, std::string* why) {
  std::istringstream in(text);
  int number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    if (line.empty() || line == "\r" || line[0] == '#' || line.rfind("track", 0) == 0 || line.rfind("browser", 0) == 0)
      continue;
    const std::vector<std::string> f = columns(line);
    auto fail = [&](const std::string& what) {
      *why = std::to_string(number) + ": " + what;
      return false;
    };
    int64_t start = 0, end = 0;
    if (f.size() < 3 || !wholeNumber(f[1], start) || !wholeNumber(f[2], end) || end < start)
      return fail("a BED line begins with chrom, start and end (0-based, start <= end)");
    if (std::find(seqids.begin(), seqids.end(), f[0]) == seqids.end()) seqids.push_back(f[0]);
    if (f[0] != seqid) continue;
    GeneModel m;
    m.name = f.size() > 3 ? f[3] : "";
    m.strand = f.size() > 5 && (f[5] == "+" || f[5] == "-") ? f[5][0] : '.';
    m.extent = {start, end};
    int64_t thickStart = start, thickEnd = start;
    if (f.size() > 7 && (!wholeNumber(f[6], thickStart) || !wholeNumber(f[7], thickEnd)))
      return fail("thickStart and thickEnd are 0-based positions");
    if (f.size() >= 12) {
      bool ok = true;
      const std::vector<int64_t> sizes = numberList(f[10], &ok), starts = numberList(f[11], &ok);
      int64_t count = 0;
      if (!ok || !wholeNumber(f[9], count) || static_cast<int64_t>(sizes.size()) != count ||
          static_cast<int64_t>(starts.size()) != count)
        return fail("blockCount, blockSizes and blockStarts do not agree");
      for (int64_t k = 0; k < count; ++k) {
        const Span e{start + starts[k], start + starts[k] + sizes[k]};
        if (e.end > end) return fail("a block reaches past the line's end");
        m.exons.push_back(e);
      }
    } else {
      m.exons.push_back({start, end});
    }
    if (thickStart < thickEnd)
      for (Span e : m.exons)
        if (e.start < thickEnd && thickStart < e.end)
          m.cds.push_back({std::max(e.start, thickStart), std::min(e.end, thickEnd)});
    complete(m);
    models.push_back(std::move(m));
  }
  return true;
}

}  // namespace trelvane::annotation::detail
