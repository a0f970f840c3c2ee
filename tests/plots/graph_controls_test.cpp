// graph_controls_test.cpp -- the Graphic and Pref handlers: flag and draw, units, sizes, tabs, return keys.
#include <gtest/gtest.h>

#include <string>

#include "plots/graph_controls.h"
#include "plots/picture.h"
#include "test_state.h"

namespace trelvane {
namespace {

using testing::setProfile;

using Handler = void (*)(ComparisonState&, Form&);

// The handlers as the window runs them: changegraph set afterwards, Graph called at once.
const struct {
  const char* name;
  Handler handler;
  bool flag, draw;
} kRows[] = {
    {"EFFrom_LostFocus", EFFrom_LostFocus, false, true},  // sets the flag, then Graph clears it
    {"EFTo_LostFocus", EFTo_LostFocus, false, true},         {"CBUsePoint_Action", CBUsePoint_Action, false, true},
    {"CBUsePoint1_Action", CBUsePoint1_Action, false, true}, {"CBSymetrie_Action", CBSymetrie_Action, false, true},
    {"CBHOSD_Action", CBHOSD_Action, false, true},           {"CBFreqIB_Action", CBFreqIB_Action, false, true},
    {"CBFreqIB1_Action", CBFreqIB1_Action, false, true},     {"CBMovingShort_Action", CBMovingShort_Action, true, false},
    {"CBMaxIdent_Action", CBMaxIdent_Action, true, false},   {"CBMaxMin_Action", CBMaxMin_Action, true, false},
    {"EF_MinX_LostFocus", EF_MinX_LostFocus, true, false},   {"EF_MaxX_LostFocus", EF_MaxX_LostFocus, true, false},
    {"EFHeight_LostFocus", EFHeight_LostFocus, true, false}, {"EFwidth_LostFocus", EFwidth_LostFocus, true, false},
    {"RadioButton1_Action", RadioButton1_Action, false, false},
};

TEST(GraphControls, EachHandlerFlagsOrDrawsAsItsRowSays) {
  for (const auto& row : kRows) {
    ComparisonState st;
    setProfile(st, 1000, 30, {});
    st.changegraph = false;
    Form form;
    row.handler(st, form);
    EXPECT_EQ(st.changegraph, row.flag) << row.name;
    EXPECT_EQ(st.pct != nullptr, row.draw) << row.name;
  }
  // with no data, leaving EFFrom stops at the guard with the flag cleared
  ComparisonState st;
  st.open();
  Form form;
  form.EFFrom = "12";
  EFFrom_LostFocus(st, form);
  EXPECT_FALSE(st.changegraph);
  EXPECT_EQ(st.pct, nullptr);
  EXPECT_EQ(form.EFFrom, "12");
}

TEST(GraphControls, PrefChangesRedrawOnceWhenGraphicOpens) {
  for (Handler h : {CBMovingShort_Action, CBMaxIdent_Action, CBMaxMin_Action}) {
    ComparisonState st;
    setProfile(st, 1000, 30, {});
    Form form;
    form.TabPanel1Value = 3;
    TabPanel1_Change(st, form);  // the due first drawing
    ASSERT_TRUE(st.pct);
    auto first = st.pct;
    h(st, form);
    EXPECT_EQ(st.pct, first);
    form.TabPanel1Value = 3;
    TabPanel1_Change(st, form);
    auto second = st.pct;
    EXPECT_NE(second, first);
    EXPECT_FALSE(st.changegraph);
    TabPanel1_Change(st, form);
    EXPECT_EQ(st.pct, second);
  }
}

// The unit converts the bounds through the window size field (not windgraph), as texts.
TEST(GraphControls, UnitConversionGoesThroughTheWindowSizeField) {
  ComparisonState st;
  setProfile(st, 1000, 20, {});
  Form form;
  form.EFWS = "30";
  form.EF_MinX = "3", form.EF_MaxX = "29";
  CBFreqIB_Action(st, form);
  EXPECT_EQ(form.EF_MinX + " " + form.EF_MaxX, "0.1 0.9");
  CBFreqIB1_Action(st, form);
  EXPECT_EQ(form.EF_MinX + " " + form.EF_MaxX, "3 27");  // the round trip loses precision
  form.EFWS = "";
  form.EF_MinX = "0";
  form.EF_MaxX = "29";
  CBFreqIB_Action(st, form);
  EXPECT_EQ(form.EF_MinX + " " + form.EF_MaxX, "NaN Infinity");  // divided by zero
  EXPECT_FALSE(st.changegraph);
}

TEST(GraphControls, MeanAndSdChoiceEnablesSymmetricSd) {
  ComparisonState st;
  setProfile(st, 1000, 30, {});
  Form form;
  form.CBHOSD = false, form.RadioButton1 = true;
  RadioButton1_Action(st, form);
  EXPECT_TRUE(form.CBSymetrieEnabled);
  EXPECT_EQ(st.pct, nullptr);  // picking it draws nothing
  form.CBSymetrie = true;

  form.CBHOSD = true, form.RadioButton1 = false;
  CBHOSD_Action(st, form);
  EXPECT_FALSE(form.CBSymetrie || form.CBSymetrieEnabled);
  EXPECT_TRUE(st.pct);

  form.CBSymetrie = form.CBSymetrieEnabled = true;
  RadioButton1_Action(st, form);  // RadioButton1 is off
  EXPECT_FALSE(form.CBSymetrie || form.CBSymetrieEnabled);

  form.CBHOSD = false;
  CBHOSD_Action(st, form);
  EXPECT_TRUE(form.CBSymetrieEnabled);
}

TEST(GraphControls, SizeFieldsAreHeldToTheWindowLimits) {
  const struct { const char *text, *height, *width; } cases[] = {
      {"300", "450", "400"}, {"5000", "1200", "1600"}, {"", "450", "400"}, {"700", "700", "700"},
      {"1400", "1200", "1400"}};
  for (const auto& c : cases) {
    ComparisonState st;
    Form form;
    form.EFHeight = form.EFwidth = c.text;
    EFHeight_LostFocus(st, form);
    EFwidth_LostFocus(st, form);
    EXPECT_EQ(form.EFHeight + " " + std::to_string(form.Height), std::string(c.height) + " " + c.height);
    EXPECT_EQ(form.EFwidth + " " + std::to_string(form.Width), std::string(c.width) + " " + c.width);
  }
  Form form;
  form.Width = 1000, form.Height = 700;
  fitCanvas1(form);
  EXPECT_TRUE(form.Canvas1Width == 952 && form.Canvas1Height == 500);
}

TEST(GraphControls, ResizeOffTheGraphicTabDrawsLaterAtTheNewSize) {
  ComparisonState st;
  setProfile(st, 1000, 30, {});
  st.changegraph = false;
  Form form;
  form.TabPanel1Value = 1;
  form.Width = 800, form.Height = 600;
  fitCanvas1(form);
  Event_Resized(st, form);
  EXPECT_EQ(form.EFwidth + "x" + form.EFHeight, "800x600");
  EXPECT_TRUE(st.changegraph);
  EXPECT_EQ(st.pct, nullptr);

  form.TabPanel1Value = 3;
  TabPanel1_Change(st, form);
  ASSERT_TRUE(st.pct);
  EXPECT_TRUE(st.pct->width == 752 && st.pct->height == 400);

  Event_Resized(st, form);  // on Graphic: at once
  EXPECT_FALSE(st.changegraph);
}

TEST(GraphControls, TabChangeShowsRunControlsOnlyOnFileAndEnablesButtons) {
  ComparisonState st;
  st.open();
  Form form;
  form.TabPanel1Value = 2;
  TabPanel1_Change(st, form);
  EXPECT_FALSE(form.PBRUNVisible || form.ProgressBar1Visible);

  st.f[0] = "long.fa";
  form.TabPanel1Value = 0;
  TabPanel1_Change(st, form);
  EXPECT_TRUE(form.PBRUNVisible && form.ProgressBar1Visible);
  EXPECT_FALSE(form.PBRUNEnabled);  // comparison mode needs both
  form.CBCPG = true;
  TabPanel1_Change(st, form);
  EXPECT_TRUE(form.PBRUNEnabled);
  st.f[1] = "short.fa";
  form.CBCPG = false;
  TabPanel1_Change(st, form);
  EXPECT_TRUE(form.PBRUNEnabled);

  // a result file dropped alone: no dot plot
  st.f[1].reset();
  form.PBDotEnabled = true;
  form.TabPanel1Value = 3;
  TabPanel1_Change(st, form);
  EXPECT_FALSE(form.PBDotEnabled);
  st.f[1] = "short.fa";
  TabPanel1_Change(st, form);
  EXPECT_TRUE(form.PBDotEnabled);
}

TEST(GraphControls, ReturnKeyPartners) {
  const std::pair<const char*, const char*> pairs[] = {
      {"EFFrom", "EFTo"}, {"EFHeight", "EFwidth"}, {"EF_MinX", "EF_MaxX"}};
  for (auto [a, b] : pairs) {
    EXPECT_STREQ(returnKeyPartner(a), b);
    EXPECT_STREQ(returnKeyPartner(b), a);
  }
  EXPECT_EQ(returnKeyPartner("EFWS"), nullptr);
  EXPECT_EQ(returnKeyPartner(nullptr), nullptr);
}

}  // namespace
}  // namespace trelvane
