// stack_figure.h -- result files against one reference made into a stacked figure: panels of
// profiles, their random expectation and conserved segments, over the reference's gene models.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "annotation/annotation.h"
#include "plots/stack.h"
#include "tracks/segments.h"

namespace trelvane::stack {

// One panel: a comparison's result file, or a profile track (.bedGraph, as
// compare writes it with --bedgraph, such as the joined tracks of a
// comparison run in chunks). Beside a track PATH.bedGraph, the files
// PATH.mean.bedGraph, PATH.upper.bedGraph and PATH.max.bedGraph (compare's
// --h0-tracks PATH) give its random expectation where they exist.
struct PanelSource {
  std::string path;
  std::string name;  // "" for the shortest sequence's record, else the file's name
};

// True for a file name of a profile track: .bedGraph, .bedgraph or .bg.
bool isTrackPath(const std::string& path);

struct StackRequest {
  std::vector<PanelSource> panels;
  std::optional<std::string> annotation;  // GFF3 or BED of the reference
  std::string seqid;                      // the annotation's name of the reference; "" for its record
  std::string title;                      // "" for "Identity along REFERENCE"
  bool segments = true;
  tracks::SegmentRule rule;
  std::optional<int64_t> from, to;        // the axis shown, 1-based inclusive, reference coordinates
  double floor = 0.5;                     // the identity at the panels' bottom
  bool recordCoordinates = true;
};

// A conserved segment of a panel, joined across its chunks.
struct PanelSegment {
  std::string panel;
  int64_t start = 0, end = 0;  // 0-based half-open, axis coordinates
  int64_t windows = 0;
  double meanIdentity = 0, maxIdentity = 0;
  annotation::Overlap overlap = annotation::Overlap::NonCoding;
};

struct StackResult {
  plots::StackFigure figure;
  std::string chrom;  // the reference's name on the axis
  std::vector<PanelSegment> segments;
  // The read-out of the figure's panels: positions and scores as the tracks give them.
  struct PanelData {
    std::vector<plots::StackValue> values;
    double mean = 0, sd = 0;  // random expectation in identity units; sd 0 when there is none
    int32_t W = 0;            // 0 for a track, which does not tell it
    int64_t runFrom = 0;      // the record's position of the run's base 1 (forward reads), 0 unknown
  };
  std::vector<PanelData> data;
};

// Reads every result file, checks that they share their longest sequence,
// reads the annotation, calls the segments and classifies them. False with
// one line in *why.
bool buildStack(const StackRequest& request, StackResult& result, std::string* why);

// The segments of every panel as a table: panel, chrom, start and end
// (1-based inclusive), length, windows, mean and max identity, overlap.
std::string segmentsTable(const StackResult& result);

}  // namespace trelvane::stack
