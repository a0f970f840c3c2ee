// graph_curves_test.cpp -- Graph's second half: column and line mode, N bars, reference lines.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "plots/graph.h"
#include "plots/picture.h"
#include "test_state.h"

namespace trelvane {
namespace {

using plots::RGB;
using testing::curve;
using testing::linesIn;
using testing::setProfile;

constexpr RGB kRed{255, 0, 0}, kGreen{0, 255, 0}, kBlue{0, 0, 255};

// Scores that are multiples of 3 decode exactly with a window of 30.
uint8_t s(int score) { return testing::scoreByte(score, 30); }
std::vector<uint8_t> repeat(std::size_t n, uint8_t byte) { return std::vector<uint8_t>(n, byte); }

// A canvas whose X scale is exact: xextent pixels of positions (Canvas1
// 60 wider), rows 230 - 7 * score (frequency 0 to 1, window 30).
Form exactForm(int xextent = 200) {
  Form form;
  form.Canvas1Width = xextent + 60;
  form.Canvas1Height = 250;
  return form;
}

// The lines of a curve text, one by one.
std::vector<std::string> parts(const std::string& text) {
  std::vector<std::string> out;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find("; ", at), text.size());
    out.push_back(text.substr(at, end - at));
    at = end + 2;
  }
  return out;
}

// The N bars of the curve: lines on row 17.
std::string nBars(const ComparisonState& st) {
  std::string out;
  for (const auto& c : linesIn(st, RGB{0, 0, 0}))
    if (c.Y == 17 && c.Y2 == 17) out += std::to_string(int(c.X)) + "-" + std::to_string(int(c.X2)) + " ";
  return out;
}

// Hand-checked profiles, each isolating one rule of the curve.
TEST(GraphCurve, LineAndColumnModes) {
  const struct {
    const char* name;
    int32_t nbbases;
    std::vector<uint8_t> bytes;
    std::string want, message;
  } rows[] = {
      // positions 0..10, 20 pixels each from column 30: the pen is set at 2 after the lift by
      // byte 1, drawn over the 2 and the 0; 9 lifts the pen again and 10 only sets it
      {"line mode, plain step", 40, {s(15), 1, s(21), 2, s(9), 0, s(30), s(0), s(3), 1, s(6)},
       "70 83 110 167 k; 110 167 150 20 k; 150 20 170 230 k; 170 230 190 209 k", ""},
      {"line mode, only markers in range", 40, {2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, s(15)}, "", ""},
      // 400 positions on 200 pixels, two a column: 9 and 21 (mean 15, SD 6) flushed by a scored
      // byte, band 3 to 27; 30 twice flushed by markers, SD 0; 27 twice flushed by the zeros after
      {"column mode, flushes", 430, {s(9), s(21), s(30), s(30), 2, 2, s(27), s(27)},
       "30 167 30 83 m; 30 209 30 41 b; 30 125 30 124 k; 31 20 31 19 m; 31 20 31 20 b; "
       "31 20 31 19 k; 33 41 33 40 m; 33 41 33 41 b; 33 41 33 40 k", "2 bases per pixel"},
      // mean 15, SD 15: the scored flush holds the band inside the scale, the marker flush does not
      {"column mode, band held", 430, {s(0), s(30), s(0), s(30), 2, 2},
       "30 230 30 20 m; 30 230 30 20 b; 30 125 30 124 k; 31 230 31 20 m; 31 335 31 -85 b; 31 125 31 124 k",
       "2 bases per pixel"},
      // four a column: 1 scored of 4 shows only its maximum-minimum line; 2 of 4 a mean point and
      // a band of one pixel; the marker flush tests no count and gives SD 0 no length
      {"column mode, sparse", 830, {s(15), 2, 2, 2, s(15), s(15), 2, 2, s(15)},
       "30 125 30 124 m; 31 125 31 124 m; 31 125 31 124 b; 31 125 31 124 k; 32 125 32 124 m; "
       "32 125 32 125 b; 32 125 32 124 k", "4 bases per pixel"},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.name);
    ComparisonState st;
    setProfile(st, r.nbbases, 30, r.bytes);
    Form form = exactForm();
    Graph(st, form);
    EXPECT_EQ(curve(st), r.want);
    EXPECT_EQ(form.ST_messGraph, r.message);
    EXPECT_EQ(linesIn(st, kRed).size(), 1u);
  }
}

