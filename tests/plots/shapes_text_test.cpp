// shapes_text_test.cpp -- the shapes of a drawing as text lines: number forms, texts, fields.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "plots/shapes_text.h"

namespace trelvane::plots {
namespace {

TEST(ShapesText, CoordinatesHaveSeventeenDigitsAndPlainNonFiniteWords) {
  EXPECT_EQ(coordinateText(230), "230");
  EXPECT_EQ(coordinateText(-85), "-85");
  EXPECT_EQ(coordinateText(0.1), "0.10000000000000001");
  EXPECT_EQ(coordinateText(36.032808683812618), "36.032808683812618");
  EXPECT_EQ(coordinateText(1e300), "1.0000000000000001e+300");
  EXPECT_EQ(coordinateText(std::numeric_limits<double>::quiet_NaN()), "nan");
  EXPECT_EQ(coordinateText(-std::numeric_limits<double>::quiet_NaN()), "nan");
  EXPECT_EQ(coordinateText(std::numeric_limits<double>::infinity()), "inf");
  EXPECT_EQ(coordinateText(-std::numeric_limits<double>::infinity()), "-inf");
}

TEST(ShapesText, OneLinePerShapeKind) {
  EXPECT_EQ(shapeLine(CurveShape{29, 20, 29, 230.5, RGB{0, 255, 0}}), "line 29 20 29 230.5 0 255 0\n");
  StringShape t;
  t.X = 10;
  t.Y = 235;
  t.Text = "0  ";
  EXPECT_EQ(shapeLine(t), "text 10 235 14 0 Times 0  \n");
  t.Bold = true;
  t.TextSize = 10;
  t.Text = "two words";
  EXPECT_EQ(shapeLine(t), "text 10 235 10 1 Times two words\n");
  EXPECT_EQ(shapeLine(RectShape{31, 22, 1, 1, RGB{0, 0, 0}}), "rect 31 22 1 1 0 0 0\n");
}

TEST(ShapesText, FieldsFollowTheShapesAndAnEmptyTextEndsInTheBlank) {
  Picture pict(352, 250);
  pict.Objects.Append(CurveShape{1, 2, 3, 4, RGB{255, 0, 0}});
  Form form;
  form.EFTo = "max";
  EXPECT_EQ(shapesText(&pict, form),
            "line 1 2 3 4 255 0 0\nfield ST_messGraph \nfield EFFrom 0\nfield EFTo max\n");
  EXPECT_EQ(shapesText(nullptr, form), "field ST_messGraph \nfield EFFrom 0\nfield EFTo max\n");
}

}  // namespace
}  // namespace trelvane::plots
