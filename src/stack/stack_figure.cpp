// stack_figure.cpp -- reading the panels (result files or profile tracks), calling and classifying
// their segments, and the figure's parts.
#include "stack/stack_figure.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>

#include "input/result_reader.h"
#include "state/form.h"
#include "state/state.h"
#include "tracks/profile_track.h"
#include "tracks/text.h"

namespace trelvane::stack {
namespace {

// A conserved stretch of a panel, in identity units.
struct Piece {
  int64_t start = 0, end = 0;  // its extent on the axis
  int64_t windows = 0;
  double meanIdentity = 0, maxIdentity = 0;
};

// What one panel gives the figure.
struct Panel {
  plots::StackPanel shown;
  StackResult::PanelData data;
  std::vector<Piece> pieces;
  std::string chrom;      // the reference's name: the record's, else a file's
  bool chromKnown = false;  // chrom is the record's name, not a file's
  std::string reference;  // what the panel says of the reference, for the check that all agree
  int64_t length = -1;    // the reference's bases, -1 where unknown
};

plots::SegmentKind kindOf(annotation::Overlap o) {
  switch (o) {
    case annotation::Overlap::Exon: return plots::SegmentKind::Exon;
    case annotation::Overlap::UTR: return plots::SegmentKind::UTR;
    case annotation::Overlap::NonCoding: break;
  }
  return plots::SegmentKind::NonCoding;
}

bool endsWith(const std::string& s, const std::string& tail) {
  return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

bool readResultPanel(const std::string& path, const StackRequest& request, Panel& panel, std::string* why) {
  ComparisonState st;
  st.open();
  Form form;
  const std::string failed = litprevious(st, form, path, [] {});
  if (!failed.empty()) {
    *why = "cannot read the result file " + path + ": " + failed;
    return false;
  }
  if (st.windgraph <= 0 || st.m2.isNil()) {
    *why = path + " is no result file with a profile (nor a .bedGraph track)";
    return false;
  }
  tracks::TrackOptions o;
  o.recordCoordinates = request.recordCoordinates;
  o.source = path;
  panel.chrom = tracks::chromName(st, o);
  panel.chromKnown = !st.origin[0].record.empty();
  panel.length = st.nbbases;
  panel.reference = st.origin[0].known() ? originLabel(st.origin[0]) : "";
  for (const tracks::Interval& v : tracks::profileIntervals(st, o)) panel.shown.values.push_back({v.start, v.end, v.value});
  std::sort(panel.shown.values.begin(), panel.shown.values.end(),
            [](const plots::StackValue& a, const plots::StackValue& b) { return a.start < b.start; });
  panel.data.W = st.windgraph;
  if (st.origin[0].known() && !st.origin[0].reverse && st.origin[0].removed.empty() && request.recordCoordinates) panel.data.runFrom = st.origin[0].from;
  if (const auto e = tracks::expectation(st, tracks::Unit::Fraction); e && !panel.shown.values.empty()) {
    panel.shown.expectations.push_back(
        {panel.shown.values.front().start, panel.shown.values.back().end, e->mean, e->upper, e->max});
    panel.data.mean = e->mean;
    panel.data.sd = (e->upper - e->mean) / 2;
  }
  panel.shown.name = st.origin[1].record;
  if (!request.segments) return true;
  std::string noThreshold;
  const std::optional<double> threshold = tracks::thresholdScore(st, request.rule, &noThreshold);
  if (!threshold) {
    *why = path + ": " + noThreshold;
    return false;
  }
  const double W = st.windgraph;
  for (const tracks::Segment& s : tracks::callSegments(st, request.rule, *threshold))
    if (const std::optional<tracks::Interval> at = tracks::segmentExtent(st, o, s))
      panel.pieces.push_back({at->start, at->end, s.last - s.first + 1, s.meanScore / W, s.maxScore / W});
  return true;
}

// The four columns of a bedGraph, one chromosome; track and comment lines skipped.
bool readBedGraph(const std::string& path, std::vector<plots::StackValue>& values, std::string& chrom,
                  std::string* why) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    *why = "cannot read the track " + path;
    return false;
  }
  int number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    if (line.empty() || line[0] == '#' || line.rfind("track", 0) == 0 || line.rfind("browser", 0) == 0) continue;
    std::istringstream fields(line);
    std::string name, rest;
    plots::StackValue v;
    if (!(fields >> name >> v.start >> v.end >> v.value) || (fields >> rest) || v.end <= v.start || v.start < 0) {
      *why = path + ":" + std::to_string(number) + ": a bedGraph line holds chrom, start, end and value";
      return false;
    }
    if (chrom.empty()) chrom = name;
    if (name != chrom) {
      *why = path + ":" + std::to_string(number) + ": a second chromosome (" + name + " after " + chrom +
             "): one profile a track";
      return false;
    }
    values.push_back(v);
  }
  std::sort(values.begin(), values.end(), [](const auto& a, const auto& b) { return a.start < b.start; });
  return true;
}

