// shapes_text.h -- the shapes of a picture and the Graphic tab's texts as plain text lines.
#pragma once

#include <string>

#include "state/form.h"
#include "plots/picture.h"

namespace trelvane::plots {

// A coordinate as "%.17g"; not-a-number "nan" whatever its sign, "inf", "-inf".
std::string coordinateText(double v);

// One shape, one line ending in "\n":
//   line X Y X2 Y2 R G B
//   text X Y SIZE BOLD FONT TEXT
//   rect X Y W H R G B
std::string shapeLine(const Shape& shape);

// Every shape of the picture in append order (none for a nil picture),
// then the lines "field ST_messGraph ...", "field EFFrom ...", "field EFTo ...".
std::string shapesText(const Picture* picture, const Form& form);

}  // namespace trelvane::plots
