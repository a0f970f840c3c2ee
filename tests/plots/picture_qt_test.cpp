// picture_qt_test.cpp -- the painter adapter and the SVG, PDF and PNG writers, read back.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QFile>
#include <QImage>
#include <QPainter>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "plots/dotplot.h"
#include "plots/picture_qt.h"

namespace trelvane::plots {
namespace {

namespace fs = std::filesystem;

class PictureWriters : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(ensureGuiApplication()); }
  void TearDown() override { fs::remove_all(dir_); }
  std::string path(const std::string& name) const { return (dir_ / name).string(); }
  fs::path dir_ = [] {
    const fs::path d = fs::temp_directory_path() / ("plots_writers_" + std::to_string(::getpid()));
    fs::create_directories(d);
    return d;
  }();
};

// The lines of an SVG file as "x y x2 y2 stroke", its texts as "font:text", its images, its size.
std::string svgContent(const std::string& file) {
  QFile f(QString::fromStdString(file));
  EXPECT_TRUE(f.open(QIODevice::ReadOnly)) << file;
  QXmlStreamReader xml(&f);
  std::vector<QString> strokes{"black"};
  QString out;
  while (!xml.atEnd()) {
    xml.readNext();
    const auto a = xml.attributes();
    if (xml.isStartElement() && xml.name() == QLatin1String("svg")) out += "size " + a.value("viewBox").toString() + "\n";
    if (xml.isStartElement() && xml.name() == QLatin1String("g"))
      strokes.push_back(a.hasAttribute("stroke") ? a.value("stroke").toString() : strokes.back());
    if (xml.isEndElement() && xml.name() == QLatin1String("g")) strokes.pop_back();
    if (xml.isStartElement() && xml.name() == QLatin1String("polyline"))
      out += a.value("points").toString().simplified().replace(',', ' ') + " " + strokes.back() + "\n";
    if (xml.isStartElement() && xml.name() == QLatin1String("text"))
      out += a.value("font-family").toString() + ":" + xml.readElementText() + "\n";
    if (xml.isStartElement() && xml.name() == QLatin1String("image")) out += "image\n";
  }
  EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
  return out.toStdString();
}

// Lines of three colours, one without a finite place (left out), a text.
Picture sample() {
  Picture p(352, 250);
  p.Objects.Append(CurveShape{30, NAN, 70, NAN, RGB{0, 255, 0}});
  p.Objects.Append(CurveShape{10, 40.5, 110, 40.5, RGB{255, 0, 0}});
  p.Objects.Append(CurveShape{20, 10, INFINITY, 70, RGB{0, 0, 0}});
  p.Objects.Append(StringShape{10, 25, 10, false, "Times", "0.5"});
  p.Objects.Append(CurveShape{20, 10, 20, 70, RGB{0, 0, 255}});
  p.Objects.Append(RectShape{100, 70, 1, 1, RGB{0, 0, 0}});
  return p;
}

TEST_F(PictureWriters, SvgHoldsEveryShapeWithAPlaceInOrderAtItsCoordinates) {
  std::string error;
  ASSERT_TRUE(writePictureFile(sample(), path("p.svg"), &error)) << error;
  EXPECT_EQ(svgContent(path("p.svg")), "size 0 0 352 250\n10 40.5 110 40.5 #ff0000\nTimes:0.5\n20 10 20 70 #0000ff\n");
}

TEST_F(PictureWriters, PngHasThePicturesPixelsAndPdfItsSize) {
  std::string error;
  ASSERT_TRUE(writePictureFile(sample(), path("p.PNG"), &error)) << error;
  QImage image(QString::fromStdString(path("p.PNG")));
  ASSERT_EQ(image.size(), QSize(352, 250));
  const std::tuple<int, int, Qt::GlobalColor> pixels[] = {
      {60, 40, Qt::red}, {20, 60, Qt::blue}, {100, 70, Qt::black}, {60, 20, Qt::white}, {50, 100, Qt::white}};
  for (auto [x, y, color] : pixels) EXPECT_EQ(image.pixelColor(x, y), QColor(color)) << x << "," << y;
  ASSERT_TRUE(writePictureFile(sample(), path("p.pdf"), &error)) << error;
  std::ifstream in(path("p.pdf"), std::ios::binary);
  const std::string pdf(std::istreambuf_iterator<char>(in), {});
  EXPECT_EQ(pdf.rfind("%PDF-", 0), 0u);
  EXPECT_NE(pdf.find("/MediaBox [0 0 352.000000 250.000000]"), std::string::npos);
}

TEST_F(PictureWriters, DotPlotFilesCarryTheDotsAndAClipPaintsInsideIt) {
  ComparisonState st;
  st.open();
  st.m0 = MemoryBlock(106), st.nbbases = 6, st.m1 = MemoryBlock(103), st.nbbases1 = 3;
  for (int i = 0; i < 6; ++i) st.m0.set(i, std::string("\1\3\4\2\0\1", 6)[i]);  // ACGTNA
  for (int i = 0; i < 3; ++i) st.m1.set(i, std::string("\1\0\3", 3)[i]);        // ANC
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
  const std::string svg = svgContent(path("dots.svg"));
  EXPECT_NE(svg.find("image\n"), std::string::npos);
  EXPECT_EQ(std::count(svg.begin(), svg.end(), ':'), 4);

  Picture p(50, 50);
  p.dots = DotLayer(50, 50);
  p.dots.set(5, 5);
  p.dots.set(40, 40);
  QImage canvas(50, 50, QImage::Format_RGB32);
  canvas.fill(Qt::white);
  QPainter painter(&canvas);
  painter.setClipRect(QRect(30, 30, 20, 20));
  paintPicture(painter, p);
  painter.end();
  EXPECT_EQ(canvas.pixelColor(40, 40), QColor(Qt::black));
  EXPECT_EQ(canvas.pixelColor(5, 5), QColor(Qt::white));  // outside the clip
  EXPECT_EQ(canvas.pixelColor(41, 40), QColor(Qt::white));
}

TEST_F(PictureWriters, FormatComesFromTheExtension) {
  ImageFormat f = ImageFormat::Png;
  const std::pair<const char*, ImageFormat> names[] = {
      {"a.svg", ImageFormat::Svg}, {"dir.v1/a.Pdf", ImageFormat::Pdf}, {"a.png", ImageFormat::Png}};
  for (auto [name, want] : names) EXPECT_TRUE(formatOfPath(name, &f) && f == want) << name;
  EXPECT_FALSE(formatOfPath("a.txt", &f) || formatOfPath("png", &f));
  std::string error;
  EXPECT_FALSE(writePictureFile(Picture(10, 10), path("a.txt"), &error));
  EXPECT_EQ(error, "Cannot write " + path("a.txt") + ": the name must end in .svg, .pdf or .png");
  EXPECT_FALSE(fs::exists(path("a.txt")));
  EXPECT_FALSE(writePictureFile(Picture(10, 10), path("missing/a.svg"), &error));
  EXPECT_EQ(error.rfind("Cannot write " + path("missing/a.svg") + ": ", 0), 0u);
}

}  // namespace
}  // namespace trelvane::plots