bool readTrackPanel(const std::string& path, const StackRequest& request, Panel& panel, std::string* why) {
  if (!readBedGraph(path, panel.shown.values, panel.chrom, why)) return false;
  panel.chromKnown = true;
  // The random expectation written beside it: one constant piece a chunk.
  const std::string prefix = std::filesystem::path(path).replace_extension().string();
  std::vector<plots::StackValue> lines[3];
  std::string ignored;
  bool h0 = true;
  for (int k = 0; k < 3 && h0; ++k) {
    const std::string file = prefix + (k == 0 ? ".mean" : k == 1 ? ".upper" : ".max") + ".bedGraph";
    std::error_code ec;
    h0 = std::filesystem::exists(file, ec) && readBedGraph(file, lines[k], ignored, why);
    if (!h0 && std::filesystem::exists(file, ec)) return false;
  }
  if (h0) {
    for (const plots::StackValue& m : lines[0]) {
      plots::StackExpectation e{m.start, m.end, m.value, m.value, m.value};
      for (const auto& u : lines[1]) if (u.start == m.start) e.upper = u.value;
      for (const auto& x : lines[2]) if (x.start == m.start) e.max = x.value;
      panel.shown.expectations.push_back(e);
    }
    if (!lines[0].empty()) {
      panel.data.mean = panel.shown.expectations.front().mean;
      panel.data.sd = (panel.shown.expectations.front().upper - panel.data.mean) / 2;
    }
  }
  if (!request.segments) return true;
  using Kind = tracks::SegmentRule::Kind;
  const tracks::SegmentRule& rule = request.rule;
  if (rule.kind != Kind::Identity && panel.shown.expectations.empty()) {
    *why = path + " has no random expectation beside it (" + prefix + ".mean.bedGraph): give --min-identity";
    return false;
  }
  // The same rule as for a result: a window passes at or above an identity,
  // or strictly above the random expectation of its chunk.
  auto passes = [&](const plots::StackValue& v) {
    if (rule.kind == Kind::Identity) return v.value >= rule.minIdentity - 1e-9;
    for (const plots::StackExpectation& e : panel.shown.expectations)
      if (e.start <= v.start && v.start < e.end) {
        const double sd = (e.upper - e.mean) / 2;
        return v.value > (rule.kind == Kind::AboveMax ? e.max : e.mean + rule.sds * sd);
      }
    return false;
  };
  Piece cur;
  double sum = 0;
  auto close = [&] {
    if (cur.windows >= rule.minLength) {
      cur.meanIdentity = sum / static_cast<double>(cur.windows);
      panel.pieces.push_back(cur);
    }
    cur = Piece{};
    sum = 0;
  };
  for (const plots::StackValue& v : panel.shown.values) {
    if (!passes(v) || (cur.windows > 0 && v.start != cur.end)) close();
    if (!passes(v)) continue;
    if (cur.windows == 0) cur.start = v.start;
    cur.end = v.end;
    cur.windows += v.end - v.start;
    sum += v.value * static_cast<double>(v.end - v.start);
    cur.maxIdentity = std::max(cur.maxIdentity, v.value);
  }
  close();
  return true;
}

}  // namespace

bool isTrackPath(const std::string& path) {
  return endsWith(path, ".bedGraph") || endsWith(path, ".bedgraph") || endsWith(path, ".bg");
}

