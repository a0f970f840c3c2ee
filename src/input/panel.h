// panel.h -- the File tab's logic: the route of a file, CpG mode, the range and window fields.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "state/form.h"
#include "state/state.h"

namespace trelvane {

// The four ways a file arrives; side 0 (longest) for the first two.
enum class Route { GBLongDrop, BevelButton0, GBShortDrop, BevelButton1 };

// The route of a chosen or dropped file (a nil path: a cancelled dialog or a
// drop without a file). The file is stored in f of the side, then a result
// file goes to litprevious (with graph) and a sequence file to litlongue or
// litshort, and PBRUN (and, for the dialogs, PBDot) is enabled by the rule
// of the route. A file that cannot be opened is refused with a message in
// Message before anything changes. Returns why a file could not be read
// ("" when it was read, or the dialog cancelled), for a front end's own words.
std::string openFile(ComparisonState& st, Form& form, Route route,
                     const std::optional<std::string>& path, const std::function<void()>& graph);

// "Show CpG islands": enables PBRUN only for a longest file in CpG mode, and
// hides the shortest side while the box is on.
void CBCPG_Action(ComparisonState& st, Form& form);

// The analysis range: each copies its text to the plot's bound and sets EFSD
// to the width of the range.
void EFAnaFrom_TextChange(ComparisonState& st, Form& form);
void EFAnaTo_TextChange(ComparisonState& st, Form& form);

// The window size is at most 255.
void EFWS_LostFocus(Form& form);

}  // namespace trelvane
