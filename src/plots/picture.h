// picture.h -- vector shapes, their ordered group and the depth-0 picture that holds it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace trelvane::plots {

struct RGB {
  uint8_t r = 0, g = 0, b = 0;
  bool operator==(const RGB&) const = default;
};

// A straight line from (X, Y) to (X2, Y2), one pixel wide.
struct CurveShape {
  double X = 0, Y = 0, X2 = 0, Y2 = 0;
  RGB BorderColor;
};

// A line of text starting at X with its baseline at Y.
struct StringShape {
  double X = 0, Y = 0;
  int TextSize = 14;
  bool Bold = false;
  std::string TextFont = "Times";
  std::string Text;
};

// A filled rectangle at (X, Y) of Width by Height.
struct RectShape {
  double X = 0, Y = 0, Width = 1, Height = 1;
  RGB FillColor;
};

using Shape = std::variant<CurveShape, StringShape, RectShape>;

// An ordered list of shapes; later ones lie over earlier ones.
struct Group2D {
  std::vector<Shape> items;
  void Append(Shape s) { items.push_back(std::move(s)); }
  std::size_t Count() const { return items.size(); }
};

// One bit a pixel, for drawings with far more dots than a shape list can
// hold: a set bit is a black pixel, painted over the group.
class DotLayer {
 public:
  DotLayer() = default;
  DotLayer(int width, int height);

  int width() const { return width_; }
  int height() const { return height_; }
  bool empty() const { return width_ <= 0 || height_ <= 0; }
  // Outside the layer: get gives false and set does nothing.
  bool get(int x, int y) const;
  void set(int x, int y);
  std::size_t count() const;

  // Rows of wordsPerRow() 64-bit words; bit x % 64 of word x / 64 is pixel x.
  int wordsPerRow() const { return words_; }
  uint64_t* row(int y) { return bits_.data() + static_cast<std::size_t>(y) * words_; }
  const uint64_t* row(int y) const { return bits_.data() + static_cast<std::size_t>(y) * words_; }

 private:
  int width_ = 0, height_ = 0, words_ = 0;
  std::vector<uint64_t> bits_;
};

// A picture made by NewPicture(width, height, 0): no pixels of its own,
// the group in Objects, and for the dot plot a layer of dots.
struct Picture {
  Picture(int w, int h) : width(w), height(h) {}
  int width = 0;
  int height = 0;
  Group2D Objects;
  DotLayer dots;
};

enum class ImageFormat { Svg, Pdf, Png };

// The format that a file name's extension (.svg, .pdf, .png, any case) asks for.
bool formatOfPath(const std::string& path, ImageFormat* format);

}  // namespace trelvane::plots