bool buildStack(const StackRequest& request, StackResult& result, std::string* why) {
  result = StackResult{};
  if (request.panels.empty()) {
    *why = "no result file to draw";
    return false;
  }
  plots::StackFigure& f = result.figure;
  f.unit = "identity";
  f.bottom = request.floor;
  std::vector<Panel> panels;
  bool chromKnown = false;
  int64_t lo = std::numeric_limits<int64_t>::max(), hi = std::numeric_limits<int64_t>::min();
  for (const PanelSource& source : request.panels) {
    Panel panel;
    if (!(isTrackPath(source.path) ? readTrackPanel(source.path, request, panel, why)
                                   : readResultPanel(source.path, request, panel, why)))
      return false;
    // Every panel must lie on the same reference, base for base.
    for (const Panel& first : panels) {
      const bool lengths = first.length >= 0 && panel.length >= 0 && first.length != panel.length;
      const bool labels = !first.reference.empty() && !panel.reference.empty() && first.reference != panel.reference;
      const bool chroms = first.chromKnown && panel.chromKnown && first.chrom != panel.chrom;
      if (lengths || labels || chroms) {
        *why = source.path + " was not run against the longest sequence of " + request.panels.front().path + " (" +
               (labels ? panel.reference + " against " + first.reference
                : lengths ? std::to_string(panel.length) + " bases against " + std::to_string(first.length)
                          : panel.chrom + " against " + first.chrom) +
               ")";
        return false;
      }
      break;
    }
    if (!panel.shown.values.empty()) {
      lo = std::min(lo, panel.shown.values.front().start);
      hi = std::max(hi, panel.shown.values.back().end);
    }
    if (!source.name.empty()) panel.shown.name = source.name;
    if (panel.shown.name.empty())
      panel.shown.name = isTrackPath(source.path) ? std::filesystem::path(source.path).stem().string()
                                                  : tracks::baseName(source.path);
    if (!chromKnown && panel.chromKnown) result.chrom = panel.chrom;
    if (result.chrom.empty()) result.chrom = panel.chrom;
    chromKnown = chromKnown || panel.chromKnown;
    panels.push_back(std::move(panel));
  }
  // Result files of a batch are all result.txt: names that would repeat
  // take the folder's name, which names the pair.
  std::vector<std::string> names;
  for (const Panel& q : panels) names.push_back(q.shown.name);
  for (std::size_t k = 0; k < panels.size(); ++k) {
    if (!request.panels[k].name.empty()) continue;
    const auto same = std::count(names.begin(), names.end(), names[k]);
    const std::filesystem::path folder = std::filesystem::path(request.panels[k].path).parent_path().filename();
    if (same > 1 && !folder.empty()) panels[k].shown.name = folder.string();
  }
  if (lo > hi) {
    *why = "the panels hold no scored position";
    return false;
  }
  f.from = request.from ? *request.from - 1 : lo;
  f.to = request.to ? *request.to : hi;
  if (f.to <= f.from) {
    *why = "the range shown is empty: --to " + std::to_string(f.to) + " is not past --from " + std::to_string(f.from + 1);
    return false;
  }

  std::vector<annotation::GeneModel> models;
  if (request.annotation) {
    // Without a record name, an annotation of one sequence is taken as it is.
    const std::string seqid = !request.seqid.empty() ? request.seqid : chromKnown ? result.chrom : "";
    std::string chosen;
    if (!annotation::readAnnotation(*request.annotation, seqid, models, why, &chosen)) return false;
    if (!chromKnown) result.chrom = chosen;
    f.annotated = true;
    for (const annotation::GeneModel& m : models) {
      plots::StackGene g{m.name, m.strand, m.extent.start, m.extent.end, {}, {}};
      for (auto s : m.cds.empty() ? m.exons : m.cds) g.exons.push_back({s.start, s.end, 0});
      for (auto s : m.utrs) g.utrs.push_back({s.start, s.end, 0});
      f.genes.push_back(std::move(g));
    }
  }
  // After the annotation, which may have named the reference.
  const std::string& label = panels.front().reference.empty() ? result.chrom : panels.front().reference;
  f.title = request.title.empty() ? "Identity along " + label : request.title;
  for (Panel& panel : panels) {
    for (const Piece& p : panel.pieces) {
      PanelSegment s{panel.shown.name, p.start, p.end, p.windows, p.meanIdentity, p.maxIdentity,
                     annotation::overlapOf(models, {p.start, p.end})};
      panel.shown.segments.push_back(
          {s.start, s.end, request.annotation ? kindOf(s.overlap) : plots::SegmentKind::Unannotated});
      result.segments.push_back(std::move(s));
    }
    f.panels.push_back(std::move(panel.shown));
    result.data.push_back(std::move(panel.data));
  }
  return true;
}

std::string segmentsTable(const StackResult& result) {
  std::string out = "panel\tchrom\tstart\tend\tlength\twindows\tmean_identity\tmax_identity\toverlap\n";
  for (const PanelSegment& s : result.segments) {
    out += tracks::withoutBlanks(s.panel) + "\t" + result.chrom + "\t" + std::to_string(s.start + 1) + "\t" +
           std::to_string(s.end) + "\t" + std::to_string(s.end - s.start) + "\t" + std::to_string(s.windows) + "\t" +
           tracks::fixed(s.meanIdentity, 3) + "\t" + tracks::fixed(s.maxIdentity, 3) + "\t" +
           (result.figure.annotated ? annotation::overlapName(s.overlap) : "NA") + "\n";
  }
  return out;
}

}  // namespace trelvane::stack