TEST(GraphCurve, MaximumMinimumLinesCanBeSwitchedOff) {
  ComparisonState st;
  setProfile(st, 830, 30, {s(15), 2, 2, 2, s(15), s(15), 2, 2, s(15)});
  Form form = exactForm();
  form.CBMaxMin = false;
  Graph(st, form);
  EXPECT_EQ(curve(st), "31 125 31 124 b; 31 125 31 124 k; 32 125 32 125 b; 32 125 32 124 k");
}

TEST(GraphCurve, LineModeSegmentsStartOnTruncatedPixelsAndEndOnExactOnes) {
  ComparisonState st;
  setProfile(st, 40, 30, {s(15), s(15), s(15)});
  Form form;  // 292 pixels for 10 positions
  Graph(st, form);
  const auto lines = parts(curve(st));
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[0], "30 125 59.200000762939453 125 k");
  EXPECT_EQ(lines[1], "59 125 88.400001525878906 125 k");
  setProfile(st, 322, 30, {});  // a range as wide as the pixels is still line mode
  Graph(st, form);
  EXPECT_EQ(form.ST_messGraph, "");
  setProfile(st, 323, 30, {});
  Graph(st, form);
  EXPECT_EQ(form.ST_messGraph, "1 bases per pixel");
}

TEST(GraphCurve, ColumnsDropTheLastAndThoseAboveTheTop) {
  ComparisonState st;
  setProfile(st, 430, 30, repeat(401, s(15)));
  Form form = exactForm();
  Graph(st, form);
  std::vector<std::string> means;
  for (const auto& line : parts(curve(st)))
    if (line.back() == 'k') means.push_back(line);
  ASSERT_EQ(means.size(), 200u);  // columns 30 to 229; 230 holds position 400 alone, never flushed
  EXPECT_EQ(means.back(), "229 125 229 124 k");

  setProfile(st, 430, 30, {s(30), s(30), s(15), s(15), 2, 2});
  form.EF_MaxX = "0.5";  // 15 identities at row 20, 30 at row -190
  Graph(st, form);
  EXPECT_EQ(curve(st).substr(0, 3), "31 ");  // column 30 was dropped unflushed
}

TEST(GraphNBars, RunsOfNInLineAndColumnMode) {
  ComparisonState st;
  std::vector<uint8_t> bytes{1, 1, 1};
  bytes.resize(11, s(15));
  setProfile(st, 40, 30, bytes);
  st.m0 = testing::sequenceCodes("NNN" + std::string(37, 'A'));
  Form form = exactForm();
  Graph(st, form);
  // a run at the start opens at its second base: once by the seek, once by the loop from 1
  EXPECT_EQ(nBars(st), "50-90 50-90 ");

  bytes = repeat(6, 1);
  bytes.resize(401, s(15));
  setProfile(st, 430, 30, bytes);
  st.m0 = testing::sequenceCodes(std::string(6, 'N') + std::string(424, 'A'));
  Graph(st, form);
  EXPECT_EQ(nBars(st), "30-33 ");  // the seek's bar in pixel columns

  setProfile(st, 40, 30, repeat(11, s(15)));
  st.m0 = testing::sequenceCodes("AAAAA" + std::string(35, 'N'));
  Graph(st, form);
  EXPECT_EQ(nBars(st), "");  // a run reaching the end
  st.m0 = MemoryBlock(0);
  Graph(st, form);
  EXPECT_EQ(nBars(st), "");
}

TEST(GraphMovingAverage, IntegerMeanOfScoredWindowsDrawnAtTheStretchEnd) {
  ComparisonState st;
  std::vector<uint8_t> bytes{s(9), s(21), 2, s(30)};
  bytes.resize(60, s(12));
  setProfile(st, 72, 30, bytes);  // posto 42, 5 pixels a position
  st.nbbases1 = 32;               // stretches of 3 positions; posto becomes 10
  Form form = exactForm(210);
  form.CBMovingShort = true;
  Graph(st, form);
  // (21 + 30) / 2 = 25 at position 3, (30 + 12 + 12) / 3 = 18 at 5, then 12
  auto lines = parts(curve(st));
  ASSERT_EQ(lines.size(), 10u);
  EXPECT_EQ(lines[0], "30 167 45 55 k");
  EXPECT_EQ(lines[1], "45 55 55 104 k");
  EXPECT_EQ(lines[3], "55 104 60 146 k");
  EXPECT_EQ(form.ST_messGraph, "");

  st.nbbases1 = 42;
  Graph(st, form);
  EXPECT_EQ(form.ST_messGraph, "Shortest sequence is too long to present the moving average");
  EXPECT_EQ(curve(st), "");
  form.EFFrom = "5";  // a shortened range that no longer passes posfrom: no curve, no message
  st.nbbases1 = 38;
  Graph(st, form);
  EXPECT_EQ(form.ST_messGraph, "");
  EXPECT_EQ(curve(st), "");

  // in CpG mode the plain curve stays, but ends early: positions 1 to 6
  setProfile(st, 40, 30, repeat(11, s(15)));
  st.nbbases1 = 4;
  form = exactForm();
  form.CBMovingShort = form.CBCPG = true;
  Graph(st, form);
  EXPECT_EQ(curve(st), "30 125 50 125 k; 50 125 70 125 k; 70 125 90 125 k; 90 125 110 125 k; "
                       "110 125 130 125 k; 130 125 150 125 k");
}

