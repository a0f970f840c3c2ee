// stack.cpp -- the stacked figure as shapes: title and legend, the gene models, one panel a profile,
// the axis of reference positions.
#include "plots/stack.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace trelvane::plots {
namespace {

constexpr int kLeft = 120, kRight = 24;    // room for the names and the scale; the right margin
constexpr int kTop = 52;                   // below the title and the legend
constexpr int kGenesHeight = 74;           // the annotation track
constexpr int kPanelHeight = 96, kPanelGap = 22;
constexpr int kAxisHeight = 44;

const RGB kBlack{0, 0, 0}, kFrame{170, 170, 170}, kGene{40, 40, 40};
const RGB kMean{255, 0, 0}, kUpper{0, 160, 0}, kMax{0, 0, 255};

// Maps reference coordinates to pixel columns of the plot area.
struct Axis {
  int64_t from = 0, to = 1;
  double left = kLeft, width = 1;
  double x(double c) const { return left + (c - from) * width / static_cast<double>(to - from); }
};

void line(Group2D& g, double x, double y, double x2, double y2, RGB color) {
  g.Append(CurveShape{x, y, x2, y2, color});
}

void rect(Group2D& g, double x, double y, double w, double h, RGB color) {
  g.Append(RectShape{x, y, std::max(w, 1.0), std::max(h, 1.0), color});
}

void text(Group2D& g, double x, double y, const std::string& s, int size = 12, bool bold = false) {
  StringShape t;
  t.X = x;
  t.Y = y;
  t.TextSize = size;
  t.Bold = bold;
  t.Text = s;
  g.Append(t);
}

// A tick step of 1, 2 or 5 times a power of ten that gives at most `most` ticks.
int64_t tickStep(int64_t span, int most) {
  int64_t step = 1;
  for (;;) {
    for (int64_t m : {1, 2, 5})
      if (span / (step * m) <= most) return step * m;
    step *= 10;
  }
}

std::string shortNumber(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.2g", v);
  return buf;
}

void legend(Group2D& g, const StackFigure& f, int width) {
  struct Item { bool box; RGB color; const char* label; };
  std::vector<Item> items;
  if (f.annotated) {
    items.push_back({true, segmentColor(SegmentKind::Exon), "exon"});
    items.push_back({true, segmentColor(SegmentKind::UTR), "UTR"});
    items.push_back({true, segmentColor(SegmentKind::NonCoding), "non-coding"});
  } else {
    items.push_back({true, segmentColor(SegmentKind::Unannotated), "conserved segment"});
  }
  items.push_back({false, kMean, "random mean"});
  items.push_back({false, kUpper, "mean + 2 SD"});
  items.push_back({false, kMax, "random max"});
  double x = width - kRight;
  for (auto it = items.rbegin(); it != items.rend(); ++it) x -= 26 + 7.0 * std::string(it->label).size();
  x = std::max<double>(x, kLeft);
  const double y = 38;
  for (const Item& i : items) {
    if (i.box) rect(g, x, y - 9, 16, 10, i.color);
    else line(g, x, y - 4, x + 16, y - 4, i.color);
    text(g, x + 20, y, i.label, 11);
    x += 26 + 7.0 * std::string(i.label).size();
  }
}

void arrows(Group2D& g, const Axis& a, const StackGene& gene, double y) {
  if (gene.strand != '+' && gene.strand != '-') return;
  const double x0 = a.x(static_cast<double>(gene.start)), x1 = a.x(static_cast<double>(gene.end));
  const double dir = gene.strand == '+' ? 1 : -1;
  for (double x = x0 + 12; x + 4 < x1; x += 28) {
    line(g, x - 3 * dir, y - 4, x + 1 * dir, y, kGene);
    line(g, x + 1 * dir, y, x - 3 * dir, y + 4, kGene);
  }
}

void genes(Group2D& g, const StackFigure& f, const Axis& a, double top) {
  const double mid = top + 26;
  text(g, 8, mid + 4, "genes", 12, true);
  double lastLabelEnd = -1e9;
  int row = 0;
  for (const StackGene& gene : f.genes) {
    if (gene.end <= f.from || gene.start >= f.to) continue;
    const double x0 = a.x(static_cast<double>(std::max(gene.start, f.from)));
    const double x1 = a.x(static_cast<double>(std::min(gene.end, f.to)));
    line(g, x0, mid, x1, mid, kGene);
    arrows(g, a, gene, mid);
    for (const StackValue& e : gene.exons) {
      const double ex0 = a.x(static_cast<double>(std::max(e.start, f.from)));
      const double ex1 = a.x(static_cast<double>(std::min(e.end, f.to)));
      if (ex1 > ex0) rect(g, ex0, mid - 8, ex1 - ex0, 16, kGene);
    }
    for (const StackValue& u : gene.utrs) {
      const double ux0 = a.x(static_cast<double>(std::max(u.start, f.from)));
      const double ux1 = a.x(static_cast<double>(std::min(u.end, f.to)));
      if (ux1 > ux0) rect(g, ux0, mid - 4, ux1 - ux0, 8, kGene);
    }
    // Names of close genes alternate between two rows.
    row = x0 < lastLabelEnd ? 1 - row : 0;
    text(g, x0, mid + 24 + 12 * row, gene.name, 11);
    lastLabelEnd = x0 + 6.5 * gene.name.size() + 6;
  }
}

void panel(Group2D& g, const StackFigure& f, const StackPanel& p, const Axis& a, double top) {
  const double bottom = top + kPanelHeight;
  const double span = f.top > f.bottom ? f.top - f.bottom : 1;
  auto row = [&](double v) { return bottom - std::clamp((v - f.bottom) / span, 0.0, 1.0) * kPanelHeight; };
  const double right = a.left + a.width;
  for (const StackSegment& s : p.segments) {
    const double x0 = a.x(static_cast<double>(std::max(s.start, f.from)));
    const double x1 = a.x(static_cast<double>(std::min(s.end, f.to)));
    if (x1 > x0 - 1) rect(g, x0, top, x1 - x0, kPanelHeight, segmentColor(s.kind));
  }
  // frame and scale
  line(g, a.left, top, right, top, kFrame);
  line(g, a.left, bottom, right, bottom, kFrame);
  line(g, a.left, top, a.left, bottom, kFrame);
  line(g, right, top, right, bottom, kFrame);
  for (double v : {f.bottom, (f.bottom + f.top) / 2, f.top}) {
    line(g, a.left - 4, row(v), a.left, row(v), kBlack);
    text(g, a.left - 30, row(v) + 4, shortNumber(v), 10);
  }
  // The name above the panel, where a long one has the figure's width.
  text(g, a.left, top - 4, p.name, 12, true);
  if (!f.unit.empty()) text(g, 8, top + kPanelHeight / 2 + 4, f.unit, 10);

  // The curve: the highest value of each pixel column, joined; the pen
  // lifts over columns without a value.
  const int columns = static_cast<int>(a.width);
  std::vector<double> best(columns + 1, std::numeric_limits<double>::quiet_NaN());
  for (const StackValue& v : p.values) {
    if (v.end <= f.from || v.start >= f.to) continue;
    const int c0 = std::clamp(static_cast<int>(a.x(static_cast<double>(std::max(v.start, f.from))) - a.left), 0, columns);
    const int c1 = std::clamp(static_cast<int>(a.x(static_cast<double>(std::min(v.end, f.to))) - a.left), c0, columns);
    for (int c = c0; c <= c1 && c <= columns; ++c)
      if (std::isnan(best[c]) || v.value > best[c]) best[c] = v.value;
  }
  for (int c = 1; c <= columns; ++c)
    if (!std::isnan(best[c]) && !std::isnan(best[c - 1]))
      line(g, a.left + c - 1, row(best[c - 1]), a.left + c, row(best[c]), kBlack);
  for (const StackExpectation& e : p.expectations) {
    if (e.end <= f.from || e.start >= f.to) continue;
    const double x0 = a.x(static_cast<double>(std::max(e.start, f.from)));
    const double x1 = a.x(static_cast<double>(std::min(e.end, f.to)));
    for (auto [v, color] : {std::pair{e.mean, kMean}, {e.upper, kUpper}, {e.max, kMax}})
      if (std::isfinite(v)) line(g, x0, row(v), x1, row(v), color);
  }
}

void axis(Group2D& g, const StackFigure& f, const Axis& a, double top) {
  const double right = a.left + a.width;
  line(g, a.left, top, right, top, kBlack);
  const int64_t step = tickStep(std::max<int64_t>(f.to - f.from, 1), std::max(2, static_cast<int>(a.width / 110)));
  // Ticks at 1-based positions that are multiples of the step.
  for (int64_t q = (f.from / step + 1) * step; q <= f.to; q += step) {
    const double x = a.x(static_cast<double>(q - 1) + 0.5);
    line(g, x, top, x, top + 5, kBlack);
    const std::string label = groupedNumber(q);
    text(g, x - 3.2 * label.size(), top + 19, label, 11);
  }
}

}  // namespace

