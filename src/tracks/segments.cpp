// segments.cpp -- conserved segments of the profile.
#include "tracks/segments.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>

#include "tracks/text.h"

namespace trelvane::tracks {
namespace {

// The segments in the order of the track's coordinates, each with its extent.
std::vector<std::pair<const Segment*, Interval>> placed(const ComparisonState& st,
                                                        const std::vector<Segment>& segments,
                                                        const TrackOptions& o) {
  std::vector<std::pair<const Segment*, Interval>> out;
  for (const Segment& s : segments)
    if (const auto iv = segmentExtent(st, o, s)) out.push_back({&s, *iv});
  std::stable_sort(out.begin(), out.end(),
                   [](const auto& x, const auto& y) { return x.second.start < y.second.start; });
  return out;
}

std::string strandOf(const SequenceOrigin& origin) {
  if (origin.reverse && origin.complement) return "-";
  if (!origin.reverse && !origin.complement) return "+";
  return ".";
}

std::string identity(double score, int32_t W) { return fixed(score / W, 3); }

}  // namespace

std::optional<Interval> segmentExtent(const ComparisonState& st, const TrackOptions& o, const Segment& s) {
  const int64_t shift = o.anchor == Anchor::Centre ? (st.windgraph - 1) / 2 : 0;
  const std::optional<int64_t> a = trackStart(st, o, s.first + 1 + shift);
  const std::optional<int64_t> b = trackStart(st, o, s.last + 1 + shift);
  if (!a || !b) return std::nullopt;
  return Interval{std::min(*a, *b), std::max(*a, *b) + 1, 0};
}

bool parseAbove(std::string_view text, SegmentRule& rule, std::string* why) {
  *why = "invalid threshold '" + std::string(text) + "': expected mean, mean+Ksd (such as mean+3sd) or max";
  if (text == "max") {
    rule.kind = SegmentRule::Kind::AboveMax;
    return true;
  }
  if (text == "mean") {
    rule.kind = SegmentRule::Kind::AboveMean;
    rule.sds = 0;
    return true;
  }
  if (text.size() < 8 || text.substr(0, 5) != "mean+" || text.substr(text.size() - 2) != "sd") return false;
  const std::string_view k = text.substr(5, text.size() - 7);
  double v = 0;
  auto res = std::from_chars(k.data(), k.data() + k.size(), v);
  if (res.ec != std::errc() || res.ptr != k.data() + k.size() || !std::isfinite(v) || v < 0) return false;
  rule.kind = SegmentRule::Kind::AboveMean;
  rule.sds = v;
  return true;
}

bool parseThreshold(std::string_view text, SegmentRule& rule, std::string* why) {
  if (!text.empty() && text[0] == 'm' && parseAbove(text, rule, why)) return true;
  double v = 0;
  const auto res = std::from_chars(text.data(), text.data() + text.size(), v, std::chars_format::fixed);
  if (text.empty() || text[0] == '-' || text[0] == 'm' || res.ec != std::errc() ||
      res.ptr != text.data() + text.size() || !(v >= 0) || v > 1) {
    *why = "invalid threshold '" + std::string(text) +
           "': expected a fraction from 0 to 1 (such as 0.70), mean, mean+Ksd (such as mean+3sd) or max";
    return false;
  }
  rule.kind = SegmentRule::Kind::Identity;
  rule.minIdentity = v;
  return true;
}

bool parseMinLength(std::string_view text, SegmentRule& rule, std::string* why) {
  int64_t v = 0;
  const auto res = std::from_chars(text.data(), text.data() + text.size(), v);
  if (text.empty() || text[0] == '-' || res.ec != std::errc() || res.ptr != text.data() + text.size() || v < 1 ||
      v > INT32_MAX) {
    *why = "invalid minimum length '" + std::string(text) + "': expected a whole number of positions from 1";
    return false;
  }
  rule.minLength = v;
  return true;
}

std::optional<double> thresholdScore(const ComparisonState& st, const SegmentRule& rule, std::string* why) {
  if (rule.kind == SegmentRule::Kind::Identity) return rule.minIdentity * st.windgraph;
  const std::optional<ExpectationTracks> h0 = expectation(st, Unit::Score);
  if (!h0) {
    *why = "the run has no random expectation (a CpG run): use --min-identity, not --above";
    return std::nullopt;
  }
  if (rule.kind == SegmentRule::Kind::AboveMax) return h0->max;
  return static_cast<double>(st.omeangraph) + rule.sds * static_cast<double>(st.osdgraph);
}

std::vector<Segment> callSegments(const ComparisonState& st, const SegmentRule& rule, double threshold) {
  std::vector<Segment> out;
  const int32_t W = st.windgraph;
  if (W <= 0) return out;
  // Scores are whole numbers, a threshold from a fraction need not be.
  const bool strict = rule.kind != SegmentRule::Kind::Identity;
  auto passes = [&](int32_t s) { return strict ? s > threshold : s >= threshold - 1e-9; };
  Segment cur;
  bool open = false;
  double sum = 0;
  auto close = [&] {
    if (!open) return;
    open = false;
    cur.meanScore = sum / static_cast<double>(cur.last - cur.first + 1);
    if (cur.last - cur.first + 1 >= rule.minLength) out.push_back(cur);
  };
  for (int64_t p = 0; p < st.nbbases; ++p) {
    const std::optional<int32_t> s = drawnScore(st, p);
    if (!s || !passes(*s)) {
      close();
      continue;
    }
    if (!open) {
      open = true;
      cur = Segment{};
      cur.first = p;
      cur.best = p;
      cur.maxScore = *s;
      sum = 0;
    }
    cur.last = p;
    sum += *s;
    if (*s > cur.maxScore) {
      cur.maxScore = *s;
      cur.best = p;
    }
  }
  close();
  return out;
}

std::optional<int64_t> bestPartner(const ComparisonState& st, int64_t window) {
  const int64_t W = st.windgraph;
  const int64_t nshort = st.nbbases1;
  if (W <= 0 || nshort < W || st.m1.size() < nshort || st.m0.size() < window + W) return std::nullopt;
  const uint8_t* longw = st.m0.data() + window;
  const uint8_t* shortSeq = st.m1.data();
  std::optional<int64_t> best;
  float bestScore = 0;
  // Each window in full, in Single as the scan's first position does; the
  // first start that reaches the best score is the one listed first.
  for (int64_t j = 0; j + W <= nshort; ++j) {
    float s = 0;
    for (int64_t k = 0; k < W; ++k) s += st.matrice[shortSeq[j + k] % 5][longw[k] % 5];
    if (!best || s > bestScore) {
      best = j + 1;
      bestScore = s;
    }
  }
  return best;
}

std::string segmentsBed(const ComparisonState& st, const std::vector<Segment>& segments, const TrackOptions& o) {
  const std::string chrom = chromName(st, o);
  const std::string strand = o.recordCoordinates ? strandOf(st.origin[0]) : "+";
  std::string out;
  int n = 0;
  for (const auto& [s, iv] : placed(st, segments, o)) {
    const long score = std::lround(std::clamp(s->meanScore / st.windgraph, 0.0, 1.0) * 1000);
    out += chrom + "\t" + std::to_string(iv.start) + "\t" + std::to_string(iv.end) + "\tsegment" +
           std::to_string(++n) + "\t" + std::to_string(score) + "\t" + strand + "\n";
  }
  return out;
}

std::string segmentsTsv(const ComparisonState& st, const std::vector<Segment>& segments, const TrackOptions& o) {
  const std::string chrom = chromName(st, o);
  std::string out = "name\tchrom\tstart\tend\tlength\tmean_identity\tmax_identity\tpartner_start\n";
  int n = 0;
  for (const auto& [s, iv] : placed(st, segments, o)) {
    std::string partner = "NA";
    if (const std::optional<int64_t> j = bestPartner(st, s->best)) {
      const std::optional<int64_t> at =
          o.recordCoordinates ? recordPosition(st.origin[1], *j) : std::optional<int64_t>(*j);
      if (at) partner = std::to_string(*at);
    }
    out += "segment" + std::to_string(++n) + "\t" + chrom + "\t" + std::to_string(iv.start + 1) + "\t" +
           std::to_string(iv.end) + "\t" + std::to_string(iv.end - iv.start) + "\t" +
           identity(s->meanScore, st.windgraph) + "\t" + identity(s->maxScore, st.windgraph) + "\t" + partner +
           "\n";
  }
  return out;
}

}  // namespace trelvane::tracks
