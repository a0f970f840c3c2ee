// graph_controls.h -- the handlers of the Graphic and Pref tabs: when Graph runs, unit and size fields.
#pragma once

#include <optional>
#include <string>

#include "state/form.h"
#include "state/state.h"
#include "tracks/segments.h"

namespace trelvane {

// Each handler runs after the user's action has set its control in the form
// (a radio button's partner already turned off). "Flag" handlers only set
// changegraph, so that opening the Graphic tab redraws; "draw" handlers call
// Graph at once, which leaves changegraph false.

void EFFrom_LostFocus(ComparisonState& st, Form& form);      // flag, draw
void EFTo_LostFocus(ComparisonState& st, Form& form);        // flag, draw
void CBUsePoint_Action(ComparisonState& st, Form& form);     // draw
void CBUsePoint1_Action(ComparisonState& st, Form& form);    // draw
void CBSymetrie_Action(ComparisonState& st, Form& form);     // draw
void CBHOSD_Action(ComparisonState& st, Form& form);         // CBSymetrie's state, draw
void CBFreqIB_Action(ComparisonState& st, Form& form);       // scale fields to frequencies, draw
void CBFreqIB1_Action(ComparisonState& st, Form& form);      // scale fields to numbers, draw
void CBMovingShort_Action(ComparisonState& st, Form& form);  // flag
void CBMaxIdent_Action(ComparisonState& st, Form& form);     // flag
void CBMaxMin_Action(ComparisonState& st, Form& form);       // flag
void EF_MinX_LostFocus(ComparisonState& st, Form& form);     // flag
void EF_MaxX_LostFocus(ComparisonState& st, Form& form);     // flag
// EFHeight held to 450..1200, EFwidth to 400..1600; form.Height / form.Width
// get the value, which the window then applies. Flag.
void EFHeight_LostFocus(ComparisonState& st, Form& form);
void EFwidth_LostFocus(ComparisonState& st, Form& form);
// The rule of the conserved segments in EFSegThreshold and EFSegLength;
// none, with why, where a field holds neither.
std::optional<tracks::SegmentRule> segmentRule(const Form& form, std::string* why);
// A text that is no threshold or length goes back to the default, with why
// in Message. Flag.
void EFSegThreshold_LostFocus(ComparisonState& st, Form& form);
void EFSegLength_LostFocus(ComparisonState& st, Form& form);
void CBShadeSegments_Action(ComparisonState& st, Form& form);  // flag
// CBSymetrie's state only: nothing is drawn and changegraph is left alone.
void RadioButton1_Action(ComparisonState& st, Form& form);
// form.Width/Height hold the new size: the size fields follow, flag, and
// Graph when the Graphic tab is showing.
void Event_Resized(ComparisonState& st, Form& form);
// form.TabPanel1Value holds the new tab: PBRUN and ProgressBar1, the due
// redraw on Graphic, PBDot.
void TabPanel1_Change(ComparisonState& st, Form& form);

// Canvas1 is locked on four sides: 48 pixels narrower, 200 lower than the window.
void fitCanvas1(Form& form);

// The field that Return or Enter in a field moves the focus to, all of its
// text selected; nullptr for a field without a partner.
const char* returnKeyPartner(const char* field);

}  // namespace trelvane
