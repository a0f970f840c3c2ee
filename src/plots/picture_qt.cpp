// picture_qt.cpp -- the one QPainter adapter of pictures, and the SVG, PDF and PNG writers.
#include "plots/picture_qt.h"

#include "plots/dotplot.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgGenerator>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <memory>

namespace trelvane::plots {
namespace {

bool finite(double a, double b) { return std::isfinite(a) && std::isfinite(b); }

QColor colorOf(RGB c) { return QColor(c.r, c.g, c.b); }

QFont fontOf(const StringShape& s) {
  QFont font(QString::fromLatin1(s.TextFont.c_str()));
  font.setStyleHint(QFont::Serif);  // "Times" or the nearest serif the system has
  font.setPixelSize(s.TextSize > 0 ? s.TextSize : 1);
  font.setBold(s.Bold);
  return font;
}

struct PaintShape {
  QPainter& p;
  void operator()(const CurveShape& s) const {
    if (!finite(s.X, s.Y) || !finite(s.X2, s.Y2)) return;
    QPen pen(colorOf(s.BorderColor));
    pen.setWidth(1);
    pen.setCapStyle(Qt::SquareCap);
    p.setPen(pen);
    p.drawLine(QLineF(s.X, s.Y, s.X2, s.Y2));
  }
  void operator()(const StringShape& s) const {
    if (!finite(s.X, s.Y)) return;
    p.setPen(QColor(0, 0, 0));
    p.setFont(fontOf(s));
    p.drawText(QPointF(s.X, s.Y), QString::fromLatin1(s.Text.data(), static_cast<qsizetype>(s.Text.size())));
  }
  void operator()(const RectShape& s) const {
    if (!finite(s.X, s.Y) || !finite(s.Width, s.Height)) return;
    p.fillRect(QRectF(s.X, s.Y, s.Width, s.Height), colorOf(s.FillColor));
  }
};

// The dots inside the painter's clip (all of them when it has none), as a
// one-bit image: set bits black, the rest transparent.
void paintDots(QPainter& painter, const DotLayer& dots) {
  if (dots.empty()) return;
  QRect all(0, 0, dots.width(), dots.height());
  QRect area = painter.hasClipping() ? painter.clipBoundingRect().toAlignedRect().intersected(all) : all;
  if (area.isEmpty()) return;
  // Bit x % 64 of a little-endian word is bit x % 8 of byte x / 8: MonoLSB.
  QImage layer(reinterpret_cast<const uchar*>(dots.row(0)), dots.width(), dots.height(),
               static_cast<qsizetype>(dots.wordsPerRow()) * 8, QImage::Format_MonoLSB);
  QImage part = layer.copy(area);
  part.setColorTable({qRgba(0, 0, 0, 0), qRgba(0, 0, 0, 255)});
  painter.drawImage(area.topLeft(), part);
}

// QFile on standard output for "-", the named file otherwise.
std::unique_ptr<QFile> openOutput(const std::string& path, std::string* error) {
  auto file = std::make_unique<QFile>();
  bool ok;
  if (path == "-") {
    std::fflush(stdout);
    ok = file->open(stdout, QIODevice::WriteOnly);
  } else {
    file->setFileName(QString::fromLocal8Bit(path.c_str()));
    ok = file->open(QIODevice::WriteOnly | QIODevice::Truncate);
  }
  if (!ok) {
    if (error) *error = "Cannot write " + path + ": " + file->errorString().toStdString();
    return nullptr;
  }
  return file;
}

bool writeSvg(const Picture& pict, QIODevice& out) {
  QSvgGenerator svg;
  svg.setOutputDevice(&out);
  svg.setSize(QSize(pict.width, pict.height));
  svg.setViewBox(QRect(0, 0, pict.width, pict.height));
  svg.setResolution(72);
  svg.setTitle(QStringLiteral("Trelvane"));
  QPainter painter;
  if (!painter.begin(&svg)) return false;
  paintPicture(painter, pict);
  return painter.end();
}

bool writePdf(const Picture& pict, QIODevice& out) {
  QPdfWriter pdf(&out);
  pdf.setResolution(72);  // one unit a point: the page is the picture's size
  pdf.setPageLayout(QPageLayout(QPageSize(QSizeF(pict.width, pict.height), QPageSize::Point),
                                QPageLayout::Portrait, QMarginsF(0, 0, 0, 0)));
  pdf.setCreator(QStringLiteral("Trelvane"));
  QPainter painter;
  if (!painter.begin(&pdf)) return false;
  paintPicture(painter, pict);
  return painter.end();
}

}  // namespace

QImage pictureImage(const Picture& pict) {
  // A dot plot is black on white: one byte a pixel keeps a large one small.
  QImage::Format format = pict.dots.empty() ? QImage::Format_RGB32 : QImage::Format_Grayscale8;
  QImage image(pict.width > 0 ? pict.width : 1, pict.height > 0 ? pict.height : 1, format);
  if (image.isNull()) return image;
  image.fill(Qt::white);
  QPainter painter;
  if (!painter.begin(&image)) return QImage();
  paintPicture(painter, pict);
  painter.end();
  return image;
}

bool writePictureTo(const Picture& pict, ImageFormat format, QIODevice& out) {
  switch (format) {
    case ImageFormat::Svg: return writeSvg(pict, out);
    case ImageFormat::Pdf: return writePdf(pict, out);
    case ImageFormat::Png: {
      const QImage image = pictureImage(pict);
      return !image.isNull() && image.save(&out, "PNG");
    }
  }
  return false;
}

void paintPicture(QPainter& painter, const Picture& picture) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing, false);
  PaintShape paint{painter};
  for (const Shape& s : picture.Objects.items) std::visit(paint, s);
  paintDots(painter, picture.dots);
  painter.restore();
}

