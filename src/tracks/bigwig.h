// bigwig.h -- the profile as a bigWig file, through libBigWig.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tracks/profile_track.h"

namespace trelvane::tracks {

// Writes intervals (sorted, non-overlapping) of one chromosome of `size`
// bases to path. False with the reason in *why.
bool writeBigWig(const std::string& path, const std::string& chrom, int64_t size,
                 const std::vector<Interval>& intervals, std::string* why);

// The profile of the run, as profileBedGraph gives it.
bool writeProfileBigWig(const std::string& path, const ComparisonState& st, const TrackOptions& o,
                        std::string* why);

}  // namespace trelvane::tracks
