// shapes_text_test.cpp -- the shapes of a drawing as text lines: number forms, texts, fields.
#include <gtest/gtest.h>

#include <cmath>

#include "plots/shapes_text.h"

namespace trelvane::plots {
namespace {

// The golden drawings hold the common forms; these are the ones they lack.
TEST(ShapesText, NumberFormsShapeKindsAndFields) {
  EXPECT_EQ(coordinateText(1e300), "1.0000000000000001e+300");
  EXPECT_EQ(coordinateText(NAN) + coordinateText(-NAN), "nannan");
  EXPECT_EQ(coordinateText(INFINITY) + " " + coordinateText(-INFINITY), "inf -inf");
  StringShape t;
  t.X = 10, t.Y = 235, t.Bold = true, t.TextSize = 10, t.Text = "two words";
  EXPECT_EQ(shapeLine(t), "text 10 235 10 1 Times two words\n");
  EXPECT_EQ(shapeLine(RectShape{31, 22, 1, 1, RGB{0, 0, 0}}), "rect 31 22 1 1 0 0 0\n");
  Picture pict(352, 250);
  pict.Objects.Append(CurveShape{1, 2, 3, 4.5, RGB{255, 0, 0}});
  Form form;
  form.EFTo = "max";
  // an empty message ends its line in the blank
  EXPECT_EQ(shapesText(&pict, form), "line 1 2 3 4.5 255 0 0\nfield ST_messGraph \nfield EFFrom 0\nfield EFTo max\n");
  EXPECT_EQ(shapesText(nullptr, form), "field ST_messGraph \nfield EFFrom 0\nfield EFTo max\n");
}

}  // namespace
}  // namespace trelvane::plots
