// graph_curves_test.cpp -- Graph's second half: column and line mode, N bars, reference lines.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plots/graph.h"
#include "plots/picture.h"
#include "test_state.h"

namespace trelvane {
namespace {

using plots::CurveShape;
using plots::RGB;
using testing::scoreByte;
using testing::sequenceCodes;
using testing::setProfile;
using testing::shapes;

constexpr RGB kBlack{0, 0, 0};
constexpr RGB kMaxMin{200, 200, 200};
constexpr RGB kBand{150, 150, 150};
constexpr RGB kRed{255, 0, 0};
constexpr RGB kGreen{0, 255, 0};
constexpr RGB kBlue{0, 0, 255};

struct L {
  double x, y, x2, y2;
  RGB c;
  bool operator==(const L&) const = default;
};

void PrintTo(const L& l, std::ostream* os) {
  *os << "(" << l.x << "," << l.y << ")-(" << l.x2 << "," << l.y2 << ") rgb " << int(l.c.r) << "," << int(l.c.g)
      << "," << int(l.c.b);
}

// The lines after the axes (after the last label), reference lines left out.
std::vector<L> curveLines(const ComparisonState& st) {
  const auto& all = shapes(st);
  std::size_t start = 0;
  for (std::size_t i = 0; i < all.size(); ++i)
    if (std::holds_alternative<plots::StringShape>(all[i])) start = i + 1;
  std::vector<L> out;
  for (std::size_t i = start; i < all.size(); ++i) {
    const auto& c = std::get<CurveShape>(all[i]);
    if (c.BorderColor == kRed || c.BorderColor == kGreen || c.BorderColor == kBlue) continue;
    out.push_back({c.X, c.Y, c.X2, c.Y2, c.BorderColor});
  }
  return out;
}

std::vector<L> nBars(const ComparisonState& st) {
  std::vector<L> out;
  for (const auto& l : curveLines(st))
    if (l.y == 17 && l.y2 == 17) out.push_back(l);
  return out;
}

// Scores that are multiples of 3 decode exactly with a window of 30.
uint8_t s(int score) { return scoreByte(score, 30); }

// A canvas whose X scale is exact: 200 pixels of positions (Canvas1 260
// wide), rows 230 - 7 * score (frequency 0 to 1, window 30).
Form exactForm(int xextent = 200) {
  Form form;
  form.Canvas1Width = xextent + 60;
  form.Canvas1Height = 250;
  return form;
}

TEST(GraphLineMode, PlainStepLiftsThePenOnByteOneAndBridgesZeroAndTwo) {
  ComparisonState st;
  // positions 0..10, 20 pixels each from column 30
  setProfile(st, 40, 30, {s(15), 1, s(21), 2, s(9), 0, s(30), s(0), s(3), 1, s(6)});
  Form form = exactForm();
  Graph(st, form);
  std::vector<L> expected{
      {70, 83, 110, 167, kBlack},   // pen set at position 2 after the lift, drawn to 4 over the 2
      {110, 167, 150, 20, kBlack},  // over the 0 at 5
      {150, 20, 170, 230, kBlack},
      {170, 230, 190, 209, kBlack},  // then 9 lifts the pen and 10 only sets it
  };
  EXPECT_EQ(curveLines(st), expected);
  EXPECT_EQ(form.ST_messGraph, "");
}

TEST(GraphLineMode, SegmentsStartOnTruncatedPixelsAndEndOnExactOnes) {
  ComparisonState st;
  setProfile(st, 40, 30, {s(15), s(15), s(15)});
  Form form;  // 292 pixels for 10 positions
  Graph(st, form);
  auto lines = curveLines(st);
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[0].x, 30);
  EXPECT_DOUBLE_EQ(lines[0].x2, static_cast<double>(292.0f / 10.0f) + 30.0);
  EXPECT_EQ(lines[1].x, 59);
}

TEST(GraphLineMode, RangeAsWideAsThePixelsIsStillLineMode) {
  ComparisonState st;
  setProfile(st, 322, 30, {});  // posrange 292 = xextent
  Form form;
  Graph(st, form);
  EXPECT_EQ(form.ST_messGraph, "");

  ComparisonState wider;
  setProfile(wider, 323, 30, {});
  Form form2;
  Graph(wider, form2);
  EXPECT_EQ(form2.ST_messGraph, "1 bases per pixel");
}

TEST(GraphLineMode, AllMarkersInRangeDrawNoCurve) {
  ComparisonState st;
  std::vector<uint8_t> bytes(11, 2);
  bytes.push_back(2);
  bytes.push_back(s(15));  // beyond posto 10: the seek stops here
  setProfile(st, 40, 30, bytes);
  Form form = exactForm();
  Graph(st, form);
  EXPECT_TRUE(curveLines(st).empty());
  EXPECT_EQ(testing::linesIn(st, kRed).size(), 1u);
}

TEST(GraphColumnMode, ScoredAndMarkerFlushesSummariseTheirColumn) {
  ComparisonState st;
  // 400 positions on 200 pixels: columns of two positions from column 30
  setProfile(st, 430, 30, {s(9), s(21), s(30), s(30), 2, 2, s(27), s(27)});
  Form form = exactForm();
  Graph(st, form);
  EXPECT_EQ(form.ST_messGraph, "2 bases per pixel");
  std::vector<L> expected{
      // column 30 (9 and 21: mean 15, SD 6), flushed by a scored byte: band 3 to 27
      {30, 167, 30, 83, kMaxMin},
      {30, 209, 30, 41, kBand},
      {30, 125, 30, 124, kBlack},
      // column 31 (30 twice), flushed by the markers of column 32: SD 0
      {31, 20, 31, 19, kMaxMin},
      {31, 20, 31, 20, kBand},
      {31, 20, 31, 19, kBlack},
      // column 33 (27 twice), flushed by the zero bytes after it
      {33, 41, 33, 40, kMaxMin},
      {33, 41, 33, 41, kBand},
      {33, 41, 33, 40, kBlack},
  };
  EXPECT_EQ(curveLines(st), expected);
}

TEST(GraphColumnMode, ScoredFlushHoldsTheBandInsideTheScaleMarkerFlushDoesNot) {
  ComparisonState st;
  setProfile(st, 430, 30, {s(0), s(30), s(0), s(30), 2, 2});  // mean 15, SD 15
  Form form = exactForm();
  Graph(st, form);
  std::vector<L> bands;
  for (const auto& l : curveLines(st))
    if (l.c == kBand) bands.push_back(l);
  std::vector<L> expected{{30, 230, 30, 20, kBand}, {31, 335, 31, -85, kBand}};
  EXPECT_EQ(bands, expected);
}

TEST(GraphColumnMode, SparseColumnShowsOnlyItsMaximumToMinimumLine) {
  ComparisonState st;
  // 800 positions on 200 pixels: 4 a column
  setProfile(st, 830, 30, {s(15), 2, 2, 2, s(15), s(15), 2, 2, s(15)});
  Form form = exactForm();
  Graph(st, form);
  std::vector<L> expected{
      {30, 125, 30, 124, kMaxMin},  // 1 scored of 4: under half
      {31, 125, 31, 124, kMaxMin},  // 2 of 4: mean point and a band of one pixel
      {31, 125, 31, 124, kBand},
      {31, 125, 31, 124, kBlack},
      {32, 125, 32, 124, kMaxMin},  // marker flush: no test of the count, no length for SD 0
      {32, 125, 32, 125, kBand},
      {32, 125, 32, 124, kBlack},
  };
  EXPECT_EQ(curveLines(st), expected);

  form.CBMaxMin = false;
  Graph(st, form);
  expected = {{31, 125, 31, 124, kBand}, {31, 125, 31, 124, kBlack}, {32, 125, 32, 125, kBand},
              {32, 125, 32, 124, kBlack}};
  EXPECT_EQ(curveLines(st), expected);
}

TEST(GraphColumnMode, TheLastColumnIsNeverFlushed) {
  ComparisonState st;
  setProfile(st, 430, 30, std::vector<uint8_t>(401, s(15)));
  Form form = exactForm();
  Graph(st, form);
  std::vector<double> meanPoints;
  for (const auto& l : curveLines(st))
    if (l.c == kBlack) meanPoints.push_back(l.x);
  ASSERT_EQ(meanPoints.size(), 200u);  // columns 30 to 229; 230 holds position 400 alone
  EXPECT_EQ(meanPoints.front(), 30);
  EXPECT_EQ(meanPoints.back(), 229);
}

TEST(GraphColumnMode, ColumnAboveTheTopCountsAsEmpty) {
  ComparisonState st;
  setProfile(st, 430, 30, {s(30), s(30), s(15), s(15), 2, 2});
  Form form = exactForm();
  form.EF_MaxX = "0.5";  // 15 identities at row 20, 30 at row -190
  Graph(st, form);
  auto lines = curveLines(st);
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.front().x, 31);  // column 30 was dropped unflushed
}

