// track_outputs.cpp -- bedGraph, bigWig, segments and CpG islands from the command line.
#include "cli/track_outputs.h"

#include <cstdint>

#include "tracks/bedgraph.h"
#include "tracks/bigwig.h"

namespace trelvane::cli {

bool TrackOutputs::any() const { return !files().empty(); }

std::vector<std::string> TrackOutputs::files() const {
  std::vector<std::string> out;
  for (const auto* f : {&bedgraph, &bigwig, &segments, &segmentsTsv, &islandsBed, &islandsGff})
    if (*f) out.push_back(**f);
  if (h0Prefix)
    for (int k = 0; k < 4; ++k) out.push_back(expectationPath(*h0Prefix, k));
  return out;
}

std::string expectationPath(const std::string& prefix, int line) {
  return prefix + "." + std::string(tracks::expectationSuffix(tracks::kExpectationLines[line])) + ".bedGraph";
}

void addTrackOptions(std::vector<Option>& table, TrackOutputs& t, TrackCommand command) {
  auto field = [&](const char* name, std::optional<std::string> TrackOutputs::*f) {
    table.push_back({name, 1, [&t, f](const std::vector<std::string>& v) {
                       t.*f = v[0];
                       return std::string();
                     }});
  };
  field("bedgraph", &TrackOutputs::bedgraph);
  field("bigwig", &TrackOutputs::bigwig);
  table.push_back({"chrom", 1, [&t](const std::vector<std::string>& v) {
                     if (v[0].empty() || v[0].find_first_of(" \t") != std::string::npos)
                       return "invalid chromosome name '" + v[0] + "': one word without blanks";
                     t.track.chrom = v[0];
                     return std::string();
                   }});
  table.push_back({"anchor", 1, [&t](const std::vector<std::string>& v) {
                     t.track.anchor = v[0] == "first" ? tracks::Anchor::First : tracks::Anchor::Centre;
                     return oneOf("anchor", v[0], {"first", "centre", "center"});
                   }});
  if (command != TrackCommand::Redraw)
    table.push_back({"unit", 1, [&t](const std::vector<std::string>& v) {
                       t.track.unit = v[0] == "number" ? tracks::Unit::Score : tracks::Unit::Fraction;
                       return oneOf("unit", v[0], {"frequency", "number"});
                     }});
  table.push_back({"track-line", 0, [&t](const std::vector<std::string>&) {
                     t.track.trackLine = true;
                     return std::string();
                   }});
  if (command != TrackCommand::Cpg) {
    field("h0-tracks", &TrackOutputs::h0Prefix);
    field("segments", &TrackOutputs::segments);
    field("segments-tsv", &TrackOutputs::segmentsTsv);
    field("min-identity", &TrackOutputs::minIdentity);
    field("min-length", &TrackOutputs::minLength);
    field("above", &TrackOutputs::above);
  }
  if (command != TrackCommand::Compare) {
    field("islands-bed", &TrackOutputs::islandsBed);
    field("islands-gff", &TrackOutputs::islandsGff);
    field("island-length", &TrackOutputs::islandLength);
    field("island-gc", &TrackOutputs::islandGc);
    field("island-obs-exp", &TrackOutputs::islandObsExp);
  }
}

bool readSegmentRule(const std::optional<std::string>& minIdentity, const std::optional<std::string>& minLength,
                     const std::optional<std::string>& above, tracks::SegmentRule& rule, std::string* error) {
  if (minIdentity) {
    const auto v = decimalNumber(*minIdentity, -1, 1);
    if (!v) {
      *error = "invalid --min-identity '" + *minIdentity + "': expected a fraction from 0 to 1, such as 0.70";
      return false;
    }
    rule.minIdentity = *v;
  }
  if (minLength) {
    const auto v = wholeNumber(*minLength, 1, INT32_MAX);
    if (!v) {
      *error = "invalid --min-length '" + *minLength + "': expected a whole number of bases from 1";
      return false;
    }
    rule.minLength = static_cast<int64_t>(*v);
  }
  if (above) {
    if (minIdentity) {
      *error = "--above and --min-identity are two thresholds: give one";
      return false;
    }
    if (!tracks::parseAbove(*above, rule, error)) return false;
  }
  return true;
}

bool checkTrackOutputs(TrackOutputs& t, TrackCommand command, bool haveSequence, std::string* error) {
  t.track.cpg = command == TrackCommand::Cpg;
  if (t.bigwig && *t.bigwig == "-") {
    *error = "--bigwig needs a file name: a bigWig cannot go to standard output";
    return false;
  }
  if (t.h0Prefix && (t.h0Prefix->empty() || *t.h0Prefix == "-")) {
    *error = "--h0-tracks needs the beginning of four file names, such as run/h0";
    return false;
  }
  // conserved segments
  if (!readSegmentRule(t.minIdentity, t.minLength, t.above, t.segmentRule, error)) return false;
  if ((t.minIdentity || t.minLength || t.above) && !t.segments && !t.segmentsTsv) {
    *error = "--min-identity, --min-length and --above need --segments or --segments-tsv";
    return false;
  }
  // CpG islands
  if (t.islandLength) {
    const auto v = wholeNumber(*t.islandLength, 2, INT32_MAX);
    if (!v) {
      *error = "invalid --island-length '" + *t.islandLength + "': expected a whole number of bases from 2";
      return false;
    }
    t.islandRule.minLength = static_cast<int64_t>(*v);
  }
  if (t.islandGc) {
    const auto v = decimalNumber(*t.islandGc, -1, 1);
    if (!v) {
      *error = "invalid --island-gc '" + *t.islandGc + "': expected a fraction from 0 to 1, such as 0.5";
      return false;
    }
    t.islandRule.minGc = *v;
  }
  if (t.islandObsExp) {
    const auto v = decimalNumber(*t.islandObsExp, -1, 1e6);
    if (!v) {
      *error = "invalid --island-obs-exp '" + *t.islandObsExp + "': expected a number, such as 0.6";
      return false;
    }
    t.islandRule.minObsExp = *v;
  }
  if ((t.islandLength || t.islandGc || t.islandObsExp) && !t.islandsBed && !t.islandsGff) {
    *error = "--island-length, --island-gc and --island-obs-exp need --islands-bed or --islands-gff";
    return false;
  }
  if ((t.islandsBed || t.islandsGff) && !haveSequence) {
    *error = "--islands-bed and --islands-gff need the sequence: give it with --long";
    return false;
  }
  return true;
}

std::string trackHelp(bool unit, bool comparison, bool islands) {
  std::string h =
      "\n"
      "Genome-browser tracks (positions 0-based half-open in BED and bedGraph, in\n"
      "the record's coordinates; the chromosome is --chrom, else the record's name):\n"
      "  --bedgraph FILE       the profile: each window's value on its first base\n"
      "  --bigwig FILE         the same as bigWig\n"
      "  --anchor first|centre the base that holds a window's value (default first,\n"
      "                        as the drawing places it)\n";
  if (unit)
    h += "  --unit frequency|number  identity as a fraction of the window (default) or\n"
         "                        the score\n";
  h += "  --chrom NAME          the chromosome column\n"
       "  --track-line          a browser's track line at the head of each text track\n";
  if (comparison && islands) h += "compare only:\n";
  if (comparison)
    h += "  --h0-tracks PREFIX    the random expectation: PREFIX.mean.bedGraph,\n"
         "                        PREFIX.upper.bedGraph and PREFIX.lower.bedGraph (mean\n"
         "                        +/- 2 SD), PREFIX.max.bedGraph\n"
         "  --segments FILE       conserved segments as BED6 (score: mean identity x 1000)\n"
         "  --segments-tsv FILE   the same as a table (1-based, inclusive) with the mean\n"
         "                        and max identity and the best partner's start on the\n"
         "                        shortest sequence\n"
         "  --min-identity F      segments: windows at or above F (default 0.70) ...\n"
         "  --min-length N        ... for at least N positions in a row (default 100)\n"
         "  --above mean+Ksd|mean|max  segments: windows above the random expectation\n";
  if (comparison && islands) h += "cpg only:\n";
  if (islands)
    h += "  --islands-bed FILE    CpG islands, columns of the UCSC island table\n"
         "  --islands-gff FILE    CpG islands as GFF3 (1-based, inclusive)\n"
         "  --island-length N     islands are longer than N bases (default 200)\n"
         "  --island-gc F         with a G + C share of at least F (default 0.5)\n"
         "  --island-obs-exp F    and observed / expected CpG above F (default 0.6)\n";
  return h;
}

int writeTrackOutputs(const ComparisonState& st, const TrackOutputs& t, const Console& console) {
  std::string why;
  int status = kExitOk;
  auto fail = [&](const std::string& text) { status = badInput(console, text); };
  auto write = [&](const std::string& path, const std::string& text) {
    if (!writeOutput(console, path, text, &why)) fail(why);
  };
  const tracks::TrackOptions& o = t.track;
  if (t.bedgraph) write(*t.bedgraph, tracks::profileBedGraph(st, o));
  if (t.bigwig && !tracks::writeProfileBigWig(*t.bigwig, st, o, &why)) fail(why);
  if (t.h0Prefix) {
    for (int k = 0; k < 4; ++k) {
      const auto text = tracks::expectationBedGraph(st, o, tracks::kExpectationLines[k]);
      if (!text) {
        fail("the result holds no random expectation (a CpG run): " + expectationPath(*t.h0Prefix, k) +
             " was not written");
        break;
      }
      write(expectationPath(*t.h0Prefix, k), *text);
    }
  }
  if (t.segments || t.segmentsTsv) {
    const std::optional<double> threshold = tracks::thresholdScore(st, t.segmentRule, &why);
    if (!threshold) {
      fail(why);
    } else {
      const std::vector<tracks::Segment> found = tracks::callSegments(st, t.segmentRule, *threshold);
      if (t.segments) write(*t.segments, tracks::segmentsBed(st, found, o));
      if (t.segmentsTsv) write(*t.segmentsTsv, tracks::segmentsTsv(st, found, o));
    }
  }
  if (t.islandsBed || t.islandsGff) {
    const std::vector<tracks::Island> islands = tracks::findIslands(st, t.islandRule);
    if (t.islandsBed) write(*t.islandsBed, tracks::islandsBed(st, islands, o));
    if (t.islandsGff) write(*t.islandsGff, tracks::islandsGff(st, islands, o));
  }
  return status;
}

}  // namespace trelvane::cli