RGB segmentColor(SegmentKind kind) {
  switch (kind) {
    case SegmentKind::Exon: return {140, 140, 255};
    case SegmentKind::UTR: return {140, 220, 220};
    case SegmentKind::NonCoding: return {255, 165, 165};
    case SegmentKind::Unannotated: break;
  }
  return {255, 200, 140};
}

std::optional<StackPoint> stackPointAt(const StackFigure& f, int width, double x, double y) {
  width = std::max(width, kLeft + kRight + 100);
  const double plotWidth = width - kLeft - kRight;
  if (x < kLeft || x >= kLeft + plotWidth || f.to <= f.from) return std::nullopt;
  const double top = kTop + (f.annotated ? kGenesHeight : 0);
  const int panel = static_cast<int>(std::floor((y - top) / (kPanelHeight + kPanelGap)));
  if (y < top || panel >= static_cast<int>(f.panels.size()) ||
      y - top - panel * (kPanelHeight + kPanelGap) > kPanelHeight)
    return std::nullopt;
  const auto position = f.from + static_cast<int64_t>((x - kLeft) * static_cast<double>(f.to - f.from) / plotWidth);
  return StackPoint{panel, std::min(position, f.to - 1)};
}

std::string groupedNumber(int64_t v) {
  std::string digits = std::to_string(v < 0 ? -v : v), out;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i && (digits.size() - i) % 3 == 0) out += ',';
    out += digits[i];
  }
  return v < 0 ? "-" + out : out;
}

Picture drawStack(const StackFigure& f, int width) {
  width = std::max(width, kLeft + kRight + 100);
  const bool withGenes = f.annotated;
  const int height = kTop + (withGenes ? kGenesHeight : 0) +
                     static_cast<int>(f.panels.size()) * (kPanelHeight + kPanelGap) + kAxisHeight;
  Picture pic(width, height);
  Group2D& g = pic.Objects;
  rect(g, 0, 0, width, height, {255, 255, 255});
  text(g, 8, 20, f.title, 14, true);
  legend(g, f, width);
  Axis a;
  a.from = f.from;
  a.to = std::max(f.to, f.from + 1);
  a.width = width - kLeft - kRight;
  double y = kTop;
  if (withGenes) {
    genes(g, f, a, y);
    y += kGenesHeight;
  }
  for (const StackPanel& p : f.panels) {
    panel(g, f, p, a, y);
    y += kPanelHeight + kPanelGap;
  }
  axis(g, f, a, y - kPanelGap + 1);
  return pic;
}

}  // namespace trelvane::plots
