// stack_figure.cpp -- reading the panels' result files, joining chunks, calling and classifying
// segments, and the figure's parts.
#include "stack/stack_figure.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <memory>

#include "input/result_reader.h"
#include "state/form.h"
#include "state/state.h"
#include "tracks/profile_track.h"
#include "tracks/text.h"

namespace trelvane::stack {
namespace {

// A segment of one chunk, before the join.
struct Piece {
  int64_t first = 0, last = 0;  // windows, offsets in m2
  int64_t start = 0, end = 0;   // its extent on the axis
  double sum = 0, max = 0;      // of its scores
  int32_t W = 0;
};

plots::SegmentKind kindOf(annotation::Overlap o) {
  switch (o) {
    case annotation::Overlap::Exon: return plots::SegmentKind::Exon;
    case annotation::Overlap::UTR: return plots::SegmentKind::UTR;
    case annotation::Overlap::NonCoding: break;
  }
  return plots::SegmentKind::NonCoding;
}

std::string fileName(const std::string& path) { return std::filesystem::path(path).filename().string(); }

// Pieces of consecutive windows (one chunk ending where the next begins) made
// one segment; those with fewer windows than the rule asks are dropped.
std::vector<Piece> joined(std::vector<Piece> pieces, int64_t minWindows) {
  std::sort(pieces.begin(), pieces.end(), [](const Piece& a, const Piece& b) { return a.first < b.first; });
  std::vector<Piece> out;
  for (const Piece& p : pieces) {
    if (!out.empty() && p.first == out.back().last + 1) {
      Piece& q = out.back();
      q.last = p.last;
      q.start = std::min(q.start, p.start);
      q.end = std::max(q.end, p.end);
      q.sum += p.sum;
      q.max = std::max(q.max, p.max);
    } else {
      out.push_back(p);
    }
  }
  std::erase_if(out, [&](const Piece& p) { return p.last - p.first + 1 < minWindows; });
  return out;
}

}  // namespace

bool buildStack(const StackRequest& request, StackResult& result, std::string* why) {
  result = StackResult{};
  if (request.panels.empty()) {
    *why = "no result file to draw";
    return false;
  }
  plots::StackFigure& f = result.figure;
  f.unit = "identity";
  f.bottom = request.floor;
  int64_t refLength = -1;
  std::string refLabel, refFile;
  int64_t lo = std::numeric_limits<int64_t>::max(), hi = std::numeric_limits<int64_t>::min();
  std::vector<std::vector<Piece>> piecesOf;

  for (const PanelSource& source : request.panels) {
    plots::StackPanel panel;
    StackResult::PanelData data;
    std::vector<Piece> pieces;
    for (const std::string& path : source.results) {
      auto st = std::make_unique<ComparisonState>();
      st->open();
      Form form;
      const std::string failed = litprevious(*st, form, path, [] {});
      if (!failed.empty()) {
        *why = "cannot read the result file " + path + ": " + failed;
        return false;
      }
      if (st->windgraph <= 0 || st->m2.isNil()) {
        *why = path + " holds no profile to draw";
        return false;
      }
      // Every panel must lie on the same reference, base for base.
      const std::string label = st->origin[0].known() ? originLabel(st->origin[0]) : "";
      if (refLength < 0) {
        refLength = st->nbbases;
        refLabel = label;
        refFile = path;
      } else if (st->nbbases != refLength || (!label.empty() && !refLabel.empty() && label != refLabel)) {
        *why = path + " was not run against the longest sequence of " + refFile + " (" +
               (label.empty() ? std::to_string(st->nbbases) + " bases" : label) + " against " +
               (refLabel.empty() ? std::to_string(refLength) + " bases" : refLabel) + ")";
        return false;
      }
      tracks::TrackOptions o;
      o.recordCoordinates = request.recordCoordinates;
      o.source = path;
      if (result.chrom.empty()) result.chrom = tracks::chromName(*st, o);
      const std::vector<tracks::Interval> values = tracks::profileIntervals(*st, o);
      if (values.empty()) continue;
      for (const tracks::Interval& v : values) panel.values.push_back({v.start, v.end, v.value});
      const int64_t start = values.front().start, end = values.back().end;
      lo = std::min(lo, start);
      hi = std::max(hi, end);
      if (const auto e = tracks::expectation(*st, tracks::Unit::Fraction)) {
        panel.expectations.push_back({start, end, e->mean, e->upper, e->max});
        data.mean = e->mean;
        data.sd = (e->upper - e->mean) / 2;
      }
      data.W = st->windgraph;
      if (source.name.empty() && panel.name.empty()) panel.name = st->origin[1].record;
      if (!request.segments) continue;
      std::string noThreshold;
      const std::optional<double> threshold = tracks::thresholdScore(*st, request.rule, &noThreshold);
      if (!threshold) {
        *why = path + ": " + noThreshold;
        return false;
      }
      tracks::SegmentRule each = request.rule;
      each.minLength = 1;  // a segment cut by a chunk's end is judged whole, after the join
      for (const tracks::Segment& s : tracks::callSegments(*st, each, *threshold)) {
        const std::optional<tracks::Interval> at = tracks::segmentExtent(*st, o, s);
        if (!at) continue;
        pieces.push_back({s.first, s.last, at->start, at->end,
                          s.meanScore * static_cast<double>(s.last - s.first + 1), s.maxScore, st->windgraph});
      }
    }
    std::sort(panel.values.begin(), panel.values.end(),
              [](const plots::StackValue& a, const plots::StackValue& b) { return a.start < b.start; });
    if (!source.name.empty()) panel.name = source.name;
    if (panel.name.empty()) panel.name = tracks::baseName(source.results.front());
    data.values = panel.values;
    f.panels.push_back(std::move(panel));
    result.data.push_back(std::move(data));
    piecesOf.push_back(joined(std::move(pieces), request.rule.minLength));
  }
  if (lo > hi) {
    *why = "the result files hold no scored position";
    return false;
  }
  f.from = request.from ? *request.from - 1 : lo;
  f.to = request.to ? *request.to : hi;
  if (f.to <= f.from) {
    *why = "the range shown is empty: --to " + std::to_string(f.to) + " is not past --from " + std::to_string(f.from + 1);
    return false;
  }
  f.title = request.title.empty() ? "Identity along " + (refLabel.empty() ? result.chrom : refLabel) : request.title;

  std::vector<annotation::GeneModel> models;
  if (request.annotation) {
    const std::string seqid = request.seqid.empty() ? result.chrom : request.seqid;
    if (!annotation::readAnnotation(*request.annotation, seqid, models, why)) return false;
    f.annotated = true;
    for (const annotation::GeneModel& m : models) {
      plots::StackGene g{m.name, m.strand, m.extent.start, m.extent.end, {}, {}};
      for (auto s : m.cds.empty() ? m.exons : m.cds) g.exons.push_back({s.start, s.end, 0});
      for (auto s : m.utrs) g.utrs.push_back({s.start, s.end, 0});
      f.genes.push_back(std::move(g));
    }
  }
  for (std::size_t k = 0; k < piecesOf.size(); ++k) {
    for (const Piece& p : piecesOf[k]) {
      PanelSegment s;
      s.panel = f.panels[k].name;
      s.start = p.start;
      s.end = p.end;
      s.windows = p.last - p.first + 1;
      s.meanIdentity = p.sum / static_cast<double>(s.windows) / p.W;
      s.maxIdentity = p.max / p.W;
      s.overlap = annotation::overlapOf(models, {p.start, p.end});
      f.panels[k].segments.push_back(
          {s.start, s.end, request.annotation ? kindOf(s.overlap) : plots::SegmentKind::Unannotated});
      result.segments.push_back(std::move(s));
    }
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
