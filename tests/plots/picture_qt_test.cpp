// picture_qt_test.cpp -- the painter adapter and the SVG, PDF and PNG writers, read back.
#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <QPainter>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include "plots/dotplot.h"
#include "plots/graph.h"
#include "plots/picture_qt.h"
#include "test_state.h"

namespace trelvane::plots {
namespace {

namespace fs = std::filesystem;

class PictureWriters : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(ensureGuiApplication());
    dir_ = fs::temp_directory_path() / ("plots_writers_" + std::to_string(::getpid()) + "_" +
                                        ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }
  std::string path(const std::string& name) const { return (dir_ / name).string(); }

  fs::path dir_;
};

struct SvgLine {
  double x, y, x2, y2;
  QString stroke;
};

struct SvgContent {
  double width = 0, height = 0;
  std::vector<SvgLine> lines;
  std::vector<QString> texts;
  std::vector<QString> fonts;
  int images = 0;
};

SvgContent readSvg(const std::string& file) {
  QFile f(QString::fromStdString(file));
  SvgContent out;
  if (!f.open(QIODevice::ReadOnly)) return out;
  QXmlStreamReader xml(&f);
  std::vector<QString> strokes{"black"};
  while (!xml.atEnd()) {
    xml.readNext();
    if (xml.isStartElement()) {
      auto a = xml.attributes();
      if (xml.name() == QLatin1String("svg")) {
        auto box = a.value("viewBox").toString().split(' ');
        if (box.size() == 4) out.width = box[2].toDouble(), out.height = box[3].toDouble();
      } else if (xml.name() == QLatin1String("g")) {
        strokes.push_back(a.hasAttribute("stroke") ? a.value("stroke").toString() : strokes.back());
      } else if (xml.name() == QLatin1String("polyline")) {
        auto pts = a.value("points").toString().simplified().split(QRegularExpression("[ ,]"));
        if (pts.size() == 4)
          out.lines.push_back({pts[0].toDouble(), pts[1].toDouble(), pts[2].toDouble(), pts[3].toDouble(),
                               strokes.back()});
      } else if (xml.name() == QLatin1String("text")) {
        out.fonts.push_back(a.value("font-family").toString());
        out.texts.push_back(xml.readElementText());
      } else if (xml.name() == QLatin1String("image")) {
        ++out.images;
      }
    } else if (xml.isEndElement() && xml.name() == QLatin1String("g")) {
      strokes.pop_back();
    }
  }
  EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
  return out;
}

// A profile of a few positions: axes, a curve, the reference lines.
void drawProfile(ComparisonState& st, Form& form) {
  testing::setProfile(st, 40, 30,
                      {testing::scoreByte(15, 30), testing::scoreByte(21, 30), 1, testing::scoreByte(9, 30)});
  st.omeangraph = 15;
  st.osdgraph = 2;
  st.omaxgraph = 24;
  Graph(st, form);
}

QString hex(RGB c) { return QColor(c.r, c.g, c.b).name(); }

TEST_F(PictureWriters, SvgHoldsEveryShapeInOrderAtItsCoordinates) {
  ComparisonState st;
  Form form;
  drawProfile(st, form);
  ASSERT_TRUE(st.pct);
  std::string error;
  ASSERT_TRUE(writePictureFile(*st.pct, path("profile.svg"), &error)) << error;
  SvgContent svg = readSvg(path("profile.svg"));
  EXPECT_TRUE(svg.width == 352 && svg.height == 250);

  std::vector<CurveShape> curves;
  std::vector<std::string> texts;
  for (const auto& s : st.pct->Objects.items) {
    if (auto* c = std::get_if<CurveShape>(&s)) curves.push_back(*c);
    if (auto* t = std::get_if<StringShape>(&s)) texts.push_back(t->Text);
  }
  ASSERT_EQ(svg.lines.size(), curves.size());
  for (std::size_t i = 0; i < curves.size(); ++i) {
    const auto& [x, y, x2, y2, stroke] = svg.lines[i];
    const double off = std::fabs(x - curves[i].X) + std::fabs(y - curves[i].Y) + std::fabs(x2 - curves[i].X2) +
                       std::fabs(y2 - curves[i].Y2);
    EXPECT_LT(off, 0.01) << i;
    EXPECT_EQ(stroke, hex(curves[i].BorderColor)) << i;
  }
  ASSERT_EQ(svg.texts.size(), texts.size());
  for (std::size_t i = 0; i < texts.size(); ++i) {
    EXPECT_EQ(svg.texts[i].toStdString(), texts[i]) << i;
    EXPECT_EQ(svg.fonts[i], "Times");
  }
}

TEST_F(PictureWriters, ShapesWithoutAFinitePlaceAreLeftOut) {
  Picture p(100, 100);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  p.Objects.Append(CurveShape{30, nan, 70, nan, RGB{0, 255, 0}});
  p.Objects.Append(CurveShape{30, 50, std::numeric_limits<double>::infinity(), 50, RGB{0, 0, 0}});
  p.Objects.Append(CurveShape{30, 60, 70, 60, RGB{255, 0, 0}});
  std::string error;
  ASSERT_TRUE(writePictureFile(p, path("odd.svg"), &error)) << error;
  SvgContent svg = readSvg(path("odd.svg"));
  ASSERT_EQ(svg.lines.size(), 1u);
  EXPECT_EQ(svg.lines[0].stroke, "#ff0000");
}

TEST_F(PictureWriters, PngHasThePicturesPixels) {
  Picture p(120, 80);
  p.Objects.Append(CurveShape{10, 40, 110, 40, RGB{255, 0, 0}});
  p.Objects.Append(CurveShape{20, 10, 20, 70, RGB{0, 0, 255}});
  p.Objects.Append(RectShape{100, 70, 1, 1, RGB{0, 0, 0}});
  std::string error;
  ASSERT_TRUE(writePictureFile(p, path("p.PNG"), &error)) << error;
  QImage image(QString::fromStdString(path("p.PNG")));
  ASSERT_EQ(image.size(), QSize(120, 80));
  const std::tuple<int, int, Qt::GlobalColor> pixels[] = {
      {60, 40, Qt::red}, {20, 60, Qt::blue}, {100, 70, Qt::black}, {60, 20, Qt::white}};
  for (auto [x, y, color] : pixels) EXPECT_EQ(image.pixelColor(x, y), QColor(color)) << x << "," << y;
}

TEST_F(PictureWriters, DotPlotPngAndSvgCarryTheDots) {
  ComparisonState st;
  st.open();
  st.m0 = testing::sequenceCodes("ACGTNA");
  st.nbbases = 6;
  st.m1 = testing::sequenceCodes("ANC");
  st.nbbases1 = 3;
  Form form;
  DotPlot plot = PBDot_Action(st, form);
  std::string error;
  ASSERT_TRUE(writeDotPlotFile(plot, path("dots.png"), &error)) << error;
  QImage image(QString::fromStdString(path("dots.png")));
  ASSERT_EQ(image.size(), QSize(64, 64));
  // dots at 35,24 and 31,22; 33,24 is on the X axis row
  const std::tuple<int, int, int> pixels[] = {{35, 24, 0}, {31, 22, 0}, {32, 22, 255}, {33, 24, 0}, {45, 10, 255}};
  for (auto [x, y, gray] : pixels) EXPECT_EQ(qGray(image.pixel(x, y)), gray) << x << "," << y;

  ASSERT_TRUE(writeDotPlotFile(plot, path("dots.svg"), &error)) << error;
  SvgContent svg = readSvg(path("dots.svg"));
  EXPECT_EQ(svg.images, 1);
  EXPECT_EQ(svg.texts.size(), 4u);
}

TEST_F(PictureWriters, PaintingInsideAClipDrawsTheDotsThere) {
  Picture p(50, 50);
  p.dots = DotLayer(50, 50);
  p.dots.set(5, 5);
  p.dots.set(40, 40);
  QImage image(50, 50, QImage::Format_RGB32);
  image.fill(Qt::white);
  QPainter painter(&image);
  painter.setClipRect(QRect(30, 30, 20, 20));
  paintPicture(painter, p);
  painter.end();
  EXPECT_EQ(image.pixelColor(40, 40), QColor(Qt::black));
  EXPECT_EQ(image.pixelColor(5, 5), QColor(Qt::white));  // outside the clip
  EXPECT_EQ(image.pixelColor(41, 40), QColor(Qt::white));
}

TEST_F(PictureWriters, PdfPageIsThePictureSize) {
  ComparisonState st;
  Form form;
  drawProfile(st, form);
  std::string error;
  ASSERT_TRUE(writePictureFile(*st.pct, path("profile.pdf"), &error)) << error;
  std::string bytes = testing::readFile(path("profile.pdf"));
  EXPECT_EQ(bytes.rfind("%PDF-", 0), 0u);
  EXPECT_NE(bytes.find("/MediaBox [0 0 352.000000 250.000000]"), std::string::npos) << bytes.substr(bytes.find("/MediaBox"), 60);
}

TEST_F(PictureWriters, FormatComesFromTheExtension) {
  ImageFormat f = ImageFormat::Png;
  const std::pair<const char*, ImageFormat> names[] = {
      {"a.svg", ImageFormat::Svg}, {"dir.v1/a.Pdf", ImageFormat::Pdf}, {"a.png", ImageFormat::Png}};
  for (auto [name, want] : names) {
    EXPECT_TRUE(formatOfPath(name, &f)) << name;
    EXPECT_EQ(f, want) << name;
  }
  EXPECT_FALSE(formatOfPath("a.txt", &f) || formatOfPath("png", &f));

  Picture p(10, 10);
  std::string error;
  EXPECT_FALSE(writePictureFile(p, path("a.txt"), &error));
  EXPECT_EQ(error, "Cannot write " + path("a.txt") + ": the name must end in .svg, .pdf or .png");
  EXPECT_FALSE(fs::exists(path("a.txt")));
  EXPECT_FALSE(writePictureFile(p, path("missing/a.svg"), &error));
  EXPECT_EQ(error.rfind("Cannot write " + path("missing/a.svg") + ": ", 0), 0u);
}

}  // namespace
}  // namespace trelvane::plots
