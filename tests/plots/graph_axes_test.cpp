// graph_axes_test.cpp -- Graph's first half: the guard, the range fields, the scales, ticks and labels.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "plots/graph.h"
#include "plots/picture.h"
#include "test_state.h"

namespace trelvane {
namespace {

using plots::CurveShape;
using plots::RGB;
using plots::StringShape;
using testing::setProfile;
using testing::shapes;
using testing::texts;

constexpr RGB kBlack{0, 0, 0};

// The Y tick lines: black, from column 29 to 25.
std::vector<CurveShape> yTicks(const ComparisonState& st) {
  std::vector<CurveShape> out;
  for (const auto& c : testing::linesIn(st, kBlack))
    if (c.X == 29 && c.X2 == 25) out.push_back(c);
  return out;
}

// The X tick lines of one length (3 small, 5 labelled) under the axis row.
std::vector<double> xTicks(const ComparisonState& st, double ybase, double length) {
  std::vector<double> out;
  for (const auto& c : testing::linesIn(st, kBlack))
    if (c.Y == ybase && c.Y2 == ybase + length) out.push_back(c.X);
  return out;
}

std::vector<std::string> labelsAtX(const ComparisonState& st, double x) {
  std::vector<std::string> out;
  for (const auto& t : texts(st))
    if (t.X == x) out.push_back(t.Text);
  return out;
}

TEST(GraphGuard, NoBasesOrNoWindowLeavesDrawingAndFieldsButClearsMessageAndFlag) {
  for (auto [nbbases, w] : {std::pair{0, 30}, std::pair{1000, 0}}) {
    ComparisonState st;
    setProfile(st, nbbases, w, {});
    auto before = std::make_shared<plots::Picture>(10, 10);
    st.pct = before;
    st.changegraph = true;
    Form form;
    form.ST_messGraph = "old";
    form.EFFrom = "abc";
    form.EFTo = "-5";
    Graph(st, form);
    EXPECT_EQ(st.pct, before);
    EXPECT_EQ(st.pct->Objects.Count(), 0u);
    EXPECT_EQ(form.ST_messGraph, "");
    EXPECT_FALSE(st.changegraph);
    EXPECT_EQ(form.EFFrom, "abc");
    EXPECT_EQ(form.EFTo, "-5");
  }
}

TEST(GraphRange, EFToOutsideTheProfileShowsMax) {
  for (const char* text : {"MAX", "0", "-5", "abc", "971", ""}) {
    ComparisonState st;
    setProfile(st, 1000, 30, {});
    Form form;
    form.EFTo = text;
    Graph(st, form);
    EXPECT_EQ(form.EFTo, "max") << text;
  }
  ComparisonState st;
  setProfile(st, 1000, 30, {});
  Form form;
  form.EFTo = "970";  // nbbases - windgraph, the last position that fits
  Graph(st, form);
  EXPECT_EQ(form.EFTo, "970");
}

TEST(GraphRange, EFFromAtOrBeyondTheEndOrNegativeShowsZero) {
  for (const char* text : {"500", "600", "-1"}) {
    ComparisonState st;
    setProfile(st, 1000, 30, {});
    Form form;
    form.EFTo = "500";
    form.EFFrom = text;
    Graph(st, form);
    EXPECT_EQ(form.EFFrom, "0") << text;
    EXPECT_EQ(labelsAtX(st, 30), std::vector<std::string>{"0"}) << text;
  }
  ComparisonState st;
  setProfile(st, 1000, 30, {});
  Form form;
  form.EFTo = "500";
  form.EFFrom = "499";
  Graph(st, form);
  EXPECT_EQ(form.EFFrom, "499");
}

TEST(GraphRange, EFFromWithoutANumberDrawsFromZeroAndKeepsItsText) {
  ComparisonState st;
  setProfile(st, 1000, 30, {});
  Form form;
  form.EFTo = "500";
  form.EFFrom = "xyz";
  Graph(st, form);
  EXPECT_EQ(form.EFFrom, "xyz");
  EXPECT_EQ(labelsAtX(st, 30), std::vector<std::string>{"0"});
}

TEST(GraphYAxis, FrequencyTicksEveryTenthWithTheDecimalPointRule) {
  ComparisonState st;
  setProfile(st, 1000, 30, {});
  Form form;
  Graph(st, form);
  const auto& all = shapes(st);
  ASSERT_FALSE(all.empty());
  const auto& axis = std::get<CurveShape>(all[0]);
  EXPECT_EQ(axis.X, 29);
  EXPECT_EQ(axis.Y, 20);
  EXPECT_EQ(axis.Y2, 230);

  auto ticks = yTicks(st);
  ASSERT_EQ(ticks.size(), 11u);
  for (int t = 0; t <= 10; ++t) EXPECT_DOUBLE_EQ(ticks[t].Y, 230 - 21 * t) << t;
  // tick then label, from bottom to top
  const auto& first = std::get<StringShape>(all[2]);
  EXPECT_EQ(first.Text, "0  ");
  EXPECT_EQ(first.X, 10);
  EXPECT_DOUBLE_EQ(first.Y, 235);
  EXPECT_EQ(first.TextSize, 14);
  EXPECT_FALSE(first.Bold);
  EXPECT_EQ(first.TextFont, "Times");
  EXPECT_EQ(std::get<StringShape>(all[4]).Text, "0.1");
  EXPECT_EQ(std::get<StringShape>(all[22]).Text, "1  ");
}

TEST(GraphYAxis, DecimalPointRuleKeepsOnlyTheFirstCharacterOfLongTexts) {
  ComparisonState st;
  setProfile(st, 1000, 30, {});
  Form form;
  form.EF_MinX = "-0.2";
  form.EF_MaxX = "1.1";
  Graph(st, form);
  auto labels = labelsAtX(st, 10);
  ASSERT_EQ(labels.size(), 14u);
  EXPECT_EQ(labels[0], "-  ");   // "-0.2"
  EXPECT_EQ(labels[13], "1.1");  // three characters keep their middle point
}

TEST(GraphYAxis, TicksStopAtTheLastWholeTenthBelowTheTop) {
  ComparisonState st;
  setProfile(st, 1000, 30, {});
  Form form;
  form.EF_MaxX = "0.37";
  Graph(st, form);
  auto labels = labelsAtX(st, 10);
  ASSERT_EQ(labels.size(), 4u);
  EXPECT_EQ(labels.back(), "0.3");
  // the scale still runs up to 0.37 at row 20: 0.3 stands at 230 - 210 * 0.3 / 0.37
  EXPECT_NEAR(yTicks(st).back().Y, 230 - 210 * 0.3 / 0.37, 1e-3);
}

TEST(GraphYAxis, TicksStartAtTheTenthBelowAFractionalBottom) {
  ComparisonState st;
  setProfile(st, 1000, 30, {});
  Form form;
  form.EF_MinX = "0.25";
  Graph(st, form);
  auto labels = labelsAtX(st, 10);
  ASSERT_FALSE(labels.empty());
  EXPECT_EQ(labels.front(), "0.2");
  EXPECT_GT(yTicks(st).front().Y, 230);  // below the X axis
}

TEST(GraphYAxis, NumberUnitTicksEveryIntegerWithPlainLabels) {
  ComparisonState st;
  setProfile(st, 1000, 20, {});
  Form form;
  form.CBFreqIB = false;
  form.CBFreqIB1 = true;
  form.EF_MinX = "2.7";
  form.EF_MaxX = "8.5";
  Graph(st, form);
  auto labels = labelsAtX(st, 10);
  EXPECT_EQ(labels, (std::vector<std::string>{"2", "3", "4", "5", "6", "7", "8"}));
}

TEST(GraphYAxis, EqualBoundsGiveRowsThatAreNotFinite) {
  ComparisonState st;
  setProfile(st, 1000, 30, {});
  Form form;
  form.EF_MinX = "0.5";
  form.EF_MaxX = "0.5";
  Graph(st, form);
  auto ticks = yTicks(st);
  ASSERT_EQ(ticks.size(), 1u);
  EXPECT_FALSE(std::isfinite(ticks[0].Y));
  EXPECT_FALSE(st.changegraph);
}

TEST(GraphYAxis, InfiniteTopDrawsNoTickAndEnds) {
  ComparisonState st;
  setProfile(st, 1000, 30, {});
  Form form;
  form.EF_MaxX = "Infinity";
  Graph(st, form);
  EXPECT_TRUE(yTicks(st).empty());
  ASSERT_TRUE(st.pct);
}

TEST(GraphXAxis, ARangeOfExactly1000IsLabelledEvery100) {
  ComparisonState st;
  setProfile(st, 1030, 30, {});  // posto 1000
  Form form;
  Graph(st, form);
  auto labels = texts(st);
  std::vector<std::string> xLabels;
  for (const auto& t : labels)
    if (t.Y == 248) xLabels.push_back(t.Text);
  EXPECT_EQ(xLabels, (std::vector<std::string>{"0", "100", "200", "300", "400", "500", "600", "700", "800", "900",
                                                "1000"}));
  EXPECT_EQ(xTicks(st, 230, 3).size(), 101u);  // every 10
  EXPECT_NEAR(xTicks(st, 230, 5).back(), 322, 1e-4);
}

TEST(GraphXAxis, TicksCountFromTheFirstDisplayedPosition) {
  ComparisonState st;
  setProfile(st, 2000, 30, {});
  Form form;
  form.EFFrom = "137";
  form.EFTo = "637";
  Graph(st, form);
  std::vector<std::string> xLabels;
  for (const auto& t : texts(st))
    if (t.Y == 248) xLabels.push_back(t.Text);
  EXPECT_EQ(xLabels, (std::vector<std::string>{"137", "237", "337", "437", "537", "637"}));
}

TEST(GraphXAxis, FewerThanTenPositionsStepByOneInsteadOfHanging) {
  ComparisonState st;
  setProfile(st, 35, 30, {});  // posto 5: the small step is 0.1
  Form form;
  Graph(st, form);
  EXPECT_EQ(xTicks(st, 230, 3).size(), 6u);
  EXPECT_EQ(xTicks(st, 230, 5).size(), 6u);

  ComparisonState one;
  setProfile(one, 30, 30, {});  // nbbases equal to windgraph: a range of 0
  Form form1;
  Graph(one, form1);
  EXPECT_EQ(xTicks(one, 230, 3).size(), 1u);
  EXPECT_FALSE(one.changegraph);
}

TEST(GraphXAxis, ShapeOrderIsYAxisYTicksXAxisSmallTicksLabelledTicks) {
  ComparisonState st;
  setProfile(st, 130, 30, {});  // range 100: small ticks every 10, labels every 100
  Form form;
  form.EF_MaxX = "0.1";
  Graph(st, form);
  std::vector<std::string> kinds;
  for (const auto& s : shapes(st)) {
    if (auto* c = std::get_if<CurveShape>(&s)) {
      if (c->BorderColor != kBlack) continue;
      if (c->X == 29 && c->X2 == 29) kinds.push_back("yaxis");
      else if (c->X == 29) kinds.push_back("ytick");
      else if (c->Y == 230 && c->Y2 == 230) kinds.push_back("xaxis");
      else if (c->Y2 == 233) kinds.push_back("small");
      else if (c->Y2 == 235) kinds.push_back("major");
      else kinds.push_back("other");
    } else {
      kinds.push_back("text");
    }
  }
  std::vector<std::string> expected{"yaxis", "ytick", "text", "ytick", "text", "xaxis"};
  for (int i = 0; i < 11; ++i) expected.push_back("small");
  for (int i = 0; i < 2; ++i) {
    expected.push_back("major");
    expected.push_back("text");
  }
  kinds.resize(expected.size());
  EXPECT_EQ(kinds, expected);
}

}  // namespace
}  // namespace trelvane
