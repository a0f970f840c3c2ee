// graph.h -- Graph: the identity profile of the comparison as a picture of shapes.
#pragma once

#include "state/form.h"
#include "state/state.h"

namespace trelvane {

// Rebuilds st.pct from nothing: axes, ticks and labels, the profile curve
// of m2 (column or line mode), the N bars of m0, the reference lines. Reads
// the Graphic and Pref controls of the form (Canvas1Width/Height are the
// canvas size) and writes EFFrom, EFTo and ST_messGraph. With nbbases or
// windgraph 0 it draws nothing and leaves st.pct as it was. Always ends
// with changegraph false.
void Graph(ComparisonState& st, Form& form);

}  // namespace trelvane
