// bedgraph.h -- the profile and its random expectation as bedGraph texts, with an optional track line.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tracks/profile_track.h"

namespace trelvane::tracks {

// The four lines of the random expectation, one file each (a browser takes
// one track line a file).
enum class ExpectationLine { Mean, Upper, Lower, Max };
inline constexpr ExpectationLine kExpectationLines[] = {ExpectationLine::Mean, ExpectationLine::Upper,
                                                        ExpectationLine::Lower, ExpectationLine::Max};
// "mean", "upper", "lower", "max": the file name's part for the line.
std::string_view expectationSuffix(ExpectationLine line);

// A UCSC track line: type, name, description, colour "R,G,B" and the view
// limits of the unit.
std::string trackLine(std::string_view type, const std::string& name, const std::string& description,
                      std::string_view color, const TrackOptions& o, int32_t W);

// Four columns a line: chrom, start, end, value.
std::string bedGraphText(const std::string& chrom, const std::vector<Interval>& intervals);

std::string profileBedGraph(const ComparisonState& st, const TrackOptions& o);

// One line of the random expectation over the profile's extent; none where
// the run has no random expectation.
std::optional<std::string> expectationBedGraph(const ComparisonState& st, const TrackOptions& o,
                                               ExpectationLine line);

}  // namespace trelvane::tracks
