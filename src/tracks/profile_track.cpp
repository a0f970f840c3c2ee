// profile_track.cpp -- the profile of m2 on genome coordinates.
#include "tracks/profile_track.h"

#include <algorithm>
#include <cmath>

#include "platform/numtext.h"
#include "state/profile.h"
#include "tracks/text.h"

namespace trelvane::tracks {

std::string chromName(const ComparisonState& st, const TrackOptions& o) {
  if (!o.chrom.empty()) return withoutBlanks(o.chrom);
  const SequenceOrigin& origin = st.origin[0];
  if (!origin.record.empty()) return withoutBlanks(origin.record);
  const std::string& path = origin.known() ? origin.path : o.source;
  const std::string name = baseName(path);
  return name.empty() ? "sequence" : withoutBlanks(name);
}

std::optional<int64_t> trackStart(const ComparisonState& st, const TrackOptions& o, int64_t runPos) {
  if (!o.recordCoordinates) return runPos >= 1 ? std::optional<int64_t>(runPos - 1) : std::nullopt;
  const std::optional<int64_t> pos = recordPosition(st.origin[0], runPos);
  if (!pos) return std::nullopt;
  return *pos - 1;
}

std::optional<int32_t> drawnScore(const ComparisonState& st, int64_t p) {
  if (p < 0 || p >= st.nbbases) return std::nullopt;
  const uint8_t b = st.m2.get(p);
  if (b <= kProfileNoScore) return std::nullopt;
  return toInt(profileScore(b, st.windgraph));
}

double inUnit(double score, int32_t W, Unit unit) {
  return unit == Unit::Score ? score : score / W;
}

std::vector<Interval> profileIntervals(const ComparisonState& st, const TrackOptions& o) {
  std::vector<Interval> out;
  const int32_t W = st.windgraph;
  if (W <= 0 || st.m2.isNil()) return out;
  const int64_t shift = o.anchor == Anchor::Centre ? (W - 1) / 2 : 0;
  // A reversed record is walked downwards: runs grow at their start.
  const bool down = o.recordCoordinates && st.origin[0].reverse;
  for (int64_t p = 0; p < st.nbbases; ++p) {
    const std::optional<int32_t> s = drawnScore(st, p);
    if (!s) continue;
    const std::optional<int64_t> at = trackStart(st, o, p + 1 + shift);
    if (!at) continue;
    const double v = inUnit(*s, W, o.unit);
    if (!out.empty() && out.back().value == v) {
      Interval& last = out.back();
      if (!down && last.end == *at) {
        ++last.end;
        continue;
      }
      if (down && last.start == *at + 1) {
        --last.start;
        continue;
      }
    }
    out.push_back({*at, *at + 1, v});
  }
  if (down) std::reverse(out.begin(), out.end());
  return out;
}

int64_t chromSize(const ComparisonState& st, const TrackOptions& o, int64_t reached) {
  int64_t size = st.nbbases;
  if (o.recordCoordinates && st.origin[0].known()) {
    const SequenceOrigin& origin = st.origin[0];
    size = origin.recordLength > 0 ? origin.recordLength : std::max<int64_t>(size, origin.to);
  }
  return std::max(size, reached);
}

std::optional<ExpectationTracks> expectation(const ComparisonState& st, Unit unit) {
  const double mean = st.omeangraph, sd = st.osdgraph, max = st.omaxgraph;
  if (!std::isfinite(mean) || !std::isfinite(sd) || !std::isfinite(max) || st.windgraph <= 0)
    return std::nullopt;
  const int32_t W = st.windgraph;
  return ExpectationTracks{inUnit(mean, W, unit), inUnit(mean + 2 * sd, W, unit),
                           inUnit(mean - 2 * sd, W, unit), inUnit(max, W, unit)};
}

}  // namespace trelvane::tracks
