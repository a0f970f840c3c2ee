// graph.cpp -- Graph: axes, profile curve, N bars and reference lines of the profile.
#include "plots/graph.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "state/profile.h"
#include "platform/numtext.h"
#include "plots/graph_controls.h"
#include "plots/picture.h"
#include "tracks/segments.h"

namespace trelvane {
namespace {

using plots::CurveShape;
using plots::Group2D;
using plots::RGB;
using plots::StringShape;

constexpr RGB kBlack{0, 0, 0};
constexpr RGB kMaxMinGrey{200, 200, 200};
constexpr RGB kBandGrey{150, 150, 150};
constexpr RGB kRed{255, 0, 0};
constexpr RGB kGreen{0, 255, 0};
constexpr RGB kBlue{0, 0, 255};
constexpr RGB kSegmentShade{255, 236, 179};

// Row of the N bars, above the plot.
constexpr double kNBarRow = 17;

// The derived values of the drawing. Each is a Single: expressions are
// evaluated in Double from these stored values and rounded when stored.
struct Scale {
  int canvasWidth = 0, canvasHeight = 0;
  float scalemax = 0, scalemin = 0;
  float xextent = 0, ybase = 0, yextent = 0;
  float yfactor = 0, yoffset = 0;
  float posfrom = 0, posto = 0, posrange = 0;
  float xfactor = 0, xoffset = 0;

  double column(double p) const { return xfactor * p + xoffset; }
  double row(double v) const { return v * yfactor + yoffset; }
};

// m2 as the drawing reads it: a byte past the block is 0.
struct Profile {
  const uint8_t* bytes;
  std::ptrdiff_t size;
  int32_t windgraph;

