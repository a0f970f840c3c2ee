// shapes_text.cpp -- the shapes of a picture and the Graphic tab's texts as plain text lines.
#include "plots/shapes_text.h"

#include <cmath>
#include <cstdio>

namespace trelvane::plots {
namespace {

std::string colorText(RGB c) {
  return std::to_string(c.r) + " " + std::to_string(c.g) + " " + std::to_string(c.b);
}

struct LineOf {
  std::string operator()(const CurveShape& s) const {
    return "line " + coordinateText(s.X) + " " + coordinateText(s.Y) + " " + coordinateText(s.X2) + " " +
           coordinateText(s.Y2) + " " + colorText(s.BorderColor) + "\n";
  }
  std::string operator()(const StringShape& s) const {
    return "text " + coordinateText(s.X) + " " + coordinateText(s.Y) + " " + std::to_string(s.TextSize) + " " +
           (s.Bold ? "1" : "0") + " " + s.TextFont + " " + s.Text + "\n";
  }
  std::string operator()(const RectShape& s) const {
    return "rect " + coordinateText(s.X) + " " + coordinateText(s.Y) + " " + coordinateText(s.Width) + " " +
           coordinateText(s.Height) + " " + colorText(s.FillColor) + "\n";
  }
};

}  // namespace

std::string coordinateText(double v) {
  if (std::isnan(v)) return "nan";
  if (std::isinf(v)) return v < 0 ? "-inf" : "inf";
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.17g", v);
  return buf;
}

std::string shapeLine(const Shape& shape) { return std::visit(LineOf{}, shape); }

std::string shapesText(const Picture* picture, const Form& form) {
  std::string out;
  if (picture)
    for (const Shape& s : picture->Objects.items) out += shapeLine(s);
  out += "field ST_messGraph " + form.ST_messGraph + "\n";
  out += "field EFFrom " + form.EFFrom + "\n";
  out += "field EFTo " + form.EFTo + "\n";
  return out;
}

}  // namespace trelvane::plots