TEST(GraphNBars, LineModeRunAtTheStartOpensAtItsSecondBase) {
  ComparisonState st;
  std::vector<uint8_t> bytes{1, 1, 1};
  for (int p = 3; p <= 10; ++p) bytes.push_back(s(15));
  setProfile(st, 40, 30, bytes);
  st.m0 = sequenceCodes("NNNAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA");
  Form form = exactForm();
  Graph(st, form);
  // Once by the seek, once more by the loop, which starts again at position 1.
  std::vector<L> expected{{50, 17, 90, 17, kBlack}, {50, 17, 90, 17, kBlack}};
  EXPECT_EQ(nBars(st), expected);
}

TEST(GraphNBars, ColumnModeBarOfTheSeekInPixelColumns) {
  ComparisonState st;
  std::vector<uint8_t> bytes(6, 1);
  for (int p = 6; p <= 400; ++p) bytes.push_back(s(15));
  setProfile(st, 430, 30, bytes);
  st.m0 = sequenceCodes(std::string(6, 'N') + std::string(424, 'A'));
  Form form = exactForm();
  Graph(st, form);
  std::vector<L> expected{{30, 17, 33, 17, kBlack}};
  EXPECT_EQ(nBars(st), expected);
}

TEST(GraphNBars, RunReachingTheEndOrEmptyM0HasNoBar) {
  ComparisonState st;
  setProfile(st, 40, 30, std::vector<uint8_t>(11, s(15)));
  st.m0 = sequenceCodes("AAAAANNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNN");
  Form form = exactForm();
  Graph(st, form);
  EXPECT_TRUE(nBars(st).empty());

  st.m0 = MemoryBlock(0);
  Graph(st, form);
  EXPECT_TRUE(nBars(st).empty());
}