TEST(GraphReferenceLines, MeanAndTwoSdInTheThreeSettings) {
  const struct {
    const char* name;
    bool hosd, symmetric;
    double red, greenUp, greenDown;
  } rows[] = {
      {"random", true, false, 125, 97, 153},      // 15 +- 2 * 2
      {"symmetric", false, true, 146, 132, 160},  // 12 +- 2 * 1
      {"observed", false, false, 146, 104, 153},  // 12 + 2 * 3, 12 - 2 * 0.5
  };
  for (const auto& r : rows) {
    ComparisonState st;
    setProfile(st, 40, 30, {});
    st.omeangraph = 15, st.osdgraph = 2, st.meangraph = 12, st.sdgraph = 1;
    st.sumu2up = 3, st.sumu2bas = 0.5f;
    Form form;
    form.CBHOSD = r.hosd;
    form.RadioButton1 = !r.hosd;
    form.CBSymetrie = r.symmetric;
    Graph(st, form);
    const auto red = linesIn(st, kRed), green = linesIn(st, kGreen);
    ASSERT_TRUE(red.size() == 1 && green.size() == 2) << r.name;
    EXPECT_TRUE(red[0].X == 30 && red[0].X2 == 322 && red[0].Y == r.red && red[0].Y2 == r.red) << r.name;
    EXPECT_EQ(green[0].Y, r.greenUp) << r.name;
    EXPECT_EQ(green[1].Y, r.greenDown) << r.name;
  }
}

TEST(GraphReferenceLines, MaximumAboveTheScaleDrawnOnlyInFrequencyUnit) {
  ComparisonState st;
  setProfile(st, 40, 30, {});
  st.omaxgraph = 40;
  Form form;
  Graph(st, form);
  ASSERT_EQ(linesIn(st, kBlue).size(), 1u);
  EXPECT_EQ(linesIn(st, kBlue)[0].Y, 230 - 7 * 40);
  form.CBFreqIB = false;
  form.CBFreqIB1 = true;
  form.EF_MaxX = "30";
  Graph(st, form);
  EXPECT_TRUE(linesIn(st, kBlue).empty());
  st.omaxgraph = 25;
  Graph(st, form);
  ASSERT_EQ(linesIn(st, kBlue).size(), 1u);
  EXPECT_EQ(linesIn(st, kBlue)[0].Y, 55);
  form.CBMaxIdent = false;
  Graph(st, form);
  EXPECT_TRUE(linesIn(st, kBlue).empty());
}

TEST(GraphGuards, SeeksEndAtTheEndOfTheProfile) {
  for (int nbbases : {40, 100000}) {  // a nil profile, in line mode and column mode
    ComparisonState st;
    st.open();
    st.nbbases = nbbases;
    st.windgraph = 30;
    Form form;
    Graph(st, form);
    ASSERT_TRUE(st.pct) << nbbases;
    EXPECT_EQ(curve(st), "") << nbbases;
    EXPECT_EQ(linesIn(st, kRed).size(), 1u);
    EXPECT_FALSE(st.changegraph);
  }
  // a window longer than the sequence (Window size=100, Bases=50): the X axis alone, no tick, no curve
  ComparisonState st;
  setProfile(st, 50, 100, repeat(50, 130));
  Form form;
  Graph(st, form);
  EXPECT_EQ(form.EFTo, "max");
  EXPECT_EQ(curve(st), "30 230 322 230 k");
  EXPECT_EQ(testing::texts(st).size(), 11u);
  // the moving average's stretches run off the block's 482 bytes, where a byte reads 0
  setProfile(st, 72, 30, {});
  st.nbbases1 = 32;
  form = exactForm(210);
  form.CBMovingShort = true;
  Graph(st, form);
  const auto lines = parts(curve(st));
  ASSERT_EQ(lines.size(), 10u);
  EXPECT_NE(lines[0].find(" 2450 "), std::string::npos) << lines[0];  // 30 + 5 * (72 + 410 + 2)
}

}  // namespace
}  // namespace trelvane