bool ensureGuiApplication() {
  if (QCoreApplication::instance()) return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
  static int argc = 3;
  static char arg0[] = "trelvane", arg1[] = "-platform", arg2[] = "offscreen";
  static char* argv[] = {arg0, arg1, arg2, nullptr};
  // Without a session (a batch job, a cluster node) Qt warns about its
  // runtime folder on every start; give it a private one of its own.
  if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) {
    QByteArray dir = QDir::tempPath().toLocal8Bit() + "/trelvane-runtime-" + QByteArray::number(getuid());
    if (mkdir(dir.constData(), 0700) == 0 || errno == EEXIST) qputenv("XDG_RUNTIME_DIR", dir);
  }
  new QGuiApplication(argc, argv);  // lives as long as the process
  return true;
}

bool writePicture(const Picture& picture, ImageFormat format, const std::string& path, std::string* error) {
  if (!ensureGuiApplication()) {
    if (error) *error = "Cannot draw " + path + ": no graphical application object";
    return false;
  }
  // Drawn in memory first, so that a failed drawing leaves no half file.
  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  bool ok = writePictureTo(picture, format, buffer);
  buffer.close();
  if (!ok) {
    if (error) *error = "Cannot draw " + path + ": the picture of " + std::to_string(picture.width) + " by " +
                        std::to_string(picture.height) + " pixels could not be made";
    return false;
  }
  auto out = openOutput(path, error);
  if (!out) return false;
  if (out->write(buffer.data()) != buffer.data().size() || !out->flush()) {
    if (error) *error = "Cannot write " + path + ": " + out->errorString().toStdString();
    return false;
  }
  return true;
}

bool writePictureFile(const Picture& picture, const std::string& path, std::string* error) {
  ImageFormat format;
  if (!formatOfPath(path, &format)) {
    if (error) *error = "Cannot write " + path + ": the name must end in .svg, .pdf or .png";
    return false;
  }
  return writePicture(picture, format, path, error);
}

bool writeDotPlotFile(const DotPlot& plot, const std::string& path, std::string* error) {
  if (!plot.picture) {
    if (error) *error = "Cannot write " + path + ": no dot plot was drawn";
    return false;
  }
  return writePictureFile(*plot.picture, path, error);
}

}  // namespace trelvane::plots