TEST(GraphMovingAverage, IntegerMeanOfScoredWindowsDrawnAtTheStretchEnd) {
  ComparisonState st;
  std::vector<uint8_t> bytes{s(9), s(21), 2, s(30)};
  for (int p = 4; p < 60; ++p) bytes.push_back(s(12));
  setProfile(st, 72, 30, bytes);  // posto 42, 5 pixels a position
  st.nbbases1 = 32;               // stretches of 3 positions; posto becomes 10
  Form form = exactForm(210);
  form.CBMovingShort = true;
  Graph(st, form);
  auto lines = curveLines(st);
  ASSERT_EQ(lines.size(), 10u);
  EXPECT_EQ(lines[0], (L{30, 167, 45, 55, kBlack}));   // (21 + 30) / 2 = 25 at position 3
  EXPECT_EQ(lines[1], (L{45, 55, 55, 104, kBlack}));   // (30 + 12 + 12) / 3 = 18 at 5
  EXPECT_EQ(lines[3], (L{55, 104, 60, 146, kBlack}));  // 12 at 6
  EXPECT_EQ(form.ST_messGraph, "");
}

TEST(GraphMovingAverage, ShortestTooLongGivesTheMessageAndNoCurve) {
  ComparisonState st;
  setProfile(st, 72, 30, std::vector<uint8_t>(60, s(12)));
  st.nbbases1 = 42;
  Form form = exactForm(210);
  form.CBMovingShort = true;
  Graph(st, form);
  EXPECT_EQ(form.ST_messGraph, "Shortest sequence is too long to present the moving average");
  EXPECT_TRUE(curveLines(st).empty());
  EXPECT_EQ(testing::linesIn(st, kRed).size(), 1u);

  // a shortened range that no longer passes posfrom: no curve, no message
  form.EFFrom = "5";
  st.nbbases1 = 38;
  Graph(st, form);
  EXPECT_EQ(form.ST_messGraph, "");
  EXPECT_TRUE(curveLines(st).empty());
}

TEST(GraphMovingAverage, CpgModeKeepsThePlainCurveButEndsItEarly) {
  ComparisonState st;
  setProfile(st, 40, 30, std::vector<uint8_t>(11, s(15)));
  st.nbbases1 = 4;
  Form form = exactForm();
  form.CBMovingShort = true;
  form.CBCPG = true;
  Graph(st, form);
  auto lines = curveLines(st);
  ASSERT_EQ(lines.size(), 6u);  // positions 1 to 6
  EXPECT_EQ(lines.back().x2, 30 + 20 * 6);
}

struct ReferenceCase {
  const char* name;
  bool hosd, symmetric;
  double red, greenUp, greenDown;
};