  uint8_t at(std::ptrdiff_t p) const {
    return static_cast<std::size_t>(p) < static_cast<std::size_t>(size) ? bytes[p] : 0;
  }
  // The score of a byte, truncated to an integer.
  int32_t score(std::ptrdiff_t p) const { return toInt(profileScore(at(p), windgraph)); }
  // A seek stops on a scored byte, or where p reaches the end of the block.
  bool seekStop(std::ptrdiff_t p) const { return p >= size || at(p) > 2; }
  // The first position after p, up to last, whose byte is a score; last + 1
  // where there is none. Eight bytes at a time: a byte of 0, 1 or 2 has no
  // bit above the lowest two.
  std::ptrdiff_t nextScored(std::ptrdiff_t p, std::ptrdiff_t last) const {
    std::ptrdiff_t q = p + 1;
    const std::ptrdiff_t end = std::min(last + 1, size);
    for (; q < end && (q & 7) != 0; ++q)
      if (bytes[q] > 2) return q;
    for (; q + 8 <= end; q += 8) {
      uint64_t w;
      std::memcpy(&w, bytes + q, 8);
      if (w & 0xFCFCFCFCFCFCFCFCull) break;
    }
    for (; q < end; ++q)
      if (bytes[q] > 2) return q;
    return last + 1;
  }
};

void line(Group2D& g, double x, double y, double x2, double y2, RGB color) {
  g.Append(CurveShape{x, y, x2, y2, color});
}

void label(Group2D& g, double x, double y, std::string text) {
  StringShape s;
  s.X = x;
  s.Y = y;
  s.TextSize = 14;
  s.Bold = false;
  s.TextFont = "Times";
  s.Text = std::move(text);
  g.Append(std::move(s));
}

// A tick counter's next value; a step that would not advance gives + 1.
int64_t nextTick(int64_t i, double step) {
  int64_t next = toInt64(static_cast<double>(i) + step);
  return next > i ? next : i + 1;
}

// The last value of a Y tick counter. A limit that is not finite gives no
// tick: not-a-number compares false, and an infinite one would never end.
int64_t tickLimit(double limit) {
  return std::isfinite(limit) ? toInt(limit) : std::numeric_limits<int64_t>::min();
}

// "0.5" keeps its middle as "."; any other length keeps its first character.
std::string decimalPointRule(const std::string& text) {
  if (text.size() == 3) return std::string(1, text[0]) + "." + text[2];
  return text.substr(0, 1) + "  ";
}

// EFTo and EFFrom, repaired where they fall outside the profile.
void readRange(const ComparisonState& st, Form& form, Scale& sc) {
  int64_t last = static_cast<int64_t>(st.nbbases) - st.windgraph;
  double to = Val(form.EFTo);
  if (equalsNoCase(form.EFTo, "max") || to > static_cast<double>(last) || to <= 0) {
    sc.posto = static_cast<float>(last);
    form.EFTo = "max";
  } else {
    sc.posto = static_cast<float>(to);
  }
  double from = Val(form.EFFrom);
  if (sc.posto <= from || from < 0) {
    sc.posfrom = 0;
    form.EFFrom = "0";
  } else {
    sc.posfrom = static_cast<float>(from);
  }
}

// Y axis, Y ticks in the chosen unit, the final scale in identities, X axis
// and both rows of X ticks.
// The label of 0-based position i on the X axis.
std::string positionLabel(const ComparisonState& st, const Form& form, int64_t i) {
  if (!form.AxisInRecord || !st.origin[0].known()) return Str(i);
  const std::optional<int64_t> pos = recordPosition(st.origin[0], i + 1);
  return pos ? Str(*pos) : "-";
}

void drawAxes(const ComparisonState& st, const Form& form, Scale& sc, Group2D& g) {
  line(g, 29, 20, 29, sc.ybase, kBlack);

  // first Y scale, for the ticks
  double span = static_cast<double>(sc.scalemax) - sc.scalemin;
  sc.yfactor = static_cast<float>(sc.yextent / span);
  sc.yoffset = static_cast<float>(sc.ybase - (static_cast<double>(sc.scalemin) * sc.yextent) / span);

  if (form.CBFreqIB) {
    int64_t first = toInt(std::floor(static_cast<double>(sc.scalemin) * 10 + 0.1));
    int64_t last = tickLimit(std::floor(static_cast<double>(sc.scalemax) * 10 + 0.1));
    for (int64_t t = first; t <= last; ++t) {
      double v = static_cast<double>(t) / 10;
      double row = sc.row(v);
      line(g, 29, row, 25, row, kBlack);
      std::string text = Format(v, "#.#");
      if (form.CBUsePoint) text = decimalPointRule(text);
      label(g, 10, row + 5, std::move(text));
    }
  } else {
    int64_t first = toInt(sc.scalemin);
    int64_t last = tickLimit(std::floor(static_cast<double>(sc.scalemax)));
    for (int64_t i = first; i <= last; ++i) {
      double row = sc.row(static_cast<double>(i));
      line(g, 29, row, 25, row, kBlack);
      label(g, 10, row + 5, Str(static_cast<int32_t>(i)));
    }
  }

  // final Y scale: numbers of identities in both units
  if (form.CBFreqIB) {
    sc.scalemax = static_cast<float>(static_cast<double>(sc.scalemax) * st.windgraph);
    sc.scalemin = static_cast<float>(static_cast<double>(sc.scalemin) * st.windgraph);
  }
  sc.yfactor = static_cast<float>(sc.yextent / (static_cast<double>(sc.scalemax) - sc.scalemin));
  sc.yoffset = static_cast<float>(sc.ybase - static_cast<double>(sc.scalemin) * sc.yfactor);

  line(g, 30, sc.ybase, sc.canvasWidth - 30, sc.ybase, kBlack);

  sc.posrange = static_cast<float>(static_cast<double>(sc.posto) - sc.posfrom);
  sc.xfactor = static_cast<float>(sc.xextent / static_cast<double>(sc.posrange));
  sc.xoffset = static_cast<float>(30 - static_cast<double>(sc.xfactor) * sc.posfrom);

  // The quotient of two natural logarithms, not log10: 1000 gives 2.9999999999999996.
  double decades = std::log(static_cast<double>(sc.posrange)) / std::log(10.0);
  double minorstep = std::pow(10.0, std::floor(decades - 1));
  double majorstep = std::pow(10.0, std::floor(decades));

  for (int64_t i = toInt64(sc.posfrom); static_cast<double>(i) <= sc.posto; i = nextTick(i, minorstep)) {
    double x = sc.column(static_cast<double>(i));
    line(g, x, sc.ybase, x, static_cast<double>(sc.ybase) + 3, kBlack);
  }
  for (int64_t i = toInt64(sc.posfrom); static_cast<double>(i) <= sc.posto; i = nextTick(i, majorstep)) {
    double x = sc.column(static_cast<double>(i));
    line(g, x, sc.ybase, x, static_cast<double>(sc.ybase) + 5, kBlack);
    label(g, x, sc.canvasHeight - 2, positionLabel(st, form, i));
  }
}

// The bar over a run of N in m0. nstart 0 means that no bar is open.
struct NBar {
  const MemoryBlock& m0;
  int64_t nstart = 0;

