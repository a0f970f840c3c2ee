// drawings_test.cpp -- Graph, the Graphic and Pref handlers and the dot plot by scripts of steps, the shapes
// of each drawing written out; the text forms of shapes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "plots/dotplot.h"
#include "plots/graph.h"
#include "plots/graph_controls.h"
#include "plots/picture.h"
#include "plots/shapes_text.h"
#include "support/desk.h"

namespace trelvane::testing {
namespace {

using namespace plots;

MemoryBlock codes(const std::string& written) {
  const std::string letters = cases::pieces(written);
  MemoryBlock m(static_cast<std::ptrdiff_t>(letters.size()) + 100);
  for (std::size_t i = 0; i < letters.size(); ++i)
    m.set(static_cast<std::ptrdiff_t>(i), static_cast<uint8_t>(std::string("NATCG").find(letters[i]) % 5));
  return m;
}

void showShapes(const Picture* p, const Form& form, std::ostream& out) {
  std::istringstream lines(shapesText(p, form));
  for (std::string line; std::getline(lines, line);) out << "  | " << cases::escaped(line, true) << "\n";
}

// The dots of the last dot plot, listed where they are few, and its canvas.
std::shared_ptr<Picture> dots;
DotWindowSize canvas;
void showDots(std::ostream& out) {
  std::string list;
  for (int y = 0; y < dots->dots.height() && dots->dots.count() <= 64; ++y)
    for (int x = 0; x < dots->dots.width(); ++x)
      if (dots->dots.get(x, y)) list += " " + std::to_string(x) + "," + std::to_string(y);
  out << "  dots " << dots->dots.width() << "x" << dots->dots.height() << ": " << dots->dots.count() << list << "\n";
}

using Handler = void (*)(ComparisonState&, Form&);
const std::map<std::string, Handler> kHandlers = {
    {"Graph", Graph},                                 {"EFFrom_LostFocus", EFFrom_LostFocus},
    {"EFTo_LostFocus", EFTo_LostFocus},               {"CBUsePoint_Action", CBUsePoint_Action},
    {"CBUsePoint1_Action", CBUsePoint1_Action},       {"CBSymetrie_Action", CBSymetrie_Action},
    {"CBHOSD_Action", CBHOSD_Action},                 {"CBFreqIB_Action", CBFreqIB_Action},
    {"CBFreqIB1_Action", CBFreqIB1_Action},           {"CBMovingShort_Action", CBMovingShort_Action},
    {"CBMaxIdent_Action", CBMaxIdent_Action},         {"CBMaxMin_Action", CBMaxMin_Action},
    {"EF_MinX_LostFocus", EF_MinX_LostFocus},         {"EF_MaxX_LostFocus", EF_MaxX_LostFocus},
    {"EFHeight_LostFocus", EFHeight_LostFocus},       {"EFwidth_LostFocus", EFwidth_LostFocus},
    {"RadioButton1_Action", RadioButton1_Action},     {"Event_Resized", Event_Resized},
    {"TabPanel1_Change", TabPanel1_Change},           {"fitCanvas1", [](ComparisonState&, Form& f) { fitCanvas1(f); }}};

std::map<std::string, Step> steps() {
  std::map<std::string, Step> s = {
      // a stored result on a new window: NBBASES W, then the profile bytes from offset 0 ("130*4" four of them)
      {"profile", [](Desk& d, const std::string& v, std::ostream&) {
         std::istringstream in(v);
         int32_t n = 0, w = 0;
         in >> n >> w;
         d.st.open(), d.st.nbbases = n, d.st.windgraph = w, d.st.m2 = MemoryBlock(n + 410);
         std::ptrdiff_t at = 0;
         for (std::string b; in >> b;)
           for (int k = b.find('*') == std::string::npos ? 1 : std::stoi(b.substr(b.find('*') + 1)); k-- > 0;)
             d.st.m2.set(at++, static_cast<uint8_t>(std::stoi(b)));
       }},
      {"sequence", [](Desk& d, const std::string& v, std::ostream&) { d.st.m0 = codes(v); }},
      {"sequences", [](Desk& d, const std::string& v, std::ostream&) {
         const std::string lg = v.substr(0, v.find('|')), sh = v.substr(v.find('|') + 1);
         d.st.m0 = codes(lg), d.st.nbbases = static_cast<int32_t>(cases::pieces(lg).size());
         d.st.m1 = codes(sh), d.st.nbbases1 = static_cast<int32_t>(cases::pieces(sh).size());
         d.st.f = {"long.fa", "short.fa"};
       }},
      {"picture", [](Desk& d, const std::string& v, std::ostream&) { d.st.pct = std::make_shared<Picture>(std::stoi(v), 10); }},
      {"shapes", [](Desk& d, const std::string&, std::ostream& out) { showShapes(d.st.pct.get(), d.form, out); }},
      {"labels", [](Desk& d, const std::string&, std::ostream& out) {
         std::string labels;
         for (const auto& shape : d.st.pct ? d.st.pct->Objects.items : std::vector<Shape>{})
           if (auto* t = std::get_if<StringShape>(&shape)) labels += (labels.empty() ? "" : "|") + t->Text;
         show(out, labels);
       }},
      {"PBDot_Action", [](Desk& d, const std::string& v, std::ostream& out) {
         const DotPlot plot = PBDot_Action(d.st, d.form);
         const DotWindowSize& z = canvas = plot.size;
         show(out, std::to_string(z.width) + "x" + std::to_string(z.height) + " canvas " +
                       std::to_string(z.canvasWidth) + "x" + std::to_string(z.canvasHeight));
         if (v == "shapes") showShapes(plot.picture.get(), d.form, out);
         else show(out, std::to_string(plot.picture->Objects.Count()) + " shapes");
         dots = plot.picture;
         showDots(out);
       }},
      // the dot plot drawn again on the last one's canvas
      {"showPlot", [](Desk& d, const std::string&, std::ostream& out) {
         dots = showPlot(d.st, d.form, canvas.canvasWidth, canvas.canvasHeight);
         showDots(out);
       }},
      {"dot", [](Desk&, const std::string& v, std::ostream& out) {
         show(out, std::to_string(dots->dots.get(std::stoi(v), std::stoi(v.substr(v.find(' '))))));
       }},
      {"dotRange", [](Desk& d, const std::string&, std::ostream& out) {
         const DotRange r = dotRange(d.st, d.form);
         show(out, std::to_string(r.dotfrom) + " " + std::to_string(r.dotto));
       }},
      {"returnKeyPartner", [](Desk&, const std::string& v, std::ostream& out) {
         const char* p = returnKeyPartner(v == "-" ? nullptr : v.c_str());
         show(out, p ? p : "none");
       }},
  };
  for (const auto& [name, h] : kHandlers) s[name] = [h](Desk& d, const std::string&, std::ostream&) { h(d.st, d.form); };
  return s;
}

class Drawings : public ::testing::TestWithParam<cases::Case> {};

TEST_P(Drawings, GiveTheirTranscript) {
  Desk d;
  // each drawing by the order it came in, kept so that no other takes its place
  std::vector<std::shared_ptr<Picture>> seen;
  d.more = [&](std::vector<std::pair<std::string, std::string>>& out) {
    const Picture* p = d.st.pct.get();
    auto at = std::find(seen.begin(), seen.end(), d.st.pct);
    if (p && at == seen.end()) at = seen.insert(seen.end(), d.st.pct);
    out.emplace_back("pct", p ? "#" + std::to_string(at - seen.begin() + 1) + " " + std::to_string(p->width) + "x" +
                                    std::to_string(p->height) + " " + std::to_string(p->Objects.Count()) + " shapes"
                              : "none");
  };
  cases::expectTranscript(GetParam(), runDesk(GetParam(), steps(), &d), false);
}

INSTANTIATE_TEST_SUITE_P(, Drawings, ::testing::ValuesIn(cases::readCases(TRELVANE_TEST_DATA "/plots/drawings.cases")),
                         cases::caseName);

// The drawings of the cases hold the common forms; these are the ones they lack.
TEST(ShapesText, NumberFormsShapeKindsAndFields) {
  EXPECT_EQ(coordinateText(1e300), "1.0000000000000001e+300");
  EXPECT_EQ(coordinateText(NAN) + coordinateText(-NAN) + coordinateText(INFINITY) + coordinateText(-INFINITY), "nannaninf-inf");
  StringShape t;
  t.X = 10, t.Y = 235, t.Bold = true, t.TextSize = 10, t.Text = "two words";
  EXPECT_EQ(shapeLine(t) + shapeLine(RectShape{31, 22, 1, 1, RGB{0, 0, 0}}),
            "text 10 235 10 1 Times two words\nrect 31 22 1 1 0 0 0\n");
}

}  // namespace
}  // namespace trelvane::testing
