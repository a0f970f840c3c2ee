// graph_controls.cpp -- the handlers of the Graphic and Pref tabs.
#include "plots/graph_controls.h"

#include <cmath>
#include <cstring>

#include "platform/numtext.h"
#include "plots/graph.h"

namespace trelvane {

void EFFrom_LostFocus(ComparisonState& st, Form& form) {
  st.changegraph = true;
  Graph(st, form);
}

void EFTo_LostFocus(ComparisonState& st, Form& form) {
  st.changegraph = true;
  Graph(st, form);
}

void CBUsePoint_Action(ComparisonState& st, Form& form) { Graph(st, form); }
void CBUsePoint1_Action(ComparisonState& st, Form& form) { Graph(st, form); }
void CBSymetrie_Action(ComparisonState& st, Form& form) { Graph(st, form); }

void CBHOSD_Action(ComparisonState& st, Form& form) {
  if (form.CBHOSD) {
    form.CBSymetrie = false;
    form.CBSymetrieEnabled = false;
  } else {
    form.CBSymetrieEnabled = true;
  }
  Graph(st, form);
}

// The window size comes from the text of EFWS, so a size typed after the
// last run takes part. EF_MinX first, then EF_MaxX.
void CBFreqIB_Action(ComparisonState& st, Form& form) {
  double ws = CDbl(form.EFWS);
  form.EF_MinX = CStr(std::floor(10 * CDbl(form.EF_MinX) / ws) / 10);
  form.EF_MaxX = CStr(std::floor(10 * CDbl(form.EF_MaxX) / ws) / 10);
  Graph(st, form);
}

void CBFreqIB1_Action(ComparisonState& st, Form& form) {
  double ws = CDbl(form.EFWS);
  form.EF_MinX = CStr(std::floor(CDbl(form.EF_MinX) * ws + 0.1));
  form.EF_MaxX = CStr(std::floor(CDbl(form.EF_MaxX) * ws + 0.1));
  Graph(st, form);
}

void CBMovingShort_Action(ComparisonState& st, Form&) { st.changegraph = true; }
void CBMaxIdent_Action(ComparisonState& st, Form&) { st.changegraph = true; }
void CBMaxMin_Action(ComparisonState& st, Form&) { st.changegraph = true; }
void EF_MinX_LostFocus(ComparisonState& st, Form&) { st.changegraph = true; }
void EF_MaxX_LostFocus(ComparisonState& st, Form&) { st.changegraph = true; }

void EFHeight_LostFocus(ComparisonState& st, Form& form) {
  if (Val(form.EFHeight) < 450) form.EFHeight = "450";
  if (Val(form.EFHeight) > 1200) form.EFHeight = "1200";
  form.Height = toInt(Val(form.EFHeight));
  st.changegraph = true;
}

void EFwidth_LostFocus(ComparisonState& st, Form& form) {
  if (Val(form.EFwidth) < 400) form.EFwidth = "400";
  if (Val(form.EFwidth) > 1600) form.EFwidth = "1600";
  form.Width = toInt(Val(form.EFwidth));
  st.changegraph = true;
}

std::optional<tracks::SegmentRule> segmentRule(const Form& form, std::string* why) {
  tracks::SegmentRule rule;
  if (!tracks::parseThreshold(form.EFSegThreshold, rule, why) || !tracks::parseMinLength(form.EFSegLength, rule, why))
    return std::nullopt;
  return rule;
}

void EFSegThreshold_LostFocus(ComparisonState& st, Form& form) {
  tracks::SegmentRule rule;
  std::string why;
  if (!tracks::parseThreshold(form.EFSegThreshold, rule, &why)) {
    form.EFSegThreshold = Form().EFSegThreshold;
    form.Message = why;
  }
  st.changegraph = true;
}

void EFSegLength_LostFocus(ComparisonState& st, Form& form) {
  tracks::SegmentRule rule;
  std::string why;
  if (!tracks::parseMinLength(form.EFSegLength, rule, &why)) {
    form.EFSegLength = Form().EFSegLength;
    form.Message = why;
  }
  st.changegraph = true;
}

void CBShadeSegments_Action(ComparisonState& st, Form&) { st.changegraph = true; }

void RadioButton1_Action(ComparisonState&, Form& form) {
  if (!form.RadioButton1) {
    form.CBSymetrie = false;
    form.CBSymetrieEnabled = false;
  } else {
    form.CBSymetrieEnabled = true;
  }
}

void Event_Resized(ComparisonState& st, Form& form) {
  form.EFHeight = Str(static_cast<int32_t>(form.Height));
  form.EFwidth = Str(static_cast<int32_t>(form.Width));
  st.changegraph = true;
  if (form.TabPanel1Value == 3) Graph(st, form);
}

void TabPanel1_Change(ComparisonState& st, Form& form) {
  int v = form.TabPanel1Value;
  // PBRUN and ProgressBar1 are no children of the tab panel.
  form.PBRUNVisible = v == 0;
  form.ProgressBar1Visible = v == 0;
  bool longest = st.f[0].has_value(), shortest = st.f[1].has_value();
  if (v == 0) form.PBRUNEnabled = (longest && shortest && !form.CBCPG) || (longest && form.CBCPG);
  if (v == 3 && st.changegraph) Graph(st, form);
  if (v == 3) form.PBDotEnabled = longest && shortest;
}

void fitCanvas1(Form& form) {
  form.Canvas1Width = form.Width - 48;
  form.Canvas1Height = form.Height - 200;
}

const char* returnKeyPartner(const char* field) {
  static constexpr const char* kPartners[][2] = {
      {"EFFrom", "EFTo"},     {"EFTo", "EFFrom"},   {"EFHeight", "EFwidth"},
      {"EFwidth", "EFHeight"}, {"EF_MinX", "EF_MaxX"}, {"EF_MaxX", "EF_MinX"},
  };
  if (!field) return nullptr;
  for (const auto& pair : kPartners)
    if (std::strcmp(pair[0], field) == 0) return pair[1];
  return nullptr;
}

}  // namespace trelvane
