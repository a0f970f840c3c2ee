// graph.h -- Graph: the identity profile of the comparison as a picture of shapes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "state/form.h"
#include "state/state.h"

namespace trelvane {

// Rebuilds st.pct from nothing: axes, ticks and labels, the profile curve
// of m2 (column or line mode), the N bars of m0, the reference lines. Reads
// the Graphic and Pref controls of the form (Canvas1Width/Height are the
// canvas size) and writes EFFrom, EFTo and ST_messGraph. With nbbases or
// windgraph 0 it draws nothing and leaves st.pct as it was. Always ends
// with changegraph false.
// With CBShadeSegments, the conserved segments (EFSegThreshold over
// EFSegLength positions) lie as pale bands under everything else.
void Graph(ComparisonState& st, Form& form);

// What the profile holds under pixel column x of the last drawing.
struct ProfilePoint {
  int64_t runPos = 0;                // 1-based along the longest sequence
  std::optional<int64_t> recordPos;  // in the record's coordinates
  std::optional<int32_t> score;      // none for a window without a score
  std::optional<double> sds;         // (score - random mean) / random SD
};
std::optional<ProfilePoint> profilePointAt(const ComparisonState& st, const Form& form, double x);
// "Position 120 (chr11:5225583): score 24 of 30, 3.1 SD from the random mean".
std::string profilePointText(const ComparisonState& st, const ProfilePoint& pt);

}  // namespace trelvane
