// annotation.cpp -- reading an annotation file of either format, the models' completion, overlaps.
#include "annotation/annotation.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <fstream>
#include <iterator>

namespace trelvane::annotation {
namespace {

bool endsWith(const std::string& s, const std::string& tail) {
  return s.size() >= tail.size() && std::equal(tail.rbegin(), tail.rend(), s.rbegin(),
                                               [](char a, char b) { return std::tolower(a) == b; });
}

bool overlaps(const std::vector<Span>& spans, Span s) {
  for (const Span& x : spans)
    if (x.start < s.end && s.start < x.end) return true;
  return false;
}

void mergeSorted(std::vector<Span>& spans) {
  std::sort(spans.begin(), spans.end(), [](Span a, Span b) { return a.start < b.start; });
  std::vector<Span> out;
  for (Span s : spans) {
    if (!out.empty() && s.start <= out.back().end) out.back().end = std::max(out.back().end, s.end);
    else out.push_back(s);
  }
  spans = std::move(out);
}

}  // namespace

Overlap overlapOf(const std::vector<GeneModel>& models, Span stretch) {
  bool utr = false;
  for (const GeneModel& m : models) {
    if (m.extent.end <= stretch.start || stretch.end <= m.extent.start) continue;
    if (overlaps(m.cds.empty() ? m.exons : m.cds, stretch)) return Overlap::Exon;
    utr = utr || overlaps(m.utrs, stretch);
  }
  return utr ? Overlap::UTR : Overlap::NonCoding;
}

const char* overlapName(Overlap o) {
  switch (o) {
    case Overlap::Exon: return "exon";
    case Overlap::UTR: return "UTR";
    case Overlap::NonCoding: break;
  }
  return "non-coding";
}

bool readAnnotation(const std::string& path, const std::string& seqid, std::vector<GeneModel>& models,
                    std::string* why, std::string* chosen) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    *why = "cannot read the annotation " + path;
    return false;
  }
  const std::string text(std::istreambuf_iterator<char>(in), {});
  if (endsWith(path, ".gz")) {
    *why = "cannot read the annotation " + path + ": give it uncompressed (gzip -dk)";
    return false;
  }
  const bool gff = endsWith(path, ".gff") || endsWith(path, ".gff3") ||
                   (!endsWith(path, ".bed") && text.rfind("##gff-version", 0) == 0);
  std::vector<std::string> seqids;
  std::string mistake;
  models.clear();
  auto read = [&](const std::string& name) {
    seqids.clear();
    return gff ? detail::readGff3(text, name, models, seqids, &mistake)
               : detail::readBed(text, name, models, seqids, &mistake);
  };
  if (!read(seqid)) {
    *why = path + ":" + mistake;
    return false;
  }
  if (chosen) *chosen = seqid;
  if (seqid.empty() && seqids.size() == 1) {
    read(seqids.front());
    if (chosen) *chosen = seqids.front();
  }
  else if (seqid.empty() && seqids.size() > 1) {
    *why = "the annotation " + path + " names " + std::to_string(seqids.size()) +
           " sequences: say which one is the reference (" + seqids[0] + ", " + seqids[1] + (seqids.size() > 2 ? ", ..." : "") + ")";
    return false;
  }
  if (models.empty()) {
    std::string names;
    for (std::size_t k = 0; k < seqids.size() && k < 5; ++k) names += (k ? ", " : "") + seqids[k];
    *why = "the annotation " + path + " has no feature on " + seqid +
           (names.empty() ? std::string(" (it holds none)") : " (it names " + names + (seqids.size() > 5 ? ", ..." : "") + ")");
    return false;
  }
  std::sort(models.begin(), models.end(), [](const GeneModel& a, const GeneModel& b) {
    return a.extent.start != b.extent.start ? a.extent.start < b.extent.start : a.name < b.name;
  });
  return true;
}

namespace detail {

void complete(GeneModel& m) {
  mergeSorted(m.exons);
  mergeSorted(m.cds);
  mergeSorted(m.utrs);
  if (m.utrs.empty() && !m.cds.empty()) {
    // The exons' parts before the first and after the last coding base.
    const int64_t cdsStart = m.cds.front().start, cdsEnd = m.cds.back().end;
    for (Span e : m.exons) {
      if (e.start < cdsStart) m.utrs.push_back({e.start, std::min(e.end, cdsStart)});
      if (e.end > cdsEnd) m.utrs.push_back({std::max(e.start, cdsEnd), e.end});
    }
  }
  for (const auto* parts : {&m.exons, &m.cds, &m.utrs})
    for (Span s : *parts) {
      if (m.extent.end <= m.extent.start) m.extent = s;
      m.extent.start = std::min(m.extent.start, s.start);
      m.extent.end = std::max(m.extent.end, s.end);
    }
}

std::vector<std::string> splitTabs(const std::string& line) {
  std::vector<std::string> fields;
  std::size_t from = 0;
  for (;;) {
    const std::size_t tab = line.find('\t', from);
    fields.push_back(line.substr(from, tab == std::string::npos ? std::string::npos : tab - from));
    if (tab == std::string::npos) break;
    from = tab + 1;
  }
  if (!fields.empty() && !fields.back().empty() && fields.back().back() == '\r') fields.back().pop_back();
  return fields;
}

bool wholeNumber(const std::string& text, int64_t& value) {
  const char* end = text.data() + text.size();
  const auto [ptr, ec] = std::from_chars(text.data(), end, value);
  return ec == std::errc() && ptr == end && value >= 0;
}

}  // namespace detail
}  // namespace trelvane::annotation
