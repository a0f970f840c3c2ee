// picture_qt.h -- painting a picture with QPainter, and writing it as SVG, PDF or PNG.
#pragma once

#include <string>

#include "plots/picture.h"

class QIODevice;
class QImage;
class QPainter;

namespace trelvane::plots {

// Draws the group in its order at (0, 0), then the dot layer. Lines are one
// pixel wide, texts in "Times" (or the nearest serif) at TextSize pixels with
// their baseline at Y; a shape with a coordinate that is not finite has no
// place and is not drawn.
void paintPicture(QPainter& painter, const Picture& picture);

// Makes a QGuiApplication on the "offscreen" platform when none exists, so
// that fonts and images work without a window. False when a non-GUI
// application object is already there.
bool ensureGuiApplication();

// The picture on white at its own size, as PNG files and the clipboard have it.
QImage pictureImage(const Picture& picture);

// The picture's bytes in one format onto a device: the one writer of the
// files, of standard output and of the window's clipboard, so that all agree.
bool writePictureTo(const Picture& picture, ImageFormat format, QIODevice& out);

// Writes the picture at its own size, the same coordinates in every format:
// SVG (QSvgGenerator), PDF (one page of the picture's size in points), PNG
// (on white). "-" is standard output. On failure, error gets one line.
bool writePicture(const Picture& picture, ImageFormat format, const std::string& path, std::string* error);

// writePicture with the format chosen by the extension of path.
bool writePictureFile(const Picture& picture, const std::string& path, std::string* error);

}  // namespace trelvane::plots
