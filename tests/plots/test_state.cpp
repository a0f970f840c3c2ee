// test_state.cpp -- comparison states with a hand-made profile, and reading the shapes of a drawing back.
#include "test_state.h"

#include <cmath>
#include <fstream>
#include <sstream>

#include "platform/numtext.h"
#include "plots/shapes_text.h"

namespace trelvane::testing {

void setProfile(ComparisonState& st, int32_t nbbases, int32_t w, const std::vector<uint8_t>& bytes) {
  st.open();
  st.nbbases = nbbases;
  st.windgraph = w;
  st.m2 = MemoryBlock(nbbases + 410);
  for (std::size_t i = 0; i < bytes.size(); ++i) st.m2.set(static_cast<std::ptrdiff_t>(i), bytes[i]);
}

uint8_t scoreByte(double s, int32_t w) {
  double q = 250.0 / w;
  double prod = s * q;
  return static_cast<uint8_t>(toInt(255.0 - prod) & 0xff);
}

MemoryBlock sequenceCodes(const std::string& letters) {
  MemoryBlock m(static_cast<std::ptrdiff_t>(letters.size()) + 100);
  for (std::size_t i = 0; i < letters.size(); ++i) {
    uint8_t code = 0;
    for (uint8_t c = 1; c <= 4; ++c)
      if (kLetters[c] == letters[i]) code = c;
    m.set(static_cast<std::ptrdiff_t>(i), code);
  }
  return m;
}

const std::vector<plots::Shape>& shapes(const ComparisonState& st) {
  static const std::vector<plots::Shape> none;
  return st.pct ? st.pct->Objects.items : none;
}

std::vector<plots::CurveShape> linesIn(const ComparisonState& st, plots::RGB color) {
  std::vector<plots::CurveShape> out;
  for (const auto& s : shapes(st))
    if (auto* c = std::get_if<plots::CurveShape>(&s); c && c->BorderColor == color) out.push_back(*c);
  return out;
}

std::vector<plots::StringShape> texts(const ComparisonState& st) {
  std::vector<plots::StringShape> out;
  for (const auto& s : shapes(st))
    if (auto* t = std::get_if<plots::StringShape>(&s)) out.push_back(*t);
  return out;
}

std::string curve(const ComparisonState& st) {
  const auto& all = shapes(st);
  std::size_t start = 0;
  for (std::size_t i = 0; i < all.size(); ++i)
    if (std::holds_alternative<plots::StringShape>(all[i])) start = i + 1;
  std::ostringstream out;
  for (std::size_t i = start; i < all.size(); ++i) {
    const auto& c = std::get<plots::CurveShape>(all[i]);
    const plots::RGB k = c.BorderColor;
    const char color = k == plots::RGB{0, 0, 0}         ? 'k'
                       : k == plots::RGB{200, 200, 200} ? 'm'
                       : k == plots::RGB{150, 150, 150} ? 'b'
                                                        : 0;
    if (!color) continue;
    out << (out.tellp() > 0 ? "; " : "") << plots::coordinateText(c.X) << " " << plots::coordinateText(c.Y)
        << " " << plots::coordinateText(c.X2) << " " << plots::coordinateText(c.Y2) << " " << color;
  }
  return out.str();
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

}  // namespace trelvane::testing
