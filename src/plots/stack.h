// stack.h -- several profiles against one reference drawn as stacked panels on one axis, under an
// annotation track of gene models, with their random expectation lines, shaded segments and a legend.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "plots/picture.h"

namespace trelvane::plots {

// Coordinates on the reference axis are 0-based and half-open, [start, end).
struct StackValue {
  int64_t start = 0, end = 0;
  double value = 0;  // in the panels' unit, 0 to StackFigure::top
};

// What a shaded segment overlaps in the annotation, which gives its colour.
enum class SegmentKind { Exon, UTR, NonCoding, Unannotated };

struct StackSegment {
  int64_t start = 0, end = 0;
  SegmentKind kind = SegmentKind::Unannotated;
};

// The random expectation of a run over the stretch it analysed: each chunk
// of a comparison run in pieces has its own.
struct StackExpectation {
  int64_t start = 0, end = 0;
  double mean = 0, upper = 0, max = 0;  // mean, mean + 2 SD, maximum
};

struct StackPanel {
  std::string name;
  std::vector<StackValue> values;  // sorted, not overlapping
  std::vector<StackExpectation> expectations;
  std::vector<StackSegment> segments;
};

struct StackGene {
  std::string name;
  char strand = '.';
  int64_t start = 0, end = 0;
  std::vector<StackValue> exons, utrs;  // value unused
};

struct StackFigure {
  std::string title;       // above the figure
  int64_t from = 0, to = 0;  // the axis's extent
  double bottom = 0, top = 1;  // the panels' scale; values below the bottom stand on it
  std::string unit;        // the panels' unit, beside their scale
  bool annotated = false;  // an annotation was given (legend of the segment colours)
  std::vector<StackGene> genes;
  std::vector<StackPanel> panels;
};

// Fill colours of the segments, by kind.
RGB segmentColor(SegmentKind kind);

// The figure, width pixels wide; its height follows from the panels.
Picture drawStack(const StackFigure& figure, int width = 1000);

// What lies under a point of the figure drawn `width` pixels wide: the
// panel (index into figure.panels) and the reference position (0-based) of
// the pixel column; none outside the panels' plot areas.
struct StackPoint {
  int panel = 0;
  int64_t position = 0;
};
std::optional<StackPoint> stackPointAt(const StackFigure& figure, int width, double x, double y);

// "5,225,464": a position with its thousands marked, as genome browsers show them.
std::string groupedNumber(int64_t v);

}  // namespace trelvane::plots
