// dotplot_test.cpp -- the dot plot: range, window size, shapes in order, and the dots of two sequences.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plots/dotplot.h"
#include "plots/shapes_text.h"
#include "test_state.h"

namespace trelvane::plots {
namespace {

using testing::sequenceCodes;

// Two sequences as the readers leave them, before any run (windgraph 0).
void setSequences(ComparisonState& st, const std::string& longest, const std::string& shortest) {
  st.open();
  st.m0 = sequenceCodes(longest);
  st.nbbases = static_cast<int32_t>(longest.size());
  st.m1 = sequenceCodes(shortest);
  st.nbbases1 = static_cast<int32_t>(shortest.size());
  st.f[0] = "long.fa";
  st.f[1] = "short.fa";
}

std::string shapeLines(const Picture& p) {
  std::string out;
  for (const auto& s : p.Objects.items) out += shapeLine(s);
  return out;
}

// The dots as "x,y " in rows from the top, then the window's and the canvas's sizes.
std::string dots(const Picture& p) {
  std::string out;
  for (int y = 0; y < p.dots.height(); ++y)
    for (int x = 0; x < p.dots.width(); ++x)
      if (p.dots.get(x, y)) out += std::to_string(x) + "," + std::to_string(y) + " ";
  return out;
}
std::string sizes(const DotPlot& plot) {
  return std::to_string(plot.size.width) + "x" + std::to_string(plot.size.height) + " " +
         std::to_string(plot.size.canvasWidth) + "x" + std::to_string(plot.size.canvasHeight);
}

TEST(DotPlot, TwoShortSequencesGiveTheirShapesAndDots) {
  ComparisonState st;
  setSequences(st, "ACGTNA", "ANC");
  Form form;
  DotPlot plot = PBDot_Action(st, form);
  // before a run the range ends at nbbases itself: 0 to 6
  EXPECT_EQ(sizes(plot), "64x114 64x64");  // 6 + 40 raised to the window's minimum, 3 + 111
  ASSERT_TRUE(plot.picture);
  EXPECT_TRUE(plot.picture->width == 64 && plot.picture->height == 64);
  // dotbottom = 20 + 3 + 1 = 24; dotright = 30 + 6
  EXPECT_EQ(shapeLines(*plot.picture),
            "line 29 20 29 24 0 0 0\n"
            "line 29 21 25 21 0 0 0\n"
            "text 10 29 10 0 Times 1\n"
            "text 10 25 10 0 Times 3\n"
            "line 30 24 36 24 0 0 0\n"
            "line 31 24 31 29 0 0 0\n"
            "text 10 44 10 0 Times 1\n"
            "text 16 44 10 0 Times 7\n");
  // A of the shortest (j 0, row 24) at the A of 0 and 5; C (j 2, row 22) at 1; N never
  EXPECT_EQ(dots(*plot.picture), "31,22 30,24 35,24 ");
  EXPECT_EQ(plot.picture->dots.count(), 3u);
}

TEST(DotPlot, RangeRepairedOnlyByTheButton) {
  ComparisonState st;
  setSequences(st, std::string(100, 'A'), "AAAA");
  st.windgraph = 30;
  Form form;
  form.EFTo = "20", form.EFFrom = "30";
  DotRange r = dotRange(st, form);
  EXPECT_TRUE(r.dotfrom == 0 && r.dotto == 20);
  EXPECT_EQ(form.EFFrom, "30");  // Redraw writes nothing back
  DotPlot plot = PBDot_Action(st, form);
  EXPECT_EQ(form.EFFrom, "0");
  EXPECT_EQ(plot.size.width, 64);

  form.EFTo = "abc";
  r = dotRange(st, form);
  EXPECT_EQ(r.dotto, 70);
  EXPECT_EQ(form.EFTo, "abc");
  PBDot_Action(st, form);
  EXPECT_EQ(form.EFTo, "max");

  form.EFFrom = "10", form.EFTo = "60";
  r = dotRange(st, form);
  EXPECT_TRUE(r.dotfrom == 10 && r.dotto == 60);
  plot = PBDot_Action(st, form);
  EXPECT_EQ(sizes(plot), "90x115 90x65");
  // X labels show 1-based positions
  const auto& items = plot.picture->Objects.items;
  EXPECT_EQ(std::get<StringShape>(items[items.size() - 2]).Text, "11");
  EXPECT_EQ(std::get<StringShape>(items.back()).Text, "61");
}

TEST(DotPlot, YTicksCountDownFromTheTopEveryTenBases) {
  ComparisonState st;
  setSequences(st, std::string(30, 'G'), std::string(25, 'G'));
  Form form;
  DotPlot plot = PBDot_Action(st, form);
  std::vector<double> rows;
  for (const auto& s : plot.picture->Objects.items)
    if (auto* c = std::get_if<CurveShape>(&s); c && c->X == 29 && c->X2 == 25) rows.push_back(c->Y);
  EXPECT_EQ(rows, (std::vector<double>{21, 31, 41}));
  // every pair matches: 31 positions (0 to 30, the last reading the zero tail: no dot) x 25
  EXPECT_EQ(plot.picture->dots.count(), 30u * 25u);
}

TEST(DotPlot, ARedrawOnTheOldCanvasCutsAWiderRangeAtItsEdge) {
  ComparisonState st;
  setSequences(st, std::string(50, 'T'), "TT");
  Form form;
  form.EFTo = "30";
  DotPlot plot = PBDot_Action(st, form);
  ASSERT_EQ(plot.size.canvasWidth, 70);
  form.EFTo = "max";
  auto wider = showPlot(st, form, plot.size.canvasWidth, plot.size.canvasHeight);
  EXPECT_EQ(wider->width, 70);
  EXPECT_EQ(wider->dots.count(), 2u * 40u);  // X 30 to 69 only
}

TEST(DotPlot, LongSequencesStayCompact) {
  ComparisonState st;
  std::string longest;
  for (int i = 0; i < 25000; ++i) longest += "ACGT";
  setSequences(st, longest, std::string(10000, 'A'));
  Form form;
  DotPlot plot = PBDot_Action(st, form);
  EXPECT_EQ(sizes(plot), std::to_string(kDotWindowMax) + "x10111 " + std::to_string(kDotWindowMax) + "x10061");
  const Picture& p = *plot.picture;
  // A at every fourth position from 0, up to the canvas edge at X 31999
  EXPECT_EQ(p.dots.count(), 7993u * 10000u);
  EXPECT_TRUE(p.dots.get(30, 10021));  // j 0 on the X axis's row
  EXPECT_TRUE(p.dots.get(34, 22));     // j 9999
  EXPECT_FALSE(p.dots.get(31, 22));
  EXPECT_LT(p.Objects.Count(), 5000u);
}

TEST(DotPlot, ResultWithoutSequencesDrawsAxesOnly) {
  ComparisonState st;
  st.open();
  st.nbbases = 48502;
  st.nbbases1 = 0;
  st.windgraph = 100;
  Form form;
  DotPlot plot = PBDot_Action(st, form);
  EXPECT_EQ(plot.picture->dots.count(), 0u);
  EXPECT_EQ(plot.size.width, kDotWindowMax);
  EXPECT_EQ(plot.size.height, 111);
}

}  // namespace
}  // namespace trelvane::plots
