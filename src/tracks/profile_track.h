// profile_track.h -- the profile of m2 as runs of one value, placed on the record's or the run's coordinates.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "state/state.h"

namespace trelvane::tracks {

// Where a window's value stands: on its first base, as the drawing places
// it, or on its middle base (offset (W - 1) / 2 into the window).
enum class Anchor { First, Centre };
// The drawing's two units: identities as a fraction of the window, or the
// number of identities (the score).
enum class Unit { Fraction, Score };

struct TrackOptions {
  std::string chrom;              // the chromosome column; "" for the record's name
  bool recordCoordinates = true;  // false: the run's own numbering, base 1 the first base read
  Anchor anchor = Anchor::First;
  Unit unit = Unit::Fraction;
  bool trackLine = false;         // a browser's track line at the head of each text file
  bool cpg = false;               // the profile counts CpG, it is no identity
  std::string source;             // the file the name falls back on (the result file in redraw)
};

// A stretch of bases, 0-based and half-open, holding one value.
struct Interval {
  int64_t start = 0, end = 0;
  double value = 0;
};

// The chromosome column: the chosen name, else the record's name, else the
// base name of the longest sequence's file (or of options.source).
std::string chromName(const ComparisonState& st, const TrackOptions& o);

// The 0-based coordinate of run position runPos (1-based) of the longest
// sequence, or none where it holds no base of the record.
std::optional<int64_t> trackStart(const ComparisonState& st, const TrackOptions& o, int64_t runPos);

// The score the drawing plots for the window at offset p of m2 (its decoded
// byte, truncated), or none for a window without a score.
std::optional<int32_t> drawnScore(const ComparisonState& st, int64_t p);

// A score in the chosen unit.
double inUnit(double score, int32_t W, Unit unit);

// Every scored window as a one-base interval at its anchor, sorted, never
// overlapping, equal neighbours merged.
std::vector<Interval> profileIntervals(const ComparisonState& st, const TrackOptions& o);

// The length of the chromosome for bigWig and GFF3 headers: the record's
// length where the reader knew it, else what the sequence and the intervals
// reach.
int64_t chromSize(const ComparisonState& st, const TrackOptions& o, int64_t reached);

// The random expectation of the run as four constant tracks over the
// profile's extent: its mean, mean + 2 SD and mean - 2 SD (the green lines
// of the drawing) and its maximum. Empty where the run has none (a CpG run).
struct ExpectationTracks {
  double mean = 0, upper = 0, lower = 0, max = 0;  // in the chosen unit
};
std::optional<ExpectationTracks> expectation(const ComparisonState& st, Unit unit);

}  // namespace trelvane::tracks
