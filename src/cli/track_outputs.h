// track_outputs.h -- the genome-browser outputs of compare, cpg and redraw: options, checks and writing.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli/console.h"
#include "state/state.h"
#include "tracks/cpg_islands.h"
#include "tracks/profile_track.h"
#include "tracks/segments.h"

namespace trelvane::cli {

// Which command the options serve: each takes the outputs that its run can give.
enum class TrackCommand { Compare, Cpg, Redraw };

struct TrackOutputs {
  tracks::TrackOptions track;
  std::optional<std::string> bedgraph, bigwig, h0Prefix;
  std::optional<std::string> segments, segmentsTsv;
  std::optional<std::string> minIdentity, minLength, above;  // as typed, checked in checkTrackOutputs
  std::optional<std::string> islandsBed, islandsGff;
  std::optional<std::string> islandLength, islandGc, islandObsExp;
  tracks::SegmentRule segmentRule;
  tracks::IslandRule islandRule;

  bool any() const;
  // The files a run writes, for the check that they can be created.
  std::vector<std::string> files() const;
};

// Appends the options to a command's table. Redraw has its own --unit (the
// drawing's), which the caller passes on to track.unit.
void addTrackOptions(std::vector<Option>& table, TrackOutputs& t, TrackCommand command);

// The segment rule of --min-identity, --min-length and --above as typed;
// false with a usage sentence.
bool readSegmentRule(const std::optional<std::string>& minIdentity, const std::optional<std::string>& minLength,
                     const std::optional<std::string>& above, tracks::SegmentRule& rule, std::string* error);

// After the parse: numbers and combinations; false with a usage sentence.
bool checkTrackOutputs(TrackOutputs& t, TrackCommand command, bool haveSequence, std::string* error);

// The help lines of the options: the unit's (redraw has its own), those of
// a comparison (random expectation, segments), those of CpG islands.
std::string trackHelp(bool unit, bool comparison, bool islands);

// The file of one line of the random expectation: PREFIX.mean.bedGraph ...
std::string expectationPath(const std::string& prefix, int line);

// Writes every output asked for from the state after a run or a read;
// returns kExitOk, or kExitBadInput after its one-line message.
int writeTrackOutputs(const ComparisonState& st, const TrackOutputs& t, const Console& console);

}  // namespace trelvane::cli
