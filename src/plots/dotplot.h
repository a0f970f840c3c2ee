// dotplot.h -- the dot plot: one pixel a base, a dot where the two sequences hold the same base.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "state/form.h"
#include "state/state.h"
#include "plots/picture.h"

namespace trelvane::plots {

// The displayed range of the longest sequence, 0-based and inclusive.
struct DotRange {
  int32_t dotfrom = 0;
  int32_t dotto = 0;
};

// The size of a new DotWindow and of its Canvas2.
struct DotWindowSize {
  int width = 0, height = 0;
  int canvasWidth = 0, canvasHeight = 0;
};

// DotWindow's size limits. A range wider than MaxWidth is cut at the canvas.
inline constexpr int kDotWindowMin = 64;
inline constexpr int kDotWindowMax = 32000;

// The range as EFFrom and EFTo give it, with the profile's limits; the
// fields are read only (showPlot, Redraw).
DotRange dotRange(const ComparisonState& st, const Form& form);

// A new DotWindow: its size and the picture of its Canvas2.
struct DotPlot {
  DotWindowSize size;
  std::shared_ptr<Picture> picture;
};

// PBDot_Action's reading of the range, which repairs EFTo ("max") and
// EFFrom ("0") as the profile does, and the window's size from it:
// (dotto - dotfrom) + 40 by nbbases1 + 111, held to 64..32000, the canvas
// as wide as the window and 50 lower.
DotWindowSize dotWindowSize(const ComparisonState& st, Form& form);

// showPlot: the picture of Canvas2. Axes, ticks and the four labels in
// Objects, the dots (m1 at j equal to m0 at i, N never) in the dot layer;
// what falls outside the canvas is cut, as on screen.
std::shared_ptr<Picture> showPlot(const ComparisonState& st, const Form& form, int canvasWidth,
                                  int canvasHeight);

// PBDot_Action: dotWindowSize, then showPlot on a canvas of that size.
DotPlot PBDot_Action(const ComparisonState& st, Form& form);

// Writes the dot plot's picture as SVG, PDF or PNG by the extension of
// path, as writePictureFile does. Defined in trelvane_plots_qt.
bool writeDotPlotFile(const DotPlot& plot, const std::string& path, std::string* error);

}  // namespace trelvane::plots
