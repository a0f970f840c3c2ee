// cpg_islands.h -- CpG islands of the longest sequence, as a BED of the UCSC island table's columns and as GFF3.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tracks/profile_track.h"

namespace trelvane::tracks {

// The usual criteria: longer than minLength bases, a G + C share of at
// least minGc, observed / expected CpG above minObsExp.
struct IslandRule {
  int64_t minLength = 200;
  double minGc = 0.5;
  double minObsExp = 0.6;
};

struct Island {
  int64_t runFrom = 0, runTo = 0;  // 1-based run positions, inclusive
  int64_t cpg = 0, c = 0, g = 0;
  int64_t length() const { return runTo - runFrom + 1; }
  double obsExp() const;           // cpg * length / (c * g)
};

// Windows of minLength bases without N that pass the G + C and
// observed / expected criteria, slid base by base; overlapping ones merged;
// each stretch cut to its first C and last G of a CpG and kept where the
// whole of it passes all three criteria.
std::vector<Island> findIslands(const ComparisonState& st, const IslandRule& rule);

// chrom, start, end, name "CpG: n", length, CpG count, G + C count,
// percent CpG, percent G + C, observed / expected.
std::string islandsBed(const ComparisonState& st, const std::vector<Island>& islands, const TrackOptions& o);

// "##gff-version 3", "##sequence-region", one CpG_island feature a line,
// 1-based inclusive.
std::string islandsGff(const ComparisonState& st, const std::vector<Island>& islands, const TrackOptions& o);

}  // namespace trelvane::tracks
