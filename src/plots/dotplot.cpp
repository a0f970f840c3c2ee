// dotplot.cpp -- the dot plot: axes, ticks, labels and a one-bit layer of dots.
#include "plots/dotplot.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "platform/numtext.h"

namespace trelvane::plots {
namespace {


void line(Group2D& g, double x, double y, double x2, double y2) {
  g.Append(CurveShape{x, y, x2, y2, RGB{0, 0, 0}});
}

void label(Group2D& g, double x, double y, std::string text) {
  StringShape s;
  s.X = x;
  s.Y = y;
  s.TextSize = 10;
  s.Bold = false;
  s.TextFont = "Times";
  s.Text = std::move(text);
  g.Append(std::move(s));
}

DotRange readRange(const ComparisonState& st, const Form& form, std::string* efTo, std::string* efFrom) {
  DotRange r;
  int64_t last = static_cast<int64_t>(st.nbbases) - st.windgraph;
  double to = Val(form.EFTo);
  if (equalsNoCase(form.EFTo, "max") || to > static_cast<double>(last) || to <= 0) {
    r.dotto = static_cast<int32_t>(std::clamp<int64_t>(last, INT32_MIN, INT32_MAX));
    if (efTo) *efTo = "max";
  } else {
    r.dotto = toInt(to);
  }
  double from = Val(form.EFFrom);
  if (r.dotto <= from || from < 0) {
    r.dotfrom = 0;
    if (efFrom) *efFrom = "0";
  } else {
    r.dotfrom = toInt(from);
  }
  return r;
}

int windowLimit(int64_t v) { return static_cast<int>(std::clamp<int64_t>(v, kDotWindowMin, kDotWindowMax)); }

// For base codes 1 to 4, the canvas row that has a dot at X wherever m0
// holds that code at dotfrom + X - 30: every row of dots is one of these.
std::array<std::vector<uint64_t>, 5> baseRows(const ComparisonState& st, const DotRange& r,
                                              const DotLayer& layer) {
  std::array<std::vector<uint64_t>, 5> rows;
  for (auto& row : rows) row.assign(static_cast<std::size_t>(layer.wordsPerRow()), 0);
  const int64_t dotleft = 30;
  // X from dotleft up to the canvas edge, and up to dotto and the end of m0.
  int64_t xEnd = std::min<int64_t>(layer.width(), dotleft + static_cast<int64_t>(r.dotto) - r.dotfrom + 1);
  xEnd = std::min<int64_t>(xEnd, dotleft + static_cast<int64_t>(st.m0.size()) - r.dotfrom);
  int64_t xStart = std::max<int64_t>(dotleft, dotleft - r.dotfrom);  // m0 before offset 0 reads 0
  const uint8_t* m0 = st.m0.data();
  for (int64_t x = xStart; x < xEnd; ++x) {
    uint8_t code = m0[r.dotfrom + x - dotleft];
    if (code >= 1 && code <= 4) rows[code][static_cast<std::size_t>(x / 64)] |= uint64_t{1} << (x % 64);
  }
  return rows;
}

}  // namespace

DotRange dotRange(const ComparisonState& st, const Form& form) { return readRange(st, form, nullptr, nullptr); }

DotWindowSize dotWindowSize(const ComparisonState& st, Form& form) {
  std::string to = form.EFTo, from = form.EFFrom;
  DotRange r = readRange(st, form, &to, &from);
  form.EFTo = to;
  form.EFFrom = from;
  DotWindowSize size;
  size.width = windowLimit(static_cast<int64_t>(r.dotto) - r.dotfrom + 40);
  size.height = windowLimit(static_cast<int64_t>(st.nbbases1) + 111);
  size.canvasWidth = size.width;
  size.canvasHeight = size.height - 50;
  return size;
}

std::shared_ptr<Picture> showPlot(const ComparisonState& st, const Form& form, int canvasWidth, int canvasHeight) {
  DotRange r = dotRange(st, form);
  auto pct2 = std::make_shared<Picture>(canvasWidth, canvasHeight);
  Group2D& d = pct2->Objects;

  const int64_t nbbases1 = st.nbbases1;
  const int64_t dottop = 20;
  const int64_t dotbottom = 20 + nbbases1 + 1;
  const int64_t dotleft = 30;
  const int64_t range = static_cast<int64_t>(r.dotto) - r.dotfrom;
  const int64_t dotright = 30 + range;

  // Ticks below or right of the canvas would not show: they are left out.
  line(d, 29, dottop, 29, dotbottom);
  for (int64_t k = 1; k <= nbbases1 && 20 + k < canvasHeight; k += 10) line(d, 29, 20 + k, 25, 20 + k);
  label(d, 10, dotbottom + 5, Format(1, "####"));
  label(d, 10, 25, Format(static_cast<double>(nbbases1), "####"));
  line(d, dotleft, dotbottom, dotright, dotbottom);
  for (int64_t k = 1; k <= range && 30 + k < canvasWidth; k += 10) line(d, 30 + k, dotbottom, 30 + k, dotbottom + 5);
  label(d, 10, dotbottom + 20, Format(static_cast<double>(r.dotfrom) + 1, "#######"));
  label(d, dotright - 20, dotbottom + 20, Format(static_cast<double>(r.dotto) + 1, "#######"));

  // the dots: row dotbottom - j holds the dots of m1's base at j
  DotLayer layer(canvasWidth, canvasHeight);
  if (!layer.empty() && range >= 0) {
    auto rows = baseRows(st, r, layer);
    int64_t jFirst = std::max<int64_t>(0, dotbottom - (layer.height() - 1));
    int64_t jLast = std::min<int64_t>(nbbases1, static_cast<int64_t>(st.m1.size()) - 1);
    const uint8_t* m1 = st.m1.data();
    const std::size_t bytes = static_cast<std::size_t>(layer.wordsPerRow()) * sizeof(uint64_t);
    for (int64_t j = jFirst; j <= jLast; ++j) {
      uint8_t b = m1[j];
      if (b < 1 || b > 4) continue;  // an N, or a code that no base of m0 holds
      std::memcpy(layer.row(static_cast<int>(dotbottom - j)), rows[b].data(), bytes);
    }
  }
  pct2->dots = std::move(layer);
  return pct2;
}

DotPlot PBDot_Action(const ComparisonState& st, Form& form) {
  DotPlot plot;
  plot.size = dotWindowSize(st, form);
  plot.picture = showPlot(st, form, plot.size.canvasWidth, plot.size.canvasHeight);
  return plot;
}

}  // namespace trelvane::plots