TEST(GraphReferenceLines, MeanAndTwoSdInTheThreeSettings) {
  const ReferenceCase cases[] = {
      {"random", true, false, 125, 97, 153},     // 15 +- 2 * 2
      {"symmetric", false, true, 146, 132, 160},  // 12 +- 2 * 1
      {"observed", false, false, 146, 104, 153},  // 12 + 2 * 3, 12 - 2 * 0.5
  };
  for (const auto& c : cases) {
    ComparisonState st;
    setProfile(st, 40, 30, {});
    st.omeangraph = 15;
    st.osdgraph = 2;
    st.meangraph = 12;
    st.sdgraph = 1;
    st.sumu2up = 3;
    st.sumu2bas = 0.5f;
    Form form;
    form.CBHOSD = c.hosd;
    form.RadioButton1 = !c.hosd;
    form.CBSymetrie = c.symmetric;
    Graph(st, form);
    auto red = testing::linesIn(st, kRed);
    auto green = testing::linesIn(st, kGreen);
    ASSERT_EQ(red.size(), 1u) << c.name;
    ASSERT_EQ(green.size(), 2u) << c.name;
    EXPECT_EQ(red[0].X, 30);
    EXPECT_EQ(red[0].X2, 322);
    EXPECT_EQ(red[0].Y, c.red) << c.name;
    EXPECT_EQ(red[0].Y2, c.red) << c.name;
    EXPECT_EQ(green[0].Y, c.greenUp) << c.name;
    EXPECT_EQ(green[1].Y, c.greenDown) << c.name;
  }
}

TEST(GraphReferenceLines, MaximumAboveTheScaleDrawnOnlyInFrequencyUnit) {
  ComparisonState st;
  setProfile(st, 40, 30, {});
  st.omaxgraph = 40;
  Form form;
  Graph(st, form);
  auto blue = testing::linesIn(st, kBlue);
  ASSERT_EQ(blue.size(), 1u);
  EXPECT_EQ(blue[0].Y, 230 - 7 * 40);

  form.CBFreqIB = false;
  form.CBFreqIB1 = true;
  form.EF_MaxX = "30";
  Graph(st, form);
  EXPECT_TRUE(testing::linesIn(st, kBlue).empty());

  st.omaxgraph = 25;
  Graph(st, form);
  blue = testing::linesIn(st, kBlue);
  ASSERT_EQ(blue.size(), 1u);
  EXPECT_EQ(blue[0].Y, 55);

  form.CBMaxIdent = false;
  Graph(st, form);
  EXPECT_TRUE(testing::linesIn(st, kBlue).empty());
}

TEST(GraphGuards, NilProfileDrawsAxesAndLinesButNoCurve) {
  for (int nbbases : {40, 100000}) {  // line mode, column mode
    ComparisonState st;
    st.open();
    st.nbbases = nbbases;
    st.windgraph = 30;
    ASSERT_TRUE(st.m2.isNil());
    Form form;
    Graph(st, form);
    ASSERT_TRUE(st.pct) << nbbases;
    EXPECT_TRUE(curveLines(st).empty()) << nbbases;
    EXPECT_EQ(testing::linesIn(st, kRed).size(), 1u);
    EXPECT_FALSE(st.changegraph);
  }
}

TEST(GraphGuards, WindowLongerThanTheSequenceDrawsNoTickOrCurveAndEnds) {
  ComparisonState st;
  setProfile(st, 50, 100, std::vector<uint8_t>(50, 130));  // a stored result: Window size=100, Bases=50
  Form form;
  Graph(st, form);
  ASSERT_TRUE(st.pct);
  EXPECT_EQ(form.EFTo, "max");
  // after the Y labels: the X axis alone, no X tick, no curve
  ASSERT_EQ(curveLines(st).size(), 1u);
  EXPECT_EQ(curveLines(st)[0], (L{30, 230, 322, 230, kBlack}));
  EXPECT_EQ(testing::texts(st).size(), 11u);
}

TEST(GraphGuards, MovingAverageSeekEndsAtTheEndOfTheProfile) {
  ComparisonState st;
  setProfile(st, 72, 30, {});  // no scored byte anywhere
  st.nbbases1 = 32;
  Form form = exactForm(210);
  form.CBMovingShort = true;
  Graph(st, form);
  // Each stretch runs off the block's 482 bytes, where a byte reads 0.
  auto lines = curveLines(st);
  ASSERT_EQ(lines.size(), 10u);
  EXPECT_EQ(lines[0].x2, 30 + 5 * (72 + 410 + 2));
}

}  // namespace
}  // namespace trelvane