  // Column mode: the bar's ends are pixel columns.
  void step(std::ptrdiff_t p, int64_t c, Group2D& g) {
    if (m0.size() == 0) return;
    if (nstart == 0 && m0.get(p) == 0) nstart = c;
    if (nstart != 0 && m0.get(p) != 0) {
      line(g, static_cast<double>(nstart), kNBarRow, static_cast<double>(c), kNBarRow, kBlack);
      nstart = 0;
    }
  }
  // Line mode: the coordinate is a position, the ends its pixel column.
  void stepAt(std::ptrdiff_t p, const Scale& sc, Group2D& g) {
    if (m0.size() == 0) return;
    if (nstart == 0 && m0.get(p) == 0) nstart = p;
    if (nstart != 0 && m0.get(p) != 0) {
      line(g, sc.column(static_cast<double>(nstart)), kNBarRow, sc.column(static_cast<double>(p)),
           kNBarRow, kBlack);
      nstart = 0;
    }
  }
};

// One pixel column of column mode, accumulated then flushed.
struct Column {
  float colcount = 0, colsum = 0, colsumsq = 0;
  int32_t coltop = 0, colbottom = 0;

  void reset(int canvasHeight) {
    colsum = colsumsq = colcount = 0;
    coltop = canvasHeight;
    colbottom = 0;
  }
  void accumulate(int32_t s, const Scale& sc) {
    double row = sc.row(s);
    colcount = static_cast<float>(static_cast<double>(colcount) + 1);
    colsum = static_cast<float>(static_cast<double>(colsum) + s);
    colsumsq = static_cast<float>(static_cast<double>(colsumsq) + static_cast<double>(static_cast<int64_t>(s) * s));
    coltop = toInt(std::min(static_cast<double>(coltop), row));
    colbottom = toInt(std::max(static_cast<double>(colbottom), row));
  }
  // colsum becomes the mean and colsumsq the SD with n as divisor.
  void summarise() {
    colsum = static_cast<float>(static_cast<double>(colsum) / colcount);
    double mean = colsum;
    colsumsq = static_cast<float>(std::sqrt(static_cast<double>(colsumsq) / colcount - mean * mean));
  }
};

void flushColumn(Column& col, int32_t colx, bool scored, float basesperpixel, const Form& form,
                 const Scale& sc, Group2D& g) {
  double x = colx;
  if (col.coltop == col.colbottom) col.coltop = col.colbottom - 1;
  if (form.CBMaxMin) line(g, x, col.colbottom, x, col.coltop, kMaxMinGrey);
  if (scored && !(static_cast<double>(basesperpixel) / 2 <= col.colcount || basesperpixel < 3)) return;
  col.summarise();
  double mean = col.colsum, sd = col.colsumsq;
  if (scored) {
    double y = sc.row(std::max(static_cast<double>(sc.scalemin), mean - 2 * sd));
    double y2 = sd == 0 ? y - 1 : sc.row(std::min(static_cast<double>(sc.scalemax), mean + 2 * sd));
    line(g, x, y, x, y2, kBandGrey);
  } else {
    line(g, x, sc.row(mean - 2 * sd), x, sc.row(mean + 2 * sd), kBandGrey);
  }
  double meanRow = sc.row(mean);
  line(g, x, meanRow, x, meanRow - 1, kBlack);
}

// More positions than pixels: each pixel column summarised. The last
// column of the range is never flushed.
void drawColumns(const ComparisonState& st, Form& form, const Scale& sc, Group2D& g) {
  const Profile m2{st.m2.data(), st.m2.size(), st.windgraph};
  float basesperpixel = static_cast<float>(static_cast<double>(sc.posrange) / sc.xextent);
  form.ST_messGraph = Format(basesperpixel, "######.#") + " bases per pixel";

  NBar bar{st.m0};
  Column col;
  col.reset(sc.canvasHeight);

  // seek
  std::ptrdiff_t p = toInt64(static_cast<double>(sc.posfrom) - 1);
  int32_t colx = 0;
  do {
    ++p;
    colx = toInt(sc.column(static_cast<double>(p)));
    bar.step(p, colx, g);
  } while (!m2.seekStop(p));

  col.colsum = col.colsumsq = col.colcount = 0;
  const bool monotone = sc.xfactor >= 0 && std::isfinite(sc.posto) && std::fabs(sc.posto) < 9e18f;
  const std::ptrdiff_t lastp = monotone ? static_cast<std::ptrdiff_t>(std::floor(static_cast<double>(sc.posto))) : 0;
  for (; static_cast<double>(p) <= sc.posto; ++p) {
    int32_t x = toInt(sc.column(static_cast<double>(p)));
    bool scoredByte = m2.at(p) > 2;
    if (scoredByte) {
      if (x != colx) {
        if (col.colbottom != 0) flushColumn(col, colx, true, basesperpixel, form, sc, g);
        col.reset(sc.canvasHeight);
        col.accumulate(m2.score(p), sc);
        colx = x;
      } else {
        col.accumulate(m2.score(p), sc);
      }
      bar.step(p, x, g);
    } else {
      // A stretch of unscored bytes: only its first change of column can
      // flush, and from then on the reset column follows x. With columns
      // that never go back, the stretch is passed in one step.
      std::ptrdiff_t q = p + 1;
      if (monotone && p >= 0) {
        q = m2.nextScored(p, lastp);
        x = toInt(sc.column(static_cast<double>(q - 1)));
      }
      if (x != colx) {
        if (col.colbottom != 0) flushColumn(col, colx, false, basesperpixel, form, sc, g);
        col.reset(sc.canvasHeight);
        colx = x;
      }
      p = q - 1;
    }
  }
}

// At most one position a pixel: the curve point by point, plain or as the
// moving average over the length of the shortest sequence.
void drawLines(const ComparisonState& st, Form& form, Scale& sc, Group2D& g) {
  const Profile m2{st.m2.data(), st.m2.size(), st.windgraph};
  NBar bar{st.m0};

  // seek
  std::ptrdiff_t p = toInt64(static_cast<double>(sc.posfrom) - 1);
  int32_t penx = 0, peny = 0;
  do {
    ++p;
    int32_t s = m2.score(p);
    penx = toInt(sc.column(static_cast<double>(p)));
    peny = toInt(sc.row(s));
    bar.stepAt(p, sc, g);
  } while (!m2.seekStop(p));

  if (form.CBMovingShort) {
    sc.posto = static_cast<float>(static_cast<double>(sc.posto) - static_cast<float>(st.nbbases1));
    if (sc.posto <= 0) form.ST_messGraph = "Shortest sequence is too long to present the moving average";
  }

  bool plain = !form.CBMovingShort || form.CBCPG;
  bool penup = false;
  for (int64_t i = toInt64(static_cast<double>(sc.posfrom) + 1); static_cast<double>(i) <= sc.posto; ++i) {
    if (plain) {
      p = i;
      uint8_t b = m2.at(p);
      int32_t s = m2.score(p);
      if (b == 1) penup = true;
      if (b > 2 && penup) {
        penx = toInt(sc.column(static_cast<double>(p)));
        peny = toInt(sc.row(s));
        penup = false;
      } else if (b > 2) {
        double x2 = sc.column(static_cast<double>(p)), y2 = sc.row(s);
        line(g, penx, peny, x2, y2, kBlack);
        penx = toInt(x2);
        peny = toInt(y2);
      }
    } else {
      // averaged step
      int64_t avgspan = st.windgraph;
      p = i - 1;
      do ++p;
      while (!m2.seekStop(p));
      int32_t avgcount = 1;
      int32_t avgsum = m2.score(p);
      if (avgspan < st.nbbases1) {
        do {
          do {
            ++p;
            ++avgspan;
          } while (!m2.seekStop(p));
          avgsum = toInt(static_cast<double>(avgsum) + profileScore(m2.at(p), st.windgraph));
          ++avgcount;
        } while (avgspan < st.nbbases1);
      }
      avgsum = toInt(static_cast<double>(avgsum) / avgcount);
      double x2 = sc.column(static_cast<double>(p)), y2 = sc.row(avgsum);
      line(g, penx, peny, x2, y2, kBlack);
      penx = toInt(x2);
      peny = toInt(y2);
    }
    bar.stepAt(p, sc, g);
  }
}

void referenceLine(const Scale& sc, double v, RGB color, Group2D& g) {
  double row = sc.row(v);
  line(g, 30, row, sc.canvasWidth - 30, row, color);
}

// Mean and 2 SD lines of the chosen distribution, then the H0 maximum.
void drawReferenceLines(const ComparisonState& st, const Form& form, const Scale& sc, Group2D& g) {
  double mean, up, down;
  if (form.CBHOSD) {
    mean = st.omeangraph;
    up = static_cast<double>(st.omeangraph) + 2 * static_cast<double>(st.osdgraph);
    down = static_cast<double>(st.omeangraph) - 2 * static_cast<double>(st.osdgraph);
  } else if (form.CBSymetrie) {
    mean = st.meangraph;
    up = static_cast<double>(st.meangraph) + 2 * static_cast<double>(st.sdgraph);
    down = static_cast<double>(st.meangraph) - 2 * static_cast<double>(st.sdgraph);
  } else {
    mean = st.meangraph;
    up = static_cast<double>(st.meangraph) + 2 * static_cast<double>(st.sumu2up);
    down = static_cast<double>(st.meangraph) - 2 * static_cast<double>(st.sumu2bas);
  }
  referenceLine(sc, mean, kRed, g);
  referenceLine(sc, up, kGreen, g);
  referenceLine(sc, down, kGreen, g);
  // In number unit a maximum above the scale is left out; in frequency unit it is drawn.
  if (form.CBMaxIdent && (form.CBFreqIB || !(st.omaxgraph > sc.scalemax)))
    referenceLine(sc, st.omaxgraph, kBlue, g);
}

// The conserved segments as pale bands from the top of the plot to the X
// axis, put first so that everything else lies over them. None where the
// rule cannot be read or needs a random expectation that the run lacks.
void shadeSegments(const ComparisonState& st, const Form& form, const Scale& sc, Group2D& g) {
  std::string why;
  const std::optional<tracks::SegmentRule> rule = segmentRule(form, &why);
  if (!rule) return;
  const std::optional<double> threshold = tracks::thresholdScore(st, *rule, &why);
  if (!threshold) return;
  std::vector<plots::Shape> bands;
  for (const tracks::Segment& s : tracks::callSegments(st, *rule, *threshold)) {
    const double from = std::max<double>(static_cast<double>(s.first), sc.posfrom);
    const double to = std::min<double>(static_cast<double>(s.last), sc.posto);
    if (from > to) continue;
    const double x = sc.column(from), x2 = sc.column(to);
    bands.push_back(plots::RectShape{x, 20, std::max(1.0, x2 - x), sc.ybase - 20.0, kSegmentShade});
  }
  g.items.insert(g.items.begin(), bands.begin(), bands.end());
}

}  // namespace

std::optional<ProfilePoint> profilePointAt(const ComparisonState& st, const Form& form, double x) {
  if (st.nbbases == 0 || st.windgraph == 0) return std::nullopt;
  // The range as the last drawing left it in EFFrom and EFTo.
  const double last = static_cast<double>(st.nbbases) - st.windgraph;
  const double posto = equalsNoCase(form.EFTo, "max") ? last : Val(form.EFTo);
  const double posfrom = Val(form.EFFrom);
  const float xfactor = static_cast<float>((form.Canvas1Width - 60) / (posto - posfrom));
  const float xoffset = static_cast<float>(30 - static_cast<double>(xfactor) * posfrom);
  if (!(xfactor > 0)) return std::nullopt;
  const int64_t p = toInt64(std::floor((x - xoffset) / xfactor + 0.5));
  if (p < posfrom || p > posto || p < 0 || p >= st.nbbases) return std::nullopt;
  ProfilePoint pt;
  pt.runPos = p + 1;
  pt.recordPos = recordPosition(st.origin[0], p + 1);
  const uint8_t b = st.m2.get(p);
  if (b > kProfileNoScore) {
    pt.score = toInt(profileScore(b, st.windgraph));
    if (std::isfinite(st.omeangraph) && std::isfinite(st.osdgraph) && st.osdgraph > 0)
      pt.sds = (*pt.score - static_cast<double>(st.omeangraph)) / st.osdgraph;
  }
  return pt;
}

std::string profilePointText(const ComparisonState& st, const ProfilePoint& pt) {
  std::string text = "Position " + Str(pt.runPos);
  if (pt.recordPos && st.origin[0].known())
    text += " (" + (st.origin[0].record.empty() ? std::string("record") : st.origin[0].record) + ":" +
            Str(*pt.recordPos) + ")";
  if (!pt.score) return text + ": no score";
  text += ": score " + Str(*pt.score) + " of " + Str(st.windgraph);
  if (pt.sds) text += ", " + Format(*pt.sds, "0.0") + " SD from the random mean";
  return text;
}

void Graph(ComparisonState& st, Form& form) {
  form.ST_messGraph.clear();
  Scale sc;
  sc.scalemax = static_cast<float>(CDbl(form.EF_MaxX));
  sc.scalemin = static_cast<float>(CDbl(form.EF_MinX));

  if (st.nbbases != 0 && st.windgraph != 0) {
    sc.canvasWidth = form.Canvas1Width;
    sc.canvasHeight = form.Canvas1Height;
    sc.xextent = static_cast<float>(sc.canvasWidth - 60);
    sc.ybase = static_cast<float>(sc.canvasHeight - 20);
    sc.yextent = static_cast<float>(40 - sc.canvasHeight);

    readRange(st, form, sc);

    st.pct.reset();
    st.pct = std::make_shared<plots::Picture>(sc.canvasWidth, sc.canvasHeight);
    Group2D g;

    drawAxes(st, form, sc, g);
    if (sc.posrange > sc.xextent)
      drawColumns(st, form, sc, g);
    else
      drawLines(st, form, sc, g);
    drawReferenceLines(st, form, sc, g);
    if (form.CBShadeSegments) shadeSegments(st, form, sc, g);

    st.pct->Objects = std::move(g);
  }
  st.changegraph = false;
}

}  // namespace trelvane
