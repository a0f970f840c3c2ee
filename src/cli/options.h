// options.h -- the command line of trelvane-cli compare and cpg, parsed into a plain struct.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cli/track_outputs.h"

namespace trelvane::cli {

// How positions are numbered in the outputs: along the run (1 at the first
// base read), or in the record's own coordinates (SequenceOrigin).
enum class Coordinates { Run, Record };

// What the user asked for. Field values are kept as typed: they go into the
// window's fields as text, where the run reads them as a user's typing.
struct ComparisonOptions {
  bool cpg = false;
  std::string longPath;
  std::string shortPath;  // empty in cpg mode

  std::optional<std::string> window;       // EFWS
  std::optional<std::string> from;         // EFAnaFrom
  std::optional<std::string> to;           // EFAnaTo
  std::optional<std::string> resamplings;  // EFSD
  std::optional<std::string> identities;   // EFIdentities

  // A record or region of each file (samtools' NAME:FROM-TO), also given as
  // LONG:REGION where that is unambiguous; none joins every record.
  std::optional<std::string> longRegion, shortRegion;
  Coordinates coordinates = Coordinates::Run;  // --coordinates record|run

  bool longComplement = false, longReverse = false, longRemoveN = false;
  bool shortComplement = false, shortReverse = false, shortRemoveN = false;
  bool showLong = false, showShort = false;

  std::optional<uint64_t> seed;
  std::optional<std::string> kernel;  // the scan's row kernel: auto, scalar, generic, sse2, avx2, avx512
  std::optional<int> threads;         // the most threads of the run; 0 for every core

  std::optional<std::string> report;
  std::optional<std::string> rows;
  std::optional<std::string> result;
  std::optional<std::string> svg, pdf, png;
  std::optional<std::string> dotplot;
  TrackOutputs tracks;  // genome-browser tracks, segments, CpG islands

  std::optional<int> model;  // PupModel's ListIndex: 0 identity, 1 tstv, 2 general
  std::optional<std::string> aligned1, aligned2;

  bool quiet = false;
  bool help = false;
  bool version = false;
};

// Parses the arguments that follow the command's name. On a usage error it
// returns false with one sentence in *error (no program name, no newline).
// --help and --version stop the parse: the flag is set and nothing else is
// checked.
bool parseComparisonOptions(bool cpg, const std::vector<std::string>& args,
                            ComparisonOptions& options, std::string* error);

// The arguments of compare (cpg) with every file they read passed through
// resolve: the operands and the files of --aligned. The outputs are left as
// they are; options holds the arguments as they were given. False with the
// usage error in *error.
bool resolveComparisonInputs(bool cpg, std::vector<std::string>& args,
                             const std::function<std::string(const std::string&)>& resolve,
                             ComparisonOptions& options, std::string* error);

// The --help text of compare and cpg.
std::string comparisonHelp();

// The picture format a file name asks for by its extension ("svg", "pdf",
// "png"), or empty when it names none of them.
std::string pictureFormatOf(const std::string& path);

}  // namespace trelvane::cli
