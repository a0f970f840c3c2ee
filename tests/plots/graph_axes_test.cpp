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
using testing::setProfile;

// The labels of the Y axis (at column 10) or of the X axis (on row 248), joined by "|".
std::string labels(const ComparisonState& st, bool yAxis) {
  std::string out;
  for (const auto& t : testing::texts(st))
    if (yAxis ? t.X == 10 : t.Y == 248) out += (out.empty() ? "" : "|") + t.Text;
  return out;
}

// The Y tick lines (from column 29 to 25), or the X ticks of one length (3 small, 5 labelled).
std::vector<CurveShape> yTicks(const ComparisonState& st) {
  std::vector<CurveShape> out;
  for (const auto& c : testing::linesIn(st, {0, 0, 0}))
    if (c.X == 29 && c.X2 == 25) out.push_back(c);
  return out;
}
std::vector<double> xTicks(const ComparisonState& st, double length) {
  std::vector<double> out;
  for (const auto& c : testing::linesIn(st, {0, 0, 0}))
    if (c.Y == 230 && c.Y2 == 230 + length) out.push_back(c.X);
  return out;
}

TEST(GraphGuard, NoBasesOrNoWindowLeavesDrawingAndFieldsButClearsMessageAndFlag) {
  for (auto [nbbases, w] : {std::pair{0, 30}, std::pair{1000, 0}}) {
    ComparisonState st;
    setProfile(st, nbbases, w, {});
    auto before = std::make_shared<plots::Picture>(10, 10);
    st.pct = before;
    Form form;
    form.ST_messGraph = "old";
    form.EFFrom = "abc";
    form.EFTo = "-5";
    Graph(st, form);
    EXPECT_EQ(st.pct, before);
    EXPECT_EQ(st.pct->Objects.Count(), 0u);
    EXPECT_EQ(form.ST_messGraph, "");
    EXPECT_FALSE(st.changegraph);
    EXPECT_EQ(form.EFFrom + form.EFTo, "abc-5");
  }
}

// 1000 positions, window 30: EFTo outside 1 to 970 shows max; EFFrom at or
// beyond EFTo, or negative, shows 0; EFFrom without a number draws from 0 and keeps its text.
TEST(GraphRange, FieldsOutsideTheProfileAreRepaired) {
  const struct { const char *to, *from, *wantTo, *wantFrom, *firstXLabel; } rows[] = {
      {"MAX", "0", "max", "0", "0"}, {"0", "0", "max", "0", "0"},   {"-5", "0", "max", "0", "0"},
      {"abc", "0", "max", "0", "0"}, {"971", "0", "max", "0", "0"}, {"", "0", "max", "0", "0"},
      {"970", "0", "970", "0", "0"}, {"500", "500", "500", "0", "0"}, {"500", "600", "500", "0", "0"},
      {"500", "-1", "500", "0", "0"}, {"500", "499", "500", "499", "499"}, {"500", "xyz", "500", "xyz", "0"},
  };
  for (const auto& r : rows) {
    ComparisonState st;
    setProfile(st, 1000, 30, {});
    Form form;
    form.EFTo = r.to;
    form.EFFrom = r.from;
    Graph(st, form);
    EXPECT_EQ(form.EFTo, r.wantTo) << r.to << " " << r.from;
    EXPECT_EQ(form.EFFrom, r.wantFrom) << r.to << " " << r.from;
    EXPECT_EQ(labels(st, false).substr(0, labels(st, false).find('|')), r.firstXLabel) << r.to << " " << r.from;
  }
}

// Frequency ticks every tenth from the tenth at or below the bottom to the
// last below the top; a text of more than three characters keeps only its
// first character ("-0.2"), one of one character gets two blanks; the
// number unit ticks every integer.
TEST(GraphYAxis, TicksAndLabels) {
  const struct { const char *minX, *maxX; bool number; const char* want; } rows[] = {
      {"-0.2", "1.1", false, "-  |-  |0  |0.1|0.2|0.3|0.4|0.5|0.6|0.7|0.8|0.9|1  |1.1"},
      {"0", "0.37", false, "0  |0.1|0.2|0.3"},
      {"0.25", "1", false, "0.2|0.3|0.4|0.5|0.6|0.7|0.8|0.9|1  "},
      {"2.7", "8.5", true, "2|3|4|5|6|7|8"},
  };
  for (const auto& r : rows) {
    ComparisonState st;
    setProfile(st, 1000, 20, {});
    Form form;
    form.EF_MinX = r.minX, form.EF_MaxX = r.maxX;
    form.CBFreqIB = !r.number, form.CBFreqIB1 = r.number;
    Graph(st, form);
    EXPECT_EQ(labels(st, true), r.want) << r.minX << " " << r.maxX;
    if (r.maxX == std::string("0.37")) {  // the scale still runs up to 0.37 at row 20
      EXPECT_NEAR(yTicks(st).back().Y, 230 - 210 * 0.3 / 0.37, 1e-3);
    }
    if (r.minX == std::string("0.25")) {
      EXPECT_GT(yTicks(st).front().Y, 230);  // below the X axis
    }
  }
}

TEST(GraphYAxis, EqualBoundsOrAnInfiniteTopEndTheDrawing) {
  ComparisonState st;
  setProfile(st, 1000, 30, {});
  Form form;
  form.EF_MinX = form.EF_MaxX = "0.5";
  Graph(st, form);
  ASSERT_EQ(yTicks(st).size(), 1u);
  EXPECT_FALSE(std::isfinite(yTicks(st)[0].Y));
  EXPECT_FALSE(st.changegraph);
  form.EF_MinX = "0";
  form.EF_MaxX = "Infinity";
  Graph(st, form);
  ASSERT_TRUE(st.pct);
  EXPECT_TRUE(yTicks(st).empty());
}

// Labels every 100 positions counted from the first displayed one, small
// ticks every 10; fewer than ten positions step by one instead of hanging.
TEST(GraphXAxis, TicksAndLabels) {
  const struct { int32_t nbbases; const char *from, *to, *want; std::size_t small, labelled; } rows[] = {
      {1030, "0", "max", "0|100|200|300|400|500|600|700|800|900|1000", 101, 11},
      {2000, "137", "637", "137|237|337|437|537|637", 51, 6},
      {35, "0", "max", "0|1|2|3|4|5", 6, 6},  // posto 5: the small step is 0.1
      {30, "0", "max", "0", 1, 1},            // nbbases equal to windgraph: a range of 0
  };
  for (const auto& r : rows) {
    ComparisonState st;
    setProfile(st, r.nbbases, 30, {});
    Form form;
    form.EFFrom = r.from, form.EFTo = r.to;
    Graph(st, form);
    EXPECT_EQ(labels(st, false), r.want) << r.nbbases;
    EXPECT_EQ(xTicks(st, 3).size(), r.small) << r.nbbases;
    EXPECT_EQ(xTicks(st, 5).size(), r.labelled) << r.nbbases;
    EXPECT_FALSE(st.changegraph);
  }
  ComparisonState st;
  setProfile(st, 1030, 30, {});
  Form form;
  Graph(st, form);
  EXPECT_NEAR(xTicks(st, 5).back(), 322, 1e-4);
}

}  // namespace
}  // namespace trelvane
