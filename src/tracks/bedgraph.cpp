// bedgraph.cpp -- bedGraph texts of the profile and of its random expectation.
#include "tracks/bedgraph.h"

#include "tracks/text.h"

namespace trelvane::tracks {
namespace {

std::string profileName(const TrackOptions& o) { return o.cpg ? "CpG" : "identity"; }

std::string describe(const ComparisonState& st, const TrackOptions& o, const std::string& what) {
  return what + " of " + chromName(st, o) + ", window " + std::to_string(st.windgraph) + ", " +
         (o.anchor == Anchor::Centre ? "centre" : "first base") + ", " +
         (o.unit == Unit::Score ? "score" : "fraction");
}

}  // namespace

std::string_view expectationSuffix(ExpectationLine line) {
  switch (line) {
    case ExpectationLine::Mean: return "mean";
    case ExpectationLine::Upper: return "upper";
    case ExpectationLine::Lower: return "lower";
    case ExpectationLine::Max: return "max";
  }
  return "mean";
}

std::string trackLine(std::string_view type, const std::string& name, const std::string& description,
                      std::string_view color, const TrackOptions& o, int32_t W) {
  // viewLimits hold only where autoScale is off.
  const std::string top = o.unit == Unit::Score ? std::to_string(W) : "1";
  return "track type=" + std::string(type) + " name=\"" + name + "\" description=\"" + description +
         "\" color=" + std::string(color) + " autoScale=off viewLimits=0:" + top + "\n";
}

std::string bedGraphText(const std::string& chrom, const std::vector<Interval>& intervals) {
  std::string out;
  out.reserve(intervals.size() * (chrom.size() + 24));
  for (const Interval& iv : intervals) {
    out += chrom;
    out += '\t';
    out += std::to_string(iv.start);
    out += '\t';
    out += std::to_string(iv.end);
    out += '\t';
    out += number(iv.value);
    out += '\n';
  }
  return out;
}

std::string profileBedGraph(const ComparisonState& st, const TrackOptions& o) {
  std::string out;
  if (o.trackLine)
    out += trackLine("bedGraph", profileName(o), describe(st, o, "Trelvane " + profileName(o) + " profile"),
                     "0,0,0", o, st.windgraph);
  return out + bedGraphText(chromName(st, o), profileIntervals(st, o));
}

std::optional<std::string> expectationBedGraph(const ComparisonState& st, const TrackOptions& o,
                                               ExpectationLine line) {
  const std::optional<ExpectationTracks> h0 = expectation(st, o.unit);
  if (!h0) return std::nullopt;
  const std::vector<Interval> profile = profileIntervals(st, o);
  std::vector<Interval> span;
  double v = h0->mean;
  // The drawing's colours: red mean, green 2 SD lines, blue maximum.
  std::string_view color = "255,0,0";
  if (line == ExpectationLine::Upper) v = h0->upper, color = "0,160,0";
  if (line == ExpectationLine::Lower) v = h0->lower, color = "0,160,0";
  if (line == ExpectationLine::Max) v = h0->max, color = "0,0,255";
  if (!profile.empty()) span.push_back({profile.front().start, profile.back().end, v});
  std::string out;
  if (o.trackLine) {
    const std::string name = "random " + std::string(expectationSuffix(line));
    const std::string what = line == ExpectationLine::Mean    ? "Random expectation: mean"
                             : line == ExpectationLine::Upper ? "Random expectation: mean + 2 SD"
                             : line == ExpectationLine::Lower ? "Random expectation: mean - 2 SD"
                                                              : "Random expectation: maximum";
    out += trackLine("bedGraph", name, describe(st, o, what), color, o, st.windgraph);
  }
  return out + bedGraphText(chromName(st, o), span);
}

}  // namespace trelvane::tracks
