// segments.h -- conserved segments: maximal stretches of windows at or above a threshold, as BED6 and TSV.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tracks/profile_track.h"

namespace trelvane::tracks {

// Absolute: every window at or above minIdentity of its bases ("70 % over
// 100 bp"). Relative to the random expectation: every window strictly above
// its mean + sds SD, or above its maximum. A segment is where the profile
// track stays at or above the threshold, with the track's anchor.
struct SegmentRule {
  enum class Kind { Identity, AboveMean, AboveMax };
  Kind kind = Kind::Identity;
  double minIdentity = 0.70;
  double sds = 0;
  int64_t minLength = 100;  // consecutive windows
};

// "mean", "mean+3sd", "mean+2.5sd", "max" into rule; false with why.
bool parseAbove(std::string_view text, SegmentRule& rule, std::string* why);

// One text for either threshold, as the window takes it: a fraction of the
// window from 0 to 1 ("0.70"), or what parseAbove reads; false with why.
bool parseThreshold(std::string_view text, SegmentRule& rule, std::string* why);
// The least number of positions in a row, a whole number from 1; false with why.
bool parseMinLength(std::string_view text, SegmentRule& rule, std::string* why);

// The rule's threshold as a score; none, with why, where it needs a random
// expectation that the run does not have.
std::optional<double> thresholdScore(const ComparisonState& st, const SegmentRule& rule, std::string* why);

// A stretch of consecutive scored windows that all pass.
struct Segment {
  int64_t first = 0, last = 0;     // offsets in m2 of its first and last window
  double meanScore = 0, maxScore = 0;
  int64_t best = 0;                // the first window with the highest score
};

// The bases, 0-based and half-open in the track's coordinates, that hold
// the segment's windows' values in the profile track; none off the record.
std::optional<Interval> segmentExtent(const ComparisonState& st, const TrackOptions& o, const Segment& s);

// The stretches of at least rule.minLength windows, in run order.
std::vector<Segment> callSegments(const ComparisonState& st, const SegmentRule& rule, double threshold);

// The start, 1-based along the shortest sequence as read, of the first of
// its windows that scores best against the longest sequence's window at
// offset `window`; none where the shortest sequence is not in memory.
std::optional<int64_t> bestPartner(const ComparisonState& st, int64_t window);

// BED6: chrom, start, end, name, score 0-1000 (the mean identity), strand.
std::string segmentsBed(const ComparisonState& st, const std::vector<Segment>& segments, const TrackOptions& o);

// A header, then one line a segment: name, chrom, start and end (1-based,
// inclusive), length, mean and max identity, the partner's start on the
// shortest sequence ("NA" where unknown).
std::string segmentsTsv(const ComparisonState& st, const std::vector<Segment>& segments, const TrackOptions& o);

}  // namespace trelvane::tracks
