// picture.cpp -- the one-bit dot layer of a picture, and the image format of a file name.
#include "plots/picture.h"

#include <bit>

namespace trelvane::plots {

DotLayer::DotLayer(int width, int height)
    : width_(width > 0 ? width : 0), height_(height > 0 ? height : 0), words_((width_ + 63) / 64) {
  bits_.assign(static_cast<std::size_t>(words_) * height_, 0);
}

bool DotLayer::get(int x, int y) const {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return false;
  return (row(y)[x / 64] >> (x % 64)) & 1u;
}

void DotLayer::set(int x, int y) {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
  row(y)[x / 64] |= uint64_t{1} << (x % 64);
}

std::size_t DotLayer::count() const {
  std::size_t n = 0;
  for (uint64_t w : bits_) n += static_cast<std::size_t>(std::popcount(w));
  return n;
}

bool formatOfPath(const std::string& path, ImageFormat* format) {
  auto dot = path.rfind('.');
  if (dot == std::string::npos) return false;
  // ASCII only, whatever the locale: no other letter lowers into these names.
  std::string ext = path.substr(dot + 1);
  for (char& c : ext)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  if (ext == "svg") *format = ImageFormat::Svg;
  else if (ext == "pdf") *format = ImageFormat::Pdf;
  else if (ext == "png") *format = ImageFormat::Png;
  else return false;
  return true;
}

}  // namespace trelvane::plots
